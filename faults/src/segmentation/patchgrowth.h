#pragma once
// The growth engine behind propagateFaultPatch, shared with the label image scan, which
// also needs to know why a growth ended. Internal to the segmentation.
#include <cstddef>

#include <core/array.h>
#include <core/triplet.h>

namespace fault::segmentation::detail {

// Raw view of a likelihood volume and its label volume of nx x ny x nz voxels, x fastest.
struct VolumeView {
    const float* likelihood = nullptr;
    int* labels = nullptr;
    int nx = 0;
    int ny = 0;
    int nz = 0;

    std::size_t index(int x, int y, int z) const
    {
        return static_cast<std::size_t>(x) +
               static_cast<std::size_t>(nx) *
                   (static_cast<std::size_t>(y) + static_cast<std::size_t>(ny) * z);
    }
};

// Why a growth stopped.
enum class GrowthEnd {
    VoxelLimit,  // the patch reached its voxel limit (or could not grow its array)
    RingLimit,   // the ring limit was reached while some patch voxels were still unvisited
    Exhausted,   // every voxel of the patch had its neighbourhood visited: nothing more
                 // could be taken, whatever the ring limit
};

// The growth of propagateFaultPatch on a view whose seed lies inside the volume.
GrowthEnd growPatch(const VolumeView& volume, core::Triplet seed, int label,
                    core::Array<core::Triplet>& patch, int maxRings, int maxVoxels,
                    double threshold);

} // namespace fault::segmentation::detail
