#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>

#include <QDir>
#include <QTemporaryDir>

#include <faultextractionpipeline.h>
#include <synthetic/syntheticvolume.h>
#include <testservices.h>

using namespace fault;

namespace {

const synthetic::SyntheticVolume& scene()
{
    static const synthetic::SyntheticVolume v = synthetic::generateSyntheticVolume(synthetic::defaultScene(72, 64, 80, 2));
    return v;
}

LikelihoodSlabs slabsOf(const ZN3DImage<float>& volume)
{
    return {volume.blocSpace(), [&volume](int z0, int count, float* out) {
                if (z0 < 0 || count < 1 || z0 + count > volume.nz()) return false;
                std::memcpy(out, volume.slice(z0), volume.sliceSize() * count * sizeof(float));
                return true;
            }};
}

// The budget that gives windows of `seedSlices` seed slices on the scene.
double budgetFor(int seedSlices)
{
    const AutomaticExtractionSettings e;
    const georef::BlocSpace& s = scene().likelihood.blocSpace();
    return segmentation::slabSegmentationBytes(s.nx(), s.ny(), seedSlices, e.growthIterations, e.maxPatchSize);
}

// The fault ids renumbered by first appearance in scan order, so that two label images
// compare by the faults they draw, not by the ids they happen to carry.
std::vector<int> renumbered(const ZN3DImage<int>& labels)
{
    std::map<int, int> ids;
    std::vector<int> out(labels.voxelCount());
    for (std::size_t i = 0; i < labels.voxelCount(); ++i) {
        const int v = labels.data()[i];
        out[i] = v < 0 ? v : ids.emplace(v, static_cast<int>(ids.size()) + 1).first->second;
    }
    return out;
}

} // namespace

TEST(FaultExtractionSlabs, EveryBudgetGivesTheFaultsOfTheRunInMemory)
{
    QTemporaryDir dir;
    RecordingEventBus bus;
    const ZN3DImage<float>& likelihood = scene().likelihood;
    const georef::UnitObject units(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond);
    const FaultExtraction whole = extractFaults(likelihood, units, FaultExtractionSettings());
    ASSERT_TRUE(whole.ok()) << whole.error.toStdString();
    ASSERT_GE(whole.faults.size(), 3u);
    const std::unique_ptr<ZN3DImage<int>> expected(whole.automatic->createFaultLabelImage());
    ASSERT_TRUE(expected);

    struct Case {
        int seedSlices;  // the budget allows windows of these
        int windows;
    };
    for (const Case c : {Case{1, 80}, Case{7, 12}, Case{30, 3}, Case{80, 1}}) {
        SCOPED_TRACE(c.seedSlices);
        std::vector<std::string> steps;
        const FaultExtraction x = extractFaults(slabsOf(likelihood), units, FaultExtractionSettings(),
                                                {budgetFor(c.seedSlices), dir.path()}, -1,
                                                [&steps](const char* step) { steps.push_back(step); });
        ASSERT_TRUE(x.ok()) << x.error.toStdString();
        EXPECT_EQ(steps, (std::vector<std::string>{"segmentation", "faultSet", "merging", "sticks", "duplicates",
                                                   "surfaces"}));
        EXPECT_EQ(x.seedSlicesPerWindow, c.seedSlices);
        EXPECT_EQ(x.segmentationWindows, c.windows);
        EXPECT_GE(x.labelSlabSlices, 1);
        EXPECT_EQ(x.patchCount, whole.patchCount);
        EXPECT_EQ(x.mergedFaultCount, whole.mergedFaultCount);
        ASSERT_EQ(x.faults.size(), whole.faults.size());
        EXPECT_EQ(x.meshes.size(), whole.meshes.size());
        EXPECT_EQ(x.picked->GetUnitObject(), units);
        const std::unique_ptr<ZN3DImage<int>> labels(x.automatic->createFaultLabelImage());
        ASSERT_TRUE(labels);
        EXPECT_EQ(labels->blocSpace(), expected->blocSpace());
        EXPECT_EQ(renumbered(*labels), renumbered(*expected));
        EXPECT_TRUE(std::equal(labels->data(), labels->data() + labels->voxelCount(), expected->data()));
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList())
            << "the label file is removed";
    }
}

TEST(FaultExtractionSlabs, AVolumeWithoutFaultsGivesTheNoteOfTheRunInMemory)
{
    QTemporaryDir dir;
    RecordingEventBus bus;
    ZN3DImage<float> faint(georef::BlocSpace(30, 20, 25), 0.2f);
    faint(3, 4, 20) = 0.45f;
    faint(5, 5, 5) = -0.5f;
    const FaultExtraction whole = extractFaults(faint, georef::UnitObject(), FaultExtractionSettings());
    const FaultExtraction x =
        extractFaults(slabsOf(faint), georef::UnitObject(), FaultExtractionSettings(), {budgetFor(2), dir.path()});
    ASSERT_TRUE(x.ok()) << x.error.toStdString();
    EXPECT_EQ(x.note, whole.note);
    EXPECT_TRUE(x.note.contains(QStringLiteral("values from -0.5 to 0.45"))) << x.note.toStdString();
    EXPECT_TRUE(x.faults.empty());
    ASSERT_TRUE(x.picked);
}

TEST(FaultExtractionSlabs, ARunThatCannotGoOnSaysWhyAndLeavesNoLabelFile)
{
    QTemporaryDir dir;
    RecordingEventBus bus;
    const ZN3DImage<float>& likelihood = scene().likelihood;
    const QStringList nothing;
    const auto entries = [&dir] {
        return QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    };

    const FaultExtraction small =
        extractFaults(slabsOf(likelihood), georef::UnitObject(), FaultExtractionSettings(), {budgetFor(1) - 1, dir.path()});
    EXPECT_TRUE(small.error.contains(QStringLiteral("too small for one slice"))) << small.error.toStdString();

    const FaultExtraction nowhere = extractFaults(slabsOf(likelihood), georef::UnitObject(), FaultExtractionSettings(),
                                                  {budgetFor(5), dir.filePath(QStringLiteral("missing/folder"))});
    EXPECT_TRUE(nowhere.error.startsWith(QStringLiteral("the label file cannot be written"))) << nowhere.error.toStdString();

    LikelihoodSlabs failing = slabsOf(likelihood);
    failing.read = [](int z0, int, float*) { return z0 < 30; };
    const FaultExtraction unread =
        extractFaults(failing, georef::UnitObject(), FaultExtractionSettings(), {budgetFor(5), dir.path()});
    EXPECT_EQ(unread.error, QStringLiteral("segmentation failed"));
    EXPECT_EQ(entries(), nothing);

    for (const char* stage : {"Get Fault Patches", "Merge Fault Patches", "Meshing faults"}) {
        RecordingProgress cancelling;
        cancelling.cancelOnTitle = QLatin1String(stage);
        const FaultExtraction x =
            extractFaults(slabsOf(likelihood), georef::UnitObject(), FaultExtractionSettings(), {budgetFor(9), dir.path()});
        EXPECT_TRUE(x.cancelled) << stage;
        EXPECT_EQ(cancelling.openBarCount(), 0) << stage;
        EXPECT_EQ(entries(), nothing) << stage;
    }
}
