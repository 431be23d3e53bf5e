#pragma once
#include <limits>

#include <QPen>

#include <znmultipolygon.h>

#include "znsectiondrawable.h"

// A set of polygons (ZNMultiPolygon, world coordinates) drawn over a section with a pen:
// each corner projected onto the section; an edge is drawn when both its corners lie
// within maxDistance() voxels of the section, so that an outline in the section's plane
// is drawn whole and a far one not at all. Polygons are closed unless setClosed(false)
// (then they are polylines).
class ZNMultiPolygonDraw : public ZNSectionDrawable {
public:
    ZNMultiPolygonDraw(const ZNMultiPolygon& polygons, const QPen& pen);

    const ZNMultiPolygon& polygons() const { return m_polygons; }
    void setPolygons(const ZNMultiPolygon& polygons) { m_polygons = polygons; }
    const QPen& pen() const { return m_pen; }
    void setPen(const QPen& pen) { m_pen = pen; }
    bool isClosed() const { return m_closed; }
    void setClosed(bool closed) { m_closed = closed; }
    double maxDistance() const { return m_maxDistance; }
    void setMaxDistance(double voxels) { m_maxDistance = voxels; }

    void draw(QPainter& painter, const ZNBlocViewerEngine& engine) const override;
    double distanceTo(const QPointF& viewport, const ZNBlocViewerEngine& engine) const override;

private:
    // Calls `edge(a, b)` for every edge drawn, in viewport coordinates.
    template <class Edge>
    void forEachEdge(const ZNBlocViewerEngine& engine, Edge edge) const;

    ZNMultiPolygon m_polygons;
    QPen m_pen;
    bool m_closed = true;
    double m_maxDistance = std::numeric_limits<double>::infinity();
};
