#include "attribute/reflectorslopes.h"

#include <algorithm>
#include <cmath>

#include <geom/symmetriceigen.h>


namespace fault::attribute {
namespace {

constexpr int kCell = CellGrid::kCell;

// The derivative at index i along an axis of n samples: the five-point difference
// (-1, 8, 0, -8, 1) / 12 where two samples on either side exist, whose response stays
// within 3% of the true derivative up to 0.16 cycles per sample (the central difference
// already falls 10% short at 0.125, and by different shares along the three axes where
// the reflectors dip, which biases their slopes by about 0.07 samples per trace at 35
// degrees); the central difference one sample from an end, the one-sided difference at
// an end.
inline float derivative(const float* line, std::ptrdiff_t stride, int i, int n)
{
    if (i >= 2 && i < n - 2)
        return (8.0F * (line[(i + 1) * stride] - line[(i - 1) * stride]) -
                (line[(i + 2) * stride] - line[(i - 2) * stride])) / 12.0F;
    const int lo = i > 0 ? i - 1 : 0;
    const int hi = i < n - 1 ? i + 1 : n - 1;
    return hi > lo ? (line[hi * stride] - line[lo * stride]) / static_cast<float>(hi - lo) : 0.0F;
}

} // namespace

bool ReflectorSlopes::begin(int nx, int ny, int nz, int first, int end)
{
    return m_cells.allocate(nx, ny, nz, first, end, kFields);
}

void ReflectorSlopes::accumulate(const ZN3DImage<float>& seismic, int seismicFirst, int from, int to)
{
    const int nx = seismic.nx(), ny = seismic.ny();
    const std::ptrdiff_t sy = nx, sz = static_cast<std::ptrdiff_t>(nx) * ny;
    const int ca = m_cells.field(kXZ).na();
    const int firstCell = m_cells.cellSlice(from);
    const int lastCell = m_cells.cellSlice(to - 1);
    // Cells are shared by two slices: one thread takes both.
#pragma omp parallel for schedule(dynamic, 1)
    for (int c = firstCell; c <= lastCell; ++c) {
        float* xz = m_cells.field(kXZ).slice(c);
        float* yz = m_cells.field(kYZ).slice(c);
        float* zz = m_cells.field(kZZ).slice(c);
        float* xx = m_cells.field(kXX).slice(c);
        float* yy = m_cells.field(kYY).slice(c);
        float* xy = m_cells.field(kXY).slice(c);
        const int cellFirst = std::max(from, m_cells.firstSliceOf(c));
        const int cellEnd = std::min(to, m_cells.firstSliceOf(c + 1));
        for (int z = cellFirst; z < cellEnd; ++z) {
            const int local = z - seismicFirst;   // the seismic holds the volume's neighbours
            const float* slice = seismic.data() + local * sz;
            for (int y = 0; y < ny; ++y) {
                const float* row = slice + y * sy;
                const std::size_t cell = static_cast<std::size_t>(y / kCell) * ca;
                for (int x = 0; x < nx; ++x) {
                    const float gx = derivative(row, 1, x, nx);
                    const float gy = derivative(slice + x, sy, y, ny);
                    const float gz = derivative(seismic.data() + y * sy + x, sz, local, seismic.nz());
                    const std::size_t k = cell + static_cast<std::size_t>(x / kCell);
                    xz[k] += gx * gz;
                    yz[k] += gy * gz;
                    zz[k] += gz * gz;
                    xx[k] += gx * gx;
                    yy[k] += gy * gy;
                    xy[k] += gx * gy;
                }
            }
        }
    }
}

void ReflectorSlopes::finish(double sigma, double maxSlope)
{
    if (isEmpty()) return;
    m_cells.smooth(sigma);
    const SlabArray<float>& zz = m_cells.field(kZZ);
    const std::size_t count = zz.sliceSize() * static_cast<std::size_t>(zz.nz());
    float largest = 0.0F;
    for (std::size_t i = 0; i < count; ++i) largest = std::max(largest, zz.data()[i]);
    const float floor = largest * 1e-6F;   // below it the window sees no layering
    const auto limit = static_cast<float>(maxSlope);
    float* t[kFields];
    for (int f = 0; f < kFields; ++f) t[f] = m_cells.field(f).data();
#pragma omp parallel for schedule(static)
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(count); ++i) {
        const double m[9] = {t[kXX][i], t[kXY][i], t[kXZ][i], t[kXY][i], t[kYY][i],
                             t[kYZ][i], t[kXZ][i], t[kYZ][i], t[kZZ][i]};
        const core::vec3 u = geom::symmetricEigenPairs(m)[0].vector;
        const bool layered = t[kZZ][i] > floor && std::isfinite(u.z) && std::fabs(u.z) > 1e-6;
        t[kXZ][i] = layered ? std::clamp(static_cast<float>(-u.x / u.z), -limit, limit) : 0.0F;
        t[kYZ][i] = layered ? std::clamp(static_cast<float>(-u.y / u.z), -limit, limit) : 0.0F;
    }
}

void ReflectorSlopes::slopesAt(int x, int y, int z, float& p, float& q) const
{
    p = m_cells.at(kXZ, x, y, z);
    q = m_cells.at(kYZ, x, y, z);
}

} // namespace fault::attribute
