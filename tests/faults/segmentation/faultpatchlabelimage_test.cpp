#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include <omp.h>

#include <segmentation/faultpatchlabelimage.h>
#include <segmentation/faultpatchpropagation.h>
#include <segmentation/labelscan.h>
#include <segmentation/patchspread.h>

#include "testservices.h"
#include "volumes.h"

using core::Triplet;
using fault::segmentation::getFaultPatchLabelImage;
using fault::segmentation::kUnlabelled;
using namespace segtest;

namespace {

struct Settings {
    int maxLabelCount = 1000000;
    int maxPatchSize = 3;
    double maxPlaneDeviation = 1.0;
    int growthIterations = 10;
    double threshold = kThreshold;
};

struct Result {
    std::unique_ptr<ZN3DImage<int>> labels;
    int sliceCount = -1;
    int labelCounter = 0;
};

Result segment(ZN3DImage<float>& likelihood, const Settings& s, int labelCounter = 0)
{
    Result r;
    r.labelCounter = labelCounter;
    r.labels.reset(getFaultPatchLabelImage(&likelihood, s.maxLabelCount, r.sliceCount,
                                           r.labelCounter, s.maxPatchSize, s.maxPlaneDeviation,
                                           s.growthIterations, s.threshold, -1));
    return r;
}

std::vector<int> labelsAlongX(const ZN3DImage<int>& labels)
{
    std::vector<int> row;
    for (int x = 0; x < labels.nx(); ++x) row.push_back(labels(x, 0, 0));
    return row;
}

// The segmentation written the obvious way: every seed grown, every rejected patch
// undone, nothing skipped. The library must give exactly the same labels.
std::unique_ptr<ZN3DImage<int>> referenceSegmentation(ZN3DImage<float>& likelihood,
                                                      const Settings& s, int& labelCounter)
{
    auto labels = std::make_unique<ZN3DImage<int>>(likelihood.blocSpace(), kUnlabelled);
    core::Array<Triplet> patch;
    int label = labelCounter + 1;
    int sliceCount = likelihood.nz();
    bool budgetSpent = false;
    for (int z = 0; z < sliceCount; ++z)
        for (int y = 0; y < likelihood.ny(); ++y)
            for (int x = 0; x < likelihood.nx(); ++x) {
                if (likelihood(x, y, z) < s.threshold || (*labels)(x, y, z) != kUnlabelled)
                    continue;
                fault::segmentation::propagateFaultPatch({x, y, z}, &likelihood, labels.get(),
                                                         label, patch, s.growthIterations,
                                                         s.maxPatchSize, s.threshold);
                const bool kept = patch.size() >= s.maxPatchSize / 3 &&
                                  s.maxPlaneDeviation > fault::segmentation::planeDeviation(patch);
                if (!kept) {
                    for (const Triplet& t : patch) (*labels)(t.x, t.y, t.z) = kUnlabelled;
                    continue;
                }
                ++label;
                if (!budgetSpent && label > s.maxLabelCount) {
                    sliceCount = std::min(likelihood.nz(), z + s.growthIterations + 1);
                    budgetSpent = true;
                }
            }
    labelCounter = label;
    return labels;
}

// The segmentation with its work spread as `tuning` says.
Result segmentTuned(ZN3DImage<float>& likelihood, const Settings& s, int labelCounter,
                    const fault::segmentation::detail::ScanTuning& tuning)
{
    Result r;
    r.labelCounter = labelCounter;
    const fault::segmentation::detail::ScanSettings settings{
        s.maxLabelCount, s.maxPatchSize, s.maxPlaneDeviation, s.growthIterations, s.threshold};
    r.labels.reset(fault::segmentation::detail::segmentInMemory(&likelihood, settings,
                                                                r.sliceCount, r.labelCounter,
                                                                -1, tuning));
    return r;
}

// Ways of spreading the work: one thread, and two or three threads growing seeds ahead
// at every chance, two or three seeds per thread at a time.
std::vector<fault::segmentation::detail::ScanTuning> everyTuning()
{
    std::vector<fault::segmentation::detail::ScanTuning> tunings;
    for (int threads : {1, 2, 3}) {
        fault::segmentation::detail::ScanTuning t;
        t.threads = threads;
        t.seedsPerThread = threads;
        t.speculationMinVoxels = 0;
        t.pace = false;
        tunings.push_back(t);
    }
    return tunings;
}

// Noise with a few thick tilted sheets: many patches accepted, many rejected. With
// `steps`, values are rounded to multiples of 1 / steps, so that many lie exactly on a
// threshold.
ZN3DImage<float> noisySheets(int n, unsigned seed, int nx = 0, int steps = 0)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> noise(0.0f, 0.62f);
    ZN3DImage<float> v = volume(nx > 0 ? nx : n, n, n);
    for (int z = 0; z < n; ++z)
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < v.nx(); ++x) {
                const bool onSheet =
                    std::abs(x % 24 + z / 2 - n / 2) <= 1 || std::abs(y - z - 3) == 0;
                const float value = onSheet ? 0.45f + noise(rng) : noise(rng) * 0.85f;
                v(x, y, z) = steps > 0 ? std::round(value * steps) / steps : value;
            }
    return v;
}

} // namespace

TEST(FaultPatchLabelImage, AVolumeBelowTheThresholdHasNoLabelsUsesOneLabelValueAndKeepsItsGeometry)
{
    core::mat4 toWorld = core::mat4::translation({100.0, 20.0, -5.0});
    toWorld(0, 0) = 12.5;
    ZN3DImage<float> v(georef::BlocSpace(4, 3, 5, toWorld), kLow);
    const Result r = segment(v, Settings{}, 41);
    ASSERT_NE(r.labels, nullptr);
    EXPECT_EQ(r.labels->blocSpace(), v.blocSpace());
    EXPECT_EQ(voxelsWithLabel(*r.labels, kUnlabelled).size(), v.voxelCount());
    EXPECT_EQ(r.labelCounter, 42);
    EXPECT_EQ(r.sliceCount, 5);
}

TEST(FaultPatchLabelImage, AnIsolatedVoxelAtTheThresholdIsKeptOnlyForPatchSizesUpToFive)
{
    struct Case {
        int maxPatchSize;
        bool kept;
    };
    for (const Case c : {Case{1, true}, Case{3, true}, Case{5, true}, Case{6, false}}) {
        SCOPED_TRACE(c.maxPatchSize);
        ZN3DImage<float> v = volume(3, 3, 3);
        v(1, 1, 1) = static_cast<float>(kThreshold);
        Settings s;
        s.maxPatchSize = c.maxPatchSize;
        const Result r = segment(v, s);
        ASSERT_NE(r.labels, nullptr);
        EXPECT_EQ((*r.labels)(1, 1, 1), c.kept ? 1 : kUnlabelled);
        EXPECT_EQ(r.labelCounter, c.kept ? 2 : 1);
    }
}

TEST(FaultPatchLabelImage, AVoxelAtTheThresholdSeedsButIsNeverTakenByGrowth)
{
    // (0) above, (1) at the threshold, (2) above: two separate one-voxel patches and a
    // third from the voxel at the threshold, which is seeded after the first.
    ZN3DImage<float> v = volume(3, 1, 1, kHigh);
    v(1, 0, 0) = static_cast<float>(kThreshold);
    const Result r = segment(v, Settings{});
    ASSERT_NE(r.labels, nullptr);
    EXPECT_EQ(labelsAlongX(*r.labels), (std::vector<int>{1, 2, 2}));
}

TEST(FaultPatchLabelImage, RejectedPatchesAreUndoneAndTheirVoxelsSeedAgain)
{
    // A line of 7 voxels, one ring of growth, patches kept from 3 voxels on. Worked out by
    // hand: seed 0 grows {0,1}, too small, undone; seed 1 grows {1,0,2}, kept as 1; seed 3
    // grows {3,4}, undone; seed 4 grows {4,3,5}, kept as 2; seed 6 grows {6}, undone.
    ZN3DImage<float> v = volume(7, 1, 1, kHigh);
    Settings s;
    s.maxPatchSize = 9;
    s.growthIterations = 1;
    const Result r = segment(v, s);
    ASSERT_NE(r.labels, nullptr);
    EXPECT_EQ(labelsAlongX(*r.labels), (std::vector<int>{1, 1, 1, 2, 2, 2, kUnlabelled}));
    EXPECT_EQ(r.labelCounter, 3);
}

TEST(FaultPatchLabelImage, APlanarPatchIsKeptForAnyPositiveDeviationButNotForZero)
{
    ZN3DImage<float> flat = volume(6, 6, 3);
    ZN3DImage<float> tilted = volume(5, 5, 5);
    for (int a = 0; a < 6; ++a)
        for (int b = 0; b < 6; ++b) {
            flat(a, b, 1) = kHigh;
            if (a < 5 && b < 5) tilted(a, b, a) = kHigh;  // the plane x = z
        }
    for (ZN3DImage<float>* v : {&flat, &tilted})
        for (double deviation : {0.0, 1e-6, 0.5, 100.0}) {
            SCOPED_TRACE(deviation);
            Settings s;
            s.maxPatchSize = 36;
            s.maxPlaneDeviation = deviation;
            const Result r = segment(*v, s);
            ASSERT_NE(r.labels, nullptr);
            const size_t labelled = voxelsWithLabel(*r.labels, 1).size();
            EXPECT_EQ(labelled, deviation > 0.0 ? (v == &flat ? 36u : 25u) : 0u);
        }
}

TEST(FaultPatchLabelImage, APatchIsKeptOnlyWhenItsSpreadIsStrictlyBelowTheDeviation)
{
    // A full 3 x 3 x 3 cube: covariance (2/3) I, spread sqrt(2/3) ~ 0.8165.
    for (double deviation : {0.81, 0.82}) {
        ZN3DImage<float> v = volume(3, 3, 3, kHigh);
        Settings s;
        s.maxPatchSize = 27;
        s.maxPlaneDeviation = deviation;
        const Result r = segment(v, s);
        ASSERT_NE(r.labels, nullptr);
        EXPECT_EQ(voxelsWithLabel(*r.labels, 1).size(), deviation > 0.8165 ? 27u : 0u);
    }
}

TEST(FaultPatchLabelImage, TheLabelBudgetEndsTheScanGrowthIterationsSlicesLater)
{
    // One-voxel patches, never touching: two in slice 0, then one per slice, at x = 0 in
    // even slices and x = 4 in odd ones. Labels start at 1 (labelCounter 0).
    struct Case {
        int maxLabelCount;
        int growthIterations;
        int sliceCount;    // slices scanned
        int labelCounter;  // next free label
    };
    const std::vector<Case> cases{
        {2, 2, 3, 5},    // label 3 > 2 after the 2nd patch (slice 0): slices 0..2
        {1, 2, 3, 5},    // spent at the 1st patch, the 2nd of slice 0 still taken
        {3, 2, 4, 6},    // spent in slice 1: slices 0..3
        {2, 0, 1, 3},    // no growth: the scan ends with slice 0
        {3, 20, 10, 12}, // the reach is clamped to the volume
        {100, 2, 10, 12},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.maxLabelCount << " " << c.growthIterations);
        ZN3DImage<float> v = volume(5, 1, 10);
        v(2, 0, 0) = kHigh;
        for (int z = 0; z < 10; ++z) v(z % 2 == 0 ? 0 : 4, 0, z) = kHigh;
        Settings s;
        s.maxLabelCount = c.maxLabelCount;
        s.growthIterations = c.growthIterations;
        const Result r = segment(v, s);
        ASSERT_NE(r.labels, nullptr);
        EXPECT_EQ(r.sliceCount, c.sliceCount);
        EXPECT_EQ(r.labelCounter, c.labelCounter);
        for (int z = 0; z < 10; ++z) {
            const int x = z % 2 == 0 ? 0 : 4;
            EXPECT_EQ((*r.labels)(x, 0, z) != kUnlabelled, z < c.sliceCount) << "slice " << z;
        }
    }
}

TEST(FaultPatchLabelImage, PatchesSeededBeforeTheBudgetEndStillGrowIntoUnscannedSlices)
{
    // A vertical column of 6 voxels seeded in slice 0, with the budget spent at once: the
    // patch reaches slice 5 although only slices 0..2 are scanned.
    ZN3DImage<float> v = volume(3, 1, 6);
    for (int z = 0; z < 6; ++z) v(0, 0, z) = kHigh;
    v(2, 0, 4) = kHigh;  // seeds nothing: its slice is not scanned
    Settings s;
    s.maxLabelCount = 1;
    s.growthIterations = 5;
    s.maxPatchSize = 6;
    Result r = segment(v, s);
    ASSERT_NE(r.labels, nullptr);
    EXPECT_EQ(r.sliceCount, 6);

    s.growthIterations = 2;
    r = segment(v, s);
    EXPECT_EQ(r.sliceCount, 3);
    EXPECT_EQ(voxelsWithLabel(*r.labels, 1).size(), 3u);  // rings limit the column too
    EXPECT_EQ((*r.labels)(2, 0, 4), kUnlabelled);
}

TEST(FaultPatchLabelImage, TwoCallsSkipOneLabelBetweenThem)
{
    ZN3DImage<float> v = volume(5, 1, 1);
    set(v, {{0, 0, 0}, {2, 0, 0}, {4, 0, 0}});
    int counter = 0;
    Result first = segment(v, Settings{}, counter);
    EXPECT_EQ(labelsAlongX(*first.labels), (std::vector<int>{1, -9999, 2, -9999, 3}));
    EXPECT_EQ(first.labelCounter, 4);
    Result second = segment(v, Settings{}, first.labelCounter);
    EXPECT_EQ(labelsAlongX(*second.labels), (std::vector<int>{5, -9999, 6, -9999, 7}));
    EXPECT_EQ(second.labelCounter, 8);
}

TEST(FaultPatchLabelImage, TheBarStepsOncePerSliceIsAlwaysClosedAndCancellingReturnsNull)
{
    struct Case {
        int cancelAfter;   // increments before the cancel; -1: never
        int increments;
        int labelCounter;  // one per labelled slice, plus the first label
    };
    for (const Case c : {Case{1, 1, 1}, Case{3, 3, 3}, Case{-1, 5, 6}}) {
        SCOPED_TRACE(c.cancelAfter);
        RecordingProgress progress(c.cancelAfter);
        ZN3DImage<float> v = volume(3, 1, 5);
        for (int z = 0; z < 5; ++z) v(1, 0, z) = kHigh;
        Settings s;
        s.growthIterations = 0;
        const Result r = segment(v, s);
        EXPECT_EQ(r.labels == nullptr, c.cancelAfter >= 0);
        EXPECT_EQ(r.labelCounter, c.labelCounter);
        EXPECT_EQ(progress.titles, QStringList{"Get Fault Patches"});
        EXPECT_EQ(progress.increments, c.increments);
        EXPECT_EQ(progress.closed, 1);
        EXPECT_EQ(progress.openBarCount(), 0);
    }
}

TEST(FaultPatchLabelImage, ANullVolumeIsReportedAndLeavesTheOutputsAlone)
{
    int sliceCount = 12, labelCounter = 34;
    StderrCapture capture;
    EXPECT_EQ(getFaultPatchLabelImage(nullptr, 10, sliceCount, labelCounter, 30, 1.0, 5, 0.5, -1),
              nullptr);
    EXPECT_TRUE(capture.text().contains("ERROR: assert fail"));
    EXPECT_EQ(sliceCount, 12);
    EXPECT_EQ(labelCounter, 34);
}

TEST(FaultPatchLabelImage, LabelsEqualTheObviousSegmentationOnNoisyVolumesHoweverSpread)
{
    struct Case {
        unsigned seed;
        Settings s;
        int nx;     // rows of 63 to 65 voxels and more cross the words of the growth's bit mask
        int steps;  // values rounded to multiples of 1 / steps (0: not rounded)
    };
    const std::vector<Case> cases{
        {1, {1000000, 60, 0.9, 4, 0.5}, 24, 0},
        {2, {1000000, 30, 0.6, 2, 0.5}, 24, 0},
        {3, {1000000, 200, 1.2, 6, 0.45}, 24, 0},
        {4, {25, 45, 0.8, 3, 0.5}, 24, 0},    // budget spent mid-volume
        {5, {1000000, 12, 0.5, 1, 0.4}, 24, 0},
        {6, {1000000, 60, 0.9, 4, 0.5}, 63, 0},
        {7, {1000000, 40, 1.0, 3, 0.45}, 65, 0},
        {8, {1000000, 80, 1.1, 5, 0.5}, 130, 0},
        {9, {1000000, 60, 0.9, 4, 0.5}, 24, 10},  // many seeds exactly at the threshold
        {10, {1000000, 150, 0.75, 6, 0.5}, 24, 0}, // most patches stopped by their spread
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.seed);
        ZN3DImage<float> v = noisySheets(c.nx > 24 ? 12 : 24, c.seed, c.nx, c.steps);
        int expectedCounter = 3;
        const auto expected = referenceSegmentation(v, c.s, expectedCounter);
        EXPECT_GT(expectedCounter, 8);  // the case does label patches
        std::vector<Result> results;
        results.push_back(segment(v, c.s, 3));
        for (const auto& tuning : everyTuning()) results.push_back(segmentTuned(v, c.s, 3, tuning));
        for (const Result& r : results) {
            ASSERT_NE(r.labels, nullptr);
            EXPECT_EQ(r.labelCounter, expectedCounter);
            EXPECT_TRUE(std::equal(r.labels->data(), r.labels->data() + v.voxelCount(),
                                   expected->data()));
        }
    }
}

TEST(FaultPatchLabelImage, LabelsDoNotDependOnTheNumberOfThreads)
{
    ZN3DImage<float> v = noisySheets(40, 9);
    Settings s{1000000, 40000, 3.0, 40, 0.5};  // patches large enough to sum in parallel
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    const Result one = segment(v, s);
    omp_set_num_threads(4);
    const Result four = segment(v, s);
    omp_set_num_threads(threads);
    ASSERT_NE(one.labels, nullptr);
    ASSERT_NE(four.labels, nullptr);
    EXPECT_EQ(one.labelCounter, four.labelCounter);
    EXPECT_TRUE(std::equal(one.labels->data(), one.labels->data() + v.voxelCount(),
                           four.labels->data()));
}
