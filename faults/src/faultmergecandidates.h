#pragma once
#include <vector>

#include <core/array.h>
#include <core/triplet.h>

#include "znfaultsticksfromvoxels.h"

class ZNFaultPatchManager;

namespace fault {

// The merge candidates of an extraction, numbered as its picked fault set: the pairs of
// faults of the merged automatic fault set that touch (at least one pair of their patches
// in contact), hold at least `minFaultSize` voxels each and would form one plane within
// `maxCost` (the mean of getContactArrayPlanarMergeCost over their contacts: the spread
// across the common plane, in grid steps), yet stayed apart through the merging (its
// dip or overlap tests, or the spread of the grown faults, refused them). Best first.
//
// Fault faults[i] of the extraction is fault i + 1 of the picked set; a pair one of whose
// faults gave no sticks is left out. Each pair comes as (a, b) with a < b, its cost at the
// same place of `costs`; both arrays are replaced. Uses the automatic set's contact lists;
// none are found without them. False when cancelled through the bar under
// `progressParent` (the pairs found before stay).
bool mergeCandidatesOfExtraction(ZNFaultPatchManager& automatic, const std::vector<FaultSticks>& faults,
                                 double maxCost, int minFaultSize, core::Array<core::Duplet>& pairs,
                                 core::Array<double>& costs, int progressParent);

} // namespace fault
