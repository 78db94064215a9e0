#include "core/SoftLimitRules.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace Tessaly;

namespace {

VQDMetadata withOnlineFilter(VQDMetadata::TextMap section)
{
    VQDMetadata metadata;
    metadata.online_filter = std::move(section);
    metadata.polygonFilters = {
        { "area_um", "deform", {} },
        { "area_um", "deform", { { 10, 0.01 }, { 400, 0.01 }, { 400, 0.1 } } },
        { "area_um", "bright_avg", { { 1, 2 }, { 3, 4 }, { 5, 6 } } },
    };
    return metadata;
}

} // namespace

TEST(SoftLimitRules, RangeLimitsNeedTheSwitchAndBothBounds)
{
    const struct
    {
        const char* what;
        VQDMetadata::TextMap section;
        std::size_t rules;
    } cases[] = {
        { "switched on", { { "area_um soft limit", "1" }, { "area_um min", "10" }, { "area_um max", "500" } },
            1 },
        { "switched off",
            { { "area_um soft limit", "0" }, { "area_um min", "10" }, { "area_um max", "500" } }, 0 },
        { "not exactly 1",
            { { "area_um soft limit", "1.0" }, { "area_um min", "1" }, { "area_um max", "2" } }, 0 },
        { "no max", { { "area_um soft limit", "1" }, { "area_um min", "10" } }, 0 },
        { "no min", { { "area_um soft limit", "1" }, { "area_um max", "10" } }, 0 },
        { "bounds without switch", { { "area_um min", "10" }, { "area_um max", "500" } }, 0 },
        { "only the suffix", { { " soft limit", "1" }, { " min", "1" }, { " max", "2" } }, 0 },
        { "other case", { { "area_um Soft Limit", "1" }, { "area_um min", "1" }, { "area_um max", "2" } },
            0 },
    };
    for (const auto& c : cases)
        EXPECT_EQ(softLimitRules(withOnlineFilter(c.section)).size(), c.rules) << c.what;

    const std::vector<FilterRule> rules = softLimitRules(withOnlineFilter(
        { { "area_um soft limit", "1" }, { "area_um min", "10" }, { "area_um max", "5e2" } }));
    ASSERT_EQ(rules.size(), 1u);
    EXPECT_EQ(rules[0].type, RangeRule);
    EXPECT_EQ(rules[0].featureName, "area_um");
    EXPECT_EQ(rules[0].minValue, 10.0);
    EXPECT_EQ(rules[0].maxValue, 500.0);
    EXPECT_TRUE(rules[0].enabled);
    EXPECT_FALSE(rules[0].inverted);
    EXPECT_TRUE(rules[0].propagationId.empty());
}

TEST(SoftLimitRules, PolygonLimitsTakeTheFirstStoredGateWithVertices)
{
    const std::vector<FilterRule> rules = softLimitRules(withOnlineFilter({
        { "area_um,deform soft limit", "1" },
        { "deform,area_um soft limit", "1" }, // no gate for the swapped pair
        { "area_um,bright_avg soft limit", "0" },
    }));
    ASSERT_EQ(rules.size(), 1u);
    EXPECT_EQ(rules[0].type, PolygonRule);
    EXPECT_EQ(rules[0].featureName, "area_um");
    EXPECT_EQ(rules[0].featureNameY, "deform");
    // The first gate of the pair has no vertex and is passed over.
    EXPECT_EQ(
        rules[0].polygonVertices, (std::vector<PlanePoint> { { 10, 0.01 }, { 400, 0.01 }, { 400, 0.1 } }));
    EXPECT_EQ(rules[0].scaleXMode, 0);
    EXPECT_EQ(rules[0].scaleYMode, 0);
}

TEST(SoftLimitRules, KeysAreTakenInAscendingOrder)
{
    const std::vector<FilterRule> rules = softLimitRules(withOnlineFilter({
        { "deform soft limit", "1" },
        { "deform min", "0" },
        { "deform max", "0.1" },
        { "area_um,deform soft limit", "1" },
        { "area_um soft limit", "1" },
        { "area_um min", "1" },
        { "area_um max", "2" },
    }));
    ASSERT_EQ(rules.size(), 3u);
    EXPECT_EQ(rules[0].featureName, "area_um");
    EXPECT_EQ(rules[0].type, RangeRule);
    EXPECT_EQ(rules[1].featureNameY, "deform");
    EXPECT_EQ(rules[2].featureName, "deform");
}

TEST(SoftLimitRules, ABoundThatIsNoNumberThrows)
{
    EXPECT_THROW(softLimitRules(withOnlineFilter(
                     { { "area_um soft limit", "1" }, { "area_um min", "small" }, { "area_um max", "9" } })),
        std::invalid_argument);
    EXPECT_TRUE(softLimitRules(VQDMetadata()).empty());
}
