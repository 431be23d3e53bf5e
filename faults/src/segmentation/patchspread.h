#pragma once
#include <cstdint>

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

// The exact first and second moments of a set of voxels that grows one voxel at a time,
// relative to its first voxel. Gives the very same planeDeviation as the array of the same
// voxels, and a cheap test of how large the spread of any superset must be.
class VoxelMoments {
public:
    // Forgets every voxel.
    void reset();
    // Adds voxels[begin .. end); the first voxel ever added is the origin of the sums.
    void add(const core::Triplet* begin, const core::Triplet* end);
    int count() const { return m_count; }

    // planeDeviation of the voxels added so far.
    double planeDeviation() const;

    // True only when every set of at most `maxCount` voxels that holds the voxels added so
    // far is certain to have a planeDeviation of at least `deviation`, as computed; the
    // test errs on the side of false (a margin covers rounding in both computations).
    // `reach` bounds the distance of any voxel of such a set from the first one along
    // each axis. Why it holds: for every direction, the superset's squared distances to
    // its own mean plane sum to at least those of the voxels added to their own mean
    // plane, so its variance is at least count() / maxCount times theirs.
    bool forcesDeviationOver(double deviation, int maxCount, int reach) const;

    // Sums of the offsets from the first voxel and of their products, exact.
    struct Sums {
        int64_t x = 0, y = 0, z = 0;
        int64_t xx = 0, yy = 0, zz = 0, xy = 0, xz = 0, yz = 0;
    };

private:
    Sums m_sums;
    core::Triplet m_origin;
    int m_count = 0;
};

} // namespace fault::segmentation
