#pragma once
#include <core/array.h>
#include <core/triplet.h>

namespace fault::segmentation {

// Spread of a set of voxels across their best-fit plane, in voxels: the square root of
// the smallest eigenvalue of the population covariance of their coordinates (sums
// divided by the voxel count, means subtracted). 0 for voxels on one plane (and for
// fewer than four voxels), -9999.0 for an empty set.
//
// The moments are summed exactly, as integers, relative to the first voxel, so the result
// does not depend on the order of the voxels nor on the number of threads summing them.
// A smallest eigenvalue that rounding makes slightly negative counts as 0.
double planeDeviation(const core::Array<core::Triplet>& voxels);

} // namespace fault::segmentation
