#pragma once

#include "core/EventFilter.h"
#include "core/FilterGroup.h"

#include <vector>

namespace Tessaly {

// The filter that decides which events of a dataset count: the dataset's own rules in their order,
// followed by the rules of each group that the dataset switched on, in the order given (the order
// in which the groups were created). Enabled flag and combine mode are the dataset's own; groups
// bring none, so "show excluded events" inverts the joined list as a whole. Null groups are skipped.
EventFilter joinEffectiveFilter(
    const EventFilter& own, const std::vector<const FilterGroup*>& enabledGroupsInOrder);

} // namespace Tessaly
