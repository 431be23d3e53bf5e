#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include <QTemporaryDir>

#include <segmentation/faultpatchlabelimage.h>
#include <segmentation/slabsegmentation.h>
#include <znbloc.h>

#include "testservices.h"
#include "volumes.h"

using fault::AutomaticExtractionSettings;
using fault::segmentation::LikelihoodSlabReader;
using fault::segmentation::SlabScanSummary;
using fault::segmentation::segmentLikelihoodSlabs;
using namespace segtest;

namespace {

// Noise with sheets crossing the volume at angles and a flat sheet across z, so that
// patches straddle every window border.
ZN3DImage<float> sheets(int nx, int ny, int nz, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> noise(0.0f, 0.6f);
    ZN3DImage<float> v(georef::BlocSpace(nx, ny, nz), kLow);
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                const bool sheet = std::abs(x - z / 2 - 4) <= 1 || std::abs(y + x / 3 - z / 2 - 6) == 0 ||
                                   z == nz / 2;
                v(x, y, z) = sheet ? 0.42f + noise(rng) : 0.8f * noise(rng);
            }
    return v;
}

// Reads slices of `volume`, counting the slices read.
LikelihoodSlabReader readerOf(const ZN3DImage<float>& volume, long long* slicesRead)
{
    return [&volume, slicesRead](int z0, int count, float* out) {
        if (z0 < 0 || count < 1 || z0 + count > volume.nz()) return false;
        std::memcpy(out, volume.slice(z0), volume.sliceSize() * count * sizeof(float));
        *slicesRead += count;
        return true;
    };
}

std::unique_ptr<ZN3DImage<int>> inMemory(ZN3DImage<float>& volume, const AutomaticExtractionSettings& s)
{
    int sliceCount = 0, counter = 0;
    return std::unique_ptr<ZN3DImage<int>>(fault::segmentation::getFaultPatchLabelImage(
        &volume, s.maxLabelCount, sliceCount, counter, s.maxPatchSize, s.maxPlaneDeviation, s.growthIterations,
        s.likelihoodThreshold, -1));
}

class SlabSegmentation : public testing::Test {
protected:
    QTemporaryDir dir;
    RecordingEventBus bus;

    // Segments `volume` slab by slab into a block file and reads the labels back.
    bool segment(const ZN3DImage<float>& volume, const AutomaticExtractionSettings& s, int seedSlices,
                 ZN3DImage<int>& labels, SlabScanSummary& summary, long long& slicesRead)
    {
        const QString path = dir.filePath(QStringLiteral("labels.bloc"));
        ZNBloc out;
        if (!out.create(path, volume.blocSpace(), 0, volume.nz(), ZNBloc::Int32)) return false;
        if (!segmentLikelihoodSlabs(volume.blocSpace(), readerOf(volume, &slicesRead), out, s, seedSlices, -1,
                                    summary))
            return false;
        ZNBloc in;
        return out.close() && in.open(path) && in.readBox(0, 0, 0, in.nx(), in.ny(), in.nz(), labels);
    }
};

AutomaticExtractionSettings small(int rings, int labelBudget = 1000000)
{
    AutomaticExtractionSettings s;
    s.maxPatchSize = 40;
    s.maxPlaneDeviation = 0.9;
    s.growthIterations = rings;
    s.likelihoodThreshold = kThreshold;
    s.maxLabelCount = labelBudget;
    return s;
}

} // namespace

TEST_F(SlabSegmentation, EveryWindowSizeGivesTheLabelsOfTheWholeVolume)
{
    struct Case {
        const char* name;
        int nx, ny, nz;
        AutomaticExtractionSettings settings;
        int seedSlices;
        int windows;
    };
    const Case cases[] = {
        {"one slice per window", 20, 16, 23, small(3), 1, 23},
        {"two slices", 20, 16, 23, small(3), 2, 12},
        {"windows thinner than the rings", 20, 16, 23, small(3), 2, 12},
        {"windows of 7", 20, 16, 23, small(3), 7, 4},
        {"one window", 20, 16, 23, small(3), 23, 1},
        {"more than the volume", 20, 16, 23, small(3), 500, 1},
        {"rings deeper than the volume", 20, 16, 23, small(30), 4, 6},
        {"wide patches, windows of 5", 40, 33, 41, small(6), 5, 9},
        {"the default rings", 40, 33, 41, small(15), 3, 14},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ZN3DImage<float> volume = sheets(c.nx, c.ny, c.nz, 17);
        const std::unique_ptr<ZN3DImage<int>> whole = inMemory(volume, c.settings);
        ASSERT_TRUE(whole);
        ZN3DImage<int> labels;
        SlabScanSummary summary;
        long long read = 0;
        ASSERT_TRUE(segment(volume, c.settings, c.seedSlices, labels, summary, read));
        EXPECT_EQ(summary.windows, c.windows);
        EXPECT_EQ(read, c.nz);  // every slice read once
        const int largest = *std::max_element(whole->data(), whole->data() + whole->voxelCount());
        EXPECT_GT(largest, 10);
        EXPECT_EQ(summary.labelCount, largest);
        ASSERT_EQ(labels.voxelCount(), whole->voxelCount());
        EXPECT_TRUE(std::equal(labels.data(), labels.data() + labels.voxelCount(), whole->data()));
    }
}

TEST_F(SlabSegmentation, ASpentLabelBudgetEndsTheScanWhereTheWholeVolumeScanEnds)
{
    for (const int seedSlices : {1, 3, 6, 41}) {
        SCOPED_TRACE(seedSlices);
        const AutomaticExtractionSettings s = small(4, 12);
        ZN3DImage<float> volume = sheets(40, 33, 41, 5);
        const std::unique_ptr<ZN3DImage<int>> whole = inMemory(volume, s);
        ASSERT_TRUE(whole);
        ASSERT_EQ(whole->slice(40)[0], fault::segmentation::kUnlabelled);
        ZN3DImage<int> labels;
        SlabScanSummary summary;
        long long read = 0;
        ASSERT_TRUE(segment(volume, s, seedSlices, labels, summary, read));
        if (seedSlices < 41) EXPECT_LT(read, 41);   // the slices past the scan's end are not read
        EXPECT_GT(summary.labelCount, 12);
        EXPECT_TRUE(std::equal(labels.data(), labels.data() + labels.voxelCount(), whole->data()));
    }
}

TEST_F(SlabSegmentation, FailuresAndCancelsStopTheRun)
{
    const ZN3DImage<float> volume = sheets(20, 16, 23, 3);
    const AutomaticExtractionSettings s = small(3);
    SlabScanSummary summary;
    ZNBloc out;
    ASSERT_TRUE(out.create(dir.filePath(QStringLiteral("l.bloc")), volume.blocSpace(), 0, 23, ZNBloc::Int32));
    const LikelihoodSlabReader failing = [](int z0, int, float*) { return z0 < 10; };
    EXPECT_FALSE(segmentLikelihoodSlabs(volume.blocSpace(), failing, out, s, 4, -1, summary));
    ZNBloc narrow;
    ASSERT_TRUE(narrow.create(dir.filePath(QStringLiteral("n.bloc")), georef::BlocSpace(19, 16, 23), 0, 23,
                              ZNBloc::Int32));
    long long read = 0;
    EXPECT_FALSE(segmentLikelihoodSlabs(volume.blocSpace(), readerOf(volume, &read), narrow, s, 4, -1, summary));
    EXPECT_EQ(read, 0);
    RecordingProgress cancelling(3);
    ZNBloc cancelled;
    ASSERT_TRUE(cancelled.create(dir.filePath(QStringLiteral("c.bloc")), volume.blocSpace(), 0, 23, ZNBloc::Int32));
    EXPECT_FALSE(segmentLikelihoodSlabs(volume.blocSpace(), readerOf(volume, &read), cancelled, s, 4, -1, summary));
    EXPECT_TRUE(cancelling.titles.contains(QStringLiteral("Get Fault Patches")));
}

TEST(SlabSegmentationMemory, TheWindowGrowsWithTheBudgetAndOneSliceNeedsItsRings)
{
    using fault::segmentation::seedSlicesWithin;
    using fault::segmentation::slabSegmentationBytes;
    const double one = slabSegmentationBytes(512, 512, 1, 15, 600);
    const double ten = slabSegmentationBytes(512, 512, 10, 15, 600);
    // The window holds 2 x 15 slices beyond its seeds, 8 bytes a voxel and masks.
    EXPECT_GT(one, 31.0 * 512 * 512 * 8);
    EXPECT_NEAR(ten - one, 9.0 * 512 * 512 * 8, 9.0 * 512 * 512 * 2);
    EXPECT_EQ(seedSlicesWithin(one - 1, 512, 512, 512, 15, 600), 0);
    EXPECT_EQ(seedSlicesWithin(one, 512, 512, 512, 15, 600), 1);
    EXPECT_EQ(seedSlicesWithin(ten, 512, 512, 512, 15, 600), 10);
    EXPECT_EQ(seedSlicesWithin(1e15, 512, 512, 512, 15, 600), 512);
    EXPECT_EQ(seedSlicesWithin(1e9, 0, 512, 512, 15, 600), 0);
}
