#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include <volumeio/segygrid.h>
#include <volumeio/segyworld.h>

using core::vec2;
using core::vec3;
using namespace volumeio;

namespace {
// The inline and crossline numbers of an nIl x nXl grid, inline-sorted.
void gridNumbers(int il0, int ilStep, int nIl, int xl0, int xlStep, int nXl,
                 std::vector<int>& inlines, std::vector<int>& crosslines)
{
    for (int i = 0; i < nIl; ++i)
        for (int j = 0; j < nXl; ++j) {
            inlines.push_back(il0 + i * ilStep);
            crosslines.push_back(xl0 + j * xlStep);
        }
}
} // namespace

TEST(SegyGrid, ShuffledTracesStillFindTheirCells)
{
    std::vector<int> inlines, crosslines;
    gridNumbers(10, 2, 4, 300, 5, 3, inlines, crosslines);
    std::vector<std::size_t> order(inlines.size());
    for (std::size_t t = 0; t < order.size(); ++t) order[t] = t;
    std::shuffle(order.begin(), order.end(), std::mt19937(5));
    std::vector<int> il, xl;
    for (std::size_t t : order) {
        il.push_back(inlines[t]);
        xl.push_back(crosslines[t]);
    }
    SegyGrid grid;
    ASSERT_EQ(inferSegyGrid(il, xl, grid), QString());
    EXPECT_EQ(grid.inlineNumbers, (std::vector<int>{10, 12, 14, 16}));
    EXPECT_EQ(grid.crosslineNumbers, (std::vector<int>{300, 305, 310}));
    for (std::size_t t = 0; t < il.size(); ++t) {
        EXPECT_EQ(grid.inlineNumbers[grid.inlineIndexOfTrace[t]], il[t]);
        EXPECT_EQ(grid.crosslineNumbers[grid.crosslineIndexOfTrace[t]], xl[t]);
    }
}

TEST(SegyGrid, SortingComesFromTheFirstTwoTraces)
{
    struct Case {
        std::vector<int> il, xl;
        SegySorting sorting;
    };
    const Case cases[] = {
        {{1, 1, 2, 2}, {5, 6, 5, 6}, SegySorting::Inline},
        {{1, 2, 1, 2}, {5, 5, 6, 6}, SegySorting::Crossline},
        {{1, 2, 2, 1}, {5, 6, 5, 6}, SegySorting::Unknown},
        {{7}, {9}, SegySorting::Inline},
    };
    for (const Case& c : cases) {
        SegyGrid grid;
        ASSERT_EQ(inferSegyGrid(c.il, c.xl, grid), QString());
        EXPECT_EQ(grid.sorting, c.sorting) << segySortingName(c.sorting).toStdString();
    }
}

TEST(SegyGrid, IrregularNumbersLeaveTheGridUntouched)
{
    struct Case {
        std::vector<int> il, xl;
        const char* reason;
    };
    const Case cases[] = {
        {{}, {}, "the file holds no trace"},
        {{1, 2}, {1}, "2 inline numbers for 1 crossline numbers"},
        {{1, 1, 1},
         {1, 2, 4},
         "irregular geometry: crossline numbers are not evenly spaced "
         "(step 1, but 4 follows 2)"},
        {{1, 1, 2}, {1, 2, 1}, "irregular geometry: 3 traces for 2 inlines x 2 crosslines"},
        {{1, 1, 2, 1},
         {1, 2, 1, 1},
         "irregular geometry: inline 1 crossline 1 has more than one trace"},
    };
    for (const Case& c : cases) {
        SegyGrid grid;
        grid.inlineNumbers = {42};
        EXPECT_EQ(inferSegyGrid(c.il, c.xl, grid), QString::fromLatin1(c.reason));
        EXPECT_EQ(grid.inlineNumbers, std::vector<int>{42});
        EXPECT_TRUE(grid.inlineIndexOfTrace.empty());
    }
}

TEST(SegyWorld, ASingleLineGetsAPerpendicularAxisOfTheSameLength)
{
    std::vector<int> il, xl;
    gridNumbers(5, 1, 1, 1, 1, 4, il, xl);
    SegyGrid grid;
    ASSERT_EQ(inferSegyGrid(il, xl, grid), QString());
    std::vector<vec2> points;
    for (int j = 0; j < 4; ++j) points.emplace_back(1000.0 + 3.0 * j, 2000.0 + 4.0 * j);
    const SegyWorldFit fit = segyBlocToWorld(grid, points, {10.0, 2.0});
    ASSERT_TRUE(fit.fromCoordinates);
    const core::mat4& m = fit.blocToWorld;
    const vec3 alongInline = m.transformVector({1, 0, 0});
    const vec3 alongCrossline = m.transformVector({0, 1, 0});
    EXPECT_NEAR(alongCrossline.x, 3.0, 1e-12);
    EXPECT_NEAR(alongCrossline.z, 4.0, 1e-12);
    EXPECT_NEAR(alongInline.length(), 5.0, 1e-12);
    EXPECT_NEAR(alongInline.dot(alongCrossline), 0.0, 1e-12);
    const vec3 p = m.transformPoint({0, 3, 7});
    EXPECT_NEAR(p.x, 1009.0, 1e-9);
    EXPECT_NEAR(p.y, 24.0, 1e-12);
    EXPECT_NEAR(p.z, 2012.0, 1e-9);
}

TEST(SegyWorld, PositionsThatDoNotSpanTheMapFallBackToTheUnitGrid)
{
    std::vector<int> il, xl;
    gridNumbers(1, 1, 3, 1, 1, 3, il, xl);
    SegyGrid grid;
    ASSERT_EQ(inferSegyGrid(il, xl, grid), QString());
    const std::vector<vec2> zero(9);
    std::vector<vec2> collinear;   // both axes along the same map direction
    for (std::size_t t = 0; t < il.size(); ++t)
        collinear.emplace_back(100.0 * il[t] + 50.0 * xl[t], 0.0);
    std::vector<vec2> wrongCount(4, vec2(1, 1));
    for (const auto& points : {zero, collinear, wrongCount}) {
        const SegyWorldFit fit = segyBlocToWorld(grid, points, {0.0, 4.0});
        EXPECT_FALSE(fit.fromCoordinates);
        const vec3 p = fit.blocToWorld.transformPoint({2, 1, 3});
        EXPECT_EQ(p, vec3(2, 12, 1));
    }
}
