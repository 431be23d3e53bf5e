#pragma once
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include <core/triplet.h>
#include <georef/blocspace.h>

#include "znsamplestorage.h"

// A 3D image of samples of type T (float likelihood, int labels) laid out on a block
// space. Samples are contiguous, x fastest, then y, then z: the sample (x, y, z) is at
// index x + nx * (y + ny * z). The image's sizes are always those of its block space.
//
// Allocation never throws: an image whose storage could not be obtained is null
// (isNull() true, all sizes 0). Copies are explicit (clone()); images move. Large images
// take their storage as whole pages, cleared by the system (znsamplestorage.h).
template <class T>
class ZN3DImage {
    static_assert(std::is_trivial_v<T>, "images hold plain samples");

public:
    // An empty image: no samples, an empty block space.
    ZN3DImage() = default;
    // Samples for every voxel of `space`, value-initialised (0 for arithmetic T). Null
    // when the storage cannot be allocated or the count does not fit in memory.
    explicit ZN3DImage(const georef::BlocSpace& space) { allocate(space, T()); }
    ZN3DImage(int nx, int ny, int nz) { allocate(georef::BlocSpace(nx, ny, nz), T()); }
    // Samples for every voxel of `space`, each set to `initial`.
    ZN3DImage(const georef::BlocSpace& space, T initial) { allocate(space, initial); }
    // Samples for every voxel of `space` whose values are unspecified until written: for
    // readers that write every sample before anything reads one.
    static ZN3DImage unfilled(const georef::BlocSpace& space)
    {
        ZN3DImage image;
        image.allocate(space, T(), false);
        return image;
    }

    ZN3DImage(ZN3DImage&&) noexcept = default;
    ZN3DImage& operator=(ZN3DImage&&) noexcept = default;
    ZN3DImage(const ZN3DImage&) = delete;
    ZN3DImage& operator=(const ZN3DImage&) = delete;

    // A deep copy, newly allocated for the caller; null when memory runs out.
    std::unique_ptr<ZN3DImage> clone() const
    {
        auto copy = std::unique_ptr<ZN3DImage>(new (std::nothrow) ZN3DImage(unfilled(m_space)));
        if (!copy) return nullptr;
        if (copy->isNull() && !isNull()) return nullptr;
        if (m_count > 0) std::memcpy(copy->data(), data(), m_count * sizeof(T));
        return copy;
    }

    // True when a non-empty block space was asked for but no storage could be had.
    bool isNull() const { return m_failed; }

    int nx() const { return m_space.nx(); }
    int ny() const { return m_space.ny(); }
    int nz() const { return m_space.nz(); }
    // nx * ny: samples of one z slice.
    std::size_t sliceSize() const { return static_cast<std::size_t>(nx()) * ny(); }
    // nx * ny * nz.
    std::size_t voxelCount() const { return m_count; }
    bool isEmpty() const { return m_count == 0; }

    const georef::BlocSpace& blocSpace() const { return m_space; }
    // Replaces the geometry; refused (false, image unchanged) when `space` has other sizes.
    bool setBlocSpace(const georef::BlocSpace& space)
    {
        if (space.nx() != nx() || space.ny() != ny() || space.nz() != nz()) return false;
        m_space = space;
        return true;
    }

    bool contains(int x, int y, int z) const
    {
        return x >= 0 && y >= 0 && z >= 0 && x < nx() && y < ny() && z < nz();
    }
    bool contains(const core::Triplet& t) const { return contains(t.x, t.y, t.z); }

    // Linear index of (x, y, z); the position must lie inside the image.
    std::size_t index(int x, int y, int z) const
    {
        return static_cast<std::size_t>(x) +
               static_cast<std::size_t>(nx()) * (static_cast<std::size_t>(y) +
                                                 static_cast<std::size_t>(ny()) * z);
    }
    std::size_t index(const core::Triplet& t) const { return index(t.x, t.y, t.z); }

    // Unchecked access; the position must lie inside the image.
    T& operator()(int x, int y, int z) { return m_data.get()[index(x, y, z)]; }
    const T& operator()(int x, int y, int z) const { return m_data.get()[index(x, y, z)]; }

    // Checked read: `fallback` for a position outside the image.
    T value(int x, int y, int z, T fallback) const
    {
        return contains(x, y, z) ? m_data.get()[index(x, y, z)] : fallback;
    }
    // Checked write: false (nothing written) for a position outside the image.
    bool setValue(int x, int y, int z, T v)
    {
        if (!contains(x, y, z)) return false;
        m_data.get()[index(x, y, z)] = v;
        return true;
    }

    T* data() { return m_data.get(); }
    const T* data() const { return m_data.get(); }
    // First sample of slice z, or null for z outside 0..nz-1.
    T* slice(int z) { return z >= 0 && z < nz() ? m_data.get() + sliceSize() * z : nullptr; }
    const T* slice(int z) const
    {
        return z >= 0 && z < nz() ? m_data.get() + sliceSize() * z : nullptr;
    }

    void fill(T v)
    {
        T* d = m_data.get();
        // One block by hand, then copies of it: large images fill at the speed of memory.
        constexpr std::size_t kBlock = 1024;
        const std::size_t head = m_count < kBlock ? m_count : kBlock;
        for (std::size_t i = 0; i < head; ++i) d[i] = v;
        for (std::size_t i = head; i < m_count; i += head)
            std::memcpy(d + i, d, (m_count - i < head ? m_count - i : head) * sizeof(T));
    }

private:
    void allocate(const georef::BlocSpace& space, T initial, bool fillIt = true)
    {
        const long long count = space.voxelCount();
        const bool fits = count > 0 &&
                          static_cast<unsigned long long>(count) <= kMaxBytes / sizeof(T);
        const std::size_t bytes = fits ? static_cast<std::size_t>(count) * sizeof(T) : 0;
        bool zeroed = false;
        T* storage = fits ? static_cast<T*>(znsamplestorage::allocate(bytes, zeroed)) : nullptr;
        if (storage == nullptr) {
            m_failed = count > 0;
            return;
        }
        m_data = Storage(storage, Release{bytes});
        m_space = space;
        m_count = static_cast<std::size_t>(count);
        if (fillIt && !(zeroed && isZeroBits(initial))) fill(initial);
    }

    static bool isZeroBits(T v)
    {
        const T zero{};
        return std::memcmp(&v, &zero, sizeof(T)) == 0;
    }

    // Gives the storage back as it was had.
    struct Release {
        std::size_t bytes = 0;
        void operator()(T* p) const { znsamplestorage::release(p, bytes); }
    };
    using Storage = std::unique_ptr<T, Release>;

    static constexpr unsigned long long kMaxBytes = static_cast<std::size_t>(-1) / 2;

    georef::BlocSpace m_space;      // geometry; its sizes are the image's
    Storage m_data;                 // nx * ny * nz samples, x fastest
    std::size_t m_count = 0;        // number of samples held
    bool m_failed = false;          // storage for a non-empty space could not be had
};
