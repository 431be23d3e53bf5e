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
// Bytes per sample the slab planner is asked to plan for.
constexpr int kPlannedBytesPerSample = 2;
// The run's label counter starts here, so that the first label is 2.
constexpr int kFirstLabelCounter = 1;

bool segmentLargeFile(ZNBloc* likelihood, const QString& outputPath, int& firstSlice,
                      int maxPatchSize, double maxPlaneDeviation, int growthIterations,
                      double likelihoodThreshold, int progressParent, int labelBudget);

} // namespace fault::segmentation::detail
