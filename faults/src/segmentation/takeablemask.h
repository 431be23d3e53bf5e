#pragma once
// One bit per voxel telling whether growth may take it: its likelihood is strictly above
// the threshold and its label is negative. The label scan keeps it in step with the
// label volume, so that growth reads the 26 neighbours of a voxel as nine rows of three
// bits instead of testing 52 samples. Internal to the segmentation.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "segmentation/patchgrowth.h"

namespace fault::segmentation::detail {

class TakeableMask {
public:
    // The 3 x 3 x 3 block around a voxel, the voxel included.
    static constexpr int kNeighbourCount = 27;

    // The mask of `volume` for `threshold`, from its current labels. Null (isNull()) when
    // memory runs out.
    TakeableMask(const VolumeView& volume, double threshold);

    bool isNull() const { return !m_words; }

    // Position of the bit of voxel (x, y, z), for -1 <= x <= nx, -1 <= y <= ny and
    // -1 <= z <= nz (voxels outside the volume are padding bits, always 0).
    std::size_t bitOf(int x, int y, int z) const
    {
        return rowStart(y, z) + static_cast<std::size_t>(x + 1);
    }
    // Bit distance between (x, y, z) and (x, y + 1, z), and (x, y, z + 1).
    std::ptrdiff_t rowStride() const
    {
        return static_cast<std::ptrdiff_t>(m_wordsPerRow * kWordBits);
    }
    std::ptrdiff_t sliceStride() const { return rowStride() * (m_ny + 2); }

    // The bits of the 27 voxels (x + dx, y + dy, z + dz), dx, dy, dz in -1..1, of the voxel
    // at position `bit` = bitOf(x, y, z) (0 <= x < nx, 0 <= y < ny, 0 <= z < nz), as bit
    // 9 (dz + 1) + 3 (dy + 1) + (dx + 1): lowest first is the order growth visits them in.
    uint32_t around(std::size_t bit) const
    {
        const std::size_t first = bit - 1;  // voxel x - 1, in the same row
        const std::size_t word = first >> kWordShift;
        const unsigned shift = static_cast<unsigned>(first & kWordMask);
        // Every row starts on a word, so the nine rows share the shift. Two words cover
        // three bits at any shift; for shift 0 the second contributes nothing.
        const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(m_wordsPerRow);
        const std::ptrdiff_t slice = row * (m_ny + 2);
        uint32_t bits = 0;
        int k = 0;
        for (int dz = -1; dz <= 1; ++dz)
            for (int dy = -1; dy <= 1; ++dy, k += kRowBits) {
                const uint64_t* w = m_words.get() + word + dz * slice + dy * row;
                const uint64_t three = (w[0] >> shift) | ((w[1] << 1) << (kWordMask - shift));
                bits |= static_cast<uint32_t>(three & kThreeBits) << k;
            }
        return bits;
    }
    // Bit distance from a voxel to its neighbour k of around().
    std::ptrdiff_t neighbourOffset(int k) const { return m_neighbourOffsets[k]; }

    bool test(std::size_t bit) const
    {
        return (m_words[bit >> kWordShift] >> (bit & kWordMask)) & 1u;
    }
    void clearBit(std::size_t bit)
    {
        m_words[bit >> kWordShift] &= ~(uint64_t(1) << (bit & kWordMask));
    }
    void setBit(std::size_t bit) { m_words[bit >> kWordShift] |= uint64_t(1) << (bit & kWordMask); }
    void set(int x, int y, int z, bool takeable)
    {
        const std::size_t bit = bitOf(x, y, z);
        if (takeable)
            setBit(bit);
        else
            clearBit(bit);
    }

private:
    static constexpr unsigned kWordBits = 64;
    static constexpr unsigned kWordShift = 6;
    static constexpr std::size_t kWordMask = kWordBits - 1;
    static constexpr unsigned kRowBits = 3;
    static constexpr uint64_t kThreeBits = 7;

    // First bit of row (y, z). Rows and slices are padded by one empty row or slice on
    // each side, and every row by one empty bit on each side, so that no neighbour read
    // needs a bounds test.
    std::size_t rowStart(int y, int z) const
    {
        const std::size_t row =
            static_cast<std::size_t>(y + 1) +
            static_cast<std::size_t>(m_ny + 2) * static_cast<std::size_t>(z + 1);
        return row * m_wordsPerRow * kWordBits;
    }

    int m_ny;
    std::size_t m_wordsPerRow;
    std::ptrdiff_t m_neighbourOffsets[kNeighbourCount];
    std::unique_ptr<uint64_t[]> m_words;
};

} // namespace fault::segmentation::detail
