#pragma once
#include <array>

#include <core/vec3.h>
#include <geom/plane.h>

#include "geom/symmetriceigen.h"

namespace geom {

// A least-squares plane and the principal axes it comes from.
struct PlaneFit {
    Plane plane;                   // through the centre of gravity; invalid when not fitted
    std::array<EigenPair, 3> axes; // of the points' covariance, decreasing spread; the
                                   // third is the plane's normal
};

// The plane through `count` points that minimises the sum of squared distances: it passes
// through their centre of gravity and its unit normal is the direction of least spread
// (sign as the solver gives it). Fewer than two points, or non-finite coordinates, give an
// invalid plane. Collinear or coincident points give a plane whose normal is one of the
// directions perpendicular to the line, chosen by the solver.
PlaneFit fitPlane(const core::vec3* points, int count);

} // namespace geom
