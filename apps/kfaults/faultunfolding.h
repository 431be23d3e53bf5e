#pragma once
#include <znfaultsticksfromvoxels.h>

#include "idimage.h"

class ZNFaultPatchManager;

namespace kfaults {

// The fault `fault` of the automatic fault set `set` unfolded on its own plane: each of
// its voxels projected onto the plane's strike and dip axes (fault.strikeAxis,
// fault.dipAxis), one image cell per voxel step, column along strike, row down dip, the
// cell holding the id of the patch the voxel came from (the last one wins). Empty for a
// fault without voxels or axes.
IdImage unfoldFault(const ZNFaultPatchManager& set, const fault::FaultSticks& fault);

} // namespace kfaults
