#pragma once
#include <functional>
#include <memory>
#include <vector>

#include <QString>

#include <core/array.h>
#include <core/triplet.h>
#include <exchange/trianglemesh.h>
#include <georef/unitobject.h>
#include <zn3dimage.h>

#include "automaticfaultextraction.h"
#include "faultsurfacemeshing.h"
#include "segmentation/slabsegmentation.h"
#include "znfaultpatchmanager.h"
#include "znfaultsticksfromvoxels.h"

// The whole automatic extraction, from a fault-likelihood volume to meshed faults that an
// interpreter can edit, as one sequence shared by the command-line tool and the desktop
// application:
//   segmentation   likelihood -> label image of small planar patches
//   faultSet       labels -> automatic fault set (label k is patch k)
//   merging        best-first merging of touching patches into faults, then the faults
//                  left over where faults cross joined or dropped by their merge costs
//   sticks         each merged fault cut into sticks -> picked fault set
//   duplicates     pairs of faults that look like the same fault
//   surfaces       each fault meshed from its sticks by the 3D fault patch
// It runs on the caller's thread over objects nobody else touches, reports on one
// progress bar ("Extracting faults", one step per stage, the stages' own bars below it)
// and stops at the next stage or fault when that bar is cancelled.
namespace fault {

struct FaultExtractionSettings {
    AutomaticExtractionSettings extraction;
    SticksFromVoxelsSettings sticks;
    int surfaceMethod = ZN3DFaultPatchLight::kDefaultMeshingMethod;  // 0 convex, 1 minimum envelop
    // Empties the likelihood as soon as it is segmented, so that the run holds the
    // likelihood and its labels but never the likelihood and the fault sets at once.
    bool releaseLikelihood = false;
    // The likelihood was read as given, not computed here: when none of its samples
    // reaches the threshold, the note asks whether the input and its byte order are right.
    bool likelihoodGiven = true;

    // Empty when usable; otherwise a one-line reason.
    QString problem() const;
};

// What an extraction produced. On failure only `error` (and `cancelled`) are meaningful.
// A volume in which no fault is found is a successful extraction: both fault sets exist
// (over the volume's block space, with its units) and hold no fault, every list is
// empty, and `note` says why.
struct FaultExtraction {
    std::unique_ptr<ZNFaultPatchManager> automatic;  // merged automatic fault set
    std::unique_ptr<ZNFaultPatchManager> picked;     // fault i + 1 holds the sticks of faults[i]
    std::vector<FaultSticks> faults;                 // merged faults that gave sticks
    SurfaceSettings surfaceSettings;                 // how the meshes were made
    std::vector<exchange::TriangleMesh> meshes;      // one per entry of faults, world coordinates
    std::vector<double> areas;                       // of the meshes, squared world units; -9999 none
    core::Array<core::Duplet> duplicates;            // fault id pairs of the picked set
    int patchCount = 0;        // faults (patches with voxels) before merging
    int mergedFaultCount = 0;  // faults with voxels after merging
    int leftoversJoined = 0;   // faults left over at crossings, joined to a fault
    int leftoversDropped = 0;  // and dropped (ZNFaultPatchManager::settleCrossingLeftovers)
    // Slab by slab only: windows the segmentation scanned, seed slices per window, and
    // slices per slab when the labels were read back. 0 for a run in memory.
    int segmentationWindows = 0;
    int seedSlicesPerWindow = 0;
    int labelSlabSlices = 0;
    QString error;             // empty on success; "cancelled" when cancelled
    bool cancelled = false;
    // When no fault came out: one line, "no fault found: " and the reason (no
    // likelihood sample reaches the threshold, the samples that do grow into no patch
    // large enough, or the merged faults are all too small for sticks), with the
    // figures that tell which setting to change. Empty otherwise.
    QString note;

    bool ok() const { return error.isEmpty(); }
};

// Called after each stage with the stage's name (those of the file comment), in order.
using ExtractionStepObserver = std::function<void(const char* step)>;

// Runs the extraction on `likelihood` (x inline, y crossline, z sample, with its block
// space), whose world coordinates are in `units` (given to both fault sets). The
// likelihood is left as it was unless settings.releaseLikelihood. The progress bar is
// opened under `progressParent` (-1 for none); observers see every stage, also when no
// patch was found. Errors, each one line: the settings' problem, "the likelihood volume
// is empty", "segmentation failed", "the fault set cannot be built from the patches",
// "merging failed", "out of memory building the sticks", "duplicate detection failed", or
// "cancelled"; the library's own messages about them went out on the event bus.
FaultExtraction extractFaults(ZN3DImage<float>& likelihood, const georef::UnitObject& units,
                              const FaultExtractionSettings& settings, int progressParent = -1,
                              const ExtractionStepObserver& observer = {});

// The same on a likelihood the caller keeps and may share with other readers (a volume
// shown in the viewers while a worker extracts from it): it is only read, whatever
// settings.releaseLikelihood says.
FaultExtraction extractFaults(const ZN3DImage<float>& likelihood, const georef::UnitObject& units,
                              const FaultExtractionSettings& settings, int progressParent = -1,
                              const ExtractionStepObserver& observer = {});

// A likelihood volume read slab by slab: its block space and its reader.
struct LikelihoodSlabs {
    georef::BlocSpace space;
    segmentation::LikelihoodSlabReader read;
};

// How a slab-by-slab extraction may use memory and disk.
struct SlabExtractionSettings {
    // Bytes the segmentation's window and the slabs of labels read back may hold. The
    // fault sets built afterwards hold what the faults need, a few bytes per fault voxel,
    // whatever the budget.
    double memoryBudget = 0.0;
    // Folder of the temporary label file (4 bytes per voxel), removed before returning.
    QString scratchFolder;
};

// The same extraction on a likelihood that is never held whole: segmented slab by slab
// (segmentLikelihoodSlabs, windows as large as the budget allows) into a temporary label
// file, from which the fault set is built slab by slab; the stages after it work on the
// fault sets alone. The faults are those of the run in memory: the labels are identical.
// The bar "Extracting faults" and its stages as above. Errors as above, and "the memory
// budget of N bytes is too small for one slice" (the message names the least budget
// that works), "the label file cannot be written in <folder>", "the likelihood volume
// cannot be read".
FaultExtraction extractFaults(const LikelihoodSlabs& likelihood, const georef::UnitObject& units,
                              const FaultExtractionSettings& settings, const SlabExtractionSettings& slabs,
                              int progressParent = -1, const ExtractionStepObserver& observer = {});

// "no sample above <threshold> (values from <lowest> to <highest>)", followed when
// `askAboutTheInput` by ": is this a likelihood volume, is the byte order right?": why a
// volume gave no fault patch when none of its samples (NaN aside) reaches the threshold.
QString noSampleAboveThreshold(double threshold, float lowest, float highest, bool askAboutTheInput);

// Number of faults of an automatic fault set that hold voxels (roots of patches with
// voxels).
int countFaultsWithVoxels(const ZNFaultPatchManager& set);

} // namespace fault
