#include "georef/blocspace.h"

#include <limits>

namespace georef {

BlocSpace::BlocSpace(int nx, int ny, int nz) { setSize(nx, ny, nz); }

BlocSpace::BlocSpace(int nx, int ny, int nz, const core::mat4& fromBlocToWorld)
{
    setSize(nx, ny, nz);
    setFromBlocToWorldMatrix(fromBlocToWorld);
}

void BlocSpace::setSize(int nx, int ny, int nz)
{
    m_nx = nx > 0 ? nx : 0;
    m_ny = ny > 0 ? ny : 0;
    m_nz = nz > 0 ? nz : 0;
}

long long BlocSpace::voxelCount() const
{
    // Sizes come from file headers: three of them near 2^31 overflow 64 bits.
    long long count = 0;
    if (__builtin_mul_overflow(static_cast<long long>(m_nx), m_ny, &count) ||
        __builtin_mul_overflow(count, m_nz, &count))
        return std::numeric_limits<long long>::max();
    return count;
}

bool BlocSpace::setFromBlocToWorldMatrix(const core::mat4& matrix)
{
    core::mat4 inverse;
    if (!matrix.inverse(inverse)) return false;
    m_blocToWorld = matrix;
    m_worldToBloc = inverse;
    return true;
}

bool BlocSpace::operator==(const BlocSpace& other) const
{
    return m_nx == other.m_nx && m_ny == other.m_ny && m_nz == other.m_nz &&
           m_blocToWorld == other.m_blocToWorld;
}

} // namespace georef
