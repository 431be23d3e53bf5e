#include "znpointsdraw.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QPainter>

#include "znblocviewerengine.h"

namespace {
constexpr double kTextGap = 4.0;  // pixels between a point and its text

QRectF textBox(const QPointF& at, double radius, const QString& text, const QFontMetricsF& metrics)
{
    const QRectF bounds = metrics.boundingRect(text);
    return QRectF(at.x() + radius + kTextGap, at.y() - bounds.height() / 2, bounds.width(), bounds.height());
}
} // namespace

ZNPointsDraw::ZNPointsDraw(const QColor& colour, double radius) : m_colour(colour), m_radius(std::max(0.0, radius)) {}

void ZNPointsDraw::draw(QPainter& painter, const ZNBlocViewerEngine& engine) const
{
    const QFontMetricsF metrics(painter.font());
    for (const Point& p : m_points) {
        QPointF at;
        double distance = 0.0;
        if (!engine.worldToViewport(p.world, at, &distance) || distance > m_maxDistance) continue;
        if (m_radius > 0.0) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(m_colour);
            painter.drawEllipse(at, m_radius, m_radius);
        }
        if (!p.text.isEmpty()) {
            painter.setPen(m_colour);
            painter.drawText(textBox(at, m_radius, p.text, metrics), Qt::AlignLeft | Qt::AlignVCenter, p.text);
        }
    }
}

double ZNPointsDraw::distanceTo(const QPointF& viewport, const ZNBlocViewerEngine& engine) const
{
    const QFontMetricsF metrics{QFont()};
    double best = std::numeric_limits<double>::infinity();
    for (const Point& p : m_points) {
        QPointF at;
        double distance = 0.0;
        if (!engine.worldToViewport(p.world, at, &distance) || distance > m_maxDistance) continue;
        if (m_radius > 0.0) best = std::min(best, std::max(0.0, std::hypot(viewport.x() - at.x(), viewport.y() - at.y()) - m_radius));
        if (!p.text.isEmpty()) {
            const QRectF box = textBox(at, m_radius, p.text, metrics);
            const double dx = std::max({box.left() - viewport.x(), 0.0, viewport.x() - box.right()});
            const double dy = std::max({box.top() - viewport.y(), 0.0, viewport.y() - box.bottom()});
            best = std::min(best, std::hypot(dx, dy));
        }
    }
    return best;
}
