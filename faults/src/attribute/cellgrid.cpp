#include "attribute/cellgrid.h"

#include <algorithm>

#include "attribute/recursivegaussian.h"

namespace fault::attribute {

bool CellGrid::allocate(int nx, int ny, int nz, int first, int end, int fields)
{
    release();
    first = std::max(0, first) & ~1;
    end = std::min(nz, end);
    if (nx <= 0 || ny <= 0 || end <= first || fields <= 0) return false;
    const int ca = (nx + kCell - 1) / kCell;
    const int cb = (ny + kCell - 1) / kCell;
    const int cz = (end - first + kCell - 1) / kCell;
    m_fields.resize(static_cast<std::size_t>(fields));
    for (SlabArray<float>& f : m_fields) {
        if (!f.allocate(ca, cb, cz)) {
            release();
            return false;
        }
        std::fill(f.data(), f.data() + f.sliceSize() * static_cast<std::size_t>(cz), 0.0F);
    }
    m_first = first;
    return true;
}

void CellGrid::release()
{
    m_fields.clear();
    m_first = 0;
}

void CellGrid::smooth(double sigma)
{
    const RecursiveGaussian window(sigma / kCell);
    for (SlabArray<float>& f : m_fields)
        for (int axis = 0; axis < 3; ++axis)
            window.applyAlongAxis(f.data(), f.na(), f.nb(), f.nz(), axis, LineEnds::Constant);
}

float CellGrid::at(int f, int x, int y, int z) const
{
    const SlabArray<float>& a = field(f);
    // Cell i is centred on sample 2i + 0.5 of its axis (counted from m_first along z).
    auto locate = [](float sample, int cells, int& i0, int& i1, float& t) {
        const float c = std::clamp((sample - 0.5F) / kCell, 0.0F, static_cast<float>(cells - 1));
        i0 = static_cast<int>(c);
        i1 = std::min(i0 + 1, cells - 1);
        t = c - static_cast<float>(i0);
    };
    int x0, x1, y0, y1, z0, z1;
    float tx, ty, tz;
    locate(static_cast<float>(x), a.na(), x0, x1, tx);
    locate(static_cast<float>(y), a.nb(), y0, y1, ty);
    locate(static_cast<float>(z - m_first), a.nz(), z0, z1, tz);
    auto v = [&](int i, int j, int k) { return a.slice(k)[static_cast<std::size_t>(j) * a.na() + i]; };
    const float c00 = v(x0, y0, z0) + tx * (v(x1, y0, z0) - v(x0, y0, z0));
    const float c10 = v(x0, y1, z0) + tx * (v(x1, y1, z0) - v(x0, y1, z0));
    const float c01 = v(x0, y0, z1) + tx * (v(x1, y0, z1) - v(x0, y0, z1));
    const float c11 = v(x0, y1, z1) + tx * (v(x1, y1, z1) - v(x0, y1, z1));
    const float c0 = c00 + ty * (c10 - c00);
    const float c1 = c01 + ty * (c11 - c01);
    return c0 + tz * (c1 - c0);
}

} // namespace fault::attribute
