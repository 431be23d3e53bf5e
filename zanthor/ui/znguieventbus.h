#pragma once
#include <QPointer>

#include <zneventbus.h>

#include "znmessagelog.h"
#include "znnotificationarea.h"

// The event bus of a host with a GUI: every message goes to the message log, and errors
// shown to the user (kind 1) sent on the GUI thread also to a non-blocking notification.
// Messages sent from any thread are brought to the GUI thread; the sender never waits.
// Errors sent from other threads are details of background work whose outcome the code
// that started it reports on the GUI thread: they go to the log only, so that one failed
// operation is notified once. Installs itself for its
// lifetime and restores the previous bus after. The log and the notification area are
// not owned.
class ZNGuiEventBus : public ZNEventBus {
public:
    ZNGuiEventBus(ZNMessageLog* log, ZNNotificationArea* notifications);
    ~ZNGuiEventBus() override;
    ZNGuiEventBus(const ZNGuiEventBus&) = delete;
    ZNGuiEventBus& operator=(const ZNGuiEventBus&) = delete;

protected:
    void message(int kind, const QString& text) override;

private:
    QPointer<ZNMessageLog> m_log;
    QPointer<ZNNotificationArea> m_notifications;
    ZNEventBus* m_previous;
};
