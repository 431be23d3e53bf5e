#pragma once
#include <array>
#include <vector>

#include <QString>

#include <core/vec3.h>

namespace fault::exchange {

// A named triangulated surface: world vertices (axes: worldaxes.h) and triangles as
// three 0-based indices into them, in no particular winding. A plain value.
struct TriangleMesh {
    QString name;
    std::vector<core::vec3> vertices;
    std::vector<std::array<int, 3>> triangles;

    // Index of the first triangle with an index outside 0..vertices-1; -9999 when every
    // triangle is valid.
    int firstBadTriangle() const;
};

} // namespace fault::exchange
