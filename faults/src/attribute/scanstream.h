#pragma once
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "attribute/faultscans.h"
#include "attribute/slabarray.h"

namespace fault::attribute {

// The keys of a slab shared by the streams of a scan: each keyed slice has its own lock,
// so that streams of different strikes fold their slices in concurrently.
class SharedKeys {
public:
    SharedKeys(SlabArray<std::uint32_t>& keys, int firstKeyed)
        : m_keys(keys), m_first(firstKeyed), m_locks(static_cast<std::size_t>(keys.nz()))
    {
    }
    int first() const { return m_first; }
    int end() const { return m_first + m_keys.nz(); }
    // Keeps, at each voxel of volume slice z, the smaller of its key and `slice`'s.
    void keepSmaller(int z, const std::uint32_t* slice);

private:
    SlabArray<std::uint32_t>& m_keys;
    int m_first;
    std::vector<std::mutex> m_locks;
};

// What the streams of a scan read: the semblance factors of the slab's slices from
// `firstSlice` on (none beyond them), the smallest window sum of the denominator that
// still holds data, and for each slice k of the factors, dataBefore[k]: how many of the
// slices before it hold a non-zero factor (nz + 1 counts).
struct ScanFactors {
    const SlabArray<float>& numerator;
    const SlabArray<float>& denominator;
    int firstSlice;
    float floor;
    const int* dataBefore;

    // Whether no slice of [from, to] (volume slices) holds data: slices outside the
    // factors hold none.
    bool emptyBetween(int from, int to) const
    {
        const int nz = numerator.nz();
        const int lo = std::clamp(from - firstSlice, 0, nz);
        const int hi = std::clamp(to + 1 - firstSlice, 0, nz);
        return lo >= hi || dataBefore[hi] == dataBefore[lo];
    }
};

// One thread's scan of strike groups, one group at a time: the group's windows move
// down the slab a block of kStepsPerBlock slices at a time, keying each slice into a
// private block of keys that is then folded into the shared keys. The slices a block's
// windows take in and those they let go of are smoothed along strike into two small
// rings, so that a stream holds a few slices however long its windows (a slice is
// smoothed twice, once entering and once leaving), and the running sums are kept on
// the windows' lines, which only move their base along each row.
class ScanStream {
public:
    static constexpr int kStepsPerBlock = 4;

    // Slices of na x nb floats one stream holds at most for the groups of `plan` on
    // slabs whose lateral axes are both at least `shortestSide` samples long.
    static double workingSlices(const ScanPlan& plan, int shortestSide);

    // Takes the memory the groups of `plan` need on a slab of nx x ny (either layout), so
    // that the calling thread allocates it and gets it back when the stream goes (the
    // threads running the streams would keep it in their own heaps). False when memory
    // runs out.
    bool reserve(const ScanPlan& plan, int nx, int ny);

    // Streams `group` down the slab into `keys`. False when memory runs out or `stop`
    // is seen set (between blocks).
    bool run(const StrikeGroup& group, const ScanFactors& factors, SharedKeys& keys,
             const std::atomic<bool>& stop);

private:
    struct Sizes {
        std::size_t rings, sums, keys;
    };
    static Sizes sizesOf(const StrikeGroup& group, int na, int nb);
    bool reserveSizes(const Sizes& sizes);

    // Grow-only float storage that keeps its pages from one group to the next.
    struct Buffer {
        std::unique_ptr<float[]> data;
        std::size_t size = 0;
        bool reserve(std::size_t count);
    };
    Buffer m_rings;
    Buffer m_sums;
    std::unique_ptr<std::uint32_t[]> m_blockKeys;
    std::size_t m_blockKeysSize = 0;
};

} // namespace fault::attribute
