#include <gtest/gtest.h>

#include <surface/segmentcrossings.h>

#include <algorithm>
#include <cmath>

namespace {

using fault::surface::PlanarInput;

PlanarInput inputOf(std::vector<core::vec2> positions, std::vector<std::array<int, 2>> segments,
                    std::vector<std::vector<int>> loops = {})
{
    PlanarInput in;
    in.positions = std::move(positions);
    for (const core::vec2& p : in.positions) in.heights.push_back(p.x + 10.0 * p.y);  // a plane
    in.segments = std::move(segments);
    in.domainLoops = std::move(loops);
    return in;
}

// The points a chain of segments visits from its first end, or -1 when the segments do
// not join end to start.
std::vector<int> chain(const std::vector<std::array<int, 2>>& segments)
{
    std::vector<int> points;
    for (const auto& s : segments) {
        if (!points.empty() && points.back() != s[0]) return {-1};
        if (points.empty()) points.push_back(s[0]);
        points.push_back(s[1]);
    }
    return points;
}

bool near(const core::vec2& a, const core::vec2& b) { return (a - b).length() < 1e-12; }

} // namespace

// Each case: the constraints, the path the first segment takes afterwards (as positions),
// and the count of points added.
TEST(ConstraintSplitting, CrossingsAndPointsOnEdgesSplitTheEdgesThroughThem)
{
    struct Case {
        const char* name;
        PlanarInput input;
        std::vector<core::vec2> firstPath;
        size_t added;
    };
    const std::vector<Case> cases = {
        {"two segments crossing",
         inputOf({{0, 0}, {4, 4}, {0, 4}, {4, 0}}, {{0, 1}, {2, 3}}), {{0, 0}, {2, 2}, {4, 4}}, 1},
        {"crossing, the first segment drawn backwards",
         inputOf({{4, 4}, {0, 0}, {0, 4}, {4, 0}}, {{0, 1}, {2, 3}}), {{4, 4}, {2, 2}, {0, 0}}, 1},
        {"an input point on the inside of a segment",
         inputOf({{0, 0}, {6, 0}, {2, 0}, {2, 5}}, {{0, 1}, {2, 3}}), {{0, 0}, {2, 0}, {6, 0}}, 0},
        {"segments meeting at an end only",
         inputOf({{0, 0}, {4, 0}, {4, 4}}, {{0, 1}, {1, 2}}), {{0, 0}, {4, 0}}, 0},
        {"the edge right of the other one higher",
         inputOf({{0, 0}, {4, 4}, {1, 3}, {3, 1}}, {{0, 1}, {2, 3}}), {{0, 0}, {2, 2}, {4, 4}}, 1},
        {"boxes apart on the second axis only",
         inputOf({{0, 0}, {4, 1}, {1, 3}, {3, 5}}, {{0, 1}, {2, 3}}), {{0, 0}, {4, 1}}, 0},
        {"three sticks crossed by one",
         inputOf({{1, 0}, {1, 4}, {2, 0}, {2, 4}, {3, 0}, {3, 4}, {0, 1}, {4, 3}},
                 {{6, 7}, {0, 1}, {2, 3}, {4, 5}}),
         {{0, 1}, {1, 1.5}, {2, 2}, {3, 2.5}, {4, 3}}, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PlanarInput in = c.input;
        const size_t before = in.positions.size();
        fault::surface::splitConstraints(in, 1e-9);
        EXPECT_EQ(in.positions.size() - before, c.added);
        ASSERT_EQ(in.heights.size(), in.positions.size());
        for (size_t i = before; i < in.positions.size(); ++i)  // crossings lie on the plane
            EXPECT_NEAR(in.heights[i], in.positions[i].x + 10.0 * in.positions[i].y, 1e-9);
        // The first segment's pieces come first, in order from its first end.
        std::vector<std::array<int, 2>> first(in.segments.begin(), in.segments.begin() + c.firstPath.size() - 1);
        const std::vector<int> path = chain(first);
        ASSERT_EQ(path.size(), c.firstPath.size());
        for (size_t k = 0; k < path.size(); ++k) {
            ASSERT_GE(path[k], 0);
            EXPECT_TRUE(near(in.positions[path[k]], c.firstPath[k])) << "point " << k;
        }
    }
}

// A square loop whose bottom edge is also a segment, drawn the other way: both are cut
// through the same new points, the loop keeps its direction and every piece is short.
TEST(ConstraintSubdivision, SharedEdgesAreCutThroughTheSamePointsEitherWay)
{
    PlanarInput in = inputOf({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, {{1, 0}}, {{0, 1, 2, 3}});
    fault::surface::subdivideConstraints(in, 3.0);
    ASSERT_EQ(in.positions.size(), 4u + 4u * 3u);  // each side in four pieces of 2.5
    ASSERT_EQ(in.heights.size(), in.positions.size());
    for (size_t i = 0; i < in.positions.size(); ++i)
        EXPECT_NEAR(in.heights[i], in.positions[i].x + 10.0 * in.positions[i].y, 1e-9);

    const std::vector<int> segment = chain(in.segments);
    ASSERT_EQ(segment.size(), 5u);
    EXPECT_EQ(segment.front(), 1);
    EXPECT_EQ(segment.back(), 0);
    ASSERT_EQ(in.domainLoops.size(), 1u);
    const std::vector<int>& loop = in.domainLoops[0];
    ASSERT_EQ(loop.size(), 16u);
    EXPECT_EQ(loop[0], 0);
    // The loop's bottom side is the segment backwards.
    for (size_t k = 0; k < 5; ++k) EXPECT_EQ(loop[k], segment[4 - k]) << k;
    double area = 0.0;  // counter-clockwise still
    for (size_t k = 0; k < loop.size(); ++k) {
        const core::vec2& a = in.positions[loop[k]];
        const core::vec2& b = in.positions[loop[(k + 1) % loop.size()]];
        EXPECT_NEAR((b - a).length(), 2.5, 1e-12);
        area += 0.5 * (a.x * b.y - b.x * a.y);
    }
    EXPECT_NEAR(area, 100.0, 1e-9);
}

TEST(ConstraintSubdivision, NothingForShortEdgesOrABoundThatIsNotPositive)
{
    for (const double bound : {20.0, 0.0, -1.0, std::nan("")}) {
        PlanarInput in = inputOf({{0, 0}, {10, 0}, {10, 10}}, {{0, 1}, {1, 2}});
        const PlanarInput before = in;
        fault::surface::subdivideConstraints(in, bound);
        EXPECT_EQ(in.positions.size(), before.positions.size()) << bound;
        EXPECT_EQ(in.segments, before.segments) << bound;
    }
}
