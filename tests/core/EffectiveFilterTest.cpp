#include "core/EffectiveFilter.h"

#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

FilterRule rangeRule(const std::string& feature, double lo, double hi)
{
    FilterRule rule;
    rule.featureName = feature;
    rule.minValue = lo;
    rule.maxValue = hi;
    return rule;
}

using Indices = std::vector<std::int32_t>;

} // namespace

TEST(EffectiveFilter, OwnRulesComeFirstThenEachEnabledGroupInOrder)
{
    EventFilter own;
    own.addRule(rangeRule("own", 0, 1));
    own.setCombineMode(ShowExcludedEvents);
    FilterGroup first { 0, defaultFilterGroupName(0), { rangeRule("g0a", 0, 1), rangeRule("g0b", 0, 1) } };
    FilterGroup second { 3, defaultFilterGroupName(3), { rangeRule("g3", 0, 1) } };

    const EventFilter joined = joinEffectiveFilter(own, { &second, nullptr, &first });
    ASSERT_EQ(joined.ruleCount(), 4);
    EXPECT_EQ(joined.rules()[0].featureName, "own");
    EXPECT_EQ(joined.rules()[1].featureName, "g3");
    EXPECT_EQ(joined.rules()[2].featureName, "g0a");
    EXPECT_EQ(joined.rules()[3].featureName, "g0b");
    EXPECT_EQ(joined.combineMode(), ShowExcludedEvents);
    EXPECT_TRUE(joined.isEnabled());
    // The dataset's own filter is left as it was.
    EXPECT_EQ(own.ruleCount(), 1);

    EXPECT_EQ(first.name, "Filter group 1");
    EXPECT_EQ(second.name, "Filter group 4");
}

TEST(EffectiveFilter, DisabledDatasetFilterStaysDisabledWithGroupRules)
{
    EventFilter own;
    own.setEnabled(false);
    const FilterGroup group { 0, "g", { rangeRule("area_um", 0, 1) } };
    const EventFilter joined = joinEffectiveFilter(own, { &group });
    EXPECT_FALSE(joined.isEnabled());
    EXPECT_EQ(joined.ruleCount(), 1);
}

TEST(EffectiveFilter, GroupEnabledForOneDatasetChangesOnlyItsEvents)
{
    const std::vector<double> area { 10, 50, 90, 130 };
    const std::vector<double> deform { 0.01, 0.2, 0.05, 0.03 };
    const FeatureColumns columns { { "area_um", &area }, { "deform", &deform } };
    const FilterGroup smallCells { 0, "small", { rangeRule("area_um", 0, 100) } };

    EventFilter first;
    first.addRule(rangeRule("deform", 0, 0.1));
    const EventFilter second = first;

    EXPECT_EQ(joinEffectiveFilter(first, { &smallCells }).evaluate(columns, 4), (Indices { 0, 2 }));
    EXPECT_EQ(joinEffectiveFilter(second, {}).evaluate(columns, 4), (Indices { 0, 2, 3 }));

    // "Show excluded" of the dataset applies to the joined list: the complement of both rules.
    EventFilter excluded = first;
    excluded.setCombineMode(ShowExcludedEvents);
    EXPECT_EQ(joinEffectiveFilter(excluded, { &smallCells }).evaluate(columns, 4), (Indices { 1, 3 }));
}
