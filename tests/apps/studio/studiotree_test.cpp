// The object tree of the studio: the faults of each fault set, and the user's gestures
// on them turned into undoable edits.
#include <QLineEdit>
#include <QMenu>
#include <QUndoGroup>
#include <QUndoStack>

#include <zn3dfaultpatch.h>

#include "studiotestfixture.h"

namespace {

// Triggers the entry `text` of the tree's context menu of `item`; false when absent.
bool triggerMenu(ZNObjectTree* tree, QStandardItem* item, const QString& text)
{
    std::unique_ptr<QMenu> menu(tree->buildContextMenu(item));
    for (QAction* a : menu->actions())
        if (a->text() == text) {
            a->trigger();
            return true;
        }
    return false;
}

std::vector<bool> visibility(const FaultSetDocument* document)
{
    std::vector<bool> shown;
    for (int id : document->faultIds()) shown.push_back(document->isFaultVisible(id));
    return shown;
}

} // namespace

TEST_F(StudioTest, EachFaultIsListedUnderItsSetWithItsColourAndVisibility)
{
    FaultSetDocument* document = addFaultSet({"North", "", "South"});
    EXPECT_EQ(treeNames(document), (QStringList{"North", "Fault 2", "South"}));  // unnamed: by id
    const QStandardItem* north = window->studioTree()->faultItem(document, 1);
    ASSERT_NE(north, nullptr);
    EXPECT_EQ(north->checkState(), Qt::Checked);
    const QImage swatch = north->icon().pixmap(14, 14).toImage();
    EXPECT_EQ(swatch.pixelColor(7, 7), document->faultColour(1));
    EXPECT_EQ(ZNObjectTree::objectOf(north), document->faultSet());
}

TEST_F(StudioTest, CheckBoxesAndTheFaultMenuShowAndHideFaultsAndEachStepIsUndone)
{
    FaultSetDocument* document = addFaultSet({"A", "B", "C"});
    ZNObjectTree* tree = window->objectTree();
    QUndoStack* undo = document->undoStack();
    QStandardItem* b = window->studioTree()->faultItem(document, 2);

    tree->itemModel()->setData(b->index(), Qt::Unchecked, Qt::CheckStateRole);  // a click in the box
    EXPECT_EQ(visibility(document), (std::vector<bool>{true, false, true}));
    EXPECT_TRUE(document->surface(2)->isHidden());

    ASSERT_TRUE(triggerMenu(tree, window->studioTree()->faultItem(document, 3), StudioTree::showOnlyText()));
    EXPECT_EQ(visibility(document), (std::vector<bool>{false, false, true}));
    EXPECT_EQ(window->studioTree()->faultItem(document, 1)->checkState(), Qt::Unchecked);  // the tree follows

    ASSERT_TRUE(triggerMenu(tree, window->studioTree()->faultItem(document, 3), StudioTree::hideText()));
    EXPECT_EQ(visibility(document), (std::vector<bool>{false, false, false}));
    ASSERT_TRUE(triggerMenu(tree, window->studioTree()->faultItem(document, 3), StudioTree::showText()));
    ASSERT_TRUE(triggerMenu(tree, window->studioTree()->faultItem(document, 1), StudioTree::showAllText()));
    EXPECT_EQ(visibility(document), (std::vector<bool>{true, true, true}));

    const std::vector<std::vector<bool>> history{{false, false, true}, {false, false, false}, {false, false, true},
                                                 {true, false, true}, {true, true, true}};
    for (const auto& expected : history) {
        undo->undo();
        EXPECT_EQ(visibility(document), expected);
    }
    EXPECT_FALSE(undo->canUndo());
    undo->redo();
    EXPECT_EQ(visibility(document), (std::vector<bool>{true, false, true}));
    EXPECT_TRUE(document->isModified());
}

TEST_F(StudioTest, RenamingInTheTreeRenamesTheFaultAndItsSurfaceUndoably)
{
    FaultSetDocument* document = addFaultSet({"North", "South"});
    ZNObjectTree* tree = window->objectTree();
    ASSERT_TRUE(triggerMenu(tree, window->studioTree()->faultItem(document, 1), StudioTree::renameText()));
    auto* editor = tree->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "North Main");
    QTest::keyClick(editor, Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([&] { return document->faultName(1) == "North Main"; }, 2000));
    EXPECT_EQ(document->surface(1)->GetFaultName(), "North Main");
    EXPECT_EQ(treeNames(document), (QStringList{"North Main", "South"}));
    EXPECT_EQ(document->undoStack()->undoText(), "Rename Fault \"North\"");
    document->undoStack()->undo();
    EXPECT_EQ(treeNames(document), (QStringList{"North", "South"}));
    EXPECT_EQ(document->faultName(1), "North");
}

TEST_F(StudioTest, DeletingAFaultRemovesItEverywhereAndUndoBringsItBackAsItWas)
{
    FaultSetDocument* document = addFaultSet({"A", "B", "C"});
    const QColor colour = document->faultColour(2);
    const int points = document->faultSet()->getNumberOfPickedPoint(2);
    window->studioTree()->selectFault(document, 2);
    ASSERT_EQ(window->currentFaultId(), 2);

    ASSERT_TRUE(triggerMenu(window->objectTree(), window->studioTree()->faultItem(document, 2), StudioTree::deleteText()));
    EXPECT_EQ(treeNames(document), (QStringList{"A", "C"}));
    EXPECT_EQ(document->faultSet()->findFaultLight(2), nullptr);
    EXPECT_EQ(document->faultSet()->getNumberOfPickedPoint(2), 0);
    EXPECT_EQ(document->surface(2), nullptr);
    EXPECT_EQ(window->undoGroup()->undoText(), "Delete Fault \"B\"");

    window->undoGroup()->undo();
    EXPECT_EQ(treeNames(document), (QStringList{"A", "B", "C"}));
    EXPECT_EQ(document->faultColour(2), colour);
    EXPECT_EQ(document->faultSet()->getNumberOfPickedPoint(2), points);
    ASSERT_NE(document->surface(2), nullptr);
    EXPECT_GT(document->surface(2)->getNumberOfFacettes(), 0);
    window->undoGroup()->redo();
    EXPECT_EQ(treeNames(document), (QStringList{"A", "C"}));
}

TEST_F(StudioTest, SelectingAFaultInTheTreeMakesItCurrentAndPropertiesSelectsIt)
{
    FaultSetDocument* first = addFaultSet({"A", "B"}, "First");
    FaultSetDocument* second = addFaultSet({"C"}, "Second");
    window->objectTree()->selectItem(window->studioTree()->faultItem(first, 2));
    EXPECT_EQ(window->currentDocument(), first);
    EXPECT_EQ(window->currentFaultId(), 2);
    EXPECT_EQ(first->faultSet()->getCurrentPickedFaultId(), 2);
    EXPECT_EQ(window->undoGroup()->activeStack(), first->undoStack());

    ASSERT_TRUE(triggerMenu(window->objectTree(), window->studioTree()->faultItem(second, 1), StudioTree::propertiesText()));
    EXPECT_EQ(window->currentDocument(), second);
    EXPECT_EQ(window->currentFaultId(), 1);
    EXPECT_EQ(window->undoGroup()->activeStack(), second->undoStack());
}
