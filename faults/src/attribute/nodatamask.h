#pragma once
#include <cstdint>
#include <memory>

#include <zn3dimage.h>

#include "attribute/slabarray.h"

namespace fault::attribute {

// The voxels of a range of slices where the seismic holds no data: the sample and its
// neighbours above and below are exactly 0, as outside a survey's outline padded with
// zero traces, below its record length, or along dead traces (an isolated zero, as at a
// zero crossing of quantised data, is data). The attribute reads nothing there: the
// smoothing that makes its semblance factors carries the data's edge into such voxels,
// where the semblance of what it carried would read as faults. One bit per voxel.
class NoDataMask {
public:
    // An empty mask of slices [first, end) of nx x ny voxels; false when memory runs out.
    bool allocate(int nx, int ny, int first, int end);

    // Marks the voxels of slices [from, to) of the mask's range from `seismic`, whose
    // first slice is volume slice `seismicFirst`; volume slices from `volumeEnd` on (and
    // before 0) count as without data. A neighbour `seismic` does not hold inside the
    // volume leaves the voxel unmarked.
    void mark(const ZN3DImage<float>& seismic, int seismicFirst, int from, int to, int volumeEnd);

    // Whether voxel (x, y) of volume slice z is marked (z within the mask's range).
    bool isMarked(int x, int y, int z) const
    {
        const std::size_t i = indexOf(x, y, z);
        return (m_bits[i / 64] >> (i % 64)) & 1U;
    }

    // Sets the keys of the marked voxels (slice k of `keys` is volume slice keysFirst + k)
    // to kNoScanKey: no scan reached them.
    void clearKeys(SlabArray<std::uint32_t>& keys, int keysFirst) const;

private:
    std::size_t indexOf(int x, int y, int z) const
    {
        return static_cast<std::size_t>(x) +
               static_cast<std::size_t>(m_nx) * (static_cast<std::size_t>(y) +
                                                 static_cast<std::size_t>(m_ny) * static_cast<std::size_t>(z - m_first));
    }

    std::unique_ptr<std::uint64_t[]> m_bits;
    int m_nx = 0, m_ny = 0, m_first = 0, m_end = 0;
};

} // namespace fault::attribute
