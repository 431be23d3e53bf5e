#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include <zn3dcamera.h>

#include "testgeometry.h"

namespace {

using Projection = ZN3DCamera::Projection;
using View = ZN3DCamera::StandardView;

// A survey-sized box at map coordinates of millions of metres, y down to 3000 ms.
geom::Box3 surveyBox()
{
    geom::Box3 box;
    box.include({612000.0, 0.0, 6540000.0});
    box.include({618000.0, 3000.0, 6548000.0});
    return box;
}

struct CameraCase {
    const char* name;
    Projection projection;
    double azimuth, elevation, exaggeration;
    int width, height;
};

const CameraCase kCases[] = {
    {"perspective oblique", Projection::Perspective, 30.0, 30.0, 1.0, 640, 480},
    {"perspective map", Projection::Perspective, 0.0, 90.0, 1.0, 400, 600},
    {"perspective from below, exaggerated", Projection::Perspective, 200.0, -40.0, 4.0, 800, 300},
    {"orthographic side", Projection::Orthographic, 90.0, 0.0, 1.0, 640, 480},
    {"orthographic map, exaggerated", Projection::Orthographic, 0.0, 90.0, 3.0, 300, 700},
};

ZN3DCamera cameraFor(const CameraCase& c, const geom::Box3& box)
{
    ZN3DCamera camera;
    camera.setViewport(c.width, c.height);
    camera.setProjection(c.projection);
    camera.setOrientation(c.azimuth, c.elevation);
    EXPECT_TRUE(camera.setVerticalExaggeration(c.exaggeration));
    camera.setSceneBox(box);
    EXPECT_TRUE(camera.fit(box));
    return camera;
}

std::vector<core::vec3> corners(const geom::Box3& box)
{
    std::vector<core::vec3> out;
    for (int i = 0; i < 8; ++i)
        out.push_back({(i & 1) ? box.high.x : box.low.x, (i & 2) ? box.high.y : box.low.y,
                       (i & 4) ? box.high.z : box.low.z});
    return out;
}

core::vec3 randomPointIn(const geom::Box3& box, std::mt19937& rng)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const core::vec3 s = box.size();
    return box.low + core::vec3(s.x * unit(rng), s.y * unit(rng), s.z * unit(rng));
}

double screenDistance(const core::vec2& a, const core::vec2& b) { return (a - b).length(); }

} // namespace

TEST(Camera, ProjectThenUnprojectGivesThePointBackInEveryProjection)
{
    std::mt19937 rng(7);
    const geom::Box3 box = surveyBox();
    for (const CameraCase& c : kCases) {
        SCOPED_TRACE(c.name);
        const ZN3DCamera camera = cameraFor(c, box);
        for (int i = 0; i < 50; ++i) {
            const core::vec3 p = randomPointIn(box, rng);
            core::vec3 window, back;
            ASSERT_TRUE(camera.project(p, window));
            ASSERT_TRUE(camera.unproject(window, back));
            expectNear(back, p, 1e-3);  // a millimetre at millions of metres
            const core::vec2 screen = camera.worldToScreen(p);
            expectNear(camera.screenToWorld(screen, camera.depthOf(p)), p, 1e-3);
            EXPECT_NEAR(screen.y, camera.height() - window.y, 1e-9);  // screen y runs down
        }
    }
}

TEST(Camera, FitAllPutsEveryCornerOfTheBoxOnTheScreenAndFillsIt)
{
    const geom::Box3 box = surveyBox();
    for (const CameraCase& c : kCases) {
        SCOPED_TRACE(c.name);
        const ZN3DCamera camera = cameraFor(c, box);
        double left = 1e30, right = -1e30, top = 1e30, bottom = -1e30;
        for (const core::vec3& corner : corners(box)) {
            const core::vec2 s = camera.worldToScreen(corner);
            const double depth = camera.depthOf(corner);
            EXPECT_GE(s.x, 0.0);
            EXPECT_LE(s.x, camera.width());
            EXPECT_GE(s.y, 0.0);
            EXPECT_LE(s.y, camera.height());
            EXPECT_GT(depth, 0.0);  // between the near and far planes
            EXPECT_LT(depth, 1.0);
            left = std::min(left, s.x), right = std::max(right, s.x);
            top = std::min(top, s.y), bottom = std::max(bottom, s.y);
        }
        // The box is not lost in a corner: it spans at least half of one dimension.
        EXPECT_TRUE(right - left > camera.width() / 2.0 || bottom - top > camera.height() / 2.0);
        expectNear(camera.centre(), (box.low + box.high) / 2.0, 1e-6);
    }
}

TEST(Camera, FitRefusesAnEmptyBox)
{
    ZN3DCamera camera;
    camera.setCentre({1.0, 2.0, 3.0});
    EXPECT_FALSE(camera.fit(geom::Box3()));
    expectNear(camera.centre(), {1.0, 2.0, 3.0}, 0.0);
}

TEST(Camera, ZoomAroundTheCursorKeepsTheWorldPointUnderIt)
{
    const geom::Box3 box = surveyBox();
    for (const CameraCase& c : kCases) {
        SCOPED_TRACE(c.name);
        ZN3DCamera camera = cameraFor(c, box);
        const core::vec2 cursor(c.width * 0.8, c.height * 0.25);
        // A point under the cursor, on the scene (as the depth buffer gives it).
        const core::vec3 anchor = camera.screenToWorld(cursor, camera.depthOf(camera.centre()) * 0.98);
        for (double factor : {0.5, 0.8, 1.25, 3.0}) {
            const double before = camera.distance();
            camera.zoomAround(anchor, factor);
            EXPECT_NEAR(camera.distance(), before * factor, before * 1e-9);
            const core::vec2 now = camera.worldToScreen(anchor);
            EXPECT_NEAR(now.x, cursor.x, 1e-3);
            EXPECT_NEAR(now.y, cursor.y, 1e-3);
        }
        // Without an anchor: the point at the centre's depth under the cursor stays.
        const core::vec3 onCentrePlane = camera.screenToWorld(cursor, camera.depthOf(camera.centre()));
        camera.zoomAt(cursor, 0.7);
        EXPECT_LT(screenDistance(camera.worldToScreen(onCentrePlane), cursor), 1e-3);
    }
}

TEST(Camera, ZoomStopsAtTheDistanceLimitsAndStillKeepsTheAnchor)
{
    const CameraCase& c = kCases[0];
    ZN3DCamera camera = cameraFor(c, surveyBox());
    double smallest = 0.0, largest = 0.0;
    camera.distanceLimits(smallest, largest);
    const core::vec2 cursor(100.0, 100.0);
    const core::vec3 anchor = camera.screenToWorld(cursor, camera.depthOf(camera.centre()));
    camera.zoomAround(anchor, 1e-12);
    EXPECT_DOUBLE_EQ(camera.distance(), smallest);
    EXPECT_LT(screenDistance(camera.worldToScreen(anchor), cursor), 1e-2);
    camera.zoomAround(anchor, 1e30);
    EXPECT_DOUBLE_EQ(camera.distance(), largest);
    for (double bad : {0.0, -2.0, double(NAN), double(INFINITY)}) {
        camera.zoomAround(anchor, bad);
        EXPECT_DOUBLE_EQ(camera.distance(), largest);
    }
}

TEST(Camera, OrbitKeepsTheCentreInTheMiddleOfTheViewport)
{
    for (const CameraCase& c : kCases) {
        SCOPED_TRACE(c.name);
        ZN3DCamera camera = cameraFor(c, surveyBox());
        const core::vec3 centre = camera.centre();
        const double distance = camera.distance();
        for (auto [da, de] : {std::pair{35.0, 10.0}, {-170.0, -50.0}, {400.0, 200.0}, {0.0, -300.0}}) {
            camera.orbit(da, de);
            expectNear(camera.centre(), centre, 0.0);
            EXPECT_DOUBLE_EQ(camera.distance(), distance);
            const core::vec2 s = camera.worldToScreen(centre);
            EXPECT_NEAR(s.x, c.width / 2.0, 1e-6);
            EXPECT_NEAR(s.y, c.height / 2.0, 1e-6);
            EXPECT_GE(camera.azimuth(), 0.0);
            EXPECT_LT(camera.azimuth(), 360.0);
            EXPECT_GE(camera.elevation(), -90.0);
            EXPECT_LE(camera.elevation(), 90.0);
        }
    }
}

TEST(Camera, OrientationIsNormalisedAndBadAnglesAreIgnored)
{
    ZN3DCamera camera;
    camera.setOrientation(-30.0, 120.0);
    EXPECT_DOUBLE_EQ(camera.azimuth(), 330.0);
    EXPECT_DOUBLE_EQ(camera.elevation(), 90.0);
    camera.setOrientation(720.0, -95.0);
    EXPECT_DOUBLE_EQ(camera.azimuth(), 0.0);
    EXPECT_DOUBLE_EQ(camera.elevation(), -90.0);
    camera.setOrientation(NAN, 10.0);
    EXPECT_DOUBLE_EQ(camera.azimuth(), 0.0);
    EXPECT_DOUBLE_EQ(camera.elevation(), -90.0);
}

// Where a step east, north and down from the centre lands on the screen, per view:
// the expected screen direction of each (x right, y down), 0 when it goes along the
// line of sight.
TEST(Camera, StandardViewsShowTheAxesTheWayMapsAndSectionsDo)
{
    struct ViewCase {
        View view;
        const char* name;
        core::vec2 east, north, down;
    };
    const ViewCase cases[] = {
        {View::Map, "map", {1, 0}, {0, -1}, {0, 0}},
        {View::FromSouth, "from south", {1, 0}, {0, 0}, {0, 1}},
        {View::FromNorth, "from north", {-1, 0}, {0, 0}, {0, 1}},
        {View::FromEast, "from east", {0, 0}, {1, 0}, {0, 1}},
        {View::FromWest, "from west", {0, 0}, {-1, 0}, {0, 1}},
    };
    for (Projection projection : {Projection::Perspective, Projection::Orthographic})
        for (const ViewCase& v : cases) {
            SCOPED_TRACE(v.name);
            ZN3DCamera camera;
            camera.setViewport(500, 400);
            camera.setProjection(projection);
            camera.setStandardView(v.view);
            camera.setSceneBox(surveyBox());
            camera.fit(surveyBox());
            const core::vec3 c = camera.centre();
            const double step = 100.0;
            const core::vec2 origin = camera.worldToScreen(c);
            const std::pair<core::vec3, core::vec2> steps[] = {
                {{step, 0, 0}, v.east}, {{0, 0, step}, v.north}, {{0, step, 0}, v.down}};
            for (const auto& [offset, expected] : steps) {
                const core::vec2 moved = camera.worldToScreen(c + offset) - origin;
                const double length = moved.length();
                if (expected.length() == 0.0) {
                    EXPECT_LT(length, 1e-6);
                } else {
                    ASSERT_GT(length, 1.0);
                    EXPECT_NEAR(moved.x / length, expected.x, 1e-9);
                    EXPECT_NEAR(moved.y / length, expected.y, 1e-9);
                }
            }
        }
}

TEST(Camera, VerticalExaggerationScalesTheVerticalOnly)
{
    ZN3DCamera camera;
    camera.setViewport(600, 600);
    camera.setProjection(Projection::Orthographic);
    camera.setStandardView(View::FromSouth);
    camera.setCentre({1000.0, 500.0, 2000.0});
    camera.setDistance(3000.0);
    const core::vec3 c = camera.centre();
    auto extent = [&](const core::vec3& offset) {
        return camera.worldToScreen(c + offset) - camera.worldToScreen(c);
    };
    const core::vec2 down1 = extent({0, 100, 0}), east1 = extent({100, 0, 0});
    ASSERT_TRUE(camera.setVerticalExaggeration(2.5));
    const core::vec2 down2 = extent({0, 100, 0}), east2 = extent({100, 0, 0});
    EXPECT_NEAR(down2.y, 2.5 * down1.y, 1e-9);
    EXPECT_NEAR(east2.x, east1.x, 1e-9);
    expectNear(camera.toDisplay({1, 2, 3}), {1, 5, 3}, 0.0);
    expectNear(camera.toWorld(camera.toDisplay({1, 2, 3})), {1, 2, 3}, 1e-15);
    // Round trips still give world points back.
    core::vec3 window, back;
    ASSERT_TRUE(camera.project({900, 650, 2010}, window));
    ASSERT_TRUE(camera.unproject(window, back));
    expectNear(back, {900, 650, 2010}, 1e-6);
    for (double bad : {0.0, -1.0, double(NAN), double(INFINITY)}) EXPECT_FALSE(camera.setVerticalExaggeration(bad));
    EXPECT_DOUBLE_EQ(camera.verticalExaggeration(), 2.5);
}

TEST(Camera, PanBringsThePointUnderTheCursorAlong)
{
    for (const CameraCase& c : kCases) {
        SCOPED_TRACE(c.name);
        ZN3DCamera camera = cameraFor(c, surveyBox());
        const core::vec2 from(c.width * 0.3, c.height * 0.6), to(c.width * 0.55, c.height * 0.4);
        const core::vec3 grabbed = camera.screenToWorld(from, camera.depthOf(camera.centre()));
        camera.pan(from, to);
        EXPECT_LT(screenDistance(camera.worldToScreen(grabbed), to), 1e-3);
    }
}

TEST(Camera, PointsOffTheEyesPlaneHaveNoScreenPosition)
{
    ZN3DCamera camera;
    camera.setViewport(100, 100);
    camera.setCentre({0, 0, 0});
    camera.setDistance(10.0);
    const core::vec3 eye = camera.toWorld(camera.eyeDisplay());
    core::vec3 window(1, 2, 3);
    EXPECT_FALSE(camera.project(eye, window));
    expectNear(window, {1, 2, 3}, 0.0);  // untouched
    EXPECT_EQ(camera.worldToScreen(eye).x, -9999.0);
    EXPECT_EQ(camera.depthOf(eye), -9999.0);
}

TEST(Camera, DisplayUnitsPerPixelMatchTheProjection)
{
    for (Projection projection : {Projection::Perspective, Projection::Orthographic}) {
        ZN3DCamera camera;
        camera.setViewport(400, 300);
        camera.setProjection(projection);
        camera.setCentre({10, 20, 30});
        camera.setDistance(500.0);
        const double perPixel = camera.displayUnitsPerPixel(camera.centre());
        // A step of 50 pixels' worth across the view at the centre covers 50 pixels.
        core::vec3 right = camera.screenToWorld({250.0, 150.0}, camera.depthOf(camera.centre()));
        const double along = (right - camera.centre()).length();
        EXPECT_NEAR(along / perPixel, 50.0, 1e-6);
    }
}
