#pragma once
// The slab loop behind getFaultPatchLabelImageLargeFile, with its label budget as an
// argument so that the end of a run on a spent budget can be exercised on small volumes.
#include <QString>

class ZNBloc;

namespace fault::segmentation::detail {

// Label budget of every slab's in-memory segmentation.
constexpr int kSlabLabelBudget = 1000000;
// Slices shared by two successive slabs.
constexpr int kSlabOverlap = 3;
// Bytes per sample the slab planner is asked to plan for (kept for compatibility: the
// working set is told as a factor of it, see slabCost).
constexpr int kPlannedBytesPerSample = 2;
// The run's label counter starts here, so that the first label is 2.
constexpr int kFirstLabelCounter = 1;

// What the slab planner is told one slab of a volume nx x ny wide costs: the in-memory
// segmentation of its cz + kSlabOverlap slices (likelihood, labels, masks and patch
// buffers, see scanMemory) fits in (cz + haloSlices) slices of nx * ny samples of
// kPlannedBytesPerSample * workingSetFactor bytes.
struct SlabCost {
    double workingSetFactor = 1.0;
    int haloSlices = 0;
};
SlabCost slabCost(int nx, int ny, int maxPatchSize);

// The smallest planner budget, in bytes, that allows slabs of cz slices of a volume
// nx x ny wide.
long long slabBudget(int nx, int ny, int cz, int maxPatchSize);

bool segmentLargeFile(ZNBloc* likelihood, const QString& outputPath, int& firstSlice,
                      int maxPatchSize, double maxPlaneDeviation, int growthIterations,
                      double likelihoodThreshold, int progressParent, int labelBudget);

} // namespace fault::segmentation::detail
