#include "core/EffectiveFilter.h"

namespace Tessaly {

EventFilter joinEffectiveFilter(
    const EventFilter& own, const std::vector<const FilterGroup*>& enabledGroupsInOrder)
{
    EventFilter effective = own;
    for (const FilterGroup* group : enabledGroupsInOrder) {
        if (group == nullptr)
            continue;
        for (const FilterRule& rule : group->rules)
            effective.addRule(rule);
    }
    return effective;
}

} // namespace Tessaly
