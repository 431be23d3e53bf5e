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
    if (maxRings < 1) return GrowthEnd::RingLimit;

    const Neighbourhood around(volume.nx, volume.ny);
    bool full = false;  // voxel limit reached, or the array could not grow
    // Takes voxel `n` at (x, y, z) when it is free and strictly above the threshold.
    auto consider = [&](std::size_t n, int x, int y, int z) {
        if (!(static_cast<double>(volume.likelihood[n]) > threshold) || volume.labels[n] >= 0)
            return;
        if (!patch.add(core::Triplet(x, y, z))) {
            full = true;
            return;
        }
        volume.labels[n] = label;
        full = patch.size() >= maxVoxels;
    };

    int begin = 0;  // current ring: patch[begin .. end)
    int end = 1;
    for (int ring = 0;;) {
        for (int i = begin; i < end; ++i) {
            const core::Triplet v = patch[i];
            const std::size_t centre = volume.index(v.x, v.y, v.z);
            const bool interior = isInterior(volume, v);
            for (int k = 0; k < kNeighbourCount; ++k) {
                const int x = v.x + around.dx[k];
                const int y = v.y + around.dy[k];
                const int z = v.z + around.dz[k];
                if (!interior && !isInside(volume, x, y, z)) continue;
                consider(centre + around.linear[k], x, y, z);
                if (full) return GrowthEnd::VoxelLimit;
            }
        }
        ++ring;
        begin = end;
        end = patch.size();
        if (begin == end) return GrowthEnd::Exhausted;
        if (ring >= maxRings) return GrowthEnd::RingLimit;
    }
}

} // namespace fault::segmentation::detail
