#pragma once
#include <map>
#include <memory>
#include <set>

#include <QObject>
#include <QString>

#include <znfaultpatchmanager.h>

class QUndoStack;
class ZNFaultPickingSession;
class ZN3DFaultPatch;
class ZNObject;

// A fault set open in the studio: the fault set itself, the drawable surface of each of
// its faults, which faults are shown, the file it belongs to, and the history of the
// user's edits (an undo stack). The document owns all of these; views and the object
// tree read them and follow its signals. Used on the GUI thread only.
//
// Faults are named by their fault id (the root patch id of the fault set). A fault's
// surface is the 3D fault patch the fault set makes for it (createPicked3DFaultPatch),
// meshed from its sticks when the file stored no mesh for it.
class FaultSetDocument : public QObject {
    Q_OBJECT
public:
    // Takes `set` and the surfaces made for it (by fault id; missing ones are made and
    // meshed here). `path` is the file the set was read from (empty for a new set);
    // `name` what the studio calls it.
    FaultSetDocument(std::unique_ptr<ZNFaultPatchManager> set,
                     std::map<int, std::unique_ptr<ZN3DFaultPatch>> surfaces, const QString& path,
                     const QString& name, QObject* parent = nullptr);
    ~FaultSetDocument() override;

    ZNFaultPatchManager* faultSet() const { return m_set.get(); }
    QUndoStack* undoStack() const { return m_undo; }
    // The picking front end of this fault set: its edits become steps of the undo stack
    // and remesh the fault they changed.
    ZNFaultPickingSession* pickingSession() const { return m_picking; }
    // History steps the undo stack keeps: each picking edit spans at most two of the fault
    // set's snapshots, which keeps every step restorable within its history limit.
    static constexpr int kUndoLimit = ZNFaultPatchManager::kDefaultHistoryLimit / 2;
    const QString& path() const { return m_path; }
    void setPath(const QString& path);
    const QString& name() const { return m_name; }

    // Unsaved changes: an edit made since the last save (or since opening).
    bool isModified() const;
    // After a save: the present state is the saved one.
    void markSaved();
    // An edit made outside the undo stack (a property edit) makes the document modified.
    void markModified();

    // The faults, in the order of the fault set's descriptor list.
    QList<int> faultIds() const;
    QString faultName(int faultId) const;
    QColor faultColour(int faultId) const;
    // The surface of a fault; null for an id without descriptor. Owned by the document.
    ZN3DFaultPatch* surface(int faultId) const;
    // The fault a surface belongs to; -9999 when it is none of this document's.
    int faultIdOfSurface(const ZNObject* surface) const;

    // The middle of a fault: of its hand-picked points, or of its surface when it has
    // none. False, `centre` untouched, for a fault with neither.
    bool faultCentre(int faultId, core::vec3& centre) const;

    bool isFaultVisible(int faultId) const;
    // Shows or hides faults; returns the previous visibility of each id given.
    std::map<int, bool> setFaultsVisible(const std::map<int, bool>& visible);

    // The model edits behind the undoable commands (FaultCommands); each signals what
    // changed. Renaming an unknown fault or to the same name does nothing (false).
    bool renameFault(int faultId, const QString& name);
    bool removeFault(int faultId, ZNFaultPatchManager::RemovedFault* removed);
    bool restoreFault(const ZNFaultPatchManager::RemovedFault& removed);

    // After the surface of `faultId` changed one of its settings (its property sheet):
    // the fault set's descriptor takes the surface's settings, and with `remesh` the
    // surface takes the fault's picked points and is meshed again.
    void surfaceSettingsChanged(int faultId, bool remesh);
    // After the fault set changed under the surfaces (a picking edit, an undo or redo of
    // its history): a surface is made for every new fault and dropped for every fault
    // gone, and each surface whose fault's hand-picked points changed takes them and is
    // meshed again. Signals what changed.
    void refreshFromFaultSet();

signals:
    // A picking edit was made (after the undo step was recorded and the surface meshed):
    // the host auto-saves here.
    void picked(const QString& action, int faultId);
    // Faults were added, removed or renamed: lists of faults must be rebuilt.
    void faultsChanged();
    // The name, colour or visibility of a fault changed.
    void faultAppearanceChanged(int faultId);
    // The surface of a fault was meshed again.
    void faultGeometryChanged(int faultId);
    void modifiedChanged(bool modified);

private:
    void makeSurface(int faultId);
    // The fault's picked points as its surface takes them.
    core::Array<core::PointWithBool> pointsOf(int faultId) const;
    void onPickingEdit(const QString& action, int faultId, int steps);
    void setDirty(bool dirty);

    std::unique_ptr<ZNFaultPatchManager> m_set;
    std::map<int, std::unique_ptr<ZN3DFaultPatch>> m_surfaces;
    std::set<int> m_hidden;
    QString m_path;
    QString m_name;
    QUndoStack* m_undo;
    ZNFaultPickingSession* m_picking;
    bool m_dirty = false;  // edits outside the undo stack since the last save
};
