#include <gtest/gtest.h>

#include <QTest>
#include <QThread>

#include <znbackgroundtask.h>

TEST(BackgroundTask, WorkRunsOnItsOwnThreadAndDoneOnTheOwnersWithWhatTheWorkMade)
{
    QObject owner;
    QThread* workThread = nullptr;
    QThread* doneThread = nullptr;
    QObject* made = nullptr;
    bool done = false;
    ZNBackgroundTask::start(
        &owner,
        [&] {
            workThread = QThread::currentThread();
            made = new QObject;  // lives on the worker thread until moved
            ZNBackgroundTask::moveToCallerThread(made);
        },
        [&] {
            doneThread = QThread::currentThread();
            done = true;
        });
    ASSERT_TRUE(QTest::qWaitFor([&] { return done; }, 5000));
    EXPECT_NE(workThread, QThread::currentThread());
    EXPECT_EQ(doneThread, QThread::currentThread());
    EXPECT_EQ(made->thread(), QThread::currentThread());
    delete made;
    QTest::qWait(10);  // the task deletes itself after done
    EXPECT_TRUE(owner.findChildren<ZNBackgroundTask*>().isEmpty());
}

TEST(BackgroundTask, DestroyingTheOwnerWaitsForTheWorkAndSkipsDone)
{
    std::atomic<bool> finished{false};
    bool doneRan = false;
    {
        QObject owner;
        ZNBackgroundTask* task = ZNBackgroundTask::start(
            &owner, [&] { QThread::msleep(100); finished = true; }, [&] { doneRan = true; });
        EXPECT_TRUE(task->isRunning());
    }
    EXPECT_TRUE(finished);
    QTest::qWait(10);
    EXPECT_FALSE(doneRan);
}
