#include "faultmesh.h"

#include <algorithm>

namespace kfaults {

void MeshBounds::include(const core::vec3& p)
{
    if (empty) {
        low = high = p;
        empty = false;
        return;
    }
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
}

bool isValidTriangle(const std::array<int, 3>& triangle, int vertexCount)
{
    for (int index : triangle)
        if (index < 0 || index >= vertexCount) return false;
    return true;
}

MeshBounds boundsOf(const std::vector<FaultMesh>& faults)
{
    MeshBounds bounds;
    for (const FaultMesh& fault : faults) {
        const auto& vertices = fault.surface.vertices;
        const int count = static_cast<int>(vertices.size());
        for (const auto& triangle : fault.surface.triangles)
            if (isValidTriangle(triangle, count))
                for (int index : triangle) bounds.include(vertices[index]);
    }
    return bounds;
}

} // namespace kfaults
