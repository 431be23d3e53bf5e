#pragma once
#include <QPointer>

#include <znprocess.h>

class ZNFrame;

// The process services of a host with a frame: the named actions the library posts
// (ZNProcess::sendActionToMdi) reach the frame's handlers (ZNFrame::routeAction), and the
// registry of open objects works as the default one.
//
// An action posted on the frame's thread is routed at once, before sendActionToMdi
// returns. One posted on another thread (a worker running a long operation) is queued to
// the frame's thread and routed there later; its object must then still be registered
// (ZNProcess::exists) when the action arrives, otherwise the action goes with a null
// object, so that no handler ever sees an object that was deleted meanwhile. Listeners
// added with addActionListener are called on the posting thread, as by default.
//
// Installs itself for its lifetime and restores the previous process services after.
class ZNFrameProcess : public ZNProcess {
public:
    explicit ZNFrameProcess(ZNFrame* frame);
    ~ZNFrameProcess() override;
    ZNFrameProcess(const ZNFrameProcess&) = delete;
    ZNFrameProcess& operator=(const ZNFrameProcess&) = delete;

protected:
    void action(const QString& action, ZNObject* object) override;

private:
    QPointer<ZNFrame> m_frame;
    ZNProcess* m_previous;
};
