#pragma once
#include "surface/planartriangulation.h"

namespace fault::surface {

// Splits the segments and loop edges of `input` where they cross, so that afterwards two
// of them meet at shared ends only: the mesh refinement cannot work with crossing
// constraints. Each crossing adds one point, whose height is the mean of the heights
// interpolated along the two edges; segments and loops are rewritten through the new
// points (loops keep their direction). Edges that only touch or overlap are left as they
// are. Edges are swept by their extent along the first axis, so sticks that run along
// the second axis cost little.
void splitCrossings(PlanarInput& input);

} // namespace fault::surface
