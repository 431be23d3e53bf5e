// The extraction on a likelihood read slab by slab (see extractFaults in
// faultextractionpipeline.h).
#include <algorithm>
#include <limits>
#include <memory>
#include <new>

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include <znbloc.h>

#include "faultextractionpipeline.h"
#include "faultextractionstages.h"

namespace fault {
namespace {

using detail::failedExtraction;

// Labels read back at most at once, so that the fault set has the rest of the budget.
constexpr double kLabelSlabShare = 0.25;
constexpr double kMaxLabelSlabBytes = 64.0 * (1 << 20);

// A temporary label file in a folder, removed when it goes out of scope.
class ScratchLabels {
public:
    explicit ScratchLabels(const QString& folder)
    {
        // The name is reserved by an empty file, which the block replaces on close.
        QTemporaryFile reserved(QDir(folder).filePath(QStringLiteral(".labels-XXXXXX.bloc")));
        reserved.setAutoRemove(false);
        if (reserved.open()) m_path = reserved.fileName();
    }
    ~ScratchLabels()
    {
        bloc.close();
        if (!m_path.isEmpty()) QFile::remove(m_path);
    }
    ScratchLabels(const ScratchLabels&) = delete;
    ScratchLabels& operator=(const ScratchLabels&) = delete;

    const QString& path() const { return m_path; }
    ZNBloc bloc;

private:
    QString m_path;
};

// The note of a volume in which the segmentation found no patch, from a second pass over
// it: its seeds and value range. Empty when it cannot be read.
QString noPatchNoteOf(const LikelihoodSlabs& likelihood, int slabDepth, const FaultExtractionSettings& settings)
{
    const georef::BlocSpace& space = likelihood.space;
    ZN3DImage<float> slab = ZN3DImage<float>::unfilled(georef::BlocSpace(space.nx(), space.ny(), slabDepth));
    if (slab.isNull()) return QString();
    float lowest = std::numeric_limits<float>::quiet_NaN(), highest = lowest;
    long long seeds = 0;
    for (int z = 0; z < space.nz(); z += slabDepth) {
        const int count = std::min(slabDepth, space.nz() - z);
        if (!likelihood.read(z, count, slab.data())) return QString();
        seeds += detail::countSeedsAndRange(slab.data(), slab.sliceSize() * count,
                                            settings.extraction.likelihoodThreshold, lowest, highest);
    }
    return detail::noPatchNote(seeds, lowest, highest, settings);
}

} // namespace

FaultExtraction extractFaults(const LikelihoodSlabs& likelihood, const georef::UnitObject& units,
                              const FaultExtractionSettings& settings, const SlabExtractionSettings& slabs,
                              int progressParent, const ExtractionStepObserver& observer)
{
    const QString problem = settings.problem();
    if (!problem.isEmpty()) return failedExtraction(problem, false);
    const georef::BlocSpace& space = likelihood.space;
    if (space.isEmpty() || !likelihood.read)
        return failedExtraction(QStringLiteral("the likelihood volume is empty"), false);
    const AutomaticExtractionSettings& e = settings.extraction;
    const int seedSlices = segmentation::seedSlicesWithin(slabs.memoryBudget, space.nx(), space.ny(), space.nz(),
                                                          e.growthIterations, e.maxPatchSize);
    if (seedSlices < 1) {
        const double least = segmentation::slabSegmentationBytes(space.nx(), space.ny(), 1, e.growthIterations,
                                                                 e.maxPatchSize);
        return failedExtraction(QStringLiteral("the memory budget of %1 bytes is too small for one slice (%2 "
                                               "bytes at least)")
                                    .arg(slabs.memoryBudget, 0, 'f', 0).arg(least, 0, 'f', 0),
                                false);
    }
    const double sliceBytes = static_cast<double>(space.nx()) * space.ny() * sizeof(int);
    const double labelSlabBytes = std::min(kMaxLabelSlabBytes, kLabelSlabShare * slabs.memoryBudget);
    const int labelSlices = std::clamp(static_cast<int>(labelSlabBytes / sliceBytes), 1, space.nz());

    detail::ExtractionRun run(progressParent, observer);
    ScratchLabels scratch(slabs.scratchFolder);
    if (scratch.path().isEmpty() ||
        !scratch.bloc.create(scratch.path(), space, 0, space.nz(), ZNBloc::Int32, units))
        return run.stop(QStringLiteral("the label file cannot be written in %1").arg(slabs.scratchFolder));
    segmentation::SlabScanSummary summary;
    if (!segmentation::segmentLikelihoodSlabs(space, likelihood.read, scratch.bloc, e, seedSlices, run.barId(),
                                              summary))
        return run.stop(QStringLiteral("segmentation failed"));
    if (!scratch.bloc.close() || !scratch.bloc.open(scratch.path()))
        return run.stop(QStringLiteral("the label file cannot be written in %1").arg(slabs.scratchFolder));
    if (!run.stageDone("segmentation")) return run.stop(QString());

    FaultExtraction result;
    if (summary.labelCount == 0) {
        const QString note = noPatchNoteOf(likelihood, labelSlices, settings);
        if (note.isEmpty()) return run.stop(QStringLiteral("the likelihood volume cannot be read"));
        result = run.finishEmpty(space, units, settings, note);
    } else {
        result.automatic.reset(new (std::nothrow) ZNFaultPatchManager());
        if (!result.automatic || !result.automatic->init(&scratch.bloc, labelSlices))
            return run.stop(QStringLiteral("the fault set cannot be built from the patches"));
        scratch.bloc.close();
        result.automatic->SetUnitObject(units);
        result = run.finish(std::move(result), settings);
    }
    result.segmentationWindows = summary.windows;
    result.seedSlicesPerWindow = summary.seedSlices;
    result.labelSlabSlices = labelSlices;
    return result;
}

} // namespace fault
