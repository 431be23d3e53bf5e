#include "znframeprocess.h"

#include <QThread>

#include "znframe.h"

ZNFrameProcess::ZNFrameProcess(ZNFrame* frame)
    : m_frame(frame), m_previous(ZNProcess::install(this))
{
}

ZNFrameProcess::~ZNFrameProcess()
{
    ZNProcess::install(m_previous);
}

void ZNFrameProcess::action(const QString& name, ZNObject* object)
{
    ZNProcess::action(name, object);  // the listeners
    ZNFrame* frame = m_frame.data();
    if (!frame) return;
    if (QThread::currentThread() == frame->thread()) {
        frame->routeAction(name, object);
        return;
    }
    QPointer<ZNFrame> target(frame);
    QMetaObject::invokeMethod(
        frame,
        [target, name, object] {
            if (!target) return;
            target->routeAction(name, object && ZNProcess::exists(object) ? object : nullptr);
        },
        Qt::QueuedConnection);
}
