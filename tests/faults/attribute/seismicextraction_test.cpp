#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <vector>

#include <faultextractionfromseismic.h>
#include <synthetic/faultmatcher.h>
#include <synthetic/syntheticseismic.h>

#include "testservices.h"

using namespace fault::synthetic;

namespace {
constexpr double kMaxAngleError = 3.0;          // degrees, strike and dip
constexpr double kLargestFalseShare = 0.01;     // of the smallest planted fault extracted
} // namespace

// The built-in seismic: dipping, folded layers, two planar faults crossing, a disc,
// throws of 3 to 5 samples, noise at a signal-to-noise ratio of 2; seed 4 used to give
// false faults from its noise.
TEST(SeismicExtraction, EveryPlantedFaultBecomesOneFaultWithItsOrientationAndNothingElseComesOut)
{
    for (const std::uint64_t seed : {1, 4}) {
        SCOPED_TRACE(seed);
        SyntheticSeismic s = generateSyntheticSeismic(defaultSeismicScene(128, 128, 128, seed));
        ASSERT_TRUE(s.ok());
        ASSERT_GE(s.faults.size(), 3u);
        std::vector<std::string> steps;
        ZN3DImage<float> likelihood;
        fault::FaultExtraction x = fault::extractFaultsFromSeismic(
            s.amplitude, georef::UnitObject(), fault::attribute::FaultAttributeSettings(),
            fault::FaultExtractionSettings(), -1, [&steps](const char* step) { steps.emplace_back(step); },
            &likelihood);
        ASSERT_TRUE(x.ok()) << x.error.toStdString();
        EXPECT_EQ(steps.front(), "likelihood");
        EXPECT_FALSE(likelihood.isEmpty());
        EXPECT_FALSE(s.amplitude.isEmpty());   // kept without releaseLikelihood

        std::unique_ptr<ZN3DImage<int>> labels(x.automatic->createFaultLabelImage());
        const FaultMatchReport r = matchFaults(*labels, s.plantedIds, s.faults);
        ASSERT_TRUE(r.ok());
        std::set<int> best;
        long long smallest = -1;
        for (const PlantedFaultMatch& p : r.planted) {
            EXPECT_EQ(p.significantLabels, 1) << p.plantedId;
            best.insert(p.bestLabel);
            for (const ExtractedFaultMatch& e : r.extracted)
                if (e.label == p.bestLabel) {
                    EXPECT_LE(e.error.strike, kMaxAngleError) << p.plantedId;
                    EXPECT_LE(e.error.dip, kMaxAngleError) << p.plantedId;
                    smallest = smallest < 0 ? e.voxelCount : std::min(smallest, e.voxelCount);
                }
        }
        EXPECT_EQ(best.size(), r.planted.size());   // the crossing faults stay apart
        for (const ExtractedFaultMatch& e : r.extracted)
            if (best.count(e.label) == 0 && e.plantedId < 0) {
                EXPECT_LE(e.voxelCount, kLargestFalseShare * static_cast<double>(smallest)) << e.label;
            }
    }
}

TEST(SeismicExtraction, ReleasingFreesTheSeismicOnceItsLikelihoodIsMade)
{
    RecordingEventBus bus;
    SeismicScene scene = defaultSeismicScene(40, 40, 40, 2);
    SyntheticSeismic s = generateSyntheticSeismic(scene);
    fault::FaultExtractionSettings settings;
    settings.releaseLikelihood = true;
    const fault::FaultExtraction x = fault::extractFaultsFromSeismic(
        s.amplitude, georef::UnitObject(), fault::attribute::FaultAttributeSettings(), settings);
    EXPECT_TRUE(s.amplitude.isEmpty());
    EXPECT_TRUE(x.ok()) << x.error.toStdString();   // with or without faults
}

TEST(SeismicExtraction, AttributeRefusalsEndTheRunWithTheirReason)
{
    RecordingEventBus bus;
    SyntheticSeismic s = generateSyntheticSeismic(defaultSeismicScene(24, 24, 24));
    fault::attribute::FaultAttributeSettings bad;
    bad.minDip = 5.0;
    const fault::FaultExtraction x =
        fault::extractFaultsFromSeismic(s.amplitude, georef::UnitObject(), bad, fault::FaultExtractionSettings());
    EXPECT_FALSE(x.ok());
    EXPECT_TRUE(x.error.contains("dips")) << x.error.toStdString();
    EXPECT_FALSE(s.amplitude.isEmpty());
}
