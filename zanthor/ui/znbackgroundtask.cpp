#include "znbackgroundtask.h"

#include <QCoreApplication>
#include <QThread>

ZNBackgroundTask::ZNBackgroundTask(QObject* parent, std::function<void()> done)
    : QObject(parent), m_done(std::move(done))
{
}

ZNBackgroundTask* ZNBackgroundTask::start(QObject* parent, std::function<void()> work,
                                          std::function<void()> done)
{
    auto* task = new ZNBackgroundTask(parent, std::move(done));
    task->m_thread = QThread::create(std::move(work));
    // QThread::finished is emitted on the worker thread; the queued connection brings the
    // end of the work back to the task's own thread.
    connect(task->m_thread, &QThread::finished, task, &ZNBackgroundTask::onThreadFinished,
            Qt::QueuedConnection);
    task->m_thread->start();
    return task;
}

ZNBackgroundTask::~ZNBackgroundTask()
{
    if (m_thread) {
        m_thread->wait();
        delete m_thread;
    }
}

bool ZNBackgroundTask::isRunning() const
{
    return m_thread && m_thread->isRunning();
}

void ZNBackgroundTask::wait()
{
    if (m_thread) m_thread->wait();
}

void ZNBackgroundTask::moveToCallerThread(QObject* object)
{
    if (object && QCoreApplication::instance())
        object->moveToThread(QCoreApplication::instance()->thread());
}

void ZNBackgroundTask::onThreadFinished()
{
    m_thread->wait();  // finished() is emitted just before the thread really ends
    if (m_done) m_done();
    emit finished();
    deleteLater();
}
