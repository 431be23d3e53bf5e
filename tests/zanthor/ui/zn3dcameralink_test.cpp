// Views whose cameras are linked move together, each keeping its own viewport.
#include <gtest/gtest.h>

#include <memory>

#include <zn3dcameralink.h>
#include <zn3dviewer.h>

namespace {
geom::Box3 unitBox(double size)
{
    geom::Box3 box;
    box.include({0, 0, 0});
    box.include({size, size, size});
    return box;
}
} // namespace

TEST(CameraLink, EveryMoveOfOneViewMovesTheOthersAlike)
{
    ZN3DViewer left, right, third;
    left.engine().setViewport(300, 200);
    right.engine().setViewport(150, 100);
    ZN3DCameraLink link;
    link.add(&left);
    link.add(&right);
    link.add(&third);
    link.add(&left);  // once only
    EXPECT_EQ(link.count(), 3);

    using Move = std::function<void(ZN3DViewerEngine&)>;
    const std::pair<const char*, Move> moves[] = {
        {"orbit", [](ZN3DViewerEngine& e) { e.orbit(25, -10); }},
        {"pan", [](ZN3DViewerEngine& e) { e.pan({10, 10}, {40, 30}); }},
        {"zoom", [](ZN3DViewerEngine& e) { e.zoomAt({20, 20}, 0.5); }},
        {"fit", [](ZN3DViewerEngine& e) { e.fit(unitBox(1000)); }},
        {"map view", [](ZN3DViewerEngine& e) { e.setStandardView(ZN3DCamera::StandardView::Map); }},
        {"exaggeration", [](ZN3DViewerEngine& e) { e.setVerticalExaggeration(3.0); }},
        {"projection", [](ZN3DViewerEngine& e) { e.setProjection(ZN3DCamera::Projection::Orthographic); }},
        {"key", [](ZN3DViewerEngine& e) { e.keyPressed(Qt::Key_Left, Qt::NoModifier); }},
    };
    ZN3DViewer* sources[] = {&left, &right, &third};
    int k = 0;
    for (const auto& move : moves) {
        ZN3DViewer* source = sources[k++ % 3];
        move.second(source->engine());
        for (ZN3DViewer* view : sources)
            EXPECT_TRUE(ZN3DCameraLink::sameView(view->engine().camera(), source->engine().camera())) << move.first;
    }
    EXPECT_EQ(left.engine().camera().width(), 300);
    EXPECT_EQ(right.engine().camera().width(), 150);
}

TEST(CameraLink, AViewTakesTheLinkedCameraWhenAddedAndMovesAloneOnceRemovedOrDeleted)
{
    ZN3DViewer left;
    auto right = std::make_unique<ZN3DViewer>();
    left.engine().orbit(40, 5);
    ZN3DCameraLink link;
    link.add(&left);
    link.add(right.get());
    EXPECT_TRUE(ZN3DCameraLink::sameView(left.engine().camera(), right->engine().camera()));

    right.reset();
    EXPECT_EQ(link.count(), 1);
    left.engine().orbit(5, 0);  // nothing left to follow: no crash

    ZN3DViewer other;
    link.add(&other);
    link.remove(&other);
    other.engine().orbit(90, 0);
    EXPECT_FALSE(ZN3DCameraLink::sameView(left.engine().camera(), other.engine().camera()));
}
