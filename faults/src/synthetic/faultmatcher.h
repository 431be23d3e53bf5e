#pragma once
#include <vector>

#include <QString>

#include <zn3dimage.h>

#include "plantedfault.h"
#include "strikedip.h"

namespace fault::synthetic {

// How one extracted fault (one label of an extraction) lies on the planted faults.
struct ExtractedFaultMatch {
    int label = -9999;                  // the extracted fault's label
    long long voxelCount = 0;           // its voxels
    int plantedId = -9999;              // planted fault sharing most of its voxels, -9999
                                        // when none of them is planted
    long long sharedVoxels = 0;         // its voxels that belong to plantedId
    double purity = 0.0;                // sharedVoxels / voxelCount
    double coverage = 0.0;              // sharedVoxels / plantedId's voxel count
    StrikeDip orientation;              // plane fit of its voxels, world convention;
                                        // -9999 with fewer than 4 voxels
    OrientationError error;             // against plantedId's orientation; -9999 when
                                        // either is unknown
};

// How well one planted fault was recovered.
struct PlantedFaultMatch {
    int plantedId = -9999;              // index into the planted faults
    long long voxelCount = 0;           // voxels that belong to it
    int bestLabel = -9999;              // extracted label sharing most of its voxels,
                                        // -9999 when no extracted voxel lies on it
    long long recoveredVoxels = 0;      // its voxels labelled bestLabel
    double recoveredFraction = 0.0;     // recoveredVoxels / voxelCount (0 if it has none)
    int significantLabels = 0;          // labels covering at least
                                        // MatchSettings::significantShare of its voxels
};

struct MatchSettings {
    double significantShare = 0.05;     // share of a planted fault's voxels that makes an
                                        // extracted label count as one of its pieces
};

struct FaultMatchReport {
    std::vector<ExtractedFaultMatch> extracted;   // by increasing label
    std::vector<PlantedFaultMatch> planted;       // by planted id, one per planted fault
    QString error;                                // empty on success

    bool ok() const { return error.isEmpty(); }
};

// Matches an extraction against the truth of a synthetic volume. `labels` holds one
// label per voxel (any int, -9999 for none); `plantedIds` is the volume's planted-id
// image (ids index `planted`, -9999 for none; other values count as none). Plane fits
// run on grid positions and are turned into world orientations through plantedIds'
// block space. Images of different sizes give an empty report with an error text, which
// is also sent on the event bus (kind 1).
FaultMatchReport matchFaults(const ZN3DImage<int>& labels, const ZN3DImage<int>& plantedIds,
                             const std::vector<PlantedFault>& planted,
                             const MatchSettings& settings = MatchSettings());

} // namespace fault::synthetic
