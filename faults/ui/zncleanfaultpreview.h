#pragma once
#include <QStringList>
#include <QWidget>

#include <core/array.h>
#include <core/triplet.h>

class QCloseEvent;
class QListWidget;
class QListWidgetItem;
class QPixmap;
class QPushButton;
class QSpacerItem;
class ZN3DViewer;

// The window in which the user reviews, one by one, the pairs of faults proposed for
// merging. It decides nothing: it lists the pairs, holds the two 3D viewers in which the
// host shows the selected pair, and turns every gesture into one named action posted to
// the host (ZNProcess::sendActionToMdi, with no object):
//   the current row changes          "DISPLAY_CLEAN_FAULT_PREVIEW_SELECTED_ITEM"
//   Merge                            "ACCEPT_CLEAN_FAULT_PREVIEW"
//   Skip                             "REFUSE_CLEAN_FAULT_PREVIEW"
//   PREVIEW                          "PREVIEW_CLEAN_FAULT_PREVIEW"
//   undo, redo                       "UNDO_CLEAN_FAULT_PREVIEW", "REDO_CLEAN_FAULT_PREVIEW"
//   Close, or closing the window     "CLOSE_CLEAN_FAULT_PREVIEW" (the parent widget, a
//                                    sub-window holding the dialog, is closed first)
//   destruction                      "UPDATE_WINDOW_MANAGER"
// The host answers through the operations below: it fills the duplet array and the array
// parallel to it, calls updateDupletArray(), sets the rows' pixmaps and selects a row.
//
// Rows. Row r shows duplet r of the array as "a <-> b" with the signs the host stored;
// removing a row moves the last pair into its place (in both arrays), so row order is
// not kept. The meaning of a sign and of the parallel elements is the host's.
class ZNCleanFaultPreview : public QWidget {
    Q_OBJECT
public:
    explicit ZNCleanFaultPreview(QWidget* parent = nullptr);
    // Posts "UPDATE_WINDOW_MANAGER".
    ~ZNCleanFaultPreview() override;

    // Window title and button texts, translated in the context "ZNCleanFaultPreview".
    void retranslateUi();

    // The proposed pairs, one per row; the host fills them and then calls
    // updateDupletArray().
    core::Array<core::Duplet>& getDupletArray() { return m_dupletArray; }
    // Host data kept parallel to the pairs (same length, same removal rule).
    core::Array<double>& getParallelArray() { return m_parallelArray; }

    // Rebuilds the list from the duplet array ("a <-> b" per pair, in array order).
    void updateDupletArray();
    // Empties the list and appends one row per string, in order (icons and the current
    // row are lost).
    void fillWithStringList(const QStringList& rows);
    // For a row 0..count-1: the last element of each array takes its place and the arrays
    // shrink by one. The list is rebuilt in every case.
    void removeItem(int row);
    // The current row's pair with both indices made positive; (-9999, -9999) when no row
    // is current or the row lies beyond the array.
    core::Duplet getCurrentItem() const;
    // The current row; -1 when none.
    int getCurrentIntItem() const;
    // Makes row 0 current and selected (nothing for an empty list).
    void selectFirstItem();
    // Makes the row after the current one current and selected when it exists; at the
    // last row nothing changes.
    void selectNextItem();
    // Makes `row` current and selected when it exists.
    void selectItem(int row);
    // The icon of row `row`, when it exists.
    void setPixmap(int row, QPixmap& pixmap);

    // The host's 3D viewers, left and right; owned by the dialog.
    ZN3DViewer* getLeft3dViewer() const { return m_left3dViewer; }
    ZN3DViewer* getRight3dViewer() const { return m_right3dViewer; }

protected:
    void closeEvent(QCloseEvent* event) override;

private slots:
    void slotListViewClicked(QListWidgetItem* current, QListWidgetItem* previous);
    void acceptButtonClicked();
    void refuseButtonClicked();
    void previewButtonClicked();
    void undoButtonClicked();
    void redoButtonClicked();
    void closeButtonClicked();

private:
    void sendActionToMdiInternal(const QString& action);

    QListWidget* listView;
    QPushButton* acceptButton;
    QPushButton* refuseButton;
    QPushButton* previewButton;
    QPushButton* undoButton;
    QPushButton* redoButton;
    QPushButton* closeButton;
    QSpacerItem* horizontalSpacer;
    ZN3DViewer* m_left3dViewer;
    ZN3DViewer* m_right3dViewer;
    core::Array<core::Duplet> m_dupletArray{256};
    core::Array<double> m_parallelArray{256};
};
