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
    Stopped,     // the caller stopped it (the patch is then incomplete)
};

// What a visit of one voxel asks of the ring loop.
enum class VisitEnd {
    Continue,
    PatchFull,  // the voxel limit is reached, or the array could not grow
    Stopped,    // the caller wants no more
};

// The growth of propagateFaultPatch on a view whose seed lies inside the volume.
GrowthEnd growPatch(const VolumeView& volume, core::Triplet seed, int label,
                    core::Array<core::Triplet>& patch, int maxRings, int maxVoxels,
                    double threshold);

// The ring loop shared by the growths. `visit(i)` takes what it may around voxel i of
// `patch` (with size()), which holds the labelled seed.
template <class Patch, class Visit>
GrowthEnd growRings(Patch& patch, int maxRings, Visit&& visit)
{
    if (maxRings < 1) return GrowthEnd::RingLimit;
    int begin = 0;  // current ring: patch[begin .. end)
    int end = patch.size();
    for (int ring = 0;;) {
        for (int i = begin; i < end; ++i) {
            const VisitEnd visited = visit(i);
            if (visited == VisitEnd::PatchFull) return GrowthEnd::VoxelLimit;
            if (visited == VisitEnd::Stopped) return GrowthEnd::Stopped;
        }
        ++ring;
        begin = end;
        end = patch.size();
        if (begin == end) return GrowthEnd::Exhausted;
        if (ring >= maxRings) return GrowthEnd::RingLimit;
    }
}

} // namespace fault::segmentation::detail
