#include <gtest/gtest.h>

#include <thread>

#include <QDockWidget>
#include <QLabel>
#include <QMdiArea>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <znframe.h>
#include <znframeprocess.h>
#include <znobject.h>
#include <znprocess.h>

namespace {
class Named : public ZNObject {
public:
    QString getZNObjectType() const override { return QStringLiteral("Named"); }
};
} // namespace

TEST(Frame, ActionsReachTheirHandlersInTheOrderTheyWereAdded)
{
    ZNFrame frame(QStringLiteral("FrameTest"));
    QStringList calls;
    Named object;
    frame.addActionHandler("UPDATE_FAULT_MESH", [&](ZNObject* o) { calls << (o == &object ? "mesh 1" : "?"); });
    const int second = frame.addActionHandler("UPDATE_FAULT_MESH", [&](ZNObject*) { calls << "mesh 2"; });
    frame.addActionHandler("UPDATE_FAULT_LIGHT", [&](ZNObject*) { calls << "light"; });
    EXPECT_EQ(frame.routeAction("UPDATE_FAULT_MESH", &object), 2);
    EXPECT_EQ(frame.routeAction("NOBODY_HANDLES_THIS", &object), 0);
    frame.removeActionHandler(second);
    EXPECT_EQ(frame.routeAction("UPDATE_FAULT_MESH", &object), 1);
    EXPECT_EQ(calls, (QStringList{"mesh 1", "mesh 2", "mesh 1"}));
    EXPECT_EQ(frame.actionHandlerCount("UPDATE_FAULT_LIGHT"), 1);
}

TEST(Frame, AHandlerMayAddOrRemoveHandlersWhileAnActionIsRouted)
{
    ZNFrame frame(QStringLiteral("FrameTest"));
    int later = 0;
    int self = 0;
    self = frame.addActionHandler("A", [&](ZNObject*) {
        frame.removeActionHandler(self);
        frame.addActionHandler("A", [&](ZNObject*) { ++later; });
    });
    EXPECT_EQ(frame.routeAction("A", nullptr), 1);
    EXPECT_EQ(later, 0);  // added during the routing: from the next action on
    EXPECT_EQ(frame.routeAction("A", nullptr), 1);
    EXPECT_EQ(later, 1);
}

TEST(FrameProcess, ActionsPostedOnTheGuiThreadAreRoutedAtOnceAndFromWorkersLaterOnTheGuiThread)
{
    ZNFrame frame(QStringLiteral("FrameTest"));
    ZNFrameProcess process(&frame);
    Named kept;
    ZNProcess::insertProcessObject(&kept);
    QList<QPair<ZNObject*, bool>> seen;  // object, on the GUI thread
    frame.addActionHandler("UPDATE_FAULT_LIGHT", [&](ZNObject* o) {
        seen << qMakePair(o, QThread::currentThread() == frame.thread());
    });

    ZNProcess::sendActionToMdi("UPDATE_FAULT_LIGHT", &kept);
    ASSERT_EQ(seen.size(), 1);  // synchronous

    auto* gone = new Named;
    ZNProcess::insertProcessObject(gone);
    std::thread worker([&] {
        ZNProcess::sendActionToMdi("UPDATE_FAULT_LIGHT", &kept);
        ZNProcess::sendActionToMdi("UPDATE_FAULT_LIGHT", gone);
    });
    worker.join();
    ZNProcess::removeProcessObject(gone);  // deleted before the GUI thread gets to it
    delete gone;
    EXPECT_EQ(seen.size(), 1);  // queued, not yet routed
    ASSERT_TRUE(QTest::qWaitFor([&] { return seen.size() == 3; }, 2000));
    EXPECT_EQ(seen[1], qMakePair(static_cast<ZNObject*>(&kept), true));
    EXPECT_EQ(seen[2], qMakePair(static_cast<ZNObject*>(nullptr), true));
    ZNProcess::removeProcessObject(&kept);
}

TEST(FrameProcess, TheFrameProcessIsInstalledForItsLifetimeOnly)
{
    ZNFrame frame(QStringLiteral("FrameTest"));
    int routed = 0;
    frame.addActionHandler("A", [&](ZNObject*) { ++routed; });
    {
        ZNFrameProcess process(&frame);
        ZNProcess::sendActionToMdi("A", nullptr);
    }
    ZNProcess::sendActionToMdi("A", nullptr);
    EXPECT_EQ(routed, 1);
}

TEST(Frame, SubWindowsDocksAndTheWindowMenu)
{
    ZNFrame frame(QStringLiteral("FrameTest"));
    frame.addDock("logDock", "Messages", new QLabel("log"), Qt::BottomDockWidgetArea);
    frame.addSubWindow(new QLabel("one"), "Inline 100");
    frame.addSubWindow(new QLabel("two"), "3D view");
    EXPECT_EQ(frame.subWindowTitles(), (QStringList{"Inline 100", "3D view"}));

    QSignalSpy changed(&frame, &ZNFrame::windowsChanged);
    frame.routeAction("UPDATE_WINDOW_MANAGER", nullptr);
    EXPECT_EQ(changed.count(), 1);
    QStringList entries;
    for (QAction* a : frame.windowMenu()->actions())
        if (!a->isSeparator()) entries << a->text();
    EXPECT_EQ(entries, (QStringList{"&Tile", "&Cascade", "Ta&bbed", "Messages", "Inline 100", "3D view"}));

    frame.setViewMode(ZNFrame::ViewMode::Tabbed);
    EXPECT_EQ(frame.mdiArea()->viewMode(), QMdiArea::TabbedView);
    frame.setViewMode(ZNFrame::ViewMode::Cascaded);
    EXPECT_EQ(frame.mdiArea()->viewMode(), QMdiArea::SubWindowView);
}

TEST(Frame, TheLayoutIsKeptInTheSettingsAndRestored)
{
    {
        ZNFrame frame(QStringLiteral("LayoutTest"));
        EXPECT_FALSE(frame.restoreLayout());  // nothing saved yet
        frame.resize(700, 500);
        frame.setViewMode(ZNFrame::ViewMode::Tabbed);
        frame.saveLayout();
    }
    ZNFrame again(QStringLiteral("LayoutTest"));
    EXPECT_TRUE(again.restoreLayout());
    EXPECT_EQ(again.viewMode(), ZNFrame::ViewMode::Tabbed);
    EXPECT_EQ(again.size(), QSize(700, 500));
}

TEST(Frame, LocalFilesDroppedOnTheWindowAreAnnounced)
{
    ZNFrame frame(QStringLiteral("FrameTest"));
    QSignalSpy dropped(&frame, &ZNFrame::filesDropped);
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile("/data/a.faultset"), QUrl("https://example.org/b.sgy"),
                  QUrl::fromLocalFile("/data/c.sgy")});
    QDragEnterEvent enterWithFiles(QPoint(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&frame, &enterWithFiles);
    EXPECT_TRUE(enterWithFiles.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&frame, &drop);
    ASSERT_EQ(dropped.count(), 1);
    EXPECT_EQ(dropped[0][0].toStringList(), (QStringList{"/data/a.faultset", "/data/c.sgy"}));

    QMimeData text;
    text.setText("not files");
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&frame, &enter);
    EXPECT_FALSE(enter.isAccepted());
}
