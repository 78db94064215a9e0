#pragma once

namespace Tessaly {

// One integer names a polygon rule on the plot, for its overlay and while it is edited: a rule of
// the dataset's own list by its index, rule j of filter group g by (g + 100) * 10000 + j. Every
// id from 1000000 up is therefore a group rule. A group holding more than 10000 rules would
// collide with the next group's ids; nothing guards against that.
inline constexpr int groupRuleIdBase = 1000000;
inline constexpr int groupRuleIdStride = 10000;
inline constexpr int groupRuleIdGroupOffset = groupRuleIdBase / groupRuleIdStride;

constexpr int groupRuleId(int groupId, int ruleIndex)
{
    return (groupId + groupRuleIdGroupOffset) * groupRuleIdStride + ruleIndex;
}

constexpr bool isGroupRuleId(int id)
{
    return id >= groupRuleIdBase;
}

constexpr int groupOfRuleId(int id)
{
    return (id - groupRuleIdBase) / groupRuleIdStride;
}

constexpr int ruleOfGroupRuleId(int id)
{
    return (id - groupRuleIdBase) % groupRuleIdStride;
}

} // namespace Tessaly
