#pragma once
#include <QObject>

class FaultSetDocument;
class QMenu;
class QStandardItem;
class StudioProject;
class ZNObjectTree;
class ZNVolume;

// Keeps the object tree in step with the studio's project: one item per volume and per
// fault set, the faults of each fault set below it (name, colour, visibility), and turns
// the user's gestures on the tree into undoable edits of the documents: the visibility
// check boxes, and the fault menu's "Show Only This Fault", "Hide", "Show", "Show All
// Faults", "Rename", "Delete" and "Properties". The menus of volumes and fault sets get
// the window's own actions through the signals below.
class StudioTree : public QObject {
    Q_OBJECT
public:
    StudioTree(ZNObjectTree* tree, StudioProject* project, QObject* parent = nullptr);

    ZNObjectTree* tree() const { return m_tree; }
    // The item of a fault; null when it is not in the tree.
    QStandardItem* faultItem(const FaultSetDocument* document, int faultId) const;
    QStandardItem* faultSetItem(const FaultSetDocument* document) const;
    QStandardItem* volumeItem(const ZNVolume* volume) const;
    // Makes the fault's item current (which selects it everywhere).
    void selectFault(const FaultSetDocument* document, int faultId);

    // The fault menu's entries, as they read.
    static QString showOnlyText();
    static QString hideText();
    static QString showText();
    static QString showAllText();
    static QString renameText();
    static QString deleteText();
    static QString propertiesText();
    static QString centreText();

signals:
    // The current item is a fault (faultId) or a fault set (faultId -9999); null document
    // for anything else.
    void faultSelected(FaultSetDocument* document, int faultId);
    void volumeSelected(ZNVolume* volume);
    // "Properties" of a fault: the window shows its property sheet.
    void propertiesRequested(FaultSetDocument* document, int faultId);
    // "Centre Views on It" of a fault.
    void centreRequested(FaultSetDocument* document, int faultId);
    // Filling the menu of a fault set or of a volume (after the tree's own entries).
    void faultSetMenuRequested(FaultSetDocument* document, QMenu* menu);
    // Filling the menu of a fault (after the tree's own entries).
    void faultMenuRequested(FaultSetDocument* document, int faultId, QMenu* menu);
    void volumeMenuRequested(ZNVolume* volume, QMenu* menu);

private:
    void addFaultSet(FaultSetDocument* document);
    void refillFaults(FaultSetDocument* document);
    void updateFault(FaultSetDocument* document, int faultId);
    void fillFaultMenu(FaultSetDocument* document, int faultId, QMenu* menu);
    void onItemSelected(QStandardItem* item);
    void onItemChecked(QStandardItem* item, bool checked);
    void onItemRenamed(QStandardItem* item, const QString& text);
    void onContextMenu(QStandardItem* item, QMenu* menu);
    FaultSetDocument* documentOfItem(const QStandardItem* item) const;

    ZNObjectTree* m_tree;
    StudioProject* m_project;
};
