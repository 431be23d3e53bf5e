#pragma once
#include <QPointF>
#include <QString>

class QPainter;
class ZNBlocViewerEngine;

// Something a section viewer draws over its section: a polygon, points, a text, a
// fault's sticks and trace. It draws itself in viewport coordinates through the
// engine's conversions, and tells how far a viewport point is from what it draws, so
// that the viewer can find what the user clicked.
class ZNSectionDrawable {
public:
    virtual ~ZNSectionDrawable();

    // Draws on `painter`, whose coordinates are the viewport's.
    virtual void draw(QPainter& painter, const ZNBlocViewerEngine& engine) const = 0;
    // Distance in viewport pixels from `viewport` to what draw() draws; infinity when it
    // draws nothing.
    virtual double distanceTo(const QPointF& viewport, const ZNBlocViewerEngine& engine) const = 0;

    // Distance from `p` to the segment (a, b).
    static double distanceToSegment(const QPointF& p, const QPointF& a, const QPointF& b);

    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    bool isVisible() const { return m_visible; }
    void setVisible(bool visible) { m_visible = visible; }

private:
    QString m_name;
    bool m_visible = true;
};
