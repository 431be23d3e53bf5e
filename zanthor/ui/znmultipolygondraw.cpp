#include "znmultipolygondraw.h"

#include <cmath>
#include <vector>

#include <QPainter>

#include "znblocviewerengine.h"

ZNMultiPolygonDraw::ZNMultiPolygonDraw(const ZNMultiPolygon& polygons, const QPen& pen)
    : m_polygons(polygons), m_pen(pen)
{
}

template <class Edge>
void ZNMultiPolygonDraw::forEachEdge(const ZNBlocViewerEngine& engine, Edge edge) const
{
    for (int p = 0; p < m_polygons.getNumberOfPolygon(); ++p) {
        const core::Array<core::vec3>& corners = *m_polygons.getPolygon(p);
        const int n = corners.size();
        std::vector<QPointF> at(static_cast<std::size_t>(n));
        std::vector<char> near(static_cast<std::size_t>(n), 0);
        for (int k = 0; k < n; ++k) {
            double distance = 0.0;
            near[k] = engine.worldToViewport(corners[k], at[k], &distance) && distance <= m_maxDistance;
        }
        const int edges = m_closed && n > 2 ? n : n - 1;
        for (int k = 0; k < edges; ++k) {
            const int next = (k + 1) % n;
            if (near[k] && near[next]) edge(at[k], at[next]);
        }
    }
}

void ZNMultiPolygonDraw::draw(QPainter& painter, const ZNBlocViewerEngine& engine) const
{
    painter.setPen(m_pen);
    forEachEdge(engine, [&painter](const QPointF& a, const QPointF& b) { painter.drawLine(a, b); });
}

double ZNMultiPolygonDraw::distanceTo(const QPointF& viewport, const ZNBlocViewerEngine& engine) const
{
    double best = std::numeric_limits<double>::infinity();
    forEachEdge(engine, [&](const QPointF& a, const QPointF& b) {
        best = std::min(best, distanceToSegment(viewport, a, b));
    });
    return best;
}
