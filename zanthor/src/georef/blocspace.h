#pragma once
#include <core/mat4.h>
#include <core/triplet.h>
#include <core/vec3.h>

namespace georef {

// The geometry of a survey grid (a block): its sizes along inline (x), crossline (y) and
// sample (z), and the 4x4 matrices between block indices and world coordinates (world y
// is vertical). The world-to-block matrix is always the inverse of the block-to-world
// matrix. Default: an empty 0 x 0 x 0 grid with identity matrices.
class BlocSpace {
public:
    BlocSpace() = default;
    BlocSpace(int nx, int ny, int nz);
    BlocSpace(int nx, int ny, int nz, const core::mat4& fromBlocToWorld);

    int nx() const { return m_nx; }
    int ny() const { return m_ny; }
    int nz() const { return m_nz; }
    // Sizes are clamped at 0.
    void setSize(int nx, int ny, int nz);
    // Number of voxels nx * ny * nz; LLONG_MAX when that does not fit 64 bits.
    long long voxelCount() const;
    bool isEmpty() const { return voxelCount() == 0; }

    const core::mat4& getFromBlocToWorldMatrix() const { return m_blocToWorld; }
    const core::mat4& getFromWorldToBlocMatrix() const { return m_worldToBloc; }
    // Sets the block-to-world matrix and its inverse. A singular matrix is refused
    // (false), the block space unchanged.
    bool setFromBlocToWorldMatrix(const core::mat4& matrix);

    core::vec3 blocToWorld(const core::vec3& p) const { return m_blocToWorld.transformPoint(p); }
    core::vec3 worldToBloc(const core::vec3& p) const { return m_worldToBloc.transformPoint(p); }

    bool contains(const core::Triplet& t) const
    {
        return t.x >= 0 && t.y >= 0 && t.z >= 0 && t.x < m_nx && t.y < m_ny && t.z < m_nz;
    }

    bool operator==(const BlocSpace& other) const;
    bool operator!=(const BlocSpace& other) const { return !(*this == other); }

private:
    int m_nx = 0;
    int m_ny = 0;
    int m_nz = 0;
    core::mat4 m_blocToWorld;
    core::mat4 m_worldToBloc;
};

} // namespace georef
