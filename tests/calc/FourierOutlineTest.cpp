#include "calc/FourierOutline.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

using namespace Tessaly;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Pointwise;

namespace {

constexpr double pi = 3.141592653589793;

std::vector<double> grid(int points)
{
    std::vector<double> angles;
    for (int j = 0; j < points; ++j)
        angles.push_back(j * 2 * pi / points);
    return angles;
}

} // namespace

TEST(FourierOutline, ResamplingIsPeriodic)
{
    // Knots at π/2, π, 3π/2 with radii 2, 4, 6; across 0 the last one (6 at -π/2) and the first
    // (2 at 5π/2) close the circle. On eight angles, by hand: 0 lies halfway between 6 and 2, π/4
    // three quarters of the way, 7π/4 a quarter of the way from 6 to 2.
    const std::vector<PolarPoint> knots = { { pi / 2, 2 }, { pi, 4 }, { pi, 10 }, { 3 * pi / 2, 6 } };
    EXPECT_THAT(
        resampleRadius(knots, 8), Pointwise(DoubleNear(1e-12), { 4.0, 3.0, 2.0, 3.0, 4.0, 5.0, 6.0, 5.0 }));
    // The repeated angle π counted once, with its first radius: leaving it out changes nothing.
    EXPECT_EQ(resampleRadius(knots, 8), resampleRadius({ knots[0], knots[1], knots[3] }, 8));

    EXPECT_THROW(resampleRadius({ { 1.0, 2.0 }, { 1.0, 3.0 } }, 8), std::invalid_argument);
    EXPECT_THROW(resampleRadius({}, 8), std::invalid_argument);
}

TEST(FourierOutline, CoefficientsAndRebuildOfKnownHarmonics)
{
    // r = 3 + 2 cos 2θ + 0.5 sin 3θ on 100 regular angles: the sums pick out each order exactly.
    const std::vector<double> angles = grid(100);
    std::vector<double> r;
    for (double theta : angles)
        r.push_back(3 + 2 * std::cos(2 * theta) + 0.5 * std::sin(3 * theta));
    const HarmonicTable table = harmonicTable(angles, 11);
    const FourierCoefficients c = fourierCoefficients(r, std::vector<double>(100, 2 * pi / 100), table);
    ASSERT_EQ(c.a.size(), 11u);
    for (std::size_t k = 0; k < 11; ++k) {
        EXPECT_NEAR(c.a[k], k == 0 ? 3.0 : k == 2 ? 2.0 : 0.0, 1e-12) << k;
        EXPECT_NEAR(c.b[k], k == 3 ? 0.5 : 0.0, 1e-12) << k;
    }
    const std::vector<double> even = rebuildRadius(c, table, { 2, 4, 6, 8, 10 });
    for (std::size_t j = 0; j < angles.size(); ++j)
        EXPECT_NEAR(even[j], 3 + 2 * std::cos(2 * angles[j]), 1e-12) << j;
    // Order 0 belongs to every rebuild and is never added twice.
    EXPECT_THAT(
        rebuildRadius(c, table, { 0, 1 }), Pointwise(DoubleNear(1e-12), std::vector<double>(100, 3.0)));
    // Multiples by rotation agree with direct evaluation at a high order.
    EXPECT_NEAR(table.cosines[10][37], std::cos(10 * angles[37]), 1e-13);
    EXPECT_NEAR(table.sines[9][81], std::sin(9 * angles[81]), 1e-13);
}

TEST(FourierOutline, GapWeightsWrapAround)
{
    // Gaps 1, 4.5 and, across 2π, 0.5 + 2π - 6.
    const double wrap = 0.5 + 2 * pi - 6.0;
    EXPECT_THAT(angularGapWeights({ 0.5, 1.5, 6.0 }),
        Pointwise(DoubleNear(1e-12), { (wrap + 1) / 2, 2.75, (4.5 + wrap) / 2 }));
}

TEST(FourierOutline, DeformationOfPolygons)
{
    // A square of side 2: A = 4, L = 8, 1 - 2 sqrt(4π) / 8 = 1 - sqrt(π) / 2.
    const std::vector<double> corners = { pi / 4, 3 * pi / 4, 5 * pi / 4, 7 * pi / 4 };
    EXPECT_NEAR(
        polygonDeformation(corners, std::vector<double>(4, std::sqrt(2.0))), 1 - std::sqrt(pi) / 2, 1e-6);
    // A regular 100-gon: 1 - sqrt(π · 50 sin(2π/100)) / (100 sin(π/100)).
    EXPECT_NEAR(polygonDeformation(grid(100), std::vector<double>(100, 30.0)),
        1 - std::sqrt(pi * 50 * std::sin(2 * pi / 100)) / (100 * std::sin(pi / 100)), 1e-6);
}

TEST(FourierOutline, LargestOutlineOfAMask)
{
    // 12 x 8: a 4 x 3 block (area (4-1)(3-1) = 6 between pixel centres) and a 2 x 2 block, whose
    // boundary has only 4 points. (Masks without a usable outline: FourierDeformTest.)
    std::vector<std::uint8_t> mask(12 * 8, 0);
    const auto fill = [&](int x0, int y0, int w, int h, std::uint8_t value) {
        for (int y = y0; y < y0 + h; ++y)
            for (int x = x0; x < x0 + w; ++x)
                mask[static_cast<std::size_t>(y * 12 + x)] = value;
    };
    fill(1, 1, 2, 2, 255);
    fill(6, 3, 4, 3, 1); // any non-zero value is inside
    std::vector<cv::Point> outline;
    ASSERT_TRUE(largestOutline(mask, 12, 8, outline));
    EXPECT_EQ(outline.size(), 10u);
    EXPECT_DOUBLE_EQ(cv::contourArea(outline), 6.0);

    EXPECT_FALSE(largestOutline(mask, 12, 9, outline)); // fewer bytes than the size says
}

TEST(FourierOutline, PolarHullIsSortedByAngleAroundTheCentroid)
{
    // A rectangle 0..40 x 0..20 with points inside and on an edge: only the 4 corners span the hull,
    // each edge gives 4 points, and the centroid is (20, 10). Whichever way round the points come,
    // the result is the same.
    std::vector<cv::Point> points
        = { { 0, 0 }, { 20, 0 }, { 40, 0 }, { 40, 20 }, { 0, 20 }, { 10, 10 }, { 30, 5 } };
    const std::vector<PolarPoint> polar = polarHull(points, 4);
    ASSERT_EQ(polar.size(), 16u);
    for (std::size_t j = 1; j < polar.size(); ++j)
        EXPECT_LT(polar[j - 1].theta, polar[j].theta) << j;
    // The smallest angle, 0, belongs to the midpoint (40, 10) of the right edge: 20 from the centroid.
    EXPECT_NEAR(polar.front().theta, 0.0, 1e-12);
    EXPECT_NEAR(polar.front().r, 20.0, 1e-12);
    // The corner (0, 0) lies at (-20, -10): angle π + atan(1/2).
    const auto corner = std::find_if(polar.begin(), polar.end(),
        [](const PolarPoint& p) { return std::abs(p.theta - (pi + std::atan(0.5))) < 1e-12; });
    ASSERT_NE(corner, polar.end());
    EXPECT_NEAR(corner->r, std::sqrt(500.0), 1e-12);

    std::reverse(points.begin(), points.end());
    const std::vector<PolarPoint> reversed = polarHull(points, 4);
    ASSERT_EQ(reversed.size(), polar.size());
    for (std::size_t j = 0; j < polar.size(); ++j)
        EXPECT_NEAR(reversed[j].theta, polar[j].theta, 1e-12) << j;

    EXPECT_THROW(polarHull({ { 1, 1 }, { 2, 2 }, { 3, 3 } }, 4), std::domain_error);
}
