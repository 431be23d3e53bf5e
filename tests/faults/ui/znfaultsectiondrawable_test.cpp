// The faults of a fault set over a section: sticks near the section and traces where the
// surfaces cut it, in the faults' colours.
#include <gtest/gtest.h>

#include <QPainter>

#include <pictures.h>
#include <zn3dfaultpatch.h>
#include <znfaultpatchmanager.h>
#include <znfaultsectiondrawable.h>
#include <znseismicblocviewerengine.h>
#include <znsectionviewer.h>

namespace {

using Kind = ZNBlocViewerEngine::SectionKind;

// A block of 20 x 20 x 20 unit voxels (world = block), zero everywhere.
std::shared_ptr<ZNBloc> zeroBloc()
{
    auto image = std::make_shared<ZN3DImage<float>>(georef::BlocSpace(20, 20, 20));
    auto bloc = std::make_shared<ZNBloc>();
    bloc->openImage(image);
    return bloc;
}

// A fault of three vertical sticks at y = 4, 10, 16 along the plane x = 2 + 0.5 * y (a
// fault striking across the inlines), meshed.
struct Scene {
    ZNFaultPatchManager set;
    std::unique_ptr<ZN3DFaultPatch> surface;
    Scene()
    {
        for (double y : {4.0, 10.0, 16.0}) {
            for (double z : {2.0, 10.0, 18.0}) set.addPickedPoint(1, core::PointWithBool(2 + 0.5 * y, y, z));
            set.addPickedPoint(1, core::PointWithBool::separator());
        }
        set.insertNewFaultLight(1)->setPen(QPen(QColor(220, 20, 20)));
        surface.reset(set.createPicked3DFaultPatch(set.findFaultLight(1)));
        surface->setInterpolationSize(5);
        surface->updateMeshWithPickedPoint();
    }
};

} // namespace

TEST(FaultSectionDrawable, AnInlineShowsTheTraceWhereTheSurfaceCutsItAndNoSticksFarFromIt)
{
    Scene scene;
    ASSERT_GT(scene.surface->getNumberOfFacettes(), 0);
    ZNSeismicBlocViewerEngine engine;
    engine.setBloc(zeroBloc());
    engine.setViewportSize(QSize(400, 400));
    engine.setSection(Kind::Inline, 7);  // x = 7: the plane is at y = 10
    engine.fit();
    ZNFaultSectionDrawable faults(&scene.set, [&](int) { return scene.surface.get(); }, [](int) { return true; });
    faults.setBand(2.0);  // the outer sticks lie 3 inlines away
    const auto lines = faults.linesOn(engine);
    ASSERT_EQ(lines.size(), 1u);
    ASSERT_FALSE(lines[0].trace.empty());
    for (const QLineF& l : lines[0].trace)
        for (const QPointF& p : {l.p1(), l.p2()}) EXPECT_NEAR(engine.viewportToImage(p).x(), 10.0, 0.05);
    EXPECT_EQ(lines[0].points.size(), 3u);  // the middle stick lies on the inline
    EXPECT_EQ(lines[0].sticks.size(), 2u);
    EXPECT_EQ(faults.faultAt(engine.imageToViewport(QPointF(10, 5)), 3.0, engine), 1);
    EXPECT_EQ(faults.faultAt(engine.imageToViewport(QPointF(2, 5)), 3.0, engine), -9999);
    faults.setBand(3.0);
    EXPECT_EQ(faults.linesOn(engine)[0].points.size(), 9u);  // within the band: all three sticks

    engine.setSection(Kind::Inline, 15);  // beyond the fault: no trace, no sticks
    EXPECT_TRUE(faults.linesOn(engine).empty());
    engine.setSection(Kind::Slice, 10);   // a time slice cuts it along its strike
    const auto slice = faults.linesOn(engine);
    ASSERT_EQ(slice.size(), 1u);
    EXPECT_FALSE(slice[0].trace.empty());
    ZNFaultSectionDrawable hidden(&scene.set, [&](int) { return scene.surface.get(); }, [](int) { return false; });
    EXPECT_TRUE(hidden.linesOn(engine).empty());
}

TEST(FaultSectionDrawable, TheTraceIsPaintedInTheFaultsColourWhereItCutsTheSection)
{
    Scene scene;
    auto engine = std::make_unique<ZNSeismicBlocViewerEngine>();
    engine->setBloc(zeroBloc());
    engine->setManualRange(-1.0f, 1.0f);
    engine->setSection(Kind::Crossline, 10);  // y = 10: the plane is at x = 7
    ZNSeismicBlocViewerEngine* e = engine.get();
    auto faults = std::make_shared<ZNFaultSectionDrawable>(&scene.set, [&](int) { return scene.surface.get(); },
                                                           [](int) { return true; });
    e->addDrawable(faults);
    ZNSectionViewer viewer(std::move(engine));
    viewer.resize(400, 400);
    viewer.show();
    const QImage picture = viewer.grab().toImage();
    picturetest::keepPicture(picture, "section_fault_trace");
    const QColor red(220, 20, 20);
    const QPointF top = e->imageToViewport(QPointF(7, 3));
    const QPointF bottom = e->imageToViewport(QPointF(7, 17));
    const QRect onTrace = QRectF(top - QPointF(4, 0), bottom + QPointF(4, 0)).toRect();
    const QRect elsewhere = QRectF(e->imageToViewport(QPointF(12, 3)), e->imageToViewport(QPointF(18, 17))).toRect();
    EXPECT_GT(picturetest::countPixels(picture, onTrace, picturetest::near(red, 40)), onTrace.height() / 2);
    EXPECT_EQ(picturetest::countPixels(picture, elsewhere, picturetest::near(red, 40)), 0);
}
