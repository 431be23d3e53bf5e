#pragma once
#include <zn3dimage.h>

#include "attribute/reflectorslopes.h"

namespace fault::attribute {

// The two factors of semblance along the layers, at every sample of a seismic slab:
// with g the amplitudes of the 5 x 5 traces around the sample read along the reflector
// through it (linear interpolation down each trace, traces clamped at the slab's
// sides) and w the binomial weights (1, 4, 6, 4, 1) / 16 along x times the same along y
// (wide enough that a fault between two traces splits the weights nearly evenly),
//
//   numerator   = (sum w g)^2 / sum' w,      denominator = sum w g^2,
//
// where sum' runs over the traces with data at that depth (not both samples read 0), so
// that numerator <= denominator, with equality where those traces agree: the traces of
// zeros beyond a survey's outline or of a dead trace do not lower the semblance of the
// live traces beside them (both factors are 0 where no trace has data). Summed over a
// window along a candidate fault plane, their ratio is the semblance of that window
// (M. T. Taner and F. Koehler, "Velocity spectra", Geophysics 34, 1969; K. J. Marfurt et
// al., "3-D seismic attributes using a semblance-based coherency algorithm",
// Geophysics 63, 1998); reading along the reflector first keeps dipping layers
// coherent (D. Hale, "Methods to compute fault images, extract fault surfaces, and
// estimate fault throws from 3D seismic images", Geophysics 78(2), 2013).
//
// Computes volume slices [first, first + count) into `numerator` and `denominator`,
// count slices of nx x ny values each, x fastest. `seismic` holds volume slices from
// `seismicFirst` on, including factorHalo(maxSlope) more on either side of the slices
// computed where the volume has them (reads beyond the seismic are clamped to its ends);
// `slopes` covers the slices computed, each slope within +-maxSlope.
void computeSemblanceFactors(const ZN3DImage<float>& seismic, int seismicFirst,
                             const ReflectorSlopes& slopes, int first, int count,
                             float* numerator, float* denominator);

// Slices of seismic the factors of a slice read above and below it when reflectors
// slope by up to maxSlope samples per trace.
int factorHalo(double maxSlope);

} // namespace fault::attribute
