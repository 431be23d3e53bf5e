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

VoxelCounts countVoxels(const NormalWalk& walk)
{
    VoxelCounts counts;
    counts.perSlice.assign(static_cast<std::size_t>(walk.slices()), 0);
    counts.rowFirst.assign(static_cast<std::size_t>(walk.rows()), walk.slices());
    counts.rowLast.assign(static_cast<std::size_t>(walk.rows()), -1);
    long long* perSlice = counts.perSlice.data();
    for (int r = 0; r < walk.rows(); ++r) {
        int first = walk.slices(), last = -1;
        walk.forEachInRow(r, [&](int, int, int, int, int k) {
            ++perSlice[k];
            first = std::min(first, k);
            last = std::max(last, k);
        });
        counts.rowFirst[static_cast<std::size_t>(r)] = first;
        counts.rowLast[static_cast<std::size_t>(r)] = last;
    }
    for (long long n : counts.perSlice) counts.total += n;
    return counts;
}

int VoxelLists::rangeEnd(const VoxelCounts& counts, int first, bool withSources, long long budget)
{
    const long long bytesPerEntry = static_cast<long long>(entryBytes(withSources));
    int end = first;
    long long bytes = 0;
    while (end < static_cast<int>(counts.perSlice.size())) {
        const long long more = roundedCapacity(counts.perSlice[static_cast<std::size_t>(end)]) * bytesPerEntry;
        if (end > first && bytes + more > budget) break;
        bytes += more;
        ++end;
    }
    return end;
}

void VoxelLists::clear()
{
    m_voxels.reset();
    m_sources.reset();
    m_starts.clear();
    m_sizes.clear();
    m_bytes = 0;
}

bool VoxelLists::collect(const NormalWalk& walk, const VoxelCounts& counts, int first, int last, bool withSources)
{
    clear();
    m_first = first;
    const std::size_t n = static_cast<std::size_t>(last - first);
    m_starts.resize(n + 1);
    m_sizes.assign(n, 0);
    std::size_t capacity = 0;
    for (std::size_t s = 0; s < n; ++s) {
        const long long count = counts.perSlice[static_cast<std::size_t>(first) + s];
        if (count > std::numeric_limits<int>::max()) return false;
        m_starts[s] = capacity;
        capacity += static_cast<std::size_t>(roundedCapacity(count));
    }
    m_starts[n] = capacity;
    // Left uninitialised: every entry up to a list's size is written below.
    m_voxels.reset(new (std::nothrow) Voxel[capacity]);
    if (withSources) m_sources.reset(new (std::nothrow) uint32_t[capacity]);
    if ((capacity > 0 && !m_voxels) || (withSources && capacity > 0 && !m_sources)) {
        clear();
        return false;
    }
    m_bytes = static_cast<long long>(capacity * entryBytes(withSources));

    Voxel* voxels = m_voxels.get();
    uint32_t* sources = m_sources.get();
    int* sizes = m_sizes.data();
    const std::size_t* starts = m_starts.data();
    const uint32_t windowCount = static_cast<uint32_t>(walk.windowCount());
    for (int r = 0; r < walk.rows(); ++r) {
        if (counts.rowFirst[static_cast<std::size_t>(r)] >= last || counts.rowLast[static_cast<std::size_t>(r)] < first)
            continue;  // none of the row's voxels falls in the range
        walk.forEachInRow(r, [&](int pixel, int o, int i, int j, int k) {
            if (k < first || k >= last) return;
            const std::size_t s = static_cast<std::size_t>(k - first);
            const std::size_t at = starts[s] + static_cast<std::size_t>(sizes[s]++);
            voxels[at] = Voxel{i, j};
            if (sources) sources[at] = static_cast<uint32_t>(pixel) * windowCount + static_cast<uint32_t>(o);
        });
    }
    return true;
}

} // namespace fault
