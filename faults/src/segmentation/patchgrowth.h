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

class TakeableMask;

// The same growth on a mask of takeable voxels alone: the voxels growPatch would label
// are cleared in `mask` instead, and no label is written. With a mask that describes the
// volume, the label volume and the threshold, it gives the same patch and the same end
// as growPatch; the caller writes the labels if it keeps the patch, or sets the bits
// back if not.
GrowthEnd growPatchMasked(TakeableMask& mask, core::Triplet seed,
                          core::Array<core::Triplet>& patch, int maxRings, int maxVoxels);

// The ring loop shared by both growths. `visit(v)` takes what it may around voxel v and
// answers false once the patch is full; `patch` holds the labelled seed.
template <class Visit>
GrowthEnd growRings(core::Array<core::Triplet>& patch, int maxRings, Visit&& visit)
{
    if (maxRings < 1) return GrowthEnd::RingLimit;
    int begin = 0;  // current ring: patch[begin .. end)
    int end = patch.size();
    for (int ring = 0;;) {
        for (int i = begin; i < end; ++i)
            if (!visit(core::Triplet(patch[i]))) return GrowthEnd::VoxelLimit;
        ++ring;
        begin = end;
        end = patch.size();
        if (begin == end) return GrowthEnd::Exhausted;
        if (ring >= maxRings) return GrowthEnd::RingLimit;
    }
}

} // namespace fault::segmentation::detail
