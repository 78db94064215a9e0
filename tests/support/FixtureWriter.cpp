#include "support/FixtureWriter.h"

#include "io/Hdf5Filters.h"
#include "io/Hdf5Mutex.h"

#include <algorithm>
#include <mutex>

namespace Tessaly::Testing {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

H5::DataSpace spaceOf(const std::vector<hsize_t>& dims)
{
    if (dims.empty())
        return H5::DataSpace(H5S_SCALAR);
    return H5::DataSpace(static_cast<int>(dims.size()), dims.data());
}

hsize_t elementCount(const std::vector<hsize_t>& dims)
{
    hsize_t count = 1;
    for (hsize_t d : dims)
        count *= d;
    return count;
}

H5::DSetCreatPropList creationProperties(const std::vector<hsize_t>& dims, const Storage& storage)
{
    H5::DSetCreatPropList properties;
    const bool filtered = storage.filter != Storage::Filter::None;
    // An empty dataset can't be chunked without an unlimited dimension; it stays contiguous.
    if (dims.empty() || dims[0] == 0 || (!filtered && storage.chunkRows == 0))
        return properties;
    std::vector<hsize_t> chunk(dims);
    chunk[0] = std::min(dims[0], storage.chunkRows > 0 ? storage.chunkRows : dims[0]);
    for (hsize_t& d : chunk)
        d = std::max<hsize_t>(d, 1);
    properties.setChunk(static_cast<int>(chunk.size()), chunk.data());
    if (storage.shuffle)
        properties.setShuffle();
    switch (storage.filter) {
    case Storage::Filter::Deflate:
        properties.setDeflate(static_cast<int>(storage.level));
        break;
    case Storage::Filter::Zstd: {
        const unsigned level = storage.level;
        if (H5Pset_filter(properties.getId(), zstdFilterId, H5Z_FLAG_MANDATORY, 1, &level) < 0)
            throw H5::PropListIException("FixtureWriter", "H5Pset_filter failed for zstd");
        break;
    }
    case Storage::Filter::Plugin:
        if (H5Pset_filter(properties.getId(), storage.pluginId, H5Z_FLAG_MANDATORY,
                storage.pluginValues.size(), storage.pluginValues.data())
            < 0)
            throw H5::PropListIException("FixtureWriter", "H5Pset_filter failed");
        break;
    case Storage::Filter::None:
        break;
    }
    return properties;
}

// The format's boolean: an enumeration over a signed byte.
H5::EnumType booleanType()
{
    H5::EnumType type(H5::PredType::NATIVE_INT8);
    std::int8_t value = 0;
    type.insert("FALSE", &value);
    value = 1;
    type.insert("TRUE", &value);
    return type;
}

} // namespace

template <> const H5::PredType& FixtureWriter::nativeType<std::int8_t>()
{
    return H5::PredType::NATIVE_INT8;
}
template <> const H5::PredType& FixtureWriter::nativeType<std::uint8_t>()
{
    return H5::PredType::NATIVE_UINT8;
}
template <> const H5::PredType& FixtureWriter::nativeType<std::int16_t>()
{
    return H5::PredType::NATIVE_INT16;
}
template <> const H5::PredType& FixtureWriter::nativeType<std::uint16_t>()
{
    return H5::PredType::NATIVE_UINT16;
}
template <> const H5::PredType& FixtureWriter::nativeType<std::int32_t>()
{
    return H5::PredType::NATIVE_INT32;
}
template <> const H5::PredType& FixtureWriter::nativeType<std::uint32_t>()
{
    return H5::PredType::NATIVE_UINT32;
}
template <> const H5::PredType& FixtureWriter::nativeType<std::int64_t>()
{
    return H5::PredType::NATIVE_INT64;
}
template <> const H5::PredType& FixtureWriter::nativeType<std::uint64_t>()
{
    return H5::PredType::NATIVE_UINT64;
}
template <> const H5::PredType& FixtureWriter::nativeType<float>()
{
    return H5::PredType::NATIVE_FLOAT;
}
template <> const H5::PredType& FixtureWriter::nativeType<double>()
{
    return H5::PredType::NATIVE_DOUBLE;
}

FixtureWriter::FixtureWriter(const std::string& path, FileFormat format)
{
    // Outside the lock: the one-time registration takes it itself.
    registerHdf5Filters();
    Lock lock(hdf5Mutex());
    H5::FileAccPropList access;
    if (format == FileFormat::Latest)
        access.setLibverBounds(H5F_LIBVER_LATEST, H5F_LIBVER_LATEST);
    m_file = std::make_unique<H5::H5File>(path, H5F_ACC_TRUNC, H5::FileCreatPropList::DEFAULT, access);
}

FixtureWriter::~FixtureWriter()
{
    try {
        close();
    } catch (...) {
        // A destructor must not throw; a test that cares calls close() itself.
    }
}

void FixtureWriter::close()
{
    Lock lock(hdf5Mutex());
    if (m_file) {
        m_file->close();
        m_file.reset();
    }
}

H5::Group FixtureWriter::ensureGroup(const std::string& path)
{
    H5::Group group = m_file->openGroup("/");
    std::size_t start = 0;
    while (start < path.size()) {
        const std::size_t slash = std::min(path.find('/', start), path.size());
        const std::string name = path.substr(start, slash - start);
        if (!name.empty())
            group = group.nameExists(name) ? group.openGroup(name) : group.createGroup(name);
        start = slash + 1;
    }
    return group;
}

FixtureWriter& FixtureWriter::group(const std::string& path)
{
    Lock lock(hdf5Mutex());
    ensureGroup(path);
    return *this;
}

std::pair<H5::Group, std::string> FixtureWriter::parentOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    H5::Group parent = ensureGroup(slash == std::string::npos ? std::string() : path.substr(0, slash));
    return { parent, slash == std::string::npos ? path : path.substr(slash + 1) };
}

FixtureWriter& FixtureWriter::dataset(const std::string& path, const H5::DataType& fileType,
    const H5::DataType& memoryType, const std::vector<hsize_t>& dims, const void* data,
    const Storage& storage)
{
    Lock lock(hdf5Mutex());
    const auto [parent, name] = parentOf(path);
    H5::DataSet dataset
        = parent.createDataSet(name, fileType, spaceOf(dims), creationProperties(dims, storage));
    if (data && elementCount(dims) > 0)
        dataset.write(data, memoryType);
    return *this;
}

FixtureWriter& FixtureWriter::unwrittenDataset(const std::string& path, const H5::DataType& fileType,
    const std::vector<hsize_t>& dims, const std::vector<hsize_t>& chunk)
{
    Lock lock(hdf5Mutex());
    H5::DSetCreatPropList properties;
    properties.setChunk(static_cast<int>(chunk.size()), chunk.data());
    // Chunks are made on the first write, which never comes.
    properties.setAllocTime(H5D_ALLOC_TIME_INCR);
    const auto [parent, name] = parentOf(path);
    parent.createDataSet(name, fileType, spaceOf(dims), properties);
    return *this;
}

FixtureWriter& FixtureWriter::virtualDataset(const std::string& path, const H5::DataType& fileType,
    const std::vector<hsize_t>& dims, const std::string& sourceFile, const std::string& sourcePath)
{
    Lock lock(hdf5Mutex());
    const H5::DataSpace space = spaceOf(dims);
    H5::DSetCreatPropList properties;
    if (H5Pset_virtual(
            properties.getId(), space.getId(), sourceFile.c_str(), sourcePath.c_str(), space.getId())
        < 0)
        throw H5::PropListIException("FixtureWriter::virtualDataset", "H5Pset_virtual failed");
    const auto [parent, name] = parentOf(path);
    parent.createDataSet(name, fileType, space, properties);
    return *this;
}

FixtureWriter& FixtureWriter::externalDataset(const std::string& path, const H5::DataType& fileType,
    const H5::DataType& memoryType, const std::vector<hsize_t>& dims, const std::string& externalFile,
    const void* data)
{
    Lock lock(hdf5Mutex());
    H5::DSetCreatPropList properties;
    properties.setExternal(externalFile.c_str(), 0, elementCount(dims) * fileType.getSize());
    const auto [parent, name] = parentOf(path);
    H5::DataSet dataset = parent.createDataSet(name, fileType, spaceOf(dims), properties);
    if (data && elementCount(dims) > 0)
        dataset.write(data, memoryType);
    return *this;
}

FixtureWriter& FixtureWriter::externalLink(
    const std::string& path, const std::string& file, const std::string& target)
{
    Lock lock(hdf5Mutex());
    const auto [parent, name] = parentOf(path);
    if (H5Lcreate_external(
            file.c_str(), target.c_str(), parent.getId(), name.c_str(), H5P_DEFAULT, H5P_DEFAULT)
        < 0)
        throw H5::LocationException("FixtureWriter::externalLink", "H5Lcreate_external failed");
    return *this;
}

FixtureWriter& FixtureWriter::referenceAttribute(const std::string& name, const std::string& target)
{
    hobj_ref_t reference;
    {
        Lock lock(hdf5Mutex());
        if (H5Rcreate(&reference, m_file->getId(), target.c_str(), H5R_OBJECT, -1) < 0)
            throw H5::ReferenceException("FixtureWriter::referenceAttribute", "H5Rcreate failed");
    }
    return attribute(name, H5::PredType::STD_REF_OBJ, H5::PredType::STD_REF_OBJ, {}, &reference);
}

FixtureWriter& FixtureWriter::rawChunk(
    const std::string& path, const std::vector<hsize_t>& offset, const std::vector<char>& bytes)
{
    Lock lock(hdf5Mutex());
    const H5::DataSet dataset = m_file->openDataSet(path);
    if (H5Dwrite_chunk(dataset.getId(), H5P_DEFAULT, 0, offset.data(), bytes.size(), bytes.data()) < 0)
        throw H5::DataSetIException("FixtureWriter::rawChunk", "H5Dwrite_chunk failed");
    return *this;
}

FixtureWriter& FixtureWriter::softLink(const std::string& path, const std::string& target)
{
    Lock lock(hdf5Mutex());
    const std::size_t slash = path.rfind('/');
    if (slash != std::string::npos)
        ensureGroup(path.substr(0, slash));
    if (H5Lcreate_soft(target.c_str(), m_file->getId(), path.c_str(), H5P_DEFAULT, H5P_DEFAULT) < 0)
        throw H5::LocationException("FixtureWriter::softLink", "H5Lcreate_soft failed");
    return *this;
}

FixtureWriter& FixtureWriter::integerColumn(const std::string& name, const std::vector<std::int64_t>& values,
    std::size_t bytes, bool isSigned, const Storage& storage)
{
    H5::IntType type(H5::PredType::STD_I64LE);
    type.setSize(bytes);
    type.setSign(isSigned ? H5T_SGN_2 : H5T_SGN_NONE);
    return dataset(
        "events/" + name, type, H5::PredType::NATIVE_INT64, { values.size() }, values.data(), storage);
}

FixtureWriter& FixtureWriter::boolColumn(
    const std::string& name, const std::vector<bool>& values, const Storage& storage)
{
    const H5::EnumType type = booleanType();
    const std::vector<std::int8_t> bytes(values.begin(), values.end());
    return dataset("events/" + name, type, type, { values.size() }, bytes.data(), storage);
}

FixtureWriter& FixtureWriter::imageStack(const std::string& name, hsize_t count, hsize_t height,
    hsize_t width, const std::vector<std::uint8_t>& pixels, const Storage& storage)
{
    if (pixels.size() != count * height * width)
        throw H5::DataSetIException("FixtureWriter::imageStack", "pixel count doesn't match the shape");
    return dataset("events/" + name, H5::PredType::NATIVE_UINT8, H5::PredType::NATIVE_UINT8,
        { count, height, width }, pixels.data(), storage);
}

FixtureWriter& FixtureWriter::attribute(const std::string& name, const H5::DataType& fileType,
    const H5::DataType& memoryType, const std::vector<hsize_t>& dims, const void* data)
{
    Lock lock(hdf5Mutex());
    H5::Group root = m_file->openGroup("/");
    H5::Attribute attribute = root.createAttribute(name, fileType, spaceOf(dims));
    if (elementCount(dims) > 0)
        attribute.write(memoryType, data);
    return *this;
}

FixtureWriter& FixtureWriter::stringAttribute(
    const std::string& name, const std::string& value, StringStorage storage, std::size_t size)
{
    if (storage == StringStorage::Variable) {
        const H5::StrType type(H5::PredType::C_S1, H5T_VARIABLE);
        const char* text = value.c_str();
        return attribute(name, type, type, {}, &text);
    }
    // A fixed-length type must hold at least one byte; a terminated text also needs room for its null.
    if (size == 0)
        size = std::max<std::size_t>(value.size() + (storage == StringStorage::NullTerminated), 1);
    H5::StrType type(H5::PredType::C_S1, size);
    const H5T_str_t padding = storage == StringStorage::NullTerminated ? H5T_STR_NULLTERM
        : storage == StringStorage::NullPadded                         ? H5T_STR_NULLPAD
                                                                       : H5T_STR_SPACEPAD;
    type.setStrpad(padding);
    std::string buffer(value);
    buffer.resize(size, storage == StringStorage::SpacePadded ? ' ' : '\0');
    return attribute(name, type, type, {}, buffer.data());
}

FixtureWriter& FixtureWriter::floatAttribute(const std::string& name, double value, std::size_t bytes)
{
    const H5::PredType& fileType = bytes == 4 ? H5::PredType::IEEE_F32LE : H5::PredType::IEEE_F64LE;
    return attribute(name, fileType, H5::PredType::NATIVE_DOUBLE, {}, &value);
}

FixtureWriter& FixtureWriter::intAttribute(
    const std::string& name, std::int64_t value, std::size_t bytes, bool isSigned)
{
    H5::IntType type(H5::PredType::STD_I64LE);
    type.setSize(bytes);
    type.setSign(isSigned ? H5T_SGN_2 : H5T_SGN_NONE);
    return attribute(name, type, H5::PredType::NATIVE_INT64, {}, &value);
}

FixtureWriter& FixtureWriter::enumAttribute(const std::string& name, int value)
{
    const H5::EnumType type = booleanType();
    std::int8_t stored = static_cast<std::int8_t>(value);
    if (stored != 0 && stored != 1)
        type.insert("VALUE", &stored);
    return attribute(name, type, type, {}, &stored);
}

FixtureWriter& FixtureWriter::pointsAttribute(
    const std::string& name, const std::vector<std::pair<float, float>>& points)
{
    std::vector<float> values;
    for (const auto& [x, y] : points) {
        values.push_back(x);
        values.push_back(y);
    }
    return attribute(
        name, H5::PredType::IEEE_F32LE, H5::PredType::NATIVE_FLOAT, { points.size(), 2 }, values.data());
}

} // namespace Tessaly::Testing
