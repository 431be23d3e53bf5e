#include "faultextractionpipeline.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include <znprogressbarmgr.h>

#include "faultextractionstages.h"
#include "segmentation/faultpatchlabelimage.h"

namespace fault {
namespace detail {

ExtractionRun::ExtractionRun(int progressParent, const ExtractionStepObserver& observer)
    : m_bar(ZNProgressBarMgr::createProgressBar(QStringLiteral("Extracting faults"), kStageCount, progressParent)),
      m_observer(observer)
{
}

ExtractionRun::~ExtractionRun()
{
    ZNProgressBarMgr::closeProgressBar(m_bar);
}

bool ExtractionRun::cancelled() const
{
    return ZNProgressBarMgr::isProgressBarCancelled(m_bar);
}

bool ExtractionRun::stageDone(const char* step)
{
    ZNProgressBarMgr::incrementProgressBar(m_bar);
    if (m_observer) m_observer(step);
    return !cancelled();
}

FaultExtraction ExtractionRun::stop(const QString& error) const
{
    return failedExtraction(error, cancelled());
}

FaultExtraction failedExtraction(const QString& error, bool cancelled)
{
    FaultExtraction f;
    f.cancelled = cancelled;
    f.error = cancelled ? QStringLiteral("cancelled") : error;
    return f;
}

long long countSeedsAndRange(const float* v, std::size_t count, double threshold, float& lowest,
                             float& highest)
{
    const auto bound = static_cast<float>(threshold);
    long long seeds = 0;
    for (std::size_t i = 0; i < count; ++i) {
        seeds += v[i] >= bound;
        if (std::isnan(v[i])) continue;
        if (!(v[i] >= lowest)) lowest = v[i];
        if (!(v[i] <= highest)) highest = v[i];
    }
    return seeds;
}

QString noPatchNote(long long seeds, float lowest, float highest, const FaultExtractionSettings& settings)
{
    const AutomaticExtractionSettings& e = settings.extraction;
    if (seeds == 0)
        return QStringLiteral("no fault found: ") +
               noSampleAboveThreshold(e.likelihoodThreshold, lowest, highest, settings.likelihoodGiven);
    return QStringLiteral("no fault found: the %1 likelihood samples from the threshold %2 up (the largest %3) "
                          "grow into no patch of %4 voxels or more")
        .arg(seeds).arg(e.likelihoodThreshold).arg(static_cast<double>(highest), 0, 'g', 3)
        .arg(e.maxPatchSize / 3);
}

FaultExtraction ExtractionRun::finishEmpty(const georef::BlocSpace& space, const georef::UnitObject& units,
                                           const FaultExtractionSettings& settings, const QString& note)
{
    FaultExtraction result;
    result.automatic.reset(new (std::nothrow) ZNFaultPatchManager());
    if (!result.automatic) return failedExtraction(QStringLiteral("out of memory building the fault set"), false);
    result.automatic->init(1, true);   // the reserved patch only
    result.automatic->setPicked(false);
    result.automatic->setBlocSpace(space);
    result.automatic->SetUnitObject(units);
    result.picked.reset(createPickedFaultSet(result.faults, *result.automatic));
    if (!result.picked) return failedExtraction(QStringLiteral("out of memory building the sticks"), false);
    result.surfaceSettings = surfaceSettingsFor(space, settings.sticks, settings.surfaceMethod);
    result.note = note;
    for (const char* step : {"faultSet", "merging", "sticks", "duplicates", "surfaces"})
        if (!stageDone(step)) return stop(QString());
    return result;
}

} // namespace detail

namespace {

using detail::failedExtraction;

bool holdsLabel(const ZN3DImage<int>& labels)
{
    const int* v = labels.data();
    return std::any_of(v, v + labels.voxelCount(), [](int label) { return label > 0; });
}

// Why a segmentation of the volume in memory found no patch.
QString noPatchNote(const ZN3DImage<float>& likelihood, const FaultExtractionSettings& settings)
{
    float lowest = std::numeric_limits<float>::quiet_NaN(), highest = lowest;
    const long long seeds = detail::countSeedsAndRange(likelihood.data(), likelihood.voxelCount(),
                                                       settings.extraction.likelihoodThreshold, lowest, highest);
    return detail::noPatchNote(seeds, lowest, highest, settings);
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
    if (!problem.isEmpty()) return failedExtraction(problem, false);
    if (likelihood.isEmpty()) return failedExtraction(QStringLiteral("the likelihood volume is empty"), false);
    detail::ExtractionRun run(progressParent, observer);

    std::unique_ptr<ZN3DImage<int>> labels(segmentLikelihood(&likelihood, settings.extraction, run.barId()));
    if (!labels) return run.stop(QStringLiteral("segmentation failed"));
    const QString noPatch = holdsLabel(*labels) ? QString() : noPatchNote(likelihood, settings);
    if (settings.releaseLikelihood) likelihood = ZN3DImage<float>();
    if (!run.stageDone("segmentation")) return run.stop(QString());
    if (!noPatch.isEmpty()) return run.finishEmpty(labels->blocSpace(), units, settings, noPatch);

    FaultExtraction result;
    result.automatic.reset(new (std::nothrow) ZNFaultPatchManager());
    if (!result.automatic || !result.automatic->init(labels.get()))
        return run.stop(QStringLiteral("the fault set cannot be built from the patches"));
    labels.reset();
    result.automatic->SetUnitObject(units);
    return run.finish(std::move(result), settings);
}

namespace detail {

FaultExtraction ExtractionRun::finish(FaultExtraction result, const FaultExtractionSettings& settings)
{
    result.patchCount = countFaultsWithVoxels(*result.automatic);
    if (!stageDone("faultSet")) return stop(QString());

    if (!mergePatchesIntoFaults(*result.automatic, settings.extraction, m_bar, &result.leftoversJoined,
                                &result.leftoversDropped))
        return stop(QStringLiteral("merging failed"));
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

    if (!result.picked->getSameFaultArray(result.duplicates, m_bar))
        return stop(QStringLiteral("duplicate detection failed"));
    if (!stageDone("duplicates")) return stop(QString());

    // Fault i of the picked set is entry i of `faults`, with id i + 1.
    result.surfaceSettings = surfaceSettingsFor(result.picked->getBlocSpace(), settings.sticks,
                                                settings.surfaceMethod);
    const int meshBar = ZNProgressBarMgr::createProgressBar(
        QStringLiteral("Meshing faults"), static_cast<int>(result.faults.size()), m_bar);
    for (std::size_t i = 0; i < result.faults.size(); ++i) {
        if (ZNProgressBarMgr::isProgressBarCancelled(meshBar)) break;
        FaultSurface surface = meshFault(*result.picked, static_cast<int>(i) + 1, result.surfaceSettings);
        result.meshes.push_back(std::move(surface.mesh));
        result.areas.push_back(surface.area);
        ZNProgressBarMgr::incrementProgressBar(meshBar);
    }
    const bool meshingCancelled = ZNProgressBarMgr::isProgressBarCancelled(meshBar);
    ZNProgressBarMgr::closeProgressBar(meshBar);
    if (meshingCancelled || !stageDone("surfaces")) return failedExtraction(QString(), true);
    return result;
}

} // namespace detail

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
