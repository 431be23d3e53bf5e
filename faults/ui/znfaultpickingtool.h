#pragma once
#include <QPointF>
#include <QPointer>

#include <znsectiontool.h>

#include "znfaultpickingsession.h"

// The section viewer's "FAULT_PICKING" mouse mode: the interpreter's gestures go to the
// picking session of the fault set being picked.
// - press, drag, release: a point placed (or a point of the current fault grabbed) and
//   dragged until the button is released;
// - Shift+click, or Delete over a point: that point removed;
// - double-click or Enter: the current stick ended;
// - N: a new fault started.
// Without a session every gesture is left to the viewer's own navigation.
class ZNFaultPickingTool : public ZNSectionTool {
public:
    static QString modeName() { return QStringLiteral("FAULT_PICKING"); }

    void setSession(ZNFaultPickingSession* session) { m_session = session; }
    ZNFaultPickingSession* session() const { return m_session; }

    bool mousePress(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool mouseMove(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool mouseRelease(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool mouseDoubleClick(ZNSectionViewer& viewer, QMouseEvent* event) override;
    bool keyPress(ZNSectionViewer& viewer, QKeyEvent* event) override;

private:
    QPointer<ZNFaultPickingSession> m_session;
    QPointF m_cursor;  // where the mouse was last, for the keys that act there
};
