// The studio's main window: the demo, the host services it installs, the extraction on a
// worker with progress and cancel.
#include <QPushButton>
#include <QSignalSpy>

#include <faultpalette.h>
#include <pictures.h>
#include <zn3dfaultpatch.h>
#include <znmessagelog.h>
#include <znnotificationarea.h>
#include <znprogresspanel.h>

#include "studiotestfixture.h"

TEST_F(StudioTest, TheDemoOpensTheVolumeAndItsFivePlantedFaultsListedInTheirColours)
{
    QSignalSpy opened(window.get(), &StudioWindow::demoOpened);
    window->openDemo();
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(opened.count(), 1);
    ASSERT_EQ(window->project()->volumes().size(), 1);
    EXPECT_EQ(window->project()->volumes().first()->image().nx(), 128);
    ASSERT_EQ(window->project()->faultSets().size(), 1);
    FaultSetDocument* faults = window->project()->faultSets().first();
    ASSERT_EQ(faults->faultIds().size(), 5);
    for (int id : faults->faultIds()) EXPECT_GT(faults->surface(id)->getNumberOfFacettes(), 0) << id;

    // The picture of the window: the tree lists the five faults, each with its colour.
    QTest::qWait(150);  // the progress panel's last redraw
    const QImage picture = window->grab().toImage();
    picturetest::keepPicture(picture, "studio_demo");
    const QRect treeArea(window->objectTree()->mapTo(window.get(), QPoint(0, 0)), window->objectTree()->size());
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(faults->faultColour(faults->faultIds()[i]), fault::faultColour(i));
        EXPECT_GT(picturetest::countPixels(picture, treeArea, picturetest::near(fault::faultColour(i), 6)), 40) << i;
    }
    const QRect outside(treeArea.right() + 20, treeArea.top() + 20, 200, 200);
    EXPECT_EQ(picturetest::countPixels(picture, outside, picturetest::near(fault::faultColour(0), 6)), 0);
    EXPECT_EQ(treeNames(faults).size(), 5);
}

TEST_F(StudioTest, ActionsPostedByTheLibraryReachTheWindow)
{
    FaultSetDocument* document = addFaultSet({"North", "South"});
    ZN3DFaultPatch* surface = document->surface(1);
    QSignalSpy geometry(document, &FaultSetDocument::faultGeometryChanged);
    QSignalSpy appearance(document, &FaultSetDocument::faultAppearanceChanged);

    // A gridding edit posts "UPDATE_FAULT_MESH": the surface is meshed again and the fault
    // set's descriptor takes the new value.
    EXPECT_EQ(surface->updateProperty("Interp Size", 30, nullptr), ZN3DFaultPatch::PropertyStored);
    EXPECT_EQ(geometry.count(), 1);
    EXPECT_EQ(document->faultSet()->findFaultLight(1)->getInterpolationSize(), 30);
    // A display edit posts "UPDATE_FAULT_LIGHT": the tree shows the new name.
    EXPECT_EQ(surface->updateProperty("Name", QStringLiteral("North Main"), nullptr), ZN3DFaultPatch::PropertyRenamed);
    EXPECT_EQ(geometry.count(), 1);
    EXPECT_GE(appearance.count(), 1);
    EXPECT_EQ(treeNames(document), (QStringList{"North Main", "South"}));
    EXPECT_TRUE(document->isModified());
    // The same value again posts nothing.
    EXPECT_EQ(surface->updateProperty("Interp Size", 30, nullptr), ZN3DFaultPatch::PropertyUnchanged);
    EXPECT_EQ(geometry.count(), 1);
}

TEST_F(StudioTest, MessagesGoToTheLogAndErrorsAlsoToTheNotifications)
{
    ZNEventBus::sendMessage(ZNEventBus::Information, "loaded");
    ZNEventBus::sendMessage(ZNEventBus::Error, "The fault set cannot be read");
    EXPECT_EQ(logTexts(ZNEventBus::Error), (QStringList{"The fault set cannot be read"}));
    EXPECT_EQ(logTexts(ZNEventBus::Information).last(), "loaded");
    EXPECT_EQ(window->notifications()->shownTexts(), (QStringList{"The fault set cannot be read"}));
}

TEST_F(StudioTest, CancelOnTheProgressPanelStopsAnExtractionAndLeavesTheProjectAsItWas)
{
    // Large enough for the extraction to last while the test clicks.
    LoadedVolume loaded = syntheticVolume(256, 3);
    ASSERT_TRUE(loaded.ok());
    ZNVolume* volume = window->project()->addVolume(std::move(loaded.volume));
    addFaultSet({"picked before"});
    const int rows = window->objectTree()->itemModel()->rowCount();
    QSignalSpy finished(window.get(), &StudioWindow::taskFinished);

    window->extractFaults(volume, fault::FaultExtractionSettings());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window->progressPanel()->findChildren<QPushButton*>("cancelButton").isEmpty(); }, 10000));
    QTest::mouseClick(window->progressPanel()->findChildren<QPushButton*>("cancelButton").first(), Qt::LeftButton);
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(finished.count(), 1);
    EXPECT_FALSE(finished[0][1].toBool());
    EXPECT_EQ(window->project()->faultSets().size(), 1);
    EXPECT_EQ(window->objectTree()->itemModel()->rowCount(), rows);
    EXPECT_TRUE(logTexts(ZNEventBus::Information).contains("Extraction cancelled"));
    EXPECT_TRUE(logTexts(ZNEventBus::Error).isEmpty());

    window->extractFaults(volume, fault::FaultExtractionSettings());  // and once to its end
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->faultSets().size(), 2);
    EXPECT_GE(treeNames(window->project()->faultSets()[1]).size(), 5);
}
