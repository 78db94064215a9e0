#pragma once

#include "io/VQDMetadata.h"

#include <cstdint>
#include <memory>
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
// cache and look like stored ones from then on.
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
    // Puts a computed column into the cache, replacing any column of that name. `values` is moved from.
    void setFeature(const std::string& name, std::vector<double>&& values);
    // Reads every scalar column into the cache, taking the lock for one column at a time so that other
    // threads get their turn between two columns.
    void cacheAllFeatures();

    bool hasImage() const { return m_imageAvailable; }
    bool hasMask() const { return m_maskAvailable; }
    bool hasTraces() const { return m_tracesAvailable; }

    // Stored fluorescence trace names, ascending, and the samples per trace.
    std::vector<std::string> traceNames() const;
    std::uint64_t traceLength() const { return m_traceLength; }

    // The display text of a feature; instrument files have their own meaning for some columns.
    std::string featureLabel(const std::string& name) const;

private:
    void listFeatures();
    void listTraces();
    void determineEventCount();

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
};

} // namespace Tessaly
