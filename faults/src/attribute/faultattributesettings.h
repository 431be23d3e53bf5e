#pragma once
#include <QString>

namespace fault::attribute {

// Settings of the fault-likelihood attribute (see faultattribute.h). Lengths are in
// samples of the volume's grid, angles in degrees and on the grid (one sample along
// every axis counts the same), as the scan sees them.
//
// The defaults recover the faults of the built-in synthetic seismic (throws of 3 to 5
// samples, signal-to-noise ratio 2) and keep its unfaulted layers, flat or dipping by up
// to 40 degrees, below a likelihood of 0.5; the scan tries 60 strikes x 6 dips (330
// orientations once the duplicated vertical ones are left out).
struct FaultAttributeSettings {
    double strikeStep = 6.0;        // degrees between two scanned strikes, over 0..360
    double minDip = 50.0;           // degrees, the shallowest fault scanned, > 20
    double maxDip = 90.0;           // degrees, the steepest, <= 90
    double dipStep = 8.0;           // degrees between two scanned dips
    double strikeSigma = 6.5;       // samples, Gaussian smoothing along the fault's strike
    double dipHalfLength = 20.0;    // samples, half-length of the window down the fault
    double slopeSigma = 4.5;        // samples, smoothing that gives the reflector slopes
    double referenceSigma = 14.0;   // samples, the neighbourhood whose semblance deficit
                                    // gives the noise's share of the energy
    double maxReflectorSlope = 2.0; // samples per trace, steepest reflector followed
    double semblancePower = 4.0;    // p of likelihood = 1 - semblance^p, >= 1
    bool thin = true;               // keep only the ridge across each fault (0 elsewhere)

    // Empty when the settings can be used; otherwise a one-line reason (a step not
    // positive, dips outside 20..90 or in the wrong order, a length below 1 or above
    // 64, a power below 1, more than 4096 orientations).
    QString problem() const;
};

} // namespace fault::attribute
