#include "calc/MarchingSquares.h"

#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

// A size x size grid from rows listed bottom (y bin 0) first, origin 0 and unit steps, so that
// cell (row, column) has its centre at (column + 0.5, row + 0.5).
DensityGrid gridOf(std::vector<std::vector<double>> rows)
{
    DensityGrid grid;
    grid.size = static_cast<int>(rows.size());
    for (const auto& row : rows)
        grid.values.insert(grid.values.end(), row.begin(), row.end());
    return grid;
}

void expectLine(const Polyline& actual, const Polyline& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(actual[i].first, expected[i].first, 1e-12) << "point " << i;
        EXPECT_NEAR(actual[i].second, expected[i].second, 1e-12) << "point " << i;
    }
}

} // namespace

TEST(MarchingSquares, PeakGivesAClosedLoopThroughInterpolatedCrossings)
{
    // Centre 1, neighbours 0, level 0.25: each crossing lies a quarter of the way from the low
    // corner, 0.75 cells from the centre. Origin (10, 20) and steps (2, 0.5) place the cell
    // centres at x = 11, 13, 15 and y = 20.25, 20.75, 21.25.
    DensityGrid grid = gridOf({ { 0, 0, 0 }, { 0, 1, 0 }, { 0, 0, 0 } });
    grid.xOrigin = 10.0;
    grid.yOrigin = 20.0;
    grid.xStep = 2.0;
    grid.yStep = 0.5;
    const auto at = [](double column, double row) {
        return PlanePoint { 10.0 + 2.0 * column, 20.0 + 0.5 * row };
    };
    const std::vector<Polyline> lines = marchingSquares(grid, 0.25);
    ASSERT_EQ(lines.size(), 1u);
    // The walk starts in square (0,0) with its right-to-top segment and runs on through the squares
    // above, right-above and right.
    expectLine(lines[0], { at(1.5, 0.75), at(0.75, 1.5), at(1.5, 2.25), at(2.25, 1.5), at(1.5, 0.75) });

    EXPECT_TRUE(marchingSquares(grid, 1.5).empty()); // every corner below
    EXPECT_TRUE(marchingSquares(grid, -1.0).empty()); // every corner at or above
    EXPECT_TRUE(marchingSquares(gridOf({ { 5 } }), 1.0).empty());
}

TEST(MarchingSquares, OpenLineIsCompletedBackwardsFromItsFirstSegment)
{
    // A ridge on the top row: the first segment made (square (2,0), right-to-top) lies at one end
    // of the line, and the rest of the line hangs off its first point, in later squares.
    const DensityGrid grid = gridOf({ { 0, 0, 0, 0 }, { 0, 0, 0, 0 }, { 0, 0, 0, 0 }, { 0, 1, 1, 0 } });
    const std::vector<Polyline> lines = marchingSquares(grid, 0.5);
    ASSERT_EQ(lines.size(), 1u);
    expectLine(lines[0], { { 3.0, 3.5 }, { 2.5, 3.0 }, { 1.5, 3.0 }, { 1.0, 3.5 } });
}

TEST(MarchingSquares, SaddlePairingFollowsTheMeanOfTheCorners)
{
    // a = 1 (bottom left), b = 0, d = 1 (top right), e = 0: code 5, corner mean 0.5.
    const DensityGrid code5 = gridOf({ { 1, 0 }, { 0, 1 } });
    // Mean at or above the level: the lines cut off a (edges 0, 3) and d (edges 1, 2).
    std::vector<Polyline> lines = marchingSquares(code5, 0.4);
    ASSERT_EQ(lines.size(), 2u);
    expectLine(lines[0], { { 1.1, 0.5 }, { 0.5, 1.1 } });
    expectLine(lines[1], { { 1.5, 0.9 }, { 0.9, 1.5 } });
    // Mean below: they cut off b (edges 0, 1) and e (edges 3, 2).
    lines = marchingSquares(code5, 0.6);
    ASSERT_EQ(lines.size(), 2u);
    expectLine(lines[0], { { 0.9, 0.5 }, { 1.5, 1.1 } });
    expectLine(lines[1], { { 0.5, 0.9 }, { 1.1, 1.5 } });

    // The mirror image, b and e high (code 10), pairs the other way round for the same mean.
    const DensityGrid code10 = gridOf({ { 0, 1 }, { 1, 0 } });
    lines = marchingSquares(code10, 0.4);
    ASSERT_EQ(lines.size(), 2u);
    expectLine(lines[0], { { 0.9, 0.5 }, { 1.5, 1.1 } });
    expectLine(lines[1], { { 0.5, 0.9 }, { 1.1, 1.5 } });
    lines = marchingSquares(code10, 0.6);
    ASSERT_EQ(lines.size(), 2u);
    expectLine(lines[0], { { 1.1, 0.5 }, { 0.5, 1.1 } });
    expectLine(lines[1], { { 1.5, 0.9 }, { 0.9, 1.5 } });
}

TEST(MarchingSquares, LinesComeInTheOrderOfTheirFirstSquareRowByRow)
{
    // Two peaks: (row 1, column 3) and (row 3, column 1). Walking rows first meets the first peak's
    // squares in row 0; walking columns first would meet the second peak's in column 0.
    std::vector<std::vector<double>> rows(5, std::vector<double>(5, 0.0));
    rows[1][3] = 1.0;
    rows[3][1] = 1.0;
    const std::vector<Polyline> lines = marchingSquares(gridOf(rows), 0.5);
    ASSERT_EQ(lines.size(), 2u);
    for (const PlanePoint& p : lines[0]) {
        EXPECT_GT(p.first, 2.5);
        EXPECT_LT(p.second, 2.5);
    }
    EXPECT_EQ(lines[0].front(), lines[0].back());
    EXPECT_EQ(lines[1].front(), lines[1].back());
}

TEST(MarchingSquares, NearlyEqualCornersCrossAtTheMidpoint)
{
    // Corners 0 and 1e-31 differ by less than 1e-30: the crossing is the midpoint of the edge,
    // not the interpolated quarter.
    const DensityGrid grid = gridOf({ { 0, 1e-31 }, { 0, 1e-31 } });
    const std::vector<Polyline> lines = marchingSquares(grid, 2.5e-32);
    ASSERT_EQ(lines.size(), 1u);
    expectLine(lines[0], { { 1.0, 0.5 }, { 1.0, 1.5 } });
}
