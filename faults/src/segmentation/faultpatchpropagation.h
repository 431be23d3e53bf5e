#pragma once
#include <core/array.h>
#include <core/triplet.h>
#include <zn3dimage.h>

namespace fault::segmentation {

// Grows one fault patch from `seed` through the likelihood volume, breadth-first in rings
// over the 26-neighbourhood, and labels what it takes.
//
// The seed is labelled `label` and is the first entry of `patch` (the array is emptied
// first); it is not tested against the threshold here. Each ring visits, for every voxel
// of the previous ring in array order, the neighbours (x', y', z') with z' from z-1 to z+1
// (outer), then y', then x' (inner); neighbours outside the volume are skipped. A
// neighbour is taken when its likelihood is strictly greater than `threshold` and its
// label is negative (free): it is labelled `label` and appended to `patch`.
//
// Growth stops after `maxRings` rings (at once when maxRings < 1), or in the middle of a
// ring as soon as `patch` holds `maxVoxels` voxels or more (tested after each voxel taken,
// never after the seed alone). No voxel of the patch is farther than `maxRings` steps
// from the seed in the chessboard metric, and voxels of another patch (non-negative
// labels) are never taken.
//
// `likelihood` and `labels` must be non-null and of the same size, and `seed` inside
// them; otherwise an assertion is reported and nothing is labelled (`patch` emptied).
void propagateFaultPatch(core::Triplet seed, ZN3DImage<float>* likelihood, ZN3DImage<int>* labels,
                         int label, core::Array<core::Triplet>& patch, int maxRings, int maxVoxels,
                         double threshold);

} // namespace fault::segmentation
