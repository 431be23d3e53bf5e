// The property sheet of the current fault in the studio: edits through the real browser,
// each posting its action once and undoable.
#include <QDockWidget>
#include <QUndoStack>

#include <propertybrowserdriver.h>
#include <zn3dfaultpatch.h>
#include <znprocess.h>

#include "studiotestfixture.h"

namespace {
// Brings the row of `id` into view, as a user scrolls to it.
void show(ZNPropertyBrowser* browser, const QString& id)
{
    browser->scrollTo(browser->indexOf(id));
}

// Records the actions posted while it lives.
struct ActionLog {
    QStringList names;
    int handle;
    ActionLog() : handle(ZNProcess::instance().addActionListener([this](const QString& n, ZNObject*) { names << n; })) {}
    ~ActionLog() { ZNProcess::instance().removeActionListener(handle); }
};
} // namespace

TEST_F(StudioTest, TheCurrentFaultsSheetIsShownAndItsEditsPostTheirActionOnceAndUndo)
{
    FaultSetDocument* document = addFaultSet({"North", "South"});
    window->studioTree()->selectFault(document, 2);
    ZNPropertyBrowser* browser = window->propertyBrowser();
    ASSERT_TRUE(browser->indexOf("Gridding Method").isValid());
    EXPECT_EQ(browser->sheet().property("Name")->value.toString(), "South");
    PropertyBrowserDriver driver{*browser};
    const int interpolation = document->surface(2)->getInterpolationSize();

    show(browser, "Interp Size");
    ActionLog actions;
    driver.typeAndCommit("Interp Size", QString::number(interpolation));  // the same value
    EXPECT_TRUE(actions.names.isEmpty());
    EXPECT_FALSE(document->undoStack()->canUndo());

    driver.typeAndCommit("Interp Size", "40");
    EXPECT_EQ(actions.names, (QStringList{"UPDATE_FAULT_MESH"}));
    EXPECT_EQ(document->faultSet()->findFaultLight(2)->getInterpolationSize(), 40);  // the fault set follows
    EXPECT_EQ(browser->sheet().property("Interp Size")->value.toInt(), 40);
    EXPECT_EQ(document->undoStack()->undoText(), "Set Interp Size of Fault \"South\"");

    document->undoStack()->undo();
    EXPECT_EQ(document->surface(2)->getInterpolationSize(), interpolation);
    EXPECT_EQ(browser->sheet().property("Interp Size")->value.toInt(), interpolation);  // the sheet follows
    EXPECT_EQ(actions.names.size(), 2);
}

TEST_F(StudioTest, RenamingInTheSheetIsTheTreesRenameAndAnEmptySelectionClearsTheSheet)
{
    FaultSetDocument* document = addFaultSet({"North", "South"});
    window->studioTree()->selectFault(document, 1);
    show(window->propertyBrowser(), "Name");
    PropertyBrowserDriver driver{*window->propertyBrowser()};
    driver.typeAndCommit("Name", "North Main");
    EXPECT_EQ(treeNames(document), (QStringList{"North Main", "South"}));
    EXPECT_EQ(document->undoStack()->undoText(), "Rename Fault \"North\"");
    document->undoStack()->undo();
    EXPECT_EQ(window->propertyBrowser()->sheet().property("Name")->value.toString(), "North");

    window->studioTree()->selectFault(document, -9999);  // the set itself
    EXPECT_FALSE(window->propertyBrowser()->indexOf("Name").isValid());
}
