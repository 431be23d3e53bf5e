#include <gtest/gtest.h>

#include <core/stickrules.h>

#include <vector>

using core::PointWithBool;
namespace sticks = core::sticks;

namespace {
const PointWithBool S = PointWithBool::separator();
PointWithBool P(double v) { return PointWithBool(v, v, v); }
} // namespace

TEST(StickRules, BoundariesStopsAndIsolatedPointsFollowTheSeparators)
{
    struct Expect {
        bool boundary, stop, isolated;
    };
    const struct {
        const char* what;
        std::vector<PointWithBool> list;
        std::vector<Expect> expected;  // one per entry
    } cases[] = {
        {"points on either side of a separator are boundaries, stops and isolated",
         {P(1), S, P(2)}, {{true, true, true}, {false, false, false}, {true, true, true}}},
        {"a lone point is boundary, stop and isolated", {P(1)}, {{true, true, true}}},
        {"inside long sticks only the ends are boundaries and only the last stops",
         {P(1), P(2), P(3), S, P(4), P(5)},
         {{true, false, false}, {false, false, false}, {true, true, false}, {false, false, false},
          {true, false, false}, {true, true, false}}},
        {"leading and trailing separators isolate their neighbour",
         {S, P(1), S}, {{false, false, false}, {true, true, true}, {false, false, false}}},
    };
    for (const auto& c : cases) {
        const int n = static_cast<int>(c.list.size());
        for (int i = 0; i < n; ++i) {
            SCOPED_TRACE(testing::Message() << c.what << ", index " << i);
            EXPECT_EQ(sticks::isPickedPointStickBoundaries(c.list.data(), n, i), c.expected[i].boundary);
            EXPECT_EQ(sticks::isPickedPointStopStick(c.list.data(), n, i), c.expected[i].stop);
            EXPECT_EQ(sticks::isPointIsolated(c.list.data(), n, i), c.expected[i].isolated);
        }
    }
}

TEST(StickRules, IndicesOutsideTheListAnswerFalse)
{
    const std::vector<PointWithBool> list{P(1), P(2)};
    for (int i : {-1, 2, 100}) {
        EXPECT_FALSE(sticks::isPickedPointStickBoundaries(list.data(), 2, i));
        EXPECT_FALSE(sticks::isPickedPointStopStick(list.data(), 2, i));
        EXPECT_FALSE(sticks::isPointIsolated(list.data(), 2, i));
    }
    EXPECT_FALSE(sticks::isPointIsolated(nullptr, 0, 0));
}

TEST(StickRules, OnlyXMarksASeparator)
{
    const std::vector<PointWithBool> list{P(1), PointWithBool(1.0, -9999.0, -9999.0), P(2)};
    EXPECT_FALSE(sticks::isSeparator(list.data(), 3, 1));
    EXPECT_FALSE(sticks::isPointIsolated(list.data(), 3, 0));
    const std::vector<PointWithBool> flagged{P(1), PointWithBool(-9999.0, 4, 5, true)};
    EXPECT_TRUE(sticks::isSeparator(flagged.data(), 2, 1));
}

TEST(StickRules, LastPickedPointNoValueNeedsANonEmptyListEndingWithASeparator)
{
    const std::vector<PointWithBool> closed{P(1), S};
    const std::vector<PointWithBool> open{P(1), S, P(2)};
    EXPECT_TRUE(sticks::isLastPickedPointNo_Value(closed.data(), 2));
    EXPECT_FALSE(sticks::isLastPickedPointNo_Value(open.data(), 3));
    EXPECT_FALSE(sticks::isLastPickedPointNo_Value(closed.data(), 0));
    EXPECT_FALSE(sticks::isLastPickedPointNo_Value(nullptr, 0));
}

TEST(StickRules, SticksAreWalkedInOrderSkippingRepeatedSeparators)
{
    const std::vector<PointWithBool> list{S, P(1), P(2), S, S, P(3), S};
    const int n = static_cast<int>(list.size());
    std::vector<std::pair<int, int>> found;
    for (auto r = sticks::nextStick(list.data(), n, 0); r.isValid();
         r = sticks::nextStick(list.data(), n, r.last + 1))
        found.emplace_back(r.first, r.last);
    EXPECT_EQ(found, (std::vector<std::pair<int, int>>{{1, 2}, {5, 5}}));
    EXPECT_EQ(sticks::countSticks(list.data(), n), 2);
    EXPECT_EQ(sticks::stickAt(list.data(), n, 2).first, 1);
    EXPECT_FALSE(sticks::stickAt(list.data(), n, 3).isValid());
}
