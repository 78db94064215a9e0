#pragma once

#include "core/EventFilter.h"
#include "io/VQDMetadata.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace H5 {
class H5File;
}

namespace Tessaly {

class VQDReader;

// Writes a new measurement file from a subset of a dataset's events, in the layout the reader
// reads. The calls go in this order: create, copyAttributes, writeOfflineFilter,
// writeExportAttributes, writeScalars, writeImages, writeMasks, writeTraces, close. Every call but
// create is a no-op while no file is open.
//
// Scalars become 64-bit floats whatever their stored type. Images, masks and traces are chunked one
// event per chunk and deflated, so that a later reader takes any event with one decompression.
//
// Failures don't throw: each writes one line to the standard error stream and the following calls
// still run. hasFailed() tells the caller whether the file misses anything, so that it can discard
// the file instead of keeping half of it. Every call holds hdf5Mutex().
class VQDWriter
{
public:
    VQDWriter();
    ~VQDWriter();
    VQDWriter(const VQDWriter&) = delete;
    VQDWriter& operator=(const VQDWriter&) = delete;

    // Creates (or truncates) the file and its "/events" group.
    bool create(const std::string& path);
    bool isOpen() const { return static_cast<bool>(m_file); }

    // The source's root attributes: its polygon gates as float matrices, everything else as text.
    void copyAttributes(const VQDMetadata& metadata);
    // The enabled rules of the filter that selected the events, as "offline_filter:" attributes.
    // A disabled filter selected nothing and leaves no attribute.
    void writeOfflineFilter(const EventFilter& filter);
    // "export:date", "export:event count" and, unless empty, "export:changed sample name".
    void writeExportAttributes(std::uint64_t eventCount, const std::string& changedSampleName);
    // One column per scalar feature with the values at `events`, in that order; features the reader can't
    // give are skipped. An event beyond a column's end gets NaN.
    void writeScalars(
        const std::vector<std::string>& features, const std::vector<std::int32_t>& events, VQDReader& reader);
    // The frames of `events`. The first event decides the frame size; without a frame there, nothing
    // is written. An event whose frame can't be read keeps the fill value 0.
    void writeImages(VQDReader& reader, const std::vector<std::int32_t>& events);
    void writeMasks(VQDReader& reader, const std::vector<std::int32_t>& events);
    // Every listed trace, aliases included, so that a filtered trace is written with its filtered
    // values under its own name.
    void writeTraces(VQDReader& reader, const std::vector<std::int32_t>& events);
    // Releases the file; false when the library could not finish it or anything before failed.
    bool close();

    // Whether anything since create() failed to be written.
    bool hasFailed() const { return m_failed; }

private:
    void writeStringAttribute(const std::string& name, const std::string& value);
    void writePointsAttribute(const std::string& name, const std::vector<std::pair<double, double>>& points);
    void removeAttributeIfPresent(const std::string& name);
    void abandonFile();
    void closeLeftObjects();
    void writeFrames(VQDReader& reader, const std::vector<std::int32_t>& events, bool masks);
    void fail(const std::string& prefix, const std::string& detail);

    std::unique_ptr<H5::H5File> m_file;
    bool m_failed = false;
    // Since a write failed, nothing more is written and the file's descriptor leads to memory.
    bool m_abandoned = false;
};

// The word a polygon gate's scale is recorded with: "linear", "log" or "pseudolog"; modes outside
// 0 to 2 are clamped into that range.
std::string scaleModeWord(int mode);

} // namespace Tessaly
