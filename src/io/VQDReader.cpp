#include "io/VQDReader.h"

#include "core/FeatureCatalogue.h"
#include "io/Hdf5Filters.h"
#include "io/Hdf5Mutex.h"
#include "io/ReadLimits.h"
#include "io/ReaderSupport.h"
#include "io/RootAttributes.h"

#include <H5Cpp.h>
#include <algorithm>
#include <limits>
#include <mutex>
#include <optional>
#include <stdexcept>

namespace Tessaly {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

const char* const eventsGroup = "events";
const char* const traceGroup = "events/trace";
const char* const imagePath = "events/image";
const char* const maskPath = "events/mask";

// Text of the instrument's own files in "setup:module composition".
const char* const instrumentMarker = "Vortiq";

// Handed out whenever there is no column to give, so every such call returns the same object.
const std::vector<double> emptyColumn;

// H5Lexists fails instead of answering false when an inner component of a path is missing, and
// pushes errors on the library's stack; every component is tested on its own here.
bool linkExists(hid_t location, const std::string& path)
{
    std::string prefix;
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t slash = std::min(path.find('/', start), path.size());
        prefix += path.substr(start, slash - start);
        htri_t exists = -1;
        H5E_BEGIN_TRY
        {
            exists = H5Lexists(location, prefix.c_str(), H5P_DEFAULT);
        }
        H5E_END_TRY;
        if (exists <= 0)
            return false;
        prefix += '/';
        start = slash + 1;
    }
    return true;
}

// Virtual datasets take their values from other datasets, which may be themselves: the library
// follows such a mapping until its stack overflows. External storage reads raw bytes from whatever
// files the dataset names. Neither is read. The layout is checked before even the extent is asked,
// because asking the extent of an unlimited virtual dataset already resolves its sources.
std::optional<std::string> storageRefusal(const H5::DataSet& dataset)
{
    const H5::DSetCreatPropList properties = dataset.getCreatePlist();
    if (properties.getLayout() == H5D_VIRTUAL)
        return std::string("virtual datasets are not read");
    if (properties.getExternalCount() > 0)
        return std::string("datasets with external storage are not read");
    return std::nullopt;
}

void refuseForeignStorage(const H5::DataSet& dataset)
{
    if (const std::optional<std::string> refusal = storageRefusal(dataset))
        throw std::runtime_error(*refusal);
}

// Bytes of one chunk, which the library holds (and decodes) while it reads; 0 when not chunked.
std::uint64_t chunkBytes(const H5::DataSet& dataset)
{
    const H5::DSetCreatPropList properties = dataset.getCreatePlist();
    if (properties.getLayout() != H5D_CHUNKED)
        return 0;
    hsize_t chunk[H5S_MAX_RANK];
    const int rank = properties.getChunk(H5S_MAX_RANK, chunk);
    std::uint64_t bytes = dataset.getDataType().getSize();
    for (int i = 0; i < rank; ++i)
        bytes = saturatingProduct(bytes, chunk[i]);
    return bytes;
}

// Refuses a read whose buffers, with one chunk of the dataset, would not fit in memory; the sizes
// come from the file and are checked before anything is allocated.
void refuseOversizedRead(const H5::DataSet& dataset, const std::string& what, std::uint64_t bufferBytes)
{
    const std::uint64_t chunk = chunkBytes(dataset);
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t total = bufferBytes > most - chunk ? most : bufferBytes + chunk;
    if (const std::optional<std::string> refusal = memoryRefusal(what, total))
        throw std::runtime_error(*refusal);
}

H5L_type_t linkType(const H5::Group& group, const std::string& name)
{
    H5L_info_t info;
    herr_t status = -1;
    H5E_BEGIN_TRY
    {
        status = H5Lget_info(group.getId(), name.c_str(), &info, H5P_DEFAULT);
    }
    H5E_END_TRY;
    return status < 0 ? H5L_TYPE_ERROR : info.type;
}

// The dataset that the link `name` of `group` leads to, for listing. Nothing when it leads to another
// kind of object; nothing, with a line on the standard error stream, when it is a soft or external
// link that leads nowhere (a missing target, another file that isn't there, a cycle of links) or a
// dataset whose storage is not read. A hard link always leads somewhere: when its object can't be
// opened the file is damaged, and the library's exception goes to the caller.
std::optional<H5::DataSet> listedDataset(
    const H5::Group& group, const std::string& groupPath, const std::string& name)
{
    const std::string path = '/' + groupPath + '/' + name;
    hid_t object = -1;
    H5E_BEGIN_TRY
    {
        object = H5Oopen(group.getId(), name.c_str(), H5P_DEFAULT);
    }
    H5E_END_TRY;
    if (object < 0 && linkType(group, name) != H5L_TYPE_HARD) {
        reportReaderError("Skipping '" + path + "': ", "the link leads to no object");
        return std::nullopt;
    }
    if (object >= 0) {
        const bool isDataset = H5Iget_type(object) == H5I_DATASET;
        H5Oclose(object);
        if (!isDataset)
            return std::nullopt;
    }
    // For a hard link that failed above, this throws the library's own detail.
    H5::DataSet dataset = group.openDataSet(name);
    if (const std::optional<std::string> refusal = storageRefusal(dataset)) {
        reportReaderError("Skipping '" + path + "': ", *refusal);
        return std::nullopt;
    }
    return dataset;
}

template <typename Stored>
std::vector<double> readWidened(const H5::DataSet& dataset, const H5::PredType& memoryType, std::size_t n)
{
    std::vector<Stored> buffer(n);
    dataset.read(buffer.data(), memoryType);
    return std::vector<double>(buffer.begin(), buffer.end());
}

// One column as doubles; its length is the first dimension of the dataset. Types without a
// conversion rule give zeros of that length.
std::vector<double> readColumn(const H5::DataSet& dataset)
{
    refuseForeignStorage(dataset);
    const std::vector<hsize_t> dims = extentOf(dataset.getSpace());
    const hsize_t length = dims.empty() ? 0 : dims[0];
    // The column of doubles and, for narrower or integer types, a buffer of the stored values.
    const std::uint64_t storedBytes = std::min<std::uint64_t>(dataset.getDataType().getSize(), 8);
    refuseOversizedRead(
        dataset, std::to_string(length) + " values", saturatingProduct(length, 8 + storedBytes));
    const std::size_t n = static_cast<std::size_t>(length);
    const ExpectedChunkSize wholeChunks(static_cast<std::size_t>(chunkBytes(dataset)));
    // A column is rank 1. Reading a dataset of higher rank whole would not fit the column (and for
    // images would load every frame), so such a dataset stays zeros.
    if (n == 0 || dims.size() != 1)
        return std::vector<double>(n, 0.0);

    switch (dataset.getTypeClass()) {
    case H5T_FLOAT:
        if (dataset.getFloatType().getSize() == 4)
            return readWidened<float>(dataset, H5::PredType::NATIVE_FLOAT, n);
        else {
            std::vector<double> column(n);
            dataset.read(column.data(), H5::PredType::NATIVE_DOUBLE);
            return column;
        }
    case H5T_INTEGER: {
        const H5::IntType type = dataset.getIntType();
        const bool isSigned = type.getSign() != H5T_SGN_NONE;
        switch (type.getSize()) {
        case 1:
            return isSigned ? readWidened<std::int8_t>(dataset, H5::PredType::NATIVE_INT8, n)
                            : readWidened<std::uint8_t>(dataset, H5::PredType::NATIVE_UINT8, n);
        case 2:
            return isSigned ? readWidened<std::int16_t>(dataset, H5::PredType::NATIVE_INT16, n)
                            : readWidened<std::uint16_t>(dataset, H5::PredType::NATIVE_UINT16, n);
        case 4:
            return isSigned ? readWidened<std::int32_t>(dataset, H5::PredType::NATIVE_INT32, n)
                            : readWidened<std::uint32_t>(dataset, H5::PredType::NATIVE_UINT32, n);
        case 8: {
            if (isSigned)
                return readWidened<std::int64_t>(dataset, H5::PredType::NATIVE_INT64, n);
            // 8-byte values are taken as signed whatever their stored sign: unsigned values above
            // 2^63 - 1 wrap to negative numbers. The library's own conversion would clip them
            // instead, so they are read as stored and reinterpreted.
            std::vector<std::uint64_t> buffer(n);
            dataset.read(buffer.data(), H5::PredType::NATIVE_UINT64);
            std::vector<double> column(n);
            std::transform(buffer.begin(), buffer.end(), column.begin(),
                [](std::uint64_t value) { return static_cast<double>(static_cast<std::int64_t>(value)); });
            return column;
        }
        default:
            return std::vector<double>(n, 0.0);
        }
    }
    case H5T_ENUM:
        // The format's boolean is an enumeration over a signed byte.
        return readWidened<std::int8_t>(dataset, H5::PredType::NATIVE_INT8, n);
    default:
        return std::vector<double>(n, 0.0);
    }
}

} // namespace

VQDReader::VQDReader() = default;

VQDReader::~VQDReader()
{
    Lock lock(hdf5Mutex());
    close();
}

bool VQDReader::open(const std::string& path)
{
    // Outside the lock: the one-time registration takes the lock itself, and a thread waiting for it
    // while holding the lock would block the thread that registers.
    registerHdf5Filters();

    Lock lock(hdf5Mutex());
    close();
    try {
        // Against the headers this program was compiled with; a mismatching library stops the process.
        H5::H5Library::checkVersion(H5_VERS_MAJOR, H5_VERS_MINOR, H5_VERS_RELEASE);
        H5::H5Library::open();
        m_file = std::make_unique<H5::H5File>(path, H5F_ACC_RDONLY);
        m_filePath = path;
        m_fileOpen = true;
        listFeatures();
        listTraces();
        determineEventCount();
        return true;
    } catch (const H5::Exception& e) {
        reportReaderError("Error opening file: ", e.getDetailMsg());
    } catch (const std::exception& e) {
        reportReaderError("Error opening file: ", e.what());
    }
    m_file.reset();
    m_fileOpen = false;
    return false;
}

void VQDReader::close()
{
    Lock lock(hdf5Mutex());
    try {
        m_file.reset();
    } catch (...) {
        // Releasing a handle only fails when the library itself is gone; nothing is left to do.
    }
    m_filePath.clear();
    m_fileOpen = false;
    m_eventCount = 0;
    m_featureNames.clear();
    m_featureNameSet.clear();
    m_featureNamesSorted = false;
    m_imageAvailable = false;
    m_maskAvailable = false;
    m_tracesAvailable = false;
    m_instrumentData = false;
    m_traceNames.clear();
    m_traceLength = 0;
    m_columnCache.clear();
    m_columnFailures.clear();
    m_computedFeatureNames.clear();
    // The filter settings are the program's, not the file's, and stay for the next file.
    m_traceAliases.clear();
    forgetLastTrace();
}

void VQDReader::listFeatures()
{
    m_featureNames.clear();
    m_featureNameSet.clear();
    m_imageAvailable = false;
    m_maskAvailable = false;
    try {
        if (!linkExists(m_file->getId(), eventsGroup))
            return;
        const H5::Group events = m_file->openGroup(eventsGroup);
        const hsize_t count = events.getNumObjs();
        for (hsize_t i = 0; i < count; ++i) {
            const std::string name = events.getObjnameByIdx(i);
            const std::optional<H5::DataSet> dataset = listedDataset(events, eventsGroup, name);
            if (!dataset)
                continue;
            // Images and masks are listed whatever their rank; other features are columns.
            if (dataset->getSpace().getSimpleExtentNdims() == 1 || name == "image" || name == "mask") {
                m_featureNames.push_back(name);
                m_featureNameSet.insert(name);
            }
        }
        std::sort(m_featureNames.begin(), m_featureNames.end());
        m_featureNamesSorted = true;
    } catch (const H5::Exception& e) {
        reportReaderError("Error caching features: ", e.getDetailMsg());
        m_featureNamesSorted = false;
    } catch (const std::exception& e) {
        reportReaderError("Error caching features: ", e.what());
        m_featureNamesSorted = false;
    }
    m_imageAvailable = m_featureNameSet.count("image") > 0;
    m_maskAvailable = m_featureNameSet.count("mask") > 0;
}

void VQDReader::listTraces()
{
    m_tracesAvailable = false;
    m_traceNames.clear();
    m_traceLength = 0;
    if (!m_fileOpen || !m_file)
        return;
    try {
        if (!linkExists(m_file->getId(), traceGroup))
            return;
        const H5::Group traces = m_file->openGroup(traceGroup);
        const hsize_t count = traces.getNumObjs();
        for (hsize_t i = 0; i < count; ++i) {
            const std::string name = traces.getObjnameByIdx(i);
            if (name.find("_median") == std::string::npos && name.find("_raw") == std::string::npos)
                continue;
            const std::optional<H5::DataSet> dataset = listedDataset(traces, traceGroup, name);
            if (!dataset)
                continue;
            m_traceNames.push_back(name);
            if (m_traceLength == 0) {
                const std::vector<hsize_t> dims = extentOf(dataset->getSpace());
                if (dims.size() >= 2)
                    m_traceLength = dims[1];
            }
        }
        std::sort(m_traceNames.begin(), m_traceNames.end());
    } catch (const H5::Exception& e) {
        reportReaderError("Error caching trace info: ", e.getDetailMsg());
    } catch (const std::exception& e) {
        reportReaderError("Error caching trace info: ", e.what());
    }
    m_tracesAvailable = !m_traceNames.empty();
}

void VQDReader::determineEventCount()
{
    m_eventCount = 0;
    if (m_featureNames.empty())
        return;
    // The first name in sorted order, also when a failed listing left the list unsorted.
    const std::string& first = *std::min_element(m_featureNames.begin(), m_featureNames.end());
    try {
        const std::vector<hsize_t> dims
            = extentOf(m_file->openDataSet(std::string(eventsGroup) + '/' + first).getSpace());
        if (!dims.empty())
            m_eventCount = dims[0];
    } catch (const H5::Exception& e) {
        reportReaderError("Error determining event count: ", e.getDetailMsg());
    } catch (const std::exception& e) {
        reportReaderError("Error determining event count: ", e.what());
    }
}

const std::vector<std::string>& VQDReader::featureNames()
{
    if (!m_featureNamesSorted) {
        std::sort(m_featureNames.begin(), m_featureNames.end());
        m_featureNamesSorted = true;
    }
    return m_featureNames;
}

bool VQDReader::hasFeature(const std::string& name) const
{
    return m_featureNameSet.count(name) > 0;
}

bool VQDReader::isComputedFeature(const std::string& name) const
{
    return m_computedFeatureNames.count(name) > 0;
}

const std::vector<double>& VQDReader::getFeature(const std::string& name)
{
    Lock lock(hdf5Mutex());
    const auto cached = m_columnCache.find(name);
    if (cached != m_columnCache.end())
        return *cached->second;
    std::optional<std::string> failure;
    std::optional<std::vector<double>> column = readStoredColumn(name, failure);
    if (column) {
        auto owned = std::make_unique<std::vector<double>>(std::move(*column));
        const std::vector<double>& stored = *owned;
        m_columnCache[name] = std::move(owned);
        m_columnFailures.erase(name);
        return stored;
    }
    if (!failure)
        return emptyColumn;
    // Nothing is cached, so that the next request tries again; but a column that keeps failing, as
    // at every refresh of a plot, is reported once, until it has been read. (The text of a refusal
    // may change from one try to the next, with the memory available.)
    const bool known = m_columnFailures.count(name) > 0;
    m_columnFailures[name] = *failure;
    if (!known)
        reportReaderError("Error reading feature '" + name + "': ", *failure);
    return emptyColumn;
}

std::optional<std::vector<double>> VQDReader::readStoredColumn(
    const std::string& name, std::optional<std::string>& failure)
{
    failure.reset();
    // A feature is an object directly under /events; a name with a slash can't be one.
    if (!m_fileOpen || !m_file || name.empty() || name.find('/') != std::string::npos
        || !linkExists(m_file->getId(), std::string(eventsGroup) + '/' + name))
        return std::nullopt;
    try {
        return readColumn(m_file->openDataSet(std::string(eventsGroup) + '/' + name));
    } catch (const H5::Exception& e) {
        failure = e.getDetailMsg();
    } catch (const std::exception& e) {
        failure = e.what();
    }
    return std::nullopt;
}

std::optional<std::vector<double>> VQDReader::readFeatureUncached(
    const std::string& name, std::string* failure)
{
    Lock lock(hdf5Mutex());
    std::optional<std::string> reason;
    std::optional<std::vector<double>> column = readStoredColumn(name, reason);
    if (reason)
        reportReaderError("Error reading feature '" + name + "': ", *reason);
    if (failure)
        *failure = reason.value_or(std::string());
    return column;
}

std::optional<std::uint64_t> VQDReader::adoptableLength(const std::string& name)
{
    Lock lock(hdf5Mutex());
    if (!m_fileOpen || !m_file || !isScalarFeature(name) || m_featureNameSet.count(name) == 0
        || m_computedFeatureNames.count(name) > 0 || m_columnCache.count(name) > 0
        || name.find('/') != std::string::npos)
        return std::nullopt;
    try {
        // Listing opened this dataset and checked its storage already; asking its extent reads no data.
        const std::vector<hsize_t> dims
            = extentOf(m_file->openDataSet(std::string(eventsGroup) + '/' + name).getSpace());
        if (dims.size() != 1)
            return std::nullopt;
        return static_cast<std::uint64_t>(dims[0]);
    } catch (const H5::Exception&) {
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

bool VQDReader::adoptFeature(const std::string& name, std::vector<double>&& values)
{
    Lock lock(hdf5Mutex());
    const std::optional<std::uint64_t> length = adoptableLength(name);
    if (!length || *length != values.size())
        return false;
    m_columnCache[name] = std::make_unique<std::vector<double>>(std::move(values));
    values.clear();
    m_columnFailures.erase(name);
    return true;
}

bool VQDReader::isFeatureCached(const std::string& name) const
{
    Lock lock(hdf5Mutex());
    return m_columnCache.count(name) > 0;
}

std::string VQDReader::featureError(const std::string& name) const
{
    Lock lock(hdf5Mutex());
    const auto failure = m_columnFailures.find(name);
    return failure == m_columnFailures.end() ? std::string() : failure->second;
}

void VQDReader::setFeature(const std::string& name, std::vector<double>&& values)
{
    Lock lock(hdf5Mutex());
    m_columnCache[name] = std::make_unique<std::vector<double>>(std::move(values));
    values.clear();
    m_columnFailures.erase(name);
    m_computedFeatureNames.insert(name);
    if (m_featureNameSet.insert(name).second) {
        m_featureNames.push_back(name);
        m_featureNamesSorted = false;
    }
}

void VQDReader::cacheAllFeatures()
{
    std::vector<std::string> names;
    {
        Lock lock(hdf5Mutex());
        names = m_featureNames;
    }
    for (const std::string& name : names)
        if (isScalarFeature(name))
            getFeature(name);
}

std::vector<std::string> VQDReader::traceNames() const
{
    Lock lock(hdf5Mutex());
    return m_traceNames;
}

std::vector<std::uint8_t> VQDReader::getImage(std::size_t index, int* width, int* height)
{
    Lock lock(hdf5Mutex());
    return readFrame(imagePath, "image", m_imageAvailable, index, width, height);
}

std::vector<std::uint8_t> VQDReader::getMask(std::size_t index, int* width, int* height)
{
    Lock lock(hdf5Mutex());
    return readFrame(maskPath, "mask", m_maskAvailable, index, width, height);
}

std::vector<std::vector<std::uint8_t>> VQDReader::getMasks(
    std::size_t first, std::size_t count, int* width, int* height)
{
    Lock lock(hdf5Mutex());
    return readFrames(maskPath, "mask", m_maskAvailable, first, count, width, height);
}

// One frame of a stack (events, height, width), read through a hyperslab of one event.
std::vector<std::uint8_t> VQDReader::readFrame(
    const char* path, const char* what, bool available, std::size_t index, int* width, int* height)
{
    std::vector<std::vector<std::uint8_t>> frames
        = readFrames(path, what, available, index, 1, width, height);
    return frames.empty() ? std::vector<std::uint8_t>() : std::move(frames.front());
}

// Frames [first, first + count) of a stack (events, height, width) through one hyperslab; fewer at the
// end of the stack.
std::vector<std::vector<std::uint8_t>> VQDReader::readFrames(const char* path, const char* what,
    bool available, std::size_t first, std::size_t count, int* width, int* height)
{
    if (!available || !m_fileOpen || !m_file || count == 0)
        return {};
    const std::string failure
        = std::string("Error reading ") + what + " at index " + std::to_string(first) + ": ";
    try {
        const H5::DataSet dataset = m_file->openDataSet(path);
        refuseForeignStorage(dataset);
        H5::DataSpace fileSpace = dataset.getSpace();
        const std::vector<hsize_t> dims = extentOf(fileSpace);
        if (dims.size() != 3)
            throw std::runtime_error(
                "a stack of frames has 3 dimensions, this one " + std::to_string(dims.size()));
        if (first >= dims[0])
            return {};
        const hsize_t frames = std::min<hsize_t>(count, dims[0] - first);
        const hsize_t rows = dims[1];
        const hsize_t columns = dims[2];
        if (rows == 0 || columns == 0)
            return {};
        if (rows > maxFrameSide || columns > maxFrameSide)
            throw std::runtime_error("a frame of " + std::to_string(rows) + " x " + std::to_string(columns)
                + " pixels is larger than " + std::to_string(maxFrameSide) + " pixels a side");
        const std::string size = std::to_string(rows) + " x " + std::to_string(columns) + " pixels";
        refuseOversizedRead(dataset,
            frames == 1 ? "a frame of " + size : std::to_string(frames) + " frames of " + size,
            saturatingProduct(frames, rows * columns));

        const hsize_t start[3] = { first, 0, 0 };
        const hsize_t extent[3] = { frames, rows, columns };
        fileSpace.selectHyperslab(H5S_SELECT_SET, extent, start);
        const H5::DataSpace memorySpace(3, extent);
        std::vector<std::uint8_t> pixels(static_cast<std::size_t>(frames * rows * columns));
        const ExpectedChunkSize wholeChunks(static_cast<std::size_t>(chunkBytes(dataset)));
        dataset.read(pixels.data(), H5::PredType::NATIVE_UINT8, memorySpace, fileSpace);
        std::vector<std::vector<std::uint8_t>> result(static_cast<std::size_t>(frames));
        const auto frameSize = static_cast<std::ptrdiff_t>(rows * columns);
        for (std::size_t f = 0; f < result.size(); ++f)
            result[f].assign(pixels.begin() + static_cast<std::ptrdiff_t>(f) * frameSize,
                pixels.begin() + static_cast<std::ptrdiff_t>(f + 1) * frameSize);
        // The sizes are given out only with the pixels, so that a failed read leaves them as they were.
        if (width)
            *width = static_cast<int>(columns);
        if (height)
            *height = static_cast<int>(rows);
        return result;
    } catch (const H5::Exception& e) {
        reportReaderError(failure, e.getDetailMsg());
    } catch (const std::exception& e) {
        reportReaderError(failure, e.what());
    }
    return {};
}

std::vector<float> VQDReader::getTrace(const std::string& name, std::size_t index)
{
    Lock lock(hdf5Mutex());
    const auto alias = m_traceAliases.find(name);
    if (alias == m_traceAliases.end())
        return readStoredTrace(name, index);

    const auto eventIndex = static_cast<std::int64_t>(index);
    if (m_lastTraceName == name && m_lastTraceIndex == eventIndex)
        return m_lastTrace;
    std::vector<float> filtered
        = applyTraceProcessing(readStoredTrace(alias->second, index), m_traceProcessing);
    // A failed read is not remembered, so that the next request tries again and reports again.
    if (!filtered.empty()) {
        m_lastTraceName = name;
        m_lastTraceIndex = eventIndex;
        m_lastTrace = filtered;
    }
    return filtered;
}

// One event's row of /events/trace/<name>, unfiltered.
std::vector<float> VQDReader::readStoredTrace(const std::string& name, std::size_t index)
{
    std::vector<std::vector<float>> rows = readStoredRows(name, index, 1);
    return rows.empty() ? std::vector<float>() : std::move(rows.front());
}

std::vector<std::vector<float>> VQDReader::getRawTraces(
    const std::string& name, std::size_t first, std::size_t count)
{
    Lock lock(hdf5Mutex());
    const auto alias = m_traceAliases.find(name);
    return readStoredRows(alias == m_traceAliases.end() ? name : alias->second, first, count);
}

// Rows [first, first + count) of /events/trace/<name>, unfiltered, by one hyperslab; fewer at the end of
// the dataset. Two-byte integers go through signed 16 bit, everything else is converted to float by
// the library.
std::vector<std::vector<float>> VQDReader::readStoredRows(
    const std::string& name, std::size_t first, std::size_t count)
{
    if (!m_fileOpen || !m_file || !m_tracesAvailable || count == 0)
        return {};
    const std::string failure = "Error reading trace '" + name + "' at index " + std::to_string(first) + ": ";
    try {
        const H5::DataSet dataset = m_file->openDataSet(std::string(traceGroup) + '/' + name);
        refuseForeignStorage(dataset);
        H5::DataSpace fileSpace = dataset.getSpace();
        const std::vector<hsize_t> dims = extentOf(fileSpace);
        if (dims.size() != 2)
            throw std::runtime_error("a trace has 2 dimensions, this one " + std::to_string(dims.size()));
        if (first >= dims[0] || dims[1] == 0)
            return {};

        const hsize_t rows = std::min<hsize_t>(count, dims[0] - first);
        const hsize_t samples = dims[1];
        // The traces as floats and, for two-byte integers, the buffer they are read into.
        refuseOversizedRead(dataset, "a trace of " + std::to_string(samples) + " samples",
            saturatingProduct(saturatingProduct(rows, samples), sizeof(float) + sizeof(std::int16_t)));
        const hsize_t start[2] = { first, 0 };
        const hsize_t extent[2] = { rows, samples };
        fileSpace.selectHyperslab(H5S_SELECT_SET, extent, start);
        const H5::DataSpace memorySpace(2, extent);
        std::vector<float> values(static_cast<std::size_t>(rows * samples), 0.0f);
        const ExpectedChunkSize wholeChunks(static_cast<std::size_t>(chunkBytes(dataset)));
        if (dataset.getTypeClass() == H5T_INTEGER && dataset.getDataType().getSize() == 2) {
            std::vector<std::int16_t> buffer(values.size());
            dataset.read(buffer.data(), H5::PredType::NATIVE_INT16, memorySpace, fileSpace);
            std::copy(buffer.begin(), buffer.end(), values.begin());
        } else {
            dataset.read(values.data(), H5::PredType::NATIVE_FLOAT, memorySpace, fileSpace);
        }
        std::vector<std::vector<float>> result(static_cast<std::size_t>(rows));
        for (std::size_t r = 0; r < result.size(); ++r) {
            const auto begin = values.begin() + static_cast<std::ptrdiff_t>(r * samples);
            result[r].assign(begin, begin + static_cast<std::ptrdiff_t>(samples));
        }
        return result;
    } catch (const H5::Exception& e) {
        reportReaderError(failure, e.getDetailMsg());
    } catch (const std::exception& e) {
        reportReaderError(failure, e.what());
    }
    return {};
}

void VQDReader::addTraceAlias(const std::string& alias, const std::string& source)
{
    Lock lock(hdf5Mutex());
    std::string& target = m_traceAliases[alias];
    if (target != source && m_lastTraceName == alias)
        forgetLastTrace();
    target = source;
    if (std::find(m_traceNames.begin(), m_traceNames.end(), alias) == m_traceNames.end()) {
        m_traceNames.push_back(alias);
        std::sort(m_traceNames.begin(), m_traceNames.end());
    }
}

void VQDReader::setTraceProcessing(const TraceProcessing& processing)
{
    Lock lock(hdf5Mutex());
    m_traceProcessing = processing;
    forgetLastTrace();
}

void VQDReader::setTraceProcessing(bool hampel1, int hampel1HalfWindow, float hampel1Threshold, bool hampel2,
    int hampel2HalfWindow, float hampel2Threshold, bool median, int medianHalfWindow, bool rolling,
    int rollingHalfWindow, bool savitzkyGolay, int savitzkyGolayHalfWindow)
{
    setTraceProcessing(TraceProcessing { hampel1, hampel1HalfWindow, hampel1Threshold, hampel2,
        hampel2HalfWindow, hampel2Threshold, median, medianHalfWindow, rolling, rollingHalfWindow,
        savitzkyGolay, savitzkyGolayHalfWindow });
}

TraceProcessing VQDReader::traceProcessing() const
{
    Lock lock(hdf5Mutex());
    return m_traceProcessing;
}

void VQDReader::forgetLastTrace()
{
    m_lastTraceName.clear();
    m_lastTraceIndex = -1;
    m_lastTrace.clear();
}

std::string VQDReader::featureLabel(const std::string& name) const
{
    return Tessaly::featureLabel(name, m_instrumentData);
}

VQDMetadata VQDReader::readMetadata()
{
    VQDMetadata metadata;
    if (!m_fileOpen)
        return metadata;
    Lock lock(hdf5Mutex());
    if (!m_file)
        return metadata;
    try {
        const H5::Group root = m_file->openGroup("/");
        readRootAttributes(root, metadata);
    } catch (const H5::Exception& e) {
        reportReaderError("Error reading metadata: ", e.getDetailMsg());
    } catch (const std::exception& e) {
        reportReaderError("Error reading metadata: ", e.what());
    }

    const auto composition = metadata.setup.find("module composition");
    m_instrumentData = composition != metadata.setup.end()
        && composition->second.find(instrumentMarker) != std::string::npos;
    return metadata;
}

} // namespace Tessaly
