#include "faultextractionpipeline.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include <znprogressbarmgr.h>

#include "segmentation/faultpatchlabelimage.h"

namespace fault {
namespace {

constexpr int kStageCount = 6;  // steps of the extraction's own bar

// The extraction's progress bar: one step per stage; closed when it goes out of scope.
class StageBar {
public:
    explicit StageBar(int parent)
        : m_id(ZNProgressBarMgr::createProgressBar(QStringLiteral("Extracting faults"), kStageCount, parent))
    {
    }
    ~StageBar() { ZNProgressBarMgr::closeProgressBar(m_id); }
    StageBar(const StageBar&) = delete;
    StageBar& operator=(const StageBar&) = delete;

    int id() const { return m_id; }
    bool cancelled() const { return ZNProgressBarMgr::isProgressBarCancelled(m_id); }
    void advance() { ZNProgressBarMgr::incrementProgressBar(m_id); }

private:
    int m_id;
};

// The smallest and largest values of `v` that are not NaN; NaN both when every one is.
void valueRange(const float* v, std::size_t count, float& lowest, float& highest)
{
    lowest = std::numeric_limits<float>::quiet_NaN();
    highest = lowest;
    for (std::size_t i = 0; i < count; ++i) {
        if (std::isnan(v[i])) continue;
        if (!(v[i] >= lowest)) lowest = v[i];
        if (!(v[i] <= highest)) highest = v[i];
    }
}

FaultExtraction failed(const QString& error, bool cancelled)
{
    FaultExtraction f;
    f.cancelled = cancelled;
    f.error = cancelled ? QStringLiteral("cancelled") : error;
    return f;
}

} // namespace

QString noSampleAboveThreshold(double threshold, float lowest, float highest)
{
    return QStringLiteral("no sample above %1 (values from %2 to %3): is this a likelihood volume, is the "
                          "byte order right?")
        .arg(threshold)
        .arg(static_cast<double>(lowest), 0, 'g', 6)
        .arg(static_cast<double>(highest), 0, 'g', 6);
}

QString FaultExtractionSettings::problem() const
{
    return sticks.problem();
}

int countFaultsWithVoxels(const ZNFaultPatchManager& set)
{
    const int patches = set.getNumberOfPatch();
    std::vector<char> isRoot(static_cast<std::size_t>(std::max(patches, 0)), 0);
    for (int p = 1; p < patches; ++p)
        if (set.getPatchVoxels().getCount(p) > 0) {
            const int root = set.getFather(p);
            if (root >= 0 && root < patches) isRoot[static_cast<std::size_t>(root)] = 1;
        }
    return static_cast<int>(std::count(isRoot.begin(), isRoot.end(), 1));
}

FaultExtraction extractFaults(ZN3DImage<float>& likelihood, const georef::UnitObject& units,
                              const FaultExtractionSettings& settings, int progressParent,
                              const ExtractionStepObserver& observer)
{
    const QString problem = settings.problem();
    if (!problem.isEmpty()) return failed(problem, false);
    if (likelihood.isEmpty()) return failed(QStringLiteral("the likelihood volume is empty"), false);
    StageBar bar(progressParent);
    const auto stageDone = [&](const char* step) {
        bar.advance();
        if (observer) observer(step);
        return !bar.cancelled();
    };
    const auto stop = [&](const QString& error) { return failed(error, bar.cancelled()); };

    int sliceCount = 0;
    int labelCounter = 0;
    const AutomaticExtractionSettings& e = settings.extraction;
    std::unique_ptr<ZN3DImage<int>> labels(segmentation::getFaultPatchLabelImage(
        &likelihood, e.maxLabelCount, sliceCount, labelCounter, e.maxPatchSize, e.maxPlaneDeviation,
        e.growthIterations, e.likelihoodThreshold, bar.id()));
    if (!labels) return stop(QStringLiteral("segmentation failed"));
    if (labelCounter <= 1) {  // no patch kept: the likelihood may hold nothing above the threshold
        float lowest = 0.0f, highest = 0.0f;
        valueRange(likelihood.data(), likelihood.voxelCount(), lowest, highest);
        if (!(static_cast<double>(highest) > e.likelihoodThreshold))
            return stop(noSampleAboveThreshold(e.likelihoodThreshold, lowest, highest));
    }
    if (settings.releaseLikelihood) likelihood = ZN3DImage<float>();
    if (!stageDone("segmentation")) return stop(QString());

    FaultExtraction result;
    result.automatic.reset(new (std::nothrow) ZNFaultPatchManager());
    if (!result.automatic || !result.automatic->init(labels.get()))
        return stop(QStringLiteral("no fault patch in the volume"));
    labels.reset();
    result.automatic->SetUnitObject(units);
    result.patchCount = countFaultsWithVoxels(*result.automatic);
    if (!stageDone("faultSet")) return stop(QString());

    if (!result.automatic->fastContactMerging(settings.extraction.maxMergeCost, bar.id()))
        return stop(QStringLiteral("merging failed"));
    const ZNFaultPatchManager::LeftoverOutcome leftovers =
        result.automatic->settleCrossingLeftovers(settings.extraction.maxPatchSize, settings.extraction.maxMergeCost);
    result.leftoversJoined = leftovers.joined;
    result.leftoversDropped = leftovers.dropped;
    result.mergedFaultCount = countFaultsWithVoxels(*result.automatic);
    if (!stageDone("merging")) return stop(QString());

    result.faults = sticksOfAllFaults(*result.automatic, settings.sticks);
    result.picked.reset(createPickedFaultSet(result.faults, *result.automatic));
    if (!result.picked) return stop(QStringLiteral("out of memory building the sticks"));
    if (!stageDone("sticks")) return stop(QString());

    if (!result.picked->getSameFaultArray(result.duplicates, bar.id()))
        return stop(QStringLiteral("duplicate detection failed"));
    if (!stageDone("duplicates")) return stop(QString());

    // Fault i of the picked set is entry i of `faults`, with id i + 1.
    result.surfaceSettings = surfaceSettingsFor(result.picked->getBlocSpace(), settings.sticks,
                                                settings.surfaceMethod);
    const int meshBar = ZNProgressBarMgr::createProgressBar(
        QStringLiteral("Meshing faults"), static_cast<int>(result.faults.size()), bar.id());
    for (std::size_t i = 0; i < result.faults.size(); ++i) {
        if (ZNProgressBarMgr::isProgressBarCancelled(meshBar)) break;
        FaultSurface surface = meshFault(*result.picked, static_cast<int>(i) + 1, result.surfaceSettings);
        result.meshes.push_back(std::move(surface.mesh));
        result.areas.push_back(surface.area);
        ZNProgressBarMgr::incrementProgressBar(meshBar);
    }
    const bool meshingCancelled = ZNProgressBarMgr::isProgressBarCancelled(meshBar);
    ZNProgressBarMgr::closeProgressBar(meshBar);
    if (meshingCancelled || !stageDone("surfaces")) return failed(QString(), true);
    return result;
}

FaultExtraction extractFaults(const ZN3DImage<float>& likelihood, const georef::UnitObject& units,
                              const FaultExtractionSettings& settings, int progressParent,
                              const ExtractionStepObserver& observer)
{
    FaultExtractionSettings reading = settings;
    reading.releaseLikelihood = false;
    // Without release nothing writes to the likelihood: the segmentation only reads its
    // input, though its signature, kept for compatibility, takes a mutable image.
    return extractFaults(const_cast<ZN3DImage<float>&>(likelihood), units, reading, progressParent,
                         observer);
}

} // namespace fault
