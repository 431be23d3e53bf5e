#pragma once
#include <vector>

#include <core/vec2.h>

#include "surface/planartriangulation.h"

// The gridded surface of a fault: a height field over the fault's plane sampled on a
// regular grid, smoothed, and cut to the sticks' convex envelope.
namespace fault::surface {

struct GridSettings {
    static constexpr int kDefaultMaxNodes = 4000000;

    double stepA = 100.0;   // grid step along a (plane units), > 0
    double stepB = 25.0;    // grid step along b, > 0
    int filterLength = 7;   // smoothing length in nodes; below 1 counts as 1, even + 1
    // Node budget: a grid that would need more nodes gets coarser steps, in proportion.
    int maxNodes = kDefaultMaxNodes;
};

// A regular grid of the plane: (na + 1) x (nb + 1) nodes, node (i, j) at
// (a0 + i stepA, b0 + j stepB).
struct SampleGrid {
    double a0 = 0.0, b0 = 0.0;
    double stepA = 1.0, stepB = 1.0;
    int na = 0, nb = 0;  // cells along a and b

    int width() const { return na + 1; }
    int nodeCount() const { return (na + 1) * (nb + 1); }
    int node(int i, int j) const { return i + width() * j; }
    core::vec2 position(int i, int j) const { return {a0 + i * stepA, b0 + j * stepB}; }
};

// Heights of `mesh` at the nodes of `grid` that lie in one of its triangles (linear
// interpolation in the triangle): written into `heights` and marked in `known` (both of
// grid.nodeCount() entries); nodes already known are left as they are.
void sampleTriangles(const PlanarMesh& mesh, const SampleGrid& grid, std::vector<double>& heights,
                     std::vector<char>& known);

// The length of the smoothing filter for a smooth factor: odd, at least 1 (7 gives 7,
// 8 gives 9, 0 gives 1).
int oddFilterLength(int smoothFactor);

// Samples the heights of `interpolation` (a triangulation covering the convex hull
// `hull`, counter-clockwise corners) on a grid aligned with the hull's bounding box,
// smooths them with a separable triangular filter (along a, then along b), and
// triangulates the grid cut to the hull: whole cells give two triangles, cells crossed
// by the hull's outline give the fan of their part inside it, whose corners off the grid
// nodes take the interpolation's unsmoothed heights. Grid nodes outside the hull take the
// height of the nearest hull point. `surface` is replaced. False,
// with it emptied, for a hull of fewer than three corners or unusable steps.
bool griddedSurface(const PlanarMesh& interpolation, const std::vector<core::vec2>& hull,
                    const GridSettings& settings, PlanarMesh& surface);

} // namespace fault::surface
