// Planes, block spaces, projection images and sticks cut from the mesh of a 3D fault patch.
#include <gtest/gtest.h>

#include <memory>

#include <znmultipolygon.h>

#include "surfacefixtures.h"

using namespace surfacefixtures;

namespace {

// A meshed patch with fault id 7 on a staggered stick grid striking N30, dipping 60.
std::unique_ptr<ZN3DFaultPatch> meshedPatch(int method = ZN3DFaultPatch::MinimumEnvelop)
{
    StickGrid g;
    g.stagger = 1;
    auto patch = std::make_unique<ZN3DFaultPatch>();
    patch->setFaultId(7);
    mesh(*patch, g.picks(), method);
    return patch;
}

int countPixels(const img::Image& image, float value)
{
    int n = 0;
    for (size_t i = 0; i < image.sampleCount(); ++i) n += image.data()[i] == value;
    return n;
}

double columnLength(const core::mat4& m, int c)
{
    return core::vec3(m(0, c), m(1, c), m(2, c)).length();
}

} // namespace

TEST(FaultProjection, MeshImageHoldsTheFaultIdUnderTheMeshOnly)
{
    const auto patch = meshedPatch();
    georef::BlocSpace space;
    core::mat4 matrix;
    const std::unique_ptr<img::Image> image(patch->getProjectionImage(space, matrix, 1.0));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width(), space.nx());
    EXPECT_EQ(image->height(), space.ny());
    EXPECT_EQ(matrix, space.getFromBlocToWorldMatrix());
    EXPECT_EQ(countPixels(*image, 7.0f) + countPixels(*image, -9999.0f), static_cast<int>(image->sampleCount()));
    EXPECT_GT(countPixels(*image, -9999.0f), 0);  // the notches between staggered sticks
    for (const core::PointWithBool& p : patch->getPickedPoints()) {
        if (p.isSeparator()) continue;
        const core::vec3 g = space.worldToBloc(p.position());
        EXPECT_NEAR(g.z, 0.0, 1e-6);  // the layer lies in the fault's plane
        EXPECT_EQ(image->value(static_cast<int>(std::lround(g.x)), static_cast<int>(std::lround(g.y)), 0.0f), 7.0f);
    }
}

TEST(FaultProjection, LateralStepHasALowerBoundOnlyInThePickedPointImage)
{
    auto patch = meshedPatch();
    patch->setUtmPrecision(20);
    georef::BlocSpace meshSpace, pickSpace;
    core::mat4 matrix;
    const std::unique_ptr<img::Image> meshImage(patch->getProjectionImage(meshSpace, matrix, 2.0));
    const std::unique_ptr<img::Image> pickImage(patch->getProjectionImageFromPickedPoint(&pickSpace, nullptr));
    ASSERT_TRUE(meshImage && pickImage);
    EXPECT_NEAR(columnLength(matrix, 0), 40.0, 1e-9);
    EXPECT_NEAR(columnLength(matrix, 1), 50.0, 1e-9);  // Z sampling 25 x 2
    EXPECT_NEAR(columnLength(pickSpace.getFromBlocToWorldMatrix(), 0), 50.0, 1e-9);
    EXPECT_NEAR(columnLength(pickSpace.getFromBlocToWorldMatrix(), 1), 25.0, 1e-9);
}

TEST(FaultProjection, PickedPointImageFillsTheMeshingPolygonOrDrawsTheSticks)
{
    const auto patch = meshedPatch();
    patch->setUtmPrecision(50);  // two columns per stick spacing
    georef::BlocSpace space;
    ZNMultiPolygon polygon;
    const std::unique_ptr<img::Image> filled(patch->getProjectionImageFromPickedPoint(&space, &polygon));
    const std::unique_ptr<img::Image> sticks(patch->getProjectionImageFromPickedPoint(nullptr, nullptr));
    ASSERT_TRUE(filled && sticks);
    EXPECT_EQ(polygon.getNumberOfPolygon(), 1);
    int inside = 0;
    for (size_t i = 0; i < filled->sampleCount(); ++i)
        if (filled->data()[i] != -9999.0f) {
            EXPECT_NEAR(filled->data()[i], 0.0, 1e-6);  // a plane: no height over itself
            ++inside;
        }
    EXPECT_GT(inside, countPixels(*sticks, 0.0f) - 1);
    EXPECT_GT(countPixels(*sticks, -9999.0f), countPixels(*filled, -9999.0f));
}

TEST(FaultProjection, NoImageWithoutWhatItIsMadeFrom)
{
    ZN3DFaultPatch oneStick;
    StickGrid g;
    g.sticks = 1;
    oneStick.setPickedPoints(g.picks());
    georef::BlocSpace space;
    core::mat4 matrix;
    EXPECT_EQ(oneStick.getProjectionImageFromPickedPoint(&space, nullptr), nullptr);
    EXPECT_EQ(oneStick.getProjectionImage(space, matrix, 1.0), nullptr);  // no facette
    const auto patch = meshedPatch();
    EXPECT_EQ(patch->getProjectionImage(space, matrix, 0.0), nullptr);
    EXPECT_EQ(space, georef::BlocSpace());
}

TEST(FaultProjection, PickingImageReachesBeyondTheMeshAndShowsSticksWithoutOne)
{
    const auto patch = meshedPatch();
    georef::BlocSpace meshSpace, pickSpace;
    core::mat4 matrix;
    const std::unique_ptr<img::Image> meshImage(patch->getProjectionImage(meshSpace, matrix, 1.0));
    const std::unique_ptr<img::Image> pickImage(patch->getProjectionImageForPicking(pickSpace, matrix));
    ASSERT_TRUE(meshImage && pickImage);
    EXPECT_EQ(pickSpace.nx(), meshSpace.nx() + 2 * ZN3DFaultPatch::kPickingMarginCells);
    EXPECT_EQ(pickSpace.ny(), meshSpace.ny() + 2 * ZN3DFaultPatch::kPickingMarginCells);

    ZN3DFaultPatch unmeshed;
    unmeshed.setFaultId(3);
    unmeshed.setPickedPoints(StickGrid().picks());
    const std::unique_ptr<img::Image> sticks(unmeshed.getProjectionImageForPicking(pickSpace, matrix));
    ASSERT_TRUE(sticks);
    EXPECT_GT(countPixels(*sticks, 3.0f), 0);
}

TEST(FaultPlanes, OverloadsFitTheirOwnPoints)
{
    const StickGrid g;
    ZN3DFaultPatch patch;
    patch.setPickedPoints(g.picks());
    const core::vec3 n = normalOf(g.strike, g.dip);
    EXPECT_NEAR(std::fabs(patch.getFaultPlane().normal.dot(n)), 1.0, 1e-9);
    EXPECT_NEAR(std::fabs(ZN3DFaultPatch::getFaultPlane(g.picks()).normal.dot(n)), 1.0, 1e-9);
    const geom::Plane moved = patch.getFaultPlane(core::mat4::translation({10, 20, 30}));
    EXPECT_NEAR(moved.point.y - patch.getFaultPlane().point.y, 20.0, 1e-9);
    core::Array<core::vec3> two;
    two.add({0, 0, 0});
    EXPECT_FALSE(ZN3DFaultPatch::getFaultPlane(two).isValid());
    core::mat4 regression;
    ASSERT_TRUE(patch.getFaultMeshingRegressionMatrix(regression));
    EXPECT_NEAR(regression.transformVector({0, 0, 1}).dot(n), 1.0, 1e-9);  // w along the normal
    EXPECT_NEAR(regression.transformVector({1, 0, 0}).dot(strikeOf(g.strike)), 1.0, 1e-9);
}

TEST(FaultSticksFromMesh, EveryFifthColumnGivesOneStickAcrossTheFault)
{
    StickGrid g;
    g.sticks = 12;
    ZN3DFaultPatch patch;
    patch.SetFaultName(QStringLiteral("F9"));
    mesh(patch, g.picks(), ZN3DFaultPatch::MinimumEnvelop);
    const georef::BlocSpace space = patch.getFaultBlocSpace();  // 100 m columns: 12 of them
    core::Array<ZNFaultStick> sticks;
    ASSERT_EQ(patch.getFaultStick(space, sticks, 5), 2);  // columns 2 and 7 (12 is past the end)
    ASSERT_EQ(space.nx(), 12);
    const double top = g.at(0, 0).y, bottom = g.at(0, (g.points - 1) * g.step).y;
    for (int k = 0; k < sticks.size(); ++k) {
        EXPECT_EQ(sticks[k].firstIndex(), 2 + 5 * k);
        EXPECT_EQ(sticks[k].GetFaultName(), QStringLiteral("F9"));
        EXPECT_NEAR(sticks[k].start().y, top, 1e-6);
        EXPECT_NEAR(sticks[k].end().y, bottom, 1e-6);
        EXPECT_LT(distanceToMesh(patch, (sticks[k].start() + sticks[k].end()) * 0.5), 1e-6);
    }
}
