#include "znfaulteraser.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <znsectionviewer.h>

ZNFaultEraser::ZNFaultEraser() : m_outline(std::make_shared<Outline>())
{
    m_outline->setName(QStringLiteral("eraser"));
}

void ZNFaultEraser::setRadii(double radiusX, double radiusY)
{
    m_outline->radiusX = std::clamp(radiusX, kMinimumRadius, kMaximumRadius);
    m_outline->radiusY = std::clamp(radiusY, kMinimumRadius, kMaximumRadius);
}

void ZNFaultEraser::Outline::draw(QPainter& painter, const ZNBlocViewerEngine&) const
{
    if (!shown) return;
    painter.setPen(QPen(QColor(40, 40, 40), 1, Qt::DashLine));
    painter.setBrush(QColor(255, 255, 255, 40));
    painter.drawEllipse(centre, radiusX, radiusY);
}

double ZNFaultEraser::Outline::distanceTo(const QPointF&, const ZNBlocViewerEngine&) const
{
    return std::numeric_limits<double>::infinity();  // a cursor, never picked
}

bool ZNFaultEraser::mousePress(ZNSectionViewer& viewer, QMouseEvent* event)
{
    m_outline->centre = event->localPos();
    if (!m_session || event->button() != Qt::LeftButton || event->modifiers() != Qt::NoModifier) return false;
    m_session->eraseInsideEllipse(m_outline->centre, m_outline->radiusX, m_outline->radiusY, viewer.engine());
    viewer.update();
    return true;
}

bool ZNFaultEraser::mouseMove(ZNSectionViewer& viewer, QMouseEvent* event)
{
    m_outline->centre = event->localPos();
    m_outline->shown = true;
    viewer.update();
    return false;  // a drag still pans
}

bool ZNFaultEraser::wheel(ZNSectionViewer& viewer, QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) return false;
    const double factor = std::pow(kWheelScale, event->angleDelta().y() / 120.0);
    if (event->modifiers() & Qt::ShiftModifier) setRadii(radiusX(), radiusY() * factor);
    else setRadii(radiusX() * factor, radiusY() * factor);
    viewer.update();
    return true;
}
