#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <vector>

#include <omp.h>

#include <automaticfaultextraction.h>
#include <faultextractionpipeline.h>
#include <synthetic/faultmatcher.h>
#include <synthetic/syntheticvolume.h>
#include <znfaultpatchmanager.h>

using namespace fault::synthetic;

namespace {
// Every father and every contact list of a fault set, for comparisons.
std::vector<std::vector<int>> modelOf(const ZNFaultPatchManager& set)
{
    std::vector<std::vector<int>> model;
    for (int p = 0; p < set.getNumberOfPatch(); ++p) {
        std::vector<int> row{set.getFather(p), set.getPatchVoxels().getCount(p)};
        for (int k = 0; k < set.getNumberOfContact(p); ++k) row.push_back(set.getContact(p, k));
        model.push_back(row);
    }
    return model;
}
} // namespace

TEST(AutomaticFaultExtraction, EveryPlantedFaultOfTheDefaultSceneBecomesOneFaultOfItsOwn)
{
    // Seeds 10 and 19 leave a patch across the crossing of the two crossing planes after
    // the best-first merging; it joins the plane it fits.
    for (const std::uint64_t seed : {1, 10, 19}) {
        SCOPED_TRACE(seed);
        SyntheticVolume v = generateSyntheticVolume(defaultScene(128, 128, 128, seed));
        ASSERT_TRUE(v.ok());
        std::unique_ptr<ZNFaultPatchManager> set(
            fault::extractAutomaticFaults(&v.likelihood, fault::AutomaticExtractionSettings(), -1));
        ASSERT_TRUE(set);
        std::unique_ptr<ZN3DImage<int>> faults(set->createFaultLabelImage());
        const FaultMatchReport r = matchFaults(*faults, v.plantedIds, v.faults);
        ASSERT_TRUE(r.ok());
        std::set<int> bestLabels;
        for (const PlantedFaultMatch& p : r.planted) {
            EXPECT_EQ(p.significantLabels, 1) << p.plantedId;
            EXPECT_GT(p.recoveredFraction, 0.6) << p.plantedId;
            bestLabels.insert(p.bestLabel);
            for (const ExtractedFaultMatch& e : r.extracted)
                if (e.label == p.bestLabel) {
                    EXPECT_GT(e.purity, 0.95) << p.plantedId;
                }
        }
        EXPECT_EQ(bestLabels.size(), r.planted.size());   // crossing faults kept apart
        EXPECT_EQ(fault::countFaultsWithVoxels(*set), static_cast<int>(v.faults.size()));  // nothing else
    }
}

TEST(AutomaticFaultExtraction, TheFaultSetDoesNotDependOnTheThreadCount)
{
    SyntheticVolume v = generateSyntheticVolume(defaultScene(96, 96, 96, 2));
    const int threads = omp_get_max_threads();
    std::vector<std::vector<int>> models[2];
    for (int run = 0; run < 2; ++run) {
        omp_set_num_threads(run == 0 ? 1 : 2);
        std::unique_ptr<ZNFaultPatchManager> set(
            fault::extractAutomaticFaults(&v.likelihood, fault::AutomaticExtractionSettings(), -1));
        ASSERT_TRUE(set);
        models[run] = modelOf(*set);
    }
    omp_set_num_threads(threads);
    EXPECT_GT(models[0].size(), 50u);
    EXPECT_EQ(models[0], models[1]);
}
