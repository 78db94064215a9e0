#include "ExampleFileWriter.h"

#include "FrameRenderer.h"
#include "io/Hdf5Filters.h"

#include <H5Cpp.h>
#include <algorithm>
#include <ctime>
#include <iostream>

namespace Tessaly::ExampleData {

namespace {

constexpr H5Z_filter_t kZstdFilter = 32015;

void setCompression(H5::DSetCreatPropList& properties, Compression compression)
{
    if (compression == Compression::Deflate) {
        properties.setDeflate(4);
    } else if (compression == Compression::Zstd) {
        const unsigned level = 3;
        properties.setFilter(kZstdFilter, H5Z_FLAG_MANDATORY, 1, &level);
    }
}

void writeString(H5::H5File& file, const std::string& name, const std::string& value)
{
    const H5::StrType type(H5::PredType::C_S1, H5T_VARIABLE);
    H5::Attribute attribute = file.createAttribute(name, type, H5::DataSpace(H5S_SCALAR));
    const char* text = value.c_str();
    attribute.write(type, &text);
}

void writeDouble(H5::H5File& file, const std::string& name, double value)
{
    file.createAttribute(name, H5::PredType::NATIVE_DOUBLE, H5::DataSpace(H5S_SCALAR))
        .write(H5::PredType::NATIVE_DOUBLE, &value);
}

void writeInteger(H5::H5File& file, const std::string& name, long long value)
{
    file.createAttribute(name, H5::PredType::NATIVE_LLONG, H5::DataSpace(H5S_SCALAR))
        .write(H5::PredType::NATIVE_LLONG, &value);
}

std::string today(const char* format)
{
    const std::time_t now = std::time(nullptr);
    char text[32] = {};
    std::strftime(text, sizeof text, format, std::localtime(&now));
    return text;
}

void writeMetadata(H5::H5File& file, const ExampleSettings& s)
{
    writeString(file, "experiment:sample", s.sample);
    writeInteger(file, "experiment:run index", 1);
    writeString(file, "experiment:date", today("%Y-%m-%d"));
    writeString(file, "experiment:time", today("%H:%M:%S"));
    writeInteger(file, "experiment:event count", static_cast<long long>(s.eventCount));
    writeString(file, "setup:module composition", "Vortiq, Fluorescence");
    writeString(file, "setup:identifier", "VQ-EXAMPLE-01");
    writeString(file, "setup:software version", "tessaly-example-data 1.0");
    writeString(file, "setup:chip region", "channel");
    writeString(file, "setup:medium", "SorvexB");
    writeDouble(file, "setup:channel width", s.channelWidth);
    writeDouble(file, "setup:flow rate", s.flowRate);
    writeDouble(file, "setup:temperature", s.temperature);
    writeDouble(file, "imaging:pixel size", s.pixelSize);
    writeDouble(file, "imaging:frame rate", s.frameRate);
    writeInteger(file, "imaging:roi size x", s.frameWidth);
    writeInteger(file, "imaging:roi size y", s.frameHeight);
    writeDouble(file, "imaging:exposure time", 1.0);
    writeInteger(file, "fluorescence:channel count", 3);
    writeString(file, "fluorescence:channel 1 name", "FL1 525/50");
    writeString(file, "fluorescence:channel 2 name", "FL2 593/46");
    writeString(file, "fluorescence:channel 3 name", "FL3 700/75");
    writeDouble(file, "fluorescence:sample rate", s.traceSampleRate);
    writeInteger(file, "fluorescence:samples per event", s.traceLength);
    for (int c = 1; c <= 3; ++c)
        writeInteger(file, "fluorescence:baseline " + std::to_string(c) + " offset", 0);
    writeInteger(file, "online_contour:bin area min", 10);
    writeInteger(file, "online_contour:bin kernel", 5);
    writeInteger(file, "online_contour:bin threshold", -6);
    writeString(file, "online_filter:target population", "cells");

    // One polygon gate as the instrument stores it: vertices of area_um against deform.
    const float gate[5][2]
        = { { 20.f, 0.005f }, { 250.f, 0.005f }, { 250.f, 0.15f }, { 60.f, 0.2f }, { 20.f, 0.1f } };
    const hsize_t dims[2] = { 5, 2 };
    file.createAttribute(
            "online_filter:area_um,deform polygon points", H5::PredType::NATIVE_FLOAT, H5::DataSpace(2, dims))
        .write(H5::PredType::NATIVE_FLOAT, gate);
}

void writeColumns(H5::H5File& file, const ExampleEvents& events, const WriteOptions& options)
{
    for (const auto& [name, values] : events.columns) {
        const hsize_t n = values.size();
        H5::DSetCreatPropList properties;
        if (n > 0) {
            const hsize_t chunk = std::min<hsize_t>(n, 65536);
            properties.setChunk(1, &chunk);
            setCompression(properties, options.compression);
        }
        const H5::DataSpace space(1, &n);
        const H5::PredType& fileType
            = options.singlePrecision ? H5::PredType::IEEE_F32LE : H5::PredType::IEEE_F64LE;
        file.createDataSet("/events/" + name, fileType, space, properties)
            .write(values.data(), H5::PredType::NATIVE_DOUBLE);
    }
}

H5::DataSet createEventArray(H5::H5File& file, const std::string& path, const H5::PredType& type, hsize_t n,
    hsize_t rows, hsize_t cols, Compression compression)
{
    const int rank = cols == 0 ? 2 : 3;
    const hsize_t dims[3] = { n, rows, cols };
    // One frame per chunk, as cameras write them: showing an event then inflates just that frame.
    const hsize_t chunk[3] = { std::min<hsize_t>(n, rank == 2 ? 32 : 1), rows, cols };
    H5::DSetCreatPropList properties;
    properties.setChunk(rank, chunk);
    setCompression(properties, compression);
    return file.createDataSet(path, type, H5::DataSpace(rank, dims), properties);
}

// A five-sample sliding median, shrinking at the ends, as the instrument smooths its traces.
std::vector<std::int16_t> slidingMedian5(const std::vector<std::int16_t>& trace)
{
    std::vector<std::int16_t> result(trace.size());
    const long n = static_cast<long>(trace.size());
    for (long i = 0; i < n; ++i) {
        std::vector<std::int16_t> window(
            trace.begin() + std::max(0L, i - 2), trace.begin() + std::min(n, i + 3));
        std::nth_element(window.begin(), window.begin() + static_cast<long>(window.size() / 2), window.end());
        result[static_cast<std::size_t>(i)] = window[window.size() / 2];
    }
    return result;
}

// Frames, masks and traces are rendered and written in blocks, so that a large file never needs
// all of them in memory at once.
void writeEventArrays(
    H5::H5File& file, const ExampleSettings& s, const ExampleEvents& events, const WriteOptions& options)
{
    const hsize_t n = events.cells.size();
    const hsize_t h = static_cast<hsize_t>(s.frameHeight);
    const hsize_t w = static_cast<hsize_t>(s.frameWidth);
    const hsize_t samples = static_cast<hsize_t>(s.traceLength);
    const FrameRenderer renderer(s);
    std::mt19937_64 rng(s.seed ^ 0x5eed);

    // Per channel the raw trace and the instrument's median-filtered one.
    H5::DataSet image, mask, traces[6];
    if (options.images) {
        image = createEventArray(file, "/events/image", H5::PredType::STD_U8LE, n, h, w, options.compression);
        mask = createEventArray(file, "/events/mask", H5::PredType::STD_U8LE, n, h, w, options.compression);
    }
    if (options.traces) {
        file.createGroup("/events/trace");
        for (int c = 0; c < 6; ++c)
            traces[c] = createEventArray(file,
                "/events/trace/fl" + std::to_string(c % 3 + 1) + (c < 3 ? "_raw" : "_median"),
                H5::PredType::STD_I16LE, n, samples, 0, options.compression);
    }

    const hsize_t block = 256;
    std::vector<std::uint8_t> imageBlock, maskBlock;
    std::vector<std::int16_t> traceBlock[6];
    std::vector<std::int16_t> one[3];
    for (hsize_t start = 0; start < n; start += block) {
        const hsize_t count = std::min(block, n - start);
        if (options.images) {
            imageBlock.resize(count * h * w);
            maskBlock.resize(count * h * w);
        }
        for (int c = 0; c < 6 && options.traces; ++c)
            traceBlock[c].resize(count * samples);
        for (hsize_t k = 0; k < count; ++k) {
            const CellShape& cell = events.cells[start + k];
            if (options.images)
                renderer.render(cell, rng, imageBlock.data() + k * h * w, maskBlock.data() + k * h * w);
            if (options.traces) {
                renderer.renderTraces(cell, rng, one);
                for (int c = 0; c < 3; ++c) {
                    const auto at = static_cast<long>(k * samples);
                    std::copy(one[c].begin(), one[c].end(), traceBlock[c].begin() + at);
                    const std::vector<std::int16_t> median = slidingMedian5(one[c]);
                    std::copy(median.begin(), median.end(), traceBlock[c + 3].begin() + at);
                }
            }
        }
        if (options.images) {
            const hsize_t offset[3] = { start, 0, 0 };
            const hsize_t extent[3] = { count, h, w };
            for (auto [dataset, data] :
                { std::pair { &image, &imageBlock }, std::pair { &mask, &maskBlock } }) {
                H5::DataSpace fileSpace = dataset->getSpace();
                fileSpace.selectHyperslab(H5S_SELECT_SET, extent, offset);
                dataset->write(data->data(), H5::PredType::NATIVE_UINT8, H5::DataSpace(3, extent), fileSpace);
            }
        }
        if (options.traces) {
            const hsize_t offset[2] = { start, 0 };
            const hsize_t extent[2] = { count, samples };
            for (int c = 0; c < 6; ++c) {
                H5::DataSpace fileSpace = traces[c].getSpace();
                fileSpace.selectHyperslab(H5S_SELECT_SET, extent, offset);
                traces[c].write(
                    traceBlock[c].data(), H5::PredType::NATIVE_INT16, H5::DataSpace(2, extent), fileSpace);
            }
        }
    }
}

} // namespace

bool writeExampleFile(const std::string& path, const ExampleSettings& settings, const ExampleEvents& events,
    const WriteOptions& options)
{
    try {
        Tessaly::registerHdf5Filters();
        if (options.compression == Compression::Zstd && H5Zfilter_avail(kZstdFilter) <= 0) {
            std::cerr << "Zstandard compression is not available in this HDF5 library" << std::endl;
            return false;
        }
        H5::H5File file(path, H5F_ACC_TRUNC);
        writeMetadata(file, settings);
        file.createGroup("/events");
        writeColumns(file, events, options);
        if (options.images || options.traces)
            writeEventArrays(file, settings, events, options);
        return true;
    } catch (const H5::Exception& e) {
        std::cerr << "Error writing " << path << ": " << e.getDetailMsg() << std::endl;
        return false;
    }
}

} // namespace Tessaly::ExampleData
