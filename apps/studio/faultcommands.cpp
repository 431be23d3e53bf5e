#include "faultcommands.h"

#include <QCoreApplication>

#include <zn3dfaultpatch.h>

#include "faultsetdocument.h"

namespace {
QString tr(const char* text)
{
    return QCoreApplication::translate("FaultCommands", text);
}
} // namespace

FaultSetHistoryCommand::FaultSetHistoryCommand(FaultSetDocument* document, const QString& action, int steps)
    : m_document(document), m_steps(steps)
{
    setText(action);
}

void FaultSetHistoryCommand::redo()
{
    if (m_made) {
        m_made = false;
        return;
    }
    core::vec3 focus;
    for (int k = 0; k < m_steps; ++k) m_document->faultSet()->redoWithLastConfiguration(focus);
    m_document->refreshFromFaultSet();
}

void FaultSetHistoryCommand::undo()
{
    core::vec3 focus;
    for (int k = 0; k < m_steps; ++k) m_document->faultSet()->undoWithLastConfiguration(focus);
    m_document->refreshFromFaultSet();
}

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

SetFaultPropertyCommand::SetFaultPropertyCommand(FaultSetDocument* document, int faultId, const QString& id,
                                                 const QVariant& value, const QVariant& previous,
                                                 const QString& label)
    : m_document(document), m_faultId(faultId), m_id(id), m_value(value), m_previous(previous)
{
    setText(tr("Set %1 of Fault \"%2\"").arg(label, document->faultName(faultId)));
}

bool SetFaultPropertyCommand::apply(const QVariant& value)
{
    ZN3DFaultPatch* surface = m_document->surface(m_faultId);
    return surface && surface->updateProperty(m_id, value, nullptr) != ZN3DFaultPatch::PropertyUnchanged;
}

void SetFaultPropertyCommand::redo()
{
    // A value the surface refuses makes no step of the history.
    if (!apply(m_value)) setObsolete(true);
}

void SetFaultPropertyCommand::undo()
{
    apply(m_previous);
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
