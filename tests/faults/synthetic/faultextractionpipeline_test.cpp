#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <faultextractionpipeline.h>
#include <synthetic/syntheticvolume.h>
#include <testservices.h>

using namespace fault;

namespace {

// The built-in scene at a size the tests can afford; generated once.
const synthetic::SyntheticVolume& scene()
{
    static const synthetic::SyntheticVolume v = synthetic::generateSyntheticVolume(synthetic::defaultScene(96, 96, 96, 1));
    return v;
}

} // namespace

TEST(FaultExtractionPipeline, TheSceneGivesMeshedFaultsWithSticksOneFaultOfThePickedSetEach)
{
    ZN3DImage<float> likelihood = std::move(*scene().likelihood.clone());
    const georef::UnitObject units(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond);
    std::vector<std::string> steps;
    const FaultExtraction x = extractFaults(likelihood, units, FaultExtractionSettings(), -1,
                                            [&steps](const char* step) { steps.push_back(step); });
    ASSERT_TRUE(x.ok()) << x.error.toStdString();
    EXPECT_EQ(steps, (std::vector<std::string>{"segmentation", "faultSet", "merging", "sticks", "duplicates", "surfaces"}));
    EXPECT_FALSE(likelihood.isEmpty());  // kept unless released
    EXPECT_GE(x.faults.size(), scene().faults.size());
    EXPECT_GT(x.patchCount, x.mergedFaultCount);
    ASSERT_EQ(x.meshes.size(), x.faults.size());
    ASSERT_EQ(x.areas.size(), x.faults.size());
    EXPECT_EQ(x.picked->getFaultLightList().size(), static_cast<int>(x.faults.size()));
    for (std::size_t i = 0; i < x.faults.size(); ++i) {
        EXPECT_EQ(x.picked->findFaultLight(static_cast<int>(i) + 1)->GetFaultName(), x.faults[i].name);
        EXPECT_EQ(x.meshes[i].name, x.faults[i].name);
        EXPECT_FALSE(x.meshes[i].triangles.empty()) << i;
        EXPECT_GT(x.areas[i], 0.0) << i;
    }
    EXPECT_EQ(x.picked->GetUnitObject(), units);
    EXPECT_EQ(x.surfaceSettings.method, ZN3DFaultPatchLight::kDefaultMeshingMethod);
}

TEST(FaultExtractionPipeline, ACancelAtAnyStageStopsTheRunAndClosesEveryBar)
{
    // The bars of the stages: segmentation, merging, duplicates, surfaces.
    for (const char* stage : {"Get Fault Patches", "Merge Fault Patches", "Similar Fault Detection", "Meshing faults"}) {
        RecordingProgress cancelling;
        cancelling.cancelOnTitle = QLatin1String(stage);
        ZN3DImage<float> likelihood = std::move(*scene().likelihood.clone());
        const FaultExtraction x = extractFaults(likelihood, georef::UnitObject(), FaultExtractionSettings());
        EXPECT_TRUE(cancelling.titles.contains(QLatin1String(stage))) << stage;
        EXPECT_TRUE(x.cancelled) << stage;
        EXPECT_EQ(x.error, QStringLiteral("cancelled")) << stage;
        EXPECT_FALSE(x.picked) << stage;
        EXPECT_EQ(cancelling.openBarCount(), 0) << stage;
    }
}

TEST(FaultExtractionPipeline, BadInputsAreRefusedWithTheirReasonAndReleaseEmptiesTheLikelihood)
{
    ZN3DImage<float> empty;
    EXPECT_EQ(extractFaults(empty, georef::UnitObject(), FaultExtractionSettings()).error,
              QStringLiteral("the likelihood volume is empty"));

    FaultExtractionSettings bad;
    bad.sticks.pointSpacing = 0.0;
    ZN3DImage<float> likelihood = std::move(*scene().likelihood.clone());
    const FaultExtraction refused = extractFaults(likelihood, georef::UnitObject(), bad);
    EXPECT_FALSE(refused.ok());
    EXPECT_EQ(refused.error, bad.sticks.problem());
    EXPECT_FALSE(refused.cancelled);

    ZN3DImage<float> flat(32, 32, 32);
    flat.fill(0.1f);
    RecordingEventBus bus;
    EXPECT_EQ(extractFaults(flat, georef::UnitObject(), FaultExtractionSettings()).error,
              QStringLiteral("no fault patch in the volume"));

    FaultExtractionSettings releasing;
    releasing.releaseLikelihood = true;
    EXPECT_TRUE(extractFaults(likelihood, georef::UnitObject(), releasing).ok());
    EXPECT_TRUE(likelihood.isEmpty());
}
