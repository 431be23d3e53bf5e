#pragma once
#include <map>
#include <memory>

#include <QString>

#include <exchange/stickformat.h>
#include <faultextractionpipeline.h>
#include <volumeio/volumesource.h>
#include <zn3dfaultpatch.h>
#include <znvolume.h>

class ZNFaultPatchManager;

// The long reads and builds of the studio, as work functions for a background task:
// each makes its objects on the calling thread, and moves every QObject it returns to
// the GUI thread before returning, so that the GUI thread may take them over. Errors
// are one line naming the file; a cancel through the progress bars gives "cancelled".

// A fault set and the drawable surface of each of its faults (by fault id).
struct LoadedFaultSet {
    std::unique_ptr<ZNFaultPatchManager> set;
    std::map<int, std::unique_ptr<ZN3DFaultPatch>> surfaces;
    core::Array<core::Duplet> mergeCandidates;  // of an extraction, see FaultSetDocument
    core::Array<double> mergeCandidateCosts;
    QString error;
    bool ok() const { return error.isEmpty() && set != nullptr; }
};

struct LoadedVolume {
    std::unique_ptr<ZNVolume> volume;
    QString error;
    bool ok() const { return error.isEmpty() && volume != nullptr; }
};

// The surfaces of every fault of `set`: the mesh the file stored for it, or one made
// from its sticks now (bar "Meshing faults"). False when cancelled.
bool makeSurfaces(ZNFaultPatchManager& set, std::map<int, std::unique_ptr<ZN3DFaultPatch>>& surfaces);

LoadedFaultSet readFaultSetFile(const QString& path);
LoadedFaultSet importStickFile(const QString& path, fault::exchange::StickFormat format);
// The picked fault set of an extraction with surfaces from its meshes (no meshing again),
// and the merge candidates its automatic fault set leaves (under the merge cost and the
// smallest fault of `settings`), before that set is let go.
LoadedFaultSet faultSetOfExtraction(fault::FaultExtraction& extraction,
                                    const fault::FaultExtractionSettings& settings = {});

LoadedVolume readVolumeFile(const volumeio::VolumeSource& source);
// The built-in synthetic likelihood volume of `kfaults extract`, `size` voxels a side.
LoadedVolume syntheticVolume(int size, quint64 seed);

// Moves `object` to the GUI thread (the application's thread); nothing for null.
void moveToGuiThread(QObject* object);
