#include "segmentation/faultpatchlabelimage.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include <core/assertion.h>
#include <zneventbus.h>

#include "segmentation/maskedgrowth.h"
#include "segmentation/patchspread.h"
#include "segmentation/progressscope.h"
#include "segmentation/takeablemask.h"

namespace fault::segmentation {

namespace {

// The patch buffer starts with room for the largest patch, up to this many voxels.
constexpr int kMaxPatchReserve = 1 << 24;
// A patch is kept with at least maxPatchSize / kMinSizeDivisor voxels.
constexpr int kMinSizeDivisor = 3;
// A growing patch is checked for a spread that already rules it out every time it has
// taken this many more voxels.
constexpr int kSpreadCheckStride = 32;

// Free voxels that a later seed is known to grow into a patch that is again too small.
// Negative, so growth takes them as it takes any free voxel; not kUnlabelled, so the scan
// does not seed there. The scan turns each one back into kUnlabelled as it passes it.
//
// Why skipping those seeds cannot change the result: a rejected patch is undone, so it
// leaves no trace. A patch that was too small and stopped because it had nothing left to
// take (not because of its ring or voxel limit) holds every free voxel that can be
// reached from its seed through voxels above the threshold. A later seed inside it can
// only reach a subset of those voxels, since voxels are only ever taken away from the
// free set meanwhile; its patch is therefore too small as well and would be undone.
constexpr int kKnownTooSmall = kUnlabelled + 1;
static_assert(kKnownTooSmall < 0, "marked voxels must stay free for growth");

const QString kNoMemory = QStringLiteral("Not enough memory for the fault patch labels.");

// The settings of one in-memory segmentation.
struct ScanSettings {
    int maxLabelCount = 0;
    int maxPatchSize = 0;
    double maxPlaneDeviation = 0.0;
    int growthIterations = 0;
    double threshold = 0.0;
};

// The state of one scan over a volume.
class LabelScan {
public:
    LabelScan(const detail::VolumeView& volume, const ScanSettings& settings, int firstLabel)
        : m_volume(volume), m_settings(settings), m_mask(volume, settings.threshold),
          m_label(firstLabel), m_sliceCount(volume.nz),
          m_minPatchSize(settings.maxPatchSize / kMinSizeDivisor),
          m_reach(std::min(settings.growthIterations,
                           std::max({volume.nx, volume.ny, volume.nz})))
    {
        m_patch.reserve(std::max(1, std::min(settings.maxPatchSize, kMaxPatchReserve)));
    }

    // False when memory ran out for the scan's own state.
    bool isUsable() const { return !m_mask.isNull(); }
    int label() const { return m_label; }
    int sliceCount() const { return m_sliceCount; }

    // Seeds and judges every patch of slice z, in scan order.
    void scanSlice(int z)
    {
        const std::size_t sliceStart = m_volume.index(0, 0, z);
        std::size_t i = sliceStart;
        for (int y = 0; y < m_volume.ny; ++y)
            for (int x = 0; x < m_volume.nx; ++x, ++i) {
                int& mark = m_volume.labels[i];
                if (mark == kKnownTooSmall) {
                    mark = kUnlabelled;
                    continue;
                }
                if (mark != kUnlabelled ||
                    !(static_cast<double>(m_volume.likelihood[i]) >= m_settings.threshold))
                    continue;
                growAndJudge(core::Triplet(x, y, z), i);
            }
    }

    // Clears the marks left in the slices from z on, which the scan did not reach.
    void clearMarksFrom(int z)
    {
        if (z >= m_volume.nz) return;
        const long long begin = static_cast<long long>(m_volume.index(0, 0, z));
        const long long end = static_cast<long long>(m_volume.index(0, 0, m_volume.nz));
        int* labels = m_volume.labels;
#pragma omp parallel for schedule(static)
        for (long long i = begin; i < end; ++i)
            if (labels[i] == kKnownTooSmall) labels[i] = kUnlabelled;
    }

private:
    void growAndJudge(const core::Triplet& seed, std::size_t seedIndex)
    {
        // The patch is grown in the mask only; the labels are written once it is kept, so a
        // rejected patch costs no label writes. Its moments follow the growth, so that it
        // is stopped as soon as its spread rules it out: a rejected patch leaves no trace,
        // so how much of it was grown does not matter.
        m_moments.reset();
        int nextCheck = kSpreadCheckStride;
        auto keepGrowing = [&]() {
            if (m_patch.size() < nextCheck) return true;
            m_moments.add(m_patch.begin() + m_moments.count(), m_patch.end());
            nextCheck = m_patch.size() + kSpreadCheckStride;
            return !m_moments.forcesDeviationOver(m_settings.maxPlaneDeviation,
                                                  m_settings.maxPatchSize, m_reach);
        };
        const detail::GrowthEnd end = detail::growPatchMasked(
            m_mask, seed, m_patch, m_settings.growthIterations, m_settings.maxPatchSize,
            keepGrowing);
        if (m_patch.empty()) {  // the array could not hold even the seed: nothing grown
            m_mask.set(seed.x, seed.y, seed.z, isAboveThreshold(seedIndex));
            return;
        }
        const bool bigEnough = m_patch.size() >= m_minPatchSize;
        if (bigEnough && end != detail::GrowthEnd::Stopped) {
            m_moments.add(m_patch.begin() + m_moments.count(), m_patch.end());
            if (m_settings.maxPlaneDeviation > m_moments.planeDeviation()) {
                accept(seed.z);
                return;
            }
        }
        const bool skipLaterSeeds = !bigEnough && end == detail::GrowthEnd::Exhausted;
        undo(seedIndex, skipLaterSeeds);
    }

    bool isAboveThreshold(std::size_t i) const
    {
        return static_cast<double>(m_volume.likelihood[i]) > m_settings.threshold;
    }

    void accept(int z)
    {
        for (const core::Triplet& v : m_patch)
            m_volume.labels[m_volume.index(v.x, v.y, v.z)] = m_label;
        ++m_label;
        if (!m_budgetSpent && m_label > m_settings.maxLabelCount) {
            const long long reach = static_cast<long long>(z) + m_settings.growthIterations + 1;
            m_sliceCount = static_cast<int>(std::min<long long>(m_volume.nz, reach));
            m_budgetSpent = true;
        }
    }

    // Frees the patch's voxels again. Every voxel but the seed was taken by growth, so
    // it is above the threshold. With `markLaterSeeds`, the voxels after the seed in scan
    // order are marked so that they seed nothing.
    void undo(std::size_t seedIndex, bool markLaterSeeds)
    {
        const core::Triplet seed = m_patch[0];
        m_mask.set(seed.x, seed.y, seed.z, isAboveThreshold(seedIndex));
        for (int k = 1; k < m_patch.size(); ++k) {
            const core::Triplet& v = m_patch[k];
            m_mask.setBit(m_mask.bitOf(v.x, v.y, v.z));
            const std::size_t i = m_volume.index(v.x, v.y, v.z);
            if (markLaterSeeds && i > seedIndex) m_volume.labels[i] = kKnownTooSmall;
        }
    }

    detail::VolumeView m_volume;
    ScanSettings m_settings;
    detail::TakeableMask m_mask;  // in step with the labels
    int m_label;               // label of the next accepted patch
    int m_sliceCount;          // slices to scan; lowered once the label budget is spent
    int m_minPatchSize;        // smallest patch kept
    int m_reach;               // farthest a patch voxel lies from its seed along an axis
    bool m_budgetSpent = false;
    detail::PatchBuffer m_patch;  // the patch being judged, reused for every seed
    VoxelMoments m_moments;       // of the first voxels of m_patch
};

} // namespace

ZN3DImage<int>* getFaultPatchLabelImage(ZN3DImage<float>* likelihood, int maxLabelCount,
                                        int& sliceCount, int& labelCounter, int maxPatchSize,
                                        double maxPlaneDeviation, int growthIterations,
                                        double likelihoodThreshold, int progressParent)
{
    if (!CORE_CHECK(likelihood != nullptr && !likelihood->isNull(),
                    "fault::segmentation::getFaultPatchLabelImage",
                    "faults/src/segmentation/faultpatchlabelimage"))
        return nullptr;
    const int nz = likelihood->nz();
    ProgressScope progress(QStringLiteral("Get Fault Patches"), nz, progressParent);
    std::unique_ptr<ZN3DImage<int>> labels(
        new (std::nothrow) ZN3DImage<int>(likelihood->blocSpace(), kUnlabelled));
    if (!labels || labels->isNull()) {
        ZNEventBus::sendMessage(ZNEventBus::Error, kNoMemory);
        return nullptr;
    }

    detail::VolumeView volume;
    volume.likelihood = likelihood->data();
    volume.labels = labels->data();
    volume.nx = likelihood->nx();
    volume.ny = likelihood->ny();
    volume.nz = nz;
    const ScanSettings settings{maxLabelCount, maxPatchSize, maxPlaneDeviation, growthIterations,
                                likelihoodThreshold};
    LabelScan scan(volume, settings, labelCounter + 1);
    if (!scan.isUsable()) {
        ZNEventBus::sendMessage(ZNEventBus::Error, kNoMemory);
        return nullptr;
    }

    int z = 0;
    for (; z < scan.sliceCount(); ++z) {
        if (progress.advanceAndCheckCancelled()) {
            sliceCount = scan.sliceCount();
            labelCounter = scan.label();
            return nullptr;
        }
        scan.scanSlice(z);
    }
    scan.clearMarksFrom(z);
    sliceCount = scan.sliceCount();
    labelCounter = scan.label();
    return labels.release();
}

} // namespace fault::segmentation
