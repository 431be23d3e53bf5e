#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include <QFile>
#include <QTemporaryDir>

#include <segmentation/faultpatchlabelimage.h>
#include <segmentation/labelscan.h>
#include <segmentation/largefilesegmentation.h>
#include <znbloc.h>
#include <znservice.h>
#include <znslabplanner.h>

#include "testservices.h"
#include "volumes.h"

using fault::segmentation::getFaultPatchLabelImage;
using fault::segmentation::getFaultPatchLabelImageLargeFile;
using fault::segmentation::kUnlabelled;
using namespace segtest;

namespace {

constexpr int kNx = 20, kNy = 16, kNz = 23;
constexpr int kCz = 5;  // slices the planner allows per slab
constexpr int kMaxPatchSize = 40;
constexpr double kDeviation = 0.9;
constexpr int kRings = 3;

// Noise with two thick sheets crossing the volume at an angle.
ZN3DImage<float> sheets()
{
    std::mt19937 rng(17);
    std::uniform_real_distribution<float> noise(0.0f, 0.6f);
    core::mat4 toWorld = core::mat4::translation({500.0, 0.0, 800.0});
    ZN3DImage<float> v(georef::BlocSpace(kNx, kNy, kNz, toWorld), kLow);
    for (int z = 0; z < kNz; ++z)
        for (int y = 0; y < kNy; ++y)
            for (int x = 0; x < kNx; ++x) {
                const bool sheet =
                    std::abs(x - z / 2 - 4) <= 1 || std::abs(y + x / 3 - z / 2 - 6) == 0;
                v(x, y, z) = sheet ? 0.42f + noise(rng) : 0.8f * noise(rng);
            }
    return v;
}

class LargeFileTest : public testing::Test {
protected:
    QTemporaryDir dir;
    RecordingEventBus bus;
    ZNSlabPlanner planner{fault::segmentation::detail::slabBudget(kNx, kNy, kCz, kMaxPatchSize)};
    ZNScopedService<ZNSlabPlanner> plannerScope{planner};
    ZN3DImage<float> volume = sheets();
    ZNBloc input;

    void SetUp() override
    {
        ZNBloc out;
        ASSERT_TRUE(
            out.create(path("likelihood.znb"), volume.blocSpace(), 0, kNz, ZNBloc::Float32));
        ASSERT_TRUE(out.writeSlices(0, volume, 0, kNz));
        ASSERT_TRUE(out.close());
        ASSERT_TRUE(input.open(path("likelihood.znb")));
    }
    QString path(const char* name) const { return dir.filePath(QString::fromLatin1(name)); }

    bool run(int& firstSlice, int labelBudget = fault::segmentation::detail::kSlabLabelBudget)
    {
        return fault::segmentation::detail::segmentLargeFile(
            &input, path("labels.znb"), firstSlice, kMaxPatchSize, kDeviation, kRings,
            kThreshold, -1, labelBudget);
    }

    ZN3DImage<int> readLabels()
    {
        ZNBloc labels;
        ZN3DImage<int> image;
        EXPECT_TRUE(labels.open(path("labels.znb")));
        EXPECT_EQ(labels.sampleType(), ZNBloc::Int32);
        EXPECT_TRUE(labels.readBox(0, 0, 0, labels.nx(), labels.ny(), labels.nz(), image));
        return image;
    }

    // The in-memory segmentation of slices [k, k + depth) of the volume.
    std::unique_ptr<ZN3DImage<int>> segmentSlab(int k, int depth, int& counter, int budget,
                                                int* scanned = nullptr)
    {
        ZN3DImage<float> slab(georef::BlocSpace(kNx, kNy, depth), 0.0f);
        std::copy(volume.slice(k), volume.slice(k) + slab.voxelCount(), slab.data());
        int sliceCount = 0;
        std::unique_ptr<ZN3DImage<int>> labels(getFaultPatchLabelImage(
            &slab, budget, sliceCount, counter, kMaxPatchSize, kDeviation, kRings, kThreshold, -1));
        if (scanned) *scanned = sliceCount;
        return labels;
    }

    // Counts the voxels of output slices [from, to) (input slice numbers) that differ
    // from slab slices starting at slab slice `slabSlice`.
    static size_t differences(const ZN3DImage<int>& output, int firstSlice,
                              const ZN3DImage<int>& slab, int slabStart, int from, int to)
    {
        size_t count = 0;
        for (int z = from; z < to; ++z)
            for (size_t i = 0; i < slab.sliceSize(); ++i)
                count += output.slice(z - firstSlice)[i] != slab.slice(z - slabStart)[i];
        return count;
    }
};

} // namespace

TEST_F(LargeFileTest, EverySlabOfTheFileHoldsTheInMemoryLabelsOfThatSlab)
{
    int firstSlice = 2;
    ASSERT_TRUE(run(firstSlice));
    EXPECT_EQ(firstSlice, kNz);
    const ZN3DImage<int> output = readLabels();
    ASSERT_EQ(output.nz(), kNz - 2);
    const core::vec3 origin = output.blocSpace().blocToWorld({0.0, 0.0, 0.0});
    EXPECT_EQ(origin.z, volume.blocSpace().blocToWorld({0.0, 0.0, 2.0}).z);

    // Slabs of kCz + 3 slices every kCz slices, one label counter from 1; the earlier slab
    // keeps the 3 slices two slabs share.
    int counter = 1;
    int writtenEnd = 2;
    int slabs = 0;
    for (int k = 2; k < kNz; k += kCz, ++slabs) {
        SCOPED_TRACE(k);
        const int depth = std::min(kCz + 3, kNz - k);
        const auto slab = segmentSlab(k, depth, counter, 1000000);
        ASSERT_NE(slab, nullptr);
        const int from = std::max(k, writtenEnd);
        EXPECT_EQ(differences(output, 2, *slab, k, from, k + depth), 0u);
        writtenEnd = std::max(writtenEnd, k + depth);
    }
    EXPECT_EQ(slabs, 5);
    EXPECT_GT(counter, 20);  // patches were found
    EXPECT_EQ(voxelsWithLabel(output, 2).empty(), false);  // the first label is 2
    EXPECT_TRUE(voxelsWithLabel(output, 1).empty());
    EXPECT_EQ(bus.texts(), (QStringList{"k: 2", "k: 7", "k: 12", "k: 17", "k: 22"}));
    for (const auto& m : bus.messages) EXPECT_EQ(m.first, 0);
}

TEST_F(LargeFileTest, UnlabelledVoxelsHoldNoValueInTheFile)
{
    for (size_t i = 0; i < volume.voxelCount(); ++i) volume.data()[i] = kLow;
    SetUp();
    int firstSlice = 0;
    ASSERT_TRUE(run(firstSlice));
    const ZN3DImage<int> output = readLabels();
    EXPECT_EQ(voxelsWithLabel(output, kUnlabelled).size(), output.voxelCount());
    EXPECT_EQ(output.nz(), kNz);
}

TEST_F(LargeFileTest, ASpentLabelBudgetEndsTheRunAndTheFileAfterTheLastScannedSlice)
{
    int firstSlice = 1;
    const int budget = 12;
    ASSERT_TRUE(run(firstSlice, budget));
    // The same walk in memory tells where the budget runs out.
    int counter = 1, writtenEnd = 1, end = -1;
    std::unique_ptr<ZN3DImage<int>> last;
    for (int k = 1; k < kNz && end < 0; k += kCz) {
        const int depth = std::min(kCz + 3, kNz - k);
        int scanned = 0;
        last = segmentSlab(k, depth, counter, budget, &scanned);
        if (scanned < depth) end = k + scanned;
        writtenEnd = std::max(writtenEnd, k + depth);
    }
    ASSERT_GT(end, 0);
    ASSERT_LT(end, kNz);
    EXPECT_EQ(firstSlice, end);
    EXPECT_EQ(readLabels().nz(), end - 1);
}

TEST_F(LargeFileTest, CancellingLeavesAFileOfTheSlabsWritten)
{
    // Increments: the run's bar, then one per slice of the first slab's own bar; the
    // run's second increment cancels.
    {
        RecordingProgress progress(1 + (kCz + 3) + 1);
        int firstSlice = 0;
        EXPECT_FALSE(run(firstSlice));
        EXPECT_EQ(firstSlice, kCz + 3);
        EXPECT_EQ(progress.openBarCount(), 0);
        EXPECT_EQ(progress.titles, (QStringList{"Get Fault Patches", "Get Fault Patches"}));
    }
    const ZN3DImage<int> output = readLabels();
    EXPECT_EQ(output.nz(), kCz + 3);
    int counter = 1;
    const auto slab = segmentSlab(0, kCz + 3, counter, 1000000);
    ASSERT_NE(slab, nullptr);
    EXPECT_EQ(differences(output, 0, *slab, 0, 0, kCz + 3), 0u);
}

TEST_F(LargeFileTest, CancellingInsideASlabStopsTheRunToo)
{
    RecordingProgress progress(3);
    int firstSlice = 0;
    EXPECT_FALSE(run(firstSlice));
    EXPECT_EQ(progress.openBarCount(), 0);
    ZNBloc labels;
    ASSERT_TRUE(labels.open(path("labels.znb")));
    EXPECT_EQ(labels.nz(), 0);
}

TEST_F(LargeFileTest, UnusableInputsReturnFalseAndWriteNothing)
{
    int firstSlice = 0;
    EXPECT_FALSE(getFaultPatchLabelImageLargeFile(nullptr, path("labels.znb"), firstSlice, 30, 1.0,
                                                  3, 0.5, -1));
    ZNBloc closed;
    EXPECT_FALSE(getFaultPatchLabelImageLargeFile(&closed, path("labels.znb"), firstSlice, 30, 1.0,
                                                  3, 0.5, -1));
    for (int first : {kNz, kNz + 4, -1}) {
        firstSlice = first;
        EXPECT_FALSE(run(firstSlice));
        EXPECT_EQ(firstSlice, first);
    }
    planner.setMemoryBudget(fault::segmentation::detail::slabBudget(kNx, kNy, 1, 30) - 1);
    firstSlice = 0;
    EXPECT_FALSE(run(firstSlice));
    EXPECT_EQ(firstSlice, 0);
    EXPECT_FALSE(QFile::exists(path("labels.znb")));

    planner.setMemoryBudget(1 << 20);
    EXPECT_FALSE(getFaultPatchLabelImageLargeFile(&input, dir.filePath("missing/labels.znb"),
                                                  firstSlice, 30, 1.0, 3, 0.5, -1));
    EXPECT_EQ(firstSlice, 0);
}

TEST_F(LargeFileTest, ABudgetForTheWholeVolumeGivesOneSlab)
{
    planner.setMemoryBudget(1LL << 30);
    int firstSlice = 0;
    ASSERT_TRUE(getFaultPatchLabelImageLargeFile(
        &input, path("labels.znb"), firstSlice, kMaxPatchSize, kDeviation, kRings, kThreshold, -1));
    int counter = 1;
    const auto whole = segmentSlab(0, kNz, counter, 1000000);
    EXPECT_EQ(differences(readLabels(), 0, *whole, 0, 0, kNz), 0u);
    EXPECT_EQ(bus.texts(), QStringList{"k: 0"});
}

TEST(SlabCost, APlannedSlabHoldsTheSegmentationsWholeWorkingSetWithinTheBudget)
{
    using namespace fault::segmentation::detail;
    struct Case {
        int nx, ny, maxPatchSize;
    };
    // Narrow volumes, whose masks are mostly padding, and wide ones; small and huge patches.
    for (const Case c : {Case{1, 1, 10}, Case{3, 5, 40}, Case{20, 16, 40}, Case{256, 256, 1500},
                         Case{1000, 7, 5000000}}) {
        SCOPED_TRACE(testing::Message() << c.nx << "x" << c.ny << " " << c.maxPatchSize);
        const SlabCost cost = slabCost(c.nx, c.ny, c.maxPatchSize);
        const ScanMemory memory = scanMemory(c.nx, c.ny, c.maxPatchSize, ScanTuning());
        EXPECT_GE(cost.haloSlices, kSlabOverlap);
        for (int cz : {1, 5, 32}) {
            const long long budget = slabBudget(c.nx, c.ny, cz, c.maxPatchSize);
            for (long long b : {budget - 1, budget, budget + budget / 3}) {
                const core::Triplet plan = ZNSlabPlanner(b).plan(
                    c.nx, c.ny, 1000, kPlannedBytesPerSample, cost.workingSetFactor,
                    cost.haloSlices);
                if (b < budget) {
                    EXPECT_TRUE(plan.z == cz - 1 || (cz == 1 && plan.z == -9999));
                    continue;
                }
                ASSERT_GE(plan.z, cz);
                const double held = (plan.z + kSlabOverlap) * memory.perSlice + memory.fixed;
                EXPECT_LE(held, static_cast<double>(b));
            }
        }
    }
}
