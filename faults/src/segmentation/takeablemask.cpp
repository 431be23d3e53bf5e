#include "segmentation/takeablemask.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace fault::segmentation::detail {

namespace {

// Samples tested together before they are looked at one by one.
constexpr int kSkipRun = 16;
#if defined(__SSE2__) || defined(_M_X64)
constexpr int kSseLanes = 4;
#endif

// The smallest float not below `threshold`: a float sample is at or above the threshold
// exactly when it is at or above this one (NaN when no sample is).
float lowestFloatNotBelow(double threshold)
{
    if (!(threshold <= static_cast<double>(std::numeric_limits<float>::max())))
        return threshold > 0.0 ? std::numeric_limits<float>::infinity()
                               : std::numeric_limits<float>::quiet_NaN();  // NaN: none
    float f = static_cast<float>(threshold);
    if (static_cast<double>(f) < threshold)
        f = std::nextafter(f, std::numeric_limits<float>::infinity());
    return f;
}

// Whether one of kSkipRun samples is at or above `lowest`.
bool anyNotBelow(const float* samples, float lowest)
{
#if defined(__SSE2__) || defined(_M_X64)
    const __m128 bound = _mm_set1_ps(lowest);
    __m128 notBelow = _mm_setzero_ps();
    for (int k = 0; k < kSkipRun; k += kSseLanes)
        notBelow = _mm_or_ps(notBelow, _mm_cmpge_ps(_mm_loadu_ps(samples + k), bound));
    return _mm_movemask_ps(notBelow) != 0;
#else
    bool any = false;
    for (int k = 0; k < kSkipRun; ++k) any |= samples[k] >= lowest;
    return any;
#endif
}

// Calls visit(x, value) for every sample of row[0 .. nx) at or above `threshold`, in order.
// Runs of samples all below it are skipped with packed float comparisons.
template <class Visit>
void forEachNotBelow(const float* row, int nx, double threshold, Visit&& visit)
{
    const float lowest = lowestFloatNotBelow(threshold);
    for (int x0 = 0; x0 < nx; x0 += kSkipRun) {
        const int x1 = std::min(nx, x0 + kSkipRun);
        if (x1 - x0 == kSkipRun && !anyNotBelow(row + x0, lowest)) continue;
        for (int x = x0; x < x1; ++x) {
            const double value = row[x];
            if (value >= threshold) visit(x, value);
        }
    }
}

} // namespace

TakeableMask::TakeableMask(const VolumeView& volume, double threshold, std::vector<std::size_t>* atThreshold)
    : TakeableMask(volume.nx, volume.ny, volume.nz)
{
    if (!m_words) return;
    // Voxels at the threshold are rare: each slice keeps its own, joined in order after.
    std::vector<std::vector<std::size_t>> perSlice(atThreshold ? static_cast<std::size_t>(volume.nz) : 0);
    // Slices own whole rows of words, so threads never share a word.
#pragma omp parallel for schedule(static)
    for (int z = 0; z < volume.nz; ++z)
        for (int y = 0; y < volume.ny; ++y) {
            const std::size_t first = volume.index(0, y, z);
            forEachNotBelow(volume.likelihood + first, volume.nx, threshold,
                            [&](int x, double value) {
                                if (volume.labels[first + x] >= 0) return;
                                if (value > threshold) setBit(bitOf(x, y, z));
                                else if (atThreshold) perSlice[static_cast<std::size_t>(z)].push_back(first + x);
                            });
        }
    if (!atThreshold) return;
    atThreshold->clear();
    for (const std::vector<std::size_t>& slice : perSlice) atThreshold->insert(atThreshold->end(), slice.begin(), slice.end());
}

TakeableMask::TakeableMask(int nx, int ny, int nz)
    : m_ny(ny), m_wordCount(0),
      m_wordsPerRow(wordsPerRowFor(nx)),
      m_rowBytes(static_cast<std::ptrdiff_t>(m_wordsPerRow * sizeof(uint64_t))),
      m_sliceBytes(m_rowBytes * (ny + 2))
{
    int k = 0;
    for (int dz = -1; dz <= 1; ++dz)
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx, ++k)
                m_neighbours[k] = {dx + dy * rowStride() + dz * sliceStride(), dx, dy, dz};
    const std::size_t words = bytesFor(nx, ny, nz) / sizeof(uint64_t);
    m_words.reset(new (std::nothrow) uint64_t[words]());
    if (m_words) m_wordCount = words;
}

std::size_t TakeableMask::bytesFor(int nx, int ny, int nz)
{
    // Padded rows and slices, and a spare word that keeps a read of three bits at the very
    // end inside.
    const std::size_t words = static_cast<std::size_t>(ny + 2) *
                                  static_cast<std::size_t>(nz + 2) * wordsPerRowFor(nx) + 1;
    return words * sizeof(uint64_t);
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
