// The fault viewer engine without a window: showing a fault, its images, caption and
// settings, picking state and the data mapped along it.
#include <gtest/gtest.h>

#include <cmath>

#include <QDomDocument>

#include <testservices.h>
#include <znfaultviewerengine.h>
#include <znmultipolygondraw.h>

#include "faultviewerfixtures.h"

using faultviewer::Scene;

namespace {

constexpr double kNo = -9999.0;

// An engine showing the scene's fault, 600 x 500 pixels, recording what it sends.
struct Shown {
    Scene scene;
    ZNFaultViewerEngine engine;
    QStringList actions;
    explicit Shown(const QString& name = QStringLiteral("F1"), double bend = 0.0) : scene(name, bend)
    {
        engine.setViewerActionListener([this](const QString& a) { actions << a; });
        engine.setViewportSize(QSize(600, 500));
    }
    bool show() { return engine.project3DFaultPatch(&scene.set, 1); }
};

// The viewport point of a world point.
QPointF at(const ZNFaultViewerEngine& engine, const core::vec3& world)
{
    QPointF viewport;
    EXPECT_TRUE(engine.worldToViewport(world, viewport));
    return viewport;
}

int countIndex(const img::IndexImage& image, int value)
{
    int n = 0;
    for (std::size_t p = 0; p < image.sampleCount(); ++p) n += image.data()[p] == value;
    return n;
}

} // namespace

// ----- images and showing a fault -----

TEST(FaultViewerEngine, AdoptedBlockSpacesGiveASquareImageAsLongAsTheirDiagonal)
{
    const struct {
        int n;
        double factor;
        int side;
    } cases[] = {{100, 1.0, 173}, {100, 2.0, 346}, {10, 1.0, 17}, {1, 1.0, 2}};
    for (const auto& c : cases) {
        ZNFaultViewerEngine engine;
        engine.setScaleFactor(c.factor);
        engine.initWithBloc(georef::BlocSpace(c.n, c.n, c.n));
        EXPECT_EQ(engine.imageWidth(), c.side) << c.n << " x " << c.factor;
        EXPECT_EQ(engine.imageHeight(), c.side);
        EXPECT_EQ(engine.mappedImage()(c.side / 2, c.side / 2), -9999.0f);
        EXPECT_EQ(engine.getBlocSpaceMaxSize(), c.n);
    }
}

TEST(FaultViewerEngine, ShowingAFaultDisplaysItsProjectionAndTellsTheViewer)
{
    Shown s;
    ASSERT_GT(s.scene.surface->getNumberOfFacettes(), 0);
    ASSERT_TRUE(s.show());
    EXPECT_EQ(s.actions, (QStringList{"UPDATE_CAPTION", "FRAME_CHANGED", "UPDATE_VIEWER_OBJECT",
                                      "UPDATE_PALETTE_MANAGER"}));
    EXPECT_EQ(s.engine.getMappedFaultId(), 1);
    EXPECT_EQ(s.engine.getCurrentFaultPatch(), s.scene.surface.get());
    EXPECT_EQ(s.engine.viewerModeName(), QStringLiteral("faultpicking"));
    // The projection at the fault's gridding: one pixel per 10 units.
    georef::BlocSpace space;
    core::mat4 matrix;
    const std::unique_ptr<img::Image> projection(s.scene.surface->getProjectionImage(space, matrix, 1.0));
    ASSERT_TRUE(projection);
    EXPECT_EQ(s.engine.imageWidth(), projection->width());
    EXPECT_EQ(s.engine.imageHeight(), projection->height());
    EXPECT_EQ(s.engine.imageSize(), QSize(projection->width(), projection->height()));
    EXPECT_EQ(s.engine.blocSpace().nz(), 1);
    int covered = 0;
    for (std::size_t p = 0; p < projection->sampleCount(); ++p) covered += projection->data()[p] != -9999.0f;
    EXPECT_EQ(countIndex(s.engine.indexImage(), 1), covered);
    EXPECT_GT(covered, projection->width() * projection->height() / 2);
    // Until data is mapped the viewer shows the fault's coverage.
    const img::Image* samples = s.engine.sectionSamples();
    ASSERT_TRUE(samples);
    EXPECT_EQ(samples->width(), projection->width());
    // Every picked point lies on the image, on the plane's layer.
    EXPECT_EQ(s.engine.pickedPointCount(), s.scene.surface->getPickedPoints().size());
    for (const core::PointWithBool& p : s.scene.surface->getPickedPoints()) {
        if (!p.isSeparator()) {
            EXPECT_TRUE(s.engine.isWorldPointOnCurrentFrame(p.position()));
        }
    }
    EXPECT_FALSE(s.engine.isWorldPointOnCurrentFrame({0.0, 0.0, 0.0}));
}

TEST(FaultViewerEngine, FaultsThatCannotBeShownLeaveTheEngineAsItWas)
{
    RecordingEventBus bus;
    Shown s;
    EXPECT_FALSE(s.engine.project3DFaultPatch(&s.scene.set, 0));                              // patch 0
    EXPECT_FALSE(s.engine.project3DFaultPatch(&s.scene.set, s.scene.set.getNumberOfPatch()));  // beyond
    EXPECT_FALSE(s.engine.project3DFaultPatch(nullptr, 1));
    EXPECT_FALSE(s.engine.project3DFaultPatch(&s.scene.set, 2));  // a patch without surface
    s.engine.setFaultShown([](const ZNFaultPatchManager*, int) { return false; });
    EXPECT_FALSE(s.show());  // hidden
    EXPECT_EQ(s.engine.getMappedFaultId(), ZNFaultViewerEngine::kNoFault);
    EXPECT_TRUE(s.actions.isEmpty());
    s.engine.setFaultShown(nullptr);
    ASSERT_TRUE(s.show());
    // A fault whose mesh is gone has no projection: a message, and the fault shown stays.
    s.scene.surface->setMesh(core::Array<core::vec3>(), core::Array<ZNFacette>());
    s.actions.clear();
    EXPECT_FALSE(s.show());
    EXPECT_TRUE(bus.contains(1, QStringLiteral("Could not load image for fault F1")));
    EXPECT_TRUE(s.actions.isEmpty());
    EXPECT_EQ(s.engine.getMappedFaultId(), 1);
    EXPECT_GT(countIndex(s.engine.indexImage(), 1), 0);
}

TEST(FaultViewerEngine, ClearingForgetsTheFaultAndTellsTheViewer)
{
    Shown s;
    ZN3DFaultPatch* marked = nullptr;
    QPen pen;
    s.engine.setMappedFaultMarker([&](ZN3DFaultPatch* fault, const QPen& p) {
        marked = fault;
        pen = p;
    });
    ASSERT_TRUE(s.show());
    EXPECT_EQ(marked, s.scene.surface.get());
    EXPECT_EQ(pen.color(), QColor(Qt::green));
    EXPECT_EQ(pen.width(), 2);
    s.actions.clear();
    s.engine.clearFaultViewer();
    EXPECT_EQ(s.actions, (QStringList{"UPDATE_CAPTION", "FRAME_CHANGED", "UPDATE_VIEWER_OBJECT",
                                      "UPDATE_PALETTE_MANAGER"}));
    EXPECT_EQ(marked, nullptr);
    EXPECT_EQ(s.engine.getMappedFaultId(), ZNFaultViewerEngine::kNoFault);
    EXPECT_EQ(s.engine.getCurrentFaultPatch(), nullptr);
    EXPECT_EQ(s.engine.getBloc(), nullptr);
    EXPECT_EQ(s.engine.getFaultEdgePolyline(), nullptr);
    EXPECT_EQ(s.engine.pickedPointCount(), 0);
    EXPECT_EQ(s.engine.getCaption(), QStringLiteral("Fault Editing: Empty"));
}

TEST(FaultViewerEngine, IndexImageRoundsHalfAwayFromZeroAndLaterPatchesWin)
{
    // Image column = world x - 1; the fault set's grid has cells 0.2 apart from x = 0.4,
    // so cell 0 falls at column -0.6 and cell 1 at column -0.4.
    ZNFaultViewerEngine engine;
    engine.initWithBloc(georef::BlocSpace(10, 10, 1, core::mat4::translation({1.0, 0.0, 0.0})));
    core::mat4 grid = core::mat4::translation({0.4, 0.0, 0.0});
    grid(0, 0) = 0.2;
    ZNFaultPatchManager set(4);
    set.setBlocSpace(georef::BlocSpace(50, 10, 10, grid));
    set.addPickedPoint(1, core::PointWithBool(0.6, 2.0, 0.0));  // column -0.4: column 0
    set.addPickedPoint(2, core::PointWithBool(2.0, 5.0, 0.0));  // column 1
    set.addPickedPoint(2, core::PointWithBool::separator());
    set.addPickedPoint(2, core::PointWithBool(0.6, 2.0, 0.0));  // patch 1's pixel again
    set.addPickedPoint(3, core::PointWithBool(0.4, 7.0, 0.0));  // column -0.6: outside
    set.setFather(2, 1);
    set.setFather(3, 1);
    set.initElementListBis();
    img::IndexImage image(10, 10, 5);
    engine.fillIndexImage(&set, 3, image);  // any patch of the fault
    EXPECT_EQ(image(0, 2), 2);              // patch 2 comes after patch 1
    EXPECT_EQ(image(1, 5), 2);
    EXPECT_EQ(countIndex(image, -9999), 98);
    engine.fillIndexImage(&set, 0, image);
    EXPECT_EQ(countIndex(image, -9999), 100);  // a bad fault index only clears
    engine.fillIndexImage(nullptr, 1, image);
    EXPECT_EQ(countIndex(image, -9999), 100);
}

// ----- caption and settings -----

TEST(FaultViewerEngine, CaptionFollowsTheModeTheOneShotViewerFlagAndTheFault)
{
    auto shown = std::make_unique<Shown>(QStringLiteral("Main Fault"));
    ZNFaultViewerEngine& engine = shown->engine;
    EXPECT_EQ(engine.getCaption(), QStringLiteral("Fault Editing: Empty"));
    ASSERT_TRUE(shown->show());
    EXPECT_EQ(engine.getCaption(), QStringLiteral("Fault Editing: Main Fault"));
    engine.setViewerCaption();
    EXPECT_EQ(engine.getCaption(), QStringLiteral("Fault Viewer: Main Fault"));
    EXPECT_EQ(engine.getCaption(), QStringLiteral("Fault Editing: Main Fault"));  // one caption only
    engine.setViewerCaption();
    engine.setAllanDiagramMode(true);
    EXPECT_EQ(engine.getCaption(), QStringLiteral("Allan Diagram"));
    engine.setAllanDiagramMode(false);
    EXPECT_EQ(engine.getCaption(), QStringLiteral("Fault Editing: Main Fault"));  // the flag went too
    shown->scene.set.findFaultLight(1)->SetFaultName(QString());
    EXPECT_EQ(engine.getCaption(), QStringLiteral("Fault Editing: Unnamed"));
    engine.setMappedFaultId(ZNFaultViewerEngine::kNoFault);
    EXPECT_EQ(engine.getCaption(), QStringLiteral("Fault Editing: Empty"));
    engine.setMappedFaultId(1);
    // A fault set the host no longer knows counts as none.
    ZNFaultViewerEngine orphan;
    {
        Scene gone;
        orphan.setViewportSize(QSize(300, 300));
        ASSERT_TRUE(orphan.project3DFaultPatch(&gone.set, 1));
        EXPECT_EQ(orphan.getCaption(), QStringLiteral("Fault Editing: F1"));
    }
    EXPECT_EQ(orphan.getCaption(), QStringLiteral("Fault Editing: Empty"));
    EXPECT_EQ(orphan.getFaultPatchManager(), nullptr);
}

TEST(FaultViewerEngine, HeaderSettingsRoundTripAndMissingOnesKeepTheirValue)
{
    ZNFaultViewerEngine written;
    written.setDrawerBackgroundColor(QColor(10, 20, 30));
    written.setDrawerBackgroundColorPicking(QColor(40, 50, 60, 70));
    written.setAutoGoto(true);
    written.setPickedPointShown(false);
    QDomDocument doc;
    QDomElement root = doc.createElement(QStringLiteral("Viewer"));
    doc.appendChild(root);
    written.createHeaderSettings(doc, root);
    const QDomElement e = root.firstChildElement(QStringLiteral("ZNFaultViewer"));
    ASSERT_FALSE(e.isNull());
    EXPECT_EQ(e.attribute(QStringLiteral("AutoGoto")), QStringLiteral("1"));
    EXPECT_EQ(e.attribute(QStringLiteral("PickedPoint")), QStringLiteral("0"));
    EXPECT_EQ(e.attributes().count(), 4);
    ZNFaultViewerEngine read;
    read.getHeaderSettings(root);
    EXPECT_EQ(read.drawerBackgroundColor(), QColor(10, 20, 30));
    EXPECT_EQ(read.drawerBackgroundColorPicking(), QColor(40, 50, 60, 70));
    EXPECT_TRUE(read.isAutoGoto());
    EXPECT_FALSE(read.isPickedPointShown());
    QDomDocument partial;
    partial.setContent(QStringLiteral("<Viewer><ZNFaultViewer AutoGoto=\"yes\" DrawerBackgroundColor=\"nothing\"/></Viewer>"));
    ZNFaultViewerEngine kept;
    kept.getHeaderSettings(partial.documentElement());
    EXPECT_FALSE(kept.isAutoGoto());
    EXPECT_TRUE(kept.isPickedPointShown());
    EXPECT_EQ(kept.drawerBackgroundColor(), QColor(Qt::white));
}

TEST(FaultViewerEngine, PropertySheetListsTheViewerAndMappingRowsWithTheirIcons)
{
    Shown s;
    ASSERT_TRUE(s.show());
    ZNPropertySheet sheet;
    s.engine.createProperty(sheet);
    ASSERT_EQ(sheet.groups().size(), 2);
    QStringList viewer, mapping;
    for (const ZNProperty& p : sheet.groups()[0].properties) viewer << p.id;
    for (const ZNProperty& p : sheet.groups()[1].properties) mapping << p.id;
    EXPECT_EQ(viewer, (QStringList{"Picked Point", "Freeze", "Scale Type", "Spatial Scale", "Show Scale",
                                   "Color Scale", "Z Domain", "BackGround Color Picking Viewer"}));
    EXPECT_EQ(mapping, (QStringList{"Smoothing", "WindowSize", "Spatial dev (px)", "Vertical dev (px)",
                                    "Interpolation", "Corr Threshold", "Smooth"}));
    const struct {
        const char* id;
        const char* icon;
    } icons[] = {{"Picked Point", "faultviewershowpoint"}, {"Freeze", "freezesmall"}, {"Show Scale", "imagescale"},
                 {"Color Scale", "colorscaleok"},           {"Z Domain", "zdomain16"}};
    for (const auto& i : icons) {
        const ZNProperty* p = sheet.property(QString::fromLatin1(i.id));
        ASSERT_TRUE(p);
        EXPECT_EQ(p->attribute(QStringLiteral("iconName")).toString(), QString::fromLatin1(i.icon));
        EXPECT_FALSE(p->attribute(ZNProperty::icon()).value<QImage>().isNull());
    }
    EXPECT_EQ(sheet.property(QStringLiteral("Z Domain"))->value.toString(), QStringLiteral("Time"));
    EXPECT_EQ(sheet.property(QStringLiteral("Scale Type"))->attribute(ZNProperty::enumNames()).toStringList().size(), 3);
    EXPECT_FALSE(sheet.property(QStringLiteral("Spatial Scale"))->enabled);  // until "Custom"
}

TEST(FaultViewerEngine, PropertyEditsApplyValidChangesOnly)
{
    Shown s;
    ASSERT_TRUE(s.show());
    const struct {
        const char* id;
        QVariant value;
        bool applied;
    } edits[] = {
        {"Picked Point", false, true},   {"Picked Point", false, false},  // unchanged
        {"Freeze", true, true},          {"Show Scale", false, true},
        {"Color Scale", false, true},    {"Spatial Scale", 2.0, false},   // only with "Custom"
        {"Scale Type", 2, true},         {"Spatial Scale", 2.0, true},
        {"Spatial Scale", 1000.0, false}, {"Scale Type", 7, false},
        {"BackGround Color Picking Viewer", QColor(Qt::red), true},
        {"WindowSize", 5, true},         {"WindowSize", 31, false},
        {"Interpolation", 4, true},      {"Interpolation", -1, false},
        {"Spatial dev (px)", 2.5, true}, {"Vertical dev (px)", -1.0, false},
        {"Corr Threshold", 0.4, true},   {"Corr Threshold", 1.2, false},
        {"Smooth", 1, true},             {"Smooth", 3, false},
        {"Smoothing", true, true},       {"Z Domain", QStringLiteral("Depth"), false},
        {"Unknown", 1, false},
    };
    for (const auto& e : edits)
        EXPECT_EQ(s.engine.updateProperty(QString::fromLatin1(e.id), e.value), e.applied) << e.id;
    EXPECT_FALSE(s.engine.isPickedPointShown());
    EXPECT_TRUE(s.engine.isFrozen());
    EXPECT_EQ(s.engine.scaleType(), ZNFaultViewerEngine::ScaleType::Custom);
    EXPECT_DOUBLE_EQ(s.engine.spatialScale(), 2.0);
    const fault::FaultPlaneMappingSettings& m = s.engine.mappingSettings();
    EXPECT_EQ(m.windowSize, 5);
    EXPECT_EQ(m.interpolationRadius, 4);
    EXPECT_DOUBLE_EQ(m.spatialDeviation, 2.5);
    EXPECT_DOUBLE_EQ(m.correlationThreshold, 0.4);
    EXPECT_EQ(m.combine, fault::FaultPlaneMappingSettings::Combine::Mean);
    EXPECT_TRUE(m.smoothing);
    EXPECT_EQ(s.actions.count(QStringLiteral("REFRESH_FAULT_VIEWER")), 2);  // the scale changed twice
}

TEST(FaultViewerEngine, ScaleTypesSetTheProjectionsGridSteps)
{
    Shown s;
    s.scene.surface->setUtmPrecision(50);  // coarse gridding steps, of another aspect
    s.scene.surface->setTimePrecision(4);
    const auto steps = [&s] {
        const core::mat4& m = s.engine.blocSpace().getFromBlocToWorldMatrix();
        return std::make_pair(core::vec3(m(0, 0), m(1, 0), m(2, 0)).length(), core::vec3(m(0, 1), m(1, 1), m(2, 1)).length());
    };
    const struct {
        int type;
        double custom;
        double across, down;
    } cases[] = {
        {0, 1.0, 50.0, 4.0},   // "Fault Gridding": the gridding steps
        {1, 1.0, 10.0, 10.0},  // "Survey Grid": the survey's cells
        {2, 0.5, 25.0, 2.0},   // "Custom": the gridding steps scaled
    };
    for (const auto& c : cases) {
        s.engine.updateProperty(QStringLiteral("Scale Type"), c.type);
        s.engine.updateProperty(QStringLiteral("Spatial Scale"), c.custom);
        ASSERT_TRUE(s.show()) << c.type;
        EXPECT_NEAR(steps().first, c.across, 1e-9) << c.type;
        EXPECT_NEAR(steps().second, c.down, 1e-9) << c.type;
    }
}

// ----- picking state -----

TEST(FaultViewerEngine, NearestPickedPointReachesTenPixelsAndPointsWinOnlyWhenStrictlyNearer)
{
    ZNFaultViewerEngine engine;
    engine.initWithBloc(georef::BlocSpace(200, 200, 1));  // world = image, unit pixels
    engine.setViewportSize(QSize(200 + 160, 200 + 56));
    engine.setMargins(QMargins(0, 0, 0, 0));
    engine.setView({1.0, 1.0, QPointF(0.0, 0.0), false});
    core::Array<core::PointWithBool> points;
    points.add(core::PointWithBool(50.0, 50.0, 0.0));
    points.add(core::PointWithBool(50.0, 150.0, 0.0));
    points.add(core::PointWithBool::separator());
    points.add(core::PointWithBool(120.0, 50.0, 0.0));
    engine.insertPickedPoint(points);
    const struct {
        QPointF mouse;
        core::vec3 expected;
    } cases[] = {
        {{53.0, 100.0}, {50.0, 100.0, 0.0}},   // the foot on the stick
        {{59.9, 100.0}, {50.0, 100.0, 0.0}},
        {{60.0, 100.0}, {kNo, kNo, kNo}},      // 10 pixels: too far
        {{50.0, 45.0}, {50.0, 50.0, 0.0}},     // beyond the stick's end: its point
        {{127.0, 50.0}, {120.0, 50.0, 0.0}},   // a lone point
        {{85.0, 50.0}, {kNo, kNo, kNo}},       // no segment joins the two sticks
        {{53.0, 52.0}, {50.0, 52.0, 0.0}},     // foot 3 px away, point sqrt(13): the foot
        {{51.0, 51.0}, {50.0, 51.0, 0.0}},     // foot 1 px, point sqrt(2): the foot
    };
    for (const auto& c : cases) {
        const core::vec3 got = engine.getNearestPickedPoint(c.mouse);
        EXPECT_NEAR(got.x, c.expected.x, 1e-9) << c.mouse.x() << "," << c.mouse.y();
        EXPECT_NEAR(got.y, c.expected.y, 1e-9) << c.mouse.x() << "," << c.mouse.y();
    }
    // A lone point beside the stick: as near as the foot, the foot stays; nearer, it wins.
    points.add(core::PointWithBool::separator());
    points.add(core::PointWithBool(56.0, 100.0, 0.0));
    engine.insertPickedPoint(points);
    EXPECT_NEAR(engine.getNearestPickedPoint({53.0, 100.0}).x, 50.0, 1e-9);
    EXPECT_NEAR(engine.getNearestPickedPoint({53.1, 100.0}).x, 56.0, 1e-9);
    engine.setPickedPointShown(false);
    EXPECT_EQ(engine.getNearestPickedPoint({53.0, 100.0}).x, kNo);
}

TEST(FaultViewerEngine, GotoPointIsTheNearestPickedPointOrFollowsTheMouse)
{
    Shown s;
    ASSERT_TRUE(s.show());
    const core::vec3 picked = s.scene.surface->getPickedPoints()[2].position();
    const QPointF near = at(s.engine, picked) + QPointF(3.0, 0.0);
    s.actions.clear();
    s.engine.updateGotoPoint(near);
    EXPECT_EQ(s.actions, QStringList{QStringLiteral("UPDATE_REF_POINT")});
    ASSERT_TRUE(s.engine.hasGotoPoint());
    EXPECT_NEAR((s.engine.gotoPoint() - picked).length(), 0.0, 1e-6);
    EXPECT_EQ(s.engine.referencePoint(), s.engine.gotoPoint());
    s.engine.setPickedPointShown(false);
    s.engine.updateGotoPoint(near);
    const core::vec3 mouse = s.engine.ZNBlocViewerEngine::viewportToWorld(near);
    EXPECT_NEAR((s.engine.gotoPoint() - mouse).length(), 0.0, 1e-9);
}

TEST(FaultViewerEngine, HostModesWithoutMeaningOnAFaultPlaneBecomeGoto)
{
    ZNFaultViewerEngine engine;
    const QStringList replaced = ZNFaultViewerEngine::modesReplacedByGoto();
    ASSERT_EQ(replaced.size(), 15);
    EXPECT_EQ(replaced.first(), QStringLiteral("HORIZON_PICKING"));
    EXPECT_EQ(replaced.at(4), QStringLiteral("SNAP_MODE"));
    EXPECT_EQ(replaced.at(8), QStringLiteral("FAULT_PICKING"));
    EXPECT_EQ(replaced.last(), QStringLiteral("MOVE_STRAIGHT_POLYLINE_VERTICAL"));
    for (const QString& mode : replaced) {
        engine.setMouseMode(mode, true);
        EXPECT_EQ(engine.getMouseModeName(), QStringLiteral("TYPE_GOTO")) << mode.toStdString();
    }
    engine.setMouseMode(QStringLiteral("faultpicking"), true);
    EXPECT_EQ(engine.getMouseModeName(), QStringLiteral("faultpicking"));
    engine.setMouseMode(QStringLiteral("SNAP_MODE"), false);  // not the mode in use
    EXPECT_EQ(engine.getMouseModeName(), QStringLiteral("faultpicking"));
    engine.setMouseMode(QStringLiteral("faultpicking"), false);
    EXPECT_EQ(engine.getMouseModeName(), QString());
}

TEST(FaultViewerEngine, TheOutlineIsOneBlackObjectWhateverTheInserts)
{
    Shown s;
    ASSERT_TRUE(s.show());
    s.engine.insertEdgePolyline(s.scene.surface.get());
    s.engine.insertEdgePolyline(s.scene.surface.get());
    int outlines = 0;
    for (const auto& d : s.engine.drawables()) outlines += d->name() == QStringLiteral("faultEdgePolyline");
    EXPECT_EQ(outlines, 1);
    ASSERT_TRUE(s.engine.getFaultEdgePolyline());
    EXPECT_EQ(s.engine.getFaultEdgePolyline()->pen().color(), QColor(Qt::black));
    EXPECT_EQ(s.engine.getFaultEdgePolyline()->pen().width(), 3);
    EXPECT_GT(s.engine.getFaultEdgePolyline()->polygons().getNumberOfPolygon(), 0);
    s.engine.removeEdgePolyline();
    EXPECT_TRUE(s.engine.drawables().empty());
}

TEST(FaultViewerEngine, GotoCentresAPointOfTheImageAndRefusesOthers)
{
    Shown s;
    ASSERT_TRUE(s.show());
    const core::vec3 picked = s.scene.surface->getPickedPoints()[0].position();
    ASSERT_TRUE(s.engine.goto3DPoint(picked));
    const QRect area = QRect(QPoint(0, 0), s.engine.viewportSize()).marginsRemoved(s.engine.margins());
    const core::vec3 image = s.engine.from3dWorldToImage(picked);
    const QPointF centred = s.engine.imageToViewport(QPointF(std::lround(image.x), std::lround(image.y)));
    EXPECT_NEAR(centred.x(), area.center().x(), 1e-6);
    EXPECT_NEAR(centred.y(), area.center().y(), 1e-6);
    const auto view = s.engine.view();
    EXPECT_FALSE(s.engine.goto3DPoint({0.0, 0.0, 0.0}));
    EXPECT_EQ(s.engine.view().offset, view.offset);
}

TEST(FaultViewerEngine, PointsUnderTheMouseLieOnTheFaultsSurface)
{
    Shown s(QStringLiteral("F1"), 0.15);  // a bent fault: its surface leaves the plane by up to 36
    ASSERT_TRUE(s.show());
    const img::IndexImage& index = s.engine.indexImage();
    double farthest = 0.0;
    int tried = 0, missed = 0;
    for (int r = 1; r < index.height(); r += 3)
        for (int c = 1; c < index.width(); c += 3) {
            if (index(c, r) == -9999) continue;
            const QPointF mouse = s.engine.imageToViewport(QPointF(c, r));
            const core::vec3 onSurface = s.engine.fromViewportTo3dWorld(mouse);
            const core::vec3 onPlane = s.engine.ZNBlocViewerEngine::viewportToWorld(mouse);
            farthest = std::max(farthest, (onSurface - onPlane).length());
            // The same pixel, and along the normal from it.
            const core::vec3 back = s.engine.from3dWorldToImage(onSurface);
            EXPECT_NEAR(back.x, c, 1e-6);
            EXPECT_NEAR(back.y, r, 1e-6);
            // The relief shown before any data is that distance, signed along the normal
            // (none where the line just misses the mesh at its edge).
            const float relief = s.engine.reliefImage()(c, r);
            if (relief != -9999.0f) {
                EXPECT_NEAR(relief, (onSurface - onPlane).dot(s.engine.getWorldMouseAxe()), 1e-3);
            } else {
                ++missed;
            }
            ++tried;
        }
    EXPECT_GT(tried, 20);
    EXPECT_LT(missed, tried / 10);
    EXPECT_GT(farthest, 2.0);  // the bend shows
    EXPECT_EQ(s.engine.viewportToWorld(QPointF(3, 3)), s.engine.fromViewportTo3dWorld(QPointF(3, 3)));
}

TEST(FaultViewerEngine, PickingProjectionIsWiderAndEraseModePutsTheFirstPointUnderTheMouse)
{
    Shown s;
    ASSERT_TRUE(s.show());
    const QSize plain = s.engine.imageSize();
    s.engine.setMouseMode(ZNFaultViewerEngine::eraseModeName(), true);
    s.actions.clear();
    const QPointF mouse(250.0, 220.0);
    ASSERT_TRUE(s.engine.project3DFaultPatchForPicking(&s.scene.set, 1, mouse));
    EXPECT_TRUE(s.actions.contains(QStringLiteral("UPDATE_CAPTION")));
    EXPECT_TRUE(s.actions.contains(QStringLiteral("FRAME_CHANGED")));
    EXPECT_GT(s.engine.imageSize().width(), plain.width());  // margins beyond the mesh
    const QPointF first = at(s.engine, s.scene.surface->getPickedPoints()[0].position());
    EXPECT_NEAR(first.x(), mouse.x(), 1e-6);
    EXPECT_NEAR(first.y(), mouse.y(), 1e-6);
    // After an edit: projected again, the view kept.
    const QRect area = QRect(QPoint(0, 0), s.engine.viewportSize()).marginsRemoved(s.engine.margins());
    s.engine.zoomAt(area.center(), 2.0);
    const double scale = s.engine.scaleAcross();
    const core::vec3 middle = s.engine.ZNBlocViewerEngine::viewportToWorld(area.center());
    s.actions.clear();
    ASSERT_TRUE(s.engine.project3DFaultPatchForPicking());
    EXPECT_EQ(s.actions.last(), QStringLiteral("UPDATE_VIEWER_OBJECT"));
    EXPECT_FALSE(s.engine.isFitted());
    EXPECT_DOUBLE_EQ(s.engine.scaleAcross(), scale);
    const QPointF stillThere = at(s.engine, middle);
    EXPECT_NEAR(stillThere.x(), area.center().x(), 1e-6);
    EXPECT_NEAR(stillThere.y(), area.center().y(), 1e-6);
}

// ----- data mapping -----

TEST(FaultViewerEngine, MappedDataFollowsTheInlineNumberAlongTheFault)
{
    Shown s;
    ASSERT_TRUE(s.show());
    const auto data = faultviewer::volume([](int i, int, int) { return float(1000 + i); });
    RecordingProgress progress;
    s.actions.clear();
    ASSERT_TRUE(s.engine.extractData(data.get(), -1));
    EXPECT_EQ(progress.titles, QStringList{QStringLiteral("Map data on fault plane")});
    EXPECT_TRUE(s.actions.contains(QStringLiteral("UPDATE_PALETTE_MANAGER")));
    const img::Image& mapped = s.engine.mappedImage();
    const core::vec3 normal = s.engine.getWorldMouseAxe();
    // Offsets along the normal move up to 2.1 voxels; the normal's inline part shifts
    // the inline by at most that much, and rounding by half a voxel.
    const double normalInline = std::fabs(faultviewer::survey().getFromWorldToBlocMatrix().transformVector(normal).x) /
                                faultviewer::survey().getFromWorldToBlocMatrix().transformVector(normal).length();
    int checked = 0;
    for (int r = 0; r < mapped.height(); ++r)
        for (int c = 0; c < mapped.width(); ++c) {
            if (mapped(c, r) == -9999.0f) continue;
            const core::vec3 world = s.engine.blocToWorld({double(c), double(r), 0.0});
            const double inline_ = faultviewer::survey().worldToBloc(world).x;
            EXPECT_LE(std::fabs(mapped(c, r) - (1000.0 + inline_)), 2.1 * normalInline + 1.0) << c << "," << r;
            ++checked;
        }
    EXPECT_GE(checked, countIndex(s.engine.indexImage(), 1) * 95 / 100);
    // The viewer shows the mapped samples now.
    const img::Image* samples = s.engine.sectionSamples();
    ASSERT_TRUE(samples);
    EXPECT_EQ((*samples)(mapped.width() / 2, mapped.height() / 2), mapped(mapped.width() / 2, mapped.height() / 2));
}

TEST(FaultViewerEngine, DataOfAnotherVerticalDomainIsRefusedWithAMessageBox)
{
    Shown s;
    ASSERT_TRUE(s.show());
    RecordingMessageBox boxes;
    const auto depth = faultviewer::volume([](int, int, int) { return 1.0f; }, georef::UnitObject());
    EXPECT_FALSE(s.engine.extractData(depth.get(), -2));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown[0].title, QStringLiteral("Extract Data along Fault"));
    EXPECT_EQ(boxes.shown[0].text, QStringLiteral("Vertical domains not compatible"));
    for (std::size_t p = 0; p < s.engine.mappedImage().sampleCount(); ++p)
        ASSERT_EQ(s.engine.mappedImage().data()[p], -9999.0f);
}
