#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <core/conventions.h>
#include <core/mat4.h>
#include <georef/blocspace.h>
#include <img/image.h>

#include "faultplanemapping.h"

// The voxels of the fault plane mapping (see faultplanemapping.h): which voxels of the
// data block each fault pixel samples along its normal, counted per slice, then listed
// slice by slice for a range of slices at a time.
namespace fault {

// The offsets along the normal, in voxels: position o of a window (0 .. 2W) is the offset
// (o - W) * step. The plain order visits 0, +step, -step, +2 step, -2 step...
struct NormalWindow {
    int half = 0;  // W, at most FaultPlaneMappingSettings::kMaxWindowSize
    int count() const { return 2 * half + 1; }
    double offset(int o) const { return (o - half) * FaultPlaneMappingSettings::kNormalStep; }
    // The o of the n-th offset in the plain order.
    int plainOrder(int n) const { return half + (n == 0 ? 0 : (n % 2 == 1 ? (n + 1) / 2 : -(n / 2))); }
};

// The voxels each fault pixel samples: for every pixel of `projected` that is not -9999,
// row by row, and every window position in the plain order, the voxel nearest to
// toBloc(c, r, offset) (indices rounded half away from zero) when it lies in the block.
// With `distinct`, a voxel met again for the same pixel (two offsets rounding to one
// voxel) is visited once: the plain rule gives it the same sample and the same pixel.
// Holds a reference to `projected`, which must outlive the walk; a window wider than the
// settings allow is narrowed to the widest.
class NormalWalk {
public:
    NormalWalk(const img::Image& projected, const core::mat4& toBloc, const NormalWindow& window,
               const georef::BlocSpace& space, bool distinct);

    int rows() const { return m_projected.height(); }
    int slices() const { return m_nz; }
    int windowCount() const { return m_window.count(); }

    // Calls visit(pixel, o, i, j, k) for the voxels of row r's pixels (pixel = c + width r),
    // in the order above.
    template <class Visit>
    void forEachInRow(int r, Visit&& visit) const;

private:
    static constexpr int kMaxCount = 2 * FaultPlaneMappingSettings::kMaxWindowSize + 1;
    static constexpr float kNoValue = static_cast<float>(core::kNoValueReal);

    template <class Visit>
    void projectiveRow(int r, Visit& visit) const;

    const img::Image& m_projected;
    core::mat4 m_toBloc;
    NormalWindow m_window;
    int m_nx = 0, m_ny = 0, m_nz = 0;
    bool m_distinct = false;
    bool m_affine = false;          // toBloc's last row is 0 0 0 1: positions found by additions
    core::vec3 m_column[4];          // toBloc's columns (x y z of each)
    int m_order[kMaxCount] = {};     // window position of each step of the plain order
    core::vec3 m_along[kMaxCount];   // each step's move from the plane
};

// The index nearest to `v`, rounded half away from zero, when it lies in 0..n-1; -1
// otherwise (NaN included).
inline int roundedIndex(double v, int n)
{
    if (!(v > -0.5) || !(v < n - 0.5)) return -1;  // outside once rounded (or NaN)
    const int i = v >= 0.0 ? static_cast<int>(v + 0.5) : 0;  // -0.5 < v < 0 rounds to 0
    return i < n ? i : -1;
}

template <class Visit>
void NormalWalk::forEachInRow(int r, Visit&& visit) const
{
    if (!m_affine) {
        projectiveRow(r, visit);
        return;
    }
    const float* row = m_projected.row(r);
    const int width = m_projected.width();
    const int count = m_window.count();
    // The voxel of each step so far for the pixel, -1 in i when outside the block. The
    // positions along the normal are monotonic in the offset in every coordinate (fixed
    // additions of a monotonic product), so a voxel met earlier for the pixel is also the
    // voxel of the step just nearer the plane, two steps back in the plain order.
    int seenI[kMaxCount], seenJ[kMaxCount], seenK[kMaxCount];
    const core::vec3 rowStart = m_column[3] + m_column[1] * r;
    for (int c = 0; c < width; ++c) {
        if (row[c] == kNoValue) continue;
        const core::vec3 onPlane = rowStart + m_column[0] * c;
        const int pixel = c + width * r;
        for (int n = 0; n < count; ++n) {
            const int i = roundedIndex(onPlane.x + m_along[n].x, m_nx);
            const int j = roundedIndex(onPlane.y + m_along[n].y, m_ny);
            const int k = roundedIndex(onPlane.z + m_along[n].z, m_nz);
            if (i < 0 || j < 0 || k < 0) {
                seenI[n] = -1;
                continue;
            }
            seenI[n] = i;
            seenJ[n] = j;
            seenK[n] = k;
            if (m_distinct && n > 0) {
                const int nearer = n > 2 ? n - 2 : 0;
                if (seenI[nearer] == i && seenJ[nearer] == j && seenK[nearer] == k) continue;
            }
            visit(pixel, m_order[n], i, j, k);
        }
    }
}

template <class Visit>
void NormalWalk::projectiveRow(int r, Visit& visit) const
{
    const float* row = m_projected.row(r);
    const int width = m_projected.width();
    const int count = m_window.count();
    int seenI[kMaxCount], seenJ[kMaxCount], seenK[kMaxCount];
    for (int c = 0; c < width; ++c) {
        if (row[c] == kNoValue) continue;
        int seen = 0;
        for (int n = 0; n < count; ++n) {
            const core::vec3 b = m_toBloc.transformPoint({double(c), double(r), m_window.offset(m_order[n])});
            const int i = roundedIndex(b.x, m_nx), j = roundedIndex(b.y, m_ny), k = roundedIndex(b.z, m_nz);
            if (i < 0 || j < 0 || k < 0) continue;
            if (m_distinct) {
                // No monotony to rely on: every voxel of the pixel so far.
                bool again = false;
                for (int s = 0; s < seen && !again; ++s) again = seenI[s] == i && seenJ[s] == j && seenK[s] == k;
                if (again) continue;
                seenI[seen] = i;
                seenJ[seen] = j;
                seenK[seen] = k;
                ++seen;
            }
            visit(c + width * r, m_order[n], i, j, k);
        }
    }
}

// Entries of each slice's list, and the slices each image row reaches.
struct VoxelCounts {
    std::vector<long long> perSlice;
    std::vector<int> rowFirst, rowLast;   // a row with no voxel has first > last
    long long total = 0;
};

// Counts the walk's voxels. Throws std::bad_alloc.
VoxelCounts countVoxels(const NormalWalk& walk);

// The voxels to read, one list per slice of a range of slices, each list's capacity its
// count rounded up to kListGranularity entries; for settings that need it, the pixel and
// window position each entry was collected for (pixel * window count + o).
class VoxelLists {
public:
    static constexpr int kListGranularity = 1000;

    // One voxel of a slice's list: its column and row in the slice.
    struct Voxel {
        int32_t x, y;
    };

    static long long roundedCapacity(long long count)
    {
        return (count + kListGranularity - 1) / kListGranularity * kListGranularity;
    }
    static std::size_t entryBytes(bool withSources) { return sizeof(Voxel) + (withSources ? sizeof(uint32_t) : 0); }

    // The end of the range of slices from `first` whose lists fit `budget` bytes (at
    // least one slice).
    static int rangeEnd(const VoxelCounts& counts, int first, bool withSources, long long budget);

    // Replaces the lists by those of slices first .. last - 1, the walk's voxels in its
    // order. False when memory ran out (the lists then empty).
    bool collect(const NormalWalk& walk, const VoxelCounts& counts, int first, int last, bool withSources);

    int first() const { return m_first; }
    int end() const { return m_first + static_cast<int>(m_sizes.size()); }
    // Slice k's list, k in first() .. end() - 1; sources null unless collected with them.
    int size(int k) const { return m_sizes[static_cast<std::size_t>(k - m_first)]; }
    const Voxel* voxels(int k) const { return m_voxels.get() + m_starts[static_cast<std::size_t>(k - m_first)]; }
    const uint32_t* sources(int k) const
    {
        return m_sources ? m_sources.get() + m_starts[static_cast<std::size_t>(k - m_first)] : nullptr;
    }
    // Capacity held, bytes.
    long long bytes() const { return m_bytes; }

private:
    void clear();

    int m_first = 0;
    std::vector<std::size_t> m_starts;   // each list's first entry in the buffers
    std::vector<int> m_sizes;
    std::unique_ptr<Voxel[]> m_voxels;
    std::unique_ptr<uint32_t[]> m_sources;
    long long m_bytes = 0;
};

} // namespace fault
