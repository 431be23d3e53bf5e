#pragma once
#include "image.h"

namespace img {

// How fillHoles treats a no-value pixel at the edge of the valued area.
enum class HoleGrowth {
    // A pixel is filled only when valued pixels lie on both sides of it along its row,
    // its column or a diagonal: holes and gaps close, a straight outline does not move.
    HolesOnly = 0,
    // Any pixel with enough valued neighbours is filled: the valued area grows by up to
    // one pixel per pass.
    Grow = 1,
};

// The framework's hole filling of an image whose no-value samples (-9999.0) are holes in
// a valued area, such as the gaps left between the samples of a coarse volume mapped
// onto a finer image. Each pass sets every no-value pixel that has at least
// `minNeighbours` valued pixels among its 8 neighbours (and meets `growth`) to their
// mean; a pass sees only the values of the passes before it, so the result does not
// depend on the scan order. Stops after `maxPasses` passes or at the first pass that
// fills nothing. Returns the number of pixels filled. Nothing is filled with
// `minNeighbours` outside 1..8 or `maxPasses` below 1; an image without a valued pixel
// is left as it is.
int fillHoles(Image& image, int maxPasses, int minNeighbours, HoleGrowth growth);

// The number of samples of `image` that hold a value (are not -9999.0).
std::size_t countValued(const Image& image);

} // namespace img
