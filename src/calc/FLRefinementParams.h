#pragma once

#include "calc/TraceFilters.h"

namespace Tessaly {

// Everything a fluorescence refinement needs from the user: the filters that clean the raw traces and
// the least peak height of an event that may take part in the speed estimate.
struct FLRefinementParams
{
    bool hampel1 = true;
    int hampel1HalfWindow = 5;
    float hampel1Threshold = 3.0f;
    bool hampel2 = true;
    int hampel2HalfWindow = 11;
    float hampel2Threshold = 3.0f;
    bool median = false;
    int medianHalfWindow = 3;
    bool rolling = false;
    int rollingHalfWindow = 3;
    bool savitzkyGolay = true;
    int savitzkyGolayHalfWindow = 3;
    double flMaxThreshold = 400.0; // a.u.

    // The filter part, as the reader runs it on every aliased trace.
    TraceProcessing traceProcessing() const
    {
        return { hampel1, hampel1HalfWindow, hampel1Threshold, hampel2, hampel2HalfWindow, hampel2Threshold,
            median, medianHalfWindow, rolling, rollingHalfWindow, savitzkyGolay, savitzkyGolayHalfWindow };
    }
};

} // namespace Tessaly
