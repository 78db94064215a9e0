#include "plot/PolygonHandles.h"

#include <limits>

namespace Tessaly {

namespace {

double squaredDistance(const QPointF& a, const QPointF& b)
{
    const double dx = a.x() - b.x();
    const double dy = a.y() - b.y();
    return dx * dx + dy * dy;
}

} // namespace

int vertexAt(const QPolygonF& pixels, const QPointF& position)
{
    double best = std::numeric_limits<double>::infinity();
    int bestIndex = -1;
    for (int i = 0; i < pixels.size(); ++i) {
        const double distance = squaredDistance(pixels[i], position);
        if (distance < best) {
            best = distance;
            bestIndex = i;
        }
    }
    return best < vertexHitDistanceSquared ? bestIndex : -1;
}

int edgeAt(const QPolygonF& pixels, const QPointF& position)
{
    const int count = pixels.size();
    if (count < 2)
        return -1;
    double best = std::numeric_limits<double>::infinity();
    int bestIndex = -1;
    for (int i = 0; i < count; ++i) {
        const QPointF& a = pixels[i];
        const QPointF& b = pixels[(i + 1) % count];
        const double ex = b.x() - a.x();
        const double ey = b.y() - a.y();
        const double length = ex * ex + ey * ey;
        if (length == 0.0)
            continue;
        const double t = ((position.x() - a.x()) * ex + (position.y() - a.y()) * ey) / length;
        if (t < 0.0 || t > 1.0)
            continue;
        const double distance = squaredDistance(QPointF(a.x() + t * ex, a.y() + t * ey), position);
        if (distance < best) {
            best = distance;
            bestIndex = i;
        }
    }
    return best < edgeHitDistanceSquared ? bestIndex : -1;
}

int insertVertexOnEdge(QPolygonF& vertices, int edge, const QPointF& point)
{
    const int index = edge + 1;
    vertices.insert(index, point);
    return index;
}

bool removeVertexKeepingTriangle(QPolygonF& vertices, int index)
{
    if (vertices.size() <= minimumPolygonVertices || index < 0 || index >= vertices.size())
        return false;
    vertices.remove(index);
    return true;
}

QPolygonF closedOutline(const QPolygonF& vertices)
{
    QPolygonF closed = vertices;
    if (!closed.isEmpty())
        closed << closed.first();
    return closed;
}

} // namespace Tessaly
