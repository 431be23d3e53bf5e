#pragma once
#include <limits>
#include <vector>

#include <QColor>
#include <QString>

#include <core/vec3.h>

#include "znsectiondrawable.h"

// Points over a section, each a filled disc of radius() pixels in its colour with an
// optional text beside it (a point of radius 0 draws its text alone: a label). Points
// farther than maxDistance() voxels from the section are not drawn.
class ZNPointsDraw : public ZNSectionDrawable {
public:
    struct Point {
        core::vec3 world;
        QString text;  // drawn to the right of the point; empty: none
    };

    explicit ZNPointsDraw(const QColor& colour, double radius = 4.0);

    std::vector<Point>& points() { return m_points; }
    const std::vector<Point>& points() const { return m_points; }
    void addPoint(const core::vec3& world, const QString& text = QString()) { m_points.push_back({world, text}); }
    const QColor& colour() const { return m_colour; }
    void setColour(const QColor& colour) { m_colour = colour; }
    double radius() const { return m_radius; }
    double maxDistance() const { return m_maxDistance; }
    void setMaxDistance(double voxels) { m_maxDistance = voxels; }

    void draw(QPainter& painter, const ZNBlocViewerEngine& engine) const override;
    // To the nearest disc's rim (0 inside it), or to the nearest label's box.
    double distanceTo(const QPointF& viewport, const ZNBlocViewerEngine& engine) const override;

private:
    std::vector<Point> m_points;
    QColor m_colour;
    double m_radius;
    double m_maxDistance = std::numeric_limits<double>::infinity();
};
