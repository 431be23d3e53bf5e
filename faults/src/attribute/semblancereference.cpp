#include "attribute/semblancereference.h"

#include <algorithm>

namespace fault::attribute {
namespace {
constexpr int kCell = CellGrid::kCell;
} // namespace

bool SemblanceReference::compute(const SlabArray<float>& numerator, const SlabArray<float>& denominator,
                                 int first, int nz, double sigma)
{
    const int nx = numerator.na(), ny = numerator.nb();
    const int end = first + numerator.nz();
    if (!m_cells.allocate(nx, ny, nz, first, end, 2)) return false;
    SlabArray<float>& num = m_cells.field(0);
    SlabArray<float>& den = m_cells.field(1);
    const int ca = num.na();
#pragma omp parallel for schedule(dynamic, 1)
    for (int c = m_cells.cellSlice(first); c <= m_cells.cellSlice(end - 1); ++c) {
        float* cn = num.slice(c);
        float* cd = den.slice(c);
        for (int z = std::max(first, m_cells.firstSliceOf(c)); z < std::min(end, m_cells.firstSliceOf(c + 1)); ++z) {
            const float* sn = numerator.slice(z - first);
            const float* sd = denominator.slice(z - first);
            for (int y = 0; y < ny; ++y)
                for (int x = 0; x < nx; ++x) {
                    const std::size_t i = static_cast<std::size_t>(y) * nx + x;
                    const std::size_t k = static_cast<std::size_t>(y / kCell) * ca + static_cast<std::size_t>(x / kCell);
                    cn[k] += sn[i];
                    cd[k] += sd[i];
                }
        }
    }
    m_cells.smooth(sigma);
    const std::size_t count = num.sliceSize() * static_cast<std::size_t>(num.nz());
    float* n = num.data();
    const float* d = den.data();
    float largest = 0.0F;
    for (std::size_t i = 0; i < count; ++i) largest = std::max(largest, d[i]);
    const float floor = largest * 1e-9F;   // below it the window holds no amplitude
#pragma omp parallel for schedule(static)
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(count); ++i)
        n[i] = d[i] > floor ? std::clamp(n[i] / d[i], 0.0F, 1.0F) : 1.0F;
    return true;
}

void SemblanceReference::balance(SlabArray<float>& numerator, SlabArray<float>& denominator, int first) const
{
    const int nx = numerator.na(), ny = numerator.nb();
    const SlabArray<float>& energy = m_cells.field(1);
    float largest = 0.0F;
    for (std::size_t i = 0; i < energy.sliceSize() * static_cast<std::size_t>(energy.nz()); ++i)
        largest = std::max(largest, energy.data()[i]);
    const float floor = std::max(largest * 1e-9F, 1e-30F);   // no amplitude: left as it is
    constexpr float kSamplesPerCell = kCell * kCell * kCell;    // the cells hold sums
#pragma omp parallel for collapse(2) schedule(static)
    for (int k = 0; k < numerator.nz(); ++k)
        for (int y = 0; y < ny; ++y) {
            float* n = numerator.slice(k) + static_cast<std::size_t>(y) * nx;
            float* d = denominator.slice(k) + static_cast<std::size_t>(y) * nx;
            for (int x = 0; x < nx; ++x) {
                const float scale = kSamplesPerCell / std::max(m_cells.at(1, x, y, first + k), floor);
                const float noise = 1.0F - m_cells.at(0, x, y, first + k);
                n[x] *= scale;
                d[x] *= scale;
                d[x] = std::max(d[x] - noise, kLeastSignalShare * d[x]);
            }
        }
}

} // namespace fault::attribute
