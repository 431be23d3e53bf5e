#pragma once
#include <vector>

#include <img/image.h>

// The image filters of the fault plane mapping (see faultplanemapping.h), after the
// samples are read. Pixels without value hold -9999.0 throughout.
namespace fault {

// Sets to -9999.0 every valued pixel of `mapped` whose window (traces[p * windowCount ..
// + windowCount), -9999.0 where no sample) correlates less than `threshold` with the mean
// window of its valued 8 neighbours, over the positions both hold (at least 3; pixels
// with fewer are kept). Every pixel is judged on the windows as read.
void dropUncorrelatedPixels(img::Image& mapped, const std::vector<float>& traces, int windowCount, double threshold);

// Sets to -9999.0 every pixel of `mapped` that is -9999.0 in `fault` (same size).
void keepInside(img::Image& mapped, const img::Image& fault);

// Every pixel of `fault` that `mapped` leaves without value is interpolated from the
// nearest valued pixel of `mapped` in each of the 8 directions (along its row, its column
// and the diagonals) within `radius` pixels: each line (row, column, diagonal) with a
// value on both sides gives the linear interpolation between them, and the lines are
// averaged with weights inversely proportional to their span; a pixel with no such line
// takes the inverse-distance mean of the values it found. The values used are those
// before any is filled. Returns the pixels filled.
int interpolateHoles(img::Image& mapped, const img::Image& fault, int radius);

// Gaussian smoothing of the valued pixels, standard deviations `across` (columns) and
// `down` (rows) in pixels, normalised by the weights of the valued pixels; pixels without
// value stay so. A deviation of 0 leaves its direction unsmoothed.
void smoothValued(img::Image& mapped, double across, double down);

} // namespace fault
