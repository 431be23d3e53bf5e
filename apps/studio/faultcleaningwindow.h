#pragma once
#include <memory>
#include <vector>

#include <QMdiSubWindow>
#include <QObject>
#include <QPointer>

#include <core/triplet.h>

#include <zncleanfaultpreview.h>

#include "faultcleaningpairs.h"

class FaultCleaningSession;
class FaultSetDocument;
class ZN3DCameraLink;
class ZN3DObjectDraw;
class ZN3DViewer;
class ZNFrame;

// The cleaning assistant on screen: the cleaning dialog (ZNCleanFaultPreview) in a
// sub-window of the frame, driven by a FaultCleaningSession over one fault set.
//
// The dialog's actions reach the frame's handlers, added here for the window's lifetime,
// and are answered through the session. What the session changes is mirrored in the
// dialog with its own operations (removeItem, so both keep the same arrays; the pictures
// as row icons; the current row) and in its two viewers: the left one shows the first
// fault of the current pair in orange with the second faint for context, the right one
// the second in blue with the first faint (a wireframe), each with its own sticks; a preview shows the
// merged surface in purple in both. Both viewers share one camera, set across the pair's
// plane and fitted to it whenever another pair comes up.
//
// "CLOSE_CLEAN_FAULT_PREVIEW" closes the sub-window (the dialog goes with it) and emits
// closed(); the owner then deletes this object. Closing the document closes it too.
class FaultCleaningWindow : public QObject {
    Q_OBJECT
public:
    FaultCleaningWindow(ZNFrame* frame, FaultSetDocument* document, FaultCleaningPairs found,
                        QObject* parent = nullptr);
    ~FaultCleaningWindow() override;

    FaultCleaningSession* session() const { return m_session.get(); }
    // Null once the window was closed.
    ZNCleanFaultPreview* dialog() const { return m_dialog; }

signals:
    void closed();

private:
    void addHandler(const char* action, void (FaultCleaningWindow::*answer)());
    void onDisplay();
    void onAccept();
    void onRefuse();
    void onPreview();
    void onUndo();
    void onRedo();
    void onClose();
    void onRowRemoved(int row);
    void onRowAdded(int row);
    void onCurrentChanged(int row);
    void setRowIcons();
    // Fills both viewers with the current pair (or its preview); for a pair not shown
    // before, also turns the camera across the pair's plane and fits it.
    void showPair();
    // A drawable of `source`'s mesh in `colour` (transparency 0 transparent .. 1 opaque),
    // owned here until the next pair.
    const ZN3DObjectDraw* copyOf(const ZN3DObjectDraw* source, const QColor& colour, float transparency);

    ZNFrame* m_frame;
    std::unique_ptr<FaultCleaningSession> m_session;
    QPointer<ZNCleanFaultPreview> m_dialog;
    QPointer<QMdiSubWindow> m_subWindow;
    ZN3DCameraLink* m_link;
    std::vector<int> m_handlers;
    std::vector<std::unique_ptr<ZN3DObjectDraw>> m_drawables;
    core::Duplet m_fitted{-9999, -9999};  // the faults the camera was last fitted to
    bool m_mirroring = false;            // the dialog is being updated: its own actions are echoes
    bool m_closing = false;
};
