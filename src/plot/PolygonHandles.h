#pragma once

#include <QPointF>
#include <QPolygonF>

namespace Tessaly {

// The handles of a polygon under edit: which vertex or edge lies under the mouse, and the changes a
// person makes to the vertices. Hit tests work in canvas pixels, where a tolerance means the same
// on every axis and scale; vertex edits work in whatever units the vertices are given.

// A vertex counts as hit within 12 pixels, an edge within 8: the smaller edge tolerance lets a
// press near a corner take the vertex, while the edge still catches a press anywhere along it.
inline constexpr double vertexHitDistanceSquared = 144.0;
inline constexpr double edgeHitDistanceSquared = 64.0;
// A polygon gate needs three vertices to enclose anything.
inline constexpr int minimumPolygonVertices = 3;

// The nearest vertex within the vertex tolerance, -1 if none; of equal distances the first wins.
int vertexAt(const QPolygonF& pixels, const QPointF& position);

// The nearest edge within the edge tolerance, measured to the perpendicular foot, which must lie on
// the segment; edge i runs from vertex i to vertex i + 1, the last one back to the first. Edges of
// zero length are skipped; fewer than two vertices have no edges. -1 if none is hit.
int edgeAt(const QPolygonF& pixels, const QPointF& position);

// Inserts the point after edge i, that is as vertex i + 1, and returns its index.
int insertVertexOnEdge(QPolygonF& vertices, int edge, const QPointF& point);

// Removes a vertex unless that would leave fewer than three; true if it was removed.
bool removeVertexKeepingTriangle(QPolygonF& vertices, int index);

// The vertices with the first repeated at the end, for drawing the polygon as closed.
QPolygonF closedOutline(const QPolygonF& vertices);

} // namespace Tessaly
