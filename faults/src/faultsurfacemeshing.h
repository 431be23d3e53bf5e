#pragma once
#include <QString>

#include <exchange/trianglemesh.h>
#include <georef/blocspace.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultsticksfromvoxels.h>

class ZN3DFaultPatch;
class ZNFaultPatchManager;

// Fault surfaces of an extraction: every fault of a picked fault set meshed from its
// sticks by the 3D fault patch's own surface methods, so that files, pictures and views
// show the surface the application builds from the same sticks.
namespace fault {

// The gridding parameters handed to the 3D fault patch. Lengths are world units (those
// of the fault set's block-to-world matrix: voxels for the built-in volume, metres and
// milliseconds for SEG-Y).
struct SurfaceSettings {
    // Defaults: those of a new fault descriptor.
    int method = ZN3DFaultPatchLight::kDefaultMeshingMethod;  // 0 "Convex Envelop", 1 "Minimum Envelop"
    int meshResolution = ZN3DFaultPatchLight::kDefaultUtmPrecision;  // lateral step of method 0
    int zSampling = ZN3DFaultPatchLight::kDefaultTimePrecision;      // down-dip step of method 0
    int interpolationSize = ZN3DFaultPatchLight::kDefaultInterpolationSize; // longest edge, method 1

    // "Convex Envelop" or "Minimum Envelop"; "" for another method.
    QString methodName() const;
};

// Settings suited to the survey grid `space` for sticks cut as `sticks` says (sticks
// sectionSpacing cells apart along strike, points pointSpacing cells apart down dip),
// meshed by `method`: the lateral grid step and the longest edge are the distance
// between two sticks, the down-dip step the distance between two points of a stick, with
// a cell as long as the survey's largest lateral (inline or crossline) or vertical step
// in world units, each rounded and kept in its sheet range. An empty survey (sticks
// imported without one) keeps the fault descriptor's defaults.
SurfaceSettings surfaceSettingsFor(const georef::BlocSpace& space,
                                   const SticksFromVoxelsSettings& sticks, int method);

// One meshed fault: its surface, named after the fault, in world coordinates, and the
// surface's area in squared world units (the 3D fault patch's computed area).
struct FaultSurface {
    exchange::TriangleMesh mesh;
    double area = -9999.0;   // -9999 when the fault gives no triangle
};

// The mesh of a 3D fault patch as an exchange mesh named after its fault: its points and
// facettes as they are, in world coordinates.
exchange::TriangleMesh triangleMeshOf(const ZN3DFaultPatch& patch);

// Meshes fault `faultId` of the picked fault set `set` with a temporary 3D fault patch
// made from its descriptor and sticks, with `settings` as gridding parameters. A fault
// whose sticks span no area (fewer than two sticks of two points) gives a named mesh
// without triangles; a bad id an unnamed empty one. The set is left as it was.
FaultSurface meshFault(ZNFaultPatchManager& set, int faultId, const SurfaceSettings& settings);

} // namespace fault
