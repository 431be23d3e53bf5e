#pragma once
#include <QString>

class ZNFaultPatchManager;

// Edits of a fault set that merge two faults, each one step of the user's history: the
// edit stores the snapshots that undo it exactly (ZNFaultPatchManagerConfig) and answers
// how many steps of the fault set's history it spans, so that a host undo walks back
// over all of them (undoWithLastConfiguration that many times) and a redo forward again.
//
// Steps. Each edit stores one snapshot of the state before it and one after it. When the
// history held a current snapshot, an undo walks back to that one (two steps), so that
// the history stands where the previous edit left it; otherwise the snapshot before the
// edit starts the history (one step). An edit that changes nothing stores nothing and
// answers 0. Neither edit adds patches, so every snapshot stays restorable.
namespace fault {

// Merges fault `absorbed` into fault `kept` (both fault ids, roots 1..n-1, of two
// different faults): the absorbed fault's root takes the kept one as father
// (mergePatch), its descriptor is removed, and every descriptor's patch list is made
// again. The kept fault keeps its id, name and settings; its patches come first, the
// absorbed fault's after them. Full snapshots (fathers and descriptors) before and
// after; picked points are not touched. 0 for bad or equal faults.
//
// Before merging, call closeLastStickWithHistory on `kept` when mergeNeedsClosedStick
// says so: the sticks of a fault are read patch after patch, and an open last stick of
// the kept fault would otherwise run on into the absorbed fault's first stick.
int mergeFaultsWithHistory(ZNFaultPatchManager& set, int kept, int absorbed, const QString& action);

// True when the last patch of fault `faultId` ends with a picked point rather than a
// separator, so that appending another fault's patches would join two sticks.
bool mergeNeedsClosedStick(const ZNFaultPatchManager& set, int faultId);

// Ends the last stick of fault `faultId` with a separator in its last patch (the picking
// gesture "End Stick", which changes no stick), between edition snapshots of the fault.
// 0 when that stick is closed already, the fault has no point or the id is bad.
int closeLastStickWithHistory(ZNFaultPatchManager& set, int faultId, const QString& action);

} // namespace fault
