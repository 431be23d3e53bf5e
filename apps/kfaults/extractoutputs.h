#pragma once
#include <vector>

#include <QElapsedTimer>
#include <QJsonObject>
#include <QStringList>

#include <exchange/trianglemesh.h>
#include <faultsurfacemeshing.h>
#include <znfaultsticksfromvoxels.h>

#include "extractjob.h"

class ZNFaultPatchManager;

namespace kfaults {

class PlantedTruth;

// What an extraction produced, as the outputs need it. Not owned.
struct ExtractionProducts {
    const ExtractOptions& options;
    const ZNFaultPatchManager& automatic;          // merged automatic fault set
    ZNFaultPatchManager& picked;                   // its sticks, one fault per entry of faults
    const std::vector<fault::FaultSticks>& faults;
    const fault::SurfaceSettings& surfaceSettings;        // how the meshes were made
    const std::vector<fault::exchange::TriangleMesh>& meshes;  // one per entry of faults
    const std::vector<double>& areas;              // of the meshes, squared world units
    const PlantedTruth* truth;                     // of the built-in volume; null for files
    const QString& note;                           // why no fault came out; empty when some did
    const QJsonObject& memoryMode;                 // how the run used memory, into the
                                                   // report's "memory"
};

// File names of the outputs inside the output folder.
struct OutputNames {
    static constexpr const char* faultSet = "faults.faultset";
    static constexpr const char* surfaces = "faults.ts";
    static constexpr const char* volumeRaw = "fault_volume.int32.raw";
    static constexpr const char* volumeHeader = "fault_volume.int32.txt";
    static constexpr const char* volumeBloc = "fault_volume.bloc";
    static constexpr const char* mapView = "map_view.png";
    static constexpr const char* perspective = "perspective.png";
    static constexpr const char* report = "report.json";
};

// Writes every output of an extraction into `folder` and appends each file's path to
// `written` (report.json last); `report` receives the report written. `timings`,
// `peaks` (peak resident bytes after each step) and `counts` go into the report as they
// are, with the outputs' own timing and peak and the total of `total` added. The fault
// volume is written, matched against the truth and released before the pictures are
// drawn. A run without faults writes the same files, empty of faults, and the report
// says why under "note". Empty on success, a one-line error otherwise.
QString writeExtractionOutputs(const ExtractionProducts& products, const QString& folder,
                               QJsonObject timings, QJsonObject peaks, const QJsonObject& counts,
                               const QElapsedTimer& total, QStringList& written,
                               QJsonObject& report);

} // namespace kfaults
