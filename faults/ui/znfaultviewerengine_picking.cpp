// The fault viewer engine's picking state: the copy of the fault's picked points, the
// nearest point under the mouse, the outline, the mouse mode and the goto point.
#include "znfaultviewerengine.h"

#include <cmath>
#include <memory>

#include <QPainter>
#include <QStringList>

#include <zn3dfaultpatch.h>
#include <znmultipolygon.h>
#include <znmultipolygondraw.h>

namespace {
constexpr double kNo = core::kNoValueReal;
constexpr double kPointRadius = 3.5;    // pixels, picked points
constexpr double kGotoRadius = 7.0;     // pixels, the goto point's circle
const QColor kGotoColour(0, 170, 0);

bool skipped(const core::PointWithBool& p)
{
    return p.x == kNo || p.y == kNo || p.z == kNo;
}
} // namespace

// ----- picked points -----

void ZNFaultViewerEngine::insertPickedPoint(const core::Array<core::PointWithBool>& points)
{
    m_pickedCount = 0;
    if (!m_picked.resize(points.size())) return;
    for (int k = 0; k < points.size(); ++k) m_picked[k] = points[k];
    m_pickedCount = points.size();
}

void ZNFaultViewerEngine::updatePickedPoint(const ZN3DFaultPatch* fault)
{
    if (fault) insertPickedPoint(fault->getPickedPoints());
    else clearPickingPoint();
    changed();
}

core::vec3 ZNFaultViewerEngine::getNearestPickedPoint(const QPointF& mouse) const
{
    const core::vec3 none(kNo, kNo, kNo);
    if (!m_showPicked || blocSpace().isEmpty()) return none;
    double best = kNearestPixels;
    core::vec3 result = none;
    // Segments of consecutive points of a stick: the foot of the perpendicular.
    double footBest = best;
    core::vec3 foot = none;
    for (int k = 0; k + 1 < m_pickedCount; ++k) {
        const core::PointWithBool& a = m_picked[k];
        const core::PointWithBool& b = m_picked[k + 1];
        if (skipped(a) || skipped(b)) continue;
        QPointF sa, sb;
        if (!worldToViewport(a.position(), sa) || !worldToViewport(b.position(), sb)) continue;
        const QPointF ab = sb - sa;
        const double lengthSquared = QPointF::dotProduct(ab, ab);
        if (!(lengthSquared > 0.0)) continue;
        const double t = QPointF::dotProduct(mouse - sa, ab) / lengthSquared;
        if (t < 0.0 || t > 1.0) continue;
        const double d = std::hypot(mouse.x() - (sa.x() + t * ab.x()), mouse.y() - (sa.y() + t * ab.y()));
        if (d < footBest) {
            footBest = d;
            foot = a.position() + (b.position() - a.position()) * t;
        }
    }
    if (footBest < kNearestPixels) {
        best = footBest;
        result = foot;
    }
    // Points: one strictly nearer than the best foot wins.
    for (int k = 0; k < m_pickedCount; ++k) {
        const core::PointWithBool& p = m_picked[k];
        if (skipped(p)) continue;
        QPointF at;
        if (!worldToViewport(p.position(), at)) continue;
        const double d = std::hypot(mouse.x() - at.x(), mouse.y() - at.y());
        if (d < best) {
            best = d;
            result = p.position();
        }
    }
    return result;
}

void ZNFaultViewerEngine::drawPickedPoint(QPainter& painter) const
{
    if (!m_showPicked || m_pickedCount == 0 || blocSpace().isEmpty()) return;
    const QColor stick = m_fault ? m_fault->getPen().color() : QColor(Qt::yellow);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(stick, 2));
    QPointF previous;
    bool hasPrevious = false;
    for (int k = 0; k < m_pickedCount; ++k) {
        QPointF at;
        if (skipped(m_picked[k]) || !worldToViewport(m_picked[k].position(), at)) {
            hasPrevious = false;
            continue;
        }
        if (hasPrevious) painter.drawLine(previous, at);
        previous = at;
        hasPrevious = true;
    }
    painter.setPen(QPen(Qt::black, 1));
    for (int k = 0; k < m_pickedCount; ++k) {
        QPointF at;
        if (skipped(m_picked[k]) || !worldToViewport(m_picked[k].position(), at)) continue;
        painter.setBrush(m_picked[k].flag ? QColor(Qt::lightGray) : QColor(Qt::white));
        painter.drawEllipse(at, kPointRadius, kPointRadius);
    }
}

// ----- outline -----

void ZNFaultViewerEngine::removeEdgePolyline()
{
    bool removed = true;
    while (removed) {
        removed = false;
        for (const auto& d : drawables())
            if (d->name() == edgePolylineName()) {
                removeDrawable(d.get());
                removed = true;
                break;
            }
    }
    m_edge.reset();
}

void ZNFaultViewerEngine::setFaultEdgePolyline(const ZNMultiPolygon& polygon)
{
    removeEdgePolyline();
    m_edge = std::make_shared<ZNMultiPolygonDraw>(polygon, QPen(QColor(Qt::black), kEdgeWidth));
    m_edge->setName(edgePolylineName());
    addDrawable(m_edge);
}

void ZNFaultViewerEngine::insertEdgePolyline(const ZN3DFaultPatch* fault)
{
    removeEdgePolyline();
    if (!fault) return;
    const std::unique_ptr<ZNMultiPolygon> polygon(fault->getMeshingPolygon());
    if (polygon) setFaultEdgePolyline(*polygon);
}

void ZNFaultViewerEngine::drawFaultEdgePolyline(QPainter& painter) const
{
    if (m_edge) m_edge->draw(painter, *this);
}

// ----- mouse mode -----

const QStringList& ZNFaultViewerEngine::modesReplacedByGoto()
{
    static const QStringList modes{
        QStringLiteral("HORIZON_PICKING"),
        QStringLiteral("HORIZON_TRACKING_AROUND_SEED"),
        QStringLiteral("HORIZON_TRACKING_BETWEEN_SEEDS"),
        QStringLiteral("STRATI_PICKING"),
        QStringLiteral("SNAP_MODE"),
        QStringLiteral("SEQUENCE_PICKING"),
        QStringLiteral("WELL_TIE_MOVE_POINT_PICKING"),
        QStringLiteral("WELL_TIE_MOVE_POINT_ADJUST"),
        QStringLiteral("FAULT_PICKING"),
        QStringLiteral("SALT_PICKING"),
        QStringLiteral("CREATE_FREQUENCY_POLYLINE"),
        QStringLiteral("MOVE_FREQUENCY_POLYLINE"),
        QStringLiteral("TRACK_SELECTION"),
        QStringLiteral("TRACK_SELECTION_ERASE"),
        QStringLiteral("MOVE_STRAIGHT_POLYLINE_VERTICAL"),
    };
    return modes;
}

void ZNFaultViewerEngine::setMouseMode(const QString& name, bool enabled)
{
    if (!enabled) {
        if (name == m_storedMouseMode) {
            m_storedMouseMode.clear();
            setMouseModeName(QString());
        }
        return;
    }
    m_storedMouseMode = name;
    setMouseModeName(modesReplacedByGoto().contains(name) ? gotoModeName() : name);
}

// ----- goto point -----

void ZNFaultViewerEngine::updateGotoPoint(const QPointF& mouse)
{
    core::vec3 point = getNearestPickedPoint(mouse);
    if (point.x == kNo) point = ZNBlocViewerEngine::viewportToWorld(mouse);
    else setNearestMousePoint(point);
    setReferencePoint(point);
    send(QStringLiteral("UPDATE_REF_POINT"));
}

void ZNFaultViewerEngine::drawGotoPoint(QPainter& painter) const
{
    QPointF at;
    if (!hasReferencePoint() || !worldToViewport(referencePoint(), at)) return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(kGotoColour, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(at, kGotoRadius, kGotoRadius);
}

bool ZNFaultViewerEngine::goto3DPoint(const core::vec3& world)
{
    if (blocSpace().isEmpty()) return false;
    const core::vec3 image = from3dWorldToImage(world);
    const long c = std::lround(image.x), r = std::lround(image.y);
    if (c < 0 || r < 0 || c >= imageSize().width() || r >= imageSize().height()) return false;
    const QRect area = QRect(QPoint(0, 0), viewportSize()).marginsRemoved(margins());
    pan(QPointF(area.center()) - imageToViewport(QPointF(double(c), double(r))));
    return true;
}
