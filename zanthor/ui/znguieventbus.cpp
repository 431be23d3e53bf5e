#include "znguieventbus.h"

#include <QDateTime>
#include <QThread>

ZNGuiEventBus::ZNGuiEventBus(ZNMessageLog* log, ZNNotificationArea* notifications)
    : m_log(log), m_notifications(notifications), m_previous(ZNEventBus::install(this))
{
}

ZNGuiEventBus::~ZNGuiEventBus()
{
    ZNEventBus::install(m_previous);
}

void ZNGuiEventBus::message(int kind, const QString& text)
{
    // Stamped when sent, shown when the GUI thread gets to it.
    const QDateTime time = QDateTime::currentDateTime();
    QPointer<ZNMessageLog> log = m_log;
    QPointer<ZNNotificationArea> notifications = m_notifications;
    if (!log) return;
    const bool notify = kind == ZNEventBus::Error && QThread::currentThread() == log->thread();
    QMetaObject::invokeMethod(
        log,
        [log, notifications, kind, text, time, notify] {
            if (log) log->append(kind, text, time);
            if (notify && notifications) notifications->notify(text);
        },
        Qt::AutoConnection);
}
