#pragma once
// Grows one patch from a seed on a private copy of the takeable mask and judges it, leaving
// the mask as it found it, so that several growers can grow different seeds of one label
// state at once. Internal to the segmentation.
#include <cstddef>

#include <core/triplet.h>

#include "segmentation/maskedgrowth.h"
#include "segmentation/patchgrowth.h"
#include "segmentation/patchspread.h"
#include "segmentation/takeablemask.h"

namespace fault::segmentation::detail {

// What decides whether a grown patch is kept.
struct PatchRules {
    int maxRings = 0;            // growth rings
    int maxVoxels = 0;           // a patch grows to at most this many voxels
    int minVoxels = 0;           // and is kept with at least this many
    double maxDeviation = 0.0;   // and a spread strictly below this
    int reach = 0;               // farthest a patch voxel can lie from its seed along an axis
};

// The outcome of one growth.
struct Verdict {
    GrowthEnd end = GrowthEnd::VoxelLimit;
    bool kept = false;
    // Too small, and nothing more could have been taken: every later seed inside the
    // patch grows a patch that is too small as well (see the label scan).
    bool exhaustedTooSmall = false;
    int grown = 0;  // voxels grown
};

class PatchGrower {
public:
    // A grower that owns `mask`; isNull() when the mask is null.
    PatchGrower(const VolumeView& volume, double threshold, TakeableMask&& mask,
                const PatchRules& rules);
    bool isNull() const { return m_mask.isNull(); }
    // Bytes a grower holds besides its mask, for patches of at most maxVoxels voxels.
    static std::size_t bufferBytes(int maxVoxels);

    // Grows the patch of `seed` (whose voxel index is seedIndex) on the grower's mask and
    // judges it. The voxels grown stay in patch() until the next growth; the mask is left
    // as it was. A patch whose spread rules it out is not grown to its end: a rejected
    // patch leaves no trace, so how much of it was grown does not matter.
    Verdict grow(const core::Triplet& seed, std::size_t seedIndex);

    const PatchBuffer& patch() const { return m_patch; }
    // The voxels growth may take: those of the label state, between growths.
    const TakeableMask& mask() const { return m_mask; }
    // Removes the voxels of a patch kept elsewhere from the grower's mask.
    void take(const PatchBuffer& kept);

private:
    VolumeView m_volume;
    double m_threshold;
    PatchRules m_rules;
    TakeableMask m_mask;     // in step with the labels between growths
    PatchBuffer m_patch;     // the last patch grown
    VoxelMoments m_moments;  // of the first voxels of m_patch
};

} // namespace fault::segmentation::detail
