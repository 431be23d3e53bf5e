#pragma once
#include <vector>

#include <QImage>

#include <core/array.h>
#include <core/triplet.h>

class ZNFaultPatchManager;

// What the cleaning assistant proposes for one fault set: pairs of its faults, one per
// row of the cleaning dialog, each with a score and a picture.
//
// Signs. A pair (a, b) of positive fault ids, a < b, is a duplicate: the similar-fault
// detection found the same fault twice (same points to the grid step, same box). A pair
// (-a, b) is a merge candidate: two faults the extraction's contact merging left apart
// although they touch and nearly share a plane. Fault ids are those of the fault set
// (root patch ids) at detection time; a later merge may make a fault part of another.
//
// Scores, the array parallel to the pairs: 0 for a duplicate; for a merge candidate its
// mean contact cost (the spread of both faults across their common plane, in grid
// steps): the lower, the likelier one fault.
struct FaultCleaningPairs {
    static constexpr int kPictureSize = 48;  // pixels, the dialog's row icons

    core::Array<core::Duplet> pairs{256};
    core::Array<double> scores{256};
    std::vector<QImage> pictures;  // one per pair (faultPairPicture)
    bool cancelled = false;
};

// The fault that id `id` of a pair belongs to now (its root), when that fault has a
// descriptor; -9999 otherwise (a bad id, a fault deleted since).
int presentFault(const ZNFaultPatchManager& set, int id);

// Finds the pairs of `set`: its duplicates in the detection's order, then the merge
// candidates `candidates` (fault ids, a < b, with their costs in `candidateCosts`) whose
// faults are still two different faults of `set` and not already a duplicate pair, each
// named by its faults' present ids; then draws every pair's picture. Runs under the bars
// "Similar Fault Detection" and "Fault Pair Pictures" below `progressParent`; a cancel
// leaves `cancelled` set and what was found so far. Reads `set` (the detection stamps its
// visit marks), so give the worker a set no one else touches.
FaultCleaningPairs findCleaningPairs(ZNFaultPatchManager& set, const core::Array<core::Duplet>& candidates,
                                     const core::Array<double>& candidateCosts, int progressParent);
