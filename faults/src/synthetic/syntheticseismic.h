#pragma once
#include <vector>

#include <QString>

#include <zn3dimage.h>

#include "plantedfault.h"
#include "seismicscene.h"

namespace fault::synthetic {

// A generated seismic volume and the truth it was generated from.
struct SyntheticSeismic {
    ZN3DImage<float> amplitude;      // seismic amplitude on syntheticBlocSpace, rms about 1
                                     // without noise
    ZN3DImage<int> plantedIds;       // index into `faults` of the planted fault each voxel
                                     // belongs to, -9999 for none
    std::vector<PlantedFault> faults;     // the planted faults' geometry, for matchFaults
    std::vector<double> throwSamples;     // their throws, same order
    QString error;                   // empty on success; a one-line reason otherwise

    bool ok() const { return error.isEmpty(); }
};

// Generates the scene's volume (see SeismicScene). A voxel belongs to the planted fault
// nearest to it when, with the displacement of the later faults undone, it lies within
// scene.membershipDistance of that fault's plane (and, for a disc, inside its rim). The
// result depends only on the scene, never on the thread count.
//
// Reports progress on a bar titled "Synthetic seismic" and stops when it is cancelled.
// An invalid scene, memory running out or a cancellation give empty images and an error
// text, which is also sent on the event bus (kind 1).
SyntheticSeismic generateSyntheticSeismic(const SeismicScene& scene);

} // namespace fault::synthetic
