// The 3D view without a usable OpenGL context (Qt's offscreen platform): the renderer
// refuses politely and the view picks on the geometry.
#include <gtest/gtest.h>

#include <QMouseEvent>
#include <QSignalSpy>

#include <zn3dviewer.h>

#include "testmeshes.h"

TEST(ViewerWithoutOpenGL, TheRendererRefusesWithoutAContextAndDrawsNothing)
{
    ZN3DRenderer renderer;
    EXPECT_FALSE(renderer.initialize());
    EXPECT_FALSE(renderer.isInitialized());
    EXPECT_FALSE(renderer.errorText().isEmpty());
    ZN3DViewerEngine engine;
    engine.setViewport(100, 100);
    renderer.render(engine);
    EXPECT_EQ(renderer.statistics().frames, 0u);
    EXPECT_FALSE(renderer.pick(engine, {50, 50}, true).isHit());
    renderer.release();  // harmless without anything to free
}

TEST(ViewerWithoutOpenGL, AViewNotYetDrawnPicksOnTheGeometryAndReportsClicks)
{
    ZN3DViewer viewer;
    auto fault = planarMesh({0, 500, 0}, {1000, 0, 0}, {0, 0, 1000}, 2, 2, Qt::red);
    viewer.scene().setItem(3, ZN3DSurfaceItem{fault.get()});
    viewer.engine().setViewport(200, 200);
    viewer.engine().setStandardView(ZN3DCamera::StandardView::Map);
    viewer.engine().fitAll();
    const ZN3DViewerEngine::Hit hit = viewer.pickAt(QPointF(100, 100));
    EXPECT_EQ(hit.id, 3);
    EXPECT_NEAR(hit.world.y, 500, 1e-6);
    EXPECT_FALSE(viewer.pickAt(QPointF(1, 1)).isHit());

    QSignalSpy picked(&viewer, &ZN3DViewer::itemPicked);
    QSignalSpy reference(&viewer, &ZN3DViewer::referencePointPicked);
    for (Qt::KeyboardModifiers modifiers : {Qt::KeyboardModifiers(Qt::NoModifier), Qt::KeyboardModifiers(Qt::ControlModifier)}) {
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(100, 100), Qt::LeftButton, Qt::LeftButton, modifiers);
        QMouseEvent release(QEvent::MouseButtonRelease, QPointF(101, 100), Qt::LeftButton, Qt::NoButton, modifiers);
        QCoreApplication::sendEvent(&viewer, &press);
        QCoreApplication::sendEvent(&viewer, &release);
    }
    ASSERT_EQ(picked.count(), 1);
    EXPECT_EQ(picked[0][0].toInt(), 3);
    ASSERT_EQ(reference.count(), 1);
    EXPECT_NEAR(reference[0][0].value<core::vec3>().y, 500, 1e-6);
}
