// The fault set's 3D fault patches and the mesh section of its file.
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include <QTemporaryDir>

#include <surface/meshingdomain.h>
#include <testfiles.h>
#include <testservices.h>
#include <znfaultpatchmanager.h>

#include "surfacefixtures.h"

using namespace surfacefixtures;

namespace {

// A fault set of two faults (patches 1 and 2), each a stick grid.
std::unique_ptr<ZNFaultPatchManager> twoFaults()
{
    core::MultiArray<core::vec3> rows(2);
    for (int f = 0; f < 2; ++f) {
        StickGrid g;
        g.origin.x += 1000.0 * f;
        for (const core::PointWithBool& p : g.picks()) rows.addElement(f, p.position(), false);
    }
    return std::make_unique<ZNFaultPatchManager>(rows);
}

// A fault set of two meshed faults saved with its meshes.
class FaultSetMeshFile : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const ZN3DFaultPatchLight* light : set->getFaultLightList()) {
            meshes.append(set->createPicked3DFaultPatch(light));
            meshes.last()->updateMeshWithPickedPoint();
        }
    }
    void TearDown() override { qDeleteAll(meshes); }
    bool save() { return set->writePickedFault(path, false, &meshes, false); }

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("set.flt"));
    std::unique_ptr<ZNFaultPatchManager> set = twoFaults();
    QList<ZN3DFaultPatch*> meshes;
};

} // namespace

TEST(FaultSetSurfaces, CreatedPatchesCarryTheFaultAndStayAttachedWhileTheyLive)
{
    auto set = twoFaults();
    ZN3DFaultPatchLight* light = set->findFaultLight(2);
    light->setInterpolationSize(40);
    set->setObjectName(QStringLiteral("Set"));
    auto patch = std::unique_ptr<ZN3DFaultPatch>(set->createPicked3DFaultPatch(light));
    ASSERT_TRUE(patch);
    EXPECT_EQ(patch->getFaultId(), 2);
    EXPECT_EQ(patch->getInterpolationSize(), 40);
    EXPECT_EQ(patch->getFaultSetName(), QStringLiteral("Set"));
    EXPECT_EQ(patch->getPickedPoints().size(), set->getNumberOfPickedPoint(2));
    EXPECT_EQ(set->findFaultPatch(2), patch.get());
    EXPECT_EQ(set->findFaultSurface(2), patch.get());
    EXPECT_EQ(set->findFaultPatch(1), nullptr);
    EXPECT_EQ(set->createPicked3DFaultPatch(nullptr), nullptr);
    EXPECT_TRUE(set->isPatchPicked(2));
    EXPECT_FALSE(set->isPatchPicked(0));

    QList<ZN3DFaultPatch*> created;
    const QList<ZN3DFaultPatch*> all = set->getFaultPatchList(created);
    ASSERT_EQ(all.size(), 2);
    EXPECT_EQ(all[1], patch.get());
    EXPECT_EQ(created, QList<ZN3DFaultPatch*>{all[0]});
    qDeleteAll(created);
    patch.reset();
    EXPECT_EQ(set->findFaultPatch(2), nullptr);
}

TEST_F(FaultSetMeshFile, RoundTripGivesNewPatchesTheSavedMeshes)
{
    ASSERT_TRUE(save());
    ZNFaultPatchManager read;
    ASSERT_TRUE(read.readPickedFault(path, false, -2));
    for (int f = 0; f < 2; ++f) {
        const ZN3DFaultPatch& saved = *meshes[f];
        const ZNFaultPatchManager::StoredMesh* mesh = read.getStoredMesh(saved.getFaultId());
        ASSERT_NE(mesh, nullptr);
        ASSERT_EQ(mesh->points.size(), saved.getNumberOfPoints());
        ASSERT_EQ(mesh->facettes.size(), saved.getNumberOfFacettes());
        for (int k = 0; k < mesh->points.size(); ++k) ASSERT_EQ(mesh->points[k], saved.getPoints()[k]);
        for (int k = 0; k < mesh->facettes.size(); ++k) ASSERT_EQ(mesh->facettes[k], saved.getFacettes()[k]);
        const std::unique_ptr<ZN3DFaultPatch> patch(read.createPicked3DFaultPatch(read.getFaultLightList()[f]));
        EXPECT_EQ(patch->getNumberOfFacettes(), saved.getNumberOfFacettes());
        EXPECT_DOUBLE_EQ(patch->getComputedArea(), saved.getComputedArea());
    }
}

TEST_F(FaultSetMeshFile, NoMeshSectionWithoutOneMeshPerFault)
{
    ZN3DFaultPatch* last = meshes.takeLast();
    ASSERT_TRUE(save());
    delete last;
    ZNFaultPatchManager read;
    ASSERT_TRUE(read.readPickedFault(path, false, -2));
    EXPECT_EQ(read.getStoredMesh(1), nullptr);
}

TEST_F(FaultSetMeshFile, CorruptMeshSectionFailsTheReadAndChangesNothing)
{
    ASSERT_TRUE(save());
    const QByteArray good = readFileBytes(path);
    QByteArray badIndex = good;
    badIndex.replace(badIndex.size() - 4, 4, QByteArray(4, '\xff'));  // last facette index
    QByteArray nanPoint = good;
    const ZN3DFaultPatch& last = *meshes.last();
    const int firstPoint = good.size() - 12 * last.getNumberOfFacettes() - 24 * last.getNumberOfPoints();
    nanPoint.replace(firstPoint, 8, QByteArray("\x00\x00\x00\x00\x00\x00\xf8\x7f", 8));
    const QByteArray variants[] = {good.left(good.size() - 5), badIndex, nanPoint};
    for (const QByteArray& bytes : variants) {
        ASSERT_TRUE(writeFileBytes(path, bytes));
        RecordingEventBus bus;
        ZNFaultPatchManager read;  // two patches, one point
        read.addPickedPoint(1, core::PointWithBool(1, 2, 3));
        EXPECT_FALSE(read.readPickedFault(path, false, -2));
        EXPECT_EQ(read.getNumberOfPatch(), 2);
        EXPECT_EQ(read.getNumberOfPickedPoint(1), 1);
        EXPECT_TRUE(read.getFaultLightList().isEmpty());
    }
}

TEST(PlanarTriangulation, RandomStickSetsAreMeshedWithEveryPointOnTheMesh)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int run = 0; run < 250; ++run) {
        std::vector<fault::surface::Stick> sticks;
        const int count = 2 + run % 7;
        for (int s = 0; s < count; ++s) {
            const bool across = unit(random) < 0.2;  // a time-slice stick among dip sticks
            const core::vec3 start(100.0 * s + 30 * unit(random), 1000.0 + 200 * unit(random), 50 * unit(random));
            const core::vec3 step = across ? core::vec3(60, 3 * unit(random), 5 * unit(random))
                                           : core::vec3(10 * unit(random) - 5, 40 + 20 * unit(random), 5 * unit(random));
            fault::surface::Stick stick;
            for (int k = 0; k < 2 + run % 5; ++k) stick.push_back(start + step * k);
            sticks.push_back(stick);
        }
        fault::surface::MeshingInput input;
        ASSERT_TRUE(fault::surface::prepareMeshing(sticks, 1, run % 3 == 0 ? 15.0 : 0.0, input));
        input.planar.maxEdgeLength = 10.0 + 40.0 * unit(random);
        fault::surface::PlanarMesh mesh;
        ASSERT_TRUE(fault::surface::triangulatePlanar(input.planar, mesh)) << run;
        for (const core::vec2& p : input.layout.positions) {
            bool found = false;
            for (const core::vec2& q : mesh.positions) found = found || (p - q).length() < 1e-6;
            ASSERT_TRUE(found) << "run " << run;
        }
    }
}

namespace {

double planarMeshArea(const fault::surface::PlanarMesh& mesh)
{
    double area = 0.0;
    for (const auto& t : mesh.triangles) {
        const core::vec2 a = mesh.positions[t[0]], b = mesh.positions[t[1]], c = mesh.positions[t[2]];
        area += 0.5 * ((b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y));
    }
    return area;
}

} // namespace

// Four points of a kite, the far end of its long diagonal raised, and one diagonal kept as
// a segment: the surface folds along it. The points that subdivide the kite's sides and
// the diagonal lie on the fold, and so must every point the refinement adds: a height
// taken from a triangle across the fold, or extrapolated from any other, is off it.
TEST(PlanarTriangulation, RefinedPointsTakeTheirHeightsFromTheTriangleOfTheInputPointsHoldingThem)
{
    struct Case {
        const char* name;
        core::vec2 origin;   // of the kite, whose long diagonal runs along the first axis
        bool swapAxes;       // the kite turned a quarter
        bool keepLongDiagonal;  // instead of the short one
        double maxEdgeLength;
    };
    const Case cases[] = {
        {"fold on the short diagonal", {0.0, 0.0}, false, false, 1.0},
        {"fold on the long diagonal", {0.0, 0.0}, false, true, 0.8},
        {"turned and far from the origin", {5000.0, -3000.0}, true, false, 0.7},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        auto place = [&c](double u, double v) {
            return c.swapAxes ? core::vec2(c.origin.x + v, c.origin.y + u) : core::vec2(c.origin.x + u, c.origin.y + v);
        };
        fault::surface::PlanarInput input;
        input.positions = {place(0, 0), place(10, -3), place(20, 0), place(10, 3)};
        input.heights = {0.0, 0.0, 10.0, 0.0};
        input.segments = {c.keepLongDiagonal ? std::array<int, 2>{0, 2} : std::array<int, 2>{1, 3}};
        input.maxEdgeLength = c.maxEdgeLength;
        // The fold along the short diagonal (u = 10) or along the long one (v = 0).
        auto expected = [&c](double u, double v) {
            return c.keepLongDiagonal ? 0.5 * u - 5.0 / 3.0 * std::fabs(v) : std::max(0.0, u - 10.0);
        };
        fault::surface::PlanarMesh mesh;
        ASSERT_TRUE(fault::surface::triangulatePlanar(input, mesh));
        ASSERT_GT(mesh.positions.size(), 100u);  // refined, well beyond the four corners
        EXPECT_NEAR(planarMeshArea(mesh), 60.0, 1e-6);
        const double tolerance = 1e-9 * (1.0 + std::fabs(c.origin.x) + std::fabs(c.origin.y));
        for (size_t i = 0; i < mesh.positions.size(); ++i) {
            const core::vec2 p = mesh.positions[i] - c.origin;
            const double u = c.swapAxes ? p.y : p.x, v = c.swapAxes ? p.x : p.y;
            ASSERT_NEAR(mesh.heights[i], expected(u, v), tolerance) << "point " << i << " at " << u << ", " << v;
        }
    }
}

// Loops whose boxes overlap, nest or lie side by side: the domain is their union, whatever
// region of the triangulation falls level with a loop's lowest or highest corner.
TEST(PlanarTriangulation, DomainIsTheUnionOfTheLoopsInsides)
{
    struct Case {
        const char* name;
        std::vector<core::vec2> positions;
        std::vector<std::vector<int>> loops;
        double area;
    };
    const std::vector<Case> cases = {
        {"squares side by side", {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {6, 0}, {9, 0}, {9, 4}, {6, 4}},
         {{0, 1, 2, 3}, {4, 5, 6, 7}}, 16.0 + 12.0},
        {"squares one above the other", {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 6}, {4, 6}, {4, 9}, {0, 9}},
         {{0, 1, 2, 3}, {4, 5, 6, 7}}, 16.0 + 12.0},
        {"a square in the notch of a U", {{0, 0}, {9, 0}, {9, 9}, {6, 9}, {6, 3}, {3, 3}, {3, 9}, {0, 9},
                                          {4, 5}, {5, 5}, {5, 8}, {4, 8}},
         {{0, 1, 2, 3, 4, 5, 6, 7}, {8, 9, 10, 11}}, 81.0 - 18.0 + 3.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        fault::surface::PlanarInput input;
        input.positions = c.positions;
        input.heights.assign(c.positions.size(), 1.0);
        input.domainLoops = c.loops;
        input.maxEdgeLength = 1.5;
        fault::surface::PlanarMesh mesh;
        ASSERT_TRUE(fault::surface::triangulatePlanar(input, mesh));
        EXPECT_FALSE(mesh.convexHullDomain);
        EXPECT_NEAR(planarMeshArea(mesh), c.area, 1e-9);
    }
}

// Segments fanning out of one point at angles of a few degrees: the refinement cannot
// give those corners its angle bound and must leave them be (it treats the fan as one
// cluster) rather than cut them again and again.
TEST(PlanarTriangulation, RefinementEndsAroundSmallInputAngles)
{
    fault::surface::PlanarInput input;
    input.positions = {{0, 0}, {100, 0}, {100, 100}, {0, 100}, {20, 50}};
    input.domainLoops = {{0, 1, 2, 3}};
    for (const double degrees : {-4.0, -1.0, 0.5, 3.0}) {
        const double a = degrees * M_PI / 180.0;
        input.positions.push_back(core::vec2(20 + 70 * std::cos(a), 50 + 70 * std::sin(a)));
        input.segments.push_back({4, static_cast<int>(input.positions.size()) - 1});
    }
    for (const core::vec2& p : input.positions) input.heights.push_back(0.1 * p.x);
    input.maxEdgeLength = 5.0;
    fault::surface::PlanarMesh mesh;
    ASSERT_TRUE(fault::surface::triangulatePlanar(input, mesh));
    EXPECT_NEAR(planarMeshArea(mesh), 10000.0, 1e-6);
    // About two triangles per equilateral one of the bound's side, away from the fan.
    EXPECT_LT(mesh.triangles.size(), 3 * 10000.0 / (0.433 * 25.0));
    for (size_t i = 0; i < mesh.positions.size(); ++i)
        ASSERT_NEAR(mesh.heights[i], 0.1 * mesh.positions[i].x, 1e-9);
}

// Points equal once rounded are one vertex, whatever order the triangulation takes them
// in: the height of the first of them in the input stands.
TEST(PlanarTriangulation, PointsMergedKeepTheFirstHeight)
{
    for (const double offset : {0.0, 1e-15}) {  // equal, or equal once rounded
        SCOPED_TRACE(offset);
        fault::surface::PlanarInput input;
        constexpr int kSide = 6;
        for (int copy = 0; copy < 2; ++copy)
            for (int k = 0; k < kSide * kSide; ++k) {
                input.positions.push_back(core::vec2(k % kSide + copy * offset, k / kSide - copy * offset));
                input.heights.push_back(copy * 100.0 + k);
            }
        fault::surface::PlanarMesh mesh;
        ASSERT_TRUE(fault::surface::triangulatePlanar(input, mesh));
        ASSERT_EQ(mesh.positions.size(), size_t(kSide * kSide));
        for (size_t i = 0; i < mesh.positions.size(); ++i) {
            const core::vec2& p = mesh.positions[i];
            EXPECT_NEAR(mesh.heights[i], std::round(p.x) + kSide * std::round(p.y), 1e-12) << p.x << ", " << p.y;
        }
    }
}

// A long thin domain across the diagonal of its box, refined finely: the seeding
// lattice would cover the whole box, hundreds of millions of points for a domain that
// needs some thousands, so the refinement meshes it alone.
TEST(PlanarTriangulation, AThinSlantedDomainIsRefinedWithoutCoveringItsBox)
{
    fault::surface::PlanarInput input;
    input.positions = {{0, 0}, {1000, 1000}, {1000, 1000.01}, {0, 0.01}};
    input.heights = {0, 10, 10, 0};
    input.domainLoops = {{0, 1, 2, 3}};
    input.maxEdgeLength = 0.05;
    fault::surface::PlanarMesh mesh;
    ASSERT_TRUE(fault::surface::triangulatePlanar(input, mesh));
    EXPECT_NEAR(planarMeshArea(mesh), 10.0, 1e-6);
    double longest = 0.0;
    for (const auto& t : mesh.triangles)
        for (int k = 0; k < 3; ++k)
            longest = std::max(longest, (mesh.positions[t[k]] - mesh.positions[t[(k + 1) % 3]]).length());
    EXPECT_LE(longest, 0.05 * (1 + 1e-9));
}

// Sticks on the convex hull's outline that are not quite straight (picks snapped to
// samples on sections not quite parallel): the hull runs through their points instead of
// leaving slivers a thousandth of a unit wide beside them, which the refinement filled
// with millions of triangles.
TEST(PlanarTriangulation, NearlyStraightSticksOnTheHullLeaveNoSliverToRefine)
{
    fault::surface::PlanarInput input;
    input.positions = {{-99.9883, -86.4464}, {-99.9960, -21.7071}, {-100.0030, 43.2986}, {-100.0107, 108.0370},
                       {50.0092, -86.4291},  {50.0015, -21.6902},  {49.9945, 43.3155},   {49.9867, 108.0539},
                       {200.0061, -86.4322}};
    input.heights.assign(input.positions.size(), 0.0);
    input.segments = {{0, 1}, {1, 2}, {2, 3}, {4, 5}, {5, 6}, {6, 7}};
    input.maxEdgeLength = 11.0;
    fault::surface::PlanarMesh mesh;
    ASSERT_TRUE(fault::surface::triangulatePlanar(input, mesh));
    // The hull's area over twice the triangle of the bound's side, with room to spare.
    EXPECT_LT(mesh.triangles.size(), 3 * 48000.0 / (0.433 * 121.0));
}

// Two constraints a millionth of the domain apart: the strip between them cannot be meshed
// within the angle bound without points as close; the refinement stops at its budget
// instead of running on, and the mesh it leaves still covers the domain.
TEST(PlanarTriangulation, RefinementStopsAtItsBudgetWhereTheDomainsFeaturesAreTooFine)
{
    fault::surface::PlanarInput input;
    input.positions = {{0, 0}, {100, 0}, {100, 100}, {0, 100}, {10, 50}, {90, 50}, {10, 50.0001}, {90, 50.0001}};
    input.heights.assign(input.positions.size(), 1.0);
    input.domainLoops = {{0, 1, 2, 3}};
    input.segments = {{4, 5}, {6, 7}};
    input.maxEdgeLength = 10.0;
    input.maxTriangles = 20000;
    fault::surface::PlanarMesh mesh;
    ASSERT_TRUE(fault::surface::triangulatePlanar(input, mesh));
    EXPECT_LT(mesh.positions.size(), 21000u);
    EXPECT_NEAR(planarMeshArea(mesh), 10000.0, 1e-6);
}
