#include <gtest/gtest.h>

#include <algorithm>

#include <core/conventions.h>
#include <znfaultpatchmanager.h>

#include "faultsetfixtures.h"
#include "orthographicviewer.h"

using namespace fixtures;

namespace {
constexpr int kNo = core::kNoValue;
core::Triplet T(int patch, int index, int mode) { return core::Triplet(patch, index, mode); }

int automaticCount(const Points& points)
{
    return static_cast<int>(std::count_if(points.begin(), points.end(),
                                          [](const core::PointWithBool& p) { return p.flag; }));
}
} // namespace

// ----- single edits -----

TEST(FaultPicking, PicksGoToTheCurrentFaultOnlyOnceItIsSet)
{
    ZNFaultPatchManager set(3);
    EXPECT_FALSE(set.addPickedPoint(P(1, 1)));
    set.setCurrentPickedFaultId(2);
    EXPECT_TRUE(set.addPickedPoint(P(1, 1)));
    EXPECT_TRUE(set.addPickedPoint(P(1, 1))) << "the same position may be picked twice";
    EXPECT_EQ(pointsOf(set, 2), (Points{P(1, 1), P(1, 1)}));
    set.setCurrentPickedFaultId(0);  // not a patch to pick in: ignored
    EXPECT_EQ(set.getCurrentPickedFaultId(), 2);
    set.setCurrentPickedFaultId(kNo);
    EXPECT_EQ(set.getCurrentPickedFaultId(), kNo);
}

TEST(FaultPicking, InsertionAcceptsIndicesUpToTheCountOnly)
{
    ZNFaultPatchManager set(2);
    append(set, 1, {P(1, 1), P(2, 2)});
    EXPECT_TRUE(set.insertPickedPoint(1, 2, core::vec3(3, 3, 0)));
    EXPECT_FALSE(set.insertPickedPoint(1, 4, core::vec3(9, 9, 0)));
    EXPECT_FALSE(set.insertPickedPoint(1, -1, core::vec3(9, 9, 0)));
    EXPECT_TRUE(set.insertPickedPoint(1, 0, core::vec3(0, 0, 0)));
    EXPECT_EQ(pointsOf(set, 1), (Points{P(0, 0), P(1, 1), P(2, 2), P(3, 3)}));
}

TEST(FaultPicking, RemovingAnyPointUnsetsTheMovingPoint)
{
    ZNFaultPatchManager set(2);
    append(set, 1, {P(1, 1), P(2, 2), P(3, 3)});
    set.setCurrentMovingPointId(2);
    EXPECT_TRUE(set.removePickedPoint(1, 0));
    EXPECT_EQ(set.getCurrentMovingPointId(), kNo);
    set.setCurrentMovingPointId(1);
    EXPECT_FALSE(set.removePickedPoint(1, 7));
    EXPECT_EQ(set.getCurrentMovingPointId(), kNo) << "even when the index was bad";
    EXPECT_EQ(pointsOf(set, 1), (Points{P(2, 2), P(3, 3)}));
}

TEST(FaultPicking, TheMovingPointIsRemovedFromTheCurrentFault)
{
    ZNFaultPatchManager set(2);
    append(set, 1, {P(1, 1), P(2, 2)});
    set.setCurrentMovingPointId(1);
    EXPECT_FALSE(set.removePickedMovingPoint()) << "no current fault";
    EXPECT_EQ(set.getCurrentMovingPointId(), kNo);
    set.setCurrentPickedFaultId(1);
    set.setCurrentMovingPointId(1);
    EXPECT_TRUE(set.removePickedMovingPoint());
    EXPECT_EQ(pointsOf(set, 1), (Points{P(1, 1)}));
    EXPECT_EQ(set.getCurrentMovingPointId(), kNo);
}

TEST(FaultPicking, TheCurrentFaultIsMarkedOnItsSurfaceOnly)
{
    ZNFaultPatchManager set(4);
    MeshSurface first(1);
    MeshSurface second(3);
    set.attachFaultSurface(&first);
    set.attachFaultSurface(&second);
    set.attachFaultSurface(&second);
    set.setCurrentPickedFaultId(3);
    EXPECT_FALSE(first.isCurrentFault());
    EXPECT_TRUE(second.isCurrentFault());
    EXPECT_EQ(set.findFaultSurface(3), &second);
    set.detachFaultSurface(&second);
    EXPECT_EQ(set.findFaultSurface(3), nullptr);
    set.setCurrentPickedFaultId(1);
    EXPECT_TRUE(first.isCurrentFault());
}

// ----- the gathered list and the nearest entry -----

TEST(FaultPicking, GatheredIndicesMapBackToTheirPatches)
{
    ZNFaultPatchManager set(5);
    append(set, 1, {P(0, 0), P(0, 1)});
    append(set, 3, {P(5, 0), S, P(5, 1)});
    linkPatches(set, 1, {3});
    core::Array<core::PointWithBool> gathered;
    EXPECT_EQ(set.getFaultPickedPointArray(3, gathered), 5);
    EXPECT_EQ(set.getNumberOfFaultPickedPoint(1), 5);
    int index = -1;
    EXPECT_EQ(set.getPatchIdFromPickedPointId(1, 1, index), 1);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(set.getPatchIdFromPickedPointId(1, 4, index), 3);
    EXPECT_EQ(index, 2);
    index = 42;
    EXPECT_EQ(set.getPatchIdFromPickedPointId(1, 5, index), kNo);
    EXPECT_EQ(set.getPatchIdFromPickedPointId(1, -1, index), kNo);
    EXPECT_EQ(index, 42);
}

// One fault, patch 1: stick A at x = 0 (y 0, 10, 20), a separator, stick B at x = 10
// (y 0, 10). The screen shows (x, y).
TEST(FaultPicking, TheNearestEntryDecidesBetweenTheThreeInsertionModes)
{
    ZNFaultPatchManager set(2);
    append(set, 1, {P(0, 0), P(0, 10), P(0, 20), S, P(10, 0), P(10, 10)});
    OrthographicViewer viewer;
    struct Case {
        const char* what;
        core::vec3 cursor;
        double tolerance;
        core::Triplet expected;
    } cases[] = {
        {"along a segment: between its ends", {1, 5, 0}, 10, T(1, 1, 1)},
        {"beyond the end of a stick: before the separator", {0, 25, 0}, 10, T(1, 3, 3)},
        {"before the start of a stick: before it", {0, -5, 0}, 10, T(1, 0, 3)},
        {"near the last entry: after it", {10, 15, 0}, 10, T(1, 5, 2)},
        {"beside the start, off the segment", {30, 0, 0}, 10, T(1, 4, 3)},
        {"along a segment within the tolerance", {15, 5, 0}, 10, T(1, 5, 1)},
        {"along a segment beyond the tolerance", {15, 5, 0}, 2, T(1, 4, 3)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        viewer.setSegmentTolerance(c.tolerance);
        EXPECT_EQ(set.getNearestPatchIdAndPointId(1, c.cursor, &viewer), c.expected);
    }
    EXPECT_EQ(set.getNearestPatchIdAndPointId(1, core::vec3(), nullptr), T(kNo, kNo, kNo));
}

// One fault of two patches: patch 1 holds a stick at x = 0, patch 2 a separator and a
// stick at x = 10.
class TwoPatchFault : public testing::Test {
protected:
    void SetUp() override
    {
        append(set, 1, {P(0, 0), P(0, 10)});
        append(set, 2, {S, P(10, 0), P(10, 10)});
        linkPatches(set, 1, {2});
    }
    ZNFaultPatchManager set{4};
    OrthographicViewer viewer;
};

TEST_F(TwoPatchFault, PastTheLastStickOfAPatchThePointGoesToTheNextPatch)
{
    EXPECT_EQ(set.getNearestPatchIdAndPointId(1, core::vec3(0, 15, 0), &viewer), T(2, 0, 3));
}

TEST_F(TwoPatchFault, DraggingIntoAnotherPatchOfTheFaultMakesItCurrent)
{
    set.insertMovingPointBis(1, core::vec3(10, 5, 0), &viewer);
    EXPECT_EQ(set.getCurrentPickedFaultId(), 2);
    EXPECT_EQ(set.getCurrentMovingPointId(), 2);
    EXPECT_EQ(pointsOf(set, 2), (Points{S, P(10, 0), P(10, 5), P(10, 10)}));
    EXPECT_TRUE(set.isValid());
}

// ----- dragging -----

TEST(FaultPicking, DraggingBeyondTheLastEntryGrowsTheStickAndFollowsThePoint)
{
    const struct {
        const char* what;
        Points before;
        std::vector<core::vec3> drags;
        Points after;
    } cases[] = {
        {"past the last entry: appended, taken out before it is placed again", {P(0, 0), P(0, 10)},
         {{0, 15, 0}, {0, 18, 0}}, {P(0, 0), P(0, 10), P(0, 18)}},
        {"beyond a closed stick: before its separator", {P(0, 0), P(0, 10), S}, {{0, 15, 0}},
         {P(0, 0), P(0, 10), P(0, 15), S}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ZNFaultPatchManager set(2);
        append(set, 1, c.before);
        OrthographicViewer viewer;
        for (const core::vec3& cursor : c.drags) {
            set.insertMovingPointBis(1, cursor, &viewer);
            EXPECT_EQ(set.getCurrentPickedFaultId(), 1);
            EXPECT_EQ(set.getCurrentMovingPointId(), 2);
        }
        EXPECT_EQ(pointsOf(set, 1), c.after);
    }
}

// A fault on the plane x = z, sticks at z = 0 and z = 10; the view shows the section
// z = 5, which the fault crosses along x = 5.
class ShownFault : public testing::Test {
protected:
    void SetUp() override
    {
        append(set, 1, {P(0, 0, 0), P(0, 10, 0), S, P(10, 0, 10), P(10, 10, 10)});
        viewer.setSection(OrthographicViewer::sectionAlongX(5, -20, 20, -50, 50));
    }
    ZNFaultPatchManager set{2};
    OrthographicViewer viewer;
};

TEST_F(ShownFault, AutomaticPointsAreMadeOnlyForShownPatches)
{
    viewer.hideAll();
    EXPECT_FALSE(set.createAdditionalPoint(1, &viewer));
    EXPECT_EQ(automaticCount(pointsOf(set, 1)), 0);
    viewer.showAll();
    EXPECT_TRUE(set.createAdditionalPoint(1, &viewer));
    const Points points = pointsOf(set, 1);
    EXPECT_GT(automaticCount(points), 2);
    EXPECT_TRUE(points[5].isSeparator() && points[5].flag) << "their own stick";
    EXPECT_TRUE(set.createAdditionalPoint(1, &viewer));
    EXPECT_EQ(pointsOf(set, 1), points) << "made again, not added twice";
    EXPECT_TRUE(set.removeAdditionalPoint(1, &viewer));
    EXPECT_EQ(pointsOf(set, 1),
              (Points{P(0, 0, 0), P(0, 10, 0), S, P(10, 0, 10), P(10, 10, 10)}));
}

TEST_F(ShownFault, ADraggedPointNeverSitsAmongStaleAutomaticPoints)
{
    set.createAdditionalPoint(1, &viewer);
    set.setCurrentPickedFaultId(1);
    set.insertMovingPointBis(1, core::vec3(10, 15, 10), &viewer);
    const Points points = pointsOf(set, 1);
    const int moving = set.getCurrentMovingPointId();
    ASSERT_GE(moving, 0);
    EXPECT_EQ(points[moving], P(10, 15, 10));
    for (int k = 0; k < static_cast<int>(points.size()); ++k)
        EXPECT_EQ(points[k].flag, k > moving) << "hand entries first, then fresh automatic ones";
    set.createAdditionalPoint(1, &viewer);
    EXPECT_EQ(pointsOf(set, 1), points) << "they already follow the new stick";
}

TEST_F(ShownFault, TheMovingPointFollowsItsEntryWhenAutomaticPointsAreRemade)
{
    set.createAdditionalPoint(1, &viewer);
    set.addPickedPoint(1, P(10, 20, 10));  // a hand edit made without removing them first
    set.setCurrentPickedFaultId(1);
    set.setCurrentMovingPointId(set.getNumberOfPickedPoint(1) - 1);
    set.createAdditionalPoint(1, &viewer);
    EXPECT_EQ(set.getCurrentMovingPointId(), 5);
    EXPECT_EQ(*set.getPickedPoint(1, 5), P(10, 20, 10));
}

// ----- automatic points and cleaning -----

TEST(FaultPicking, RemovingAutomaticPointsMovesTheCursorWithItsEntry)
{
    const Points list{P(0, 0), P(1, 1, 0, true), P(2, 2), core::PointWithBool(-9999, 0, 0, true),
                      P(3, 3, 0, true), P(4, 4)};
    const struct {
        int before;
        int after;
    } cases[] = {{0, 0}, {1, kNo}, {2, 1}, {3, kNo}, {5, 2}, {kNo, kNo}, {17, 17}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "cursor " << c.before);
        ZNFaultPatchManager set(2);
        append(set, 1, list);
        int cursor = c.before;
        EXPECT_EQ(set.removeAutomaticPickedPoints(1, &cursor), 3);
        EXPECT_EQ(cursor, c.after);
        EXPECT_EQ(pointsOf(set, 1), (Points{P(0, 0), P(2, 2), P(4, 4)}));
    }
}

TEST(FaultPicking, CleaningDropsIsolatedPointsAndCollapsesSeparatorRuns)
{
    const struct {
        const char* what;
        Points before;
        Points isolatedRemoved;
        Points interruptionsRemoved;
    } cases[] = {
        {"one-point sticks", {P(1, 1), S, P(2, 2), P(3, 3), S, P(4, 4)},
         {S, P(2, 2), P(3, 3), S}, {P(1, 1), S, P(2, 2), P(3, 3), S, P(4, 4)}},
        {"three separators in a row", {P(1, 1), P(2, 2), S, S, S, P(3, 3), P(4, 4)},
         {P(1, 1), P(2, 2), S, S, S, P(3, 3), P(4, 4)}, {P(1, 1), P(2, 2), S, P(3, 3), P(4, 4)}},
        {"runs at both ends", {S, S, P(1, 1), P(2, 2), S, S}, {S, S, P(1, 1), P(2, 2), S, S},
         {S, P(1, 1), P(2, 2), S}},
        {"a lone point", {P(1, 1)}, {}, {P(1, 1)}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ZNFaultPatchManager isolated(2);
        append(isolated, 1, c.before);
        isolated.removeIsolatedPointForOnePatch(1);
        EXPECT_EQ(pointsOf(isolated, 1), c.isolatedRemoved);
        ZNFaultPatchManager interrupted(2);
        append(interrupted, 1, c.before);
        interrupted.removePickingInterruptionForOnePatch(1);
        EXPECT_EQ(pointsOf(interrupted, 1), c.interruptionsRemoved);
    }
}

TEST(FaultPicking, CleaningAFaultTidiesEachOfItsPatchesAndNoOther)
{
    ZNFaultPatchManager set(5);
    append(set, 1, {P(0, 0), S, P(1, 1), P(1, 2)});
    append(set, 2, {S, P(2, 2), S, S, P(3, 3), P(3, 4)});
    append(set, 3, {P(9, 9), S, S});
    linkPatches(set, 1, {2});
    set.setCurrentMovingPointId(1);
    set.cleanFaultPicking(2);
    EXPECT_EQ(pointsOf(set, 1), (Points{S, P(1, 1), P(1, 2)}));
    EXPECT_EQ(pointsOf(set, 2), (Points{S, P(3, 3), P(3, 4)}));
    EXPECT_EQ(pointsOf(set, 3), (Points{P(9, 9), S, S}));
    EXPECT_EQ(set.getCurrentMovingPointId(), kNo);

    EXPECT_EQ(set.removeIsolatedPointForAllPatch(), 1);
    EXPECT_EQ(pointsOf(set, 3), (Points{S, S}));
}

// ----- erasing inside an ellipse -----

TEST(FaultErasing, PointsInsideTheEllipseGoAndTheRemainingSticksKeepOneSeparator)
{
    struct Case {
        const char* what;
        double cx, cy, rx, ry;
        Points expected;
    };
    // Screen = world x, y (the orthographic viewer's identity). Sticks at x = 0, 10, 20.
    const Points sticks{P(0, 0), P(0, 10), S, P(10, 0), P(10, 10), S, P(20, 0), P(20, 10)};
    const Case cases[] = {
        {"nothing inside", 50, 50, 3, 3, sticks},
        {"one point", 10, 10, 1, 1, {P(0, 0), P(0, 10), S, P(10, 0), S, P(20, 0), P(20, 10)}},
        {"a whole stick: its separator goes too", 10, 5, 2, 8, {P(0, 0), P(0, 10), S, P(20, 0), P(20, 10)}},
        {"the first stick: no separator in front", 0, 5, 2, 8, {P(10, 0), P(10, 10), S, P(20, 0), P(20, 10)}},
        {"a wide flat ellipse takes the top of every stick", 10, 0, 30, 2, {P(0, 10), S, P(10, 10), S, P(20, 10)}},
        {"on the rim counts as inside", 10, 10, 10, 1, {P(0, 0), S, P(10, 0), S, P(20, 0)}},
    };
    OrthographicViewer viewer;
    for (const Case& c : cases) {
        ZNFaultPatchManager set(2);
        append(set, 1, sticks);
        const int erased = set.removePickedPointInsideEllipseForOneFault(1, {c.cx, c.cy}, c.rx, c.ry, &viewer);
        EXPECT_EQ(pointsOf(set, 1), c.expected) << c.what;
        EXPECT_EQ(erased, int(std::count_if(sticks.begin(), sticks.end(), [](auto& p) { return !p.isSeparator(); })) -
                              int(std::count_if(c.expected.begin(), c.expected.end(), [](auto& p) { return !p.isSeparator(); })))
            << c.what;
    }
}

TEST(FaultErasing, TheMovingPointFollowsItsEntryAndEveryPatchOfTheFaultIsErased)
{
    OrthographicViewer viewer;
    ZNFaultPatchManager set(4);
    append(set, 1, {P(0, 0), P(0, 10), S, P(10, 0)});
    append(set, 2, {P(5, 5), P(40, 40)});
    append(set, 3, {P(5, 5)});  // another fault: untouched
    linkPatches(set, 1, {2});
    set.setCurrentPickedFaultId(1);
    set.setCurrentMovingPointId(3);  // P(10, 0)
    EXPECT_EQ(set.removePickedPointInsideEllipseForOneFault(1, {2, 5}, 6, 6, &viewer), 3);  // (0,0), (0,10), (5,5)
    EXPECT_EQ(pointsOf(set, 1), (Points{P(10, 0)}));
    EXPECT_EQ(pointsOf(set, 2), (Points{P(40, 40)}));
    EXPECT_EQ(pointsOf(set, 3).size(), 1u);
    EXPECT_EQ(set.getCurrentMovingPointId(), 0);
    set.removePickedPointInsideEllipseForOneFault(1, {10, 0}, 1, 1, &viewer);
    EXPECT_EQ(set.getCurrentMovingPointId(), kNo);

    for (const double bad : {0.0, -1.0}) EXPECT_EQ(set.removePickedPointInsideEllipseForOnePatch(2, {40, 40}, bad, 5, &viewer), 0);
    EXPECT_EQ(set.removePickedPointInsideEllipseForOnePatch(2, {40, 40}, 5, 5, nullptr), 0);
    EXPECT_EQ(set.removePickedPointInsideEllipseForOnePatch(9, {40, 40}, 5, 5, &viewer), 0);
}
