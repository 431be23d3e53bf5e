#pragma once
#include <functional>

#include <georef/blocspace.h>

#include "automaticfaultextraction.h"

class ZNBloc;

// The segmentation of a likelihood volume too large for memory, slab by slab, giving
// exactly the labels getFaultPatchLabelImage gives on the whole volume.
//
// A patch seeded in slice z grows by at most growthIterations rings, so it lies in slices
// z - g .. z + g (g = growthIterations) and its growth reads nothing beyond them. The scan
// therefore seeds slices a .. b - 1 on a window of slices a - g .. b + g - 1 that holds
// the likelihood and the labels (with the scan's own marks) left there by the seeds
// before a: every patch grows and is judged on the same state as in the whole volume.
// The next window starts at b - g: its first 2g slices are carried over, the slices
// before it are final and written out, and the likelihood is read once.
namespace fault::segmentation {

// Reads slices z0 .. z0 + count - 1 of a likelihood volume into `slices` (count slices of
// nx * ny samples, x fastest, then y). False when they cannot be read.
using LikelihoodSlabReader = std::function<bool(int z0, int count, float* slices)>;

// What a slab segmentation saw besides its labels.
struct SlabScanSummary {
    int labelCount = 0;   // labels given (1 .. labelCount)
    int windows = 0;      // windows scanned
    int seedSlices = 0;   // seed slices per window
};

// Bytes a slab segmentation of a volume nx x ny holds with windows of `seedSlices` seed
// slices: the window's likelihood and labels, every scan thread's mask and patch buffer,
// and the slab of labels being written.
double slabSegmentationBytes(int nx, int ny, int seedSlices, int growthIterations, int maxPatchSize);

// The most seed slices per window (at most nz) whose segmentation holds at most `budget`
// bytes; 0 when not even one does.
int seedSlicesWithin(double budget, int nx, int ny, int nz, int growthIterations, int maxPatchSize);

// Segments the volume of `space` that `read` gives, as segmentLikelihood does with the
// same settings (labels from 1, the same label budget), `seedSlices` seed slices per
// window (clamped to 1 .. nz). The labels go to `labels`, a block created over the whole
// of `space` with 32-bit integer samples, slab after slab in order; -9999 outside the
// patches. Progress: the bar "Get Fault Patches" below `progressParent`, one step per
// slice. False on a read or write failure, a lack of memory, an unsuitable output block
// or a cancel (`labels` then holds the slices written so far).
bool segmentLikelihoodSlabs(const georef::BlocSpace& space, const LikelihoodSlabReader& read,
                            ZNBloc& labels, const AutomaticExtractionSettings& settings,
                            int seedSlices, int progressParent, SlabScanSummary& summary);

} // namespace fault::segmentation
