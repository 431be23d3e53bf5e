#include <gtest/gtest.h>

#include <thread>

#include <QPushButton>
#include <QTest>

#include <znguiprogressbarmgr.h>
#include <znprogresspanel.h>

TEST(ProgressPanel, BarsOpenedOnAWorkerShowAsOneTaskWithItsNestedBars)
{
    ZNProgressPanel panel;
    ZNGuiProgressBarMgr manager(&panel);
    int task = -1;
    std::thread worker([&] {
        task = ZNProgressBarMgr::createProgressBar("Extracting faults", 6);
        const int child = ZNProgressBarMgr::createProgressBar("Get Fault Patches", 200, task);
        ZNProgressBarMgr::incrementProgressBar(task, 3);
        ZNProgressBarMgr::incrementProgressBar(child, 50);
    });
    worker.join();
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel.lineTexts().size() == 2; }, 2000));
    EXPECT_EQ(panel.lineTexts(), (QStringList{"Extracting faults  50%", "Get Fault Patches  25%"}));
    EXPECT_EQ(panel.taskCount(), 1);
    EXPECT_TRUE(panel.isVisible() || !panel.isHidden());
    ZNProgressBarMgr::closeProgressBar(task + 1);
    ZNProgressBarMgr::closeProgressBar(task);
    EXPECT_TRUE(QTest::qWaitFor([&] { return panel.taskCount() == 0; }, 2000));
    EXPECT_TRUE(panel.isHidden());
}

TEST(ProgressPanel, CancelStopsTheWholeTaskAndOnlyIt)
{
    ZNProgressPanel panel;
    ZNGuiProgressBarMgr manager(&panel);
    manager.setRefreshMs(0);
    const int task = ZNProgressBarMgr::createProgressBar("Reading SEG-Y", 10);
    const int child = ZNProgressBarMgr::createProgressBar("Meshing faults", 10, task);
    const int other = ZNProgressBarMgr::createProgressBar("Extracting faults", 10);
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel.taskCount() == 2; }, 2000));
    QList<QPushButton*> cancels = panel.findChildren<QPushButton*>("cancelButton");
    ASSERT_EQ(cancels.size(), 2);
    QTest::mouseClick(cancels[0], Qt::LeftButton);
    EXPECT_TRUE(ZNProgressBarMgr::isProgressBarCancelled(task));
    EXPECT_TRUE(ZNProgressBarMgr::isProgressBarCancelled(child));
    EXPECT_FALSE(ZNProgressBarMgr::isProgressBarCancelled(other));
    for (int id : {child, task, other}) ZNProgressBarMgr::closeProgressBar(id);
}

TEST(ProgressPanel, ManyIncrementsFromAWorkerCostTheGuiThreadAFewRedrawsOnly)
{
    ZNProgressPanel panel;
    ZNGuiProgressBarMgr manager(&panel);
    int redraws = 0;
    QObject::connect(&panel, &ZNProgressPanel::activityChanged, [&](bool) { ++redraws; });
    std::thread worker([] {
        const int bar = ZNProgressBarMgr::createProgressBar("Busy", 100000);
        for (int i = 0; i < 100000; ++i) ZNProgressBarMgr::incrementProgressBar(bar);
        ZNProgressBarMgr::closeProgressBar(bar);
    });
    worker.join();
    QElapsedTimer timer;
    timer.start();
    QTest::qWait(200);  // every queued refresh is handled here
    EXPECT_LE(timer.elapsed(), 1000);
    EXPECT_TRUE(panel.isHidden());
    EXPECT_LE(redraws, 2);
}
