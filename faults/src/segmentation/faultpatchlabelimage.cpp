#include "segmentation/faultpatchlabelimage.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include <core/array.h>
#include <core/assertion.h>
#include <zneventbus.h>

#include "segmentation/patchgrowth.h"
#include "segmentation/patchspread.h"
#include "segmentation/progressscope.h"

namespace fault::segmentation {

namespace {

// The patch array holds this many times the largest patch, so that it rarely grows.
constexpr long long kPatchReserveFactor = 10;
// A patch is kept with at least maxPatchSize / kMinSizeDivisor voxels.
constexpr int kMinSizeDivisor = 3;

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
        : m_volume(volume), m_settings(settings), m_label(firstLabel), m_sliceCount(volume.nz),
          m_minPatchSize(settings.maxPatchSize / kMinSizeDivisor)
    {
        const long long reserve = kPatchReserveFactor * settings.maxPatchSize;
        m_patch.reserve(static_cast<int>(std::min<long long>(reserve, kMaxReserve)));
    }

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
    static constexpr long long kMaxReserve = 1 << 28;

    void growAndJudge(const core::Triplet& seed, std::size_t seedIndex)
    {
        const detail::GrowthEnd end =
            detail::growPatch(m_volume, seed, m_label, m_patch, m_settings.growthIterations,
                              m_settings.maxPatchSize, m_settings.threshold);
        const bool bigEnough = m_patch.size() >= m_minPatchSize;
        if (bigEnough && m_settings.maxPlaneDeviation > planeDeviation(m_patch)) {
            accept(seed.z);
            return;
        }
        const bool skipLaterSeeds = !bigEnough && end == detail::GrowthEnd::Exhausted;
        undo(skipLaterSeeds ? seedIndex : kNoSkip);
    }

    void accept(int z)
    {
        ++m_label;
        if (!m_budgetSpent && m_label > m_settings.maxLabelCount) {
            const long long reach = static_cast<long long>(z) + m_settings.growthIterations + 1;
            m_sliceCount = static_cast<int>(std::min<long long>(m_volume.nz, reach));
            m_budgetSpent = true;
        }
    }

    // Unlabels the patch. Voxels after `skipAfter` in scan order are marked so that they
    // seed nothing (kNoSkip: none).
    void undo(std::size_t skipAfter)
    {
        for (const core::Triplet& v : m_patch) {
            const std::size_t i = m_volume.index(v.x, v.y, v.z);
            m_volume.labels[i] = (skipAfter != kNoSkip && i > skipAfter) ? kKnownTooSmall
                                                                          : kUnlabelled;
        }
    }

    static constexpr std::size_t kNoSkip = static_cast<std::size_t>(-1);

    detail::VolumeView m_volume;
    ScanSettings m_settings;
    int m_label;               // label of the next accepted patch
    int m_sliceCount;          // slices to scan; lowered once the label budget is spent
    int m_minPatchSize;        // smallest patch kept
    bool m_budgetSpent = false;
    core::Array<core::Triplet> m_patch;  // the patch being judged, reused for every seed
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
        ZNEventBus::sendMessage(ZNEventBus::Error,
                                QStringLiteral("Not enough memory for the fault patch labels."));
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
