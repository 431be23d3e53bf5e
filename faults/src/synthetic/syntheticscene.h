#pragma once
#include <cstdint>
#include <vector>

#include <QString>

#include "plantedfault.h"

namespace fault::synthetic {

// Everything that defines a synthetic fault-likelihood volume: grid sizes, the planted
// faults, the noise and the seed. The same scene always generates the same volume.
struct SyntheticScene {
    int nx = 128;                       // inline samples
    int ny = 128;                       // crossline samples
    int nz = 128;                       // vertical samples
    std::uint64_t seed = 1;             // seeds the noise
    double noiseSigma = 0.05;           // standard deviation of the additive noise
    double membershipThreshold = 0.5;   // a voxel belongs to the planted fault of largest
                                        // profile when that profile reaches this value
    std::vector<PlantedFault> faults;

    // Empty when the scene can be generated; otherwise a one-line reason (sizes not
    // positive, noise negative or not finite, threshold outside (0, 1], an invalid fault).
    QString problem() const;
};

// The built-in scene on an nx x ny x nz grid: three planar faults of distinct strikes
// and dips (the first two crossing each other inside the volume, the third apart from
// them) and two elliptical discs, positions and radii scaled with the sizes, widths in
// voxels kept. About 2 % of the voxels of the generated volume exceed 0.5. The seed
// drives the noise and the phases of each fault's amplitude variation.
SyntheticScene defaultScene(int nx = 128, int ny = 128, int nz = 128,
                            std::uint64_t seed = 1);

} // namespace fault::synthetic
