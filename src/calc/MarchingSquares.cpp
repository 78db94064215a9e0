#include "calc/MarchingSquares.h"

#include <array>
#include <cmath>
#include <map>
#include <tuple>

namespace Tessaly {

namespace {

// An edge as both squares that share it name it: (row, column, 0) is the horizontal edge from the
// centre of cell (row, column) to its right neighbour, (row, column, 1) the vertical edge from the
// centre of cell (row, column + 1) to the one above it.
struct EdgeKey
{
    int row;
    int column;
    int direction;

    bool operator==(const EdgeKey& other) const
    {
        return row == other.row && column == other.column && direction == other.direction;
    }
    bool operator<(const EdgeKey& other) const
    {
        return std::tie(row, column, direction) < std::tie(other.row, other.column, other.direction);
    }
};

struct Segment
{
    std::array<PlanePoint, 2> points;
    std::array<EdgeKey, 2> keys;
};

// Square edges: 0 from a to b (bottom), 1 from b to d (right), 2 from e to d (top), 3 from a to e
// (left), with a = (r, c), b = (r, c + 1), d = (r + 1, c + 1), e = (r + 1, c).
struct Square
{
    const DensityGrid& grid;
    int row;
    int column;
    std::array<double, 4> values; // a, b, d, e

    PlanePoint corner(int rowOffset, int columnOffset) const
    {
        return { (column + columnOffset + 0.5) * grid.xStep + grid.xOrigin,
            (row + rowOffset + 0.5) * grid.yStep + grid.yOrigin };
    }

    EdgeKey key(int edge) const
    {
        switch (edge) {
        case 0:
            return { row, column, 0 };
        case 1:
            return { row, column, 1 };
        case 2:
            return { row + 1, column, 0 };
        default:
            return { row, column - 1, 1 };
        }
    }

    PlanePoint crossing(int edge, double level) const
    {
        // Corner indices into `values` and grid offsets (row, column) of the edge's two ends.
        static constexpr int from[4] = { 0, 1, 3, 0 };
        static constexpr int to[4] = { 1, 2, 2, 3 };
        static constexpr int offsets[4][2] = { { 0, 0 }, { 0, 1 }, { 1, 1 }, { 1, 0 } };
        const double p = values[static_cast<std::size_t>(from[edge])];
        const double q = values[static_cast<std::size_t>(to[edge])];
        const PlanePoint start = corner(offsets[from[edge]][0], offsets[from[edge]][1]);
        const PlanePoint end = corner(offsets[to[edge]][0], offsets[to[edge]][1]);
        if (std::fabs(q - p) < 1e-30)
            return { (start.first + end.first) * 0.5, (start.second + end.second) * 0.5 };
        double t = (level - p) / (q - p);
        t = t < 0.0 ? 0.0 : (t > 1.0 ? 1.0 : t);
        return { start.first + t * (end.first - start.first),
            start.second + t * (end.second - start.second) };
    }

    Segment segment(int edgeA, int edgeB, double level) const
    {
        return { { crossing(edgeA, level), crossing(edgeB, level) }, { key(edgeA), key(edgeB) } };
    }
};

// Follows the chain from `key` through unused segments, appending their far points.
void walk(const std::vector<Segment>& segments, const std::map<EdgeKey, std::vector<std::size_t>>& byKey,
    std::vector<bool>& used, EdgeKey key, Polyline& points)
{
    for (;;) {
        const auto it = byKey.find(key);
        if (it == byKey.end())
            return;
        std::size_t next = segments.size();
        for (const std::size_t s : it->second) {
            if (!used[s]) {
                next = s;
                break;
            }
        }
        if (next == segments.size())
            return;
        used[next] = true;
        const std::size_t far = segments[next].keys[0] == key ? 1 : 0;
        points.push_back(segments[next].points[far]);
        key = segments[next].keys[far];
    }
}

} // namespace

std::vector<Polyline> marchingSquares(const DensityGrid& grid, double level)
{
    const int g = grid.size;
    const std::size_t stride = static_cast<std::size_t>(g < 0 ? 0 : g);
    if (g < 2 || grid.values.size() != stride * stride)
        return {};

    std::vector<Segment> segments;
    for (int r = 0; r < g - 1; ++r) {
        const double* lower = grid.values.data() + static_cast<std::size_t>(r) * stride;
        const double* upper = lower + stride;
        for (int c = 0; c < g - 1; ++c) {
            const Square square { grid, r, c, { lower[c], lower[c + 1], upper[c + 1], upper[c] } };
            const auto& v = square.values;
            const int code = (v[0] >= level ? 1 : 0) | (v[1] >= level ? 2 : 0) | (v[2] >= level ? 4 : 0)
                | (v[3] >= level ? 8 : 0);
            switch (code) {
            case 1:
            case 14:
                segments.push_back(square.segment(3, 0, level));
                break;
            case 2:
            case 13:
                segments.push_back(square.segment(0, 1, level));
                break;
            case 3:
            case 12:
                segments.push_back(square.segment(3, 1, level));
                break;
            case 4:
            case 11:
                segments.push_back(square.segment(1, 2, level));
                break;
            case 6:
            case 9:
                segments.push_back(square.segment(0, 2, level));
                break;
            case 7:
            case 8:
                segments.push_back(square.segment(3, 2, level));
                break;
            case 5:
            case 10: {
                // Saddle: the mean of the corners decides which opposite corners the lines cut off.
                const bool centreHigh = (v[0] + v[1] + v[2] + v[3]) * 0.25 >= level;
                if (centreHigh == (code == 5)) {
                    segments.push_back(square.segment(0, 3, level));
                    segments.push_back(square.segment(1, 2, level));
                } else {
                    segments.push_back(square.segment(0, 1, level));
                    segments.push_back(square.segment(3, 2, level));
                }
                break;
            }
            default:
                break;
            }
        }
    }

    std::map<EdgeKey, std::vector<std::size_t>> byKey;
    for (std::size_t s = 0; s < segments.size(); ++s) {
        byKey[segments[s].keys[0]].push_back(s);
        byKey[segments[s].keys[1]].push_back(s);
    }

    std::vector<Polyline> lines;
    std::vector<bool> used(segments.size(), false);
    for (std::size_t s = 0; s < segments.size(); ++s) {
        if (used[s])
            continue;
        used[s] = true;
        Polyline line { segments[s].points[0], segments[s].points[1] };
        walk(segments, byKey, used, segments[s].keys[1], line);
        Polyline before;
        walk(segments, byKey, used, segments[s].keys[0], before);
        if (!before.empty())
            line.insert(line.begin(), before.rbegin(), before.rend());
        if (line.size() >= 2)
            lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace Tessaly
