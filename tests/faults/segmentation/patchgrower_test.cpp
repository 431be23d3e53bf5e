#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include <segmentation/faultpatchpropagation.h>
#include <segmentation/patchgrower.h>

#include "volumes.h"

using core::Triplet;
using namespace fault::segmentation::detail;
using namespace segtest;

namespace {

constexpr int kFree = -9999;

// A grower over `likelihood` (not owned) with free labels.
struct GrowerFixture {
    ZN3DImage<float>& likelihood;
    ZN3DImage<int> labels;
    VolumeView view;
    PatchGrower grower;

    GrowerFixture(ZN3DImage<float>& v, const PatchRules& rules)
        : likelihood(v), labels(v.blocSpace(), kFree), view(viewOf()),
          grower(view, kThreshold, TakeableMask(view, kThreshold), rules)
    {
    }
    VolumeView viewOf()
    {
        VolumeView v;
        v.likelihood = likelihood.data();
        v.labels = labels.data();
        v.nx = likelihood.nx();
        v.ny = likelihood.ny();
        v.nz = likelihood.nz();
        return v;
    }
    Verdict grow(const Triplet& seed)
    {
        return grower.grow(seed, likelihood.index(seed.x, seed.y, seed.z));
    }
};

PatchRules rules(int maxRings, int maxVoxels, double maxDeviation = 10.0, int minVoxels = 0)
{
    PatchRules r;
    r.maxRings = maxRings;
    r.maxVoxels = maxVoxels;
    r.minVoxels = minVoxels;
    r.maxDeviation = maxDeviation;
    r.reach = maxRings;
    return r;
}

bool sameRows(const TakeableMask& a, const TakeableMask& b, int ny, int nz)
{
    for (int z = 0; z < nz; ++z)
        for (int y = 0; y < ny; ++y)
            if (!std::equal(a.row(y, z), a.row(y, z) + a.wordsPerRow(), b.row(y, z))) return false;
    return true;
}

} // namespace

TEST(PatchGrower, GrowsThePatchOfPropagationVoxelForVoxelAndLeavesItsMaskAsItWas)
{
    // Dense random volumes whose rows end inside, at and across the words of the mask.
    std::mt19937 rng(5);
    std::uniform_real_distribution<float> uniform(0.0f, 1.0f);
    for (int nx : {5, 63, 64, 65, 130}) {
        ZN3DImage<float> v = volume(nx, 6, 5);
        for (size_t i = 0; i < v.voxelCount(); ++i) v.data()[i] = uniform(rng);
        for (int maxVoxels : {1, 9, 100000}) {
            SCOPED_TRACE(testing::Message() << nx << " " << maxVoxels);
            GrowerFixture f(v, rules(3, maxVoxels, std::numeric_limits<double>::infinity()));
            const TakeableMask before(f.grower.mask());
            for (const Triplet seed : {Triplet(0, 0, 0), Triplet(nx - 1, 5, 4),
                                       Triplet(nx / 2, 3, 2), Triplet(nx - 1, 0, 2)}) {
                f.grow(seed);
                ZN3DImage<int> labels(v.blocSpace(), kFree);
                core::Array<Triplet> expected;
                fault::segmentation::propagateFaultPatch(seed, &f.likelihood, &labels, 1, expected,
                                                         3, maxVoxels, kThreshold);
                EXPECT_EQ(std::vector<Triplet>(f.grower.patch().begin(), f.grower.patch().end()),
                          toVector(expected));
                EXPECT_TRUE(sameRows(f.grower.mask(), before, 6, 5));
            }
        }
    }
}

TEST(PatchGrower, JudgesBySizeSpreadAndHowGrowthEnded)
{
    // A line of 4 voxels (exhausted, planar) and a full 5 x 5 x 5 block (spread 1.41).
    ZN3DImage<float> line = volume(6, 1, 1);
    set(line, {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}});
    ZN3DImage<float> block = volume(5, 5, 5, kHigh);
    struct Case {
        ZN3DImage<float>* v;
        PatchRules rules;
        GrowthEnd end;
        bool kept;
        bool exhaustedTooSmall;
    };
    const std::vector<Case> cases{
        {&line, rules(5, 100, 0.5, 4), GrowthEnd::Exhausted, true, false},
        {&line, rules(5, 100, 0.5, 5), GrowthEnd::Exhausted, false, true},
        {&line, rules(1, 100, 0.5, 5), GrowthEnd::RingLimit, false, false},  // more could come
        {&line, rules(5, 3, 0.5, 5), GrowthEnd::VoxelLimit, false, false},
        {&block, rules(5, 200, 1.5, 1), GrowthEnd::Exhausted, true, false},
        // The spread of the first voxels already rules the patch out: not grown to its end.
        {&block, rules(5, 200, 0.5, 1), GrowthEnd::Stopped, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases.data());
        GrowerFixture f(*c.v, c.rules);
        const Verdict verdict = f.grow({c.v == &line ? 1 : 2, 0, c.v == &line ? 0 : 2});
        EXPECT_EQ(verdict.end, c.end);
        EXPECT_EQ(verdict.kept, c.kept);
        EXPECT_EQ(verdict.exhaustedTooSmall, c.exhaustedTooSmall);
        EXPECT_EQ(verdict.grown, f.grower.patch().size());
        if (c.end == GrowthEnd::Stopped) {
            EXPECT_LT(verdict.grown, 125);
        }
    }
}

TEST(PatchGrower, TakingAKeptPatchRemovesItsVoxelsFromLaterGrowths)
{
    ZN3DImage<float> v = volume(7, 1, 1, kHigh);
    GrowerFixture first(v, rules(2, 100));
    GrowerFixture second(v, rules(2, 100));
    first.grow({1, 0, 0});  // voxels 0..3
    second.grower.take(first.grower.patch());
    second.grow({4, 0, 0});
    EXPECT_EQ(std::vector<Triplet>(second.grower.patch().begin(), second.grower.patch().end()),
              (std::vector<Triplet>{{4, 0, 0}, {5, 0, 0}, {6, 0, 0}}));
}
