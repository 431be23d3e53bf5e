#include "faultmergehistory.h"

#include <core/array.h>
#include <core/conventions.h>

#include "znfaultpatchmanager.h"
#include "znfaultpatchmanagerconfig.h"

namespace fault {
namespace {

// The root of `faultId` when it is a fault of the set (a root 1..n-1), else -9999.
int rootOf(const ZNFaultPatchManager& set, int faultId)
{
    if (!set.isValidPatchId(faultId)) return core::kNoValue;
    const int root = set.getFather(faultId);
    return set.isValidPatchId(root) ? root : core::kNoValue;
}

// The last patch of the fault's linked list; -9999 for a bad id.
int lastPatchOf(const ZNFaultPatchManager& set, int faultId)
{
    core::Array<int> patches;
    set.getPatchListWithLinkedList(faultId, patches, true);
    return patches.empty() ? core::kNoValue : patches.last();
}

// Stores `before`, makes the edit, stores the snapshot after it; the steps it spans.
template <class Edit>
int recordEdit(ZNFaultPatchManager& set, const QString& action, const core::Array<int>* patches, Edit edit)
{
    const bool hadCurrent = set.getCurrentConfiguration() != nullptr;
    set.insertUndoListConfiguration(set.getConfiguration(action, patches));
    edit();
    set.insertUndoListConfiguration(set.getConfiguration(action, patches));
    return hadCurrent ? 2 : 1;
}

} // namespace

int mergeFaultsWithHistory(ZNFaultPatchManager& set, int kept, int absorbed, const QString& action)
{
    const int keptRoot = rootOf(set, kept);
    const int absorbedRoot = rootOf(set, absorbed);
    if (keptRoot == core::kNoValue || absorbedRoot == core::kNoValue || keptRoot == absorbedRoot) return 0;
    return recordEdit(set, action, nullptr, [&] {
        set.mergePatch(absorbedRoot, keptRoot);
        set.removeFaultLight(absorbedRoot);
        set.fillFaultLightListPatchList();
    });
}

bool mergeNeedsClosedStick(const ZNFaultPatchManager& set, int faultId)
{
    const int last = lastPatchOf(set, rootOf(set, faultId));
    const int count = set.getNumberOfPickedPoint(last);
    return count > 0 && !set.isLastPickedPointNo_Value(last);
}

int closeLastStickWithHistory(ZNFaultPatchManager& set, int faultId, const QString& action)
{
    if (!mergeNeedsClosedStick(set, faultId)) return 0;
    const int last = lastPatchOf(set, rootOf(set, faultId));
    core::Array<int> patches;
    set.getPatchListWithLinkedList(faultId, patches, true);
    return recordEdit(set, action, &patches, [&] { set.addPickedPoint(last, core::PointWithBool::separator()); });
}

} // namespace fault
