#include "segmentation/labelscan.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <new>
#include <numeric>

#include <omp.h>

namespace fault::segmentation::detail {

namespace {

// A patch is kept with at least maxPatchSize / kMinSizeDivisor voxels.
constexpr int kMinSizeDivisor = 3;
// The scan looks this many voxels ahead at most for seeds to grow at the same time.
constexpr std::size_t kLookAhead = 4096;

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

int threadCount(const ScanTuning& tuning)
{
    const int wanted = tuning.threads > 0 ? tuning.threads
                       : omp_in_parallel() ? 1
                                           : omp_get_max_threads();
    return std::max(1, std::min(wanted, LabelScan::kMaxThreads));
}

} // namespace

ScanMemory scanMemory(int nx, int ny, int maxPatchSize, const ScanTuning& tuning)
{
    const double threads = threadCount(tuning);
    const double voxels = static_cast<double>(nx) * ny;
    // A mask's bytes grow by one padded slice per slice; two more pad it and a word.
    const double maskSlice = static_cast<double>(TakeableMask::bytesFor(nx, ny, 1) -
                                                 TakeableMask::bytesFor(nx, ny, 0));
    const double maskFixed = static_cast<double>(TakeableMask::bytesFor(nx, ny, 0));
    const double sliceRows = static_cast<double>(TakeableMask::wordsPerRowFor(nx)) * ny *
                             sizeof(uint64_t);  // the seeds at the threshold of one slice
    ScanMemory memory;
    memory.perSlice = voxels * (sizeof(float) + sizeof(int)) + threads * maskSlice;
    memory.fixed = threads * (maskFixed + PatchGrower::bufferBytes(maxPatchSize)) + sliceRows;
    return memory;
}

LabelScan::LabelScan(const VolumeView& volume, const ScanSettings& settings, int firstLabel,
                     const ScanTuning& tuning)
    : m_volume(volume), m_settings(settings), m_tuning(tuning), m_label(firstLabel),
      m_sliceCount(volume.nz)
{
    PatchRules rules;
    rules.maxRings = settings.growthIterations;
    rules.maxVoxels = settings.maxPatchSize;
    rules.minVoxels = settings.maxPatchSize / kMinSizeDivisor;
    rules.maxDeviation = settings.maxPlaneDeviation;
    const int extent = settings.extent > 0 ? settings.extent : std::max({volume.nx, volume.ny, volume.nz});
    rules.reach = std::min(settings.growthIterations, extent);
    // Every thread has its own grower and copy of the mask; fewer threads when memory
    // runs short.
    const int threads = threadCount(tuning);
    for (int k = 0; k < threads; ++k) {
        TakeableMask mask = k == 0 ? TakeableMask(volume, settings.threshold, &m_atThresholdSeeds)
                                   : TakeableMask(m_growers[0]->mask());
        if (mask.isNull()) break;
        std::unique_ptr<PatchGrower> grower(new (std::nothrow) PatchGrower(
            volume, settings.threshold, std::move(mask), rules));
        if (!grower) break;
        m_growers[m_threadCount++] = std::move(grower);
    }
    if (m_threadCount == 0) return;
    const std::size_t words = m_growers[0]->mask().wordsPerRow() * volume.ny;
    m_atThreshold.reset(new (std::nothrow) uint64_t[words]());
    m_atThresholdRowsClear = true;
    const int perThread = std::max(1, tuning.seedsPerThread);
    m_seedsPerGo = std::min(kMaxGrowers, m_threadCount * perThread);
}

void LabelScan::scanSlice(int z)
{
    // Only voxels of the takeable mask or at the threshold can seed, and marks lie on
    // takeable voxels only; so the scan visits the set bits of both masks. A word read
    // once stays good while its voxels are judged: keeping a patch only clears bits, and
    // the labels say what is still free.
    const std::size_t sliceEnd = m_volume.index(0, 0, z + 1);
    const std::size_t words = m_growers[0]->mask().wordsPerRow();
    selectAtThreshold(z, words);
    for (int y = 0; y < m_volume.ny; ++y) {
        const uint64_t* takeable = m_growers[0]->mask().row(y, z);
        const uint64_t* atThreshold = m_atThreshold.get() + words * static_cast<std::size_t>(y);
        const std::size_t rowStart = m_volume.index(0, y, z);
        for (std::size_t w = 0; w < words; ++w)
            for (uint64_t bits = takeable[w] | atThreshold[w]; bits != 0; bits &= bits - 1) {
                const std::size_t x = w * TakeableMask::kWordBits + lowestSetBit(bits) - 1;
                visit(rowStart + x, sliceEnd, z);
            }
    }
}

void LabelScan::selectAtThreshold(int z, std::size_t wordsPerRow)
{
    const std::size_t sliceStart = m_volume.index(0, 0, z);
    const std::size_t sliceEnd = m_volume.index(0, 0, z + 1);
    const auto first = std::lower_bound(m_atThresholdSeeds.begin(), m_atThresholdSeeds.end(), sliceStart);
    const auto last = std::lower_bound(first, m_atThresholdSeeds.end(), sliceEnd);
    if (first == last && m_atThresholdRowsClear) return;
    std::fill(m_atThreshold.get(), m_atThreshold.get() + wordsPerRow * static_cast<std::size_t>(m_volume.ny),
              uint64_t(0));
    m_atThresholdRowsClear = first == last;
    const std::size_t nx = static_cast<std::size_t>(m_volume.nx);
    for (auto i = first; i != last; ++i) {
        const std::size_t y = (*i - sliceStart) / nx;
        const std::size_t bit = (*i - sliceStart) % nx + 1;  // a pad bit before x = 0
        m_atThreshold[wordsPerRow * y + bit / TakeableMask::kWordBits] |= uint64_t(1) << (bit % TakeableMask::kWordBits);
    }
}

void LabelScan::visit(std::size_t i, std::size_t sliceEnd, int z)
{
    int& mark = m_volume.labels[i];
    if (mark == kKnownTooSmall) {
        mark = kUnlabelled;
        return;
    }
    if (!isSeed(i)) return;
    // Seeds grown ahead that are no seeds any more were marked meanwhile.
    while (m_next < m_grownCount && m_grown[m_next].seed < i) ++m_next;
    const bool grownAhead = m_next < m_grownCount && m_grown[m_next].seed == i &&
                            m_grown[m_next].generation == m_generation;
    if (!grownAhead) growFrom(i, sliceEnd);
    commit(m_grown[m_next++], z);
}

void LabelScan::clearMarksFrom(int z)
{
    if (z >= m_volume.nz) return;
    const long long begin = static_cast<long long>(m_volume.index(0, 0, z));
    const long long end = static_cast<long long>(m_volume.index(0, 0, m_volume.nz));
    int* labels = m_volume.labels;
#pragma omp parallel for schedule(static)
    for (long long i = begin; i < end; ++i)
        if (labels[i] == kKnownTooSmall) labels[i] = kUnlabelled;
}

core::Triplet LabelScan::voxelAt(std::size_t i) const
{
    const std::size_t nx = static_cast<std::size_t>(m_volume.nx);
    const std::size_t row = i / nx;  // y + ny z
    const std::size_t ny = static_cast<std::size_t>(m_volume.ny);
    return core::Triplet(static_cast<int>(i % nx), static_cast<int>(row % ny),
                         static_cast<int>(row / ny));
}

void LabelScan::growFrom(std::size_t i, std::size_t sliceEnd)
{
    m_grown[0].seed = i;
    int count = 1;
    if (m_threadCount > 1 && m_speculate && (!m_tuning.pace || m_pacing.allows())) {
        const std::size_t end = std::min(sliceEnd, i + kLookAhead);
        // Marked voxels are no seeds; a seed found here may still be marked or labelled
        // before the scan reaches it, and is then skipped there as it would be anyway.
        for (std::size_t j = i + 1; j < end && count < m_seedsPerGo; ++j)
            if (isSeed(j)) m_grown[count++].seed = j;
    }
    if (count == 1) {
        m_grown[0].verdict = m_growers[0]->grow(voxelAt(i), i);
        m_grown[0].grower = 0;
    } else {
        growInParallel(count);
    }
    for (int k = 0; k < count; ++k) m_grown[k].generation = m_generation;
    m_grownCount = count;
    m_next = 0;
}

void LabelScan::growInParallel(int count)
{
    using Clock = std::chrono::steady_clock;
    Clock::duration work[kMaxGrowers];
    const Clock::time_point start = Clock::now();
#pragma omp parallel for schedule(dynamic, 1) num_threads(m_threadCount)
    for (int k = 0; k < count; ++k) {
        const Clock::time_point begin = Clock::now();
        const int thread = omp_get_thread_num();
        Grown& grown = m_grown[k];
        grown.verdict = m_growers[thread]->grow(voxelAt(grown.seed), grown.seed);
        grown.grower = thread;
        work[k] = Clock::now() - begin;
    }
    m_pacing.record(Clock::now() - start,
                    std::accumulate(work, work + count, Clock::duration::zero()));
}

void LabelScan::commit(const Grown& grown, int z)
{
    const Verdict& verdict = grown.verdict;
    m_speculate = !verdict.kept && verdict.grown >= m_tuning.speculationMinVoxels;
    if (!verdict.kept && !verdict.exhaustedTooSmall) return;  // no trace left
    // The patch is needed. Its grower holds it if it was its last growth; otherwise the
    // first grower grows it again, on the same label state and so to the same patch.
    const core::Triplet seed = voxelAt(grown.seed);
    const PatchBuffer* patch = &m_growers[grown.grower]->patch();
    if (patch->empty() || (*patch)[0] != seed) {
        m_growers[0]->grow(seed, grown.seed);
        patch = &m_growers[0]->patch();
    }
    if (verdict.kept) {
        accept(*patch, z);
        for (int k = 0; k < m_threadCount; ++k) m_growers[k]->take(*patch);
        ++m_generation;
    } else {
        markLaterSeeds(*patch, grown.seed);
    }
}

void LabelScan::accept(const PatchBuffer& patch, int z)
{
    for (const core::Triplet& v : patch) m_volume.labels[m_volume.index(v.x, v.y, v.z)] = m_label;
    ++m_label;
    if (!m_budgetSpent && m_label > m_settings.maxLabelCount) {
        const long long reach = static_cast<long long>(z) + m_settings.growthIterations + 1;
        m_sliceCount = static_cast<int>(std::min<long long>(m_volume.nz, reach));
        m_budgetSpent = true;
    }
}

void LabelScan::markLaterSeeds(const PatchBuffer& patch, std::size_t seed)
{
    for (const core::Triplet& v : patch) {
        const std::size_t i = m_volume.index(v.x, v.y, v.z);
        if (i > seed) m_volume.labels[i] = kKnownTooSmall;
    }
}

bool LabelScan::Pacing::allows()
{
    if (m_skip == 0) return true;
    --m_skip;
    return false;
}

void LabelScan::Pacing::record(std::chrono::steady_clock::duration wall,
                               std::chrono::steady_clock::duration work)
{
    if (wall < work) {
        m_backOff = 1;
        return;
    }
    const double slower = static_cast<double>(wall.count()) / std::max<double>(1.0, work.count());
    const double skip = std::ceil(slower) * static_cast<double>(m_backOff);
    m_skip = static_cast<long long>(std::min(skip, static_cast<double>(kMaxSkip)));
    m_backOff = std::min(2 * m_backOff, kMaxSkip);
}

} // namespace fault::segmentation::detail
