#pragma once
#include <cstdint>
#include <vector>

#include <QString>

#include "plantedfault.h"

namespace fault::synthetic {

// One fault planted in synthetic seismic: where it lies (PlantedFault's geometry, in
// voxels, see plantedfault.h; the profile fields are not used) and how far the rocks
// moved along it. The hanging wall, the side its upward normal points to, slid down dip
// so that every layer is offset vertically by `throwSamples` across the fault; a disc's
// throw falls off towards its rim as sqrt(1 - r^2), r being 1 on the rim, and is zero
// outside it.
struct SeismicFault {
    PlantedFault geometry;
    double throwSamples = 4.0;   // samples, > 0

    // True when the geometry is valid, the throw positive and finite and the dip above
    // kMinDip (a fault closer to horizontal would slide too far for its throw).
    bool isValid() const;

    static constexpr double kMinDip = 10.0;   // degrees
};

// Everything that defines a synthetic seismic volume. Layers: a random reflectivity
// series along a layer coordinate u = z - s(x, y, z), where s tilts the layers by
// (slopeX, slopeY) samples per voxel and folds them by Gaussian bumps whose height grows
// from zero at the top to foldAmplitude at the bottom. The faults then displace the
// layers in their order (a later fault offsets an earlier one), the reflectivity is
// convolved down each trace with a Ricker wavelet, and noise is added: white noise
// smoothed by a Gaussian of noiseSmoothing voxels and scaled to the signal's rms
// divided by signalToNoise (no noise when signalToNoise is 0). The same scene always
// generates the same volume.
struct SeismicScene {
    int nx = 128;                    // inline samples
    int ny = 128;                    // crossline samples
    int nz = 128;                    // vertical samples
    std::uint64_t seed = 1;          // seeds the reflectivity, the folds and the noise
    double peakFrequency = 0.125;    // cycles per sample of the Ricker wavelet, 0.01..0.25
    double foldAmplitude = 6.0;      // samples, height of the tallest fold at the bottom
    double slopeX = 0.0;             // samples per inline of the layers' tilt
    double slopeY = 0.0;             // samples per crossline of the layers' tilt
    double signalToNoise = 2.0;      // rms of the signal over rms of the noise; 0: none
    double noiseSmoothing = 1.0;     // voxels, sigma of the noise's smoothing; < 0.5: white
    double membershipDistance = 1.0; // voxels: a voxel this close to a fault belongs to it
    std::vector<SeismicFault> faults;

    // Empty when the scene can be generated; otherwise a one-line reason.
    QString problem() const;
};

// The built-in seismic scene on an nx x ny x nz grid: dipping, folded layers cut by two
// planar faults crossing each other inside the volume and a disc-shaped fault apart
// from them, throws of 3 to 5 samples, noise at a signal-to-noise ratio of 2.
// Positions scale with the sizes.
SeismicScene defaultSeismicScene(int nx = 128, int ny = 128, int nz = 128,
                                 std::uint64_t seed = 1);

} // namespace fault::synthetic
