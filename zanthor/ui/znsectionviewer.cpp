#include "znsectionviewer.h"

#include <cmath>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include "znsectiondrawable.h"

namespace {
constexpr int kTickLength = 5;           // pixels
constexpr double kTickSpacing = 60.0;    // least pixels between two labels across
constexpr double kDownTickSpacing = 40.0;
constexpr int kBarWidth = 16;            // colour bar, pixels
constexpr int kCrossArm = 10;            // reference point's cross, pixels
constexpr double kReferenceNear = 1.0;   // voxels: the cross is solid within this distance
const QColor kReferenceColour(230, 40, 160);
} // namespace

bool ZNSectionTool::mousePress(ZNSectionViewer&, QMouseEvent*) { return false; }
bool ZNSectionTool::mouseMove(ZNSectionViewer&, QMouseEvent*) { return false; }
bool ZNSectionTool::mouseRelease(ZNSectionViewer&, QMouseEvent*) { return false; }
bool ZNSectionTool::mouseDoubleClick(ZNSectionViewer&, QMouseEvent*) { return false; }
bool ZNSectionTool::keyPress(ZNSectionViewer&, QKeyEvent*) { return false; }
bool ZNSectionTool::wheel(ZNSectionViewer&, QWheelEvent*) { return false; }

ZNSectionViewer::ZNSectionViewer(std::unique_ptr<ZNSeismicViewerAbstractEngine> engine, QWidget* parent)
    : QWidget(parent), m_engine(std::move(engine))
{
    qRegisterMetaType<core::vec3>("core::vec3");
    setObjectName(QStringLiteral("sectionViewer"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_engine->setMargins(QMargins(kLeftMargin, kTopMargin, kRightMargin, kBottomMargin));
    m_engine->setChangeListener([this] {
        if (m_engine->sectionVersion() != m_shownVersion) {
            m_shownVersion = m_engine->sectionVersion();
            emit sectionChanged();
        }
        update();
    });
    m_shownVersion = m_engine->sectionVersion();
}

ZNSectionViewer::~ZNSectionViewer()
{
    m_engine->setChangeListener(nullptr);
}

void ZNSectionViewer::addTool(const QString& name, std::unique_ptr<ZNSectionTool> tool)
{
    m_tools[name] = std::move(tool);
}

ZNSectionTool* ZNSectionViewer::tool(const QString& name) const
{
    const auto it = m_tools.find(name);
    return it == m_tools.end() ? nullptr : it->second.get();
}

void ZNSectionViewer::setMouseMode(const QString& name)
{
    m_engine->setMouseModeName(name);
    update();
}

ZNSectionTool* ZNSectionViewer::currentTool() const
{
    return tool(m_engine->getMouseModeName());
}

void ZNSectionViewer::goToWorldPoint(const core::vec3& world)
{
    m_engine->goToWorldPoint(world);
}

void ZNSectionViewer::step(int steps)
{
    m_engine->stepSection(steps);
}

// ----- painting -----

void ZNSectionViewer::resizeEvent(QResizeEvent*)
{
    m_engine->setViewportSize(size());
}

void ZNSectionViewer::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    const QRectF area = m_engine->imageRectInViewport();
    const QImage& picture = m_engine->sectionImage();
    const QRect inner = rect().marginsRemoved(m_engine->margins());
    painter.save();
    painter.setClipRect(inner);
    painter.fillRect(area, QColor(250, 250, 250));  // no-value samples show this
    if (!picture.isNull()) painter.drawImage(area, picture, QRectF(picture.rect()));
    painter.setRenderHint(QPainter::Antialiasing);
    for (const auto& drawable : m_engine->drawables())
        if (drawable->isVisible()) {
            painter.save();
            drawable->draw(painter, *m_engine);
            painter.restore();
        }
    paintReferencePoint(painter);
    painter.restore();
    paintAxes(painter);
    paintColourBar(painter);
}

void ZNSectionViewer::paintReferencePoint(QPainter& painter)
{
    if (!m_engine->hasReferencePoint()) return;
    QPointF at;
    double distance = 0.0;
    if (!m_engine->worldToViewport(m_engine->referencePoint(), at, &distance)) return;
    QPen pen(kReferenceColour, 2);
    if (distance > kReferenceNear) pen.setStyle(Qt::DashLine);  // beside the section
    painter.setPen(pen);
    painter.drawLine(at - QPointF(kCrossArm, 0), at + QPointF(kCrossArm, 0));
    painter.drawLine(at - QPointF(0, kCrossArm), at + QPointF(0, kCrossArm));
}

void ZNSectionViewer::paintAxes(QPainter& painter)
{
    const QRect inner = rect().marginsRemoved(m_engine->margins());
    const QRectF area = m_engine->imageRectInViewport().intersected(QRectF(inner));
    painter.setPen(palette().windowText().color());
    painter.drawRect(inner.adjusted(0, 0, -1, -1));
    const QFontMetrics metrics(font());
    // The title line: the section on the left, what runs across on the right.
    const QRect titleLine(kLeftMargin, 2, inner.width(), metrics.height());
    painter.drawText(titleLine, Qt::AlignLeft | Qt::AlignVCenter, m_engine->sectionTitle());
    painter.drawText(titleLine, Qt::AlignRight | Qt::AlignVCenter, m_engine->acrossTitle() + QStringLiteral(" \u2192"));
    const int axisY = inner.top();
    for (const auto& tick : m_engine->acrossTicks(kTickSpacing)) {
        const double x = m_engine->imageToViewport(QPointF(tick.position, 0.0)).x();
        if (x < area.left() - 0.5 || x > area.right() + 0.5) continue;
        painter.drawLine(QPointF(x, axisY), QPointF(x, axisY - kTickLength));
        painter.drawText(QRectF(x - 40, axisY - kTickLength - metrics.height(), 80, metrics.height()),
                         Qt::AlignCenter, tick.label);
    }
    for (const auto& tick : m_engine->downTicks(kDownTickSpacing)) {
        const double y = m_engine->imageToViewport(QPointF(0.0, tick.position)).y();
        if (y < area.top() - 0.5 || y > area.bottom() + 0.5) continue;
        painter.drawLine(QPointF(inner.left(), y), QPointF(inner.left() - kTickLength, y));
        const double labelLeft = metrics.height() + 4;  // right of the rotated title
        painter.drawText(QRectF(labelLeft, y - metrics.height() / 2.0, inner.left() - kTickLength - 2 - labelLeft,
                                metrics.height()),
                         Qt::AlignRight | Qt::AlignVCenter, tick.label);
    }
    painter.save();
    painter.translate(2, inner.center().y());
    painter.rotate(-90);
    painter.drawText(QRect(-inner.height() / 2, 0, inner.height(), metrics.height()), Qt::AlignCenter,
                     m_engine->downTitle());
    painter.restore();
}

void ZNSectionViewer::paintColourBar(QPainter& painter)
{
    const QRect inner = rect().marginsRemoved(m_engine->margins());
    const img::ColourScale& scale = m_engine->colourScale();
    const QRect bar(inner.right() + 12, inner.top(), kBarWidth, inner.height());
    if (bar.height() <= 0) return;
    painter.drawImage(bar, scale.bar(kBarWidth, bar.height(), true));
    painter.setPen(palette().windowText().color());
    painter.drawRect(bar.adjusted(0, 0, -1, -1));
    const QFontMetrics metrics(font());
    const int labelX = bar.right() + 3;
    painter.drawText(QRect(labelX, bar.top(), width() - labelX, metrics.height()), Qt::AlignLeft,
                     QString::number(scale.maximum(), 'g', 4));
    painter.drawText(QRect(labelX, bar.bottom() - metrics.height(), width() - labelX, metrics.height()),
                     Qt::AlignLeft, QString::number(scale.minimum(), 'g', 4));
}

// ----- gestures -----

void ZNSectionViewer::mousePressEvent(QMouseEvent* event)
{
    if (ZNSectionTool* t = currentTool(); t && t->mousePress(*this, event)) return;
    if (event->button() != Qt::LeftButton) return;
    if (event->modifiers() & Qt::ControlModifier) {
        const core::vec3 world = m_engine->viewportToWorld(event->localPos());
        m_engine->setReferencePoint(world);
        emit referencePointPicked(world);
        return;
    }
    m_dragFrom = event->pos();
    m_pressedAt = event->pos();
    m_panning = true;
    m_dragged = false;
}

void ZNSectionViewer::mouseMoveEvent(QMouseEvent* event)
{
    emit cursorMoved(m_engine->viewportToWorld(event->localPos()), m_engine->sampleAtViewport(event->localPos()));
    if (ZNSectionTool* t = currentTool(); t && t->mouseMove(*this, event)) return;
    if (!m_panning) return;
    constexpr int kDragThreshold = 3;  // pixels before a press becomes a drag
    if (!m_dragged && (event->pos() - m_pressedAt).manhattanLength() < kDragThreshold) return;
    m_dragged = true;
    m_engine->pan(QPointF(event->pos() - m_dragFrom));
    m_dragFrom = event->pos();
}

void ZNSectionViewer::mouseReleaseEvent(QMouseEvent* event)
{
    if (ZNSectionTool* t = currentTool(); t && t->mouseRelease(*this, event)) return;
    const bool click = m_panning && !m_dragged && event->button() == Qt::LeftButton;
    m_panning = false;
    if (click) emit clicked(event->localPos());
}

void ZNSectionViewer::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (ZNSectionTool* t = currentTool(); t && t->mouseDoubleClick(*this, event)) return;
    m_engine->fit();
}

void ZNSectionViewer::wheelEvent(QWheelEvent* event)
{
    if (ZNSectionTool* t = currentTool(); t && t->wheel(*this, event)) return;
    const double notches = event->angleDelta().y() / 120.0;
    if (notches == 0.0) return;
    m_engine->zoomAt(event->position(), std::pow(kWheelZoom, notches));
    event->accept();
}

void ZNSectionViewer::keyPressEvent(QKeyEvent* event)
{
    if (ZNSectionTool* t = currentTool(); t && t->keyPress(*this, event)) return;
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Right: step(1); break;
    case Qt::Key_Down:
    case Qt::Key_Left: step(-1); break;
    case Qt::Key_PageUp: step(kPageSteps); break;
    case Qt::Key_PageDown: step(-kPageSteps); break;
    case Qt::Key_Home: m_engine->setSection(m_engine->sectionKind(), 0); break;
    case Qt::Key_End: m_engine->setSection(m_engine->sectionKind(), m_engine->sectionCount(m_engine->sectionKind()) - 1); break;
    case Qt::Key_F: m_engine->fit(); break;
    default: QWidget::keyPressEvent(event);
    }
}
