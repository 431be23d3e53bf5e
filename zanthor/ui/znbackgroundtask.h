#pragma once
#include <functional>

#include <QObject>
#include <QPointer>

class QThread;

// Runs one piece of long work (a file read, an extraction) on a thread of its own, so
// that the GUI thread never waits for it, and tells its owner when it is done.
//
// The work must only touch objects that no other thread touches while it runs: it
// creates what it returns, and hands it over in `done`, which runs on the thread of the
// task object (the GUI thread) once the work has returned. QObjects the work creates
// live on the worker thread until moved: move them with moveToCallerThread() before the
// work returns. Progress and cancel go through the host's progress bars as everywhere.
//
// The task deletes itself after `done` has run. Destroying the owner (the parent) while
// the work runs waits for it to end, so nothing the work refers to may depend on the
// owner's own members having been destroyed first; callers cancel through the progress
// bars before.
class ZNBackgroundTask : public QObject {
    Q_OBJECT
public:
    // Starts `work` on a new thread; `done` runs afterwards on `parent`'s thread. Returns
    // the running task, owned by `parent`.
    static ZNBackgroundTask* start(QObject* parent, std::function<void()> work,
                                   std::function<void()> done);
    ~ZNBackgroundTask() override;

    bool isRunning() const;
    // Blocks until the work has returned (not until `done` has run). For shutdown and
    // tests only: the GUI thread must not wait for work otherwise.
    void wait();

    // Moves `object` (created by the work, on the worker thread) to the thread of the
    // application's main object, so that the GUI thread may use it. Call it from the work.
    static void moveToCallerThread(QObject* object);

signals:
    // Emitted on the task's thread after `done` has run, just before the task is deleted.
    void finished();

private:
    ZNBackgroundTask(QObject* parent, std::function<void()> done);
    void onThreadFinished();

    QThread* m_thread = nullptr;
    std::function<void()> m_done;
};
