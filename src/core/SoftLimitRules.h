#pragma once

#include "core/FilterRule.h"
#include "io/VQDMetadata.h"

#include <vector>

namespace Tessaly {

// The gates that the instrument applied while measuring, as filter rules. Each key of the online
// filter section named "<feature> soft limit" with the value "1" gives a range rule from the keys
// "<feature> min" and "<feature> max" (none if either is missing); a key "<x>,<y> soft limit" gives a
// polygon rule with the vertices of the first stored polygon gate of that feature pair (none if no
// such gate has a vertex). Keys are taken in ascending order; the rules are enabled, with linear
// scale modes. A bound that is no number throws std::invalid_argument (std::out_of_range when it is
// too large for a double), before any rule is returned.
std::vector<FilterRule> softLimitRules(const VQDMetadata& metadata);

} // namespace Tessaly
