#include "core/PolygonRuleId.h"

#include <gtest/gtest.h>

using namespace Tessaly;

TEST(PolygonRuleId, GroupRulesRoundTripAndOwnRulesStayBelowTheBase)
{
    struct Case
    {
        int group;
        int rule;
        int id;
    };
    const Case cases[] = {
        { 0, 0, 1000000 },
        { 0, 9999, 1009999 },
        { 1, 0, 1010000 },
        { 7, 42, 1070042 },
        { 250, 3, 3500003 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(groupRuleId(c.group, c.rule), c.id);
        EXPECT_TRUE(isGroupRuleId(c.id));
        EXPECT_EQ(groupOfRuleId(c.id), c.group);
        EXPECT_EQ(ruleOfGroupRuleId(c.id), c.rule);
    }
    // The dataset's own rules are their indices.
    EXPECT_FALSE(isGroupRuleId(0));
    EXPECT_FALSE(isGroupRuleId(999999));
    // Rule 10000 of a group would take the next group's first id.
    EXPECT_EQ(groupRuleId(0, 10000), groupRuleId(1, 0));
}
