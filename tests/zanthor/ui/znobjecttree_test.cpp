#include <gtest/gtest.h>

#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <znobject.h>
#include <znobjecttree.h>

namespace {
class Named : public ZNObject {
public:
    QString getZNObjectType() const override { return QStringLiteral("Named"); }
};

QStandardItem* checkableChild(QStandardItem* parent, int id, const QString& text)
{
    auto* item = new QStandardItem(text);
    item->setCheckable(true);
    item->setData(id, ZNObjectTree::IdRole);
    item->setData("fault", ZNObjectTree::KindRole);
    parent->appendRow(item);
    return item;
}
} // namespace

TEST(ObjectTree, ObjectsHaveTopLevelItemsWhoseChildrenKnowTheirObjectAndId)
{
    ZNObjectTree tree;
    Named volume, faults;
    tree.addObject(&volume, "volume", "Survey");
    QStandardItem* set = tree.addObject(&faults, "faultSet", "Picks");
    QStandardItem* fault = checkableChild(set, 7, "F7");
    EXPECT_EQ(tree.itemOf(&faults), set);
    EXPECT_EQ(ZNObjectTree::objectOf(fault), &faults);
    EXPECT_EQ(ZNObjectTree::idOf(fault), 7);
    EXPECT_EQ(ZNObjectTree::idOf(set), -9999);
    EXPECT_EQ(ZNObjectTree::kindOf(fault), "fault");
    EXPECT_EQ(ZNObjectTree::childWithId(set, 7), fault);
    EXPECT_EQ(ZNObjectTree::childWithId(set, 8), nullptr);
    tree.removeObject(&volume);
    EXPECT_EQ(tree.itemOf(&volume), nullptr);
    EXPECT_EQ(tree.itemModel()->rowCount(), 1);
}

TEST(ObjectTree, OnlyTheUsersChecksAreReported)
{
    ZNObjectTree tree;
    Named faults;
    QStandardItem* fault = checkableChild(tree.addObject(&faults, "faultSet", "Picks"), 1, "F1");
    QSignalSpy checked(&tree, &ZNObjectTree::itemChecked);
    tree.setChecked(fault, true);
    fault->setText("F1 renamed");  // other changes of the item are not checks
    EXPECT_EQ(checked.count(), 0);
    // What the view does on a click in the check box.
    tree.itemModel()->setData(fault->index(), Qt::Unchecked, Qt::CheckStateRole);
    ASSERT_EQ(checked.count(), 1);
    EXPECT_FALSE(checked[0][1].toBool());
    fault->setIcon(ZNObjectTree::swatch(Qt::red));
    EXPECT_EQ(checked.count(), 1);
}

TEST(ObjectTree, RenamingInPlaceReportsANewTextOnlyAndKeepsTheOldOneShown)
{
    ZNObjectTree tree;
    tree.resize(300, 200);
    tree.show();
    Named faults;
    QStandardItem* fault = checkableChild(tree.addObject(&faults, "faultSet", "Picks"), 1, "North");
    tree.expandAll();
    QSignalSpy renamed(&tree, &ZNObjectTree::itemRenamed);
    tree.renameItem(fault);
    auto* editor = tree.findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "North Main");
    QTest::keyClick(editor, Qt::Key_Return);  // the view commits on its next turn
    ASSERT_TRUE(QTest::qWaitFor([&] { return renamed.count() == 1; }, 2000));
    EXPECT_EQ(renamed[0][1].toString(), "North Main");
    EXPECT_EQ(fault->text(), "North");  // the owner shows the name once it applied it
    EXPECT_FALSE(fault->isEditable());

    tree.renameItem(fault);
    editor = tree.findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    QTest::keyClick(editor, Qt::Key_Return);  // unchanged
    QTest::qWait(20);
    tree.renameItem(fault);
    editor = tree.findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    QTest::keyClicks(editor, "x");
    QTest::keyClick(editor, Qt::Key_Escape);  // abandoned
    QTest::qWait(20);
    EXPECT_EQ(renamed.count(), 1);
    EXPECT_FALSE(fault->isEditable());
}

TEST(ObjectTree, ContextMenusAreFilledByTheirReceivers)
{
    ZNObjectTree tree;
    Named faults;
    QStandardItem* set = tree.addObject(&faults, "faultSet", "Picks");
    QObject::connect(&tree, &ZNObjectTree::contextMenuRequested, [](QStandardItem* item, QMenu* menu) {
        menu->addAction(QStringLiteral("Close ") + item->text());
    });
    std::unique_ptr<QMenu> menu(tree.buildContextMenu(set));
    ASSERT_EQ(menu->actions().size(), 1);
    EXPECT_EQ(menu->actions()[0]->text(), "Close Picks");
}
