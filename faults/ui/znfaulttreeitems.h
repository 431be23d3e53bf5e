#pragma once
#include <functional>

#include <QString>

class QStandardItem;
class ZN3DFaultPatchLight;
class ZNFaultPatchManager;
class ZNObjectTree;

// How the faults of a fault set appear in the host's object tree: one child item per
// fault under the fault set's item, in the order of the fault set's descriptors, each
// with the fault's name, a swatch of its colour, a check box for its visibility, the
// fault id in its id role and the kind "fault".
namespace ZNFaultTreeItems {

// The kind of the items of faults.
inline QString faultKind() { return QStringLiteral("fault"); }

// The name a fault is listed under: its own, or "Fault <id>" when it has none.
QString displayName(const ZN3DFaultPatchLight& light);

// Replaces the children of `setItem` by one item per fault of `set`, checked when
// `isVisible(faultId)`.
void fill(ZNObjectTree& tree, QStandardItem* setItem, const ZNFaultPatchManager& set,
          const std::function<bool(int faultId)>& isVisible);
// Brings one fault's item up to date (name, colour, visibility) without reporting the
// check as the user's.
void update(ZNObjectTree& tree, QStandardItem* faultItem, const ZN3DFaultPatchLight& light,
            bool visible);

} // namespace ZNFaultTreeItems
