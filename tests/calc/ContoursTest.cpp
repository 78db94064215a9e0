#include "calc/Contours.h"

#include "calc/Density.h"
#include "core/PolygonGeometry.h"
#include "core/ScaleModes.h"
#include "support/ReferencePoints.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace Tessaly;

using Tessaly::Testing::bellWithCore;
using Tessaly::Testing::Points;

namespace {

// A round Gaussian blob of n points around (cx, cy).
Points blob(std::size_t n, double cx, double cy, double sd, std::uint64_t seed)
{
    std::mt19937_64 rng(seed);
    std::normal_distribution<double> gx(cx, sd);
    std::normal_distribution<double> gy(cy, sd);
    Points p;
    for (std::size_t i = 0; i < n; ++i) {
        p.x.push_back(gx(rng));
        p.y.push_back(gy(rng));
    }
    return p;
}

double fractionInside(const Points& p, const Polyline& loop)
{
    std::size_t inside = 0;
    for (std::size_t i = 0; i < p.x.size(); ++i)
        inside += pointInPolygon(p.x[i], p.y[i], loop) ? 1 : 0;
    return static_cast<double>(inside) / static_cast<double>(p.x.size());
}

} // namespace

TEST(Contours, DensityAtFractionIsTheValueAtThatRank)
{
    const std::vector<double> d { 5.0, 1.0, 4.0, 2.0, 3.0 };
    EXPECT_EQ(densityAtFraction(d, 0.5), 3.0); // rank floor(2.5) = 2
    EXPECT_EQ(densityAtFraction(d, 0.1), 1.0);
    EXPECT_EQ(densityAtFraction(d, 0.99), 5.0);
    EXPECT_EQ(densityAtFraction(d, 0.0), 0.0);
    EXPECT_EQ(densityAtFraction(d, 1.0), 0.0);
    EXPECT_EQ(densityAtFraction({}, 0.5), 0.0);
}

TEST(Contours, LevelsMatchTheReferenceDensities)
{
    // Reference: the KDE of bellWithCore() by tests/reference/density_reference.py, sorted with
    // numpy, values at ranks floor(1500 * 0.1) and floor(1500 * 0.67).
    const Points p = bellWithCore();
    const std::vector<ContourLevel> levels
        = computeContours(p.x, p.y, { 0.1, 0.67 }, LinearScale, LinearScale);
    ASSERT_EQ(levels.size(), 2u);
    EXPECT_EQ(levels[0].fraction, 0.1);
    EXPECT_NEAR(levels[0].level, 0.302852230109465, 1e-9 * 0.302852230109465);
    EXPECT_NEAR(levels[1].level, 14.019998771440312, 1e-9 * 14.019998771440312);
    EXPECT_FALSE(levels[0].polylines.empty());
    EXPECT_FALSE(levels[1].polylines.empty());
}

TEST(Contours, RoundBlobGivesNestedClosedLoopsAroundItsCentre)
{
    for (const std::uint64_t seed : { 11u, 12u, 13u }) {
        const Points p = blob(20000, 3.0, -2.0, 0.5, seed);
        const std::vector<ContourLevel> levels
            = computeContours(p.x, p.y, { 0.1, 0.67 }, LinearScale, LinearScale);
        ASSERT_EQ(levels.size(), 2u);
        for (const ContourLevel& level : levels) {
            ASSERT_EQ(level.polylines.size(), 1u) << "seed " << seed << " fraction " << level.fraction;
            const Polyline& loop = level.polylines[0];
            ASSERT_GT(loop.size(), 8u);
            EXPECT_EQ(loop.front(), loop.back());
            EXPECT_TRUE(pointInPolygon(3.0, -2.0, loop));
            // The line at fraction f leaves about f of the events outside.
            EXPECT_NEAR(fractionInside(p, loop), 1.0 - level.fraction, 0.03) << "seed " << seed;
        }
        EXPECT_GT(levels[1].level, levels[0].level);
        for (const PlanePoint& v : levels[1].polylines[0])
            EXPECT_TRUE(pointInPolygon(v.first, v.second, levels[0].polylines[0]));
    }
}

TEST(Contours, FractionsAtTheEndsKeepAnEntryWithoutLines)
{
    const Points p = blob(500, 0.0, 0.0, 1.0, 5);
    const std::vector<ContourLevel> levels
        = computeContours(p.x, p.y, { 1.0, 0.5, 0.0 }, LinearScale, LinearScale);
    ASSERT_EQ(levels.size(), 3u);
    EXPECT_EQ(levels[0].fraction, 1.0);
    EXPECT_EQ(levels[0].level, 0.0);
    EXPECT_TRUE(levels[0].polylines.empty());
    EXPECT_GT(levels[1].level, 0.0);
    EXPECT_FALSE(levels[1].polylines.empty());
    EXPECT_EQ(levels[2].fraction, 0.0);
    EXPECT_EQ(levels[2].level, 0.0);
    EXPECT_TRUE(levels[2].polylines.empty());
}

TEST(Contours, TooFewPointsMismatchedLengthsOrNoFractionsGiveNothing)
{
    EXPECT_TRUE(computeContours({ 1, 2, 3 }, { 1, 2, 3 }, { 0.5 }, LinearScale, LinearScale).empty());
    EXPECT_TRUE(computeContours({ 1, 2, 3, 4 }, { 1, 2, 3 }, { 0.5 }, LinearScale, LinearScale).empty());
    EXPECT_TRUE(computeContours({ 1, 2, 3, 4 }, { 1, 3, 2, 4 }, {}, LinearScale, LinearScale).empty());
    EXPECT_EQ(computeContours({ 1, 2, 3, 4 }, { 1, 3, 2, 4 }, { 0.5 }, LinearScale, LinearScale).size(), 1u);
}

TEST(Contours, LinesOnLogAxesAreTheLinesOfTheLoggedDataTakenBack)
{
    // A log-normal blob drawn on log axes is the normal blob of its base-10 logarithms: the lines
    // must be those of the logged data with every vertex raised to the power of ten.
    const Points logged = blob(3000, 2.0, 1.0, 0.3, 21);
    Points raw;
    for (std::size_t i = 0; i < logged.x.size(); ++i) {
        raw.x.push_back(std::pow(10.0, logged.x[i]));
        raw.y.push_back(std::pow(10.0, logged.y[i]));
    }
    // Logs of the raw values rather than the blob itself, which may differ in the last bit.
    Points relogged;
    for (std::size_t i = 0; i < raw.x.size(); ++i) {
        relogged.x.push_back(std::log10(raw.x[i]));
        relogged.y.push_back(std::log10(raw.y[i]));
    }
    const auto onLogAxes = computeContours(raw.x, raw.y, { 0.2, 0.6 }, LogScale, LogScale);
    const auto linear = computeContours(relogged.x, relogged.y, { 0.2, 0.6 }, LinearScale, LinearScale);
    ASSERT_EQ(onLogAxes.size(), 2u);
    for (std::size_t l = 0; l < 2; ++l) {
        EXPECT_NEAR(onLogAxes[l].level, linear[l].level, 1e-9 * linear[l].level);
        ASSERT_EQ(onLogAxes[l].polylines.size(), linear[l].polylines.size());
        for (std::size_t k = 0; k < linear[l].polylines.size(); ++k) {
            const Polyline& a = onLogAxes[l].polylines[k];
            const Polyline& b = linear[l].polylines[k];
            ASSERT_EQ(a.size(), b.size());
            for (std::size_t i = 0; i < a.size(); ++i) {
                EXPECT_NEAR(a[i].first, std::pow(10.0, b[i].first), 1e-9 * a[i].first);
                EXPECT_NEAR(a[i].second, std::pow(10.0, b[i].second), 1e-9 * a[i].second);
            }
        }
    }

    // Log on x only: y stays in data units.
    const auto mixed = computeContours(raw.x, logged.y, { 0.6 }, LogScale, LinearScale);
    const auto mixedLinear = computeContours(relogged.x, logged.y, { 0.6 }, LinearScale, LinearScale);
    ASSERT_EQ(mixed[0].polylines.size(), mixedLinear[0].polylines.size());
    const PlanePoint a = mixed[0].polylines[0][3];
    const PlanePoint b = mixedLinear[0].polylines[0][3];
    EXPECT_NEAR(a.first, std::pow(10.0, b.first), 1e-9 * a.first);
    EXPECT_NEAR(a.second, b.second, 1e-12);
}

TEST(Contours, PseudoLogAxesTakeVerticesBackThroughTheInverse)
{
    // Fluorescence-like values from -500 to 5000: on pseudo-log axes the lines are those of the
    // transformed data mapped back by the inverse transform.
    const Points plot = blob(3000, 1.0, 0.8, 0.4, 31);
    Points raw;
    for (std::size_t i = 0; i < plot.x.size(); ++i) {
        raw.x.push_back(pseudoLogInverse(plot.x[i]));
        raw.y.push_back(pseudoLogInverse(plot.y[i]));
    }
    const auto onAxes = computeContours(raw.x, raw.y, { 0.5 }, PseudoLogScale, PseudoLogScale);
    const auto transformed = computeContours(transformValues(raw.x, PseudoLogScale),
        transformValues(raw.y, PseudoLogScale), { 0.5 }, LinearScale, LinearScale);
    ASSERT_EQ(onAxes[0].polylines.size(), transformed[0].polylines.size());
    ASSERT_FALSE(onAxes[0].polylines.empty());
    const Polyline& a = onAxes[0].polylines[0];
    const Polyline& b = transformed[0].polylines[0];
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_NEAR(a[i].first, pseudoLogInverse(b[i].first), 1e-9 * std::fabs(a[i].first));
        EXPECT_NEAR(a[i].second, pseudoLogInverse(b[i].second), 1e-9 * std::fabs(a[i].second));
    }
}

TEST(Contours, OverlayUsesTheSmallerPercentFirstWhicheverBoxHoldsIt)
{
    EXPECT_EQ(contourFractions(defaultInnerContourPercent, defaultOuterContourPercent),
        (std::vector<double> { 0.1, 0.67 }));
    EXPECT_EQ(contourFractions(67, 10), (std::vector<double> { 0.1, 0.67 }));

    const Points p = blob(2000, 0.0, 0.0, 1.0, 41);
    const auto normal = overlayContours(ContourOverlayOn, p.x, p.y, 10, 67, LinearScale, LinearScale);
    const auto swapped = overlayContours(ContourOverlayOn, p.x, p.y, 67, 10, LinearScale, LinearScale);
    ASSERT_EQ(normal.size(), 2u);
    ASSERT_EQ(swapped.size(), 2u);
    for (std::size_t l = 0; l < 2; ++l) {
        EXPECT_EQ(normal[l].fraction, swapped[l].fraction);
        EXPECT_EQ(normal[l].level, swapped[l].level);
        EXPECT_EQ(normal[l].polylines, swapped[l].polylines);
    }
    EXPECT_EQ(overlayContours(ContourOverlayOnly, p.x, p.y, 10, 67, LinearScale, LinearScale)[1].polylines,
        normal[1].polylines);
    EXPECT_TRUE(overlayContours(ContourOverlayOff, p.x, p.y, 10, 67, LinearScale, LinearScale).empty());
    EXPECT_TRUE(overlayContours(ContourOverlayOn, { 1, 2, 3 }, { 1, 2, 3 }, 10, 67, LinearScale, LinearScale)
                    .empty());
}

namespace {

bool sameLevels(const std::vector<ContourLevel>& a, const std::vector<ContourLevel>& b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t k = 0; k < a.size(); ++k) {
        if (a[k].fraction != b[k].fraction || a[k].level != b[k].level || a[k].polylines != b[k].polylines)
            return false;
    }
    return true;
}

} // namespace

// The density colour's estimate stands in for the contours' own only when it was made of the same
// points in the same plot space; otherwise it would draw the lines of other data.
TEST(Contours, AFitIsUsedOnlyForExactlyItsOwnPoints)
{
    const Points p = blob(5000, 100.0, 0.05, 10.0, 7);
    const std::vector<double> fractions { 0.1, 0.67 };
    KernelDensityFit fit;
    computeDensity(transformValues(p.x, LogScale), transformValues(p.y, LinearScale), KernelDensity, &fit);
    ASSERT_EQ(fit.densities.size(), p.x.size());

    const std::vector<ContourLevel> own = computeContours(p.x, p.y, fractions, LogScale, LinearScale);
    EXPECT_TRUE(sameLevels(computeContours(p.x, p.y, fractions, LogScale, LinearScale, &fit), own));

    // The same points on another scale, or other points, must not take the fit.
    EXPECT_TRUE(sameLevels(computeContours(p.x, p.y, fractions, LinearScale, LinearScale, &fit),
        computeContours(p.x, p.y, fractions, LinearScale, LinearScale)));
    const Points q = blob(5000, 150.0, 0.08, 5.0, 8);
    const std::vector<ContourLevel> other = computeContours(q.x, q.y, fractions, LogScale, LinearScale);
    EXPECT_FALSE(sameLevels(other, own));
    EXPECT_TRUE(sameLevels(computeContours(q.x, q.y, fractions, LogScale, LinearScale, &fit), other));
}
