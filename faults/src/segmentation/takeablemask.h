#pragma once
// One bit per voxel telling whether growth may take it: its likelihood is strictly above
// the threshold and its label is negative. The label scan keeps it in step with the
// label volume, so that growth reads the 26 neighbours of a voxel as nine rows of three
// bits instead of testing 52 samples. Internal to the segmentation.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "segmentation/patchgrowth.h"

namespace fault::segmentation::detail {

class TakeableMask {
public:
    // The 3 x 3 x 3 block around a voxel, the voxel included.
    static constexpr int kNeighbourCount = 27;
    static constexpr unsigned kWordBits = 64;

    // The mask of `volume` for `threshold`, from its current labels. Null (isNull()) when
    // memory runs out. When `atThreshold` is given, it receives in increasing order the
    // indices of the voxels whose likelihood equals the threshold and whose label is
    // negative: seeds that growth never takes.
    TakeableMask(const VolumeView& volume, double threshold, std::vector<std::size_t>* atThreshold = nullptr);
    // A copy of `other`; null when memory runs out.
    TakeableMask(const TakeableMask& other);
    TakeableMask(TakeableMask&& other) = default;
    TakeableMask& operator=(const TakeableMask&) = delete;

    bool isNull() const { return !m_words; }
    // Bytes held by the mask of a volume of nx x ny x nz voxels.
    static std::size_t bytesFor(int nx, int ny, int nz);
    // Words of a row of a volume nx wide: a pad bit on each side.
    static std::size_t wordsPerRowFor(int nx)
    {
        return (static_cast<std::size_t>(nx) + 2 + kWordBits - 1) / kWordBits;
    }

    // Position of the bit of voxel (x, y, z), for -1 <= x <= nx, -1 <= y <= ny and
    // -1 <= z <= nz (voxels outside the volume are padding bits, always 0).
    std::size_t bitOf(int x, int y, int z) const
    {
        return rowStart(y, z) + static_cast<std::size_t>(x + 1);
    }
    // The words of row (y, z), 0 <= y < ny, 0 <= z < nz: bit b of word w is voxel
    // x = 64 w + b - 1 of the row; bits outside 0 <= x < nx are always 0.
    const uint64_t* row(int y, int z) const
    {
        return m_words.get() + rowStart(y, z) / kWordBits;
    }
    std::size_t wordsPerRow() const { return m_wordsPerRow; }

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
        // Rows start on whole words, so the offset from a row to another is whole bytes.
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
        auto three = [&](std::ptrdiff_t rowBytes) {
            return threeFromWords(first + rowBytes * static_cast<std::ptrdiff_t>(kByteBits));
        };
        const std::ptrdiff_t row = m_rowBytes;
        const std::ptrdiff_t slice = m_sliceBytes;
        return three(-slice - row) | three(-slice) << 3 | three(-slice + row) << 6 |
               three(-row) << 9 | three(0) << 12 | three(row) << 15 |
               three(slice - row) << 18 | three(slice) << 21 | three(slice + row) << 24;
#else
        // On a little-endian machine bit b of the mask is bit b % 8 of byte b / 8, so one
        // unaligned read of eight bytes holds the three bits, at the same shift in every
        // row. The spare word at the end keeps every read inside.
        const unsigned char* start =
            reinterpret_cast<const unsigned char*>(m_words.get()) + first / kByteBits;
        const unsigned shift = static_cast<unsigned>(first % kByteBits);
        // Each row's three bits are masked where they lie, moved to their place above the
        // previous row's and shifted down once at the end.
        const uint64_t three = kThreeBits << shift;
        auto row = [start, three](std::ptrdiff_t rowBytes) {
            uint64_t bits;
            std::memcpy(&bits, start + rowBytes, sizeof bits);
            return bits & three;
        };
        const std::ptrdiff_t r = m_rowBytes;
        const std::ptrdiff_t sl = m_sliceBytes;
        const uint64_t all = row(-sl - r) | row(-sl) << 3 | row(-sl + r) << 6 | row(-r) << 9 |
                             row(0) << 12 | row(r) << 15 | row(sl - r) << 18 | row(sl) << 21 |
                             row(sl + r) << 24;
        return static_cast<uint32_t>(all >> shift);
#endif
    }
    // Neighbour k of around(): its steps along x, y and z from the voxel, and the
    // distance between their bits.
    struct Neighbour {
        std::ptrdiff_t bitOffset;
        int dx, dy, dz;
    };
    const Neighbour& neighbour(int k) const { return m_neighbours[k]; }

    // Marks the voxel at position `bit` (bitOf()) as taken, or as takeable again.
    void clearBit(std::size_t bit)
    {
        m_words[bit >> kWordShift] &= ~(uint64_t(1) << (bit & kWordMask));
    }
    void setBit(std::size_t bit)
    {
        m_words[bit >> kWordShift] |= uint64_t(1) << (bit & kWordMask);
    }

private:
    // An empty mask of nx x ny x nz voxels; null when memory runs out.
    TakeableMask(int nx, int ny, int nz);

    static constexpr unsigned kWordShift = 6;
    static constexpr std::size_t kWordMask = kWordBits - 1;
    static constexpr uint64_t kThreeBits = 7;
    static constexpr std::size_t kByteBits = 8;

    // Bits `bit`, `bit` + 1 and `bit` + 2 as bits 0, 1, 2, read word by word. For shift 0
    // the second word contributes nothing.
    uint32_t threeFromWords(std::size_t bit) const
    {
        const std::size_t word = bit >> kWordShift;
        const unsigned shift = static_cast<unsigned>(bit & kWordMask);
        const uint64_t bits =
            (m_words[word] >> shift) | ((m_words[word + 1] << 1) << (kWordMask - shift));
        return static_cast<uint32_t>(bits & kThreeBits);
    }

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
    std::size_t m_wordCount;  // with the spare word
    std::size_t m_wordsPerRow;
    std::ptrdiff_t m_rowBytes;    // rowStride() / kByteBits
    std::ptrdiff_t m_sliceBytes;  // sliceStride() / kByteBits
    Neighbour m_neighbours[kNeighbourCount];
    std::unique_ptr<uint64_t[]> m_words;
};


} // namespace fault::segmentation::detail
