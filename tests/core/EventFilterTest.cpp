#include "core/EventFilter.h"

#include "core/ScaleModes.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace Tessaly;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

FilterRule rangeRule(const std::string& feature, double lo, double hi, bool inverted = false)
{
    FilterRule rule;
    rule.type = RangeRule;
    rule.featureName = feature;
    rule.minValue = lo;
    rule.maxValue = hi;
    rule.inverted = inverted;
    return rule;
}

FilterRule polygonRule(const std::string& fx, const std::string& fy, std::vector<PlanePoint> vertices,
    int scaleX = 0, int scaleY = 0)
{
    FilterRule rule;
    rule.type = PolygonRule;
    rule.featureName = fx;
    rule.featureNameY = fy;
    rule.polygonVertices = std::move(vertices);
    rule.scaleXMode = scaleX;
    rule.scaleYMode = scaleY;
    return rule;
}

EventFilter filterOf(std::initializer_list<FilterRule> rules, int combineMode = 0)
{
    EventFilter filter;
    for (const FilterRule& rule : rules)
        filter.addRule(rule);
    filter.setCombineMode(combineMode);
    return filter;
}

std::vector<std::int32_t> allEvents(std::size_t n)
{
    std::vector<std::int32_t> all(n);
    for (std::size_t i = 0; i < n; ++i)
        all[i] = static_cast<std::int32_t>(i);
    return all;
}

using Indices = std::vector<std::int32_t>;

} // namespace

TEST(EventFilter, EditingIgnoresIndicesOutsideTheList)
{
    EventFilter filter = filterOf({ rangeRule("a", 0, 1), rangeRule("b", 0, 1) });
    filter.setRule(-1, rangeRule("x", 0, 1));
    filter.setRule(2, rangeRule("x", 0, 1));
    filter.removeRule(2);
    filter.removeRule(-1);
    ASSERT_EQ(filter.ruleCount(), 2);
    EXPECT_EQ(filter.rules()[0].featureName, "a");
    EXPECT_EQ(filter.rules()[1].featureName, "b");

    filter.setRule(1, rangeRule("c", 0, 1));
    filter.removeRule(0);
    ASSERT_EQ(filter.ruleCount(), 1);
    EXPECT_EQ(filter.rules()[0].featureName, "c");
    filter.clearRules();
    EXPECT_EQ(filter.ruleCount(), 0);
}

TEST(EventFilter, RequiredFeaturesAreThoseOfEnabledRulesOnceInFirstUse)
{
    FilterRule disabled = rangeRule("bright_avg", 0, 1);
    disabled.enabled = false;
    FilterRule rangeWithStrayY = rangeRule("area_um", 0, 1);
    rangeWithStrayY.featureNameY = "unused_y";
    const EventFilter filter = filterOf({
        rangeWithStrayY,
        disabled,
        polygonRule("deform", "area_um", { { 0, 0 }, { 1, 0 }, { 1, 1 } }),
        polygonRule("fl1_max", "", { { 0, 0 }, { 1, 0 }, { 1, 1 } }),
        rangeRule("deform", 0, 1),
    });
    EXPECT_EQ(filter.requiredFeatures(), (std::vector<std::string> { "area_um", "deform", "fl1_max" }));
}

TEST(EventFilter, RangeBoundsAreInclusiveAndNaNIsOutside)
{
    const std::vector<double> v { 1.0, 2.0, 2.0, 3.0, kNaN };
    const FeatureColumns columns { { "v", &v } };

    // Equal bounds pass exactly the equal values; the NaN passes only the inverted rule.
    EXPECT_EQ(filterOf({ rangeRule("v", 2.0, 2.0) }).evaluate(columns, v.size()), (Indices { 1, 2 }));
    EXPECT_EQ(
        filterOf({ rangeRule("v", 2.0, 2.0, true) }).evaluate(columns, v.size()), (Indices { 0, 3, 4 }));
    EXPECT_EQ(filterOf({ rangeRule("v", 1.0, 3.0) }).evaluate(columns, v.size()), (Indices { 0, 1, 2, 3 }));

    // Bounds in the wrong order admit nothing, so the inverted rule admits everything.
    EXPECT_EQ(filterOf({ rangeRule("v", 3.0, 1.0) }).evaluate(columns, v.size()), Indices {});
    EXPECT_EQ(filterOf({ rangeRule("v", 3.0, 1.0, true) }).evaluate(columns, v.size()), allEvents(v.size()));
}

TEST(EventFilter, RulesThatCannotBePreparedLeaveAllEventsInBothModes)
{
    const std::vector<double> v { 1.0, 5.0, 9.0 };
    const std::vector<double> tooShort { 1.0, 5.0 };
    const FeatureColumns columns { { "v", &v }, { "short", &tooShort }, { "null", nullptr } };
    FilterRule disabled = rangeRule("v", 4.0, 6.0);
    disabled.enabled = false;
    FilterRule unknownType = rangeRule("v", 4.0, 6.0);
    unknownType.type = 7;

    const std::vector<std::vector<FilterRule>> unpreparable {
        { disabled },
        { rangeRule("missing", 4.0, 6.0) },
        { rangeRule("null", 4.0, 6.0) },
        { rangeRule("short", 4.0, 6.0) },
        { unknownType },
        { polygonRule("v", "v", { { 0, 0 }, { 10, 10 } }) },
        { polygonRule("v", "missing", { { 0, 0 }, { 10, 0 }, { 10, 10 } }) },
        { polygonRule("short", "v", { { 0, 0 }, { 10, 0 }, { 10, 10 } }) },
        { disabled, rangeRule("missing", 0.0, 0.0) },
    };
    for (std::size_t c = 0; c < unpreparable.size(); ++c) {
        for (const int mode : { 0, 1 }) {
            EventFilter filter;
            for (const FilterRule& rule : unpreparable[c])
                filter.addRule(rule);
            filter.setCombineMode(mode);
            EXPECT_EQ(filter.evaluate(columns, v.size()), allEvents(v.size()))
                << "case " << c << " mode " << mode;
        }
    }
    // A prepared rule next to one that is not still filters, and the dropped one neither passes
    // nor rejects anything.
    EXPECT_EQ(
        filterOf({ rangeRule("short", 4.0, 6.0), rangeRule("v", 4.0, 6.0) }).evaluate(columns, v.size()),
        (Indices { 1 }));
}

TEST(EventFilter, ShowExcludedIsTheComplementInRisingOrder)
{
    const std::vector<double> a { 1, 1, 9, 9, 1, 9 };
    const std::vector<double> b { 1, 9, 1, 9, kNaN, 1 };
    const FeatureColumns columns { { "a", &a }, { "b", &b } };
    // Event 0 passes both, 1 only the first, 2 and 5 only the second, 3 neither, 4 the first and NaN.
    const EventFilter shown = filterOf({ rangeRule("a", 0, 2), rangeRule("b", 0, 2) }, ShowPassingEvents);
    EXPECT_EQ(shown.evaluate(columns, a.size()), (Indices { 0 }));
    const EventFilter excluded = filterOf({ rangeRule("a", 0, 2), rangeRule("b", 0, 2) }, ShowExcludedEvents);
    EXPECT_EQ(excluded.evaluate(columns, a.size()), (Indices { 1, 2, 3, 4, 5 }));
    // Every non-zero mode means the complement.
    EXPECT_EQ(filterOf({ rangeRule("a", 0, 2), rangeRule("b", 0, 2) }, -3).evaluate(columns, a.size()),
        (Indices { 1, 2, 3, 4, 5 }));
}

TEST(EventFilter, PolygonNeedsThreeVerticesAndTestsInsideOnItsAxes)
{
    const std::vector<double> x { 1.0, 3.0, 1.0, kNaN, 0.5 };
    const std::vector<double> y { 1.0, 1.0, 3.0, 1.0, 0.1 };
    const FeatureColumns columns { { "x", &x }, { "y", &y } };
    // Triangle (0,0), (4,0), (0,4): inside where x + y < 4.
    const std::vector<PlanePoint> triangle { { 0, 0 }, { 4, 0 }, { 0, 4 } };
    EXPECT_EQ(filterOf({ polygonRule("x", "y", triangle) }).evaluate(columns, x.size()), (Indices { 0, 4 }));
    FilterRule inverted = polygonRule("x", "y", triangle);
    inverted.inverted = true;
    EXPECT_EQ(filterOf({ inverted }).evaluate(columns, x.size()), (Indices { 1, 2, 3 }));
    EXPECT_EQ(filterOf({ polygonRule("x", "y", { { 0, 0 }, { 4, 0 } }) }).evaluate(columns, x.size()),
        allEvents(x.size()));
}

TEST(EventFilter, PolygonDrawnOnLogAxisMapsVertexAtZeroToTheValueOne)
{
    // Drawn on a log x axis: the vertices at x = 0 sit where x = 1 lies, at ln 1 = 0.0. Had they
    // gone to -infinity, x = 0.5 (ln < 0) would count as inside.
    const std::vector<PlanePoint> box { { 0, 0 }, { 100, 0 }, { 100, 10 }, { 0, 10 } };
    const std::vector<double> x { 0.5, 2.0, 50.0, 200.0, -5.0, kNaN };
    const std::vector<double> y { 5.0, 5.0, 5.0, 5.0, 5.0, 5.0 };
    const FeatureColumns columns { { "x", &x }, { "y", &y } };
    // Non-positive and NaN values land on the box's left edge at 0.0, which counts as inside
    // because an edge only toggles for points strictly to its left.
    EXPECT_EQ(filterOf({ polygonRule("x", "y", box, LogScale, LinearScale) }).evaluate(columns, x.size()),
        (Indices { 1, 2, 4, 5 }));
    EXPECT_EQ(filterOf({ polygonRule("x", "y", box) }).evaluate(columns, x.size()), (Indices { 0, 1, 2 }));
}

TEST(EventFilter, PolygonDrawnOnPseudoLogAxesIsStraightThere)
{
    // Triangle (0,0), (1000,0), (0,1000) maps to (0,0), (1.5,0), (0,1.5) on pseudo-log axes. The
    // point (400,400) lies inside in data units (sum 800) but maps to (1.102, 1.102), sum > 1.5;
    // (900,1) maps to (1.454, 0.005) and stays inside.
    const std::vector<PlanePoint> triangle { { 0, 0 }, { 1000, 0 }, { 0, 1000 } };
    const std::vector<double> x { 400.0, 50.0, 900.0 };
    const std::vector<double> y { 400.0, 50.0, 1.0 };
    const FeatureColumns columns { { "x", &x }, { "y", &y } };
    EXPECT_EQ(
        filterOf({ polygonRule("x", "y", triangle, PseudoLogScale, PseudoLogScale) }).evaluate(columns, 3),
        (Indices { 1, 2 }));
    EXPECT_EQ(filterOf({ polygonRule("x", "y", triangle) }).evaluate(columns, 3), (Indices { 0, 1, 2 }));
}

TEST(EventFilter, CombineModesPartitionTheEventsWheneverARuleIsPrepared)
{
    for (const std::uint64_t seed : { 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u }) {
        std::mt19937_64 rng(seed);
        std::uniform_real_distribution<double> value(-2.0, 12.0);
        std::uniform_int_distribution<int> pick(0, 9);
        const std::size_t n = 500 + seed * 37;
        std::vector<double> a(n), b(n), c(n);
        for (std::size_t i = 0; i < n; ++i) {
            a[i] = pick(rng) == 0 ? kNaN : value(rng);
            b[i] = pick(rng) == 0 ? kNaN : value(rng);
            c[i] = value(rng);
        }
        const std::vector<double> shortColumn(n - 1, 1.0);
        const FeatureColumns columns { { "a", &a }, { "b", &b }, { "c", &c }, { "short", &shortColumn } };

        EventFilter filter;
        const int ruleCount = 1 + pick(rng) % 4;
        for (int r = 0; r < ruleCount; ++r) {
            FilterRule rule;
            if (pick(rng) < 5) {
                rule = rangeRule(pick(rng) < 5 ? "a" : "c", value(rng), value(rng), pick(rng) < 3);
            } else {
                std::vector<PlanePoint> vertices;
                const int count = 3 + pick(rng);
                for (int v = 0; v < count; ++v)
                    vertices.emplace_back(value(rng), value(rng));
                rule = polygonRule("a", "b", vertices, pick(rng) % 3, pick(rng) % 3);
                rule.inverted = pick(rng) < 3;
            }
            // Every rule names full-length columns, so the first, never disabled, is prepared.
            if (r > 0 && pick(rng) == 0)
                rule.enabled = false;
            filter.addRule(rule);
        }
        filter.addRule(rangeRule("short", 0, 2)); // never prepared

        const Indices shown = filter.evaluate(columns, n);
        filter.setCombineMode(ShowExcludedEvents);
        const Indices excluded = filter.evaluate(columns, n);

        std::vector<int> seen(n, 0);
        for (const Indices* part : { &shown, &excluded }) {
            for (std::size_t i = 1; i < part->size(); ++i)
                ASSERT_LT((*part)[i - 1], (*part)[i]) << "seed " << seed;
            for (const std::int32_t i : *part) {
                ASSERT_GE(i, 0);
                ASSERT_LT(static_cast<std::size_t>(i), n);
                ++seen[static_cast<std::size_t>(i)];
            }
        }
        for (std::size_t i = 0; i < n; ++i)
            ASSERT_EQ(seen[i], 1) << "seed " << seed << " event " << i;
    }
}

// Events are judged in words of 64, batches and blocks on the thread pool: every event must come
// out as when it is judged alone, at every length around those boundaries, in both modes.
TEST(EventFilter, EventsJudgedTogetherAsEachAlone)
{
    for (const std::size_t n : { 1u, 63u, 64u, 65u, 1025u, 4099u, 250007u }) {
        SCOPED_TRACE(n);
        std::mt19937_64 rng(n);
        std::uniform_real_distribution<double> value(-2.0, 12.0);
        std::uniform_int_distribution<int> pick(0, 9);
        std::vector<double> a(n), b(n), c(n);
        for (std::size_t i = 0; i < n; ++i) {
            a[i] = pick(rng) == 0 ? kNaN : value(rng);
            b[i] = value(rng);
            c[i] = pick(rng) == 0 ? kNaN : value(rng);
        }
        const FeatureColumns columns { { "a", &a }, { "b", &b }, { "c", &c } };
        // Polygons are judged alone only on the shorter series, where that is quick.
        const bool withPolygon = n < 10000;
        const std::vector<FilterRule> rules { rangeRule("a", 1.0, 9.5), rangeRule("c", 4.0, 6.0, true),
            withPolygon ? polygonRule("a", "b", { { 0, 0 }, { 11, 1 }, { 5, 11 } })
                        : rangeRule("b", -1.0, 11.0) };
        for (const int mode : { 0, 1 }) {
            EventFilter filter;
            for (const FilterRule& rule : rules)
                filter.addRule(rule);
            filter.setCombineMode(mode);
            Indices expected;
            for (std::size_t i = 0; i < n; ++i) {
                const std::vector<double> ai { a[i] }, bi { b[i] }, ci { c[i] };
                bool passes = (a[i] >= 1.0 && a[i] <= 9.5) && !(c[i] >= 4.0 && c[i] <= 6.0);
                if (withPolygon)
                    passes = passes
                        && filterOf({ rules[2] }).evaluate({ { "a", &ai }, { "b", &bi } }, 1).size() == 1;
                else
                    passes = passes && b[i] >= -1.0 && b[i] <= 11.0;
                if (passes == (mode == 0))
                    expected.push_back(static_cast<std::int32_t>(i));
            }
            EXPECT_EQ(filter.evaluate(columns, n), expected) << "mode " << mode;
        }
    }
}
