#include "znfaultpickingtool.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <znsectionviewer.h>

bool ZNFaultPickingTool::mousePress(ZNSectionViewer& viewer, QMouseEvent* event)
{
    m_cursor = event->localPos();
    if (!m_session || event->button() != Qt::LeftButton) return false;
    ZNSeismicViewerAbstractEngine& engine = viewer.engine();
    if (event->modifiers() & Qt::ShiftModifier) {
        m_session->removeNear(event->localPos(), engine);
        return true;
    }
    if (event->modifiers() != Qt::NoModifier) return false;  // Ctrl+click: the reference point
    m_session->press(engine.viewportToWorld(event->localPos()), event->localPos(), engine);
    viewer.update();
    return true;
}

bool ZNFaultPickingTool::mouseMove(ZNSectionViewer& viewer, QMouseEvent* event)
{
    m_cursor = event->localPos();
    if (!m_session || !m_session->isDragging()) return false;
    m_session->drag(viewer.engine().viewportToWorld(event->localPos()), viewer.engine());
    viewer.update();
    return true;
}

bool ZNFaultPickingTool::mouseRelease(ZNSectionViewer& viewer, QMouseEvent* event)
{
    if (!m_session || !m_session->isDragging() || event->button() != Qt::LeftButton) return false;
    m_session->release(viewer.engine());
    viewer.update();
    return true;
}

bool ZNFaultPickingTool::mouseDoubleClick(ZNSectionViewer&, QMouseEvent* event)
{
    if (!m_session || event->button() != Qt::LeftButton) return false;
    m_session->endStick();
    return true;
}

bool ZNFaultPickingTool::keyPress(ZNSectionViewer& viewer, QKeyEvent* event)
{
    if (!m_session) return false;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter: m_session->endStick(); return true;
    case Qt::Key_N: m_session->newFault(); return true;
    case Qt::Key_Delete:
    case Qt::Key_Backspace: m_session->removeNear(m_cursor, viewer.engine()); return true;
    default: return false;
    }
}
