#pragma once

#include "core/FilterRule.h"

#include <string>
#include <vector>

namespace Tessaly {

inline constexpr const char* filterGroupNamePrefix = "Filter group ";

// Rules shared by every dataset that switches the group on. The id comes from a counter that only
// rises, so it stays unique after groups are removed; -1 until one is assigned.
struct FilterGroup
{
    int id = -1;
    std::string name;
    std::vector<FilterRule> rules;
};

// Name of a new group: numbered from 1 for the id 0.
inline std::string defaultFilterGroupName(int id)
{
    return filterGroupNamePrefix + std::to_string(id + 1);
}

} // namespace Tessaly
