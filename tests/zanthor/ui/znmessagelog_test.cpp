#include <gtest/gtest.h>

#include <thread>

#include <QLabel>
#include <QTest>

#include <znguieventbus.h>
#include <znmessagelog.h>
#include <znnotificationarea.h>

TEST(MessageLog, RowsShowTimeKindAndTextAndTheOldestGoBeyondTheLimit)
{
    ZNMessageLog log;
    log.setMaxRows(3);
    const QDateTime at(QDate(2026, 11, 24), QTime(9, 5, 7));
    for (int kind = 0; kind <= 5; ++kind) log.append(kind, QStringLiteral("m%1").arg(kind), at);
    ASSERT_EQ(log.rowCount(), 3);
    EXPECT_EQ(log.data(log.index(0, ZNMessageLog::TimeColumn)).toString(), "09:05:07");
    const QStringList kinds{log.data(log.index(0, ZNMessageLog::KindColumn)).toString(),
                            log.data(log.index(1, ZNMessageLog::KindColumn)).toString(),
                            log.data(log.index(2, ZNMessageLog::KindColumn)).toString()};
    EXPECT_EQ(kinds, (QStringList{"Progress", "Detail", "Kind 5"}));
    EXPECT_EQ(log.data(log.index(2, ZNMessageLog::TextColumn)).toString(), "m5");
    EXPECT_EQ(ZNMessageLog::kindName(1), "Error");
    EXPECT_EQ(ZNMessageLog::kindName(2), "File error");
    EXPECT_TRUE(log.data(log.index(0, 0), Qt::ForegroundRole).isNull());  // only errors stand out
}

TEST(GuiEventBus, MessagesFromAnyThreadReachTheLogAndErrorsAlsoTheNotifications)
{
    QWidget window;
    window.resize(800, 600);
    ZNMessageLog log;
    ZNNotificationArea notifications(&window);
    {
        ZNGuiEventBus bus(&log, &notifications);
        ZNEventBus::sendMessage(ZNEventBus::Information, "opened");
        ZNEventBus::sendMessage(ZNEventBus::Error, "survey.sgy: truncated");
        EXPECT_EQ(log.rowCount(), 2);  // on the GUI thread: at once
        std::thread worker([] {
            ZNEventBus::sendMessage(ZNEventBus::FileError, "from a worker");
            ZNEventBus::sendMessage(ZNEventBus::Error, "a detail of the worker's failure");
        });
        worker.join();
        ASSERT_TRUE(QTest::qWaitFor([&] { return log.rowCount() == 4; }, 2000));
    }
    EXPECT_EQ(log.entries()[2].kind, ZNEventBus::FileError);
    EXPECT_EQ(log.entries()[3].kind, ZNEventBus::Error);
    // Kind 1 on the GUI thread only: the worker's failure is reported by whoever started it.
    EXPECT_EQ(notifications.shownTexts(), (QStringList{"survey.sgy: truncated"}));
    ZNEventBus::sendMessage(ZNEventBus::Error, "after the bus went");  // the default again
    EXPECT_EQ(log.rowCount(), 4);
}

TEST(NotificationArea, BannersStackUpToTheLimitAndGoByThemselvesOrWhenClicked)
{
    QWidget window;
    window.resize(800, 600);
    window.show();
    ZNNotificationArea area(&window);
    area.setDisplayMs(200);
    for (int i = 1; i <= 6; ++i) area.notify(QStringLiteral("error %1").arg(i));
    EXPECT_EQ(area.shownTexts(), (QStringList{"error 3", "error 4", "error 5", "error 6"}));
    QLabel* banner = nullptr;
    for (QLabel* label : area.findChildren<QLabel*>("notification"))
        if (label->text() == "error 4") banner = label;
    ASSERT_NE(banner, nullptr);
    QTest::mouseClick(banner, Qt::LeftButton);
    EXPECT_EQ(area.shownTexts(), (QStringList{"error 3", "error 5", "error 6"}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return area.shownTexts().isEmpty(); }, 2000));
    EXPECT_FALSE(area.isVisible());
}
