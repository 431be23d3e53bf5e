#include <gtest/gtest.h>

#include <core/conventions.h>
#include <znfaultpatchmanager.h>
#include <znfaultpatchmanagerconfig.h>

#include "faultsetfixtures.h"
#include "testservices.h"

using namespace fixtures;

namespace {
const core::vec3 kNoFocus(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);

// A fault set whose patch 1 receives one pick per action, each followed by a snapshot.
struct PickSession {
    ZNFaultPatchManager set{3};
    int picks = 0;

    void pick()
    {
        ++picks;
        set.addPickedPoint(1, P(picks, picks));
        set.insertUndoListConfiguration("Pick Point", 1);
    }
};
} // namespace

TEST(FaultHistory, TheHistoryKeepsOneSnapshotMoreThanItsLimit)
{
    PickSession s;
    for (int i = 0; i < 150; ++i) s.pick();
    ASSERT_EQ(s.set.getNumberOfConfiguration(), 101);
    const ZNFaultPatchManagerConfig* oldest = s.set.getConfigurationAt(0);
    EXPECT_EQ(oldest->getPickedPoints().getCount(1), 50) << "the oldest 49 are gone";
    EXPECT_EQ(s.set.getCurrentConfiguration(), s.set.getConfigurationAt(100));
    EXPECT_TRUE(s.set.isValid());
}

TEST(FaultHistory, UndoAtTheFirstSnapshotChangesNothing)
{
    PickSession s;
    s.pick();
    s.set.addPickedPoint(1, P(9, 9));  // not snapshotted
    core::vec3 focus(1, 2, 3);
    EXPECT_FALSE(s.set.undoWithLastConfiguration(focus));
    EXPECT_EQ(focus, kNoFocus);
    EXPECT_EQ(s.set.getNumberOfPickedPoint(1), 2);
    EXPECT_EQ(s.set.getCurrentConfiguration(), s.set.getConfigurationAt(0));
}

TEST(FaultHistory, ANewActionAfterUndosDropsTheUndoneSnapshots)
{
    PickSession s;
    for (int i = 0; i < 4; ++i) s.pick();
    core::vec3 focus;
    s.set.undoWithLastConfiguration(focus);
    s.set.undoWithLastConfiguration(focus);
    s.pick();
    EXPECT_EQ(s.set.getNumberOfConfiguration(), 3);
    EXPECT_FALSE(s.set.redoWithLastConfiguration(focus));
    EXPECT_EQ(pointsOf(s.set, 1), (Points{P(1, 1), P(2, 2), P(5, 5)}));
}

TEST(FaultHistory, TheSameSnapshotIsNeverInsertedTwice)
{
    PickSession s;
    s.pick();
    s.pick();
    core::vec3 focus;
    s.set.undoWithLastConfiguration(focus);
    auto* first = const_cast<ZNFaultPatchManagerConfig*>(s.set.getConfigurationAt(0));
    s.set.insertUndoListConfiguration(first);
    s.set.insertUndoListConfiguration(nullptr);
    EXPECT_EQ(s.set.getNumberOfConfiguration(), 2) << "the redo branch is kept too";
    EXPECT_EQ(s.set.getCurrentConfiguration(), first);
}

TEST(FaultHistory, ASnapshotOfAnotherPatchCountRestoresNothing)
{
    ZNFaultPatchManager set(3);
    append(set, 1, {P(1, 1)});
    std::unique_ptr<ZNFaultPatchManagerConfig> before(set.getConfiguration("Pick Point", nullptr));
    set.addPatch();
    set.addPickedPoint(1, P(2, 2));
    linkPatches(set, 1, {2});
    const State changed = State::of(set);
    EXPECT_EQ(set.setConfiguration(before.get()), kNoFocus);
    EXPECT_EQ(State::of(set), changed);
    EXPECT_EQ(set.setConfiguration(nullptr), kNoFocus);
}

TEST(FaultHistory, APickUndoShowsTheRestoredLastPointAndEndsTheDrag)
{
    PickSession s;
    s.pick();
    s.pick();
    s.set.setCurrentPickedFaultId(1);
    s.set.setCurrentMovingPointId(1);
    core::vec3 focus;
    ASSERT_TRUE(s.set.undoWithLastConfiguration(focus));
    EXPECT_EQ(focus, core::vec3(1, 1, 0));
    EXPECT_EQ(s.set.getCurrentMovingPointId(), core::kNoValue);
}

TEST(FaultHistory, APickUndoShowsTheLastPointThatMovedOnceRounded)
{
    ZNFaultPatchManager set(2);
    append(set, 1, {P(0, 0), P(10, 10), P(20, 20)});
    set.insertUndoListConfiguration("Pick Point", 1);
    set.setPickedPoint(1, 0, P(0.3, -0.4));     // same once rounded
    set.setPickedPoint(1, 1, P(12, 10));        // moved
    set.insertUndoListConfiguration("Pick Point", 1);
    core::vec3 focus;
    ASSERT_TRUE(set.undoWithLastConfiguration(focus));
    EXPECT_EQ(focus, core::vec3(10, 10, 0));

    set.setPickedPoint(1, 2, P(20.4, 19.6));     // only rounding noise: the last point
    focus = set.setConfiguration(set.getConfigurationAt(0));
    EXPECT_EQ(focus, core::vec3(20, 20, 0));
}

TEST(FaultHistory, AnEditionSnapshotHoldsTheWholeFaultAndNothingElse)
{
    ZNFaultPatchManager set(5);
    append(set, 1, {P(1, 1)});
    append(set, 2, {P(2, 2)});
    append(set, 3, {P(3, 3)});
    linkPatches(set, 1, {2});
    set.insertNewFaultLight(1);
    ZNFaultPatchManagerConfig* config = set.insertUndoListConfiguration("Pick Point", 2);
    ASSERT_NE(config, nullptr);
    EXPECT_TRUE(config->isEditionMode());
    EXPECT_TRUE(set.isCurrentConfigInEditionMode());
    EXPECT_EQ(std::vector<int>(config->getPatchList().begin(), config->getPatchList().end()),
              (std::vector<int>{1, 2}));
    EXPECT_EQ(config->getPickedPoints().getCount(2), 1);
    EXPECT_EQ(config->getPickedPoints().getCount(3), 0);
    EXPECT_TRUE(config->getFaultLights().isEmpty());
    EXPECT_EQ(config->getActionName(), "Pick Point");
}

TEST(FaultHistory, AFullSnapshotRestoresFathersAndDescriptorsButNotPoints)
{
    ZNFaultPatchManager set(4);
    append(set, 1, {P(1, 1)});
    set.insertNewFaultLight(1)->SetFaultName("Before");
    set.setStoredId(5);
    ZNFaultPatchManagerConfig* full = set.insertUndoListConfiguration("Merge", 0);
    EXPECT_FALSE(full->isEditionMode());
    EXPECT_FALSE(set.isCurrentConfigInEditionMode());
    ASSERT_EQ(full->getFaultLights().size(), 1);
    EXPECT_NE(full->getFaultLights()[0], set.findFaultLight(1)) << "a deep copy";

    linkPatches(set, 1, {2});
    set.findFaultLight(1)->SetFaultName("After");
    set.insertNewFaultLight(2);
    set.addPickedPoint(1, P(2, 2));
    set.setStoredId(6);
    set.insertUndoListConfiguration("Merge", -9999);

    core::vec3 focus;
    ASSERT_TRUE(set.undoWithLastConfiguration(focus));
    EXPECT_EQ(set.getFather(2), 2);
    ASSERT_EQ(set.getFaultLightList().size(), 1);
    EXPECT_EQ(set.findFaultLight(1)->GetFaultName(), "Before");
    EXPECT_EQ(set.getStoredId(), 5);
    EXPECT_EQ(set.getNumberOfPickedPoint(1), 2) << "points are not part of a full snapshot";
    EXPECT_TRUE(set.isValid());
}

TEST(FaultHistory, TheDraggedPointIsLeftOutOfEditionSnapshots)
{
    ZNFaultPatchManager set(2);
    append(set, 1, {P(0, 0), P(5, 5), P(10, 10)});
    set.setCurrentPickedFaultId(1);
    set.setCurrentMovingPointId(1);
    core::Array<int> fault;
    fault.add(1);
    std::unique_ptr<ZNFaultPatchManagerConfig> edition(set.getConfiguration("Move", &fault));
    EXPECT_EQ(edition->getPickedPoints().getCount(1), 2);
    EXPECT_EQ(edition->getPickedPoints()(1, 1), P(10, 10));
    EXPECT_EQ(set.getNumberOfPickedPoint(1), 3) << "the fault set keeps it";

    set.setCurrentMovingPointId(3);  // beyond the list: nothing to leave out
    std::unique_ptr<ZNFaultPatchManagerConfig> beyond(set.getConfiguration("Move", &fault));
    EXPECT_EQ(beyond->getPickedPoints().getCount(1), 3);
}

TEST(FaultHistory, StoredFathersAreRestoredAsTheirAbsoluteValue)
{
    ZNFaultPatchManager set(4);
    ZNFaultPatchManagerConfig config;
    set.fillConfiguration("Merge", &config, nullptr);
    config.getFathers()[2] = -1;
    set.setConfiguration(&config);
    EXPECT_EQ(set.getFather(2), 1);
    core::Array<int> list;
    set.getPatchListWithLinkedList(2, list, true);
    EXPECT_EQ(list.size(), 2) << "the linked lists are rebuilt";
}

TEST(FaultHistory, ASnapshotWithoutPointContainerIsReportedAndSkipped)
{
    StderrCapture err;
    ZNFaultPatchManager set(3);
    append(set, 1, {P(1, 1)});
    core::Array<int> fault;
    fault.add(1);
    ZNFaultPatchManagerConfig config;
    set.fillConfiguration("Pick Point", &config, &fault);
    config.getPickedPoints() = core::MultiArray<core::PointWithBool>();
    set.addPickedPoint(1, P(2, 2));
    set.setConfiguration(&config);
    EXPECT_EQ(set.getNumberOfPickedPoint(1), 2);
    EXPECT_TRUE(err.text().contains("m_countArray"));
}

TEST(FaultHistory, ClearingTheHistoryStopsUndoAndRedo)
{
    PickSession s;
    s.pick();
    s.pick();
    s.set.clearUndoConfigurationList();
    core::vec3 focus;
    EXPECT_FALSE(s.set.undoWithLastConfiguration(focus));
    EXPECT_FALSE(s.set.redoWithLastConfiguration(focus));
    EXPECT_FALSE(s.set.isCurrentConfigInEditionMode());
    EXPECT_EQ(s.set.getCurrentConfiguration(), nullptr);
    s.pick();
    EXPECT_EQ(s.set.getNumberOfConfiguration(), 1);
}

TEST(FaultHistory, SnapshotCopiesAreDeep)
{
    ZNFaultPatchManager set(3);
    set.insertNewFaultLight(1);
    ZNFaultPatchManagerConfig full;
    set.fillConfiguration("Merge", &full, nullptr);
    ZNFaultPatchManagerConfig copy(full);
    ZNFaultPatchManagerConfig assigned;
    assigned = full;
    full.clearFaultLights();
    ASSERT_EQ(copy.getFaultLights().size(), 1);
    EXPECT_EQ(assigned.getFaultLights().size(), 1);
    EXPECT_EQ(assigned.getNumberOfPatch(), 3);
}
