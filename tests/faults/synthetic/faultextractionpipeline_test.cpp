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

    FaultExtractionSettings releasing;
    releasing.releaseLikelihood = true;
    EXPECT_TRUE(extractFaults(likelihood, georef::UnitObject(), releasing).ok());
    EXPECT_TRUE(likelihood.isEmpty());
}

// A volume without faults is a result, not a failure: both fault sets exist, empty, over
// the volume's grid, every stage is seen, and the note says why nothing came out.
TEST(FaultExtractionPipeline, VolumesWithoutFaultsGiveEmptyFaultSetsAndSayWhy)
{
    ZN3DImage<float> flat(32, 32, 32);
    flat.fill(0.1f);
    ZN3DImage<float> specks(32, 32, 32);   // isolated likely voxels grow into no patch
    for (int z = 2; z < 32; z += 6)
        for (int y = 2; y < 32; y += 6)
            for (int x = 2; x < 32; x += 6) specks(x, y, z) = 0.9f;
    ZN3DImage<float> flatComputed = std::move(*flat.clone());
    FaultExtractionSettings noSticks;
    noSticks.sticks.minVoxelsPerFault = 1000000;
    FaultExtractionSettings computed;
    computed.likelihoodGiven = false;
    struct Case {
        const char* name;
        ZN3DImage<float> likelihood;
        FaultExtractionSettings settings;
        QString note;
    };
    Case cases[] = {
        {"flat", std::move(flat), FaultExtractionSettings(),
         "no fault found: no sample above 0.5 (values from 0.1 to 0.1): is this a likelihood volume, is the byte "
         "order right?"},
        {"flat likelihood computed from seismic", std::move(flatComputed), computed,
         "no fault found: no sample above 0.5 (values from 0.1 to 0.1)"},
        {"specks", std::move(specks), FaultExtractionSettings(),
         "no fault found: the 125 likelihood samples from the threshold 0.5 up (the largest 0.9) grow into no "
         "patch of 200 voxels or more"},
        {"faults too small for sticks", std::move(*scene().likelihood.clone()), noSticks,
         "no fault found: none of the"},
    };
    const georef::UnitObject units(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond);
    for (Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> steps;
        const georef::BlocSpace space = c.likelihood.blocSpace();
        const FaultExtraction x = extractFaults(c.likelihood, units, c.settings, -1,
                                                [&steps](const char* step) { steps.push_back(step); });
        ASSERT_TRUE(x.ok()) << x.error.toStdString();
        EXPECT_TRUE(x.note.startsWith(c.note)) << x.note.toStdString();
        EXPECT_EQ(steps.size(), 6u);
        EXPECT_TRUE(x.faults.empty());
        EXPECT_TRUE(x.meshes.empty());
        ASSERT_TRUE(x.automatic && x.picked);
        EXPECT_EQ(countFaultsWithVoxels(*x.automatic) > 0, std::string(c.name) == "faults too small for sticks");
        EXPECT_TRUE(x.picked->getFaultLightList().isEmpty());
        EXPECT_EQ(x.picked->getBlocSpace(), space);
        EXPECT_EQ(x.picked->GetUnitObject(), units);
    }
    ZN3DImage<float> found = std::move(*scene().likelihood.clone());
    EXPECT_TRUE(extractFaults(found, units, FaultExtractionSettings()).note.isEmpty());
}
