#include "faultcommands.h"

#include <QCoreApplication>

#include "faultsetdocument.h"

namespace {
QString tr(const char* text)
{
    return QCoreApplication::translate("FaultCommands", text);
}
} // namespace

RenameFaultCommand::RenameFaultCommand(FaultSetDocument* document, int faultId, const QString& name)
    : m_document(document), m_faultId(faultId), m_name(name), m_previous(document->faultName(faultId))
{
    setText(tr("Rename Fault \"%1\"").arg(m_previous));
}

void RenameFaultCommand::redo()
{
    m_document->renameFault(m_faultId, m_name);
}

void RenameFaultCommand::undo()
{
    m_document->renameFault(m_faultId, m_previous);
}

DeleteFaultCommand::DeleteFaultCommand(FaultSetDocument* document, int faultId)
    : m_document(document), m_faultId(faultId)
{
    setText(tr("Delete Fault \"%1\"").arg(document->faultName(faultId)));
}

void DeleteFaultCommand::redo()
{
    m_done = m_document->removeFault(m_faultId, &m_removed);
}

void DeleteFaultCommand::undo()
{
    if (m_done) m_document->restoreFault(m_removed);
    m_done = false;
}

SetFaultVisibilityCommand::SetFaultVisibilityCommand(FaultSetDocument* document,
                                                     const std::map<int, bool>& visible,
                                                     const QString& text)
    : m_document(document), m_visible(visible)
{
    setText(text);
}

void SetFaultVisibilityCommand::redo()
{
    m_previous = m_document->setFaultsVisible(m_visible);
}

void SetFaultVisibilityCommand::undo()
{
    m_document->setFaultsVisible(m_previous);
}
