#pragma once
#include <vector>

#include <QString>

#include <georef/blocspace.h>
#include <zn3dimage.h>

#include "plantedfault.h"
#include "syntheticscene.h"

namespace fault::synthetic {

// The block space of every synthetic volume: nx x ny x nz voxels, unit spacing, block
// (inline x, crossline y, sample z) mapped to world (x = inline, y = sample,
// z = crossline), so that world y is vertical and increases downwards as time does.
georef::BlocSpace syntheticBlocSpace(int nx, int ny, int nz);

// A generated volume and the truth it was generated from.
struct SyntheticVolume {
    ZN3DImage<float> likelihood;     // fault likelihood, 0..1, on syntheticBlocSpace
    ZN3DImage<int> plantedIds;       // index into `faults` of the planted fault each
                                     // voxel belongs to, -9999 for none
    std::vector<PlantedFault> faults;
    QString error;                   // empty on success; a one-line reason otherwise

    bool ok() const { return error.isEmpty(); }
};

// Generates the scene's volume. Each voxel's likelihood is the largest likelihood of the
// planted faults there (so crossing faults do not add up), plus the seeded noise times
// scene.noiseSigma, clamped to 0..1. A voxel belongs to the planted fault whose profile
// is largest there when that profile reaches scene.membershipThreshold (for the default
// 0.5 and width w: within about 1.18 w of the fault). The result depends only on the
// scene, never on the thread count.
//
// Reports progress on a bar titled "Synthetic volume" and stops when it is cancelled.
// An invalid scene, memory running out or a cancellation give empty images and an
// error text, which is also sent on the event bus (kind 1).
SyntheticVolume generateSyntheticVolume(const SyntheticScene& scene);

} // namespace fault::synthetic
