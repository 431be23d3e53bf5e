#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <synthetic/strikedip.h>
#include <zn3dfaultpatch.h>
#include <synthetic/syntheticvolume.h>

using core::vec3;
using namespace fault::synthetic;

namespace {
// The fault sheet's "Fault Strike" of a plane: it reads the normal turned up.
double sheetStrike(vec3 n)
{
    if (n.y > 0) n = -n;
    return ZN3DFaultPatch::getFaultPlaneAzimuthAngle(n / n.length());
}

double circularGap(double a, double b)
{
    const double d = std::fmod(std::fabs(a - b), 360.0);
    return std::min(d, 360.0 - d);
}
} // namespace

TEST(StrikeDip, StrikeAndDipSurviveTheTripThroughTheNormalEitherWayUp)
{
    for (double strike : {0.0, 30.0, 90.0, 135.0, 200.0, 315.0})
        for (double dip : {5.0, 45.0, 80.0}) {
            const vec3 n = worldNormalOfStrikeDip({strike, dip});
            EXPECT_LE(n.y, 0.0);
            EXPECT_NEAR(n.length(), 1.0, 1e-12);
            for (const vec3& normal : {n, -n * 3.0}) {
                const StrikeDip back = strikeDipOfWorldNormal(normal);
                EXPECT_NEAR(circularGap(back.strike, strike), 0.0, 1e-9) << strike << " " << dip;
                EXPECT_NEAR(back.dip, dip, 1e-9);
            }
        }
}

TEST(StrikeDip, AgreesWithTheFaultSheetOnRandomNormals)
{
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> c(-1.0, 1.0);
    for (int i = 0; i < 500; ++i) {
        const vec3 n(c(rng), c(rng), c(rng));
        const StrikeDip sd = strikeDipOfWorldNormal(n);
        EXPECT_NEAR(circularGap(sd.strike, sheetStrike(n)), 0.0, 1e-9) << i;
        EXPECT_NEAR(sd.dip, 90.0 + std::asin(-std::fabs(n.y) / n.length()) * 180.0 / M_PI, 1e-9);
    }
}

TEST(StrikeDip, ReadsCompassDirectionsOnTheWorldAxes)
{
    // World x east, z north, y down. A plane dipping 30 degrees to the east strikes north.
    const double d = 30.0 * M_PI / 180.0;
    const StrikeDip east = strikeDipOfWorldNormal({std::sin(d), -std::cos(d), 0.0});
    EXPECT_NEAR(east.strike, 0.0, 1e-9);
    EXPECT_NEAR(east.dip, 30.0, 1e-9);
    const StrikeDip north = strikeDipOfWorldNormal({0.0, -std::cos(d), std::sin(d)});
    EXPECT_NEAR(north.strike, 270.0, 1e-9);
    const StrikeDip flat = strikeDipOfWorldNormal({0.0, 2.0, 0.0});
    EXPECT_EQ(flat.strike, 90.0);
    EXPECT_EQ(flat.strike, sheetStrike({0.0, 2.0, 0.0}));
    EXPECT_EQ(flat.dip, 0.0);
    const StrikeDip vertical = strikeDipOfWorldNormal({0.0, 0.0, -1.0});
    EXPECT_DOUBLE_EQ(vertical.dip, 90.0);
    EXPECT_NEAR(circularGap(vertical.strike, 90.0), 0.0, 1e-9);
}

TEST(StrikeDip, UndefinedNormalsGiveNoValue)
{
    for (const vec3& n : {vec3(0, 0, 0), vec3(NAN, 0, 1), vec3(INFINITY, 0, 0)}) {
        const StrikeDip sd = strikeDipOfWorldNormal(n);
        EXPECT_EQ(sd.strike, -9999.0);
        EXPECT_EQ(sd.dip, -9999.0);
    }
}

TEST(StrikeDip, GridNormalsMapToWorldNormalsOfTheSamePlane)
{
    // A sheared, scaled block space: a normal must stay perpendicular to every in-plane
    // direction after both are taken to world space.
    core::mat4 m;
    m.m[0] = 12.5; m.m[1] = 3.0; m.m[3] = 600000.0;
    m.m[6] = 4.0;  m.m[7] = 8.0;
    m.m[8] = -2.0; m.m[9] = 25.0; m.m[11] = 6070000.0;
    const georef::BlocSpace space(10, 10, 10, m);
    const vec3 gridNormal = vec3(1, 2, -3).normalized();
    const vec3 inPlane1 = vec3(2, -1, 0);
    const vec3 inPlane2 = vec3(3, 0, 1);
    const vec3 world = gridNormalToWorld(gridNormal, space);
    EXPECT_NEAR(world.dot(m.transformVector(inPlane1)), 0.0, 1e-9);
    EXPECT_NEAR(world.dot(m.transformVector(inPlane2)), 0.0, 1e-9);
    const vec3 back = worldNormalToGrid(world, space);
    EXPECT_NEAR((back - gridNormal).length(), 0.0, 1e-12);
}

TEST(StrikeDip, SyntheticGridReadsStrikeFromTheCrosslineAxis)
{
    const georef::BlocSpace space = syntheticBlocSpace(4, 4, 4);
    // A plane containing the crossline axis, dipping towards +inline at 60 degrees.
    const double d = 60.0 * M_PI / 180.0;
    const vec3 gridNormal(std::sin(d), 0.0, -std::cos(d));
    const StrikeDip sd = strikeDipOfWorldNormal(gridNormalToWorld(gridNormal, space));
    EXPECT_NEAR(sd.strike, 0.0, 1e-9);
    EXPECT_NEAR(sd.dip, 60.0, 1e-9);
}

TEST(StrikeDip, OrientationErrorReadsNearVerticalPlanesEitherWay)
{
    struct Case {
        StrikeDip reference, measured;
        double strikeError, dipError;
    };
    const Case cases[] = {
        {{40, 60}, {40, 60}, 0, 0},
        {{350, 60}, {10, 55}, 20, 5},
        {{0, 88}, {180, 88}, 0, 4},       // the same steep plane, normal flipped
        {{0, 40}, {170, 40}, 170, 0},     // a different plane, read as given
        {{90, 90}, {270, 90}, 0, 0},
    };
    for (const Case& c : cases) {
        const OrientationError e = orientationError(c.reference, c.measured);
        EXPECT_NEAR(e.strike, c.strikeError, 1e-9)
            << c.reference.strike << "/" << c.measured.strike;
        EXPECT_NEAR(e.dip, c.dipError, 1e-9);
    }
    const OrientationError unset = orientationError({-9999.0, -9999.0}, {10, 10});
    EXPECT_EQ(unset.strike, -9999.0);
    EXPECT_EQ(unset.dip, -9999.0);
}
