#include <gtest/gtest.h>

#include <algorithm>

#include <zn3dviewerengine.h>

#include "testgeometry.h"
#include "testmeshes.h"

namespace {

using View = ZN3DCamera::StandardView;
using Mode = ZN3DViewerEngine::DragMode;

// An engine of 400 x 300 pixels holding a red horizontal square of 1000 m at y = 500
// (id 1) seen from above.
struct EngineWithSquare : ::testing::Test {
    ZN3DViewerEngine engine;
    std::unique_ptr<ZN3DObjectDraw> square =
        planarMesh({0, 500, 0}, {1000, 0, 0}, {0, 0, 1000}, 4, 4, Qt::red);
    int changes = 0;

    void SetUp() override
    {
        engine.setViewport(400, 300);
        engine.scene().setItem(1, ZN3DSurfaceItem{square.get()});
        engine.setStandardView(View::Map);
        engine.fitAll();
        engine.setChangedCallback([this] { ++changes; });
    }
    core::vec2 screenOf(const core::vec3& world) const { return engine.camera().worldToScreen(world); }
};

} // namespace

TEST_F(EngineWithSquare, ALeftDragOrbitsOnceTheCursorLeavesTheClickTolerance)
{
    const double azimuth = engine.camera().azimuth();
    EXPECT_EQ(engine.pressAt({100, 100}, Qt::LeftButton, Qt::NoModifier), Mode::Orbit);
    engine.moveTo({102, 100});  // still a click
    EXPECT_DOUBLE_EQ(engine.camera().azimuth(), azimuth);
    EXPECT_EQ(engine.dragMode(), Mode::None);
    engine.moveTo({150, 100});
    EXPECT_EQ(engine.dragMode(), Mode::Orbit);
    EXPECT_NEAR(engine.camera().azimuth(), azimuth + 50 * ZN3DViewerEngine::kOrbitDegreesPerPixel, 1e-9);
    EXPECT_FALSE(engine.releaseAt({150, 100}));
    EXPECT_EQ(engine.dragMode(), Mode::None);
}

TEST_F(EngineWithSquare, PressesReleasedInPlaceAreClicksOfTheLeftButtonOnly)
{
    const struct {
        Qt::MouseButton button;
        Qt::KeyboardModifiers modifiers;
        Mode drag;
        bool click;
    } cases[] = {
        {Qt::LeftButton, Qt::NoModifier, Mode::Orbit, true},
        {Qt::LeftButton, Qt::ControlModifier, Mode::None, true},
        {Qt::LeftButton, Qt::ShiftModifier, Mode::Pan, true},
        {Qt::MiddleButton, Qt::NoModifier, Mode::Pan, false},
        {Qt::RightButton, Qt::NoModifier, Mode::None, false},
    };
    for (const auto& c : cases) {
        const core::vec3 centre = engine.camera().centre();
        EXPECT_EQ(engine.pressAt({200, 150}, c.button, c.modifiers), c.drag);
        engine.moveTo({202, 151});
        EXPECT_EQ(engine.releaseAt({202, 151}), c.click);
        EXPECT_EQ(engine.pressModifiers(), c.modifiers);
        expectNear(engine.camera().centre(), centre, 0.0);
    }
    // Ctrl + drag moves nothing: the press is kept for a click.
    const double azimuth = engine.camera().azimuth();
    engine.pressAt({200, 150}, Qt::LeftButton, Qt::ControlModifier);
    engine.moveTo({260, 190});
    EXPECT_FALSE(engine.releaseAt({260, 190}));
    EXPECT_DOUBLE_EQ(engine.camera().azimuth(), azimuth);
}

TEST_F(EngineWithSquare, ShiftAndMiddleDragsPanThePointUnderTheCursorAlong)
{
    for (auto [button, modifiers] : {std::pair{Qt::LeftButton, Qt::KeyboardModifiers(Qt::ShiftModifier)},
                                     {Qt::MiddleButton, Qt::KeyboardModifiers(Qt::NoModifier)}}) {
        const core::vec3 grabbed = engine.camera().screenToWorld({150, 120}, engine.camera().depthOf({500, 500, 500}));
        engine.pressAt({150, 120}, button, modifiers);
        engine.moveTo({170, 130});
        engine.moveTo({210, 160});
        engine.releaseAt({210, 160});
        const core::vec2 now = screenOf(grabbed);
        EXPECT_NEAR(now.x, 210, 1e-6);
        EXPECT_NEAR(now.y, 160, 1e-6);
    }
}

TEST_F(EngineWithSquare, TheWheelZoomsAroundThePointUnderTheCursor)
{
    const core::vec3 anchor(800, 500, 300);
    const core::vec2 cursor = screenOf(anchor);
    const double distance = engine.camera().distance();
    engine.wheelAt(cursor, 240, &anchor);  // two notches forward
    EXPECT_NEAR(engine.camera().distance(), distance * 0.64, distance * 1e-9);
    EXPECT_NEAR((screenOf(anchor) - cursor).length(), 0.0, 1e-6);
    engine.wheelAt(cursor, -120, &anchor);
    EXPECT_NEAR(engine.camera().distance(), distance * 0.8, distance * 1e-9);
    const int before = changes;
    engine.wheelAt(cursor, 0, &anchor);
    EXPECT_EQ(changes, before);
}

TEST_F(EngineWithSquare, KeysFitAndTurnToTheStandardViews)
{
    const struct {
        int key;
        double azimuth, elevation;
    } views[] = {{Qt::Key_N, 180, 0}, {Qt::Key_S, 0, 0}, {Qt::Key_E, 270, 0}, {Qt::Key_W, 90, 0}, {Qt::Key_M, 0, 90}};
    for (const auto& v : views) {
        EXPECT_TRUE(engine.keyPressed(v.key, Qt::NoModifier));
        EXPECT_DOUBLE_EQ(engine.camera().azimuth(), v.azimuth);
        EXPECT_DOUBLE_EQ(engine.camera().elevation(), v.elevation);
    }
    engine.zoomAt({10, 10}, 0.01);  // the square leaves the screen
    EXPECT_GT(screenOf({1000, 500, 1000}).x, 400);
    EXPECT_TRUE(engine.keyPressed(Qt::Key_F, Qt::NoModifier));
    for (const core::vec3& corner : {core::vec3{0, 500, 0}, {1000, 500, 1000}}) {
        const core::vec2 s = screenOf(corner);
        EXPECT_TRUE(s.x >= 0 && s.x <= 400 && s.y >= 0 && s.y <= 300);
    }
    EXPECT_TRUE(engine.keyPressed(Qt::Key_PageUp, Qt::NoModifier));
    EXPECT_DOUBLE_EQ(engine.camera().verticalExaggeration(), 2.0);
    EXPECT_TRUE(engine.keyPressed(Qt::Key_PageDown, Qt::NoModifier));
    EXPECT_TRUE(engine.keyPressed(Qt::Key_PageDown, Qt::NoModifier));
    EXPECT_DOUBLE_EQ(engine.camera().verticalExaggeration(), 0.5);
    EXPECT_TRUE(engine.keyPressed(Qt::Key_P, Qt::NoModifier));
    EXPECT_EQ(engine.camera().projection(), ZN3DCamera::Projection::Orthographic);
    const double azimuth = engine.camera().azimuth();
    EXPECT_TRUE(engine.keyPressed(Qt::Key_Right, Qt::NoModifier));
    EXPECT_DOUBLE_EQ(engine.camera().azimuth(), azimuth + ZN3DViewerEngine::kKeyOrbitStep);
    const int before = changes;
    EXPECT_FALSE(engine.keyPressed(Qt::Key_Q, Qt::NoModifier));
    EXPECT_EQ(changes, before);
}

TEST(Engine, TheFirstSceneIsFittedAndAFittedViewStaysFittedUntilMoved)
{
    ZN3DViewerEngine engine;
    auto square = planarMesh({0, 0, 0}, {100, 0, 0}, {0, 0, 100}, 1, 1, Qt::red);
    engine.scene().setItem(1, ZN3DSurfaceItem{square.get()});
    expectNear(engine.camera().centre(), {50, 0, 50}, 1e-9);
    // A new viewport (the widget shown) fits again for its aspect.
    engine.setViewport(800, 200);
    const double wide = engine.camera().distance();
    engine.setViewport(200, 800);
    EXPECT_GT(engine.camera().distance(), wide);
    // A larger scene too.
    auto far = planarMesh({1000, 0, 0}, {100, 0, 0}, {0, 0, 100}, 1, 1, Qt::blue);
    engine.scene().setItem(2, ZN3DSurfaceItem{far.get()});
    expectNear(engine.camera().centre(), {550, 0, 50}, 1e-9);
    // Once the user moves, the scene's changes no longer move the camera.
    engine.orbit(10, 0);
    engine.scene().setVisible(2, false);
    expectNear(engine.camera().centre(), {550, 0, 50}, 1e-9);
}

TEST(Engine, OpaqueItemsAreDrawnFirstThenTransparentOnesFromBackToFront)
{
    ZN3DViewerEngine engine;
    engine.setViewport(300, 300);
    auto high = planarMesh({0, 100, 0}, {100, 0, 0}, {0, 0, 100}, 1, 1, Qt::red, 0.5f);
    auto low = planarMesh({0, 900, 0}, {100, 0, 0}, {0, 0, 100}, 1, 1, Qt::green, 0.5f);
    auto opaque = planarMesh({0, 500, 0}, {100, 0, 0}, {0, 0, 100}, 1, 1, Qt::blue);
    auto hidden = planarMesh({0, 500, 0}, {100, 0, 0}, {0, 0, 100}, 1, 1, Qt::blue);
    hidden->setHidden(true);
    engine.scene().setItem(1, ZN3DSurfaceItem{high.get()});
    engine.scene().setItem(2, ZN3DSurfaceItem{low.get()});
    engine.scene().setItem(3, ZN3DSurfaceItem{opaque.get()});
    engine.scene().setItem(4, ZN3DSurfaceItem{hidden.get()});
    engine.scene().setItem(5, ZN3DPolylineItem{});
    engine.scene().setVisible(5, false);
    auto ids = [&] {
        std::vector<int> out;
        for (const ZN3DScene::Item* item : engine.drawOrder()) out.push_back(item->id);
        return out;
    };
    engine.setStandardView(View::Map);  // from above: the low surface is the farthest
    EXPECT_EQ(ids(), (std::vector<int>{3, 2, 1}));
    engine.setCamera([&] {
        ZN3DCamera below = engine.camera();
        below.setOrientation(0, -90);
        return below;
    }());
    EXPECT_EQ(ids(), (std::vector<int>{3, 1, 2}));
}

TEST(Engine, ModelViewsPlaceLocalVerticesWhereTheViewPutsTheWorld)
{
    ZN3DViewerEngine engine;
    engine.setViewport(300, 200);
    auto mesh = planarMesh({612000, 1200, 6540000}, {500, 0, 0}, {0, 300, 400}, 2, 2, Qt::red);
    engine.scene().setItem(1, ZN3DSurfaceItem{mesh.get()});
    engine.setVerticalExaggeration(3.0);
    const ZN3DScene::Item& item = *engine.scene().item(1);
    const core::mat4 local = engine.modelViewOf(item), world = engine.camera().viewMatrix();
    for (const core::vec3& p : mesh->getPoints())
        expectNear(local.transformPoint(p - item.origin), world.transformPoint(p), 1e-6);
}

TEST(Engine, ABoxIsLabelledOnItsOutermostEdgesAwayFromItsCentre)
{
    ZN3DViewerEngine engine;
    engine.setViewport(400, 400);
    ZN3DBoxItem box;
    geom::Box3 extent;
    extent.include({0, 0, 0});
    extent.include({1270, 500, 1270});
    box.setBox(extent);
    box.axes[0] = {"Inline", 1, 128};
    box.axes[2] = {"Crossline", 10, 137};  // y has no name: no label
    engine.scene().setItem(1, box);
    const std::vector<ZN3DViewerEngine::Label> labels = engine.labels();
    ASSERT_EQ(labels.size(), 6u);
    std::vector<QString> texts;
    for (const auto& l : labels) texts.push_back(l.text);
    for (const char* text : {"Inline", "1", "128", "Crossline", "10", "137"})
        EXPECT_NE(std::find(texts.begin(), texts.end(), QString(text)), texts.end()) << text;
    const core::vec2 centre = engine.camera().worldToScreen({635, 250, 635});
    for (const auto& l : labels) {
        EXPECT_GT((l.screen - centre).length(), 40.0) << l.text.toStdString();
        EXPECT_TRUE(l.screen.x > -50 && l.screen.x < 450 && l.screen.y > -50 && l.screen.y < 450);
    }
    engine.scene().setVisible(1, false);
    EXPECT_TRUE(engine.labels().empty());
}

TEST_F(EngineWithSquare, HitTestsFindTheSurfaceAndThePointOnIt)
{
    const core::vec2 inside = screenOf({250, 500, 700});
    ZN3DViewerEngine::Hit hit = engine.hitTest(inside);
    ASSERT_TRUE(hit.isHit());
    EXPECT_EQ(hit.id, 1);
    expectNear(hit.world, {250, 500, 700}, 1e-6);
    EXPECT_NEAR(hit.depth, engine.camera().depthOf(hit.world), 1e-12);
    EXPECT_FALSE(engine.hitTest(screenOf({-200, 500, 500})).isHit());

    // A nearer surface hides it; a non-pickable one only from the full test.
    auto above = planarMesh({0, 100, 0}, {500, 0, 0}, {0, 0, 1000}, 1, 1, Qt::blue);
    engine.scene().setItem(2, ZN3DSurfaceItem{above.get()}, false);
    EXPECT_EQ(engine.hitTest(inside).id, 1);
    hit = engine.hitTest(inside, false);
    EXPECT_EQ(hit.id, 2);
    EXPECT_NEAR(hit.world.y, 100, 1e-6);
    above->setHidden(true);
    EXPECT_EQ(engine.hitTest(inside, false).id, 1);
}

TEST_F(EngineWithSquare, HitTestsFindLinesNearTheCursorAndSkipTransparentTexels)
{
    ZN3DPolylineItem stick;
    stick.points = {{100, 400, 100}, {900, 400, 100}};
    stick.width = 2;
    engine.scene().setItem(5, stick);
    const core::vec2 onLine = screenOf({500, 400, 100});
    for (double offset : {0.0, 3.0, -4.5}) {
        const ZN3DViewerEngine::Hit hit = engine.hitTest(onLine + core::vec2(0, offset));
        EXPECT_EQ(hit.id, 5) << offset;
        EXPECT_NEAR(hit.world.y, 400, 1e-6);
    }
    EXPECT_EQ(engine.hitTest(onLine + core::vec2(0, 12)).id, 1);  // off the line: the square

    // A section over the left half, whose right half is transparent.
    ZN3DSectionItem section;
    section.image = QImage(2, 1, QImage::Format_ARGB32);
    section.image.setPixel(0, 0, qRgba(0, 0, 255, 255));
    section.image.setPixel(1, 0, qRgba(0, 0, 0, 0));
    section.corners = {core::vec3{0, 300, 0}, {1000, 300, 0}, {1000, 300, 1000}, {0, 300, 1000}};
    engine.scene().setItem(6, section);
    EXPECT_EQ(engine.hitTest(screenOf({250, 300, 600})).id, 6);
    EXPECT_EQ(engine.hitTest(screenOf({750, 300, 600})).id, 1);
}

TEST_F(EngineWithSquare, AReferenceCrossKeepsItsSizeOnTheScreen)
{
    const core::vec3 at(500, 450, 500);  // above the square
    ZN3DReferencePointItem cross{at};
    cross.armPixels = 20;
    engine.scene().setItem(9, cross, true);
    for (double factor : {1.0, 0.25}) {
        engine.zoomAt(screenOf(at), factor);
        const double arm = engine.armLengthOf(cross);
        const core::vec2 tip = screenOf(at + core::vec3(arm, 0, 0)) - screenOf(at);
        EXPECT_NEAR(tip.length(), 20.0, 1e-6);
        EXPECT_EQ(engine.hitTest(screenOf(at) + core::vec2(15, 0)).id, 9);
        EXPECT_EQ(engine.hitTest(screenOf(at) + core::vec2(15, 15)).id, 1);
    }
}
