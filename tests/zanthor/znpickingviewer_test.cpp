#include <gtest/gtest.h>

#include <vector>

#include <core/conventions.h>

#include "orthographicviewer.h"

namespace {
using core::PointWithBool;
const PointWithBool S = PointWithBool::separator();
PointWithBool P(double x, double y) { return PointWithBool(x, y, 0.0); }

ZNPickingViewer::NearestEntry nearest(const ZNPickingViewer& viewer,
                                      const std::vector<PointWithBool>& points, double x, double y)
{
    return viewer.getNearestPoint2D(core::vec2(x, y), points.data(),
                                    static_cast<int>(points.size()));
}
} // namespace

TEST(PickingViewer, TheNearestEntryAndTheSegmentAlongWhichTheCursorLies)
{
    OrthographicViewer viewer;
    const std::vector<PointWithBool> list{P(0, 0), P(0, 10), P(0, 20), S, P(10, 0), P(10, 20)};
    const struct {
        const char* what;
        double x, y;
        int entry, segmentEnd;
    } cases[] = {
        {"on an entry", 0, 10, 1, -9999},
        {"beside a segment, nearer its first end", 2, 4, 0, 1},
        {"beside a segment, nearer its second end", 2, 16, 2, 2},
        {"beyond the end of a stick", 0, 30, 2, -9999},
        {"beyond the tolerance", 25, 10, 4, -9999},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const ZNPickingViewer::NearestEntry r = nearest(viewer, list, c.x, c.y);
        EXPECT_EQ(r.entry, c.entry);
        EXPECT_EQ(r.segmentEnd, c.segmentEnd);
    }
}

TEST(PickingViewer, TiesGoToTheFirstEntryAndTheNearerSegmentWins)
{
    OrthographicViewer viewer;
    // The cursor is as far from both ends of (0, 1); the segment (1, 2) is nearer.
    const std::vector<PointWithBool> list{P(0, 0), P(10, 0), P(10, 1)};
    const ZNPickingViewer::NearestEntry r = nearest(viewer, list, 9.8, 0.5);
    EXPECT_EQ(r.entry, 1);
    EXPECT_EQ(r.segmentEnd, 2);
}

TEST(PickingViewer, ASeparatorEndsEverySegment)
{
    OrthographicViewer viewer;
    // Equally far from the two points on either side of the separator, and along the
    // line that would join them.
    const std::vector<PointWithBool> list{P(0, 0), P(0, 10), S, P(0, 20), P(0, 30)};
    const ZNPickingViewer::NearestEntry r = nearest(viewer, list, 1, 15);
    EXPECT_EQ(r.entry, 1);
    EXPECT_EQ(r.segmentEnd, core::kNoValue);
}

TEST(PickingViewer, NoPointsGiveNoEntry)
{
    OrthographicViewer viewer;
    EXPECT_EQ(nearest(viewer, {}, 0, 0).entry, core::kNoValue);
    EXPECT_EQ(nearest(viewer, {S, S}, 0, 0).entry, core::kNoValue);
    EXPECT_EQ(viewer.getNearestPoint2D(core::vec2(), nullptr, 4).entry, core::kNoValue);
}

TEST(RandomLine, TheMapPositionLeavesOutTheVerticalAxis)
{
    geom::RandomLine line = OrthographicViewer::sectionAlongX(3, 0, 10, -1, 1);
    EXPECT_TRUE(line.isValid());
    EXPECT_EQ(line.mapPosition(core::vec3(1, 2, 3)), core::vec2(1, 3));
    EXPECT_EQ(line.toSpace(core::vec2(1, 3), 2), core::vec3(1, 2, 3));
    line.verticalAxis = geom::RandomLine::kBlocVerticalAxis;
    EXPECT_EQ(line.mapPosition(core::vec3(1, 2, 3)), core::vec2(1, 2));
    EXPECT_EQ(line.height(core::vec3(1, 2, 3)), 3);
}
