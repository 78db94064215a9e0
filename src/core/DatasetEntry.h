#pragma once

#include "core/EventFilter.h"
#include "io/VQDMetadata.h"
#include "io/VQDReader.h"

#include <QHash>
#include <QString>
#include <memory>
#include <string>
#include <vector>

namespace Tessaly {

// One loaded dataset. Its identity is `id`, never the row: rows change when datasets are reordered
// or removed, ids are never reused. A dataset and its duplicates share one reader, and with it one
// open file and one column cache.
struct DatasetEntry
{
    int id = -1;
    std::shared_ptr<VQDReader> reader;
    VQDMetadata metadata;
    std::string filePath;
    QString displayName;
    // Selected features; the colour may also be a density selector ("__density_...").
    std::string xFeatureName;
    std::string yFeatureName;
    std::string colorFeatureName;
    int currentEventIndex = -1;
    // Set when the background preload has cached every column; until then the entry is listed but
    // not shown.
    bool featuresLoaded = false;
    EventFilter filter;
    int contourMode = 0; // 0 off, 1 overlay, 2 only
    double contourFraction1 = 0.1;
    double contourFraction2 = 0.67;
    int scaleXMode = 0; // 0 linear, 1 log, 2 pseudo-log
    int scaleYMode = 0;
    bool flRefinementApplied = false;
    bool ctcApplied = false;
    std::vector<int> ctcChannels;
    std::vector<std::vector<double>> spilloverMatrix;
    bool emodApplied = false;
    bool fourierApplied = false;
    // Which filter groups apply to this dataset; an absent id counts as off.
    QHash<int, bool> groupEnabled;
};

} // namespace Tessaly
