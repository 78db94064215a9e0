#include "plot/PolygonHandles.h"

#include <gtest/gtest.h>

using namespace Tessaly;

namespace {

QPolygonF polygonOf(std::initializer_list<QPointF> points)
{
    return QPolygonF(QVector<QPointF>(points));
}

// A square of 100 pixels, clockwise on the screen: edge 3 is the closing one, from (0, 100) back
// to (0, 0).
const QPolygonF square = polygonOf({ QPointF(0, 0), QPointF(100, 0), QPointF(100, 100), QPointF(0, 100) });

// Ten pixels high: a point between its long edges is near both.
const QPolygonF thin = polygonOf({ QPointF(0, 0), QPointF(100, 0), QPointF(100, 10), QPointF(0, 10) });

} // namespace

TEST(PolygonHandles, HitTestsOfVerticesAndEdges)
{
    struct Case
    {
        const char* what;
        QPolygonF pixels;
        QPointF position;
        int vertex;
        int edge;
    };
    const Case cases[] = {
        { "inside the vertex radius", square, QPointF(11.9, 0), 0, 0 },
        { "on the vertex radius: 144 is not below 144", square, QPointF(12, 0), -1, 0 },
        { "diagonal to a vertex: 8.4 pixels each way", square, QPointF(108.4, 108.4), 2, -1 },
        { "near a corner, both a vertex and edges are hit", square, QPointF(3, 2), 0, 0 },
        { "just inside the edge radius", square, QPointF(50, 7.9), -1, 0 },
        { "on the edge radius: 64 is not below 64", square, QPointF(50, 8), -1, -1 },
        { "outside the polygon counts too", square, QPointF(50, -7), -1, 0 },
        { "the closing edge", square, QPointF(-4, 50), -1, 3 },
        { "the nearer of two edges of a thin polygon", thin, QPointF(50, 6), -1, 2 },
        { "the nearer of two edges, the other way", thin, QPointF(50, 3), -1, 0 },
        { "foot beyond the end of the segment", polygonOf({ QPointF(0, 0), QPointF(100, 0) }),
            QPointF(113, 1), -1, -1 },
        { "foot before the start of the segment", polygonOf({ QPointF(0, 0), QPointF(100, 0) }),
            QPointF(-13, 1), -1, -1 },
        { "two vertices make a segment and its way back", polygonOf({ QPointF(0, 0), QPointF(100, 0) }),
            QPointF(40, 3), -1, 0 },
        { "one vertex has no edge", polygonOf({ QPointF(0, 0) }), QPointF(3, 0), 0, -1 },
        { "nothing to hit", polygonOf({}), QPointF(0, 0), -1, -1 },
        { "of equal distances the first vertex wins",
            polygonOf({ QPointF(0, 0), QPointF(10, 0), QPointF(100, 100) }), QPointF(5, 0), 0, 0 },
        { "of equal distances the first edge wins", square, QPointF(4, 4), 0, 0 },
        { "the middle of the square is far from everything", square, QPointF(50, 50), -1, -1 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(vertexAt(c.pixels, c.position), c.vertex);
        EXPECT_EQ(edgeAt(c.pixels, c.position), c.edge);
    }
}

TEST(PolygonHandles, AVertexInsertedOnAnEdgeLiesBetweenItsEnds)
{
    QPolygonF vertices = square;
    EXPECT_EQ(insertVertexOnEdge(vertices, 0, QPointF(50, 0)), 1);
    EXPECT_EQ(vertices,
        (polygonOf({ QPointF(0, 0), QPointF(50, 0), QPointF(100, 0), QPointF(100, 100), QPointF(0, 100) })));
    // On the closing edge the new vertex goes last, between the last vertex and the first.
    EXPECT_EQ(insertVertexOnEdge(vertices, 4, QPointF(0, 50)), 5);
    EXPECT_EQ(vertices.last(), QPointF(0, 50));
    EXPECT_EQ(vertices.size(), 6);
}

TEST(PolygonHandles, RemovingAVertexKeepsAtLeastATriangle)
{
    QPolygonF vertices = square;
    EXPECT_FALSE(removeVertexKeepingTriangle(vertices, 4));
    EXPECT_FALSE(removeVertexKeepingTriangle(vertices, -1));
    EXPECT_TRUE(removeVertexKeepingTriangle(vertices, 1));
    EXPECT_EQ(vertices, (polygonOf({ QPointF(0, 0), QPointF(100, 100), QPointF(0, 100) })));
    EXPECT_FALSE(removeVertexKeepingTriangle(vertices, 0));
    EXPECT_EQ(vertices.size(), 3);
}

TEST(PolygonHandles, TheOutlineIsClosedByRepeatingTheFirstVertex)
{
    EXPECT_EQ(closedOutline(polygonOf({ QPointF(1, 2), QPointF(3, 4), QPointF(5, 0) })),
        (polygonOf({ QPointF(1, 2), QPointF(3, 4), QPointF(5, 0), QPointF(1, 2) })));
    EXPECT_TRUE(closedOutline(polygonOf({})).isEmpty());
}
