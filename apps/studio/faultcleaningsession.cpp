#include "faultcleaningsession.h"

#include <cstdlib>

#include <QUndoStack>

#include <core/conventions.h>
#include <faultmergehistory.h>
#include <zn3dfaultpatch.h>
#include <znfaultpatchmanager.h>

#include "faultcleaningcommand.h"
#include "faultsetdocument.h"

namespace {

const QString kEndStick = QStringLiteral("End Stick");      // the fault set's own action names
const QString kMergeFaults = QStringLiteral("Merge Faults");

const FaultCleaningCommand* cleaningCommand(const QUndoStack* stack, int index)
{
    return dynamic_cast<const FaultCleaningCommand*>(stack->command(index));
}

} // namespace

FaultCleaningSession::FaultCleaningSession(FaultSetDocument* document, FaultCleaningPairs found, QObject* parent)
    : QObject(parent), m_document(document)
{
    m_pairs.swap(found.pairs);
    m_scores.swap(found.scores);
    m_scores.resize(m_pairs.size());
    m_pixmaps.reserve(static_cast<std::size_t>(m_pairs.size()));
    for (int row = 0; row < m_pairs.size(); ++row)
        m_pixmaps.push_back(row < int(found.pictures.size()) ? QPixmap::fromImage(found.pictures[std::size_t(row)])
                                                              : QPixmap());
    // Any step of the document's history may change the faults of the current row.
    if (document) connect(document->undoStack(), &QUndoStack::indexChanged, this, [this] { makeCurrent(m_current); });
}

FaultCleaningSession::~FaultCleaningSession() = default;

QPixmap FaultCleaningSession::pixmap(int row) const
{
    return row >= 0 && row < rowCount() ? m_pixmaps[std::size_t(row)] : QPixmap();
}

// ----- rows -----

FaultCleaningSession::Row FaultCleaningSession::rowAt(int row) const
{
    return {m_pairs[row], m_scores[row], m_pixmaps[std::size_t(row)]};
}

void FaultCleaningSession::appendRow(const Row& row)
{
    m_pairs.add(row.pair);
    m_scores.add(row.score);
    m_pixmaps.push_back(row.pixmap);
    emit rowAdded(rowCount() - 1);
}

void FaultCleaningSession::removeRow(int row)
{
    const int last = rowCount() - 1;
    if (row < 0 || row > last) return;
    m_pairs[row] = m_pairs[last];
    m_scores[row] = m_scores[last];
    m_pixmaps[std::size_t(row)] = m_pixmaps[std::size_t(last)];
    m_pairs.resize(last);
    m_scores.resize(last);
    m_pixmaps.pop_back();
    emit rowRemoved(row);
    makeCurrent(row < last ? row : last - 1);
}

void FaultCleaningSession::setCurrentRow(int row)
{
    const int current = row >= 0 && row < rowCount() ? row : -1;
    if (current != m_current) makeCurrent(current);
}

void FaultCleaningSession::makeCurrent(int row)
{
    m_current = row >= 0 && row < rowCount() ? row : -1;
    dropPreview();
    emit currentChanged(m_current);
}

core::Duplet FaultCleaningSession::currentFaults() const
{
    const core::Duplet none(core::kNoValue, core::kNoValue);
    if (!m_document || m_current < 0) return none;
    const ZNFaultPatchManager& set = *m_document->faultSet();
    const int kept = presentFault(set, std::abs(m_pairs[m_current].a));
    const int absorbed = presentFault(set, std::abs(m_pairs[m_current].b));
    if (kept == core::kNoValue || absorbed == core::kNoValue || kept == absorbed) return none;
    return core::Duplet(kept, absorbed);
}

// ----- answers -----

bool FaultCleaningSession::accept()
{
    const int row = m_current;
    if (!m_document || row < 0) return false;
    const core::Duplet faults = currentFaults();
    if (faults.a == core::kNoValue) {
        removeRow(row);  // nothing left to merge
        return false;
    }
    ZNFaultPatchManager& set = *m_document->faultSet();
    QUndoStack* stack = m_document->undoStack();
    const QString kept = m_document->faultName(faults.a);
    const QString absorbed = m_document->faultName(faults.b);
    const int serial = static_cast<int>(m_merges.size());
    m_merges.push_back(rowAt(row));
    using Kind = FaultCleaningCommand::Kind;
    if (const int steps = fault::closeLastStickWithHistory(set, faults.a, kEndStick))
        stack->push(new FaultCleaningCommand(m_document, tr("End Stick of Fault \"%1\"").arg(kept), steps,
                                             Kind::CloseStick, this, serial));
    const int steps = fault::mergeFaultsWithHistory(set, faults.a, faults.b, kMergeFaults);
    stack->push(new FaultCleaningCommand(m_document, tr("Merge Faults \"%1\" and \"%2\"").arg(kept, absorbed),
                                         steps, Kind::Merge, this, serial));
    m_document->refreshFromFaultSet();
    removeRow(row);
    return true;
}

bool FaultCleaningSession::refuse()
{
    if (m_current < 0) return false;
    removeRow(m_current);
    return true;
}

bool FaultCleaningSession::preview()
{
    const core::Duplet faults = currentFaults();
    if (faults.a == core::kNoValue) return false;
    ZNFaultPatchManager& set = *m_document->faultSet();
    core::Array<core::PointWithBool> points(1024), second(1024);
    set.getFaultPickedPointArray(faults.a, points);
    if (fault::mergeNeedsClosedStick(set, faults.a)) points.add(core::PointWithBool::separator());
    set.getFaultPickedPointArray(faults.b, second);
    for (const core::PointWithBool& p : second) points.add(p);
    auto surface = std::make_unique<ZN3DFaultPatch>(set.getBlocSpace(), nullptr, set.getUnitObject(faults.a));
    surface->setDescriptor(*set.findFaultLight(faults.a));
    surface->setPickedPoints(points);
    surface->updateMeshWithPickedPoint();
    m_preview = std::move(surface);
    emit previewChanged();
    return true;
}

void FaultCleaningSession::dropPreview()
{
    if (!m_preview) return;
    m_preview.reset();
    emit previewChanged();
}

bool FaultCleaningSession::undo()
{
    if (!m_document || !m_document->undoStack()->canUndo()) return false;
    QUndoStack* stack = m_document->undoStack();
    const FaultCleaningCommand* top = cleaningCommand(stack, stack->index() - 1);
    stack->undo();
    if (top && top->kind() == FaultCleaningCommand::Kind::Merge && top->belongsTo(this, top->serial())) {
        const FaultCleaningCommand* below = cleaningCommand(stack, stack->index() - 1);
        if (below && below->kind() == FaultCleaningCommand::Kind::CloseStick && below->belongsTo(this, top->serial()))
            stack->undo();
    }
    return true;
}

bool FaultCleaningSession::redo()
{
    if (!m_document || !m_document->undoStack()->canRedo()) return false;
    QUndoStack* stack = m_document->undoStack();
    const FaultCleaningCommand* next = cleaningCommand(stack, stack->index());
    stack->redo();
    if (next && next->kind() == FaultCleaningCommand::Kind::CloseStick && next->belongsTo(this, next->serial())) {
        const FaultCleaningCommand* merge = cleaningCommand(stack, stack->index());
        if (merge && merge->kind() == FaultCleaningCommand::Kind::Merge && merge->belongsTo(this, next->serial()))
            stack->redo();
    }
    return true;
}

void FaultCleaningSession::mergeUndone(int serial)
{
    if (serial < 0 || serial >= int(m_merges.size())) return;
    appendRow(m_merges[std::size_t(serial)]);
    makeCurrent(rowCount() - 1);
}

void FaultCleaningSession::mergeRedone(int serial)
{
    if (serial < 0 || serial >= int(m_merges.size())) return;
    const int row = m_pairs.indexOf(m_merges[std::size_t(serial)].pair);
    if (row >= 0) removeRow(row);
    else makeCurrent(m_current);  // the faults changed under the current row
}
