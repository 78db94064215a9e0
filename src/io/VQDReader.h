#pragma once

#include "calc/TraceFilters.h"
#include "io/VQDMetadata.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace H5 {
class H5File;
}

namespace Tessaly {

// The program's only door to a measurement file (".vqd", HDF5). Opens the file read-only, lists its
// features and traces, turns the root attributes into text metadata, and serves every feature column
// as doubles from a cache filled on demand. Features computed by the program are put into the same
// cache and look like stored ones from then on. Images, masks and traces are never held: each is read
// for one event at a time by a hyperslab selection. A trace alias names a filtered view of a stored
// trace; the filters run on reading, and only the last filtered trace is kept.
//
// Threads: every operation that touches the HDF5 library or the column cache holds hdf5Mutex(). The
// plain getters (isOpen, eventCount, hasFeature, isComputedFeature, featureNames, hasImage, hasMask,
// hasTraces, isInstrumentData) don't lock: they read fields that are stable once open() has returned.
// setFeature changes the feature list and must not run while another thread walks it.
//
// Failures never throw: each operation writes one line to the standard error stream and returns a
// neutral result (false, an empty vector, empty metadata, zero).
class VQDReader
{
public:
    VQDReader();
    ~VQDReader();
    VQDReader(const VQDReader&) = delete;
    VQDReader& operator=(const VQDReader&) = delete;

    // Closes whatever was open, then opens `path` read-only and lists features, traces and the event
    // count. Any file the library can open counts as opened, whatever it holds.
    bool open(const std::string& path);
    // Releases the file and forgets everything, computed features included.
    void close();
    bool isOpen() const { return m_fileOpen; }
    std::string path() const { return m_filePath; }

    // The root attributes as text; empty when no file is open. Also decides isInstrumentData().
    VQDMetadata readMetadata();
    // Whether the file comes from the maker's instrument; meaningful after readMetadata().
    bool isInstrumentData() const { return m_instrumentData; }

    // Length of the first feature in name order; 0 without features.
    std::uint64_t eventCount() const { return m_eventCount; }
    // Stored and computed feature names, ascending bytewise.
    const std::vector<std::string>& featureNames();
    bool hasFeature(const std::string& name) const;
    bool isComputedFeature(const std::string& name) const;

    // The column of `name` as doubles, read on first use and cached. Missing, unreadable and empty
    // columns all give the same shared empty vector. A reference stays valid until `name` is replaced
    // by setFeature or the reader is closed.
    const std::vector<double>& getFeature(const std::string& name);
    // Why the last read of the column `name` gave nothing, as the reader reported it; empty when it
    // was never refused or has been read since. A column that keeps failing is reported once.
    std::string featureError(const std::string& name) const;
    // Puts a computed column into the cache, replacing any column of that name. `values` is moved from.
    void setFeature(const std::string& name, std::vector<double>&& values);
    // Reads every scalar column into the cache, taking the lock for one column at a time so that other
    // threads get their turn between two columns.
    void cacheAllFeatures();

    // The stored column `name` read afresh and not cached, for a process that passes columns on and
    // need not keep them. Nothing when there is no such column; nothing, with the reason in `failure`
    // and on the standard error stream, when it can't be read.
    std::optional<std::vector<double>> readFeatureUncached(
        const std::string& name, std::string* failure = nullptr);
    // Columns decoded by another process, the file check, go into the cache through these, so that
    // they are not decoded twice. What that process hands over is not trusted: a column is taken only
    // for a stored scalar feature that is listed and not yet cached, and only with as many values as
    // its dataset holds. adoptableLength gives that number, or nothing when `name` would be refused,
    // so that a caller need not allocate for a column that can't be taken. `values` is moved from
    // when adopted.
    std::optional<std::uint64_t> adoptableLength(const std::string& name);
    bool adoptFeature(const std::string& name, std::vector<double>&& values);
    // Whether getFeature(name) would be served from memory, without reading the file.
    bool isFeatureCached(const std::string& name) const;

    bool hasImage() const { return m_imageAvailable; }
    bool hasMask() const { return m_maskAvailable; }
    bool hasTraces() const { return m_tracesAvailable; }

    // Frame or mask of one event, row by row (height x width bytes), with its size in `width` and
    // `height`. Empty, with `width` and `height` left as they were, when there is no such dataset, no
    // open file, no event of that index, or the read fails. Mask values are as stored; non-zero is inside.
    std::vector<std::uint8_t> getImage(std::size_t index, int* width, int* height);
    std::vector<std::uint8_t> getMask(std::size_t index, int* width, int* height);

    // Masks [first, first + count) in one read, for callers that go through many events: fewer at the end
    // of the stack, none when there is nothing to read; all of the size given out.
    std::vector<std::vector<std::uint8_t>> getMasks(
        std::size_t first, std::size_t count, int* width, int* height);

    // Stored trace names and aliases, ascending, and the samples per trace.
    std::vector<std::string> traceNames() const;
    std::uint64_t traceLength() const { return m_traceLength; }
    // One event's trace. A stored name gives the values of the file, whatever the filter settings; an
    // alias gives its source trace through the filter chain. Empty when there is nothing to give.
    std::vector<float> getTrace(const std::string& name, std::size_t index);
    // Rows [first, first + count) of a stored trace as the file holds them, in one read: fewer at the end
    // of the file, none when there is nothing to read. An alias gives its source's rows, unfiltered, for
    // callers that filter many traces at once on threads of their own (applyTraceProcessing with
    // traceProcessing() gives what getTrace gives).
    std::vector<std::vector<float>> getRawTraces(
        const std::string& name, std::size_t first, std::size_t count);
    // Makes `alias` name the filtered view of the stored trace `source` and lists it among the traces.
    void addTraceAlias(const std::string& alias, const std::string& source);
    // The filters that aliases run through; a change recomputes every alias at its next read.
    void setTraceProcessing(const TraceProcessing& processing);
    void setTraceProcessing(bool hampel1, int hampel1HalfWindow, float hampel1Threshold, bool hampel2,
        int hampel2HalfWindow, float hampel2Threshold, bool median, int medianHalfWindow, bool rolling,
        int rollingHalfWindow, bool savitzkyGolay, int savitzkyGolayHalfWindow);
    TraceProcessing traceProcessing() const;

    // The display text of a feature; instrument files have their own meaning for some columns.
    std::string featureLabel(const std::string& name) const;

private:
    void listFeatures();
    void listTraces();
    void determineEventCount();
    std::vector<std::uint8_t> readFrame(
        const char* dataset, const char* what, bool available, std::size_t index, int* width, int* height);
    std::vector<std::vector<std::uint8_t>> readFrames(const char* dataset, const char* what, bool available,
        std::size_t first, std::size_t count, int* width, int* height);
    std::vector<float> readStoredTrace(const std::string& name, std::size_t index);
    std::vector<std::vector<float>> readStoredRows(
        const std::string& name, std::size_t first, std::size_t count);
    void forgetLastTrace();
    // /events/<name> as a column. Nothing, with `failure` unset, when there is no such column;
    // nothing with the reason in `failure` when it can't be read. Holds no lock of its own.
    std::optional<std::vector<double>> readStoredColumn(
        const std::string& name, std::optional<std::string>& failure);

    std::unique_ptr<H5::H5File> m_file;
    std::string m_filePath;
    bool m_fileOpen = false;
    std::uint64_t m_eventCount = 0;
    std::vector<std::string> m_featureNames;
    std::unordered_set<std::string> m_featureNameSet;
    bool m_featureNamesSorted = false;
    bool m_imageAvailable = false;
    bool m_maskAvailable = false;
    bool m_tracesAvailable = false;
    bool m_instrumentData = false;
    std::vector<std::string> m_traceNames;
    std::uint64_t m_traceLength = 0;
    // Owned vectors, so that references handed out survive a rehash of the map.
    std::unordered_map<std::string, std::unique_ptr<std::vector<double>>> m_columnCache;
    std::unordered_set<std::string> m_computedFeatureNames;
    // Column name to the reason its last read failed; present from the first failure, which alone
    // is reported, until a read succeeds.
    std::unordered_map<std::string, std::string> m_columnFailures;
    // Alias to the stored trace it filters.
    std::unordered_map<std::string, std::string> m_traceAliases;
    TraceProcessing m_traceProcessing;
    // The last filtered trace, for consumers that ask for the same event's alias in a row.
    std::string m_lastTraceName;
    std::int64_t m_lastTraceIndex = -1;
    std::vector<float> m_lastTrace;
};

} // namespace Tessaly
