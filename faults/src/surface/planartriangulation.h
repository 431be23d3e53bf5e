#pragma once
#include <array>
#include <vector>

#include <core/vec2.h>

// Constrained Delaunay triangulation of points of a plane, each carrying a height, with
// optional refinement. The one place of the library that uses CGAL.
namespace fault::surface {

struct PlanarInput {
    // CGAL's shape bound of the refinement: no angle below 20.6 degrees away from the
    // input's own small angles.
    static constexpr double kAngleBound = 0.125;
    static constexpr int kDefaultMaxTriangles = 2000000;

    std::vector<core::vec2> positions;            // points of the plane
    std::vector<double> heights;                  // one per position
    std::vector<std::array<int, 2>> segments;     // edges the triangulation keeps
    // Closed loops of position indices whose edges the triangulation also keeps. The
    // domain is the union of their insides; no loop means the convex hull of the points.
    std::vector<std::vector<int>> domainLoops;
    // Refinement: no edge of the domain longer than this (plane units); 0 for none.
    double maxEdgeLength = 0.0;
    // Refinement budget: when the domain would need more triangles, the edge length
    // bound is raised to fit.
    int maxTriangles = kDefaultMaxTriangles;
};

struct PlanarMesh {
    std::vector<core::vec2> positions;
    std::vector<double> heights;
    std::vector<std::array<int, 3>> triangles;  // counter-clockwise in the plane
    bool convexHullDomain = false;  // the loops left an input point uncovered: hull used
};

// Triangulates the domain of `input` into `mesh` (replaced). Every input point and every
// segment or loop edge is kept (positions are first rounded to about 1e-12 of their
// extent; points then equal are merged, the first height kept; crossing segments meet at
// a new point). The domain is the union of the loops'
// insides (even-odd rule per loop); when that leaves some input point without a
// triangle, the convex hull of the points is used instead, so that every input point
// lies on the mesh. Points added by the refinement, or where segments cross, take the
// height interpolated linearly on the triangulation of the input points. Only points
// used by a triangle are returned. False, with `mesh` emptied, when the input is
// inconsistent (sizes, indices, non-finite values) or the points span no area.
bool triangulatePlanar(const PlanarInput& input, PlanarMesh& mesh);

} // namespace fault::surface
