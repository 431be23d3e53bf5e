#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include <znfaultpatch.h>

using core::vec3;

namespace {
// A square grid of n x n points on the plane through `origin` spanned by `u` and `v`.
ZNFaultPatch planeGrid(const vec3& origin, const vec3& u, const vec3& v, int n = 5)
{
    ZNFaultPatch p;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) p.addPoint(origin + u * i + v * j);
    return p;
}

const vec3 X(1, 0, 0), Y(0, 1, 0), Z(0, 0, 1);
} // namespace

TEST(FaultPatch, CovarianceOfFourPointsIsThePopulationCovariance)
{
    ZNFaultPatch p;
    for (const vec3& q : {vec3(0, 0, 0), vec3(1, 0, 0), vec3(0, 1, 0), vec3(1, 1, 0)}) p.addPoint(q);
    const auto m = p.getPatchMatrix();
    const double expected[9] = {0.25, 0, 0, 0, 0.25, 0, 0, 0, 0};
    for (int i = 0; i < 9; ++i) EXPECT_DOUBLE_EQ(m[i], expected[i]) << i;
}

TEST(FaultPatch, CovarianceMatchesATwoPassComputationOnRandomPoints)
{
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> coord(-50.0, 50.0);
    std::vector<vec3> points;
    ZNFaultPatch p;
    for (int i = 0; i < 200; ++i) {
        points.emplace_back(coord(rng) + 1000.0, coord(rng), coord(rng) * 0.1);
        p.addPoint(points.back());
    }
    vec3 mean;
    for (const vec3& q : points) mean += q;
    mean = mean / points.size();
    double c[9] = {};
    for (const vec3& q : points) {
        const vec3 d = q - mean;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) c[3 * i + j] += d[i] * d[j] / points.size();
    }
    const auto m = p.getPatchMatrix();
    for (int i = 0; i < 9; ++i) EXPECT_NEAR(m[i], c[i], 1e-6) << i;
}

TEST(FaultPatch, ThreePointsOrFewerLeaveTheMatrixZero)
{
    ZNFaultPatch p;
    for (const vec3& q : {vec3(0, 0, 0), vec3(5, 1, 0), vec3(0, 7, 2)}) p.addPoint(q);
    const auto m = p.getPatchMatrix();
    for (int i = 0; i < 9; ++i) EXPECT_EQ(m[i], 0.0);
}

TEST(FaultPatch, EigenPairsAreOrderedFromGreatestToLeastSpread)
{
    // Long along x, shorter along z, flat in y.
    const ZNFaultPatch p = planeGrid({0, 0, 0}, X * 4.0, Z, 6);
    const vec3 sigma = p.getSigma();
    EXPECT_GT(sigma.x, sigma.y);
    EXPECT_NEAR(sigma.z, 0.0, 1e-12);
    const core::mat4 r = p.getRegressionMatrix();
    EXPECT_NEAR(std::fabs(r.m[0]), 1.0, 1e-12);   // first row: x axis
    EXPECT_NEAR(std::fabs(r.m[6]), 1.0, 1e-12);   // second row: z axis
    EXPECT_NEAR(std::fabs(r.m[9]), 1.0, 1e-12);   // third row: y axis, the normal
    for (int i : {3, 7, 11, 12, 13, 14}) EXPECT_EQ(r.m[i], 0.0) << i;
    EXPECT_EQ(r.m[15], 1.0);
    EXPECT_NEAR(std::fabs(p.getNormal().y), 1.0, 1e-12);
}

TEST(FaultPatch, DipAnglesOfVerticalHorizontalAndInclinedPlanes)
{
    struct Case {
        const char* what;
        vec3 u, v;
        double dip;
    };
    const double s = std::sqrt(0.5);
    const Case cases[] = {
        {"vertical (normal along z)", X, Y, 0.0},
        {"horizontal (normal along y)", X, Z, 90.0},
        {"inclined at 45 degrees", X, vec3(0, s, s), 45.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const ZNFaultPatch p = planeGrid({3, 4, 5}, c.u, c.v);
        EXPECT_NEAR(p.getDipAngle(), c.dip, 1e-9);
        const vec3 n = p.getNormal();
        EXPECT_NEAR(p.getDipAngleBis(), 90.0 + std::asin(n.y) * 180.0 / M_PI, 1e-9);
    }
    const ZNFaultPatch vertical = planeGrid({0, 0, 0}, X, Y);
    EXPECT_NEAR(vertical.getDipAngleBis(), 90.0, 1e-9);
    const double horizontalBis = planeGrid({0, 0, 0}, X, Z).getDipAngleBis();
    EXPECT_TRUE(std::fabs(horizontalBis) < 1e-6 || std::fabs(horizontalBis - 180.0) < 1e-6)
        << horizontalBis;
}

TEST(FaultPatch, MergeCostsOfSideBySideStackedAndPerpendicularPlanes)
{
    const ZNFaultPatch a = planeGrid({0, 0, 0}, X, Y);
    struct Case {
        const char* what;
        ZNFaultPatch b;
        double cost;
    };
    const Case cases[] = {
        {"coplanar, side by side", planeGrid({10, 0, 0}, X, Y), 1.0},
        {"parallel, stacked along the normal", planeGrid({0, 0, 10}, X, Y), 0.0},
        {"perpendicular", planeGrid({10, 0, 0}, Y, Z), 0.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_NEAR(a.getMergeCost(c.b), c.cost, 1e-9);
        EXPECT_NEAR(c.b.getMergeCost(a), c.cost, 1e-9);
    }
    EXPECT_NEAR(a.getNormalMergeCost(cases[1].b), 1.0, 1e-12);
    EXPECT_NEAR(a.getNormalMergeCost(cases[2].b), 0.0, 1e-12);
    EXPECT_NEAR(a.getDipAngleMergeCost(planeGrid({0, 0, 0}, X, Z)), 90.0, 1e-6);
}

TEST(FaultPatch, MergeCostNeedsFivePointsOnEachSide)
{
    const ZNFaultPatch big = planeGrid({0, 0, 0}, X, Y);
    ZNFaultPatch small;
    for (int i = 0; i < 4; ++i) small.addPoint({10.0 + i, double(i % 2), 0.0});
    EXPECT_EQ(big.getMergeCost(small), -1.0);
    EXPECT_EQ(small.getMergeCost(big), -1.0);
    small.addPoint({14, 0, 0});
    EXPECT_NE(big.getMergeCost(small), -1.0);
}

TEST(FaultPatch, SigmaMergeCostDividesTheSmallestEigenvalueByTheCountAgain)
{
    ZNFaultPatch p = planeGrid({0, 0, 0}, X, Y, 4);
    p.addPoint({1.5, 1.5, 2.0});
    p.addPoint({1.5, 1.5, -2.0});
    const double lambda3 = p.getSigma().z;
    ASSERT_GT(lambda3, 0.0);
    EXPECT_DOUBLE_EQ(p.getSigmaMergeCost(), 1.0 - lambda3 / p.getNbPoint());
}

TEST(FaultPatch, SumOfRecordsEqualsOneRecordOfAllPoints)
{
    ZNFaultPatch a = planeGrid({0, 0, 0}, X, Y, 3);
    ZNFaultPatch b = planeGrid({5, 1, 2}, X, Z, 4);
    ZNFaultPatch all = a;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) all.addPoint(vec3(5, 1, 2) + X * i + Z * j);
    const ZNFaultPatch sum = a + b;
    EXPECT_EQ(sum.getNbPoint(), 25);
    for (int i = 0; i < ZNFaultPatch::SumCount; ++i)
        EXPECT_DOUBLE_EQ(sum.getSums()[i], all.getSums()[i]) << i;
}

TEST(FaultPatch, SumTakesThe2dFlagFromTheRightAndEverythingElseFromTheLeft)
{
    ZNFaultPatch threeD = planeGrid({0, 0, 0}, X, Y, 3);
    ZNFaultPatch twoD = planeGrid({9, 0, 0}, X, Y, 3);
    twoD.setIs2dFaultPatch(true);
    threeD.setFather(7);
    threeD.setOrigin(1, 2, 3);
    twoD.setFather(8);
    EXPECT_TRUE((threeD + twoD).is2dFaultPatch());
    EXPECT_FALSE((twoD + threeD).is2dFaultPatch());
    const ZNFaultPatch sum = threeD + twoD;
    EXPECT_EQ(sum.getFather(), 7);
    int16_t x, y, z;
    sum.getOrigin(x, y, z);
    EXPECT_EQ(x + y + z, 6);
}

TEST(FaultPatch, InitAndClearKeepWhatTheyPromiseToKeep)
{
    ZNFaultPatch p = planeGrid({0, 0, 0}, X, Y, 3);
    georef::UnitObject units(georef::UnitObject::SpatialFoot, georef::UnitObject::VerticalMillisecond);
    p.SetUnitObject(units);
    p.setRect({1, 2, 3, 4});
    p.setIs2dFaultPatch(true);
    p.setOrigin(5, 6, 7);
    p.setSamplingVect({12.5, 4, 25});
    p.setFather(3);

    p.clearParameters();
    EXPECT_EQ(p.getNbPoint(), 0);
    for (int i = 0; i < ZNFaultPatch::SumCount; ++i) EXPECT_EQ(p.getSums()[i], 0.0);
    int16_t x, y, z;
    p.getOrigin(x, y, z);
    EXPECT_EQ(x, 5);
    EXPECT_EQ(p.getSamplingVect(), vec3(12.5, 4, 25));
    EXPECT_TRUE(p.is2dFaultPatch());

    p.init();
    p.getOrigin(x, y, z);
    EXPECT_EQ(x, -9999);
    EXPECT_EQ(z, -9999);
    EXPECT_FALSE(p.is2dFaultPatch());
    EXPECT_EQ(p.getSamplingVect(), vec3(100, 25, 100));
    EXPECT_EQ(p.getFather(), 3);
    EXPECT_EQ(p.getRect(), geom::Rect2d(1, 2, 3, 4));
    EXPECT_EQ(p.GetUnitObject(), units);
}

TEST(FaultPatch, HeaderCarriesOnlyTheCrs)
{
    ZNFaultPatch p;
    georef::UnitObject units(georef::UnitObject::SpatialFoot, georef::UnitObject::VerticalMillisecond);
    units.setCrs(georef::Crs::fromEpsg(32631));
    p.SetUnitObject(units);
    QDomDocument doc;
    const QDomElement header = p.createHeader(doc);
    EXPECT_EQ(header.tagName(), "ZNFaultPatch");
    EXPECT_EQ(header.childNodes().size(), 1);
    EXPECT_EQ(header.firstChildElement().tagName(), "ZNCrs");

    ZNFaultPatch q;
    q.getHeader(&header);
    EXPECT_EQ(q.unitObject().getCrs(), georef::Crs::fromEpsg(32631));
    EXPECT_EQ(q.unitObject().getVerticalUnit(), georef::UnitObject::VerticalMetre)
        << "units other than the CRS are not read";
    q.getHeader(static_cast<const QDomElement*>(nullptr));
    EXPECT_EQ(q.unitObject().getCrs(), georef::Crs::fromEpsg(32631));
    EXPECT_EQ(q.getZNObjectType(), "ZNFaultPatch");
}
