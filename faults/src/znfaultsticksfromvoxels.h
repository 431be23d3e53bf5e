#pragma once
#include <vector>

#include <QString>

#include <core/vec3.h>

class ZNFaultPatchManager;

// The extraction step that turns the faults of an automatic fault set (voxels) into
// sticks an interpreter can edit, and those sticks into a picked fault set.
namespace fault {

// How a fault's voxels are cut into sticks. Lengths are in voxels of the block grid.
struct SticksFromVoxelsSettings {
    double sectionSpacing = 8.0;    // distance between two sections across the strike
    double sectionHalfWidth = 0.75; // voxels within this distance of a section belong to it
    double pointSpacing = 4.0;      // distance between two points of a stick along dip
    int minPointsPerStick = 2;      // shorter sticks are dropped
    int minSticksPerFault = 2;      // faults with fewer sticks are dropped
    int minVoxelsPerFault = 20;     // smaller faults are not converted

    // Empty when usable; otherwise a one-line reason (a spacing or width not positive,
    // a minimum below 1).
    QString problem() const;
};

// The sticks of one fault, in world coordinates (the fault set's block-to-world matrix).
struct FaultSticks {
    int faultId = -9999;            // root patch id of the fault in the automatic set
    QString name;                   // "Fault <faultId>"
    long long voxelCount = 0;       // voxels of the fault
    core::vec3 strikeAxis;          // grid, unit, horizontal, along which sections follow
    core::vec3 dipAxis;             // grid, unit, in the fault's plane, downwards (+z)
    core::vec3 normal;              // grid, unit
    std::vector<std::vector<core::vec3>> sticks;  // in section order along strikeAxis
};

// The sticks of the fault whose root is `faultId` in the automatic fault set `set`.
// The fault's voxels (every patch of its tree) are fitted by a plane; sections are the
// planes across its strike at multiples of sectionSpacing from the voxels' centroid.
// The voxels of each section are ordered along dip and averaged in runs of
// pointSpacing into the points of one stick, top first, so each section gives at most
// one stick. When the fitted plane is nearly horizontal the strike axis is the
// direction of largest spread. Empty sticks for a bad id, a picked set, or a fault
// below the settings' minima.
FaultSticks sticksFromVoxels(const ZNFaultPatchManager& set, int faultId,
                             const SticksFromVoxelsSettings& settings = {});

// sticksFromVoxels for every fault of `set` (roots in increasing id order), keeping the
// faults that give at least minSticksPerFault sticks.
std::vector<FaultSticks> sticksOfAllFaults(const ZNFaultPatchManager& set,
                                           const SticksFromVoxelsSettings& settings = {});

// A new picked fault set (caller owns it) holding one fault per entry of `faults`,
// entry i becoming patch i + 1 named faults[i].name, its sticks separated by -9999
// separators, with `set`'s block space and units. Null when memory runs out.
ZNFaultPatchManager* createPickedFaultSet(const std::vector<FaultSticks>& faults,
                                          const ZNFaultPatchManager& set);

} // namespace fault
