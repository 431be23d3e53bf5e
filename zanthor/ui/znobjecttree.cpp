#include "znobjecttree.h"

#include <QHeaderView>
#include <QMenu>
#include <QPainter>
#include <QPixmap>

#include <core/conventions.h>

namespace {
constexpr int kSwatchSize = 14;  // pixels

QVariant objectValue(ZNObject* object)
{
    return QVariant::fromValue(reinterpret_cast<quintptr>(object));
}
} // namespace

ZNObjectTree::ZNObjectTree(QWidget* parent) : QTreeView(parent), m_model(new QStandardItemModel(this))
{
    setObjectName(QStringLiteral("objectTree"));
    setModel(m_model);
    setHeaderHidden(true);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_model, &QStandardItemModel::itemChanged, this, &ZNObjectTree::onItemChanged);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { emit itemSelected(m_model->itemFromIndex(current)); });
    // An edit closed without a change (Escape, or Enter on the same text) ends the
    // renaming; a changed text arrives through itemChanged first.
    connect(itemDelegate(), &QAbstractItemDelegate::closeEditor, this,
            [this] { endRenaming(m_model->itemFromIndex(m_renaming)); });
    connect(this, &QWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
        QStandardItem* item = m_model->itemFromIndex(indexAt(pos));
        if (!item) return;
        QMenu* menu = buildContextMenu(item);
        if (!menu->isEmpty()) menu->exec(viewport()->mapToGlobal(pos));
        delete menu;
    });
}

QStandardItem* ZNObjectTree::addObject(ZNObject* object, const QString& kind, const QString& name,
                                       const QIcon& icon)
{
    auto* item = new QStandardItem(icon, name);
    item->setEditable(false);
    item->setData(objectValue(object), ObjectRole);
    item->setData(core::kNoValue, IdRole);
    item->setData(kind, KindRole);
    m_model->appendRow(item);
    return item;
}

QStandardItem* ZNObjectTree::itemOf(const ZNObject* object) const
{
    for (int row = 0; row < m_model->rowCount(); ++row) {
        QStandardItem* item = m_model->item(row);
        if (objectOf(item) == object) return item;
    }
    return nullptr;
}

void ZNObjectTree::removeObject(const ZNObject* object)
{
    if (QStandardItem* item = itemOf(object)) m_model->removeRow(item->row());
}

ZNObject* ZNObjectTree::objectOf(const QStandardItem* item)
{
    while (item && item->parent()) item = item->parent();
    if (!item) return nullptr;
    return reinterpret_cast<ZNObject*>(item->data(ObjectRole).value<quintptr>());
}

int ZNObjectTree::idOf(const QStandardItem* item)
{
    if (!item) return core::kNoValue;
    bool ok = false;
    const int id = item->data(IdRole).toInt(&ok);
    return ok ? id : core::kNoValue;
}

QString ZNObjectTree::kindOf(const QStandardItem* item)
{
    return item ? item->data(KindRole).toString() : QString();
}

QStandardItem* ZNObjectTree::childWithId(const QStandardItem* parent, int id)
{
    if (!parent) return nullptr;
    for (int row = 0; row < parent->rowCount(); ++row)
        if (idOf(parent->child(row)) == id) return parent->child(row);
    return nullptr;
}

void ZNObjectTree::setChecked(QStandardItem* item, bool checked)
{
    if (!item) return;
    m_settingCheck = true;
    item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    item->setData(checked, ReportedCheckRole);
    m_settingCheck = false;
}

QIcon ZNObjectTree::swatch(const QColor& colour)
{
    QPixmap pixmap(kSwatchSize, kSwatchSize);
    pixmap.fill(colour);
    QPainter painter(&pixmap);
    painter.setPen(QColor(60, 60, 60));
    painter.drawRect(0, 0, kSwatchSize - 1, kSwatchSize - 1);
    return QIcon(pixmap);
}

QStandardItem* ZNObjectTree::currentItem() const
{
    return m_model->itemFromIndex(currentIndex());
}

void ZNObjectTree::selectItem(QStandardItem* item)
{
    if (!item) {
        clearSelection();
        setCurrentIndex(QModelIndex());
        return;
    }
    const QModelIndex index = item->index();
    setCurrentIndex(index);
    scrollTo(index);
}

void ZNObjectTree::renameItem(QStandardItem* item)
{
    if (!item) return;
    m_textBeforeRename = item->text();
    m_settingCheck = true;  // these changes are not the user's
    item->setData(true, RenamingRole);
    item->setEditable(true);
    m_settingCheck = false;
    m_renaming = item->index();
    selectItem(item);
    edit(item->index());
}

void ZNObjectTree::endRenaming(QStandardItem* item)
{
    m_renaming = QPersistentModelIndex();
    if (!item || !item->data(RenamingRole).toBool()) return;
    m_settingCheck = true;
    item->setData(false, RenamingRole);
    item->setEditable(false);
    m_settingCheck = false;
}

QMenu* ZNObjectTree::buildContextMenu(QStandardItem* item)
{
    auto* menu = new QMenu(this);
    emit contextMenuRequested(item, menu);
    return menu;
}

void ZNObjectTree::onItemChanged(QStandardItem* item)
{
    if (m_settingCheck) return;
    if (item->data(RenamingRole).toBool()) {
        const QString text = item->text();
        endRenaming(item);
        if (text == m_textBeforeRename) return;
        m_settingCheck = true;
        item->setText(m_textBeforeRename);  // the owner shows the new name once applied
        m_settingCheck = false;
        emit itemRenamed(item, text);
        return;
    }
    if (!item->isCheckable()) return;
    // itemChanged also fires for text and icon changes: report real toggles only.
    const bool checked = item->checkState() == Qt::Checked;
    const QVariant previous = item->data(ReportedCheckRole);
    if (previous.isValid() && previous.toBool() == checked) return;
    m_settingCheck = true;
    item->setData(checked, ReportedCheckRole);
    m_settingCheck = false;
    emit itemChecked(item, checked);
}
