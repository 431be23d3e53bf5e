#pragma once
#include <vector>

#include <3dobject/zn3dobjectrecords.h>
#include <core/array.h>
#include <core/mat4.h>
#include <core/vec3.h>
#include <geom/plane.h>
#include <img/image.h>

// Measures and cuts of a triangulated surface given as points and facettes. A facette
// with an index outside the points is skipped by every function.
namespace fault::surface {

// Sum of the facettes' areas, in the square of the points' unit.
double meshArea(const core::Array<core::vec3>& points, const core::Array<ZNFacette>& facettes);

// Writes `value` into every pixel of `image` whose cell meets a facette. The facettes
// are taken into the image's grid by `toGrid` (projective, row-major): the grid's x is
// the column and its y the row, its z is ignored, and pixel (c, r) covers the square
// [c - 0.5, c + 0.5] x [r - 0.5, r + 0.5].
void rasterizeFacettes(const core::Array<core::vec3>& points,
                       const core::Array<ZNFacette>& facettes, const core::mat4& toGrid,
                       float value, img::Image& image);

// The polylines along which the surface crosses `plane`: one per connected piece, its
// points in order along the piece (a closed piece repeats its first point at its end).
// A point exactly on the plane counts as lying on its positive side. An invalid plane
// gives none.
std::vector<std::vector<core::vec3>> cutSurface(const core::Array<core::vec3>& points,
                                                const core::Array<ZNFacette>& facettes,
                                                const geom::Plane& plane);

} // namespace fault::surface
