#include "georef/blocspace.h"

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
    return static_cast<long long>(m_nx) * m_ny * m_nz;
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
