#include "trianglemesh.h"

#include <core/conventions.h>

namespace fault::exchange {

int TriangleMesh::firstBadTriangle() const
{
    const int count = static_cast<int>(vertices.size());
    for (size_t i = 0; i < triangles.size(); ++i)
        for (int index : triangles[i])
            if (index < 0 || index >= count) return static_cast<int>(i);
    return core::kNoValue;
}

} // namespace fault::exchange
