#include "attribute/nodatamask.h"

#include <algorithm>
#include <new>

#include "attribute/faultscanner.h"

namespace fault::attribute {

bool NoDataMask::allocate(int nx, int ny, int first, int end)
{
    m_nx = nx;
    m_ny = ny;
    m_first = first;
    m_end = std::max(first, end);
    const std::size_t voxels = static_cast<std::size_t>(nx) * ny * static_cast<std::size_t>(m_end - first);
    m_bits.reset(new (std::nothrow) std::uint64_t[(voxels + 63) / 64]());
    return m_bits != nullptr;
}

void NoDataMask::mark(const ZN3DImage<float>& seismic, int seismicFirst, int from, int to, int volumeEnd)
{
    const int seismicEnd = seismicFirst + seismic.nz();
    // Whether slice z's sample at (x, y) is known to be 0: outside the volume it is.
    auto zeroAt = [&](int x, int y, int z, bool& known) {
        if (z < 0 || z >= volumeEnd) return true;
        if (z < seismicFirst || z >= seismicEnd) {
            known = false;
            return false;
        }
        return seismic(x, y, z - seismicFirst) == 0.0F;
    };
    for (int z = std::max(from, m_first); z < std::min(to, m_end); ++z) {
        if (z < seismicFirst || z >= seismicEnd) continue;
        for (int y = 0; y < m_ny; ++y)
            for (int x = 0; x < m_nx; ++x) {
                if (seismic(x, y, z - seismicFirst) != 0.0F) continue;
                bool known = true;
                const bool empty = zeroAt(x, y, z - 1, known) && zeroAt(x, y, z + 1, known);
                if (!empty || !known) continue;
                const std::size_t i = indexOf(x, y, z);
                m_bits[i / 64] |= std::uint64_t(1) << (i % 64);
            }
    }
}

void NoDataMask::clearKeys(SlabArray<std::uint32_t>& keys, int keysFirst) const
{
    for (int k = 0; k < keys.nz(); ++k) {
        const int z = keysFirst + k;
        if (z < m_first || z >= m_end) continue;
        std::uint32_t* slice = keys.slice(k);
        for (int y = 0; y < m_ny; ++y)
            for (int x = 0; x < m_nx; ++x)
                if (isMarked(x, y, z)) slice[static_cast<std::size_t>(y) * m_nx + x] = kNoScanKey;
    }
}

} // namespace fault::attribute
