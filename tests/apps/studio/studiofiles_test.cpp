// The studio's files: reads in the background that change nothing when they fail, saves
// that never destroy the previous file, imports and exports.
#include <QDir>
#include <QMimeData>
#include <QUrl>

#include <exchange/gocadtsurf.h>
#include <exchange/stickformat.h>
#include <testfiles.h>
#include <zn3dfaultpatch.h>

#include "studiotestfixture.h"

namespace {
QString data(const QString& relative)
{
    return QStringLiteral(KORVALITH_TEST_DATA_DIR "/") + relative;
}
} // namespace

TEST_F(StudioTest, AFileThatCannotBeReadChangesNothingAndSaysWhyInOneMessage)
{
    const QString garbage = dir.filePath("garbage.sgy");
    ASSERT_TRUE(writeFileBytes(garbage, QByteArray(5000, 'x')));
    const QStringList bad{data("faultset/corrupt/truncated_in_points.faultset"),
                          data("faultset/corrupt/father_loop.faultset"), data("faultset/corrupt/bad_xml.faultset"),
                          garbage, dir.filePath("missing.faultset")};
    for (const QString& path : bad) {
        TearDown();
        SetUp();  // a fresh window for each file
        window->notifications()->setDisplayMs(60000);
        window->openFiles({path});
        ASSERT_TRUE(waitForTasks());
        // The reader's own messages are in the log; the user is told once, with the file.
        const QStringList shown = window->notifications()->shownTexts();
        ASSERT_EQ(shown.size(), 1) << path.toStdString();
        EXPECT_TRUE(shown[0].contains(QFileInfo(path).fileName())) << shown[0].toStdString();
        EXPECT_TRUE(logTexts(ZNEventBus::Error).contains(shown[0]));
        EXPECT_TRUE(window->project()->faultSets().isEmpty());
        EXPECT_TRUE(window->project()->volumes().isEmpty());
        EXPECT_EQ(window->objectTree()->itemModel()->rowCount(), 0);
    }
}

TEST_F(StudioTest, AFaultSetSavedAndReopenedHoldsTheSameFaultsAndSurfaces)
{
    FaultSetDocument* document = addFaultSet({"North", "South"});
    const QString path = dir.filePath("picks.faultset");
    ASSERT_TRUE(window->saveFaultSet(document, path));
    EXPECT_FALSE(document->isModified());
    EXPECT_EQ(document->path(), path);
    EXPECT_EQ(window->recentFiles().paths().first(), path);
    const int facettes = document->surface(1)->getNumberOfFacettes();
    window->closeFaultSet(document);

    window->openFiles({path});
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->faultSets().size(), 1);
    FaultSetDocument* reopened = window->project()->faultSets().first();
    EXPECT_EQ(treeNames(reopened), (QStringList{"North", "South"}));
    EXPECT_EQ(reopened->surface(1)->getNumberOfFacettes(), facettes);  // the stored mesh
    EXPECT_FALSE(reopened->isModified());

    window->openFiles({path});  // already open: not read twice
    ASSERT_TRUE(waitForTasks());
    EXPECT_EQ(window->project()->faultSets().size(), 1);
}

TEST_F(StudioTest, ASaveThatFailsLeavesThePreviousFileAsItWas)
{
    FaultSetDocument* document = addFaultSet({"North"});
    const QString path = dir.filePath("picks.faultset");
    ASSERT_TRUE(window->saveFaultSet(document, path));
    const QByteArray before = readFileBytes(path);
    document->renameFault(1, QStringLiteral("North\x1fSouth"));  // a name no fault set file may hold
    EXPECT_FALSE(window->saveFaultSet(document, path));
    EXPECT_EQ(readFileBytes(path), before);
    EXPECT_EQ(boxes.shown.size(), 1);  // the fault set says why in its box
    EXPECT_FALSE(logTexts(ZNEventBus::Error).isEmpty());
}

TEST_F(StudioTest, SticksImportedExportedAndReimportedKeepTheirFaultsAndSurfacesExportAsTSurf)
{
    window->openFiles({data("exchange/charisma_fault_sticks.txt")});  // recognised as sticks
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->faultSets().size(), 1);
    FaultSetDocument* imported = window->project()->faultSets().first();
    const QStringList names = treeNames(imported);
    ASSERT_FALSE(names.isEmpty());
    EXPECT_TRUE(imported->isModified());  // not saved anywhere yet
    EXPECT_TRUE(imported->path().isEmpty());

    const QString sticks = dir.filePath("out.iesx");
    ASSERT_TRUE(window->exportSticks(imported, sticks, fault::exchange::StickFormat::Iesx));
    window->importSticks(sticks, fault::exchange::StickFormat::Iesx);
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->faultSets().size(), 2);
    EXPECT_EQ(treeNames(window->project()->faultSets()[1]), names);

    const QString surfaces = dir.filePath("faults.ts");
    ASSERT_TRUE(window->exportSurfaces(imported, surfaces));
    std::vector<fault::exchange::TriangleMesh> meshes;
    ASSERT_TRUE(fault::exchange::readGocadTSurf(surfaces, meshes));
    ASSERT_EQ(meshes.size(), static_cast<std::size_t>(names.size()));
    EXPECT_EQ(meshes[0].name, names[0]);
}

TEST_F(StudioTest, FilesDroppedOnTheWindowAreOpened)
{
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(data("faultset/valid_3d.faultset")), QUrl::fromLocalFile(data("segy/small.sgy"))});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window.get(), &enter);
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window.get(), &drop);
    ASSERT_TRUE(waitForTasks());
    EXPECT_EQ(window->project()->faultSets().size(), 1);
    ASSERT_EQ(window->project()->volumes().size(), 1);
    EXPECT_TRUE(window->project()->volumes().first()->units().isTime());
    EXPECT_EQ(window->objectTree()->itemModel()->rowCount(), 2);
}
