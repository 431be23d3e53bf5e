#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include <core/conventions.h>
#include <znfaultpatchmanager.h>
#include <znsectioncrossing.h>

#include "faultsetfixtures.h"
#include "orthographicviewer.h"

using namespace fixtures;

namespace {

struct Mesh {
    core::Array<core::vec3> vertices;
    core::Array<core::Triplet> triangles;
};

Mesh sticksMesh(const Points& points)
{
    Mesh m;
    ZNSectionCrossing::triangulateSticks(points.data(), static_cast<int>(points.size()),
                                         m.vertices, m.triangles);
    return m;
}

double area(const Mesh& m)
{
    double total = 0.0;
    for (const core::Triplet& t : m.triangles) {
        const core::vec3 e1 = m.vertices[t.y] - m.vertices[t.x];
        const core::vec3 e2 = m.vertices[t.z] - m.vertices[t.x];
        total += 0.5 * e1.cross(e2).length();
    }
    return total;
}

std::vector<std::vector<core::vec3>> crossings(const Mesh& m, const geom::RandomLine& section)
{
    core::MultiArray<core::vec3> lines;
    ZNSectionCrossing::crossSection(m.vertices, m.triangles, section, lines);
    std::vector<std::vector<core::vec3>> out(lines.getNumberOfArray());
    for (int r = 0; r < lines.getNumberOfArray(); ++r)
        for (int k = 0; k < lines.getCount(r); ++k) out[r].push_back(lines(r, k));
    return out;
}

// Lowest and highest y of a polyline.
std::pair<double, double> yRange(const std::vector<core::vec3>& line)
{
    auto [lo, hi] = std::minmax_element(line.begin(), line.end(),
                                        [](const core::vec3& a, const core::vec3& b) {
                                            return a.y < b.y;
                                        });
    return {lo->y, hi->y};
}

// The fault plane x = z, sticks at z = 0 and z = 10 from y = 0 to y = 10.
const Points kDiagonalSticks{P(0, 0, 0), P(0, 10, 0), S, P(10, 0, 10), P(10, 10, 10)};

} // namespace

// ----- triangulation between sticks -----

TEST(SectionCrossing, ConsecutiveSticksAreJoinedByAStripOfTriangles)
{
    const Mesh m = sticksMesh({P(0, 0), P(0, 5), P(0, 10), S, P(10, 0), P(10, 10), S,
                               P(20, 5), P(7, 7, 7, true)});
    EXPECT_EQ(m.vertices.size(), 6) << "automatic entries take no part";
    EXPECT_EQ(m.triangles.size(), 3 + 1) << "m + n - 2 triangles per strip, a fan for one point";
    EXPECT_NEAR(area(m), 100.0 + 50.0, 1e-9);
}

TEST(SectionCrossing, AStickPickedTheOtherWayRoundIsReadBackwards)
{
    const Mesh m = sticksMesh({P(0, 0), P(0, 10), S, P(10, 10), P(10, 5), P(10, 0)});
    EXPECT_NEAR(area(m), 100.0, 1e-9) << "a crossed strip would fold over itself";
}

TEST(SectionCrossing, FewerThanTwoSticksOrTwoLonePointsMakeNoSurface)
{
    EXPECT_TRUE(sticksMesh({P(0, 0), P(0, 10), P(0, 20)}).triangles.empty());
    EXPECT_TRUE(sticksMesh({P(0, 0), S, P(5, 5)}).triangles.empty());
    EXPECT_TRUE(sticksMesh({}).triangles.empty());
}

// ----- crossing with a section -----

TEST(SectionCrossing, ASurfaceCrossesASectionAlongOneLineWithinTheSection)
{
    const Mesh m = sticksMesh(kDiagonalSticks);
    const auto lines = crossings(m, OrthographicViewer::sectionAlongX(5, -20, 20, -50, 50));
    ASSERT_EQ(lines.size(), 1u);
    for (const core::vec3& p : lines[0]) {
        EXPECT_NEAR(p.x, 5.0, 1e-12);
        EXPECT_NEAR(p.z, 5.0, 1e-12);
    }
    EXPECT_EQ(yRange(lines[0]), std::make_pair(0.0, 10.0));
    const auto clipped = crossings(m, OrthographicViewer::sectionAlongX(5, -20, 20, 2, 7));
    ASSERT_EQ(clipped.size(), 1u);
    EXPECT_NEAR(yRange(clipped[0]).first, 2.0, 1e-12);
    EXPECT_NEAR(yRange(clipped[0]).second, 7.0, 1e-12);
}

TEST(SectionCrossing, NothingCrossesOutsideTheSectionOrWithAnInvalidOne)
{
    const Mesh m = sticksMesh(kDiagonalSticks);
    EXPECT_TRUE(crossings(m, OrthographicViewer::sectionAlongX(5, 6, 20, -50, 50)).empty());
    EXPECT_TRUE(crossings(m, OrthographicViewer::sectionAlongX(5, -20, 20, 20, 50)).empty());
    EXPECT_TRUE(crossings(m, OrthographicViewer::sectionAlongX(5, -20, 20, 9, 1)).empty());
    geom::RandomLine onePoint = OrthographicViewer::sectionAlongX(5, -20, 20, -50, 50);
    onePoint.nodes.resize(1);
    EXPECT_TRUE(crossings(m, onePoint).empty());
}

TEST(SectionCrossing, ABadTriangleIndexIsSkipped)
{
    Mesh m = sticksMesh(kDiagonalSticks);
    m.triangles.add(core::Triplet(0, 1, 99));
    m.triangles.add(core::Triplet(-1, 1, 2));
    EXPECT_EQ(crossings(m, OrthographicViewer::sectionAlongX(5, -20, 20, -50, 50)).size(), 1u);
}

TEST(SectionCrossing, ASectionFoldedTwiceAcrossTheFaultCrossesItTwice)
{
    const Mesh m = sticksMesh({P(0, 0, 0), P(0, 10, 0), S, P(20, 0, 20), P(20, 10, 20)});
    geom::RandomLine section = OrthographicViewer::sectionAlongX(6, 0, 10, -50, 50);
    section.nodes.add(core::vec2(10, 20));  // then along x = 10 from z = 6 to z = 20
    const auto lines = crossings(m, section);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NEAR(lines[0][0].x, 6.0, 1e-12);
    EXPECT_NEAR(lines[1][0].z, 10.0, 1e-12);
}

TEST(SectionCrossing, ACrossingThatTurnsAtANodeOfTheSectionStaysInOnePiece)
{
    // The plane x - z = 0.4 (y - 5) crosses the first panel (z = 4) below y = 5 and the
    // second one (x = 4) above it, through the node (4, 4) at y = 5.
    const Mesh m = sticksMesh({P(-4, 0, -2), P(0, 10, -2), S, P(6, 0, 8), P(10, 10, 8)});
    geom::RandomLine section;
    for (const core::vec2& node : {core::vec2(0, 4), core::vec2(4, 4), core::vec2(4, -6)})
        section.nodes.add(node);
    section.verticalMin = -50;
    section.verticalMax = 50;
    const auto lines = crossings(m, section);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(yRange(lines[0]), std::make_pair(0.0, 10.0));
    for (const core::vec3& p : lines[0]) EXPECT_NEAR(p.x - p.z, 0.4 * (p.y - 5), 1e-9);
    EXPECT_TRUE(std::any_of(lines[0].begin(), lines[0].end(), [](const core::vec3& p) {
        return (p - core::vec3(4, 5, 4)).length() < 1e-9;
    }));
}

// ----- resampling a patch -----

TEST(PatchResampling, AutomaticPointsFollowTheSticksWhenTheFaultHasNoMesh)
{
    ZNFaultPatchManager set(2);
    append(set, 1, kDiagonalSticks);
    MeshSurface empty(1);
    set.attachFaultSurface(&empty);
    const int appended =
        set.resamplePatchWithRandomLine(1, OrthographicViewer::sectionAlongX(5, -20, 20, -50, 50));
    const Points points = pointsOf(set, 1);
    ASSERT_EQ(appended, static_cast<int>(points.size() - kDiagonalSticks.size()));
    ASSERT_GE(appended, 3);
    EXPECT_TRUE(points[5].isSeparator());
    for (size_t k = 5; k < points.size(); ++k) {
        EXPECT_TRUE(points[k].flag);
        if (!points[k].isSeparator()) {
            EXPECT_NEAR(points[k].x, 5.0, 1e-12);
        }
    }
}

TEST(PatchResampling, TheFaultsMeshIsUsedWhenItHasOneEvenForAnotherPatchOfTheFault)
{
    ZNFaultPatchManager set(4);
    append(set, 2, kDiagonalSticks);
    linkPatches(set, 1, {2});
    MeshSurface surface(1);  // the plane x = 3
    for (const core::vec3& v : {core::vec3(3, 0, -10), core::vec3(3, 10, -10),
                                core::vec3(3, 10, 10), core::vec3(3, 0, 10)})
        surface.vertices.add(v);
    surface.triangles.add(core::Triplet(0, 1, 2));
    surface.triangles.add(core::Triplet(0, 2, 3));
    set.attachFaultSurface(&surface);
    EXPECT_GT(set.resamplePatchWithRandomLine(
                  2, OrthographicViewer::sectionAlongX(5, -20, 20, -50, 50)),
              0);
    for (const core::PointWithBool& p : pointsOf(set, 2))
        if (p.flag && !p.isSeparator()) {
            EXPECT_NEAR(p.x, 3.0, 1e-12);
        }
}

TEST(PatchResampling, ASectionShowingAPickedStickAddsNothing)
{
    for (bool reversed : {false, true}) {
        SCOPED_TRACE(reversed ? "section drawn towards -x" : "section drawn towards +x");
        ZNFaultPatchManager set(2);
        append(set, 1, kDiagonalSticks);
        geom::RandomLine section = reversed
                                       ? OrthographicViewer::sectionAlongX(0, 20, -20, -50, 50)
                                       : OrthographicViewer::sectionAlongX(0, -20, 20, -50, 50);
        EXPECT_EQ(set.resamplePatchWithRandomLine(1, section), 0);
        EXPECT_EQ(pointsOf(set, 1), kDiagonalSticks);
    }
}

TEST(PatchResampling, AClosedStickNeedsNoExtraSeparator)
{
    ZNFaultPatchManager set(2);
    Points closed = kDiagonalSticks;
    closed.push_back(S);
    append(set, 1, closed);
    set.resamplePatchWithRandomLine(1, OrthographicViewer::sectionAlongX(5, -20, 20, -50, 50));
    const Points points = pointsOf(set, 1);
    ASSERT_GT(points.size(), closed.size());
    EXPECT_FALSE(points[closed.size()].isSeparator());
    EXPECT_TRUE(points[closed.size()].flag);
}
