// The section viewer engines, without a window: geometry of sections, viewport, world,
// colours, annotations and hit tests.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include <znmultipolygondraw.h>
#include <znpointsdraw.h>
#include <znseismicblocviewerengine.h>

namespace {

constexpr int kNx = 6, kNy = 5, kNz = 8;

// Sample (x, y, z) = 100 x + 10 y + z; 4 m across, 2 ms down, world y = 1000 + 2 z.
std::shared_ptr<ZNBloc> rampBloc(float noValueAt = -1)
{
    core::mat4 m = core::mat4::translation({500.0, 1000.0, 800.0});
    m(0, 0) = 4.0;   // inline -> east
    m(1, 1) = 0.0;
    m(2, 2) = 0.0;
    m(2, 1) = 4.0;   // crossline -> north
    m(1, 2) = 2.0;   // sample -> down
    auto image = std::make_shared<ZN3DImage<float>>(georef::BlocSpace(kNx, kNy, kNz, m));
    for (int z = 0; z < kNz; ++z)
        for (int y = 0; y < kNy; ++y)
            for (int x = 0; x < kNx; ++x) (*image)(x, y, z) = float(100 * x + 10 * y + z);
    if (noValueAt >= 0) (*image)(2, 0, 0) = -9999.0f;
    auto bloc = std::make_shared<ZNBloc>();
    bloc->openImage(image, georef::UnitObject(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond));
    return bloc;
}

void expectNear(const core::vec3& a, const core::vec3& b, double tolerance = 1e-9)
{
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

using Kind = ZNBlocViewerEngine::SectionKind;

} // namespace

TEST(SectionEngine, EachKindOfSectionHasItsImageAndItsPixelsTheirBlockPositions)
{
    ZNSeismicBlocViewerEngine engine;
    engine.setBloc(rampBloc());
    struct Case {
        Kind kind;
        int index;
        QSize size;
        QPointF pixel;
        core::vec3 bloc;
    };
    for (const Case& c : {Case{Kind::Inline, 3, {kNy, kNz}, {2, 5}, {3, 2, 5}},
                          Case{Kind::Crossline, 1, {kNx, kNz}, {4, 6}, {4, 1, 6}},
                          Case{Kind::Slice, 7, {kNx, kNy}, {5, 3}, {5, 3, 7}}}) {
        engine.setSection(c.kind, c.index);
        EXPECT_EQ(engine.imageSize(), c.size);
        expectNear(engine.imageToBloc(c.pixel), c.bloc);
        QPointF back;
        double distance = -1;
        ASSERT_TRUE(engine.blocToImage(c.bloc + core::vec3(0.25, 0.25, 0.25) - core::vec3(0.25, 0.25, 0.25), back, &distance));
        EXPECT_EQ(back, c.pixel);
        EXPECT_NEAR(distance, 0.0, 1e-12);
        const img::Image* samples = engine.sectionSamples();
        ASSERT_NE(samples, nullptr);
        EXPECT_EQ((*samples)(int(c.pixel.x()), int(c.pixel.y())), float(100 * c.bloc.x + 10 * c.bloc.y + c.bloc.z));
    }
    QPointF image;
    double distance = 0;
    engine.setSection(Kind::Inline, 3);
    ASSERT_TRUE(engine.blocToImage({1.0, 2.0, 4.0}, image, &distance));
    EXPECT_DOUBLE_EQ(distance, 2.0);  // two inlines away
}

TEST(SectionEngine, SteppingStopsAtTheFirstAndTheLastSection)
{
    ZNSeismicBlocViewerEngine engine;
    EXPECT_EQ(engine.sectionCount(Kind::Inline), 0);
    engine.setBloc(rampBloc());
    engine.setSection(Kind::Crossline, 0);
    EXPECT_FALSE(engine.stepSection(-1));
    EXPECT_TRUE(engine.stepSection(3));
    EXPECT_EQ(engine.sectionIndex(), 3);
    EXPECT_TRUE(engine.stepSection(100));
    EXPECT_EQ(engine.sectionIndex(), kNy - 1);
    EXPECT_FALSE(engine.stepSection(1));
    EXPECT_FALSE(engine.setSection(Kind::Crossline, 99));  // clamped: already the last
    const quint64 version = engine.sectionVersion();
    engine.setSection(Kind::Slice, -5);
    EXPECT_EQ(engine.sectionIndex(), 0);
    EXPECT_GT(engine.sectionVersion(), version);
}

TEST(SectionEngine, ViewportAndWorldRoundTripAndZoomKeepsThePointUnderTheCursor)
{
    ZNSeismicBlocViewerEngine engine;
    engine.setBloc(rampBloc());
    engine.setMargins(QMargins(40, 10, 30, 20));
    engine.setViewportSize(QSize(400, 300));
    engine.setSection(Kind::Inline, 2);
    engine.fit();
    const QRectF fitted = engine.imageRectInViewport();
    EXPECT_NEAR(fitted.left(), 40, 1e-9);
    EXPECT_NEAR(fitted.right(), 370, 1e-9);
    EXPECT_NEAR(fitted.bottom(), 280, 1e-9);

    for (const QPointF& p : {QPointF(55, 33), QPointF(200, 150), QPointF(369, 279)}) {
        const core::vec3 world = engine.viewportToWorld(p);
        QPointF back;
        double distance = -1;
        ASSERT_TRUE(engine.worldToViewport(world, back, &distance));
        EXPECT_NEAR(back.x(), p.x(), 1e-9);
        EXPECT_NEAR(back.y(), p.y(), 1e-9);
        EXPECT_NEAR(distance, 0.0, 1e-9);
        EXPECT_NEAR(world.x, 500.0 + 4.0 * 2, 1e-9);  // every point of inline 2 is 8 m east
    }
    const QPointF cursor(123, 77);
    const core::vec3 under = engine.viewportToWorld(cursor);
    for (double factor : {2.0, 0.3, 1.7}) {
        engine.zoomAt(cursor, factor);
        expectNear(engine.viewportToWorld(cursor), under, 1e-9);
    }
    engine.pan(QPointF(10, -5));
    expectNear(engine.viewportToWorld(cursor + QPointF(10, -5)), under, 1e-9);
    engine.zoomAt(cursor, 1e9);
    EXPECT_LE(engine.scaleAcross(), ZNBlocViewerEngine::kMaxScale);
}

TEST(SectionEngine, ARandomLineFollowsItsNodesOneTracePerVoxelOfLength)
{
    ZNSeismicBlocViewerEngine engine;
    engine.setBloc(rampBloc());
    EXPECT_FALSE(engine.setRandomLine({{1, 1}, {1, 1}}));  // one distinct node
    ASSERT_TRUE(engine.setRandomLine({{0, 0}, {3, 4}, {3, 1}}));  // lengths 5 and 3
    EXPECT_EQ(engine.imageSize(), QSize(9, kNz));
    expectNear(engine.imageToBloc({5, 2}), {3, 4, 2});
    expectNear(engine.imageToBloc({7, 0}), {3, 2, 0});
    QPointF image;
    double distance = 0;
    ASSERT_TRUE(engine.blocToImage({4, 2, 3}, image, &distance));  // beside the second leg
    EXPECT_NEAR(image.x(), 7.0, 1e-9);
    EXPECT_NEAR(distance, 1.0, 1e-9);
    const img::Image* samples = engine.sectionSamples();
    ASSERT_NE(samples, nullptr);
    EXPECT_EQ((*samples)(5, 2), float(100 * 3 + 10 * 4 + 2));  // the nearest trace
    EXPECT_FALSE(engine.stepSection(1));
}

TEST(SectionEngine, TheSectionIsAVerticalSectionOfWorldForPicking)
{
    ZNSeismicBlocViewerEngine engine;
    engine.setBloc(rampBloc());
    engine.setSection(Kind::Inline, 2);
    geom::RandomLine line;
    ASSERT_TRUE(engine.getShownRandomLine(line));
    ASSERT_EQ(line.nodes.size(), 2);
    EXPECT_EQ(line.verticalAxis, geom::RandomLine::kWorldVerticalAxis);
    EXPECT_NEAR(line.nodes[0].x, 508.0, 1e-9);
    EXPECT_NEAR(line.nodes[1].y, 800.0 + 4.0 * (kNy - 1), 1e-9);
    EXPECT_NEAR(line.verticalMin, 1000.0, 1e-9);
    EXPECT_NEAR(line.verticalMax, 1000.0 + 2.0 * (kNz - 1), 1e-9);
    engine.setSection(Kind::Slice, 1);
    EXPECT_FALSE(engine.getShownRandomLine(line));

    // The fault set's picking finds entries on the screen through the engine.
    engine.setSection(Kind::Inline, 2);
    engine.setViewportSize(QSize(300, 300));
    engine.fit();
    const core::PointWithBool points[] = {core::PointWithBool(508, 1002, 804), core::PointWithBool(508, 1010, 808)};
    const QPointF second = engine.imageToViewport(QPointF(2, 5));
    const ZNPickingViewer::NearestEntry nearest =
        engine.getNearestPoint2D({second.x() + 2, second.y() + 1}, points, 2);
    EXPECT_EQ(nearest.entry, 1);
    EXPECT_FALSE(engine.isPatchShown(nullptr, 1));
    engine.setPatchShown([](const ZNObject*, int id) { return id == 1; });
    EXPECT_TRUE(engine.isPatchShown(nullptr, 1));
}

TEST(SectionEngine, GoingToAWorldPointShowsTheSectionThroughIt)
{
    ZNSeismicBlocViewerEngine engine;
    engine.setBloc(rampBloc());
    engine.setSection(Kind::Crossline, 0);
    EXPECT_TRUE(engine.goToWorldPoint({500.0 + 4.0 * 1, 1006.0, 800.0 + 4.0 * 3.2}));
    EXPECT_EQ(engine.sectionIndex(), 3);
    EXPECT_FALSE(engine.goToWorldPoint({500.0, 1006.0, 800.0 + 4.0 * 3}));  // already there
    engine.setReferencePoint({1, 2, 3});
    EXPECT_TRUE(engine.hasReferencePoint());
}

TEST(SectionEngine, SamplesBecomeColoursThroughTheScaleWithNoValuesTransparent)
{
    ZNSeismicBlocViewerEngine engine;
    engine.setBloc(rampBloc(0));
    engine.setSection(Kind::Slice, 0);
    // From the data: the section's own range (0 .. 540 on slice 0 but the no-value sample).
    engine.setColourMap(img::ColourScale::Map::Grey);
    const QImage& picture = engine.sectionImage();
    ASSERT_EQ(picture.size(), QSize(kNx, kNy));
    EXPECT_EQ(picture.pixel(0, 0), qRgb(0, 0, 0));
    EXPECT_EQ(picture.pixel(kNx - 1, kNy - 1), qRgb(255, 255, 255));
    EXPECT_EQ(qAlpha(picture.pixel(2, 0)), 0);
    EXPECT_EQ(engine.colourScale().maximum(), 540.0f);
    // The range is kept while stepping, so colours stay comparable.
    engine.setSection(Kind::Slice, 7);
    EXPECT_EQ(engine.colourScale().maximum(), 540.0f);
    engine.setManualRange(0.0f, 1000.0f);
    EXPECT_EQ(engine.sectionImage().pixel(0, 0), img::ColourScale(img::ColourScale::Map::Grey, 0, 1000).colourOf(7.0f));
    engine.setColourMap(img::ColourScale::Map::Seismic);  // a manual range stays
    EXPECT_EQ(engine.colourScale().maximum(), 1000.0f);
    engine.setRangeFromData();
    engine.sectionImage();
    EXPECT_EQ(engine.colourScale().minimum(), -engine.colourScale().maximum());  // symmetric for seismic
    EXPECT_EQ(engine.sampleAtViewport(engine.imageToViewport(QPointF(1, 2))), 100.0f + 20.0f + 7.0f);
    EXPECT_EQ(engine.sampleAtViewport(engine.imageToViewport(QPointF(-3, 2))), -9999.0f);
}

TEST(SectionEngine, AxesAreAnnotatedWithLineNumbersAndTimeAtRoundValues)
{
    ZNSeismicBlocViewerEngine engine;
    engine.setBloc(rampBloc());
    engine.setLineNumbering({100, 2, 2000, 5});
    engine.setViewportSize(QSize(600, 400));
    engine.setSection(Kind::Inline, 3);
    engine.fit();
    EXPECT_EQ(engine.sectionTitle(), "Inline 106");
    EXPECT_EQ(engine.acrossTitle(), "Crossline");
    EXPECT_EQ(engine.downTitle(), "Time (ms)");
    const auto across = engine.acrossTicks(40.0);
    ASSERT_FALSE(across.empty());
    EXPECT_EQ(across.front().label, "2000");
    EXPECT_NEAR(across.front().position, 0.0, 1e-9);
    for (const auto& t : across) EXPECT_EQ(std::fmod(t.label.toDouble(), 5.0), 0.0);
    const auto down = engine.downTicks(30.0);
    ASSERT_GE(down.size(), 2u);
    EXPECT_EQ(down[0].label, "1000");
    EXPECT_NEAR(down[1].position - down[0].position, (down[1].label.toDouble() - 1000.0) / 2.0, 1e-9);
    engine.setSection(Kind::Slice, 2);
    EXPECT_EQ(engine.sectionTitle(), "Time 1004 ms");
    EXPECT_EQ(engine.downTitle(), "Crossline");
}

TEST(SectionEngine, DrawablesAreFoundNearWhereTheyAreDrawnTheTopmostFirst)
{
    ZNSeismicBlocViewerEngine engine;
    engine.setBloc(rampBloc());
    engine.setViewportSize(QSize(300, 300));
    engine.setSection(Kind::Inline, 2);
    engine.fit();
    ZNMultiPolygon outline;
    core::Array<core::vec3> corners;
    for (const core::vec3& b : {core::vec3(2, 1, 1), core::vec3(2, 3, 1), core::vec3(2, 3, 5)}) corners.add(engine.blocToWorld(b));
    outline.addPolygon(corners);
    auto polygon = std::make_shared<ZNMultiPolygonDraw>(outline, QPen(Qt::black, 3));
    auto points = std::make_shared<ZNPointsDraw>(Qt::red, 5.0);
    points->addPoint(engine.blocToWorld({2, 3, 1}));
    auto far = std::make_shared<ZNPointsDraw>(Qt::blue, 5.0);
    far->addPoint(engine.blocToWorld({5, 2, 2}));  // three inlines away
    far->setMaxDistance(1.0);
    engine.addDrawable(polygon);
    engine.addDrawable(points);
    engine.addDrawable(far);

    const QPointF corner = engine.imageToViewport(QPointF(3, 1));
    EXPECT_EQ(engine.drawableAt(corner, 4.0), points.get());  // on top of the polygon's corner
    const QPointF alongEdge = engine.imageToViewport(QPointF(2, 1)) + QPointF(0, 3);
    EXPECT_EQ(engine.drawableAt(alongEdge, 4.0), polygon.get());
    EXPECT_EQ(engine.drawableAt(engine.imageToViewport(QPointF(2, 2)), 4.0), nullptr);  // the far point is not drawn
    polygon->setClosed(false);  // the closing edge goes
    const QPointF closing = (engine.imageToViewport(QPointF(1, 1)) + engine.imageToViewport(QPointF(3, 5))) / 2;
    EXPECT_EQ(engine.drawableAt(closing, 2.0), nullptr);
    points->setVisible(false);
    EXPECT_EQ(engine.drawableAt(corner, 4.0), polygon.get());
    engine.removeDrawable(polygon.get());
    EXPECT_EQ(engine.drawables().size(), 2u);
}
