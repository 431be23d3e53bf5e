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
// data block each fault pixel samples along its normal, listed slice by slice for one
// range of slices at a time, and counted per slice by the first sweep.
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

// Entries of each slice's list, and the slices each image row reaches, as found by the
// first sweep over the fault.
struct VoxelCounts {
    std::vector<long long> perSlice;
    std::vector<int> rowFirst, rowLast;   // a row with no voxel has first > last
    long long total = 0;
};

// The voxels to read, one list per slice of a range of slices, each list made of blocks of
// kBlockEntries entries (so sized in multiples of it); for settings that need it, the
// pixel and window position each entry was collected for (pixel * window count + o).
class VoxelLists {
public:
    static constexpr int kBlockEntries = 1000;

    // One voxel of a slice's list: its column and row in the slice.
    struct Voxel {
        int32_t x, y;
    };

    static std::size_t entryBytes(bool withSources) { return sizeof(Voxel) + (withSources ? sizeof(uint32_t) : 0); }

    // The first sweep: replaces the lists by those of the slices from `first` that fit
    // `budget` bytes (at least slice `first`, whole), in the walk's order, and counts
    // every slice's entries and every row's slices into `counts`. The slices are taken
    // as the walk meets them; when a new block would pass the budget, the last slices
    // held are dropped until it fits (or only slice `first` is left). False when memory
    // ran out. Throws std::bad_alloc.
    bool collectCounting(const NormalWalk& walk, int first, bool withSources, long long budget, VoxelCounts& counts);
    // The next sweeps: replaces the lists by those of the slices from `first` whose
    // counted lists fit `budget` (at least one slice), walking only the rows that reach
    // them. False when memory ran out. Throws std::bad_alloc.
    bool collect(const NormalWalk& walk, int first, bool withSources, long long budget, const VoxelCounts& counts);

    int first() const { return m_first; }
    int end() const { return m_end; }
    // Slice k's list, k in first() .. end() - 1, block by block: entries of block b, its
    // voxels and its sources (null unless collected with them).
    int blocks(int k) const { return static_cast<int>(list(k).blocks.size()); }
    int blockSize(int k, int b) const
    {
        const List& l = list(k);
        return b + 1 < static_cast<int>(l.blocks.size()) ? kBlockEntries : l.size - b * kBlockEntries;
    }
    const Voxel* voxels(int k, int b) const { return list(k).blocks[static_cast<std::size_t>(b)].voxels.get(); }
    const uint32_t* sources(int k, int b) const { return list(k).blocks[static_cast<std::size_t>(b)].sources.get(); }
    // Frees slice k's list (once read).
    void release(int k);
    // The most bytes held at once by the last sweep.
    long long peakBytes() const { return m_peakBytes; }

private:
    struct Block {
        std::unique_ptr<Voxel[]> voxels;
        std::unique_ptr<uint32_t[]> sources;
    };
    struct List {
        std::vector<Block> blocks;
        int size = 0;
        int room = 0;                    // entries left in the last block
        Voxel* voxel = nullptr;          // where the next entry goes
        uint32_t* source = nullptr;
    };

    const List& list(int k) const { return m_lists[static_cast<std::size_t>(k - m_first)]; }
    void start(int first, int end, bool withSources, long long budget);
    template <class Visit>
    void sweep(const NormalWalk& walk, const VoxelCounts* skip, Visit&& visit);
    // Appends one entry to slice k's list (first <= k < end), dropping slices as above;
    // false when the entry is not kept.
    bool add(int k, int i, int j, uint32_t source);
    bool grow(int k);
    void dropLast();

    int m_first = 0;
    int m_end = 0;
    std::vector<List> m_lists;
    bool m_withSources = false;
    long long m_budget = 0;
    long long m_bytes = 0;
    long long m_peakBytes = 0;
    bool m_failed = false;   // memory ran out
};

} // namespace fault
