#pragma once

#include "calc/TraceFilters.h"

namespace Tessaly {

// Everything a fluorescence refinement needs from the user: the filters that clean the raw traces
// (with the same defaults as the reader's chain) and the least peak height of an event that may take
// part in the speed estimate.
struct FLRefinementParams : TraceProcessing
{
    double flMaxThreshold = 400.0; // a.u.

    // The filter part, as the reader runs it on every aliased trace.
    TraceProcessing traceProcessing() const { return *this; }
};

} // namespace Tessaly
