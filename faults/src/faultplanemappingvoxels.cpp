// Counting and listing the voxels a fault's pixels sample along its normal.
#include "faultplanemappingvoxels.h"

#include <algorithm>
#include <limits>
#include <new>

namespace fault {

NormalWalk::NormalWalk(const img::Image& projected, const core::mat4& toBloc, const NormalWindow& window,
                       const georef::BlocSpace& space, bool distinct)
    : m_projected(projected), m_toBloc(toBloc), m_window{std::min(std::max(window.half, 0), kMaxCount / 2)},
      m_nx(space.nx()), m_ny(space.ny()), m_nz(space.nz()), m_distinct(distinct)
{
    m_affine = toBloc(3, 0) == 0.0 && toBloc(3, 1) == 0.0 && toBloc(3, 2) == 0.0 && toBloc(3, 3) == 1.0;
    for (int c = 0; c < 4; ++c) m_column[c] = core::vec3(toBloc(0, c), toBloc(1, c), toBloc(2, c));
    for (int n = 0; n < m_window.count(); ++n) {
        m_order[n] = m_window.plainOrder(n);
        m_along[n] = m_column[2] * m_window.offset(m_order[n]);
    }
}

void VoxelLists::start(int first, int end, bool withSources, long long budget)
{
    m_lists.clear();
    m_bytes = 0;
    m_peakBytes = 0;
    m_failed = false;
    m_first = first;
    m_end = end;
    m_withSources = withSources;
    m_budget = budget;
    m_lists.resize(static_cast<std::size_t>(end - first));
}

void VoxelLists::dropLast()
{
    List& last = m_lists[static_cast<std::size_t>(m_end - 1 - m_first)];
    m_bytes -= static_cast<long long>(last.blocks.size() * kBlockEntries * entryBytes(m_withSources));
    m_lists.pop_back();
    --m_end;
}

void VoxelLists::release(int k)
{
    List& l = m_lists[static_cast<std::size_t>(k - m_first)];
    m_bytes -= static_cast<long long>(l.blocks.size() * kBlockEntries * entryBytes(m_withSources));
    l = List();
}

bool VoxelLists::grow(int k)
{
    const long long blockBytes = static_cast<long long>(kBlockEntries * entryBytes(m_withSources));
    while (m_bytes + blockBytes > m_budget && m_end - 1 > k) dropLast();
    if (m_bytes + blockBytes > m_budget && k > m_first) {
        dropLast();  // k itself: the lists before it are what fits
        return false;
    }
    List& l = m_lists[static_cast<std::size_t>(k - m_first)];
    if (l.size > std::numeric_limits<int>::max() - kBlockEntries) {
        m_failed = true;
        return false;
    }
    Block block;  // left uninitialised: entries are read up to the list's size only
    block.voxels.reset(new (std::nothrow) Voxel[kBlockEntries]);
    if (m_withSources) block.sources.reset(new (std::nothrow) uint32_t[kBlockEntries]);
    if (!block.voxels || (m_withSources && !block.sources)) {
        m_failed = true;
        return false;
    }
    l.voxel = block.voxels.get();
    l.source = block.sources.get();
    l.room = kBlockEntries;
    l.blocks.push_back(std::move(block));
    m_bytes += blockBytes;
    m_peakBytes = std::max(m_peakBytes, m_bytes);
    return true;
}

inline bool VoxelLists::add(int k, int i, int j, uint32_t source)
{
    List& l = m_lists[static_cast<std::size_t>(k - m_first)];
    if (l.room == 0 && !grow(k)) return false;
    *l.voxel++ = Voxel{i, j};
    if (l.source) *l.source++ = source;
    --l.room;
    ++l.size;
    return true;
}

template <class Visit>
void VoxelLists::sweep(const NormalWalk& walk, const VoxelCounts* skip, Visit&& visit)
{
    const uint32_t windowCount = static_cast<uint32_t>(walk.windowCount());
    for (int r = 0; r < walk.rows() && !m_failed; ++r) {
        if (skip && (skip->rowFirst[static_cast<std::size_t>(r)] >= m_end ||
                     skip->rowLast[static_cast<std::size_t>(r)] < m_first))
            continue;  // none of the row's voxels falls in the range
        visit(r, [&](int pixel, int o, int i, int j, int k) {
            if (k >= m_first && k < m_end && !m_failed)
                add(k, i, j, static_cast<uint32_t>(pixel) * windowCount + static_cast<uint32_t>(o));
        });
    }
}

bool VoxelLists::collectCounting(const NormalWalk& walk, int first, bool withSources, long long budget,
                                 VoxelCounts& counts)
{
    start(first, walk.slices(), withSources, budget);
    counts = VoxelCounts();
    counts.perSlice.assign(static_cast<std::size_t>(walk.slices()), 0);
    counts.rowFirst.assign(static_cast<std::size_t>(walk.rows()), walk.slices());
    counts.rowLast.assign(static_cast<std::size_t>(walk.rows()), -1);
    long long* perSlice = counts.perSlice.data();
    sweep(walk, nullptr, [&](int r, auto&& keep) {
        int low = walk.slices(), high = -1;
        walk.forEachInRow(r, [&](int pixel, int o, int i, int j, int k) {
            ++perSlice[k];
            low = k < low ? k : low;
            high = k > high ? k : high;
            keep(pixel, o, i, j, k);
        });
        counts.rowFirst[static_cast<std::size_t>(r)] = low;
        counts.rowLast[static_cast<std::size_t>(r)] = high;
    });
    for (long long n : counts.perSlice) counts.total += n;
    return !m_failed;
}

bool VoxelLists::collect(const NormalWalk& walk, int first, bool withSources, long long budget,
                         const VoxelCounts& counts)
{
    // The range the counted lists fit, so that no slice is dropped below.
    const long long blockBytes = static_cast<long long>(kBlockEntries * entryBytes(withSources));
    int end = first;
    long long bytes = 0;
    while (end < static_cast<int>(counts.perSlice.size())) {
        const long long blocks = (counts.perSlice[static_cast<std::size_t>(end)] + kBlockEntries - 1) / kBlockEntries;
        if (end > first && bytes + blocks * blockBytes > budget) break;
        bytes += blocks * blockBytes;
        ++end;
    }
    start(first, end, withSources, std::max(budget, bytes));
    sweep(walk, &counts, [&](int r, auto&& keep) { walk.forEachInRow(r, keep); });
    return !m_failed;
}

} // namespace fault
