// Merging two faults as steps of the fault set's history: what a merge makes of the
// faults and their sticks, and undo and redo over exactly the steps each edit says.
#include <gtest/gtest.h>

#include <core/stickrules.h>
#include <faultmergehistory.h>
#include <znfaultpatchmanager.h>

#include "faultsetfixtures.h"

using namespace fixtures;

namespace {

// Faults 1 (two sticks, the last one open), 2 (two sticks), and 3 (patches 3 and 4, the
// last one closed), each with a descriptor; patch 5 is empty.
std::unique_ptr<ZNFaultPatchManager> threeFaults()
{
    auto set = std::make_unique<ZNFaultPatchManager>(6);
    append(*set, 1, {P(0, 0), P(0, 10), S, P(5, 0), P(5, 10)});
    append(*set, 2, {P(0, 1), P(0, 11), S, P(5, 1), P(5, 11)});
    append(*set, 3, {P(20, 0), P(20, 10)});
    append(*set, 4, {S, P(25, 0), P(25, 10), S});
    linkPatches(*set, 3, {4});
    for (int id : {1, 2, 3}) set->insertNewFaultLight(id)->SetFaultName(QString("F%1").arg(id));
    return set;
}

int stickCount(const ZNFaultPatchManager& set, int fault)
{
    core::Array<core::PointWithBool> points;
    set.getFaultPickedPointArray(fault, points);
    return core::sticks::countSticks(points.data(), points.size());
}

void walk(ZNFaultPatchManager& set, int steps, bool back)
{
    core::vec3 focus;
    for (int k = 0; k < steps; ++k)
        ASSERT_TRUE(back ? set.undoWithLastConfiguration(focus) : set.redoWithLastConfiguration(focus)) << k;
}

} // namespace

TEST(FaultMergeHistory, AMergeKeepsTheFirstFaultWithEveryStickOfBoth)
{
    auto set = threeFaults();
    EXPECT_TRUE(fault::mergeNeedsClosedStick(*set, 1));
    EXPECT_GT(fault::closeLastStickWithHistory(*set, 1, "End Stick"), 0);
    EXPECT_FALSE(fault::mergeNeedsClosedStick(*set, 1));
    EXPECT_GT(fault::mergeFaultsWithHistory(*set, 1, 2, "Merge Faults"), 0);

    EXPECT_EQ(set->getFather(2), 1);
    ASSERT_EQ(set->getFaultLightList().size(), 2);
    EXPECT_EQ(set->getFaultLightList()[0]->GetFaultName(), "F1");
    EXPECT_EQ(set->findFaultLight(2), nullptr);
    const core::Array<int>& patches = set->findFaultLight(1)->getPatchList();
    ASSERT_EQ(patches.size(), 2);
    EXPECT_EQ(patches[0], 1);
    EXPECT_EQ(patches[1], 2);
    EXPECT_EQ(stickCount(*set, 1), 4);  // no stick of one runs on into the other
    EXPECT_TRUE(set->isValid());
}

TEST(FaultMergeHistory, NothingToMergeOrCloseStoresNothing)
{
    auto set = threeFaults();
    const State before = State::of(*set);
    struct Case {
        int kept, absorbed;
    };
    for (const Case& c : {Case{1, 1}, Case{3, 4}, Case{0, 2}, Case{1, 6}, Case{-1, 2}, Case{2, 9999}})
        EXPECT_EQ(fault::mergeFaultsWithHistory(*set, c.kept, c.absorbed, "Merge"), 0) << c.kept << " " << c.absorbed;
    for (int fault : {3, 5, 0, 77}) {
        EXPECT_FALSE(fault::mergeNeedsClosedStick(*set, fault)) << fault;
        EXPECT_EQ(fault::closeLastStickWithHistory(*set, fault, "End Stick"), 0) << fault;
    }
    EXPECT_EQ(set->getNumberOfConfiguration(), 0);
    EXPECT_TRUE(State::of(*set) == before);
}

TEST(FaultMergeHistory, UndoingTheStepsGivesBackTheFaultsAndRedoingMergesAgain)
{
    for (const bool withHistory : {false, true}) {
        auto set = threeFaults();
        if (withHistory) set->insertUndoListConfiguration("Pick Point", 1);  // an earlier edit of fault 1
        const State start = State::of(*set);
        const int close = fault::closeLastStickWithHistory(*set, 1, "End Stick");
        const int merge = fault::mergeFaultsWithHistory(*set, 1, 2, "Merge Faults");
        EXPECT_EQ(close, withHistory ? 2 : 1);
        EXPECT_EQ(merge, 2);  // the history has a current snapshot by now
        const State merged = State::of(*set);

        walk(*set, merge, true);
        EXPECT_EQ(set->getFaultLightList().size(), 3);
        EXPECT_EQ(set->getFather(2), 2);
        walk(*set, close, true);
        EXPECT_TRUE(State::of(*set) == start) << withHistory;

        walk(*set, close, false);
        walk(*set, merge, false);
        EXPECT_TRUE(State::of(*set) == merged) << withHistory;
        EXPECT_EQ(stickCount(*set, 1), 4);
        EXPECT_TRUE(set->isValid());
    }
}

TEST(FaultMergeHistory, AMergeOfMultiPatchFaultsKeepsTheirPatchesInOrder)
{
    auto set = threeFaults();
    EXPECT_FALSE(fault::mergeNeedsClosedStick(*set, 3));  // its last patch ends closed
    EXPECT_EQ(fault::mergeFaultsWithHistory(*set, 3, 1, "Merge Faults"), 1);
    core::Array<int> patches;
    set->getPatchListWithLinkedList(1, patches, true);
    EXPECT_EQ(std::vector<int>(patches.begin(), patches.end()), std::vector<int>({3, 4, 1}));
    EXPECT_EQ(stickCount(*set, 3), 4);
    EXPECT_EQ(set->findFaultLight(1), nullptr);
}
