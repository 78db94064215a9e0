#pragma once

#include "calc/FLRefinementParams.h"

#include <QObject>
#include <atomic>

namespace Tessaly {

class VQDReader;
struct VQDMetadata;

// Measures each event's fluorescence peaks anew. The raw traces are cleaned by the reader's filter
// chain (each channel gets the filtered trace "fl<c>_median_rf"), the cells' speed is estimated from
// the events themselves, the speed predicts where in a trace a cell's light must lie, and peak height,
// position and width are searched there. Adds "fl<c>_max_rf", "fl<c>_pos_rf" and "fl<c>_width_rf" to
// the reader for every channel.
//
// Runs on any thread; everything it touches in the reader goes through the reader's lock. The filter
// settings it gives the reader are shared by every user of that reader, so the trace plot shows them
// from its next read on.
class FLRefinement : public QObject
{
    Q_OBJECT

public:
    explicit FLRefinement(QObject* parent = nullptr);

    // True when every channel was done. False without a reader, without fluorescence channels, or when
    // cancelled; channels finished before a cancellation keep their features.
    bool refine(VQDReader* reader, const VQDMetadata& metadata, const FLRefinementParams& params);

    // Asks a running refine() to stop before its next event. May be called from any thread; a refine()
    // that starts later clears it.
    void cancel() { m_cancelled = true; }

signals:
    void progressChanged(int percent);

private:
    std::atomic<bool> m_cancelled { false };
};

} // namespace Tessaly
