// The cleaning assistant in the studio, end to end under a real OpenGL context: a fault
// set with three planted duplicates reviewed by clicks on the dialog, the pairs shown in
// the two viewers, and the cleaned fault set saved and read back.
#include <gtest/gtest.h>

#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <zn3dcameralink.h>
#include <zn3dviewer.h>
#include <zncleanfaultpreview.h>

#include "../cleaningfixtures.h"
#include "faultcleaningsession.h"
#include "faultcleaningwindow.h"
#include "faultpairpicture.h"
#include "pictures.h"
#include "studioproject.h"
#include "studiowindow.h"
#include "testservices.h"

using namespace cleaning;
using picturetest::countPixels;
using picturetest::sameHue;

namespace {

// What a viewer shows, in pixels of each colour of the assistant.
struct Shown {
    int orange = 0, blue = 0, purple = 0;
};

Shown shown(ZN3DViewer* viewer, const QString& name)
{
    const QImage image = viewer->renderToImage().convertToFormat(QImage::Format_RGB32);
    picturetest::keepPicture(image, QStringLiteral("cleaning_") + name);
    const QRect all = image.rect();
    return {countPixels(image, all, sameHue(firstFaultColour(), 12)),
            countPixels(image, all, sameHue(secondFaultColour(), 12)),
            countPixels(image, all, sameHue(mergedFaultColour(), 12))};
}

class CleaningEndToEnd : public ::testing::Test {
protected:
    void SetUp() override
    {
        window = std::make_unique<StudioWindow>(StudioWindow::Options{false});
        window->setUnsavedChangesQuestion([](FaultSetDocument*) { return QMessageBox::Discard; });
        window->resize(1400, 900);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        document = window->project()->addFaultSet(plantedDocument());
        ZNFaultPatchManager copy(*document->faultSet());
        cleaning = std::make_unique<FaultCleaningWindow>(
            window.get(), document, findCleaningPairs(copy, core::Array<core::Duplet>(), core::Array<double>(), -1));
        dialog = cleaning->dialog();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog));
        dialog->getLeft3dViewer()->renderToImage();  // the contexts exist from the first frame on
        dialog->getRight3dViewer()->renderToImage();
    }
    void TearDown() override
    {
        cleaning.reset();
        window.reset();
    }

    void click(const char* button)
    {
        QTest::mouseClick(dialog->findChild<QPushButton*>(QLatin1String(button)), Qt::LeftButton);
    }
    QStringList listed() const
    {
        QStringList rows;
        const auto* list = dialog->findChild<QListWidget*>(QStringLiteral("listView"));
        for (int r = 0; r < list->count(); ++r) rows << list->item(r)->text();
        return rows;
    }
    // The dialog's arrays are the session's, row for row, and every row has its picture.
    void expectInStep() const
    {
        const FaultCleaningSession* session = cleaning->session();
        ASSERT_EQ(dialog->getDupletArray().size(), session->rowCount());
        ASSERT_EQ(dialog->getParallelArray().size(), session->rowCount());
        const auto* list = dialog->findChild<QListWidget*>(QStringLiteral("listView"));
        for (int r = 0; r < session->rowCount(); ++r) {
            EXPECT_EQ(dialog->getDupletArray()[r], session->pairs()[r]);
            EXPECT_EQ(dialog->getParallelArray()[r], session->scores()[r]);
            EXPECT_FALSE(list->item(r)->icon().isNull());
        }
        EXPECT_EQ(dialog->getCurrentIntItem(), session->currentRow());
    }

    RecordingMessageBox boxes;
    std::unique_ptr<StudioWindow> window;
    FaultSetDocument* document = nullptr;
    std::unique_ptr<FaultCleaningWindow> cleaning;
    QPointer<ZNCleanFaultPreview> dialog;
    QTemporaryDir dir;
};

} // namespace

TEST_F(CleaningEndToEnd, TheViewersShowEachFaultOfThePairWithTheOtherFaintAndTheMergedPreviewInBoth)
{
    ASSERT_TRUE(dialog->getLeft3dViewer()->isOpenGLReady()) << dialog->getLeft3dViewer()->openGLError().toStdString();
    EXPECT_EQ(listed(), QStringList({"2 <-> 7", "4 <-> 8", "5 <-> 9"}));
    EXPECT_EQ(dialog->getCurrentItem(), core::Duplet(2, 7));
    const Shown left = shown(dialog->getLeft3dViewer(), "left");
    const Shown right = shown(dialog->getRight3dViewer(), "right");
    EXPECT_GT(left.orange, 3000);
    EXPECT_GT(right.blue, 3000);
    EXPECT_GT(left.orange, 5 * left.blue);
    EXPECT_GT(right.blue, 5 * right.orange);
    EXPECT_EQ(left.purple + right.purple, 0);
    // One camera: the same fault covers about as many pixels on both sides.
    EXPECT_NEAR(double(left.orange) / right.blue, 1.0, 0.15);
    picturetest::keepPicture(window->grab().toImage(), QStringLiteral("cleaning_window"));

    click("previewButton");
    const Shown leftPreview = shown(dialog->getLeft3dViewer(), "left_preview");
    const Shown rightPreview = shown(dialog->getRight3dViewer(), "right_preview");
    EXPECT_GT(leftPreview.purple, 3000);
    EXPECT_GT(rightPreview.purple, 3000);
    EXPECT_EQ(document->undoStack()->count(), 0);

    // Turning one view turns the other alike.
    dialog->getRight3dViewer()->engine().orbit(40, 10);
    EXPECT_TRUE(ZN3DCameraLink::sameView(dialog->getLeft3dViewer()->engine().camera(),
                                         dialog->getRight3dViewer()->engine().camera()));
    QTest::mouseClick(dialog->findChild<QListWidget*>()->viewport(), Qt::LeftButton, {},
                      dialog->findChild<QListWidget*>()->visualItemRect(dialog->findChild<QListWidget*>()->item(1)).center());
    EXPECT_EQ(cleaning->session()->currentFaults(), core::Duplet(4, 8));
    EXPECT_EQ(cleaning->session()->previewSurface(), nullptr);
    EXPECT_GT(shown(dialog->getLeft3dViewer(), "left_second_pair").orange, 3000);
}

TEST_F(CleaningEndToEnd, MergeSkipUndoRedoAndCloseByClicksLeaveTheExpectedFaultsAndTheFileAgrees)
{
    const QStringList start = faultSummary(*document->faultSet());
    const QStringList firstMerged = {"F1:5", "F2:10", "F3:5", "F4:5", "F5:5", "F6:5", "F4 copy:5", "F5 copy:5", "F3 shifted:5"};
    const QStringList bothMerged = {"F1:5", "F2:10", "F3:5", "F4:10", "F5:5", "F6:5", "F5 copy:5", "F3 shifted:5"};
    struct Step {
        const char* button;
        QStringList rows;
        QStringList faults;
    };
    const Step steps[] = {
        {"acceptButton", {"5 <-> 9", "4 <-> 8"}, firstMerged},
        {"refuseButton", {"4 <-> 8"}, firstMerged},
        {"undoButton", {"4 <-> 8", "2 <-> 7"}, start},
        {"redoButton", {"4 <-> 8"}, firstMerged},
        {"acceptButton", {}, bothMerged},
    };
    for (const Step& s : steps) {
        click(s.button);
        EXPECT_EQ(listed(), s.rows) << s.button;
        EXPECT_EQ(faultSummary(*document->faultSet()), s.faults) << s.button;
        expectInStep();
    }
    EXPECT_EQ(document->surface(8), nullptr);
    EXPECT_GT(document->surface(4)->getNumberOfFacettes(), 0);

    QSignalSpy closed(cleaning.get(), &FaultCleaningWindow::closed);
    click("closeButton");
    EXPECT_EQ(closed.size(), 1);
    QTRY_VERIFY(dialog.isNull());
    EXPECT_FALSE(window->subWindowTitles().contains("Fault Cleaning"));

    const QString path = dir.filePath("cleaned.faultset");
    ASSERT_TRUE(window->saveFaultSet(document, path));
    ZNFaultPatchManager read;
    ASSERT_TRUE(read.readPickedFault(path, false, ZNFaultPatchManager::kNoProgressBar));
    EXPECT_EQ(faultSummary(read), bothMerged);
    for (const ZN3DFaultPatchLight* light : document->faultSet()->getFaultLightList())
        EXPECT_EQ(sticksOf(read, light->getFaultId()), sticksOf(*document->faultSet(), light->getFaultId()))
            << light->GetFaultName().toStdString();
}
