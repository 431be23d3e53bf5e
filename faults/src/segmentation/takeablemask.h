#pragma once
// One bit per voxel telling whether growth may take it: its likelihood is strictly above
// the threshold and its label is negative. The label scan keeps it in step with the
// label volume, so that growth tests the three x-neighbours of a row with one read
// instead of six. Internal to the segmentation.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "segmentation/patchgrowth.h"

namespace fault::segmentation::detail {

class TakeableMask {
public:
    // The mask of `volume` for `threshold`, from its current labels. Null (isNull()) when
    // memory runs out.
    TakeableMask(const VolumeView& volume, double threshold);

    bool isNull() const { return !m_words; }

    // Position of the bit of voxel (x - 1, y, z), for 0 <= x < nx, -1 <= y <= ny and
    // -1 <= z <= nz (voxels outside the volume are padding bits, always 0).
    std::size_t bitBefore(int x, int y, int z) const
    {
        return rowStart(y, z) + static_cast<std::size_t>(x);  // x - 1, plus the row's pad
    }
    // Bit distance between (x, y, z) and (x, y + 1, z), and (x, y, z + 1).
    std::ptrdiff_t rowStride() const
    {
        return static_cast<std::ptrdiff_t>(m_wordsPerRow * kWordBits);
    }
    std::ptrdiff_t sliceStride() const { return rowStride() * (m_ny + 2); }

    // Bits of voxels (x-1, y, z), (x, y, z), (x+1, y, z) as bits 0, 1, 2, where `bit` is
    // bitBefore(x, y, z).
    uint32_t threeFrom(std::size_t bit) const
    {
        const std::size_t word = bit >> kWordShift;
        const unsigned shift = static_cast<unsigned>(bit & kWordMask);
        uint64_t bits = m_words[word] >> shift;
        if (shift > kWordBits - kRowBits) bits |= m_words[word + 1] << (kWordBits - shift);
        return static_cast<uint32_t>(bits & kThreeBits);
    }
    // Clears the bit at position `bit` (bitBefore(x, y, z) + 1 is voxel (x, y, z)).
    void clearBit(std::size_t bit)
    {
        m_words[bit >> kWordShift] &= ~(uint64_t(1) << (bit & kWordMask));
    }
    void clear(int x, int y, int z) { clearBit(bitBefore(x, y, z) + 1); }
    void set(int x, int y, int z, bool takeable)
    {
        const std::size_t bit = rowStart(y, z) + static_cast<std::size_t>(x) + 1;
        const uint64_t flag = uint64_t(1) << (bit & kWordMask);
        uint64_t& word = m_words[bit >> kWordShift];
        word = takeable ? (word | flag) : (word & ~flag);
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
    std::unique_ptr<uint64_t[]> m_words;
};

} // namespace fault::segmentation::detail
