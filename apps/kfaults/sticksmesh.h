#pragma once
#include <vector>

#include <core/vec3.h>
#include <exchange/trianglemesh.h>

namespace kfaults {

// Local fallback surface of a fault from its sticks, used until the 3D fault patch's
// surface methods ("Convex Envelop", "Minimum Envelop") are available to the tool: each
// pair of consecutive sticks is joined by a strip of triangles, advancing along the
// two sticks by the shorter diagonal each time (the classic ladder triangulation).
// Sticks with fewer than 2 points are skipped. Vertices are the sticks' points in order.
fault::exchange::TriangleMesh meshFromSticks(const QString& name,
                                             const std::vector<std::vector<core::vec3>>& sticks);

// Total area of the mesh's valid triangles, in squared world units.
double meshArea(const fault::exchange::TriangleMesh& mesh);

} // namespace kfaults
