#include "segmentation/takeablemask.h"

#include <algorithm>
#include <new>

namespace fault::segmentation::detail {

TakeableMask::TakeableMask(const VolumeView& volume, double threshold)
    : m_ny(volume.ny), m_wordCount(0),
      m_wordsPerRow((static_cast<std::size_t>(volume.nx) + 2 + kWordMask) / kWordBits),
      m_rowBytes(static_cast<std::ptrdiff_t>(m_wordsPerRow * sizeof(uint64_t))),
      m_sliceBytes(m_rowBytes * (volume.ny + 2))
{
    int k = 0;
    for (int dz = -1; dz <= 1; ++dz)
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx, ++k)
                m_neighbours[k] = {dx + dy * rowStride() + dz * sliceStride(), dx, dy, dz};
    const std::size_t rows = static_cast<std::size_t>(volume.ny + 2) * (volume.nz + 2);
    // One spare word so that a read of three bits at the very end stays inside.
    const std::size_t words = rows * m_wordsPerRow + 1;
    m_words.reset(new (std::nothrow) uint64_t[words]());
    if (!m_words) return;
    m_wordCount = words;
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

TakeableMask::TakeableMask(const TakeableMask& other)
    : m_ny(other.m_ny), m_wordCount(other.m_wordCount), m_wordsPerRow(other.m_wordsPerRow),
      m_rowBytes(other.m_rowBytes), m_sliceBytes(other.m_sliceBytes)
{
    std::copy(other.m_neighbours, other.m_neighbours + kNeighbourCount, m_neighbours);
    if (!other.m_words) return;
    m_words.reset(new (std::nothrow) uint64_t[m_wordCount]);
    if (m_words) std::copy(other.m_words.get(), other.m_words.get() + m_wordCount, m_words.get());
}

} // namespace fault::segmentation::detail
