#pragma once
#include <vector>

#include <core/mat4.h>
#include <core/vec2.h>

#include "volumeio/segygrid.h"

namespace volumeio {

// The vertical axis of a SEG-Y volume: world y of sample k is firstSample + k * step
// (milliseconds for time data).
struct SegyVerticalAxis {
    double firstSample = 0.0;
    double step = 1.0;          // > 0
};

struct SegyWorldFit {
    core::mat4 blocToWorld;     // block (inline index, crossline index, sample) to world
    bool fromCoordinates = false;  // false: the map axes are the unit grid fallback
};

// The block-to-world matrix of a SEG-Y grid. `mapPoints` holds every trace's map
// position (easting, northing), scaled, in file order; world x is the easting, world z
// the northing, world y the vertical axis.
//
// The map part is the least-squares affine fit of the positions over the grid indices
// (exact on a regular survey). With a single inline (crossline) the missing axis is the
// known one turned by 90 degrees, same length. When every position is (0, 0), or the
// fit is degenerate or not finite, the map axes fall back to world x = inline index,
// world z = crossline index (fromCoordinates false).
SegyWorldFit segyBlocToWorld(const SegyGrid& grid, const std::vector<core::vec2>& mapPoints,
                             const SegyVerticalAxis& vertical);

} // namespace volumeio
