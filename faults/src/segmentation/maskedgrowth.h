#pragma once
// The growth of propagateFaultPatch run on a mask of takeable voxels, as the label image
// scan uses it: nothing is labelled while a patch grows, so a rejected patch is undone by
// setting its bits back, and a caller may stop a growth whose patch is known to be
// rejected. Internal to the segmentation.
#include <cstdint>
#include <memory>

#if defined(_MSC_VER) && !defined(__clang__)
#include <intrin.h>
#endif

#include <core/triplet.h>

#include "segmentation/patchgrowth.h"
#include "segmentation/takeablemask.h"

namespace fault::segmentation::detail {

// The voxels of one patch in the order taken, each with its bit in the takeable mask.
// Emptying it keeps its storage and does not touch its contents, so that the scan can
// reuse it for every seed at no cost.
class PatchBuffer {
public:
    static constexpr std::size_t kBytesPerVoxel = sizeof(core::Triplet) + sizeof(std::size_t);

    // Room for `capacity` voxels; false when memory runs out (the buffer is then unchanged).
    bool reserve(int capacity);

    void clear() { m_size = 0; }
    int size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    const core::Triplet& operator[](int i) const { return m_voxels[i]; }
    std::size_t bit(int i) const { return m_bits[i]; }
    const core::Triplet* begin() const { return m_voxels.get(); }
    const core::Triplet* end() const { return m_voxels.get() + m_size; }

    // Appends voxel `v` whose mask bit is `bit`, growing the storage when full; false when
    // memory runs out.
    bool add(const core::Triplet& v, std::size_t bit)
    {
        if (m_size == m_capacity && !grow()) return false;
        m_voxels[m_size] = v;
        m_bits[m_size] = bit;
        ++m_size;
        return true;
    }

private:
    bool grow();

    std::unique_ptr<core::Triplet[]> m_voxels;
    std::unique_ptr<std::size_t[]> m_bits;
    int m_size = 0;
    int m_capacity = 0;
};

// Index of the lowest set bit of a non-zero word.
inline int lowestSetBit(uint64_t bits)
{
#if defined(_MSC_VER) && !defined(__clang__)
    unsigned long index = 0;
    _BitScanForward64(&index, bits);
    return static_cast<int>(index);
#else
    return __builtin_ctzll(bits);
#endif
}

// Grows a patch from `seed` (inside the volume) as growPatch would on the volume and
// labels that `mask` describes, but clears the bits of the voxels taken instead of
// labelling them. `keepGrowing()` is asked after every voxel visited; when it answers
// false the growth ends at once with GrowthEnd::Stopped.
template <class KeepGrowing>
GrowthEnd growPatchMasked(TakeableMask& mask, core::Triplet seed, PatchBuffer& patch,
                          int maxRings, int maxVoxels, KeepGrowing&& keepGrowing)
{
    const std::size_t seedBit = mask.bitOf(seed.x, seed.y, seed.z);
    mask.clearBit(seedBit);
    patch.clear();
    if (!patch.add(seed, seedBit)) return GrowthEnd::VoxelLimit;

    auto visit = [&](int i) {
        const core::Triplet v = patch[i];
        const std::size_t centre = patch.bit(i);
        for (uint32_t bits = mask.around(centre); bits != 0; bits &= bits - 1) {
            const TakeableMask::Neighbour& n = mask.neighbour(lowestSetBit(bits));
            const std::size_t taken = centre + n.bitOffset;
            if (!patch.add(core::Triplet(v.x + n.dx, v.y + n.dy, v.z + n.dz), taken))
                return VisitEnd::PatchFull;
            mask.clearBit(taken);
            if (patch.size() >= maxVoxels) return VisitEnd::PatchFull;
        }
        return keepGrowing() ? VisitEnd::Continue : VisitEnd::Stopped;
    };
    return growRings(patch, maxRings, visit);
}

} // namespace fault::segmentation::detail
