#include "studiotree.h"

#include <map>

#include <QMenu>
#include <QStandardItem>
#include <QUndoStack>

#include <core/conventions.h>
#include <znfaulttreeitems.h>
#include <znobjecttree.h>

#include "faultcommands.h"
#include "studioproject.h"

namespace {
const QString kVolumeKind = QStringLiteral("volume");
const QString kFaultSetKind = QStringLiteral("faultSet");

void showAllFaults(FaultSetDocument* document)
{
    std::map<int, bool> all;
    for (int id : document->faultIds()) all[id] = true;
    document->undoStack()->push(new SetFaultVisibilityCommand(document, all, StudioTree::showAllText()));
}
} // namespace

StudioTree::StudioTree(ZNObjectTree* tree, StudioProject* project, QObject* parent)
    : QObject(parent), m_tree(tree), m_project(project)
{
    connect(project, &StudioProject::volumeAdded, this, [this](ZNVolume* volume) {
        m_tree->addObject(volume, kVolumeKind, volume->name());
    });
    connect(project, &StudioProject::volumeRemoved, this,
            [this](ZNVolume* volume) { m_tree->removeObject(volume); });
    connect(project, &StudioProject::faultSetAdded, this, &StudioTree::addFaultSet);
    connect(project, &StudioProject::faultSetRemoved, this,
            [this](FaultSetDocument* document) { m_tree->removeObject(document->faultSet()); });
    connect(tree, &ZNObjectTree::itemSelected, this, &StudioTree::onItemSelected);
    connect(tree, &ZNObjectTree::itemChecked, this, &StudioTree::onItemChecked);
    connect(tree, &ZNObjectTree::itemRenamed, this, &StudioTree::onItemRenamed);
    connect(tree, &ZNObjectTree::contextMenuRequested, this, &StudioTree::onContextMenu);
}

QString StudioTree::showOnlyText() { return tr("Show Only This Fault"); }
QString StudioTree::hideText() { return tr("Hide"); }
QString StudioTree::showText() { return tr("Show"); }
QString StudioTree::showAllText() { return tr("Show All Faults"); }
QString StudioTree::renameText() { return tr("Rename"); }
QString StudioTree::deleteText() { return tr("Delete"); }
QString StudioTree::propertiesText() { return tr("Properties"); }
QString StudioTree::centreText() { return tr("Centre Views on It"); }

QStandardItem* StudioTree::faultSetItem(const FaultSetDocument* document) const
{
    return document ? m_tree->itemOf(document->faultSet()) : nullptr;
}

QStandardItem* StudioTree::faultItem(const FaultSetDocument* document, int faultId) const
{
    return ZNObjectTree::childWithId(faultSetItem(document), faultId);
}

QStandardItem* StudioTree::volumeItem(const ZNVolume* volume) const
{
    return m_tree->itemOf(volume);
}

void StudioTree::selectFault(const FaultSetDocument* document, int faultId)
{
    QStandardItem* item = faultId == core::kNoValue ? faultSetItem(document) : faultItem(document, faultId);
    if (item) m_tree->selectItem(item);
}

void StudioTree::addFaultSet(FaultSetDocument* document)
{
    QStandardItem* item = m_tree->addObject(document->faultSet(), kFaultSetKind, document->name());
    refillFaults(document);
    m_tree->expand(item->index());
    connect(document, &FaultSetDocument::faultsChanged, this, [this, document] { refillFaults(document); });
    connect(document, &FaultSetDocument::faultAppearanceChanged, this,
            [this, document](int faultId) { updateFault(document, faultId); });
    connect(document, &FaultSetDocument::modifiedChanged, this, [this, document](bool modified) {
        if (QStandardItem* setItem = faultSetItem(document))
            setItem->setText(modified ? document->name() + QStringLiteral(" *") : document->name());
    });
}

void StudioTree::refillFaults(FaultSetDocument* document)
{
    QStandardItem* setItem = faultSetItem(document);
    if (!setItem) return;
    // The current fault stays current when it is still there.
    QStandardItem* current = m_tree->currentItem();
    const bool currentHere = current && current->parent() == setItem;
    const int currentId = currentHere ? ZNObjectTree::idOf(current) : core::kNoValue;
    ZNFaultTreeItems::fill(*m_tree, setItem, *document->faultSet(),
                           [document](int faultId) { return document->isFaultVisible(faultId); });
    if (currentHere) {
        QStandardItem* again = faultItem(document, currentId);
        m_tree->selectItem(again ? again : setItem);
    }
}

void StudioTree::updateFault(FaultSetDocument* document, int faultId)
{
    const ZN3DFaultPatchLight* light = document->faultSet()->findFaultLight(faultId);
    if (light) ZNFaultTreeItems::update(*m_tree, faultItem(document, faultId), *light, document->isFaultVisible(faultId));
}

FaultSetDocument* StudioTree::documentOfItem(const QStandardItem* item) const
{
    return m_project->documentOf(ZNObjectTree::objectOf(item));
}

void StudioTree::onItemSelected(QStandardItem* item)
{
    const QString kind = ZNObjectTree::kindOf(item);
    if (kind == kVolumeKind) {
        for (ZNVolume* v : m_project->volumes())
            if (static_cast<ZNObject*>(v) == ZNObjectTree::objectOf(item)) emit volumeSelected(v);
        emit faultSelected(nullptr, core::kNoValue);
        return;
    }
    FaultSetDocument* document = documentOfItem(item);
    emit faultSelected(document, kind == ZNFaultTreeItems::faultKind() ? ZNObjectTree::idOf(item) : core::kNoValue);
}

void StudioTree::onItemChecked(QStandardItem* item, bool checked)
{
    FaultSetDocument* document = documentOfItem(item);
    if (!document || ZNObjectTree::kindOf(item) != ZNFaultTreeItems::faultKind()) return;
    const int faultId = ZNObjectTree::idOf(item);
    document->undoStack()->push(new SetFaultVisibilityCommand(
        document, {{faultId, checked}},
        (checked ? tr("Show Fault \"%1\"") : tr("Hide Fault \"%1\"")).arg(document->faultName(faultId))));
}

void StudioTree::onItemRenamed(QStandardItem* item, const QString& text)
{
    FaultSetDocument* document = documentOfItem(item);
    const QString name = text.trimmed();
    if (!document || name.isEmpty() || ZNObjectTree::kindOf(item) != ZNFaultTreeItems::faultKind()) return;
    const int faultId = ZNObjectTree::idOf(item);
    if (name != document->faultName(faultId))
        document->undoStack()->push(new RenameFaultCommand(document, faultId, name));
}

void StudioTree::onContextMenu(QStandardItem* item, QMenu* menu)
{
    const QString kind = ZNObjectTree::kindOf(item);
    FaultSetDocument* document = documentOfItem(item);
    if (kind == ZNFaultTreeItems::faultKind() && document) {
        fillFaultMenu(document, ZNObjectTree::idOf(item), menu);
        return;
    }
    if (kind == kFaultSetKind && document) {
        menu->addAction(showAllText(), this, [document] { showAllFaults(document); });
        emit faultSetMenuRequested(document, menu);
        return;
    }
    if (kind == kVolumeKind)
        for (ZNVolume* v : m_project->volumes())
            if (static_cast<ZNObject*>(v) == ZNObjectTree::objectOf(item)) emit volumeMenuRequested(v, menu);
}

void StudioTree::fillFaultMenu(FaultSetDocument* document, int faultId, QMenu* menu)
{
    const QString name = document->faultName(faultId);
    menu->addAction(showOnlyText(), this, [document, faultId, name] {
        std::map<int, bool> only;
        for (int id : document->faultIds()) only[id] = id == faultId;
        document->undoStack()->push(
            new SetFaultVisibilityCommand(document, only, tr("Show Only Fault \"%1\"").arg(name)));
    });
    const bool visible = document->isFaultVisible(faultId);
    menu->addAction(visible ? hideText() : showText(), this, [document, faultId, name, visible] {
        document->undoStack()->push(new SetFaultVisibilityCommand(
            document, {{faultId, !visible}}, (visible ? tr("Hide Fault \"%1\"") : tr("Show Fault \"%1\"")).arg(name)));
    });
    menu->addAction(showAllText(), this, [document] { showAllFaults(document); });
    menu->addSeparator();
    menu->addAction(renameText(), this, [this, document, faultId] { m_tree->renameItem(faultItem(document, faultId)); });
    menu->addAction(deleteText(), this, [document, faultId] {
        document->undoStack()->push(new DeleteFaultCommand(document, faultId));
    });
    menu->addSeparator();
    menu->addAction(centreText(), this, [this, document, faultId] { emit centreRequested(document, faultId); });
    menu->addAction(propertiesText(), this, [this, document, faultId] {
        selectFault(document, faultId);
        emit propertiesRequested(document, faultId);
    });
    emit faultMenuRequested(document, faultId, menu);
}
