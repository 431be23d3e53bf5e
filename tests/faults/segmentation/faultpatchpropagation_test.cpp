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

TEST(FaultPatchPropagation, LimitsThresholdAndOtherPatchesDecideWhichVoxelsAreTaken)
{
    struct Case {
        const char* what;
        Triplet size;
        float fill;                                     // every voxel's likelihood but ...
        std::vector<std::pair<Triplet, float>> values;  // ... these
        std::vector<std::pair<Triplet, int>> labels;    // set before the growth; others free
        Triplet seed;
        int rings, maxVoxels;
        std::vector<Triplet> expected;                  // in the order taken
    };
    const Triplet cube(3, 3, 3);
    const float at = static_cast<float>(kThreshold);
    const std::vector<Case> cases{
        {"a voxel limit of one stops after the first voxel taken, not after the seed", cube, kHigh,
         {}, {}, {1, 1, 1}, 5, 1, {{1, 1, 1}, {0, 0, 0}}},
        {"the voxel limit stops in the middle of a ring", cube, kHigh, {}, {}, {1, 1, 1}, 5, 4,
         {{1, 1, 1}, {0, 0, 0}, {1, 0, 0}, {2, 0, 0}}},
        {"neighbours at, not above, the threshold leave the seed alone", cube, at,
         {{{1, 1, 1}, kHigh}}, {}, {1, 1, 1}, 50, 1000, {{1, 1, 1}}},
        {"the seed is labelled whatever its likelihood", {3, 1, 1}, kLow,
         {{{0, 0, 0}, kHigh}, {{2, 0, 0}, kHigh}}, {}, {1, 0, 0}, 1, 1000,
         {{1, 0, 0}, {0, 0, 0}, {2, 0, 0}}},
        {"no rings label the seed only", cube, kHigh, {}, {}, {1, 1, 1}, 0, 1000, {{1, 1, 1}}},
        {"negative rings label the seed only", cube, kHigh, {}, {}, {1, 1, 1}, -3, 1000, {{1, 1, 1}}},
        {"a corner seed ignores neighbours outside the volume", cube, kHigh, {}, {}, {0, 0, 0}, 1, 1000,
         {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}}},
        {"the far corner likewise", cube, kHigh, {}, {}, {2, 2, 2}, 1, 1000,
         {{2, 2, 2}, {1, 1, 1}, {2, 1, 1}, {1, 2, 1}, {2, 2, 1}, {1, 1, 2}, {2, 1, 2}, {1, 2, 2}}},
        {"an edge seed likewise", cube, kHigh, {}, {}, {1, 0, 2}, 1, 1000,
         {{1, 0, 2}, {0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {0, 1, 1}, {1, 1, 1}, {2, 1, 1},
          {0, 0, 2}, {2, 0, 2}, {0, 1, 2}, {1, 1, 2}, {2, 1, 2}}},
        {"voxels of another patch, label 0 included, are never taken", {5, 1, 1}, kHigh, {},
         {{{1, 0, 0}, 3}, {{4, 0, 0}, 0}}, {2, 0, 0}, 10, 1000, {{2, 0, 0}, {3, 0, 0}}},
        {"any negative label counts as free", {3, 1, 1}, kHigh, {}, {{{2, 0, 0}, -1}}, {0, 0, 0}, 10,
         1000, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}},
        {"growth needs a likelihood strictly above the threshold", {4, 1, 1}, kLow,
         {{{1, 0, 0}, 0.5f}, {{2, 0, 0}, 0.5f}, {{3, 0, 0}, 0.50001f}}, {}, {0, 0, 0}, 5, 1000,
         {{0, 0, 0}}},
        {"... seen from the other side", {4, 1, 1}, kLow,
         {{{1, 0, 0}, 0.5f}, {{2, 0, 0}, 0.5f}, {{3, 0, 0}, 0.50001f}}, {}, {2, 0, 0}, 5, 1000,
         {{2, 0, 0}, {3, 0, 0}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Growth g(volume(c.size.x, c.size.y, c.size.z, c.fill));
        for (const auto& v : c.values) g.likelihood(v.first.x, v.first.y, v.first.z) = v.second;
        for (const auto& l : c.labels) g.labels(l.first.x, l.first.y, l.first.z) = l.second;
        std::vector<int> expectedLabels(g.labels.data(), g.labels.data() + g.labels.voxelCount());
        for (const Triplet& t : c.expected) expectedLabels[g.labels.index(t.x, t.y, t.z)] = kLabel;
        EXPECT_EQ(g.grow(c.seed, c.rings, c.maxVoxels), c.expected);
        EXPECT_EQ(std::vector<int>(g.labels.data(), g.labels.data() + g.labels.voxelCount()),
                  expectedLabels);
    }
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
