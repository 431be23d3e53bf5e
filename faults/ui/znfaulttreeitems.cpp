#include "znfaulttreeitems.h"

#include <QStandardItem>

#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>
#include <znobjecttree.h>

namespace ZNFaultTreeItems {

QString displayName(const ZN3DFaultPatchLight& light)
{
    const QString name = light.GetFaultName();
    return name.isEmpty() ? QStringLiteral("Fault %1").arg(light.getFaultId()) : name;
}

void fill(ZNObjectTree& tree, QStandardItem* setItem, const ZNFaultPatchManager& set,
          const std::function<bool(int faultId)>& isVisible)
{
    if (!setItem) return;
    setItem->removeRows(0, setItem->rowCount());
    QList<QStandardItem*> rows;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList()) {
        auto* item = new QStandardItem;
        item->setEditable(false);
        item->setCheckable(true);
        item->setData(light->getFaultId(), ZNObjectTree::IdRole);
        item->setData(faultKind(), ZNObjectTree::KindRole);
        // Complete before it joins the model, so the tree reports nothing of it.
        update(tree, item, *light, isVisible(light->getFaultId()));
        rows << item;
    }
    setItem->appendRows(rows);
}

void update(ZNObjectTree& tree, QStandardItem* faultItem, const ZN3DFaultPatchLight& light, bool visible)
{
    if (!faultItem) return;
    tree.setChecked(faultItem, visible);  // first: later changes then compare with it
    faultItem->setText(displayName(light));
    faultItem->setIcon(ZNObjectTree::swatch(light.getPen().color()));
    faultItem->setToolTip(QStringLiteral("%1 (id %2)").arg(displayName(light)).arg(light.getFaultId()));
}

} // namespace ZNFaultTreeItems
