#pragma once
#include <memory>
#include <vector>

#include <QObject>
#include <QPixmap>
#include <QPointer>

#include <core/array.h>
#include <core/triplet.h>

#include "faultcleaningpairs.h"
#include "faultsetdocument.h"

class ZN3DFaultPatch;

// The host side of the fault cleaning assistant, without a window: the pairs proposed
// for one fault set (see FaultCleaningPairs for what a sign and a score mean), the row
// under review, and the answer to each of the user's gestures on the fault set's
// document. A view (the cleaning dialog) mirrors the rows through the signals and passes
// the gestures on.
//
// Rows follow the dialog's rule: removing a row moves the last one into its place. The
// pairs, the scores and the pictures move together.
//
// Answers:
// - accept merges the current pair: the first fault is kept and takes the second one's
//   patches (fault::mergeFaultsWithHistory, after closing its last stick when needed),
//   as steps of the document's undo stack; the document meshes the kept fault again and
//   drops the other one's surface. The row is removed and the next one made current.
// - refuse removes the row and makes the next one current; the fault set is untouched
//   and the pair does not come back.
// - preview makes the merged surface of the current pair without changing the fault set.
// - undo and redo step the document's undo stack (a merge and the closing of a stick made
//   for it together); a merge undone puts its pair back as the last row, made current,
//   and a merge redone takes it out again.
//
// Fault ids in the rows are those found at detection; the faults shown and merged are the
// faults those ids belong to now. A row whose two ids now belong to one fault, or to a
// fault that was deleted, shows nothing and is removed by accept or refuse.
class FaultCleaningSession : public QObject {
    Q_OBJECT
public:
    FaultCleaningSession(FaultSetDocument* document, FaultCleaningPairs found, QObject* parent = nullptr);
    ~FaultCleaningSession() override;

    // Null once the document was closed; every answer is then refused.
    FaultSetDocument* document() const { return m_document; }

    int rowCount() const { return m_pairs.size(); }
    const core::Array<core::Duplet>& pairs() const { return m_pairs; }
    const core::Array<double>& scores() const { return m_scores; }
    // The picture of row `row`; a null pixmap for a row that does not exist.
    QPixmap pixmap(int row) const;

    // The row under review; -1 when none.
    int currentRow() const { return m_current; }
    // Makes `row` current (any row that does not exist: none) and drops the preview;
    // emits currentChanged when the row changed.
    void setCurrentRow(int row);
    // The faults of the current row as the fault set holds them now (kept first);
    // (-9999, -9999) when no row is current or the row no longer names two faults.
    core::Duplet currentFaults() const;

    // The answers (see the class comment); false when there was nothing to do.
    bool accept();
    bool refuse();
    bool preview();
    bool undo();
    bool redo();

    // The merged surface of the last preview, made for the current row; null when none.
    // Owned by the session until the current row changes or the fault set does.
    const ZN3DFaultPatch* previewSurface() const { return m_preview.get(); }

    // From the undo stack (FaultCleaningCommand): merge `serial` was undone or redone.
    void mergeUndone(int serial);
    void mergeRedone(int serial);

signals:
    // Row `row` was removed: the last row took its place.
    void rowRemoved(int row);
    // A pair came back as row `row`, the last one.
    void rowAdded(int row);
    // The row under review is `row` (-1: none), or its pair changed; show it.
    void currentChanged(int row);
    // A preview was made or dropped.
    void previewChanged();

private:
    struct Row {
        core::Duplet pair;
        double score = 0.0;
        QPixmap pixmap;
    };
    Row rowAt(int row) const;
    void appendRow(const Row& row);
    // Removes `row` by the dialog's rule and makes the row now in its place (or the last
    // one) current.
    void removeRow(int row);
    void makeCurrent(int row);
    void dropPreview();

    QPointer<FaultSetDocument> m_document;
    core::Array<core::Duplet> m_pairs{256};
    core::Array<double> m_scores{256};
    std::vector<QPixmap> m_pixmaps;
    int m_current = -1;
    std::vector<Row> m_merges;  // by serial: the row each merge took out of the list
    std::unique_ptr<ZN3DFaultPatch> m_preview;
};
