#pragma once
#include <memory>

#include <QImage>
#include <QOpenGLWidget>

#include <core/vec3.h>

#include "zn3drenderer.h"
#include "zn3dviewerengine.h"
#include "znmetatypes.h"

// The host's 3D view: a QOpenGLWidget that shows the scene of its engine (see
// ZN3DViewerEngine for the gestures and keys, ZN3DScene for the items) through a
// ZN3DRenderer. The host fills engine().scene() and connects the signals; the widget
// repaints when the engine changes.
//
// Clicks pick: a click of the left button emits itemPicked with the pickable item and
// the world point under the cursor (nothing when there is none); with Ctrl held it emits
// referencePointPicked with the world point of whatever is drawn there. A double click
// centres the view on the point under the cursor. Picking reads the depth and an item
// buffer (see ZN3DRenderer::pick).
//
// The widget asks for an OpenGL 3.3 core context (requiredFormat). When the platform
// gives less, it says so in its area and through openGLError(), and picking falls back
// to the engine's hit test on the geometry.
class ZN3DViewer : public QOpenGLWidget {
    Q_OBJECT
public:
    explicit ZN3DViewer(QWidget* parent = nullptr);
    ~ZN3DViewer() override;

    ZN3DViewerEngine& engine() { return m_engine; }
    const ZN3DViewerEngine& engine() const { return m_engine; }
    ZN3DScene& scene() { return m_engine.scene(); }

    // OpenGL 3.3 core profile with a 24-bit depth buffer.
    static QSurfaceFormat requiredFormat();

    // Whether the context could be used; meaningful once the widget was shown.
    bool isOpenGLReady() const { return m_renderer.isInitialized(); }
    // Why it could not (empty when it could or before the first show).
    QString openGLError() const { return m_renderer.errorText(); }
    // "OpenGL <version> (<renderer>)" once the context is ready.
    QString openGLDescription() const { return m_renderer.contextDescription(); }

    // The item and world point under `position` (widget coordinates): pickable items
    // only, or everything drawn. No hit (-9999) over the background.
    ZN3DViewerEngine::Hit pickAt(const QPointF& position, bool pickableOnly = true);

    // The picture as drawn now, at the widget's size in device pixels.
    QImage renderToImage() { return grabFramebuffer(); }

    const ZN3DRenderer::Statistics& renderStatistics() const { return m_renderer.statistics(); }

signals:
    void itemPicked(int id, const core::vec3& world);
    void referencePointPicked(const core::vec3& world);

protected:
    void initializeGL() override;
    void resizeGL(int width, int height) override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    // Widget (logical) coordinates to the engine's device pixels.
    core::vec2 toScreen(const QPointF& position) const;
    void releaseGl();
    void paintLabels();
    void paintUnavailable();

    ZN3DViewerEngine m_engine;
    ZN3DRenderer m_renderer;
    bool m_initialised = false;  // initializeGL ran for the current context
    QMetaObject::Connection m_contextConnection;  // to the current context's end
};
