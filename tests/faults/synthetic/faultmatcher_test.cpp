#include <gtest/gtest.h>

#include <synthetic/faultmatcher.h>
#include <synthetic/syntheticvolume.h>

#include "testservices.h"

using namespace fault::synthetic;

namespace {
// A small default volume and an extraction made from its truth by `relabel`, which maps
// (x, y, z, planted id) to an extracted label.
template <class Relabel>
ZN3DImage<int> extraction(const SyntheticVolume& v, Relabel relabel)
{
    ZN3DImage<int> labels(v.plantedIds.blocSpace(), -9999);
    for (int z = 0; z < labels.nz(); ++z)
        for (int y = 0; y < labels.ny(); ++y)
            for (int x = 0; x < labels.nx(); ++x)
                labels(x, y, z) = relabel(x, y, z, v.plantedIds(x, y, z));
    return labels;
}

const SyntheticVolume& smallVolume()
{
    static const SyntheticVolume v = generateSyntheticVolume(defaultScene(64, 64, 64, 3));
    return v;
}
} // namespace

TEST(FaultMatcher, APerfectExtractionRecoversEveryPlantedFaultWhole)
{
    const SyntheticVolume& v = smallVolume();
    const auto labels =
        extraction(v, [](int, int, int, int id) { return id < 0 ? -9999 : 100 + id; });
    const FaultMatchReport r = matchFaults(labels, v.plantedIds, v.faults);
    ASSERT_TRUE(r.ok());
    ASSERT_EQ(r.extracted.size(), 5u);
    ASSERT_EQ(r.planted.size(), 5u);
    for (int id = 0; id < 5; ++id) {
        const ExtractedFaultMatch& e = r.extracted[id];
        EXPECT_EQ(e.label, 100 + id);
        EXPECT_EQ(e.plantedId, id);
        EXPECT_DOUBLE_EQ(e.purity, 1.0);
        EXPECT_DOUBLE_EQ(e.coverage, 1.0);
        EXPECT_LT(e.error.strike, 4.0) << id;
        EXPECT_LT(e.error.dip, 4.0) << id;
        const PlantedFaultMatch& p = r.planted[id];
        EXPECT_EQ(p.bestLabel, 100 + id);
        EXPECT_EQ(p.recoveredVoxels, p.voxelCount);
        EXPECT_DOUBLE_EQ(p.recoveredFraction, 1.0);
        EXPECT_EQ(p.significantLabels, 1);
    }
}

TEST(FaultMatcher, ASplitFaultCountsItsPiecesAndKeepsTheLargest)
{
    const SyntheticVolume& v = smallVolume();
    // Planted fault 0 cut in two at crossline 40; everything else dropped.
    const auto labels = extraction(v, [](int, int y, int, int id) {
        return id != 0 ? -9999 : (y < 40 ? 1 : 2);
    });
    const FaultMatchReport r = matchFaults(labels, v.plantedIds, v.faults);
    ASSERT_EQ(r.extracted.size(), 2u);
    const PlantedFaultMatch& p = r.planted[0];
    EXPECT_EQ(p.bestLabel, 1);
    EXPECT_EQ(p.significantLabels, 2);
    EXPECT_EQ(p.recoveredVoxels, r.extracted[0].voxelCount);
    EXPECT_NEAR(p.recoveredFraction + r.extracted[1].coverage, 1.0, 1e-12);
    for (int id = 1; id < 5; ++id) {
        EXPECT_EQ(r.planted[id].bestLabel, -9999);
        EXPECT_EQ(r.planted[id].recoveredFraction, 0.0);
        EXPECT_EQ(r.planted[id].significantLabels, 0);
    }
}

TEST(FaultMatcher, AMergedLabelGoesToTheFaultItCoversMost)
{
    const SyntheticVolume& v = smallVolume();
    // Planted faults 0 and 3 (a plane and a small disc) extracted as one label, plus a
    // label of pure noise away from every fault.
    const auto labels = extraction(v, [](int x, int y, int z, int id) {
        if (id == 0 || id == 3) return 7;
        if (id < 0 && x >= 61 && y < 3 && z < 3) return 9;
        return -9999;
    });
    const FaultMatchReport r = matchFaults(labels, v.plantedIds, v.faults);
    ASSERT_EQ(r.extracted.size(), 2u);
    const ExtractedFaultMatch& merged = r.extracted[0];
    EXPECT_EQ(merged.plantedId, 0);
    EXPECT_LT(merged.purity, 1.0);
    EXPECT_DOUBLE_EQ(merged.coverage, 1.0);
    EXPECT_EQ(r.planted[3].bestLabel, 7);
    const ExtractedFaultMatch& noise = r.extracted[1];
    EXPECT_EQ(noise.label, 9);
    EXPECT_EQ(noise.voxelCount, 27);
    EXPECT_EQ(noise.plantedId, -9999);
    EXPECT_EQ(noise.error.strike, -9999.0);
    EXPECT_NE(noise.orientation.dip, -9999.0);
}

TEST(FaultMatcher, TinyLabelsHaveNoOrientation)
{
    const SyntheticVolume& v = smallVolume();
    const auto labels = extraction(v, [](int x, int y, int z, int) {
        return x == 0 && y == 0 && z < 3 ? 5 : -9999;
    });
    const FaultMatchReport r = matchFaults(labels, v.plantedIds, v.faults);
    ASSERT_EQ(r.extracted.size(), 1u);
    EXPECT_EQ(r.extracted[0].orientation.strike, -9999.0);
    EXPECT_EQ(r.extracted[0].orientation.dip, -9999.0);
}

TEST(FaultMatcher, ImagesOfDifferentSizesAreRefused)
{
    const SyntheticVolume& v = smallVolume();
    RecordingEventBus bus;
    const ZN3DImage<int> labels(64, 64, 63);
    const FaultMatchReport r = matchFaults(labels, v.plantedIds, v.faults);
    EXPECT_FALSE(r.ok());
    EXPECT_TRUE(r.extracted.empty());
    EXPECT_TRUE(r.planted.empty());
    EXPECT_EQ(r.error, "Cannot match faults: labels are 64 x 64 x 63 voxels, "
                       "planted faults 64 x 64 x 64");
    EXPECT_TRUE(bus.contains(ZNEventBus::Error, r.error));
}
