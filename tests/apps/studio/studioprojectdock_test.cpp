// The project dock: a folder's volumes and fault sets (with their faults' names), opened
// by a double click or by a drag onto the window, and kept in step with the folder.
#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMimeData>
#include <QTreeView>

#include <znprojectbrowseritem.h>
#include <znprojectbrowsermodel.h>
#include <znsectionview.h>
#include <znsectionviewer.h>

#include "studioprojectdock.h"
#include "studioviews.h"
#include "studiotestfixture.h"

namespace {

QString data(const QString& relative)
{
    return QStringLiteral(KORVALITH_TEST_DATA_DIR "/") + relative;
}

class StudioProjectDockTest : public StudioTest {
protected:
    void SetUp() override
    {
        StudioTest::SetUp();
        ASSERT_TRUE(QFile::copy(data("segy/small.sgy"), path("small.sgy")));
        ASSERT_TRUE(QFile::copy(data("faultset/valid_3d.faultset"), path("picks.faultset")));  // F1 (1), North (3)
        ASSERT_TRUE(QFile::copy(data("segy/README.md"), path("notes.md")));
        dock()->setFolder(dir.path());
    }

    StudioProjectDock* dock() const { return window->projectDock(); }
    ZNProjectBrowserModel* model() const { return dock()->model(); }
    QString path(const QString& name) const { return QDir(dir.path()).absoluteFilePath(name); }

    // The branch titled `title`.
    QStandardItem* branch(const QString& title) const
    {
        const QList<QStandardItem*> found = model()->findItems(title);
        return found.isEmpty() ? nullptr : found.first();
    }
    QStandardItem* fileItem(const QString& name) const
    {
        const QModelIndexList found = model()->match(model()->index(0, 0), ZNProjectBrowserItem::PathRole, path(name), 1,
                                                     Qt::MatchFlags(Qt::MatchExactly | Qt::MatchRecursive));
        return found.isEmpty() ? nullptr : model()->itemFromIndex(found.first());
    }
    static QStringList childTexts(const QStandardItem* item)
    {
        QStringList texts;
        for (int row = 0; item && row < item->rowCount(); ++row) texts << item->child(row)->text();
        return texts;
    }
    // Waits until the fault set file `name` lists `names`.
    bool waitForNames(const QString& name, const QStringList& names)
    {
        return QTest::qWaitFor([&] { return childTexts(fileItem(name)) == names; }, 20000);
    }
    // A double click on `item`, as the user makes it.
    void doubleClick(QStandardItem* item)
    {
        QTreeView* view = dock()->view();
        view->scrollTo(item->index());
        const QPoint at = view->visualRect(item->index()).center();
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    }
};

} // namespace

TEST_F(StudioProjectDockTest, TheFolderShowsItsVolumesAndFaultSetsWithTheirFaultsNames)
{
    QStringList fileMenu;
    for (const QAction* action : window->findChild<QMenu*>("fileMenu")->actions()) fileMenu << action->text();
    EXPECT_TRUE(fileMenu.contains("Open &Project Folder..."));

    EXPECT_EQ(dock()->folder(), QDir(dir.path()).absolutePath());
    EXPECT_EQ(childTexts(branch("Volumes")), QStringList{"small.sgy"});
    EXPECT_EQ(childTexts(branch("Fault Sets")), QStringList{"picks.faultset"});
    ASSERT_TRUE(waitForNames("picks.faultset", {"F1", "North"}));
    EXPECT_TRUE(logTexts(3).contains("Project browser: fill fault names of fault set " + path("picks.faultset")));
    EXPECT_TRUE(window->project()->faultSets().isEmpty());  // listed, not opened
}

TEST_F(StudioProjectDockTest, ADoubleClickOpensAVolumeOrAFaultSet)
{
    doubleClick(fileItem("small.sgy"));
    doubleClick(fileItem("picks.faultset"));
    ASSERT_TRUE(waitForTasks());
    EXPECT_EQ(window->project()->volumes().size(), 1);
    ASSERT_EQ(window->project()->faultSets().size(), 1);
    EXPECT_EQ(window->project()->faultSets().first()->path(), path("picks.faultset"));
    EXPECT_TRUE(logTexts(1).isEmpty());
}

TEST_F(StudioProjectDockTest, ADoubleClickOnAFaultsNameOpensItsSetAndSelectsTheFault)
{
    ASSERT_TRUE(waitForNames("picks.faultset", {"F1", "North"}));
    doubleClick(fileItem("picks.faultset")->child(1));
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->faultSets().size(), 1);
    FaultSetDocument* document = window->project()->faultSets().first();
    EXPECT_EQ(window->currentDocument(), document);
    EXPECT_EQ(window->currentFaultId(), 3);
    EXPECT_EQ(window->objectTree()->currentItem(), window->studioTree()->faultItem(document, 3));

    // Open already: selected at once, not read again.
    doubleClick(fileItem("picks.faultset")->child(0));
    EXPECT_EQ(window->currentFaultId(), 1);
    EXPECT_EQ(window->runningTaskCount(), 0);
    EXPECT_EQ(window->project()->faultSets().size(), 1);
}

TEST_F(StudioProjectDockTest, AFileDraggedFromTheDockOpensWhenDroppedOnAView)
{
    window->openFiles({path("small.sgy")});
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->views()->sectionViews().size(), 1);
    QWidget* target = window->views()->sectionViews().first()->viewer();

    std::unique_ptr<QMimeData> mime(model()->mimeData({fileItem("picks.faultset")->index()}));
    ASSERT_NE(mime, nullptr);
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &enter);  // passed up to the window, which takes files
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(20, 20), Qt::CopyAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &drop);
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->faultSets().size(), 1);
    EXPECT_EQ(window->project()->faultSets().first()->path(), path("picks.faultset"));
}

TEST_F(StudioProjectDockTest, AFileAddedRewrittenOrRemovedRefreshesItsItem)
{
    ASSERT_TRUE(waitForNames("picks.faultset", {"F1", "North"}));
    dock()->view()->expand(fileItem("picks.faultset")->index());

    FaultSetDocument* more = addFaultSet({"East", "West"}, "More");
    ASSERT_TRUE(window->saveFaultSet(more, path("more.faultset")));
    ASSERT_TRUE(waitForNames("more.faultset", {"East", "West"}));
    EXPECT_EQ(childTexts(branch("Fault Sets")), (QStringList{"more.faultset", "picks.faultset"}));

    // Saved over: the names follow, and the item stays expanded.
    FaultSetDocument* picks = addFaultSet({"F1", "North", "South"}, "Picks");
    ASSERT_TRUE(window->saveFaultSet(picks, path("picks.faultset")));
    ASSERT_TRUE(waitForNames("picks.faultset", {"F1", "North", "South"}));
    EXPECT_TRUE(dock()->view()->isExpanded(fileItem("picks.faultset")->index()));

    ASSERT_TRUE(QFile::remove(path("more.faultset")));
    ASSERT_TRUE(QTest::qWaitFor([&] { return fileItem("more.faultset") == nullptr; }, 20000));
    ASSERT_TRUE(QFile::copy(data("segy/small.sgy"), path("second.segy")));
    ASSERT_TRUE(QTest::qWaitFor([&] { return childTexts(branch("Volumes")).size() == 2; }, 20000));
    EXPECT_EQ(childTexts(branch("Volumes")), (QStringList{"second.segy", "small.sgy"}));
}
