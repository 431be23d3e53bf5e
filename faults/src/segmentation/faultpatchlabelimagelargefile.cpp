#include <algorithm>
#include <cmath>
#include <memory>

#include <core/conventions.h>
#include <znbloc.h>
#include <zneventbus.h>
#include <znslabplanner.h>
#include <znstridedprogress.h>

#include "segmentation/faultpatchlabelimage.h"
#include "segmentation/labelscan.h"
#include "segmentation/largefilesegmentation.h"

namespace fault::segmentation {

namespace detail {

namespace {

// The parameters every slab is segmented with.
struct SlabSettings {
    int maxPatchSize;
    double maxPlaneDeviation;
    int growthIterations;
    double threshold;
    int progressParent;
    int labelBudget;
};

// Where a run stands: the output slices written so far are [firstSlice, writtenEnd).
struct SlabRun {
    ZNBloc* input;
    ZNBloc* output;
    int firstSlice;
    int writtenEnd;
    int labelCounter = kFirstLabelCounter;
};

enum class SlabOutcome { Continue, BudgetSpent, Failed };

// Segments the slab of `depth` slices from slice k and writes the slices of it that no
// earlier slab wrote. On a spent budget, `end` is the slice after the last one scanned.
SlabOutcome processSlab(SlabRun& run, const SlabSettings& s, int k, int depth, int& end)
{
    ZN3DImage<float> slab;
    if (!run.input->readBox(0, 0, k, run.input->nx(), run.input->ny(), depth, slab))
        return SlabOutcome::Failed;
    int scanned = 0;
    std::unique_ptr<ZN3DImage<int>> labels(
        getFaultPatchLabelImage(&slab, s.labelBudget, scanned, run.labelCounter, s.maxPatchSize,
                                s.maxPlaneDeviation, s.growthIterations, s.threshold,
                                s.progressParent));
    if (!labels) return SlabOutcome::Failed;
    // The earlier slab keeps the slices both hold: it saw them with more slices above.
    const int from = std::max(k, run.writtenEnd);
    const int slabEnd = k + depth;
    if (slabEnd > from &&
        !run.output->writeSlices(from - run.firstSlice, *labels, from - k, slabEnd - from))
        return SlabOutcome::Failed;
    run.writtenEnd = std::max(run.writtenEnd, slabEnd);
    if (scanned >= depth) return SlabOutcome::Continue;
    end = k + scanned;
    return SlabOutcome::BudgetSpent;
}

} // namespace

SlabCost slabCost(int nx, int ny, int maxPatchSize)
{
    const ScanMemory memory = scanMemory(nx, ny, maxPatchSize, ScanTuning());
    const double sampleBytes = static_cast<double>(nx) * ny * kPlannedBytesPerSample;
    SlabCost cost;
    cost.workingSetFactor = memory.perSlice / sampleBytes;
    cost.haloSlices = kSlabOverlap + static_cast<int>(std::ceil(memory.fixed / memory.perSlice));
    return cost;
}

long long slabBudget(int nx, int ny, int cz, int maxPatchSize)
{
    const SlabCost cost = slabCost(nx, ny, maxPatchSize);
    const double sliceCost = static_cast<double>(nx) * ny * kPlannedBytesPerSample *
                             cost.workingSetFactor;
    return static_cast<long long>(std::ceil((cz + cost.haloSlices) * sliceCost));
}

bool segmentLargeFile(ZNBloc* likelihood, const QString& outputPath, int& firstSlice,
                      int maxPatchSize, double maxPlaneDeviation, int growthIterations,
                      double likelihoodThreshold, int progressParent, int labelBudget)
{
    if (likelihood == nullptr || !likelihood->isOpen() || firstSlice < 0) return false;
    const int nz = likelihood->nz();
    const SlabCost cost = slabCost(likelihood->nx(), likelihood->ny(), maxPatchSize);
    const core::Triplet plan =
        ZNSlabPlanner::planSlab(likelihood->nx(), likelihood->ny(), nz - firstSlice,
                                kPlannedBytesPerSample, cost.workingSetFactor, cost.haloSlices);
    if (plan.x == core::kNoValue || plan.y == core::kNoValue || plan.z == core::kNoValue ||
        plan.x == 0 || plan.y == 0 || plan.z == 0)
        return false;
    ZNBloc output;
    if (!output.create(outputPath, likelihood->blocSpace(), firstSlice, nz, ZNBloc::Int32,
                       likelihood->unitObject()))
        return false;

    const int cz = plan.z;
    const int slabDepth = cz + kSlabOverlap;
    const int outputDepth = nz - firstSlice;
    ZNStridedProgress progress(QStringLiteral("Get Fault Patches"), (outputDepth + cz - 1) / cz,
                               progressParent);
    const SlabSettings settings{maxPatchSize, maxPlaneDeviation, growthIterations,
                                likelihoodThreshold, progressParent, labelBudget};
    SlabRun run{likelihood, &output, firstSlice, firstSlice};
    bool ok = true;
    int end = -1;  // set when a spent budget ends the run
    for (int k = firstSlice; k < nz && end < 0; k += slabDepth - kSlabOverlap) {
        if (progress.next()) {
            ok = false;
            break;
        }
        ZNEventBus::sendMessage(ZNEventBus::Information,
                                QStringLiteral("k: ") + QString::number(k));
        const SlabOutcome outcome = processSlab(run, settings, k, std::min(slabDepth, nz - k), end);
        if (outcome == SlabOutcome::Failed) {
            ok = false;
            break;
        }
    }
    const int lastSlice = end >= 0 ? end : run.writtenEnd;
    output.setDepth(lastSlice - firstSlice);
    if (!output.close()) return false;
    firstSlice = lastSlice;
    return ok;
}

} // namespace detail

bool getFaultPatchLabelImageLargeFile(ZNBloc* likelihood, const QString& outputPath,
                                      int& firstSlice, int maxPatchSize,
                                      double maxPlaneDeviation, int growthIterations,
                                      double likelihoodThreshold, int progressParent)
{
    return detail::segmentLargeFile(likelihood, outputPath, firstSlice, maxPatchSize,
                                    maxPlaneDeviation, growthIterations, likelihoodThreshold,
                                    progressParent, detail::kSlabLabelBudget);
}

} // namespace fault::segmentation
