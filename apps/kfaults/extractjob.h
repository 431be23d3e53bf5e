#pragma once
#include <cstdint>

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <automaticfaultextraction.h>
#include <volumeio/rawvolume.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultsticksfromvoxels.h>

#include "volumeinput.h"

namespace kfaults {

// Everything `kfaults extract` needs. Defaults: the built-in 128^3 scene, seed 1, the
// library's extraction and stick defaults, surfaces by "Minimum Envelop", outputs with
// pictures in "kfaults-out".
struct ExtractOptions {
    InputKind input = InputKind::Synthetic;
    QString inputPath;                        // for every kind but Synthetic
    volumeio::RawVolumeLayout raw;            // for Raw
    int syntheticSize = 128;                  // voxels along each axis of the built-in scene
    std::uint64_t seed = 1;                   // of the built-in scene
    fault::AutomaticExtractionSettings extraction;
    fault::SticksFromVoxelsSettings sticks;
    int surfaceMethod = ZN3DFaultPatchLight::kDefaultMeshingMethod;  // 0 convex, 1 minimum envelop
    QString outputDir = QStringLiteral("kfaults-out");
    bool pictures = true;
    int unfoldedPictures = 4;                 // largest faults drawn unfolded
};

// The outcome: on success the files written (absolute paths, report.json last) and the
// report; otherwise a one-line error, `cancelled` set when Ctrl-C stopped the run.
struct ExtractResult {
    QString error;
    bool cancelled = false;
    QStringList files;
    QJsonObject report;
    bool ok() const { return error.isEmpty(); }
};

// Runs the whole extraction: input, segmentation, fault set from the labels, merging,
// sticks, duplicates, surfaces (every fault meshed by the 3D fault patch with settings
// from surfaceSettingsFor), then the outputs. Each full-size volume is released as soon
// as the next step no longer needs it, so that at most the likelihood and its labels
// are held at once. Outputs are written into a temporary
// folder inside the output folder and moved into place only once every one of them is
// complete, so an error or a cancel leaves the output folder as it was (a file of the
// same name from an earlier run is replaced only at the end).
ExtractResult runExtract(const ExtractOptions& options);

} // namespace kfaults
