#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include <segmentation/faultpatchpropagation.h>

#include "testservices.h"
#include "volumes.h"

using core::Triplet;
using fault::segmentation::propagateFaultPatch;
using namespace segtest;

namespace {

constexpr int kFree = -9999;
constexpr int kLabel = 7;

struct Growth {
    ZN3DImage<float> likelihood;
    ZN3DImage<int> labels;
    core::Array<Triplet> patch;

    explicit Growth(ZN3DImage<float> v)
        : likelihood(std::move(v)), labels(likelihood.blocSpace(), kFree)
    {
    }
    std::vector<Triplet> grow(Triplet seed, int maxRings, int maxVoxels = 1000,
                              double threshold = kThreshold)
    {
        propagateFaultPatch(seed, &likelihood, &labels, kLabel, patch, maxRings, maxVoxels,
                            threshold);
        return toVector(patch);
    }
};

} // namespace

TEST(FaultPatchPropagation, OneRingTakesTheNeighboursZOuterThenYThenXInner)
{
    Growth g(volume(3, 3, 3, kHigh));
    std::vector<Triplet> expected{{1, 1, 1}};
    for (int z = 0; z < 3; ++z)
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3; ++x)
                if (Triplet(x, y, z) != Triplet(1, 1, 1)) expected.emplace_back(x, y, z);
    EXPECT_EQ(g.grow({1, 1, 1}, 1), expected);
    EXPECT_EQ(voxelsWithLabel(g.labels, kLabel).size(), 27u);
}

TEST(FaultPatchPropagation, RingsAreTakenInTheOrderOfTheVoxelsOfThePreviousRing)
{
    // A 4 x 3 sheet, seeded on its left edge: worked out by hand, ring by ring.
    Growth g(volume(4, 3, 1, kHigh));
    const std::vector<Triplet> expected{
        {0, 1, 0},                                              // seed
        {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 2, 0}, {1, 2, 0},  // ring 1 around the seed
        {2, 0, 0}, {2, 1, 0}, {2, 2, 0},                        // ring 2: from (1,0), (1,1)
        {3, 0, 0}, {3, 1, 0}, {3, 2, 0}};                       // ring 3
    EXPECT_EQ(g.grow({0, 1, 0}, 3), expected);
}

TEST(FaultPatchPropagation, RingLimitBoundsTheChessboardDistanceFromTheSeed)
{
    Growth g(volume(4, 3, 1, kHigh));
    const std::vector<Triplet> twoRings = g.grow({0, 1, 0}, 2);
    EXPECT_EQ(twoRings.size(), 9u);
    EXPECT_EQ(g.labels(3, 0, 0), kFree);

    std::mt19937 rng(11);
    std::uniform_real_distribution<float> uniform(0.0f, 1.0f);
    Growth random(volume(12, 12, 12));
    for (int z = 0; z < 12; ++z)
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 12; ++x) random.likelihood(x, y, z) = uniform(rng);
    const Triplet seed(6, 6, 6);
    for (const Triplet& t : random.grow(seed, 3)) {
        const int distance = std::max({std::abs(t.x - seed.x), std::abs(t.y - seed.y),
                                       std::abs(t.z - seed.z)});
        EXPECT_LE(distance, 3);
    }
}

TEST(FaultPatchPropagation, VoxelLimitOneStopsAfterTheFirstVoxelTakenNotAfterTheSeed)
{
    Growth g(volume(3, 3, 3, kHigh));
    const std::vector<Triplet> expected{{1, 1, 1}, {0, 0, 0}};
    EXPECT_EQ(g.grow({1, 1, 1}, 5, 1), expected);
    EXPECT_EQ(voxelsWithLabel(g.labels, kLabel), (std::vector<Triplet>{{0, 0, 0}, {1, 1, 1}}));
}

TEST(FaultPatchPropagation, VoxelLimitStopsInTheMiddleOfARing)
{
    Growth g(volume(3, 3, 3, kHigh));
    const std::vector<Triplet> patch = g.grow({1, 1, 1}, 5, 4);
    const std::vector<Triplet> expected{{1, 1, 1}, {0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    EXPECT_EQ(patch, expected);
    EXPECT_EQ(voxelsWithLabel(g.labels, kLabel).size(), 4u);
}

TEST(FaultPatchPropagation, ASeedWithoutNeighboursAboveTheThresholdStaysAlone)
{
    Growth g(volume(3, 3, 3, static_cast<float>(kThreshold)));  // at, not above
    g.likelihood(1, 1, 1) = kHigh;
    EXPECT_EQ(g.grow({1, 1, 1}, 50), (std::vector<Triplet>{{1, 1, 1}}));
    EXPECT_EQ(voxelsWithLabel(g.labels, kLabel).size(), 1u);
}

TEST(FaultPatchPropagation, TheSeedIsLabelledWhateverItsLikelihood)
{
    Growth g(volume(3, 1, 1));
    set(g.likelihood, {{0, 0, 0}, {2, 0, 0}});
    EXPECT_EQ(g.grow({1, 0, 0}, 1), (std::vector<Triplet>{{1, 0, 0}, {0, 0, 0}, {2, 0, 0}}));
}

TEST(FaultPatchPropagation, NoRingsLabelsTheSeedOnly)
{
    for (int rings : {0, -3}) {
        Growth g(volume(3, 3, 3, kHigh));
        EXPECT_EQ(g.grow({1, 1, 1}, rings), (std::vector<Triplet>{{1, 1, 1}}));
        EXPECT_EQ(g.labels(1, 1, 1), kLabel);
        EXPECT_EQ(voxelsWithLabel(g.labels, kLabel).size(), 1u);
    }
}

TEST(FaultPatchPropagation, SeedsOnTheBorderIgnoreNeighboursOutsideTheVolume)
{
    struct Case {
        Triplet seed;
        std::vector<Triplet> expected;
    };
    const std::vector<Case> cases{
        {{0, 0, 0},
         {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}}},
        {{2, 2, 2},
         {{2, 2, 2}, {1, 1, 1}, {2, 1, 1}, {1, 2, 1}, {2, 2, 1}, {1, 1, 2}, {2, 1, 2}, {1, 2, 2}}},
        {{1, 0, 2},
         {{1, 0, 2}, {0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {0, 1, 1}, {1, 1, 1}, {2, 1, 1},
          {0, 0, 2}, {2, 0, 2}, {0, 1, 2}, {1, 1, 2}, {2, 1, 2}}},
    };
    for (const Case& c : cases) {
        Growth g(volume(3, 3, 3, kHigh));
        EXPECT_EQ(g.grow(c.seed, 1), c.expected);
    }
}

TEST(FaultPatchPropagation, VoxelsOfAnotherPatchAreNeverTaken)
{
    Growth g(volume(5, 1, 1, kHigh));
    g.labels(1, 0, 0) = 3;
    g.labels(4, 0, 0) = 0;  // label 0 is a patch too: only negative labels are free
    EXPECT_EQ(g.grow({2, 0, 0}, 10), (std::vector<Triplet>{{2, 0, 0}, {3, 0, 0}}));
    EXPECT_EQ(g.labels(1, 0, 0), 3);
    EXPECT_EQ(g.labels(4, 0, 0), 0);
    EXPECT_EQ(g.labels(0, 0, 0), kFree);
}

TEST(FaultPatchPropagation, AnyNegativeLabelCountsAsFree)
{
    Growth g(volume(3, 1, 1, kHigh));
    g.labels(2, 0, 0) = -1;
    EXPECT_EQ(g.grow({0, 0, 0}, 10).size(), 3u);
}

TEST(FaultPatchPropagation, GrowthNeedsALikelihoodStrictlyAboveTheThreshold)
{
    Growth g(volume(4, 1, 1));
    g.likelihood(1, 0, 0) = 0.5f;
    g.likelihood(2, 0, 0) = 0.5f;
    g.likelihood(3, 0, 0) = 0.50001f;
    EXPECT_EQ(g.grow({0, 0, 0}, 5, 1000, 0.5), (std::vector<Triplet>{{0, 0, 0}}));
    EXPECT_EQ(g.grow({2, 0, 0}, 5, 1000, 0.5), (std::vector<Triplet>{{2, 0, 0}, {3, 0, 0}}));
}

TEST(FaultPatchPropagation, TheArrayIsEmptiedBeforeGrowing)
{
    Growth g(volume(3, 1, 1, kHigh));
    g.patch.add({9, 9, 9});
    EXPECT_EQ(g.grow({0, 0, 0}, 0), (std::vector<Triplet>{{0, 0, 0}}));
}

TEST(FaultPatchPropagation, UnusableArgumentsAreReportedAndLabelNothing)
{
    ZN3DImage<float> likelihood = volume(3, 3, 3, kHigh);
    ZN3DImage<int> labels(likelihood.blocSpace(), kFree);
    ZN3DImage<int> smaller(georef::BlocSpace(2, 3, 3), kFree);
    core::Array<Triplet> patch;
    patch.add({1, 2, 3});
    StderrCapture capture;
    propagateFaultPatch({1, 1, 1}, nullptr, &labels, kLabel, patch, 1, 10, kThreshold);
    propagateFaultPatch({1, 1, 1}, &likelihood, nullptr, kLabel, patch, 1, 10, kThreshold);
    propagateFaultPatch({1, 1, 1}, &likelihood, &smaller, kLabel, patch, 1, 10, kThreshold);
    propagateFaultPatch({3, 0, 0}, &likelihood, &labels, kLabel, patch, 1, 10, kThreshold);
    propagateFaultPatch({0, -1, 0}, &likelihood, &labels, kLabel, patch, 1, 10, kThreshold);
    propagateFaultPatch({1, 1, 1}, &likelihood, &labels, -2, patch, 1, 10, kThreshold);
    EXPECT_EQ(capture.text().count("ERROR: assert fail"), 6);
    EXPECT_TRUE(patch.empty());
    EXPECT_TRUE(voxelsWithLabel(labels, kFree).size() == 27u);
    EXPECT_TRUE(voxelsWithLabel(smaller, kFree).size() == 18u);
}
