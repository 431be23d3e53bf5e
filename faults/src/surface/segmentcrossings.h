#pragma once
#include "surface/planartriangulation.h"

namespace fault::surface {

// Splits the segments and loop edges of `input` where the mesh refinement could not
// work with them: where two of them cross (a new point, whose height is the mean of the
// heights interpolated along the two edges), and where a point of the input lies within
// `tolerance` of an edge without being one of its ends (the edge then runs through the
// point). Afterwards two edges meet at shared ends only and no point lies on an edge's
// inside. Segments and loops are rewritten through the split points (loops keep their
// direction). Edges are swept by their extent along the first axis, so sticks that run
// along the second axis cost little.
void splitConstraints(PlanarInput& input, double tolerance);

// Cuts every segment and loop edge longer than `maxLength` into equal pieces no longer
// than it; the new points take heights interpolated along the edge. Nothing for a
// length that is not positive, nor for an edge that would need more than a million
// pieces.
void subdivideConstraints(PlanarInput& input, double maxLength);

} // namespace fault::surface
