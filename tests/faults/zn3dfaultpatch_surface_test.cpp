// Surfaces of the 3D fault patch checked geometrically, and its normal and angles.
#include <gtest/gtest.h>

#include <core/conventions.h>
#include <surface/gridsurface.h>

#include "surfacefixtures.h"

using namespace surfacefixtures;

namespace {

struct PlaneCase {
    const char* name;
    double strike, dip;
};
const PlaneCase kPlanes[] = {
    {"vertical, striking north", 0.0, 90.0},
    {"striking N30, dipping 60", 30.0, 60.0},
    {"dipping 30 to the north-west", 225.0, 30.0},
    {"dipping 80 to the south", 90.0, 80.0},
};
const int kMethods[] = {ZN3DFaultPatch::ConvexEnvelop, ZN3DFaultPatch::MinimumEnvelop};

double envelopeArea(const StickGrid& g)
{
    double area = 0.0;
    for (int k = 0; k + 1 < g.sticks; ++k) {
        const double left = (g.points - 1 - 2 * g.shift(k)) * g.step;
        const double right = (g.points - 1 - 2 * g.shift(k + 1)) * g.step;
        area += 0.5 * (left + right) * g.spacing;
    }
    return area;
}

} // namespace

TEST(FaultSurface, BothMethodsPassThroughEveryStickPointOfAPlaneAndGiveItsUpwardNormal)
{
    for (const PlaneCase& c : kPlanes)
        for (int method : kMethods) {
            SCOPED_TRACE(testing::Message() << c.name << ", method " << method);
            StickGrid g;
            g.strike = c.strike;
            g.dip = c.dip;
            ZN3DFaultPatch patch;
            mesh(patch, g.picks(), method);
            ASSERT_GT(patch.getNumberOfFacettes(), 0);
            EXPECT_LT(farthestPoint(patch, g.picks()), 1e-6);
            const core::vec3 n = patch.getNormal();
            EXPECT_NEAR(n.dot(normalOf(c.strike, c.dip)), 1.0, 1e-9);
            EXPECT_LE(n.y, 0.0);
            const double strike = ZN3DFaultPatch::getFaultPlaneAzimuthAngle(n);
            EXPECT_NEAR(std::remainder(strike - c.strike, 360.0), 0.0, 1e-6);
            EXPECT_NEAR(ZN3DFaultPatch::getDipAngle(n), c.dip, 1e-6);
            EXPECT_NEAR(patch.getScaledNormal(1.0).dot(n), 1.0, 1e-12);
        }
}

TEST(FaultSurface, BentSticksStayOnTheMeshOfEitherMethod)
{
    // A bend of 80 m over 400 m (curvature 0.001 / m). The convex method interpolates
    // linearly on 100 m cells, which alone misses by up to 100^2 x 0.001 / 4 = 2.5 m, and
    // its smoothing flattens the bend further.
    const struct {
        int method, smoothFactor;
        double tolerance;  // metres
    } cases[] = {{ZN3DFaultPatch::MinimumEnvelop, 7, 1e-6},
                 {ZN3DFaultPatch::ConvexEnvelop, 1, 2.5},
                 {ZN3DFaultPatch::ConvexEnvelop, 7, 10.0}};
    for (const auto& c : cases) {
        StickGrid g;
        g.bend = 0.2;
        ZN3DFaultPatch patch;
        patch.setFilterSize(c.smoothFactor);
        mesh(patch, g.picks(), c.method);
        EXPECT_LT(farthestPoint(patch, g.picks()), c.tolerance) << c.method << " " << c.smoothFactor;
    }
}

TEST(FaultSurface, AreaOfAPlanarRectangleOfSticksIsWithinOnePercent)
{
    for (int method : kMethods) {
        StickGrid g;  // 70 m between sticks: grid lines do not meet the rectangle's sides
        g.spacing = 70.0;
        g.sticks = 8;
        ZN3DFaultPatch patch;
        mesh(patch, g.picks(), method);
        const double truth = (g.sticks - 1) * g.spacing * (g.points - 1) * g.step;
        EXPECT_NEAR(patch.getComputedArea() * ZN3DFaultPatch::kAreaScale, truth, 0.01 * truth) << method;
    }
}

TEST(FaultSurface, MinimumEnvelopFollowsStaggeredStickEndsWhereTheConvexOneDoesNot)
{
    StickGrid g;
    g.stagger = 1;
    g.strike = 0.0;
    g.dip = 90.0;  // plane coordinates: a = world z - origin z, b = world y - origin y
    ZN3DFaultPatch minimum, convex;
    mesh(minimum, g.picks(), ZN3DFaultPatch::MinimumEnvelop);
    mesh(convex, g.picks(), ZN3DFaultPatch::ConvexEnvelop);
    EXPECT_NEAR(minimum.getComputedArea() * ZN3DFaultPatch::kAreaScale, envelopeArea(g), 1e-6 * envelopeArea(g));
    EXPECT_GT(convex.getComputedArea() * ZN3DFaultPatch::kAreaScale, 1.05 * envelopeArea(g));

    const auto& v = minimum.getPoints();
    for (const ZNFacette& f : minimum.getFacettes()) {
        const core::vec3 c = (v[int(f.index[0])] + v[int(f.index[1])] + v[int(f.index[2])]) / 3.0;
        const double a = (c.z - g.origin.z) / g.spacing, b = (c.y - g.origin.y) / g.step;
        const int k = std::min(static_cast<int>(a), g.sticks - 2);
        const double t = a - k;  // between stick k and k + 1
        const double top = (1 - t) * g.shift(k) + t * g.shift(k + 1);
        ASSERT_GE(b, top - 1e-9) << "centroid above the sticks' tops";
        ASSERT_LE(b, g.points - 1 - top + 1e-9) << "centroid below the sticks' bottoms";
    }
}

TEST(FaultSurface, TimeSliceStickAmongDipSticksLiesOnTheSamePlane)
{
    StickGrid g;
    core::Array<core::PointWithBool> picks = g.picks();
    picks.add(core::PointWithBool::separator());
    for (int k = 0; k < 4; ++k) picks.add(core::PointWithBool(g.at(50.0 + 90.0 * k, 120.0)));
    for (int method : kMethods) {
        ZN3DFaultPatch patch;
        mesh(patch, picks, method);
        EXPECT_LT(farthestPoint(patch, picks), 1e-6) << method;
        EXPECT_NEAR(patch.getNormal().dot(normalOf(g.strike, g.dip)), 1.0, 1e-9) << method;
    }
}

TEST(FaultSurface, MinimumEnvelopRefinesToTheInterpolationSize)
{
    StickGrid g;
    ZN3DFaultPatch patch;
    patch.setInterpolationSize(20);
    mesh(patch, g.picks(), ZN3DFaultPatch::MinimumEnvelop);
    const auto& v = patch.getPoints();
    double longest = 0.0;
    for (const ZNFacette& f : patch.getFacettes())
        for (int k = 0; k < 3; ++k)
            longest = std::max(longest, (v[int(f.index[k])] - v[int(f.index[(k + 1) % 3])]).length());
    EXPECT_LE(longest, 20.0 * (1 + 1e-9));
    EXPECT_GT(patch.getNumberOfFacettes(), 2 * 400 * 250 / (20 * 20));
}

TEST(FaultSurface, ExtrapolationWidensTheMinimumEnvelopOnEverySide)
{
    StickGrid g;
    ZN3DFaultPatch patch;
    patch.setSpare(20);  // extrapolation, metres
    mesh(patch, g.picks(), ZN3DFaultPatch::MinimumEnvelop);
    const double width = (g.sticks - 1) * g.spacing + 40.0, height = (g.points - 1) * g.step + 40.0;
    EXPECT_NEAR(patch.getComputedArea() * ZN3DFaultPatch::kAreaScale, width * height, 1e-6 * width * height);
    EXPECT_LT(farthestPoint(patch, g.picks()), 1e-6);
}

TEST(FaultSurface, MeshIsLeftAsItIsWhenItMustNotBeComputed)
{
    const StickGrid g;
    const struct {
        const char* name;
        int method;
        bool meshing;
        int sticks;
    } cases[] = {{"one stick", 1, true, 1}, {"method 2", 2, true, 5}, {"meshing off", 1, false, 5}};
    for (const auto& c : cases) {
        ZN3DFaultPatch patch;
        mesh(patch, g.picks(), ZN3DFaultPatch::MinimumEnvelop);
        const int facettes = patch.getNumberOfFacettes();
        StickGrid other = g;
        other.sticks = c.sticks;
        other.origin = g.origin + core::vec3(500, 0, 0);
        patch.setMeshing(c.meshing);
        mesh(patch, other.picks(), c.method);
        EXPECT_EQ(patch.getNumberOfFacettes(), facettes) << c.name;
        EXPECT_LT(farthestPoint(patch, g.picks()), 1e-6) << c.name;
        EXPECT_EQ(patch.testValidity(), c.sticks >= 2) << c.name;
    }
}

TEST(FaultSurface, AutomaticPointsDoNotShapeTheMesh)
{
    const StickGrid g;
    core::Array<core::PointWithBool> picks = g.picks();
    picks.add(core::PointWithBool::separator());
    picks.add(core::PointWithBool(g.at(100, 100) + core::vec3(300, 0, 0), true));
    picks.add(core::PointWithBool(g.at(200, 100) + core::vec3(300, 0, 0), true));
    ZN3DFaultPatch patch;
    mesh(patch, picks, ZN3DFaultPatch::MinimumEnvelop);
    EXPECT_NEAR(patch.getNormal().dot(normalOf(g.strike, g.dip)), 1.0, 1e-9);
    EXPECT_LT(farthestPoint(patch, g.picks()), 1e-6);
}

TEST(FaultSurface, AFaultWithoutFacettesHasNoNormal)
{
    ZN3DFaultPatch patch;
    patch.setPickedPoints(StickGrid().picks());
    EXPECT_EQ(patch.getNormal(), core::vec3(-9999, -9999, -9999));
}

TEST(FaultAngles, SheetRulesOnNormals)
{
    const struct {
        core::vec3 normal;
        double dipDirection, strike, dip;
    } cases[] = {
        {{-9999, -9999, -9999}, -9999, -9999, -9999},
        {{0, -1, 0}, 180, 90, 0},             // flat: horizontal part below 0.001
        {{0.0004, -1, 0.0004}, 180, 90, 0.0324},
        {{0, 0, 1}, 360, 270, 90},            // north reads 360, not 0
        {{1, 0, 0}, 90, 0, 90},
        {{0, 0, -1}, 180, 90, 90},
        {{-1, 0, 0}, 270, 180, 90},
        {normalOf(30, 60), 120, 30, 60},
        {normalOf(300, 45), 30, 300, 45},
    };
    for (const auto& c : cases) {
        EXPECT_NEAR(ZN3DFaultPatch::getAzimuthAngle(c.normal), c.dipDirection, 1e-4) << c.normal.x;
        EXPECT_NEAR(ZN3DFaultPatch::getFaultPlaneAzimuthAngle(c.normal), c.strike, 1e-4) << c.normal.x;
        EXPECT_NEAR(ZN3DFaultPatch::getDipAngle(c.normal), c.dip, 1e-4) << c.normal.x;
    }
}

TEST(FaultSurface, SmoothingLengthIsOdd)
{
    const int cases[][2] = {{7, 7}, {8, 9}, {1, 1}, {0, 1}, {-3, 1}, {101, 101}};
    for (const auto& c : cases) EXPECT_EQ(fault::surface::oddFilterLength(c[0]), c[1]) << c[0];
}

TEST(FaultSurface, SetMeshReplacesTheMeshAndItsAreaWhetherCopiedOrTakenOver)
{
    struct Case {
        const char* name;
        std::vector<core::vec3> points;
        std::vector<std::array<uint32_t, 3>> facettes;
        double area;  // square metres; none without facettes
    };
    const Case cases[] = {
        {"a 10 m square in two triangles", {{0, 0, 0}, {10, 0, 0}, {10, 0, 10}, {0, 0, 10}}, {{0, 1, 2}, {0, 2, 3}}, 100.0},
        {"a facette naming a missing point, left out of the area", {{0, 0, 0}, {10, 0, 0}, {10, 0, 10}, {0, 0, 10}},
         {{0, 1, 2}, {0, 2, 7}}, 50.0},
        {"no facettes", {{0, 0, 0}}, {}, -1.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        core::Array<core::vec3> points;
        for (const core::vec3& p : c.points) points.add(p);
        core::Array<ZNFacette> facettes;
        for (const auto& t : c.facettes) {
            ZNFacette f;
            for (int k = 0; k < 3; ++k) f.index[k] = t[k];
            facettes.add(f);
        }
        ZN3DFaultPatch copied, taken;
        for (ZN3DFaultPatch* patch : {&copied, &taken}) mesh(*patch, StickGrid().picks(), ZN3DFaultPatch::MinimumEnvelop);
        copied.setMesh(points, facettes);
        EXPECT_EQ(points.size(), static_cast<int>(c.points.size()));  // the copy leaves them
        taken.setMesh(std::move(points), std::move(facettes));
        EXPECT_TRUE(points.empty() && facettes.empty());
        for (const ZN3DFaultPatch* patch : {&copied, &taken}) {
            ASSERT_EQ(patch->getNumberOfPoints(), static_cast<int>(c.points.size()));
            ASSERT_EQ(patch->getNumberOfFacettes(), static_cast<int>(c.facettes.size()));
            for (int i = 0; i < patch->getNumberOfPoints(); ++i) EXPECT_EQ(patch->getPoints()[i], c.points[i]);
            for (int i = 0; i < patch->getNumberOfFacettes(); ++i)
                for (int k = 0; k < 3; ++k) EXPECT_EQ(patch->getFacettes()[i].index[k], c.facettes[i][k]);
            if (c.area < 0.0)
                EXPECT_EQ(patch->getComputedArea(), core::kNoValueReal);
            else
                EXPECT_NEAR(patch->getComputedArea() * ZN3DFaultPatch::kAreaScale, c.area, 1e-9);
        }
    }
}

TEST(FaultSurface, FirstPicksOfAThirdStickOnAFarGeoreferencedSurveyMeshInBoundedTime)
{
    // Picks on a real survey (UTM coordinates, time in ms): two sticks of four points on
    // inlines 150 m apart, and the first point of a third, or that point added to the second.
    const double sticks[][3] = {{620303.479, 84.239, 6074310.862}, {620328.625, 143.892, 6074311.564},
                                {620353.072, 204.124, 6074312.247}, {620378.218, 263.776, 6074312.949},
                                {-9999, -9999, -9999},
                                {620299.292, 84.239, 6074460.801}, {620324.437, 143.892, 6074461.503},
                                {620348.884, 204.124, 6074462.186}, {620374.030, 263.776, 6074462.888}};
    for (bool newStick : {true, false})
        for (int method : kMethods) {
            SCOPED_TRACE(testing::Message() << "method " << method << (newStick ? ", new stick" : ""));
            core::Array<core::PointWithBool> points;
            for (const auto& p : sticks) points.add(core::PointWithBool(p[0], p[1], p[2]));
            if (newStick) points.add(core::PointWithBool(-9999, -9999, -9999));
            points.add(core::PointWithBool(620295.052, 84.239, 6074610.738));
            ZN3DFaultPatch patch;
            mesh(patch, points, method);
            EXPECT_GT(patch.getNumberOfFacettes(), 0);
            EXPECT_LT(patch.getNumberOfFacettes(), 100000);
        }
}
