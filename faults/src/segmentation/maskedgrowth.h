#pragma once
// The growth of propagateFaultPatch run on a mask of takeable voxels, as the label image
// scan uses it: nothing is labelled while a patch grows, so a rejected patch is undone by
// setting its bits back, and a caller may stop a growth whose patch is known to be
// rejected. Internal to the segmentation.
#include <cstdint>
#include <memory>

#include <core/triplet.h>

#include "segmentation/patchgrowth.h"
#include "segmentation/takeablemask.h"

namespace fault::segmentation::detail {

// The voxels of one patch in the order taken. Emptying it keeps its storage and does not
// touch its contents, so that the scan can reuse it for every seed at no cost.
class PatchBuffer {
public:
    // Room for `capacity` voxels; false when memory runs out (the buffer is then unchanged).
    bool reserve(int capacity);

    void clear() { m_size = 0; }
    int size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    const core::Triplet& operator[](int i) const { return m_data[i]; }
    const core::Triplet* begin() const { return m_data.get(); }
    const core::Triplet* end() const { return m_data.get() + m_size; }

    // Appends `v`, growing the storage when full; false when memory runs out.
    bool add(const core::Triplet& v)
    {
        if (m_size == m_capacity && !grow()) return false;
        m_data[m_size++] = v;
        return true;
    }

private:
    bool grow();

    std::unique_ptr<core::Triplet[]> m_data;
    int m_size = 0;
    int m_capacity = 0;
};

// Index of the lowest set bit of a non-zero word.
inline int lowestSetBit(uint32_t bits)
{
#if defined(_MSC_VER) && !defined(__clang__)
    unsigned long index = 0;
    _BitScanForward(&index, bits);
    return static_cast<int>(index);
#else
    return __builtin_ctz(bits);
#endif
}

// Offsets of the 27 neighbours of TakeableMask::around(), in its bit order.
struct NeighbourSteps {
    int dx[TakeableMask::kNeighbourCount] = {};
    int dy[TakeableMask::kNeighbourCount] = {};
    int dz[TakeableMask::kNeighbourCount] = {};
};

constexpr NeighbourSteps makeNeighbourSteps()
{
    NeighbourSteps steps;
    int k = 0;
    for (int dz = -1; dz <= 1; ++dz)
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx, ++k) {
                steps.dx[k] = dx;
                steps.dy[k] = dy;
                steps.dz[k] = dz;
            }
    return steps;
}
inline constexpr NeighbourSteps kNeighbourSteps = makeNeighbourSteps();

// Grows a patch from `seed` (inside the volume) as growPatch would on the volume and
// labels that `mask` describes, but clears the bits of the voxels taken instead of
// labelling them. `keepGrowing()` is asked after every voxel visited; when it answers
// false the growth ends at once with GrowthEnd::Stopped.
template <class KeepGrowing>
GrowthEnd growPatchMasked(TakeableMask& mask, core::Triplet seed, PatchBuffer& patch,
                          int maxRings, int maxVoxels, KeepGrowing&& keepGrowing)
{
    mask.clearBit(mask.bitOf(seed.x, seed.y, seed.z));
    patch.clear();
    if (!patch.add(seed)) return GrowthEnd::VoxelLimit;

    const NeighbourSteps& step = kNeighbourSteps;
    auto visit = [&](const core::Triplet& v) {
        const std::size_t centre = mask.bitOf(v.x, v.y, v.z);
        for (uint32_t bits = mask.around(centre); bits != 0; bits &= bits - 1) {
            const int k = lowestSetBit(bits);
            if (!patch.add(core::Triplet(v.x + step.dx[k], v.y + step.dy[k], v.z + step.dz[k])))
                return VisitEnd::PatchFull;
            mask.clearBit(centre + mask.neighbourOffset(k));
            if (patch.size() >= maxVoxels) return VisitEnd::PatchFull;
        }
        return keepGrowing() ? VisitEnd::Continue : VisitEnd::Stopped;
    };
    return growRings(patch, maxRings, visit);
}

} // namespace fault::segmentation::detail
