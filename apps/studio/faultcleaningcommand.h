#pragma once
#include <QPointer>

#include "faultcommands.h"

class FaultCleaningSession;

// A step of the cleaning assistant in its fault set's undo stack: the closing of the kept
// fault's last stick that a merge needed, or the merge itself (see faultmergehistory.h).
// Like every history step it walks the fault set's snapshots on undo and redo; a merge
// also tells the session that made it, while that session lives, so that its pair goes
// back to the list when the merge is undone and leaves it again when it is redone.
class FaultCleaningCommand : public FaultSetHistoryCommand {
public:
    enum class Kind { CloseStick, Merge };

    // `serial` numbers the session's merges: a merge and the closing made for it share it.
    FaultCleaningCommand(FaultSetDocument* document, const QString& text, int steps, Kind kind,
                         FaultCleaningSession* session, int serial);
    void redo() override;
    void undo() override;

    Kind kind() const { return m_kind; }
    // Whether this step belongs to merge `serial` of `session` (a live session).
    bool belongsTo(const FaultCleaningSession* session, int serial) const;
    int serial() const { return m_serial; }

private:
    Kind m_kind;
    QPointer<FaultCleaningSession> m_session;
    int m_serial;
    bool m_pushed = false;  // the push's own redo has run (the merge was made by the session)
};
