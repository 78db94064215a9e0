#include "calc/DelaunayTriangulation.h"

#include <algorithm>
#include <cstddef>

namespace Tessaly {

namespace {

// A triangle of the growing mesh. Edge i runs from v[i] to v[(i + 1) % 3]; n[i] is the triangle on the
// other side of it, -1 at the outer border.
struct MeshTriangle
{
    std::int32_t v[3];
    std::int32_t n[3];
    bool alive;
};

// An edge of the cavity's border, with what lies beyond it.
struct BorderEdge
{
    std::int32_t a;
    std::int32_t b;
    std::int32_t outside; // triangle beyond the edge, or -1
    int outsideEdge; // its edge that faces the cavity
};

class Triangulator
{
public:
    Triangulator(const std::vector<double>& x, const std::vector<double>& y)
        : px(x)
        , py(y)
        , nodeCount(static_cast<std::int32_t>(x.size()))
    {
        px.insert(px.end(), { -10.0, 20.0, -10.0 });
        py.insert(py.end(), { -10.0, -10.0, 20.0 });
        tris.reserve(2 * x.size() + 8);
        tris.push_back({ { nodeCount, nodeCount + 1, nodeCount + 2 }, { -1, -1, -1 }, true });
        lastMade = 0;
    }

    void insertAll()
    {
        for (std::int32_t p = 0; p < nodeCount; ++p)
            insert(p);
    }

    std::vector<Triangle> result() const
    {
        std::vector<Triangle> out;
        out.reserve(tris.size());
        for (const MeshTriangle& t : tris) {
            if (!t.alive || t.v[0] >= nodeCount || t.v[1] >= nodeCount || t.v[2] >= nodeCount)
                continue;
            out.push_back({ t.v[0], t.v[1], t.v[2] });
        }
        return out;
    }

private:
    bool isBad(std::int32_t t, std::int32_t p) const
    {
        const MeshTriangle& tri = tris[static_cast<std::size_t>(t)];
        const double x0 = px[static_cast<std::size_t>(p)];
        const double y0 = py[static_cast<std::size_t>(p)];
        const auto at = [&](int i) { return static_cast<std::size_t>(tri.v[i]); };
        return incircleDeterminant(px[at(0)] - x0, py[at(0)] - y0, px[at(1)] - x0, py[at(1)] - y0,
                   px[at(2)] - x0, py[at(2)] - y0)
            > 0.0;
    }

    // > 0 when p lies left of the edge a -> b.
    double side(std::int32_t a, std::int32_t b, std::int32_t p) const
    {
        const auto A = static_cast<std::size_t>(a), B = static_cast<std::size_t>(b),
                   P = static_cast<std::size_t>(p);
        return (px[B] - px[A]) * (py[P] - py[A]) - (py[B] - py[A]) * (px[P] - px[A]);
    }

    // The triangle that holds p, by walking across edges that p lies beyond; -1 if the walk gets lost
    // (only in degenerate meshes).
    std::int32_t locate(std::int32_t p) const
    {
        std::int32_t t = lastMade;
        const std::size_t limit = tris.size() + 16;
        for (std::size_t step = 0; step < limit; ++step) {
            const MeshTriangle& tri = tris[static_cast<std::size_t>(t)];
            std::int32_t next = -1;
            // Starting the test at a varying edge keeps the walk from circling.
            for (int k = 0; k < 3; ++k) {
                const int i = static_cast<int>((step + static_cast<std::size_t>(k)) % 3);
                if (side(tri.v[i], tri.v[(i + 1) % 3], p) < 0.0) {
                    next = tri.n[i];
                    break;
                }
            }
            if (next < 0) {
                // Inside (or on the border of) this triangle, or beyond the outer border.
                return t;
            }
            t = next;
        }
        return -1;
    }

    // The bad triangles, ascending: those whose circumcircle holds p strictly. They form one connected
    // region around p, so they are found by growing from the triangle that holds p; should that one not
    // be bad (p on a node, or a lost walk), every triangle is tested.
    void findCavity(std::int32_t p)
    {
        bad.clear();
        const std::int32_t start = locate(p);
        ++stamp;
        if (stamp == 0) {
            std::fill(mark.begin(), mark.end(), 0u);
            stamp = 1;
        }
        mark.resize(tris.size(), 0u);
        if (start >= 0 && tris[static_cast<std::size_t>(start)].alive && isBad(start, p)) {
            stack.clear();
            stack.push_back(start);
            mark[static_cast<std::size_t>(start)] = stamp;
            while (!stack.empty()) {
                const std::int32_t t = stack.back();
                stack.pop_back();
                bad.push_back(t);
                for (const std::int32_t n : tris[static_cast<std::size_t>(t)].n) {
                    if (n < 0 || mark[static_cast<std::size_t>(n)] == stamp)
                        continue;
                    mark[static_cast<std::size_t>(n)] = stamp;
                    if (isBad(n, p))
                        stack.push_back(n);
                }
            }
            std::sort(bad.begin(), bad.end());
        } else {
            for (std::size_t t = 0; t < tris.size(); ++t)
                if (tris[t].alive && isBad(static_cast<std::int32_t>(t), p))
                    bad.push_back(static_cast<std::int32_t>(t));
        }
        for (const std::int32_t t : bad)
            mark[static_cast<std::size_t>(t)] = stamp + 0x80000000u;
    }

    bool marked(std::int32_t t) const
    {
        return t >= 0 && mark[static_cast<std::size_t>(t)] == stamp + 0x80000000u;
    }

    void insert(std::int32_t p)
    {
        findCavity(p);
        if (bad.empty())
            return;

        border.clear();
        for (const std::int32_t t : bad) {
            const MeshTriangle& tri = tris[static_cast<std::size_t>(t)];
            for (int i = 0; i < 3; ++i) {
                const std::int32_t n = tri.n[i];
                if (marked(n))
                    continue;
                int back = -1;
                if (n >= 0) {
                    const MeshTriangle& other = tris[static_cast<std::size_t>(n)];
                    for (int j = 0; j < 3; ++j)
                        if (other.n[j] == t)
                            back = j;
                }
                border.push_back({ tri.v[i], tri.v[(i + 1) % 3], n, back });
            }
        }
        for (const std::int32_t t : bad)
            tris[static_cast<std::size_t>(t)].alive = false;

        const auto first = static_cast<std::int32_t>(tris.size());
        const auto P = static_cast<std::size_t>(p);
        for (const BorderEdge& e : border) {
            const auto A = static_cast<std::size_t>(e.a), B = static_cast<std::size_t>(e.b);
            const double cross = (px[A] - px[P]) * (py[B] - py[P]) - (py[A] - py[P]) * (px[B] - px[P]);
            MeshTriangle tri { { p, e.a, e.b }, { -1, e.outside, -1 }, true };
            if (cross < 0.0)
                tri.v[1] = e.b, tri.v[2] = e.a;
            const auto made = static_cast<std::int32_t>(tris.size());
            if (e.outside >= 0)
                tris[static_cast<std::size_t>(e.outside)].n[e.outsideEdge] = made;
            tris.push_back(tri);
        }
        mark.resize(tris.size(), 0u);

        // The new triangles meet along the spokes from p: edge 0 (p -> v1) of one is edge 2 (v2 -> p)
        // of another.
        const auto last = static_cast<std::int32_t>(tris.size());
        if (last - first <= 48) {
            for (std::int32_t s = first; s < last; ++s) {
                MeshTriangle& t = tris[static_cast<std::size_t>(s)];
                for (std::int32_t o = first; o < last && t.n[0] < 0; ++o) {
                    MeshTriangle& other = tris[static_cast<std::size_t>(o)];
                    if (o != s && other.v[2] == t.v[1] && other.n[2] < 0) {
                        t.n[0] = o;
                        other.n[2] = s;
                    }
                }
            }
        } else {
            spokes.clear();
            for (std::int32_t s = first; s < last; ++s)
                spokes.push_back({ tris[static_cast<std::size_t>(s)].v[2], s });
            std::sort(spokes.begin(), spokes.end());
            for (std::int32_t s = first; s < last; ++s) {
                MeshTriangle& t = tris[static_cast<std::size_t>(s)];
                auto it = std::lower_bound(
                    spokes.begin(), spokes.end(), std::array<std::int32_t, 2> { t.v[1], -1 });
                for (; it != spokes.end() && (*it)[0] == t.v[1]; ++it) {
                    MeshTriangle& other = tris[static_cast<std::size_t>((*it)[1])];
                    if ((*it)[1] != s && other.n[2] < 0) {
                        t.n[0] = (*it)[1];
                        other.n[2] = s;
                        break;
                    }
                }
            }
        }
        lastMade = last - 1;
    }

    std::vector<double> px;
    std::vector<double> py;
    std::int32_t nodeCount;
    std::vector<MeshTriangle> tris;
    std::int32_t lastMade = 0;
    std::vector<std::int32_t> bad;
    std::vector<std::int32_t> stack;
    std::vector<BorderEdge> border;
    std::vector<std::array<std::int32_t, 2>> spokes;
    std::vector<std::uint32_t> mark;
    std::uint32_t stamp = 0;
};

} // namespace

double incircleDeterminant(double ax, double ay, double bx, double by, double cx, double cy)
{
    const double a2 = ax * ax + ay * ay;
    const double b2 = bx * bx + by * by;
    const double c2 = cx * cx + cy * cy;
    return ax * (by * c2 - b2 * cy) - ay * (bx * c2 - b2 * cx) + a2 * (bx * cy - by * cx);
}

std::vector<Triangle> delaunayTriangulation(const std::vector<double>& x, const std::vector<double>& y)
{
    if (x.size() != y.size() || x.empty())
        return {};
    Triangulator triangulator(x, y);
    triangulator.insertAll();
    return triangulator.result();
}

} // namespace Tessaly
