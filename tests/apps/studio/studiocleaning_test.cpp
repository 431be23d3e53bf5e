// Faults > Clean Duplicated Faults in the studio: the search in the background, the
// assistant's window, its actions answered through the window's handlers, and the
// merges as steps of Edit > Undo.
#include <QAction>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QUndoGroup>
#include <QUndoStack>

#include <zncleanfaultpreview.h>
#include <znprocess.h>

#include "cleaningfixtures.h"
#include "faultcleaningsession.h"
#include "faultcleaningwindow.h"
#include "studiotestfixture.h"

using namespace cleaning;

namespace {

QAction* cleanAction(StudioWindow& window)
{
    return window.findChild<QAction*>(QStringLiteral("cleanDuplicatedFaultsAction"));
}

void post(const char* action)
{
    ZNProcess::sendActionToMdi(QLatin1String(action), nullptr);
}

} // namespace

TEST_F(StudioTest, CleanDuplicatedFaultsOpensTheAssistantOnThePlantedPairs)
{
    FaultSetDocument* document = window->project()->addFaultSet(plantedDocument());
    QAction* clean = cleanAction(*window);
    ASSERT_NE(clean, nullptr);
    EXPECT_EQ(clean->text(), "Clean &Duplicated Faults...");
    EXPECT_TRUE(window->findChild<QMenu*>(QStringLiteral("faultsMenu"))->actions().contains(clean));

    clean->trigger();  // the only fault set
    ASSERT_TRUE(waitForTasks());
    FaultCleaningWindow* cleaning = window->cleaningWindow();
    ASSERT_NE(cleaning, nullptr);
    ASSERT_NE(cleaning->dialog(), nullptr);
    EXPECT_EQ(cleaning->dialog()->getDupletArray().size(), 3);
    EXPECT_EQ(cleaning->dialog()->getCurrentItem(), core::Duplet(2, 7));
    EXPECT_TRUE(window->subWindowTitles().contains("Fault Cleaning"));

    post("ACCEPT_CLEAN_FAULT_PREVIEW");
    EXPECT_EQ(document->faultIds().size(), 9);
    EXPECT_EQ(cleaning->dialog()->getDupletArray().size(), 2);
    // Edit > Undo undoes the merge (and the stick closed for it) like any other edit,
    // and the pair comes back in the assistant.
    EXPECT_EQ(window->undoGroup()->activeStack(), document->undoStack());
    window->undoGroup()->undo();
    window->undoGroup()->undo();
    EXPECT_EQ(document->faultIds().size(), 10);
    EXPECT_EQ(cleaning->dialog()->getDupletArray().size(), 3);
    EXPECT_EQ(cleaning->dialog()->getCurrentItem(), core::Duplet(2, 7));

    post("CLOSE_CLEAN_FAULT_PREVIEW");
    QTRY_COMPARE(window->cleaningWindow(), nullptr);
    EXPECT_FALSE(window->subWindowTitles().contains("Fault Cleaning"));
    post("ACCEPT_CLEAN_FAULT_PREVIEW");  // nobody listens any more
    EXPECT_EQ(document->faultIds().size(), 10);
}

TEST_F(StudioTest, CleaningSaysSoWhenThereIsNothingToCleanOrNoFaultSet)
{
    cleanAction(*window)->trigger();
    EXPECT_EQ(boxes.shown.size() + logTexts(ZNEventBus::Error).size(), 1);
    EXPECT_EQ(window->runningTaskCount(), 0);

    addFaultSet({"A", "B"});
    cleanAction(*window)->trigger();
    ASSERT_TRUE(waitForTasks());
    EXPECT_EQ(window->cleaningWindow(), nullptr);
    EXPECT_TRUE(logTexts(ZNEventBus::Information).contains("No duplicated faults in Picks"));
}

TEST_F(StudioTest, AnAssistantOnAnotherFaultSetIsClosedFirstAndClosingItsDocumentClosesIt)
{
    FaultSetDocument* first = window->project()->addFaultSet(plantedDocument());
    window->cleanDuplicatedFaults(first);
    ASSERT_TRUE(waitForTasks());
    QPointer<FaultCleaningWindow> firstWindow = window->cleaningWindow();
    ASSERT_TRUE(firstWindow);

    FaultSetDocument* second = window->project()->addFaultSet(plantedDocument());
    window->cleanDuplicatedFaults(second);
    EXPECT_TRUE(firstWindow.isNull());
    ASSERT_TRUE(waitForTasks());
    ASSERT_NE(window->cleaningWindow(), nullptr);
    EXPECT_EQ(window->cleaningWindow()->session()->document(), second);

    EXPECT_TRUE(window->closeFaultSet(second));
    QTRY_COMPARE(window->cleaningWindow(), nullptr);
}

TEST_F(StudioTest, AnExtractionMergedTooStrictlyLeavesItsFragmentsAsCandidatesThatMergeBackIntoThePlantedFaults)
{
    window->openDemo();  // the demo's own extraction gives its five planted faults
    ASSERT_TRUE(waitForTasks());
    EXPECT_EQ(window->project()->faultSets().first()->mergeCandidates().size(), 0);
    fault::FaultExtractionSettings strict;
    strict.extraction.maxMergeCost = 1.0;  // leaves some planted faults in pieces (8 faults)
    window->extractFaults(window->project()->volumes().first(), strict);
    ASSERT_TRUE(waitForTasks());
    FaultSetDocument* document = window->project()->faultSets().last();
    const core::Array<core::Duplet> candidates = document->mergeCandidates();
    const core::Array<double> costs = document->mergeCandidateCosts();
    ASSERT_GT(candidates.size(), 0);
    ASSERT_EQ(candidates.size(), costs.size());
    const QList<int> faults = document->faultIds();
    EXPECT_GT(faults.size(), 5);
    for (int k = 0; k < candidates.size(); ++k) {
        EXPECT_LT(candidates[k].a, candidates[k].b);
        EXPECT_TRUE(faults.contains(candidates[k].a) && faults.contains(candidates[k].b));
        EXPECT_LE(costs[k], strict.extraction.maxMergeCost);
        if (k > 0) {
            EXPECT_LE(costs[k - 1], costs[k]);  // best first
        }
    }

    window->cleanDuplicatedFaults(document);
    ASSERT_TRUE(waitForTasks());
    FaultCleaningWindow* cleaning = window->cleaningWindow();
    ASSERT_NE(cleaning, nullptr);
    ASSERT_EQ(cleaning->session()->rowCount(), candidates.size());
    for (int row = 0; row < candidates.size(); ++row) {
        EXPECT_EQ(cleaning->session()->pairs()[row], core::Duplet(-candidates[row].a, candidates[row].b));
        EXPECT_EQ(cleaning->session()->scores()[row], costs[row]);
    }
    while (cleaning->session()->rowCount() > 0) post("ACCEPT_CLEAN_FAULT_PREVIEW");
    EXPECT_EQ(document->faultIds().size(), 5);
}
