#pragma once
#include <core/array.h>
#include <core/triplet.h>
#include <core/vec3.h>

// A drawable surface of one fault of a fault set, as the fault set sees it: the 3D fault
// patch objects implement it. The fault set does not own its surfaces; an owner attaches
// a surface while it lives and detaches it before deleting it.
class ZNFaultSurface {
public:
    virtual ~ZNFaultSurface() = default;

    // Id of the fault the surface shows: the root patch id of the fault in its fault set.
    virtual int getFaultSurfaceId() const = 0;
    // Marks the surface as the fault being edited (drawn highlighted) or not.
    virtual void setCurrentFault(bool current) = 0;
    virtual bool isCurrentFault() const = 0;
    // The surface's triangles, in the fault set's space: `vertices` and, for each
    // triangle, three indices into them. Both arrays are replaced. False, with both arrays
    // emptied, when the surface has no mesh (yet).
    virtual bool getSurfaceMesh(core::Array<core::vec3>& vertices,
                                core::Array<core::Triplet>& triangles) const = 0;
};
