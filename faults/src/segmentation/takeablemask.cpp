#include "segmentation/takeablemask.h"

#include <new>

namespace fault::segmentation::detail {

TakeableMask::TakeableMask(const VolumeView& volume, double threshold)
    : m_ny(volume.ny),
      m_wordsPerRow((static_cast<std::size_t>(volume.nx) + 2 + kWordMask) / kWordBits)
{
    int k = 0;
    for (int dz = -1; dz <= 1; ++dz)
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx, ++k)
                m_neighbourOffsets[k] = dx + dy * rowStride() + dz * sliceStride();
    const std::size_t rows = static_cast<std::size_t>(volume.ny + 2) * (volume.nz + 2);
    // One spare word so that a read of three bits at the very end stays inside.
    const std::size_t words = rows * m_wordsPerRow + 1;
    m_words.reset(new (std::nothrow) uint64_t[words]());
    if (!m_words) return;
    const int nx = volume.nx;
    const int ny = volume.ny;
#pragma omp parallel for schedule(static)
    for (int z = 0; z < volume.nz; ++z)
        for (int y = 0; y < ny; ++y) {
            const std::size_t first = volume.index(0, y, z);
            for (int x = 0; x < nx; ++x) {
                const bool takeable =
                    static_cast<double>(volume.likelihood[first + x]) > threshold &&
                    volume.labels[first + x] < 0;
                if (takeable) set(x, y, z, true);
            }
        }
}

} // namespace fault::segmentation::detail
