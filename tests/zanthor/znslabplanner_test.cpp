#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <znservice.h>
#include <znslabplanner.h>

namespace {
struct Case {
    long long budget;
    int nx, ny, nz, bytes;
    core::Triplet expected;
    double factor = 1.0;  // working set per sample, in samples
    int halo = 0;         // slices held beyond the slab
};
const core::Triplet kNoSlab(-9999, -9999, -9999);
} // namespace

TEST(ZNSlabPlanner, AnswersTheMostWholeSlicesThatFitTheBudget)
{
    const std::vector<Case> cases{
        {100 * 50 * 2 * 7, 100, 50, 40, 2, {100, 50, 7}},
        {100 * 50 * 2 * 7 + 99, 100, 50, 40, 2, {100, 50, 7}},   // rounded down
        {100 * 50 * 4 * 7, 100, 50, 40, 4, {100, 50, 7}},
        {1LL << 40, 100, 50, 40, 2, {100, 50, 40}},              // clamped to the depth
        {100 * 50 * 2, 100, 50, 40, 2, {100, 50, 1}},
        {100 * 50 * 2 - 1, 100, 50, 40, 2, kNoSlab},             // not one slice
        {0, 1, 1, 1, 1, kNoSlab},
        {1 << 20, 0, 50, 40, 2, kNoSlab},
        {1 << 20, 10, -1, 40, 2, kNoSlab},
        {1 << 20, 10, 10, 0, 2, kNoSlab},
        {1 << 20, 10, 10, 10, 0, kNoSlab},
        {1LL << 62, 2147483647, 2147483647, 5, 1, {2147483647, 2147483647, 1}},
        {1LL << 62, 2147483647, 2147483647, 5, 8, kNoSlab},     // slice bytes overflow
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.budget << " " << c.nx << "x" << c.ny << "x" << c.nz);
        const ZNSlabPlanner planner(c.budget);
        EXPECT_EQ(planner.plan(c.nx, c.ny, c.nz, c.bytes), c.expected);
    }
}

TEST(ZNSlabPlanner, TheWorkingSetAndItsHaloFitTheBudget)
{
    // A slice of 100 x 50 samples of 2 bytes: 10000 bytes, times the factor.
    const std::vector<Case> cases{
        {10000 * 4 * 7, 100, 50, 40, 2, {100, 50, 7}, 4.0, 0},
        {10000 * 4 * 7 - 1, 100, 50, 40, 2, {100, 50, 6}, 4.0, 0},
        {41875 * 11, 100, 50, 40, 2, {100, 50, 7}, 4.1875, 4},   // 7 slices and 4 of halo
        {41875 * 11 - 1, 100, 50, 40, 2, {100, 50, 6}, 4.1875, 4},
        {41875 * 5, 100, 50, 40, 2, {100, 50, 1}, 4.1875, 4},
        {41875 * 5 - 1, 100, 50, 40, 2, kNoSlab, 4.1875, 4},     // the halo alone fits
        {1LL << 40, 100, 50, 40, 2, {100, 50, 40}, 4.1875, 4},   // clamped to the depth
        {10000 * 3, 100, 50, 40, 2, {100, 50, 6}, 0.5, 0},       // less than a sample each
        {1 << 30, 100, 50, 40, 2, kNoSlab, 0.0, 0},
        {1 << 30, 100, 50, 40, 2, kNoSlab, -1.0, 0},
        {1 << 30, 100, 50, 40, 2, kNoSlab, std::nan(""), 0},
        {1 << 30, 100, 50, 40, 2, kNoSlab, HUGE_VAL, 0},
        {1 << 30, 100, 50, 40, 2, kNoSlab, 1.0, -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.budget << " " << c.factor << " " << c.halo);
        ZNSlabPlanner planner(c.budget);
        EXPECT_EQ(planner.plan(c.nx, c.ny, c.nz, c.bytes, c.factor, c.halo), c.expected);
        ZNScopedService<ZNSlabPlanner> scope(planner);
        EXPECT_EQ(ZNSlabPlanner::planSlab(c.nx, c.ny, c.nz, c.bytes, c.factor, c.halo),
                  c.expected);
    }
}

TEST(ZNSlabPlanner, TheDefaultBudgetIsAShareOfPhysicalMemory)
{
    const ZNSlabPlanner planner;
    EXPECT_GT(ZNSlabPlanner::physicalMemory(), 0);
    EXPECT_EQ(planner.memoryBudget(),
              static_cast<long long>(ZNSlabPlanner::kDefaultMemoryFraction *
                                     static_cast<double>(ZNSlabPlanner::physicalMemory())));
    EXPECT_EQ(ZNSlabPlanner(-5).memoryBudget(), 0);
}

TEST(ZNSlabPlanner, TheInstalledPlannerAnswersForTheHost)
{
    ZNSlabPlanner small(10 * 10 * 2 * 3);
    {
        ZNScopedService<ZNSlabPlanner> scope(small);
        EXPECT_EQ(ZNSlabPlanner::planSlab(10, 10, 100, 2), core::Triplet(10, 10, 3));
        small.setMemoryBudget(10 * 10 * 2 * 5);
        EXPECT_EQ(ZNSlabPlanner::planSlab(10, 10, 100, 2), core::Triplet(10, 10, 5));
    }
    EXPECT_NE(&ZNSlabPlanner::instance(), &small);
}
