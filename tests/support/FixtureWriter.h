#pragma once

#include <H5Cpp.h>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Tessaly::Testing {

// How a dataset is laid out: contiguous, or chunked along its first dimension, optionally compressed.
struct Storage
{
    enum class Filter { None, Deflate, Zstd, Plugin };

    Filter filter = Filter::None;
    hsize_t chunkRows = 0; // rows per chunk; 0 with no filter means contiguous
    unsigned level = 0; // deflate or zstd compression level
    unsigned pluginId = 0; // filter id for Filter::Plugin, e.g. 32004 for LZ4
    std::vector<unsigned> pluginValues; // its client data
    bool shuffle = false; // bytes regrouped by significance before the filter, as many writers do

    static Storage contiguous() { return {}; }
    static Storage chunked(hsize_t rows) { return { Filter::None, rows, 0, 0, {} }; }
    static Storage deflate(unsigned level = 4, hsize_t rows = 100000)
    {
        return { Filter::Deflate, rows, level, 0, {} };
    }
    static Storage shuffledDeflate(unsigned level = 4, hsize_t rows = 100000)
    {
        return { Filter::Deflate, rows, level, 0, {}, true };
    }
    static Storage zstd(unsigned level = 3, hsize_t rows = 100000)
    {
        return { Filter::Zstd, rows, level, 0, {} };
    }
    static Storage plugin(unsigned id, std::vector<unsigned> values = {}, hsize_t rows = 100000)
    {
        return { Filter::Plugin, rows, 0, id, std::move(values) };
    }
};

// How a text attribute is stored: variable-length, or fixed-length with one of the three paddings.
enum class StringStorage { Variable, NullTerminated, NullPadded, SpacePadded };

// Which versions of the file format's structures the library writes: the oldest that can hold the
// contents (as most writers do), or the newest (other superblock, object headers with checksums, groups
// and attributes in compact or dense storage).
enum class FileFormat { Earliest, Latest };

// Builds measurement files (or any HDF5 file) for tests, benchmarks and example data.
//
//     FixtureWriter(path)
//         .column<float>("deform", { 0.01f, 0.02f })
//         .column<std::uint16_t>("area_msd", { 10, 65535 }, Storage::deflate())
//         .boolColumn("flag", { false, true })
//         .imageStack("image", 2, 8, 10, pixels)
//         .trace<std::int16_t>("fl1_raw", { { 1, 2, 3 }, { 4, 5, 6 } })
//         .stringAttribute("setup:module composition", "Vortiq AcCellerator")
//         .floatAttribute("imaging:pixel size", 0.34)
//         .close();
//
// Feature names are paths below /events; other paths are relative to the root. Groups on the way are
// created as needed, so a file gets /events only when something is put there. The file is created
// (truncated) by the constructor and closed by close() or the destructor. Library errors throw
// H5::Exception. Every call holds hdf5Mutex(), so readers on other threads may run meanwhile.
class FixtureWriter
{
public:
    explicit FixtureWriter(const std::string& path, FileFormat format = FileFormat::Earliest);
    ~FixtureWriter();
    FixtureWriter(const FixtureWriter&) = delete;
    FixtureWriter& operator=(const FixtureWriter&) = delete;

    // A rank-1 column /events/<name> of T: any fixed-width integer type, float or double.
    template <typename T>
    FixtureWriter& column(const std::string& name, const std::vector<T>& values, const Storage& storage = {})
    {
        return dataset(
            "events/" + name, nativeType<T>(), nativeType<T>(), { values.size() }, values.data(), storage);
    }
    // An integer column of any byte size and sign, e.g. 3 bytes; values are converted by the library.
    FixtureWriter& integerColumn(const std::string& name, const std::vector<std::int64_t>& values,
        std::size_t bytes, bool isSigned, const Storage& storage = {});
    // A boolean column as the format stores it: an enumeration FALSE = 0, TRUE = 1 over a signed byte.
    FixtureWriter& boolColumn(
        const std::string& name, const std::vector<bool>& values, const Storage& storage = {});
    // A rank-3 uint8 stack (count, height, width) under /events, e.g. "image" or "mask".
    FixtureWriter& imageStack(const std::string& name, hsize_t count, hsize_t height, hsize_t width,
        const std::vector<std::uint8_t>& pixels, const Storage& storage = {});
    // A rank-2 trace (events, samples) /events/trace/<name> of T (std::int16_t or float); rows of equal
    // length.
    template <typename T>
    FixtureWriter& trace(
        const std::string& name, const std::vector<std::vector<T>>& rows, const Storage& storage = {})
    {
        const hsize_t samples = rows.empty() ? 0 : rows.front().size();
        std::vector<T> flat;
        for (const std::vector<T>& row : rows)
            flat.insert(flat.end(), row.begin(), row.end());
        return dataset("events/trace/" + name, nativeType<T>(), nativeType<T>(), { rows.size(), samples },
            flat.data(), storage);
    }
    // Any dataset of any rank and type at `path` (relative to the root). `data` holds the elements in
    // memoryType, row by row; with nullptr the dataset is only created (see rawChunk).
    FixtureWriter& dataset(const std::string& path, const H5::DataType& fileType,
        const H5::DataType& memoryType, const std::vector<hsize_t>& dims, const void* data,
        const Storage& storage = {});
    // Stores already-encoded bytes as the chunk of a chunked dataset that starts at `offset`, bypassing
    // the filters: data as other software encodes it, or broken data.
    FixtureWriter& rawChunk(
        const std::string& path, const std::vector<hsize_t>& offset, const std::vector<char>& bytes);
    // A dataset whose chunks of shape `chunk` are never written, so that it may declare any size
    // without taking room in the file; reading it gives the fill value.
    FixtureWriter& unwrittenDataset(const std::string& path, const H5::DataType& fileType,
        const std::vector<hsize_t>& dims, const std::vector<hsize_t>& chunk);
    // A virtual dataset whose whole extent maps to the whole of the dataset `sourcePath` in
    // `sourceFile` ("." for this file, so that a dataset can map to itself).
    FixtureWriter& virtualDataset(const std::string& path, const H5::DataType& fileType,
        const std::vector<hsize_t>& dims, const std::string& sourceFile, const std::string& sourcePath);
    // A dataset whose raw values are kept in the file `externalFile` (external storage) instead of
    // this one; `data` is written there through the library unless nullptr.
    FixtureWriter& externalDataset(const std::string& path, const H5::DataType& fileType,
        const H5::DataType& memoryType, const std::vector<hsize_t>& dims, const std::string& externalFile,
        const void* data);
    // An empty group, with its parents, e.g. "events/contour".
    FixtureWriter& group(const std::string& path);
    // A soft link at `path` to `target`, which need not exist (a dangling link).
    FixtureWriter& softLink(const std::string& path, const std::string& target);
    // An external link at `path` to the object `target` of the file `file`; neither need exist.
    FixtureWriter& externalLink(const std::string& path, const std::string& file, const std::string& target);

    // Scalar attributes on the root group.
    // Fixed-length text takes `size` bytes, padding included; 0 makes it just long enough.
    FixtureWriter& stringAttribute(const std::string& name, const std::string& value,
        StringStorage storage = StringStorage::Variable, std::size_t size = 0);
    // `bytes` is 4 (float) or 8 (double).
    FixtureWriter& floatAttribute(const std::string& name, double value, std::size_t bytes = 8);
    // Any integer size and sign; the value is converted by the library.
    FixtureWriter& intAttribute(
        const std::string& name, std::int64_t value, std::size_t bytes = 8, bool isSigned = true);
    // An enumeration over a signed byte with members FALSE = 0, TRUE = 1 and, for other values, VALUE.
    FixtureWriter& enumAttribute(const std::string& name, int value);
    // A float32 array of shape (points, 2), as the instrument stores polygon gates.
    FixtureWriter& pointsAttribute(
        const std::string& name, const std::vector<std::pair<float, float>>& points);
    // A scalar object reference to `target` (an absolute path in this file).
    FixtureWriter& referenceAttribute(const std::string& name, const std::string& target);
    // Any attribute on the root; empty dims make it scalar.
    FixtureWriter& attribute(const std::string& name, const H5::DataType& fileType,
        const H5::DataType& memoryType, const std::vector<hsize_t>& dims, const void* data);

    void close();

    template <typename T> static const H5::PredType& nativeType();

private:
    H5::Group ensureGroup(const std::string& path);
    // The parent group of `path`, created as needed, and the last component of the path.
    std::pair<H5::Group, std::string> parentOf(const std::string& path);

    std::unique_ptr<H5::H5File> m_file;
};

template <> const H5::PredType& FixtureWriter::nativeType<std::int8_t>();
template <> const H5::PredType& FixtureWriter::nativeType<std::uint8_t>();
template <> const H5::PredType& FixtureWriter::nativeType<std::int16_t>();
template <> const H5::PredType& FixtureWriter::nativeType<std::uint16_t>();
template <> const H5::PredType& FixtureWriter::nativeType<std::int32_t>();
template <> const H5::PredType& FixtureWriter::nativeType<std::uint32_t>();
template <> const H5::PredType& FixtureWriter::nativeType<std::int64_t>();
template <> const H5::PredType& FixtureWriter::nativeType<std::uint64_t>();
template <> const H5::PredType& FixtureWriter::nativeType<float>();
template <> const H5::PredType& FixtureWriter::nativeType<double>();

} // namespace Tessaly::Testing
