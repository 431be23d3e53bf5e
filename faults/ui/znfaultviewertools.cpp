#include "znfaultviewertools.h"

#include <cmath>

#include <QMouseEvent>
#include <QPainter>

#include <znsectionviewer.h>

#include "znfaultviewer.h"
#include "znfaultviewerengine.h"

// ----- goto -----

bool ZNFaultViewerGotoTool::mousePress(ZNSectionViewer&, QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || event->modifiers() != Qt::NoModifier) return false;
    m_pressed = true;
    m_engine.updateGotoPoint(event->localPos());
    return true;
}

bool ZNFaultViewerGotoTool::mouseMove(ZNSectionViewer&, QMouseEvent* event)
{
    if (!m_pressed && !m_engine.isAutoGoto()) return false;
    m_engine.updateGotoPoint(event->localPos());
    return m_pressed;
}

bool ZNFaultViewerGotoTool::mouseRelease(ZNSectionViewer&, QMouseEvent* event)
{
    if (!m_pressed || event->button() != Qt::LeftButton) return false;
    m_pressed = false;
    return true;
}

// ----- picking -----

bool ZNFaultViewerPickingTool::after(bool handled)
{
    if (handled && m_edited) m_edited();
    return handled;
}

bool ZNFaultViewerPickingTool::mousePress(ZNSectionViewer& viewer, QMouseEvent* event)
{
    ZNFaultPickingSession* picking = session();
    if (picking && m_engine.getFaultPatchManager() == picking->faultSet() &&
        picking->currentFault() != m_engine.getMappedFaultId())
        picking->setCurrentFault(m_engine.getMappedFaultId());
    return after(ZNFaultPickingTool::mousePress(viewer, event));
}

bool ZNFaultViewerPickingTool::mouseMove(ZNSectionViewer& viewer, QMouseEvent* event)
{
    return after(ZNFaultPickingTool::mouseMove(viewer, event));
}

bool ZNFaultViewerPickingTool::mouseRelease(ZNSectionViewer& viewer, QMouseEvent* event)
{
    return after(ZNFaultPickingTool::mouseRelease(viewer, event));
}

bool ZNFaultViewerPickingTool::mouseDoubleClick(ZNSectionViewer& viewer, QMouseEvent* event)
{
    return after(ZNFaultPickingTool::mouseDoubleClick(viewer, event));
}

bool ZNFaultViewerPickingTool::keyPress(ZNSectionViewer& viewer, QKeyEvent* event)
{
    return after(ZNFaultPickingTool::keyPress(viewer, event));
}

// ----- overlay -----

double ZNFaultViewerOverlay::scaleBarLength(double unitsPerPixel, double maxPixels)
{
    if (!(unitsPerPixel > 0.0) || !(maxPixels > 0.0)) return 0.0;
    const double most = unitsPerPixel * maxPixels;
    const double power = std::pow(10.0, std::floor(std::log10(most)));
    for (double m : {5.0, 2.0, 1.0})
        if (m * power <= most) return m * power;
    return power;
}

void ZNFaultViewerOverlay::drawScaleBar(QPainter& painter) const
{
    const QRectF image = m_engine.imageRectInViewport();
    const core::mat4& m = m_engine.blocSpace().getFromBlocToWorldMatrix();
    const double step = core::vec3(m(0, 0), m(1, 0), m(2, 0)).length();  // world units per column
    const double unitsPerPixel = step / m_engine.scaleAcross();
    const double length = scaleBarLength(unitsPerPixel, ZNFaultViewer::kScaleBarPixels);
    if (length <= 0.0 || image.isEmpty()) return;
    const QRect inner = QRect(QPoint(0, 0), m_engine.viewportSize()).marginsRemoved(m_engine.margins());
    const double pixels = length / unitsPerPixel;
    const QPointF start(inner.left() + 12.0, inner.bottom() - 14.0);
    const QPointF end = start + QPointF(pixels, 0.0);
    painter.setRenderHint(QPainter::Antialiasing, false);
    // A pale box behind the bar and its label, readable over any colour.
    painter.fillRect(QRectF(start.x() - 6.0, start.y() - 22.0, pixels + 12.0, 30.0), QColor(255, 255, 255, 190));
    painter.setPen(QPen(Qt::black, 3));
    painter.drawLine(start, end);
    painter.setPen(QPen(Qt::white, 1));
    painter.drawLine(start, end);
    painter.setPen(QPen(Qt::black, 1));
    for (const QPointF& p : {start, end}) painter.drawLine(p - QPointF(0, 4), p + QPointF(0, 4));
    const bool feet = m_engine.getBloc() &&
                      m_engine.getBloc()->unitObject().getSpatialUnit() == georef::UnitObject::SpatialFoot;
    painter.drawText(QRectF(start.x(), start.y() - 20.0, pixels + 40.0, 16.0), Qt::AlignLeft | Qt::AlignBottom,
                     QStringLiteral("%1 %2").arg(length, 0, 'g', 6).arg(feet ? QStringLiteral("ft") : QStringLiteral("m")));
}

void ZNFaultViewerOverlay::draw(QPainter& painter, const ZNBlocViewerEngine&) const
{
    if (!m_engine.isFaultProjected()) return;
    painter.save();
    m_engine.drawWorkingArea(painter);
    painter.restore();
    painter.save();
    m_engine.drawPickedPoint(painter);
    painter.restore();
    painter.save();
    m_engine.drawGotoPoint(painter);
    painter.restore();
    if (m_engine.isScaleShown()) drawScaleBar(painter);
}
