#pragma once
#include <array>
#include <vector>

#include "surface/planartriangulation.h"
#include "surface/sticklayout.h"

// What a gridding method of the 3D fault patch meshes, shared by the meshing, the
// meshing polygon and the projection image of the picked points.
namespace fault::surface {

struct MeshingInput {
    StickLayout layout;  // the sticks (widened for method 1) on the regression plane
    PlanarInput planar;  // every stick segment kept; the method's domain
};

// Lays out `sticks` on the regression plane of their points. Method 1 ("Minimum
// Envelop") first widens them by `extrapolation` when it is not 0 (expandSticks) and
// limits the domain to the strips between neighbouring sticks; any other method meshes
// the convex hull. False when the points fit no plane.
bool prepareMeshing(const std::vector<Stick>& sticks, int method, double extrapolation,
                    MeshingInput& input);

// The closed outlines of a triangulation: its edges used by one triangle only, chained
// into loops of point indices (each point once per loop, the closing edge implied).
std::vector<std::vector<int>> boundaryLoops(const std::vector<std::array<int, 3>>& triangles);

} // namespace fault::surface
