#pragma once
#include <map>

#include <QString>
#include <QVariant>
#include <QUndoCommand>

#include <znfaultpatchmanager.h>

class FaultSetDocument;

// The undoable edits of a fault set made from the object tree and the menus. Each is
// pushed on its document's undo stack, which applies it (redo) at once; its text is what
// Edit > Undo and Redo say. A command whose edit cannot be made does nothing either way.

// One edit of the fault set's own history (a picking edit): the edit is made when the
// step is recorded, so the first redo does nothing; undo and redo walk the fault set's
// snapshots over the steps the edit spans, then the document follows the fault set.
class FaultSetHistoryCommand : public QUndoCommand {
public:
    FaultSetHistoryCommand(FaultSetDocument* document, const QString& action, int steps);
    void redo() override;
    void undo() override;

private:
    FaultSetDocument* m_document;
    int m_steps;
    bool m_made = true;  // the edit is in effect already: the first redo is the push
};

// Renames one fault.
class RenameFaultCommand : public QUndoCommand {
public:
    RenameFaultCommand(FaultSetDocument* document, int faultId, const QString& name);
    void redo() override;
    void undo() override;

private:
    FaultSetDocument* m_document;
    int m_faultId;
    QString m_name;
    QString m_previous;
};

// Deletes one fault: its descriptor and picked points go, and come back on undo.
class DeleteFaultCommand : public QUndoCommand {
public:
    DeleteFaultCommand(FaultSetDocument* document, int faultId);
    void redo() override;
    void undo() override;

private:
    FaultSetDocument* m_document;
    int m_faultId;
    ZNFaultPatchManager::RemovedFault m_removed;
    bool m_done = false;  // the delete was made, so undo has something to restore
};

// Changes one setting of a fault through its surface's property sheet (its gridding, its
// look): the surface stores it and posts the action it asks for, as an edit in the sheet
// does; undo sets the former value the same way.
class SetFaultPropertyCommand : public QUndoCommand {
public:
    SetFaultPropertyCommand(FaultSetDocument* document, int faultId, const QString& id, const QVariant& value,
                            const QVariant& previous, const QString& label);
    void redo() override;
    void undo() override;

private:
    // True when the surface took the value.
    bool apply(const QVariant& value);

    FaultSetDocument* m_document;
    int m_faultId;
    QString m_id;
    QVariant m_value;
    QVariant m_previous;
};

// Shows and hides faults ("Hide", "Show only this fault", "Show all faults", the tree's
// check boxes).
class SetFaultVisibilityCommand : public QUndoCommand {
public:
    SetFaultVisibilityCommand(FaultSetDocument* document, const std::map<int, bool>& visible,
                              const QString& text);
    void redo() override;
    void undo() override;

private:
    FaultSetDocument* m_document;
    std::map<int, bool> m_visible;
    std::map<int, bool> m_previous;
};
