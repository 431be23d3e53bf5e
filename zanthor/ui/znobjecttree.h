#pragma once
#include <QIcon>
#include <QStandardItemModel>
#include <QTreeView>

class QMenu;
class ZNObject;

// The object tree of a host: one top-level item per open object (a volume, a fault
// set), with the items its owner adds below it (the faults of a fault set). Items carry
// the object they stand for and an integer id in their roles; an item may be checkable
// (visibility) and show a colour swatch. The tree never owns the objects.
//
// User gestures come out as signals: the current item changed (itemSelected), a check
// box toggled by the user (itemChecked; changes made through setChecked are not
// reported), and a context menu asked for on an item (contextMenuRequested, whose
// receivers fill the menu; an empty menu is not shown).
class ZNObjectTree : public QTreeView {
    Q_OBJECT
public:
    enum Role {
        ObjectRole = Qt::UserRole + 1,  // the ZNObject* the item stands for (top-level items)
        IdRole,                         // an id within the object (a fault id); -9999 for none
        KindRole,                       // a short kind name ("volume", "faultSet", "fault")
        ReportedCheckRole,              // the check state last reported or set (internal)
        RenamingRole,                   // true while the user edits the item's text (internal)
    };

    explicit ZNObjectTree(QWidget* parent = nullptr);

    QStandardItemModel* itemModel() const { return m_model; }

    // A new top-level item for `object`, not editable by a click.
    QStandardItem* addObject(ZNObject* object, const QString& kind, const QString& name,
                             const QIcon& icon = QIcon());
    // The top-level item of `object`; null when there is none.
    QStandardItem* itemOf(const ZNObject* object) const;
    // Removes the item of `object` and everything below it.
    void removeObject(const ZNObject* object);
    // The object an item stands for, walking up to its top-level item; null for none.
    static ZNObject* objectOf(const QStandardItem* item);
    // The id of an item (IdRole); -9999 when it has none.
    static int idOf(const QStandardItem* item);
    static QString kindOf(const QStandardItem* item);
    // A child item of `parent` standing for `id` of its object.
    static QStandardItem* childWithId(const QStandardItem* parent, int id);

    // Sets a checkable item's state without reporting it as the user's.
    void setChecked(QStandardItem* item, bool checked);
    // A square icon filled with `colour`, with a thin dark border: the swatch of a colour.
    static QIcon swatch(const QColor& colour);

    QStandardItem* currentItem() const;
    // Makes `item` current and selected, scrolled into view (null clears the selection).
    void selectItem(QStandardItem* item);

    // Opens the item's text for the user to edit in place; the new text comes out as
    // itemRenamed (nothing when the edit is abandoned or leaves the text as it was), and
    // the item shows its former text until its owner sets the new one.
    void renameItem(QStandardItem* item);

    // A context menu for `item`, filled by the receivers of contextMenuRequested; owned
    // by the caller. The tree shows it on a right click when it is not empty.
    QMenu* buildContextMenu(QStandardItem* item);

signals:
    void itemSelected(QStandardItem* item);
    void itemChecked(QStandardItem* item, bool checked);
    void itemRenamed(QStandardItem* item, const QString& text);
    void contextMenuRequested(QStandardItem* item, QMenu* menu);

private:
    void onItemChanged(QStandardItem* item);
    void endRenaming(QStandardItem* item);

    QString m_textBeforeRename;
    QPersistentModelIndex m_renaming;  // the item being renamed
    QStandardItemModel* m_model;
    bool m_settingCheck = false;  // setChecked is changing a check state
};
