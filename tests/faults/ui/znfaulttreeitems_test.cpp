#include <gtest/gtest.h>

#include <QSignalSpy>

#include <core/multiarray.h>
#include <znfaultpatchmanager.h>
#include <znfaulttreeitems.h>
#include <znobjecttree.h>

TEST(FaultTreeItems, OneItemPerFaultInDescriptorOrderWithNameColourAndVisibility)
{
    core::MultiArray<core::vec3> rows(3);
    for (int r = 0; r < 3; ++r) rows.addElement(r, core::vec3(r, 0, 0), false);
    ZNFaultPatchManager set(rows, georef::UnitObject());
    set.findFaultLight(1)->SetFaultName("North");
    set.findFaultLight(2)->SetFaultName(QString());
    set.findFaultLight(3)->SetFaultName("South");
    QPen red(Qt::red);
    set.findFaultLight(3)->setPen(red);

    ZNObjectTree tree;
    QStandardItem* setItem = tree.addObject(&set, "faultSet", "Picks");
    QSignalSpy checked(&tree, &ZNObjectTree::itemChecked);
    ZNFaultTreeItems::fill(tree, setItem, set, [](int id) { return id != 2; });
    ASSERT_EQ(setItem->rowCount(), 3);
    QStringList names;
    for (int r = 0; r < 3; ++r) names << setItem->child(r)->text();
    EXPECT_EQ(names, (QStringList{"North", "Fault 2", "South"}));
    QStandardItem* south = setItem->child(2);
    EXPECT_EQ(ZNObjectTree::idOf(south), 3);
    EXPECT_EQ(ZNObjectTree::kindOf(south), ZNFaultTreeItems::faultKind());
    EXPECT_EQ(south->icon().pixmap(14, 14).toImage().pixelColor(7, 7), QColor(Qt::red));
    EXPECT_EQ(setItem->child(1)->checkState(), Qt::Unchecked);

    set.findFaultLight(1)->SetFaultName("North Main");
    ZNFaultTreeItems::update(tree, setItem->child(0), *set.findFaultLight(1), false);
    EXPECT_EQ(setItem->child(0)->text(), "North Main");
    EXPECT_EQ(setItem->child(0)->checkState(), Qt::Unchecked);
    EXPECT_EQ(checked.count(), 0);  // what the program shows is not the user's check

    ZNFaultTreeItems::fill(tree, setItem, set, [](int) { return true; });  // a refill replaces
    EXPECT_EQ(setItem->rowCount(), 3);
    EXPECT_EQ(checked.count(), 0);
}
