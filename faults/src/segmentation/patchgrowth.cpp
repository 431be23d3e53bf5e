#include "patchgrowth.h"

#include <cstddef>

namespace fault::segmentation::detail {

namespace {

constexpr int kNeighbourCount = 27;  // the 3 x 3 x 3 block, the voxel itself included

// The neighbourhood in visiting order: dz outer, then dy, then dx inner.
struct Neighbourhood {
    int dx[kNeighbourCount];
    int dy[kNeighbourCount];
    int dz[kNeighbourCount];
    std::ptrdiff_t linear[kNeighbourCount];  // index offset in a volume of nx x ny

    Neighbourhood(int nx, int ny)
    {
        const std::ptrdiff_t slice = static_cast<std::ptrdiff_t>(nx) * ny;
        int k = 0;
        for (int z = -1; z <= 1; ++z)
            for (int y = -1; y <= 1; ++y)
                for (int x = -1; x <= 1; ++x, ++k) {
                    dx[k] = x;
                    dy[k] = y;
                    dz[k] = z;
                    linear[k] = x + static_cast<std::ptrdiff_t>(nx) * y + slice * z;
                }
    }
};

// True when every neighbour of v lies inside the volume.
bool isInterior(const VolumeView& volume, const core::Triplet& v)
{
    return v.x > 0 && v.y > 0 && v.z > 0 && v.x < volume.nx - 1 && v.y < volume.ny - 1 &&
           v.z < volume.nz - 1;
}

bool isInside(const VolumeView& volume, int x, int y, int z)
{
    return x >= 0 && y >= 0 && z >= 0 && x < volume.nx && y < volume.ny && z < volume.nz;
}

} // namespace

GrowthEnd growPatch(const VolumeView& volume, core::Triplet seed, int label,
                    core::Array<core::Triplet>& patch, int maxRings, int maxVoxels,
                    double threshold)
{
    volume.labels[volume.index(seed.x, seed.y, seed.z)] = label;
    patch.clear();
    if (!patch.add(seed)) return GrowthEnd::VoxelLimit;

    const Neighbourhood around(volume.nx, volume.ny);
    // Takes what it may around voxel i of the patch.
    auto visit = [&](int i) {
        const core::Triplet v = patch[i];
        const std::size_t centre = volume.index(v.x, v.y, v.z);
        const bool interior = isInterior(volume, v);
        for (int k = 0; k < kNeighbourCount; ++k) {
            const int x = v.x + around.dx[k];
            const int y = v.y + around.dy[k];
            const int z = v.z + around.dz[k];
            if (!interior && !isInside(volume, x, y, z)) continue;
            const std::size_t n = centre + around.linear[k];
            if (!(static_cast<double>(volume.likelihood[n]) > threshold) || volume.labels[n] >= 0)
                continue;
            if (!patch.add(core::Triplet(x, y, z))) return VisitEnd::PatchFull;
            volume.labels[n] = label;
            if (patch.size() >= maxVoxels) return VisitEnd::PatchFull;
        }
        return VisitEnd::Continue;
    };
    return growRings(patch, maxRings, visit);
}

} // namespace fault::segmentation::detail
