#include "faultcleaningcommand.h"

#include "faultcleaningsession.h"

FaultCleaningCommand::FaultCleaningCommand(FaultSetDocument* document, const QString& text, int steps,
                                           Kind kind, FaultCleaningSession* session, int serial)
    : FaultSetHistoryCommand(document, text, steps), m_kind(kind), m_session(session), m_serial(serial)
{
}

void FaultCleaningCommand::redo()
{
    FaultSetHistoryCommand::redo();
    if (!m_pushed) {
        m_pushed = true;
        return;
    }
    if (m_kind == Kind::Merge && m_session) m_session->mergeRedone(m_serial);
}

void FaultCleaningCommand::undo()
{
    FaultSetHistoryCommand::undo();
    if (m_kind == Kind::Merge && m_session) m_session->mergeUndone(m_serial);
}

bool FaultCleaningCommand::belongsTo(const FaultCleaningSession* session, int serial) const
{
    return session && m_session == session && m_serial == serial;
}
