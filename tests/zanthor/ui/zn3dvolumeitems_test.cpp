// A volume's items in the 3D view, placed where the section viewers show the same data.
#include <gtest/gtest.h>

#include <memory>

#include <zn3dviewerengine.h>
#include <zn3dvolumeitems.h>
#include <znbloc.h>

#include "testgeometry.h"

namespace {

using Kind = ZN3DVolumeItems::SectionKind;
constexpr int kNx = 7, kNy = 5, kNz = 9;

// A survey rotated on the map: inline steps 3 m east and 4 m north, crossline steps 8 m
// west and 6 m north, samples 4 ms down from 1000 ms.
georef::BlocSpace rotatedSurvey()
{
    core::mat4 m = core::mat4::translation({612000.0, 1000.0, 6540000.0});
    m(0, 0) = 3.0, m(2, 0) = 4.0;   // inline
    m(0, 1) = -8.0, m(2, 1) = 6.0;  // crossline
    m(1, 1) = 0.0, m(2, 2) = 0.0;
    m(1, 2) = 4.0;                  // sample
    return georef::BlocSpace(kNx, kNy, kNz, m);
}

std::shared_ptr<ZNBloc> blocOf(const georef::BlocSpace& space)
{
    auto image = std::make_shared<ZN3DImage<float>>(space);
    auto bloc = std::make_shared<ZNBloc>();
    bloc->openImage(image, georef::UnitObject(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond));
    return bloc;
}

} // namespace

TEST(VolumeItems, SectionPlanesPutEachPixelOnTheVoxelTheSectionViewerShowsThere)
{
    const georef::BlocSpace space = rotatedSurvey();
    ZNBlocViewerEngine viewer;
    viewer.setBloc(blocOf(space));
    for (Kind kind : {Kind::Inline, Kind::Crossline, Kind::Slice}) {
        SCOPED_TRACE(int(kind));
        ASSERT_TRUE(viewer.setSection(kind, 3) || viewer.sectionIndex() == 3);
        std::array<core::vec3, 4> c;
        ASSERT_TRUE(ZN3DVolumeItems::sectionCorners(space, kind, 3, c));
        const QSize size = viewer.imageSize();
        for (int column : {0, 2, size.width() - 1})
            for (int row : {0, 3, size.height() - 1}) {
                // The pixel's centre on the textured plane, by the corners.
                const double u = (column + 0.5) / size.width(), v = (row + 0.5) / size.height();
                const core::vec3 onPlane = c[0] + (c[1] - c[0]) * u + (c[3] - c[0]) * v;
                const core::vec3 shown = space.blocToWorld(viewer.imageToBloc(QPointF(column, row)));
                expectNear(onPlane, shown, 1e-6);
            }
        // The fourth corner closes the parallelogram.
        expectNear(c[2], c[1] + c[3] - c[0], 1e-6);
        const ZN3DSectionItem item = ZN3DVolumeItems::section(space, kind, 3, QImage(4, 4, QImage::Format_RGB32));
        expectNear(item.corners[2], c[2], 0.0);
    }
}

TEST(VolumeItems, NoSectionForARandomLineOrAnEmptyBlock)
{
    std::array<core::vec3, 4> corners;
    corners.fill({1, 2, 3});
    EXPECT_FALSE(ZN3DVolumeItems::sectionCorners(rotatedSurvey(), Kind::RandomLine, 0, corners));
    EXPECT_FALSE(ZN3DVolumeItems::sectionCorners(georef::BlocSpace(), Kind::Inline, 0, corners));
    expectNear(corners[0], {1, 2, 3}, 0.0);
    ZN3DScene scene;
    scene.setItem(1, ZN3DVolumeItems::section(georef::BlocSpace(), Kind::Inline, 0, QImage()));
    EXPECT_TRUE(scene.item(1)->box.isEmpty());
    scene.setItem(2, ZN3DVolumeItems::outline(georef::BlocSpace(), {}));
    EXPECT_TRUE(scene.item(2)->box.isEmpty());
}

TEST(VolumeItems, TheOutlineFollowsTheBlocksOuterEdgesWithItsAxesLabelled)
{
    const georef::BlocSpace space = rotatedSurvey();
    const ZN3DBoxItem box = ZN3DVolumeItems::outline(
        space, {ZN3DBoxItem::Axis{"Inline", 10, 16}, {"Crossline", 100, 104}, {"Time", 1000, 1032}}, Qt::yellow);
    expectNear(box.corners[0], space.blocToWorld({-0.5, -0.5, -0.5}), 1e-6);
    expectNear(box.corners[7], space.blocToWorld({kNx - 0.5, kNy - 0.5, kNz - 0.5}), 1e-6);
    // Edges along the first axis run along the inlines' direction.
    expectNear(box.corners[5] - box.corners[4], core::vec3(3, 0, 4) * kNx, 1e-6);
    expectNear(box.corners[6] - box.corners[4], core::vec3(-8, 0, 6) * kNy, 1e-6);
    ZN3DViewerEngine engine;
    engine.setViewport(500, 400);
    engine.scene().setItem(1, box);
    std::vector<QString> texts;
    for (const ZN3DViewerEngine::Label& label : engine.labels()) {
        texts.push_back(label.text);
        EXPECT_EQ(label.colour, QColor(Qt::yellow));
    }
    EXPECT_EQ(texts.size(), 9u);
    for (const char* text : {"Inline", "10", "16", "Crossline", "100", "104", "Time", "1000", "1032"})
        EXPECT_NE(std::find(texts.begin(), texts.end(), QString(text)), texts.end()) << text;
}
