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
        std::vector<PointWithBool> list;
        double x, y;
        int entry, segmentEnd;
    } cases[] = {
        {"on an entry", list, 0, 10, 1, -9999},
        {"beside a segment, nearer its first end", list, 2, 4, 0, 1},
        {"beside a segment, nearer its second end", list, 2, 16, 2, 2},
        {"beyond the end of a stick", list, 0, 30, 2, -9999},
        {"beyond the tolerance", list, 25, 10, 4, -9999},
        // As far from both ends of (0, 1); the segment (1, 2) is nearer.
        {"ties go to the first entry and the nearer segment wins", {P(0, 0), P(10, 0), P(10, 1)},
         9.8, 0.5, 1, 2},
        // As far from the points on either side of the separator, along the line joining them.
        {"a separator ends every segment", {P(0, 0), P(0, 10), S, P(0, 20), P(0, 30)}, 1, 15, 1,
         -9999},
        {"no points give no entry", {}, 0, 0, -9999, -9999},
        {"separators alone give no entry", {S, S}, 0, 0, -9999, -9999},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const ZNPickingViewer::NearestEntry r = nearest(viewer, c.list, c.x, c.y);
        EXPECT_EQ(r.entry, c.entry);
        EXPECT_EQ(r.segmentEnd, c.segmentEnd);
    }
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
