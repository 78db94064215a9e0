#include "io/VQDWriter.h"

#include "core/FeatureCatalogue.h"
#include "io/Hdf5Mutex.h"
#include "io/VQDReader.h"

#include <H5Cpp.h>
#include <algorithm>
#include <charconv>
#include <ctime>
#include <fcntl.h>
#include <iostream>
#include <limits>
#include <mutex>
#include <set>
#include <sys/mman.h>
#include <unistd.h>

namespace Tessaly {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

const std::string polygonSuffix = " polygon points";
const std::string onlineSection = "online_filter:";
const std::string offlineSection = "offline_filter:";
// Per-event data is deflated at this level: a fair trade of size against the time of an export.
constexpr int deflateLevel = 4;

// "%f" without the locale, whose decimal separator may be a comma.
std::string formatFixed(double value)
{
    char text[400]; // the longest "%f" of a double has 309 digits before the point
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6);
    return std::string(text, result.ptr);
}

std::string localDate()
{
    const std::time_t now = std::time(nullptr);
    std::tm local {};
    localtime_r(&now, &local);
    char text[16];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d", &local);
    return std::string(text, length);
}

std::string detailOf(const H5::Exception& e)
{
    return e.getDetailMsg();
}

// The name under which the source held a polygon gate: its section and "<x>,<y> polygon points".
// The instrument's gates live in "online_filter"; a gate of an earlier export keeps its own section.
std::string polygonAttributeName(
    const VQDMetadata& metadata, const PolygonFilterDef& polygon, const std::set<std::string>& taken)
{
    const std::string key = polygon.xFeature + ',' + polygon.yFeature + polygonSuffix;
    const std::string online = onlineSection + key;
    if (metadata.allAttributes.count(online) > 0 && taken.count(online) == 0)
        return online;
    for (const auto& [name, value] : metadata.allAttributes) {
        const std::size_t colon = name.find(':');
        if (colon != std::string::npos && name.compare(colon + 1, std::string::npos, key) == 0
            && taken.count(name) == 0)
            return name;
    }
    return online;
}

} // namespace

std::string scaleModeWord(int mode)
{
    static const char* const words[] = { "linear", "log", "pseudolog" };
    return words[std::clamp(mode, 0, 2)];
}

VQDWriter::VQDWriter() = default;

VQDWriter::~VQDWriter()
{
    close();
}

void VQDWriter::fail(const std::string& prefix, const std::string& detail)
{
    m_failed = true;
    if (m_file && !m_abandoned)
        abandonFile();
    // One write per line, so that lines of other threads don't interleave.
    std::cerr << (prefix + detail + '\n') << std::flush;
}

bool VQDWriter::create(const std::string& path)
{
    Lock lock(hdf5Mutex());
    close();
    m_failed = false;
    m_abandoned = false;
    try {
        H5::H5Library::open();
        m_file = std::make_unique<H5::H5File>(path, H5F_ACC_TRUNC);
        m_file->createGroup("/events");
        return true;
    } catch (const H5::Exception& e) {
        m_file.reset();
        fail("Error creating file: ", detailOf(e));
    }
    return false;
}

bool VQDWriter::close()
{
    Lock lock(hdf5Mutex());
    if (!m_file)
        return !m_failed;
    if (m_abandoned)
        closeLeftObjects();
    try {
        // Flushing here, rather than in the destructor of the handle, lets a full disk be noticed.
        m_file->flush(H5F_SCOPE_GLOBAL);
        m_file->close();
    } catch (const H5::Exception& e) {
        fail("Error closing file: ", detailOf(e));
        if (m_abandoned) {
            closeLeftObjects();
            H5E_BEGIN_TRY
            {
                m_file->close();
            }
            H5E_END_TRY;
        }
    }
    m_file.reset();
    return !m_failed;
}

// Once a write has failed (a full disk, a removed medium) the file is lost, and the library can't
// close it either: its objects and the file stay open with data it can't write, and at the end of
// the process it crashes closing them again. So the descriptor is pointed at a file in memory, where
// the library's last writes succeed; nothing more is written into it, and the objects that failed to close
// are closed now.
void VQDWriter::abandonFile()
{
    const hid_t id = m_file->getId();
    int* descriptor = nullptr;
    herr_t status = -1;
    H5E_BEGIN_TRY
    {
        status = H5Fget_vfd_handle(id, H5P_DEFAULT, reinterpret_cast<void**>(&descriptor));
    }
    H5E_END_TRY;
    if (status < 0 || !descriptor)
        return;
    // A file in memory, since the library also sets the file's length, which the null device refuses.
    const int discard = ::memfd_create("discarded export", MFD_CLOEXEC);
    if (discard < 0)
        return;
    ::dup2(discard, *descriptor);
    ::close(discard);
    m_abandoned = true;
}

void VQDWriter::closeLeftObjects()
{
    const hid_t id = m_file->getId();
    const unsigned types = H5F_OBJ_DATASET | H5F_OBJ_GROUP | H5F_OBJ_DATATYPE | H5F_OBJ_ATTR | H5F_OBJ_LOCAL;
    const ssize_t count = H5Fget_obj_count(id, types);
    if (count <= 0)
        return;
    std::vector<hid_t> objects(static_cast<std::size_t>(count));
    const ssize_t listed = H5Fget_obj_ids(id, types, objects.size(), objects.data());
    for (ssize_t i = 0; i < listed; ++i) {
        H5E_BEGIN_TRY
        {
            if (H5Iget_type(objects[static_cast<std::size_t>(i)]) == H5I_ATTR)
                H5Aclose(objects[static_cast<std::size_t>(i)]);
            else
                H5Oclose(objects[static_cast<std::size_t>(i)]);
        }
        H5E_END_TRY;
    }
}

void VQDWriter::removeAttributeIfPresent(const std::string& name)
{
    H5::Group root = m_file->openGroup("/");
    if (root.attrExists(name))
        root.removeAttr(name);
}

void VQDWriter::writeStringAttribute(const std::string& name, const std::string& value)
{
    removeAttributeIfPresent(name);
    H5::Group root = m_file->openGroup("/");
    const H5::StrType type(H5::PredType::C_S1, H5T_VARIABLE);
    H5::Attribute attribute = root.createAttribute(name, type, H5::DataSpace(H5S_SCALAR));
    const char* text = value.c_str();
    attribute.write(type, &text);
}

void VQDWriter::writePointsAttribute(
    const std::string& name, const std::vector<std::pair<double, double>>& points)
{
    removeAttributeIfPresent(name);
    std::vector<float> values;
    values.reserve(points.size() * 2);
    for (const auto& [x, y] : points) {
        values.push_back(static_cast<float>(x));
        values.push_back(static_cast<float>(y));
    }
    const hsize_t dims[2] = { points.size(), 2 };
    H5::Group root = m_file->openGroup("/");
    H5::Attribute attribute = root.createAttribute(name, H5::PredType::IEEE_F32LE, H5::DataSpace(2, dims));
    if (!values.empty())
        attribute.write(H5::PredType::NATIVE_FLOAT, values.data());
}

void VQDWriter::copyAttributes(const VQDMetadata& metadata)
{
    Lock lock(hdf5Mutex());
    if (!m_file || m_abandoned)
        return;
    // Gates first, as matrices; their text form in allAttributes is only a rendering of them.
    std::set<std::string> gateNames;
    for (const PolygonFilterDef& polygon : metadata.polygonFilters) {
        const std::string name = polygonAttributeName(metadata, polygon, gateNames);
        gateNames.insert(name);
        try {
            writePointsAttribute(name, polygon.vertices);
        } catch (const H5::Exception& e) {
            fail("Error writing attribute '" + name + "': ", detailOf(e));
        }
    }
    for (const auto& [name, value] : metadata.allAttributes) {
        if (gateNames.count(name) > 0)
            continue;
        try {
            writeStringAttribute(name, value);
        } catch (const H5::Exception& e) {
            fail("Error writing attribute '" + name + "': ", detailOf(e));
        }
    }
}

void VQDWriter::writeOfflineFilter(const EventFilter& filter)
{
    Lock lock(hdf5Mutex());
    if (!m_file || m_abandoned || !filter.isEnabled())
        return;
    try {
        for (const FilterRule& rule : filter.rules()) {
            if (!rule.enabled)
                continue;
            if (rule.type == PolygonRule) {
                const std::string base = offlineSection + rule.featureName + ',' + rule.featureNameY;
                writePointsAttribute(base + polygonSuffix, rule.polygonVertices);
                writeStringAttribute(base + " polygon x scale", scaleModeWord(rule.scaleXMode));
                writeStringAttribute(base + " polygon y scale", scaleModeWord(rule.scaleYMode));
            } else {
                writeStringAttribute(offlineSection + rule.featureName + " min", formatFixed(rule.minValue));
                writeStringAttribute(offlineSection + rule.featureName + " max", formatFixed(rule.maxValue));
            }
        }
    } catch (const H5::Exception& e) {
        fail("Error writing offline filter metadata: ", detailOf(e));
    }
}

void VQDWriter::writeExportAttributes(std::uint64_t eventCount, const std::string& changedSampleName)
{
    Lock lock(hdf5Mutex());
    if (!m_file || m_abandoned)
        return;
    try {
        writeStringAttribute("export:date", localDate());
        writeStringAttribute("export:event count", std::to_string(eventCount));
        // A name changed by an earlier export must not survive into a file whose name is unchanged.
        if (changedSampleName.empty())
            removeAttributeIfPresent("export:changed sample name");
        else
            writeStringAttribute("export:changed sample name", changedSampleName);
    } catch (const H5::Exception& e) {
        fail("Error writing export metadata: ", detailOf(e));
    }
}

void VQDWriter::writeScalars(
    const std::vector<std::string>& features, const std::vector<std::int32_t>& events, VQDReader& reader)
{
    Lock lock(hdf5Mutex());
    if (!m_file || m_abandoned)
        return;
    std::vector<double> values(events.size());
    const hsize_t length = events.size();
    for (const std::string& name : features) {
        if (m_abandoned)
            break;
        // Frames and contours have datasets of their own; they are no columns.
        if (!isScalarFeature(name))
            continue;
        const std::vector<double>& column = reader.getFeature(name);
        if (column.empty())
            continue;
        const std::size_t size = column.size();
        std::transform(events.begin(), events.end(), values.begin(), [&column, size](std::int32_t event) {
            const auto index = static_cast<std::size_t>(event);
            return event >= 0 && index < size ? column[index] : std::numeric_limits<double>::quiet_NaN();
        });
        try {
            H5::DataSet dataset = m_file->createDataSet(
                "/events/" + name, H5::PredType::IEEE_F64LE, H5::DataSpace(1, &length));
            if (length > 0)
                dataset.write(values.data(), H5::PredType::NATIVE_DOUBLE);
        } catch (const H5::Exception& e) {
            fail("Error writing feature '" + name + "': ", detailOf(e));
        }
    }
}

void VQDWriter::writeImages(VQDReader& reader, const std::vector<std::int32_t>& events)
{
    writeFrames(reader, events, false);
}

void VQDWriter::writeMasks(VQDReader& reader, const std::vector<std::int32_t>& events)
{
    writeFrames(reader, events, true);
}

void VQDWriter::writeFrames(VQDReader& reader, const std::vector<std::int32_t>& events, bool masks)
{
    Lock lock(hdf5Mutex());
    if (!m_file || m_abandoned || events.empty())
        return;
    auto readFrame = [&reader, masks](std::int32_t event, int* width, int* height) {
        const auto index = static_cast<std::size_t>(std::max(event, 0));
        return masks ? reader.getMask(index, width, height) : reader.getImage(index, width, height);
    };
    int width = 0;
    int height = 0;
    if (readFrame(events.front(), &width, &height).empty() || width < 1 || height < 1)
        return;
    try {
        const hsize_t dims[3] = { events.size(), static_cast<hsize_t>(height), static_cast<hsize_t>(width) };
        const hsize_t chunk[3] = { 1, dims[1], dims[2] };
        H5::DSetCreatPropList properties;
        properties.setChunk(3, chunk);
        properties.setDeflate(deflateLevel);
        H5::DataSpace fileSpace(3, dims);
        H5::DataSet dataset = m_file->createDataSet(
            masks ? "/events/mask" : "/events/image", H5::PredType::STD_U8LE, fileSpace, properties);
        const H5::DataSpace memorySpace(2, dims + 1);
        for (std::size_t row = 0; row < events.size(); ++row) {
            int frameWidth = 0;
            int frameHeight = 0;
            const std::vector<std::uint8_t> frame = readFrame(events[row], &frameWidth, &frameHeight);
            if (frame.empty() || frameWidth != width || frameHeight != height)
                continue;
            const hsize_t start[3] = { row, 0, 0 };
            fileSpace.selectHyperslab(H5S_SELECT_SET, chunk, start);
            dataset.write(frame.data(), H5::PredType::NATIVE_UINT8, memorySpace, fileSpace);
        }
    } catch (const H5::Exception& e) {
        fail(masks ? "Error writing masks: " : "Error writing images: ", detailOf(e));
    }
}

void VQDWriter::writeTraces(VQDReader& reader, const std::vector<std::int32_t>& events)
{
    Lock lock(hdf5Mutex());
    const hsize_t samples = reader.traceLength();
    if (!m_file || m_abandoned || samples == 0 || events.empty())
        return;
    try {
        m_file->createGroup("/events/trace");
        const hsize_t dims[2] = { events.size(), samples };
        const hsize_t chunk[2] = { 1, samples };
        for (const std::string& name : reader.traceNames()) {
            H5::DSetCreatPropList properties;
            properties.setChunk(2, chunk);
            properties.setDeflate(deflateLevel);
            H5::DataSpace fileSpace(2, dims);
            H5::DataSet dataset = m_file->createDataSet(
                "/events/trace/" + name, H5::PredType::IEEE_F32LE, fileSpace, properties);
            const H5::DataSpace memorySpace(1, &samples);
            for (std::size_t row = 0; row < events.size(); ++row) {
                const std::vector<float> trace
                    = reader.getTrace(name, static_cast<std::size_t>(std::max(events[row], 0)));
                if (trace.size() != samples)
                    continue;
                const hsize_t start[2] = { row, 0 };
                fileSpace.selectHyperslab(H5S_SELECT_SET, chunk, start);
                dataset.write(trace.data(), H5::PredType::NATIVE_FLOAT, memorySpace, fileSpace);
            }
        }
    } catch (const H5::Exception& e) {
        fail("Error writing traces: ", detailOf(e));
    }
}

} // namespace Tessaly
