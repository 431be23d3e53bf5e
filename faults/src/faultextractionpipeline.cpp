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

bool holdsLabel(const ZN3DImage<int>& labels)
{
    const int* v = labels.data();
    return std::any_of(v, v + labels.voxelCount(), [](int label) { return label > 0; });
}

// Why a segmentation found no patch: what the likelihood holds against the settings.
QString noPatchNote(const ZN3DImage<float>& likelihood, const FaultExtractionSettings& settings)
{
    const AutomaticExtractionSettings& e = settings.extraction;
    const float* v = likelihood.data();
    const auto threshold = static_cast<float>(e.likelihoodThreshold);
    const long long seeds = std::count_if(v, v + likelihood.voxelCount(), [threshold](float x) { return x >= threshold; });
    float lowest = 0.0f, highest = 0.0f;
    valueRange(v, likelihood.voxelCount(), lowest, highest);
    if (seeds == 0)
        return QStringLiteral("no fault found: ") +
               noSampleAboveThreshold(e.likelihoodThreshold, lowest, highest, settings.likelihoodGiven);
    return QStringLiteral("no fault found: the %1 likelihood samples from the threshold %2 up (the largest %3) "
                          "grow into no patch of %4 voxels or more")
        .arg(seeds).arg(e.likelihoodThreshold).arg(static_cast<double>(highest), 0, 'g', 3)
        .arg(e.maxPatchSize / 3);
}

// The result of a segmentation without patches: two empty fault sets over `space`.
FaultExtraction emptyExtraction(const georef::BlocSpace& space, const georef::UnitObject& units,
                                const FaultExtractionSettings& settings, const QString& note)
{
    FaultExtraction result;
    result.automatic.reset(new (std::nothrow) ZNFaultPatchManager());
    if (!result.automatic) return failed(QStringLiteral("out of memory building the fault set"), false);
    result.automatic->init(1, true);   // the reserved patch only
    result.automatic->setPicked(false);
    result.automatic->setBlocSpace(space);
    result.automatic->SetUnitObject(units);
    result.picked.reset(createPickedFaultSet(result.faults, *result.automatic));
    if (!result.picked) return failed(QStringLiteral("out of memory building the sticks"), false);
    result.surfaceSettings = surfaceSettingsFor(space, settings.sticks, settings.surfaceMethod);
    result.note = note;
    return result;
}

} // namespace

QString noSampleAboveThreshold(double threshold, float lowest, float highest, bool askAboutTheInput)
{
    const QString said = QStringLiteral("no sample above %1 (values from %2 to %3)")
                             .arg(threshold)
                             .arg(static_cast<double>(lowest), 0, 'g', 6)
                             .arg(static_cast<double>(highest), 0, 'g', 6);
    return askAboutTheInput ? said + QStringLiteral(": is this a likelihood volume, is the byte order right?") : said;
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

    std::unique_ptr<ZN3DImage<int>> labels(segmentLikelihood(&likelihood, settings.extraction, bar.id()));
    if (!labels) return stop(QStringLiteral("segmentation failed"));
    const QString noPatch = holdsLabel(*labels) ? QString() : noPatchNote(likelihood, settings);
    if (settings.releaseLikelihood) likelihood = ZN3DImage<float>();
    if (!stageDone("segmentation")) return stop(QString());
    if (!noPatch.isEmpty()) {
        FaultExtraction empty = emptyExtraction(labels->blocSpace(), units, settings, noPatch);
        for (const char* step : {"faultSet", "merging", "sticks", "duplicates", "surfaces"})
            if (!stageDone(step)) return stop(QString());
        return empty;
    }

    FaultExtraction result;
    result.automatic.reset(new (std::nothrow) ZNFaultPatchManager());
    if (!result.automatic || !result.automatic->init(labels.get()))
        return stop(QStringLiteral("the fault set cannot be built from the patches"));
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
    if (result.faults.empty())
        result.note = QStringLiteral("no fault found: none of the %1 faults merged from %2 patches gives %3 sticks "
                                     "of %4 points (or holds %5 voxels)")
                          .arg(result.mergedFaultCount).arg(result.patchCount).arg(settings.sticks.minSticksPerFault)
                          .arg(settings.sticks.minPointsPerStick).arg(settings.sticks.minVoxelsPerFault);
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
