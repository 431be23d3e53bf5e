#include "segmentation/patchgrower.h"

#include <algorithm>
#include <utility>

namespace fault::segmentation::detail {

namespace {

// The patch buffer starts with room for the largest patch, up to this many voxels.
constexpr int kMaxPatchReserve = 1 << 24;
// A growing patch is checked for a spread that already rules it out every time it has
// taken this many more voxels.
constexpr int kSpreadCheckStride = 32;

int reservedVoxels(int maxVoxels) { return std::max(1, std::min(maxVoxels, kMaxPatchReserve)); }

} // namespace

std::size_t PatchGrower::bufferBytes(int maxVoxels)
{
    return static_cast<std::size_t>(reservedVoxels(maxVoxels)) * PatchBuffer::kBytesPerVoxel;
}

PatchGrower::PatchGrower(const VolumeView& volume, double threshold, TakeableMask&& mask,
                         const PatchRules& rules)
    : m_volume(volume), m_threshold(threshold), m_rules(rules), m_mask(std::move(mask))
{
    m_patch.reserve(reservedVoxels(rules.maxVoxels));
}

Verdict PatchGrower::grow(const core::Triplet& seed, std::size_t seedIndex)
{
    m_moments.reset();
    int nextCheck = kSpreadCheckStride;
    auto keepGrowing = [&]() {
        if (m_patch.size() < nextCheck) return true;
        m_moments.add(m_patch.begin() + m_moments.count(), m_patch.end());
        nextCheck = m_patch.size() + kSpreadCheckStride;
        return !m_moments.forcesDeviationOver(m_rules.maxDeviation, m_rules.maxVoxels,
                                              m_rules.reach);
    };
    Verdict verdict;
    verdict.end = growPatchMasked(m_mask, seed, m_patch, m_rules.maxRings, m_rules.maxVoxels,
                                  keepGrowing);
    const std::size_t seedBit = m_mask.bitOf(seed.x, seed.y, seed.z);
    // The seed was free: it is takeable again when above the threshold.
    if (static_cast<double>(m_volume.likelihood[seedIndex]) > m_threshold) m_mask.setBit(seedBit);
    for (int k = 1; k < m_patch.size(); ++k) m_mask.setBit(m_patch.bit(k));
    verdict.grown = m_patch.size();
    if (m_patch.empty()) return verdict;  // the buffer could not hold even the seed

    const bool bigEnough = m_patch.size() >= m_rules.minVoxels;
    if (bigEnough && verdict.end != GrowthEnd::Stopped) {
        m_moments.add(m_patch.begin() + m_moments.count(), m_patch.end());
        verdict.kept = m_rules.maxDeviation > m_moments.planeDeviation();
    }
    verdict.exhaustedTooSmall = !bigEnough && verdict.end == GrowthEnd::Exhausted;
    return verdict;
}

void PatchGrower::take(const PatchBuffer& kept)
{
    for (int k = 0; k < kept.size(); ++k) m_mask.clearBit(kept.bit(k));
}

} // namespace fault::segmentation::detail
