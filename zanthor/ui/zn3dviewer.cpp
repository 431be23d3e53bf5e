#include "zn3dviewer.h"

#include <cmath>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QPainter>
#include <QWheelEvent>

ZN3DViewer::ZN3DViewer(QWidget* parent) : QOpenGLWidget(parent)
{
    qRegisterMetaType<core::vec3>();
    setFormat(requiredFormat());
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(64, 64);
    m_engine.setChangedCallback([this] { update(); });
}

ZN3DViewer::~ZN3DViewer()
{
    m_engine.setChangedCallback(nullptr);
    // The context outlives this part of the widget: its end must not call back here.
    disconnect(m_contextConnection);
    if (m_initialised) {
        makeCurrent();
        releaseGl();
        doneCurrent();
    }
}

QSurfaceFormat ZN3DViewer::requiredFormat()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(ZN3DRenderer::kRequiredMajor, ZN3DRenderer::kRequiredMinor);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    return format;
}

void ZN3DViewer::releaseGl()
{
    m_renderer.release();
    m_initialised = false;
}

void ZN3DViewer::initializeGL()
{
    // A widget moved to another window gets a new context: the old one's objects go first.
    disconnect(m_contextConnection);
    m_contextConnection = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        releaseGl();
        doneCurrent();
    });
    m_initialised = true;
    m_renderer.initialize();
}

void ZN3DViewer::resizeGL(int, int)
{
    // The engine works in device pixels, those of the framebuffer.
    const qreal ratio = devicePixelRatioF();
    m_engine.setViewport(int(std::lround(width() * ratio)), int(std::lround(height() * ratio)));
}

void ZN3DViewer::paintGL()
{
    if (!m_renderer.isInitialized()) {
        paintUnavailable();
        return;
    }
    m_renderer.render(m_engine);
    paintLabels();
}

void ZN3DViewer::paintLabels()
{
    const std::vector<ZN3DViewerEngine::Label> labels = m_engine.labels();
    if (labels.empty()) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const qreal ratio = devicePixelRatioF();
    const QFontMetricsF metrics(painter.font());
    for (const ZN3DViewerEngine::Label& label : labels) {
        const QPointF centre(label.screen.x / ratio, label.screen.y / ratio);
        QRectF box = metrics.boundingRect(label.text);
        box.moveCenter(centre);
        painter.setPen(label.colour);
        painter.drawText(box, Qt::AlignCenter, label.text);
    }
}

void ZN3DViewer::paintUnavailable()
{
    QPainter painter(this);
    painter.fillRect(rect(), m_engine.background());
    painter.setPen(Qt::white);
    painter.drawText(rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap,
                     tr("The 3D view cannot draw: %1").arg(m_renderer.errorText()));
}

core::vec2 ZN3DViewer::toScreen(const QPointF& position) const
{
    const qreal ratio = devicePixelRatioF();
    return {position.x() * ratio, position.y() * ratio};
}

ZN3DViewerEngine::Hit ZN3DViewer::pickAt(const QPointF& position, bool pickableOnly)
{
    const core::vec2 screen = toScreen(position);
    if (!m_initialised || !m_renderer.isInitialized()) return m_engine.hitTest(screen, pickableOnly);
    makeCurrent();
    const ZN3DViewerEngine::Hit hit = m_renderer.pick(m_engine, screen, pickableOnly);
    doneCurrent();
    return hit;
}

void ZN3DViewer::mousePressEvent(QMouseEvent* event)
{
    m_engine.pressAt(toScreen(event->localPos()), event->button(), event->modifiers());
    event->accept();
}

void ZN3DViewer::mouseMoveEvent(QMouseEvent* event)
{
    m_engine.moveTo(toScreen(event->localPos()));
    event->accept();
}

void ZN3DViewer::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    if (!m_engine.releaseAt(toScreen(event->localPos()))) return;
    if (m_engine.pressModifiers() & Qt::ControlModifier) {
        const ZN3DViewerEngine::Hit hit = pickAt(event->localPos(), false);
        if (hit.isHit()) emit referencePointPicked(hit.world);
        return;
    }
    const ZN3DViewerEngine::Hit hit = pickAt(event->localPos(), true);
    if (hit.isHit()) emit itemPicked(hit.id, hit.world);
}

void ZN3DViewer::mouseDoubleClickEvent(QMouseEvent* event)
{
    event->accept();
    if (event->button() != Qt::LeftButton) return;
    const ZN3DViewerEngine::Hit hit = pickAt(event->localPos(), false);
    if (hit.isHit()) m_engine.centreOn(hit.world);
}

void ZN3DViewer::wheelEvent(QWheelEvent* event)
{
    event->accept();
    const int delta = event->angleDelta().y();
    if (delta == 0) return;
    const ZN3DViewerEngine::Hit hit = pickAt(event->position(), false);
    m_engine.wheelAt(toScreen(event->position()), delta, hit.isHit() ? &hit.world : nullptr);
}

void ZN3DViewer::keyPressEvent(QKeyEvent* event)
{
    if (m_engine.keyPressed(event->key(), event->modifiers()))
        event->accept();
    else
        QOpenGLWidget::keyPressEvent(event);
}
