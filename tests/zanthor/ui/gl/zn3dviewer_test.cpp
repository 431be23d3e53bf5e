// The 3D view drawing on a real OpenGL context (Mesa's software rendering under Xvfb):
// what the pictures show, counted by colour with tolerances, picking through the depth
// and item buffers, and the buffers uploaded once per change.
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include <zn3dviewer.h>

#include "pictures.h"
#include "testgeometry.h"
#include "testmeshes.h"

namespace {

using picturetest::countPixels;
using picturetest::keepPicture;
using picturetest::near;
using picturetest::sameHue;
using View = ZN3DCamera::StandardView;

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kEdge = 3;  // pixels left out on each side of an expected boundary

class ViewerPictures : public ::testing::Test {
protected:
    std::unique_ptr<ZN3DViewer> viewer;

    void SetUp() override
    {
        viewer = std::make_unique<ZN3DViewer>();
        viewer->resize(kWidth, kHeight);
        viewer->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(viewer.get()));
        viewer->renderToImage();  // the context exists from the first frame on
        ASSERT_TRUE(viewer->isOpenGLReady()) << viewer->openGLError().toStdString();
        ASSERT_EQ(viewer->engine().camera().width(), kWidth);
    }

    ZN3DViewerEngine& engine() { return viewer->engine(); }
    ZN3DScene& scene() { return viewer->scene(); }

    // Looks at the square x, z in 0..1000 from above (y 0..1000 in the box), in
    // orthographic projection: rectangles at any depth project to the same place.
    void mapViewOfTheSurvey()
    {
        engine().setStandardView(View::Map);
        engine().setProjection(ZN3DCamera::Projection::Orthographic);
        geom::Box3 box;
        box.include({0, 0, 0});
        box.include({1000, 1000, 1000});
        engine().fit(box);
    }

    QImage picture(const QString& name)
    {
        const QImage image = viewer->renderToImage().convertToFormat(QImage::Format_RGB32);
        keepPicture(image, QStringLiteral("viewer3d_") + name);
        return image;
    }

    // The screen rectangle of world points.
    QRect screenRect(std::initializer_list<core::vec3> points) const
    {
        double left = 1e30, top = 1e30, right = -1e30, bottom = -1e30;
        for (const core::vec3& p : points) {
            const core::vec2 s = viewer->engine().camera().worldToScreen(p);
            left = std::min(left, s.x), right = std::max(right, s.x);
            top = std::min(top, s.y), bottom = std::max(bottom, s.y);
        }
        return QRect(QPoint(int(std::ceil(left)), int(std::ceil(top))),
                     QPoint(int(std::floor(right)) - 1, int(std::floor(bottom)) - 1));
    }
    QPointF screenOf(const core::vec3& world) const
    {
        const core::vec2 s = viewer->engine().camera().worldToScreen(world);
        return {s.x, s.y};
    }
    int area(const QRect& r) const { return r.width() * r.height(); }
    int outside(const QImage& image, const QRect& r, const std::function<bool(QColor)>& match) const
    {
        return countPixels(image, image.rect(), match) - countPixels(image, r, match);
    }
};

// Red, green, blue over a dark background with the view's lighting: channel bounds.
auto litRed = [](QColor c) { return c.red() > 150 && c.green() < 40 && c.blue() < 40; };

} // namespace

TEST_F(ViewerPictures, APlanarFaultSeenFromAboveCoversItsRectangleAndNothingElse)
{
    auto fault = planarMesh({200, 500, 300}, {600, 0, 0}, {0, 0, 400}, 30, 20, Qt::red);
    scene().setItem(1, ZN3DSurfaceItem{fault.get()});
    mapViewOfTheSurvey();
    const QImage image = picture("fault_from_above");
    const QRect fault2d = screenRect({{200, 500, 300}, {800, 500, 300}, {800, 500, 700}, {200, 500, 700}});
    ASSERT_GT(area(fault2d), 2000);  // a fair part of the picture
    const QRect inner = fault2d.adjusted(kEdge, kEdge, -kEdge, -kEdge);
    const QRect outer = fault2d.adjusted(-kEdge, -kEdge, kEdge, kEdge);
    EXPECT_GE(countPixels(image, inner, litRed), area(inner) * 99 / 100);
    EXPECT_EQ(outside(image, outer, sameHue(Qt::red)), 0);
    const int background = outside(image, outer, near(engine().background(), 4));
    EXPECT_GE(background, (kWidth * kHeight - area(outer)) * 99 / 100);
    // North up, east right: the fault's north-east corner is at the top right.
    const QPointF northEast = screenOf({790, 500, 690});
    EXPECT_GT(northEast.x(), kWidth / 2);
    EXPECT_LT(northEast.y(), kHeight / 2);
    EXPECT_TRUE(litRed(image.pixelColor(northEast.toPoint())));
}

TEST_F(ViewerPictures, ASemiTransparentSurfaceBlendsOverTheOpaqueOneBehindIt)
{
    // The transparent surface is set first and is nearer the eye: drawing it first would
    // let the opaque one cover it.
    auto glass = planarMesh({400, 300, 200}, {500, 0, 0}, {0, 0, 600}, 5, 5, Qt::red, 0.5f);
    auto floor = planarMesh({100, 700, 200}, {500, 0, 0}, {0, 0, 600}, 5, 5, Qt::blue);
    scene().setItem(1, ZN3DSurfaceItem{glass.get()});
    scene().setItem(2, ZN3DSurfaceItem{floor.get()});
    mapViewOfTheSurvey();
    const QImage image = picture("transparency");
    const QRect both = screenRect({{400, 500, 200}, {600, 500, 800}}).adjusted(kEdge, kEdge, -kEdge, -kEdge);
    const QRect glassOnly = screenRect({{600, 300, 200}, {900, 300, 800}}).adjusted(kEdge, kEdge, -kEdge, -kEdge);
    const QRect floorOnly = screenRect({{100, 700, 200}, {400, 700, 800}}).adjusted(kEdge, kEdge, -kEdge, -kEdge);
    auto blended = [](QColor c) { return c.red() > 70 && c.blue() > 70 && c.green() < 50; };
    auto redOverBackground = [](QColor c) { return c.red() > 100 && c.red() < 190 && c.blue() < 60; };
    auto opaqueBlue = [](QColor c) { return c.blue() > 150 && c.red() < 30; };
    EXPECT_GE(countPixels(image, both, blended), area(both) * 98 / 100);
    EXPECT_GE(countPixels(image, glassOnly, redOverBackground), area(glassOnly) * 98 / 100);
    EXPECT_GE(countPixels(image, floorOnly, opaqueBlue), area(floorOnly) * 98 / 100);
}

// The light follows the camera: the brightness depends on the view, but the side facing
// away from the normal is lit as well as the other, never left to the ambient light.
TEST_F(ViewerPictures, SurfacesAreLitOnBothSides)
{
    auto fault = planarMesh({200, 500, 300}, {600, 0, 0}, {0, 0, 400}, 6, 4, Qt::red);
    scene().setItem(1, ZN3DSurfaceItem{fault.get()});
    const core::vec3 middle(500, 500, 500);
    const int ambientOnly = int(ZN3DRenderer::kAmbient * 255);
    for (int side = 0; side < 2; ++side) {
        for (ZN3DCamera::Projection projection : {ZN3DCamera::Projection::Perspective, ZN3DCamera::Projection::Orthographic}) {
            engine().setOrientation(20, side == 0 ? 60 : -60);  // from above, from below
            engine().setProjection(projection);
            engine().fitAll();
            const QImage image = picture(QStringLiteral("lit_side%1_%2").arg(side).arg(int(projection)));
            const QColor c = image.pixelColor(screenOf(middle).toPoint());
            EXPECT_GT(c.red(), ambientOnly + 60) << side;
            EXPECT_LT(c.green(), 40);
        }
    }
}

TEST_F(ViewerPictures, HiddenObjectsAndInvisibleItemsAreNotDrawn)
{
    auto fault = planarMesh({200, 500, 300}, {600, 0, 0}, {0, 0, 400}, 6, 4, Qt::red);
    scene().setItem(1, ZN3DSurfaceItem{fault.get()});
    mapViewOfTheSurvey();
    const int shown = countPixels(picture("hidden_before"), QRect(0, 0, kWidth, kHeight), sameHue(Qt::red));
    EXPECT_GT(shown, 2000);
    fault->setHidden(true);
    scene().displayChanged(1);
    EXPECT_EQ(countPixels(picture("hidden_object"), QRect(0, 0, kWidth, kHeight), sameHue(Qt::red)), 0);
    fault->setHidden(false);
    scene().setVisible(1, false);
    EXPECT_EQ(countPixels(picture("hidden_item"), QRect(0, 0, kWidth, kHeight), sameHue(Qt::red)), 0);
    scene().setVisible(1, true);
    EXPECT_EQ(countPixels(picture("hidden_after"), QRect(0, 0, kWidth, kHeight), sameHue(Qt::red)), shown);
}

TEST_F(ViewerPictures, SticksAppearAsLinesWithPointsInTheirColour)
{
    ZN3DPolylineItem sticks;
    sticks.points = {{100, 500, 500}, {500, 500, 500}, {900, 500, 500}, {-9999, -9999, -9999}, {100, 500, 800},
                     {900, 500, 800}};
    sticks.colour = Qt::yellow;
    sticks.width = 3;
    sticks.pointSize = 10;
    scene().setItem(1, sticks);
    mapViewOfTheSurvey();
    const QImage image = picture("sticks");
    const auto yellow = near(QColor(Qt::yellow), 40);
    for (double z : {500.0, 800.0}) {
        const QRect band = screenRect({{150, 500, z}, {850, 500, z}}).adjusted(0, -1, 0, 1);
        EXPECT_GE(countPixels(image, band, yellow), band.width() * 9 / 10) << z;
    }
    // The separator joins nothing: between the two sticks, no yellow.
    const QRect between = screenRect({{100, 500, 560}, {900, 500, 740}});
    EXPECT_EQ(countPixels(image, between, yellow), 0);
    // Points are discs wider than the line.
    const QPointF end = screenOf({500, 500, 500});
    EXPECT_GE(countPixels(image, QRect(end.toPoint() - QPoint(4, 4), QSize(9, 9)), yellow), 60);
}

TEST_F(ViewerPictures, PickingAtAFaultGivesItsIdAndAPointOnItsPlane)
{
    // A fault dipping 60 degrees to the east, seen obliquely in perspective.
    const core::vec3 origin(300, 200, 250), alongStrike(0, 0, 500), downDip(300, 520, 0);
    const core::vec3 normal = alongStrike.cross(downDip).normalized();
    auto fault = planarMesh(origin, alongStrike, downDip, 20, 20, Qt::red);
    scene().setItem(7, ZN3DSurfaceItem{fault.get()});
    auto other = planarMesh({0, 900, 0}, {1000, 0, 0}, {0, 0, 1000}, 4, 4, Qt::gray);
    scene().setItem(8, ZN3DSurfaceItem{other.get()});
    const double extent = 600.0;
    for (double exaggeration : {1.0, 3.0}) {
        engine().setOrientation(300, 35);
        engine().setVerticalExaggeration(exaggeration);
        engine().fitAll();
        picture(QStringLiteral("picking_exaggerated_%1").arg(exaggeration));
        for (double a : {0.2, 0.5, 0.8})
            for (double b : {0.25, 0.75}) {
                SCOPED_TRACE(testing::Message() << "exaggeration " << exaggeration << " at " << a << ", " << b);
                const core::vec3 target = origin + alongStrike * a + downDip * b;
                const ZN3DViewerEngine::Hit hit = viewer->pickAt(screenOf(target));
                ASSERT_EQ(hit.id, 7);
                // World coordinates, not exaggerated ones: on the fault's plane, and near
                // the aim, within a few pixels' worth along the slanted plane.
                EXPECT_LT(std::fabs((hit.world - origin).dot(normal)), extent / 100);
                EXPECT_LT((hit.world - target).length(), 4 * engine().camera().displayUnitsPerPixel(target));
                // The engine's hit test on the geometry, at the centre of the pixel read, agrees.
                const QPointF pixel = screenOf(target);
                const ZN3DViewerEngine::Hit onGeometry =
                    engine().hitTest({std::floor(pixel.x()) + 0.5, std::floor(pixel.y()) + 0.5});
                EXPECT_EQ(onGeometry.id, 7);
                EXPECT_LT((onGeometry.world - hit.world).length(), extent / 1000);
            }
    }
    EXPECT_FALSE(viewer->pickAt(QPointF(1, 1)).isHit());
    EXPECT_FALSE(viewer->pickAt(QPointF(-5, 10)).isHit());
    EXPECT_FALSE(viewer->pickAt(QPointF(kWidth + 3, 10)).isHit());
}

TEST_F(ViewerPictures, ClicksPickItemsAndCtrlClicksTheReferencePoint)
{
    auto fault = planarMesh({200, 500, 300}, {600, 0, 0}, {0, 0, 400}, 6, 4, Qt::red);
    scene().setItem(4, ZN3DSurfaceItem{fault.get()});
    // A section above it, not pickable: clicks go through, Ctrl-clicks stop on it.
    ZN3DSectionItem section;
    section.image = QImage(4, 4, QImage::Format_RGB32);
    section.image.fill(Qt::darkCyan);
    section.corners = {core::vec3{0, 300, 400}, {1000, 300, 400}, {1000, 300, 600}, {0, 300, 600}};
    scene().setItem(5, section, false);
    mapViewOfTheSurvey();
    picture("clicks");
    QSignalSpy picked(viewer.get(), &ZN3DViewer::itemPicked);
    QSignalSpy reference(viewer.get(), &ZN3DViewer::referencePointPicked);
    const QPoint underSection = screenOf({500, 500, 500}).toPoint();
    QTest::mouseClick(viewer.get(), Qt::LeftButton, Qt::NoModifier, underSection);
    ASSERT_EQ(picked.count(), 1);
    EXPECT_EQ(picked[0][0].toInt(), 4);
    EXPECT_NEAR(picked[0][1].value<core::vec3>().y, 500, 10);
    QTest::mouseClick(viewer.get(), Qt::LeftButton, Qt::ControlModifier, underSection);
    ASSERT_EQ(reference.count(), 1);
    EXPECT_NEAR(reference[0][0].value<core::vec3>().y, 300, 10);
    EXPECT_EQ(picked.count(), 1);
    QTest::mouseClick(viewer.get(), Qt::LeftButton, Qt::NoModifier, QPoint(2, 2));  // background
    EXPECT_EQ(picked.count(), 1);
    // A drag is no click.
    QTest::mousePress(viewer.get(), Qt::LeftButton, Qt::NoModifier, underSection);
    QMouseEvent move(QEvent::MouseMove, underSection + QPoint(40, 0), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(viewer.get(), &move);
    QTest::mouseRelease(viewer.get(), Qt::LeftButton, Qt::NoModifier, underSection + QPoint(40, 0));
    EXPECT_EQ(picked.count(), 1);
}

TEST_F(ViewerPictures, ADoubleClickCentresTheViewOnThePointUnderTheCursor)
{
    auto fault = planarMesh({200, 500, 300}, {600, 0, 0}, {0, 0, 400}, 6, 4, Qt::red);
    scene().setItem(4, ZN3DSurfaceItem{fault.get()});
    mapViewOfTheSurvey();
    viewer->renderToImage();
    const core::vec3 target(700, 500, 350);
    QTest::mouseDClick(viewer.get(), Qt::LeftButton, Qt::NoModifier, screenOf(target).toPoint());
    expectNear(engine().camera().centre(), target, 2 * engine().camera().displayUnitsPerPixel(target));
}

TEST_F(ViewerPictures, ASectionPlaneShowsItsImageUprightWithItsColours)
{
    // Quadrants: red top left, green top right, blue bottom right, yellow bottom left.
    QImage image(64, 64, QImage::Format_RGB32);
    const QColor quadrant[4] = {Qt::red, Qt::green, Qt::blue, Qt::yellow};
    for (int row = 0; row < 64; ++row)
        for (int column = 0; column < 64; ++column) {
            const int q = row < 32 ? (column < 32 ? 0 : 1) : (column < 32 ? 3 : 2);
            image.setPixelColor(column, row, quadrant[q]);
        }
    ZN3DSectionItem section;
    section.image = image;
    section.corners = {core::vec3{0, 0, 500}, {1000, 0, 500}, {1000, 1000, 500}, {0, 1000, 500}};
    scene().setItem(1, section);
    engine().setStandardView(View::FromSouth);
    engine().fitAll();
    const QImage shot = picture("section");
    const core::vec3 corners[4][2] = {{{0, 0, 500}, {500, 500, 500}},
                                      {{500, 0, 500}, {1000, 500, 500}},
                                      {{500, 500, 500}, {1000, 1000, 500}},
                                      {{0, 500, 500}, {500, 1000, 500}}};
    for (int q = 0; q < 4; ++q) {
        const QRect r = screenRect({corners[q][0], corners[q][1]}).adjusted(kEdge, kEdge, -kEdge, -kEdge);
        ASSERT_GT(area(r), 500);
        EXPECT_GE(countPixels(shot, r, near(quadrant[q], 8)), area(r) * 99 / 100) << q;
    }
}

TEST_F(ViewerPictures, BuffersAreUploadedOncePerChangeOfAnItem)
{
    auto fault = planarMesh({200, 500, 300}, {600, 0, 0}, {0, 0, 400}, 6, 4, Qt::red);
    scene().setItem(1, ZN3DSurfaceItem{fault.get()});
    ZN3DPolylineItem stick;
    stick.points = {{100, 400, 100}, {900, 400, 900}};
    scene().setItem(2, stick);
    ZN3DSectionItem section;
    section.image = QImage(8, 8, QImage::Format_RGB32);
    section.image.fill(Qt::gray);
    section.corners = {core::vec3{0, 0, 950}, {1000, 0, 950}, {1000, 1000, 950}, {0, 1000, 950}};
    scene().setItem(3, section);
    mapViewOfTheSurvey();
    viewer->renderToImage();
    const ZN3DRenderer::Statistics& stats = viewer->renderStatistics();
    EXPECT_EQ(stats.bufferUploads, 6u);  // vertices and indices of three items
    EXPECT_EQ(stats.textureUploads, 1u);
    EXPECT_EQ(stats.itemsLastFrame, 3);
    EXPECT_EQ(stats.trianglesLastFrame, 48);

    // A new frame, a new camera, a new colour: nothing uploaded.
    engine().orbit(20, -10);
    fault->setPen(QPen(Qt::green));
    scene().displayChanged(1);
    const QImage green = picture("uploads_recoloured");
    EXPECT_EQ(stats.uploadsLastFrame, 0);
    EXPECT_GT(countPixels(green, green.rect(), sameHue(Qt::green, 20)), 1000);

    // A changed mesh: its two buffers only. A moved section keeps its texture.
    fault->getPoints()[0].y = 450;
    scene().updateItem(1);
    viewer->renderToImage();
    EXPECT_EQ(stats.uploadsLastFrame, 2);
    section.corners[0].z = 900;
    scene().setItem(3, section);
    viewer->renderToImage();
    EXPECT_EQ(stats.uploadsLastFrame, 2);
    EXPECT_EQ(stats.textureUploads, 1u);

    // Removed and hidden items give their buffers back.
    EXPECT_EQ(stats.itemsOnGpu, 3);
    scene().removeItem(2);
    scene().setVisible(3, false);
    viewer->renderToImage();
    EXPECT_EQ(stats.itemsOnGpu, 1);
}

TEST_F(ViewerPictures, WireframeAndPointModesDrawLessThanTheFilledSurface)
{
    auto fault = planarMesh({200, 500, 300}, {600, 0, 0}, {0, 0, 400}, 6, 4, Qt::red);
    ZN3DSurfaceItem surface{fault.get()};
    scene().setItem(1, surface);
    mapViewOfTheSurvey();
    const QRect all(0, 0, kWidth, kHeight);
    const int filled = countPixels(picture("mode_filled"), all, sameHue(Qt::red));
    surface.mode = ZN3DSurfaceItem::Mode::Wireframe;
    scene().setItem(1, surface);
    const int wireframe = countPixels(picture("mode_wireframe"), all, sameHue(Qt::red));
    surface.mode = ZN3DSurfaceItem::Mode::Points;
    surface.pointSize = 5;
    scene().setItem(1, surface);
    const int points = countPixels(picture("mode_points"), all, sameHue(Qt::red));
    EXPECT_GT(wireframe, 300);
    EXPECT_LT(wireframe, filled / 3);
    // 35 points of about 20 pixels each.
    EXPECT_GT(points, 35 * 12);
    EXPECT_LT(points, 35 * 30);
}

TEST_F(ViewerPictures, TheReferenceCrossAndTheLabelledBoxAreDrawn)
{
    ZN3DBoxItem box;
    geom::Box3 extent;
    extent.include({0, 0, 0});
    extent.include({1000, 1000, 1000});
    box.setBox(extent);
    box.colour = Qt::white;
    box.axes[0] = {"Inline", 1, 128};
    box.axes[1] = {"Time", 0, 2000};
    box.axes[2] = {"Crossline", 1, 64};
    scene().setItem(1, box, false);
    scene().setItem(2, ZN3DReferencePointItem{{500, 500, 500}, Qt::green, 20.0f, 2.0f}, false);
    engine().fitAll();
    const QImage image = picture("box_and_cross");
    const QPointF cross = screenOf({500, 500, 500});
    const QRect around(cross.toPoint() - QPoint(20, 20), QSize(41, 41));
    EXPECT_GT(countPixels(image, around, near(QColor(0, 255, 0), 40)), 40);
    // Every label leaves light pixels around its place.
    const std::vector<ZN3DViewerEngine::Label> labels = engine().labels();
    ASSERT_EQ(labels.size(), 9u);
    for (const ZN3DViewerEngine::Label& label : labels) {
        const QRect place(int(label.screen.x) - 12, int(label.screen.y) - 5, 25, 11);
        EXPECT_GT(countPixels(image, place, [](QColor c) { return c.value() > 150 && c.saturation() < 40; }), 3)
            << label.text.toStdString();
    }
    // The box's edges: light pixels along the projected top edge of the near face.
    EXPECT_GT(countPixels(image, image.rect(), near(Qt::white, 30)), 300);
}

TEST_F(ViewerPictures, ASticksLyingOnItsFaultIsPickedBeforeTheFault)
{
    auto fault = planarMesh({200, 500, 300}, {600, 0, 0}, {0, 0, 400}, 6, 4, Qt::red);
    scene().setItem(1, ZN3DSurfaceItem{fault.get()});
    ZN3DPolylineItem stick;
    stick.points = {{300, 500, 500}, {700, 500, 500}};
    scene().setItem(2, stick);
    engine().setOrientation(20, 50);
    engine().fitAll();
    picture("stick_on_fault");
    for (double x : {350.0, 500.0, 650.0}) {
        const ZN3DViewerEngine::Hit hit = viewer->pickAt(screenOf({x, 500, 500}));
        EXPECT_EQ(hit.id, 2) << x;
        EXPECT_LT((hit.world - core::vec3(x, 500, 500)).length(), 10.0);
    }
    EXPECT_EQ(viewer->pickAt(screenOf({500, 500, 400})).id, 1);
}
