#include <gtest/gtest.h>

#include <memory>

#include <core/conventions.h>
#include <znfaultpatchmanager.h>
#include <znprocess.h>

#include "faultsetfixtures.h"
#include "orthographicviewer.h"
#include "testservices.h"

using namespace fixtures;

namespace {
std::vector<int> listOf(const ZNFaultPatchManager& set, int id)
{
    core::Array<int> list;
    set.getPatchListWithLinkedList(id, list, true);
    return std::vector<int>(list.begin(), list.end());
}
} // namespace

TEST(FaultSetModel, ANewFaultSetHasTheReservedPatchAndOnePatchToPickIn)
{
    ZNFaultPatchManager set;
    EXPECT_EQ(set.getNumberOfPatch(), 2);
    EXPECT_TRUE(set.isPicked());
    EXPECT_FALSE(set.isLocked());
    EXPECT_EQ(set.getZNObjectType(), "ZNPickedFaultPatchManager");
    EXPECT_EQ(set.getCurrentPickedFaultId(), core::kNoValue);
    EXPECT_EQ(set.getCurrentMovingPointId(), core::kNoValue);
    EXPECT_EQ(set.getNumberOfPickedPoint(0), 0);
    EXPECT_EQ(set.getNumberOfPickedPoint(1), 0);
    EXPECT_EQ(set.getFather(0), 0);
    EXPECT_EQ(set.getFather(1), 1);
    EXPECT_EQ(set.getHistoryLimit(), 100);
    EXPECT_TRUE(set.isValid());
    set.setPicked(false);
    EXPECT_EQ(set.getZNObjectType(), "ZNFaultPatchManager");
}

TEST(FaultSetModel, AFaultSetIsKnownToTheHostRegistryWhileItLives)
{
    RecordingProcess process;
    auto set = std::make_unique<ZNFaultPatchManager>(4);
    const ZNFaultPatchManager* gone = set.get();
    EXPECT_TRUE(ZNProcess::exists(gone));
    EXPECT_TRUE(ZNProcess::getObjectListWithType("ZNPickedFaultPatchManager").contains(set.get()));
    set->init(3, true);  // registering again keeps one entry
    EXPECT_EQ(ZNProcess::getObjectListWithType("ZNPickedFaultPatchManager").count(set.get()), 1);
    set.reset();
    EXPECT_FALSE(ZNProcess::exists(gone));
}

TEST(FaultSetModel, PointOperationsAnswerNeutrallyForTheReservedPatchAndBadIds)
{
    ZNFaultPatchManager set(3);
    append(set, 1, {P(1, 1), P(2, 2)});
    OrthographicViewer viewer;
    viewer.setSection(OrthographicViewer::sectionAlongX(0, -10, 10, -10, 10));
    const State before = State::of(set);
    for (int id : {0, -1, 3, 50, core::kNoValue}) {
        SCOPED_TRACE(testing::Message() << "patch " << id);
        core::Array<core::PointWithBool> gathered;
        EXPECT_FALSE(set.addPickedPoint(id, P(5, 5)));
        EXPECT_FALSE(set.insertPickedPoint(id, 0, core::vec3(5, 5, 0)));
        EXPECT_FALSE(set.setPickedPoint(id, 0, P(5, 5)));
        EXPECT_EQ(set.getPickedPoint(id, 0), nullptr);
        EXPECT_FALSE(set.removePickedPoint(id, 0));
        EXPECT_EQ(set.getNumberOfPickedPoint(id), 0);
        EXPECT_EQ(set.getNumberOfValidPickedPoint(id), 0);
        EXPECT_EQ(set.getNumberOfFaultPickedPoint(id), 0);
        EXPECT_FALSE(set.isLastPickedPointNo_Value(id));
        EXPECT_EQ(set.findFaultLight(id), nullptr);
        EXPECT_EQ(set.getFaultPickedPointArray(id, gathered), 0);
        EXPECT_EQ(set.removeAutomaticPickedPoints(id, nullptr), 0);
        EXPECT_FALSE(set.createAdditionalPoint(id, &viewer));
        EXPECT_EQ(set.resamplePatchWithRandomLine(id, viewer.sectionAlongX(0, -1, 1, -1, 1)), 0);
        EXPECT_EQ(set.getNearestPatchIdAndPointId(id, core::vec3(), &viewer),
                  core::Triplet(core::kNoValue, core::kNoValue, core::kNoValue));
        set.insertMovingPointBis(id, core::vec3(1, 1, 0), &viewer);
        set.cleanFaultPicking(id);
        EXPECT_EQ(set.insertNewFaultLight(id), nullptr);
    }
    EXPECT_EQ(State::of(set), before);
    EXPECT_TRUE(set.isValid());
}

TEST(FaultSetModel, TheRootOfAPatchIsFoundThroughItsFathers)
{
    ZNFaultPatchManager set(7);
    set.setFather(5, 3);
    set.setFather(3, 2);
    set.initElementListBis();
    EXPECT_EQ(set.getFather(5), 2);
    EXPECT_EQ(set.getFather(3), 2);
    EXPECT_EQ(set.getFather(2), 2);
    EXPECT_EQ(set.getInitialFather(5), 2);
    EXPECT_EQ(set.getFather(7), 7) << "an id beyond the array is returned as it is";
    EXPECT_EQ(set.getFather(100), 100);
    EXPECT_TRUE(set.isValid());
}

TEST(FaultSetModel, AFatherLinkOutOfRangeEndsTheWalkOnThatId)
{
    ZNFaultPatchManager set(6);
    set.setFather(4, 42);
    set.setFather(2, 4);
    EXPECT_EQ(set.getFather(4), 42);
    EXPECT_EQ(set.getFather(2), 42);
    EXPECT_EQ(set.getInitialFather(2), 42);
    set.initElementListBis();
    EXPECT_EQ(listOf(set, 2), std::vector<int>{2}) << "a broken tree lists the patch alone";
    QString why;
    EXPECT_FALSE(set.isValid(&why));
    EXPECT_EQ(why, "father of 4");
}

TEST(FaultSetModel, AFatherCycleIsReportedInsteadOfWalkedForever)
{
    StderrCapture err;
    ZNFaultPatchManager set(6);
    set.setFather(2, 3);
    set.setFather(3, 2);
    const int root = set.getFather(2);
    EXPECT_TRUE(root == 2 || root == 3);
    EXPECT_TRUE(err.text().contains("assert fail")) << "the cycle is a programming error";
    const int initial = set.getInitialFather(2);
    EXPECT_TRUE(initial == 2 || initial == 3);
}

TEST(FaultSetModel, AFaultListsEachOfItsPatchesOnceRootFirst)
{
    ZNFaultPatchManager set(8);
    set.setFather(3, 2);
    set.setFather(6, 5);
    set.setFather(5, 2);
    set.setFather(7, 2);  // the last patch is linked like any other
    set.initElementListBis();
    const std::vector<int> fault{2, 3, 5, 6, 7};
    EXPECT_EQ(listOf(set, 6), fault);
    EXPECT_EQ(listOf(set, 3), fault);
    EXPECT_EQ(listOf(set, 2), fault);
    EXPECT_EQ(listOf(set, 4), std::vector<int>{4});
    EXPECT_EQ(listOf(set, 0), std::vector<int>{0});
    EXPECT_EQ(listOf(set, 7), fault);
    EXPECT_TRUE(listOf(set, 8).empty());
    EXPECT_TRUE(listOf(set, -1).empty());

    core::Array<int> list;
    list.add(99);
    set.getPatchListWithLinkedList(4, list, false);
    EXPECT_EQ(std::vector<int>(list.begin(), list.end()), (std::vector<int>{99, 4}));
}

TEST(FaultSetModel, PatchListsInsideFaultsCollectEachFaultOnce)
{
    ZNFaultPatchManager set(8);
    linkPatches(set, 2, {3, 5});
    core::Array<int> requested;
    for (int id : {5, 4, 3, 99, 2, -3}) requested.add(id);
    core::Array<int> list;
    const int stampBefore = set.getCurrentIndex();
    set.getPatchListInsideFault(requested, list);
    EXPECT_EQ(std::vector<int>(list.begin(), list.end()), (std::vector<int>{2, 3, 5, 4}));
    EXPECT_EQ(set.getCurrentIndex(), stampBefore + 1);
}

TEST(FaultSetModel, CountsTellEntriesFromValidPoints)
{
    ZNFaultPatchManager set(3);
    append(set, 1, {P(1, 1), S, P(2, 2), S});
    EXPECT_EQ(set.getNumberOfPickedPoint(1), 4);
    EXPECT_EQ(set.getNumberOfValidPickedPoint(1), 2);
    EXPECT_EQ(set.getNumberOfValidPickedPoint(2), 0);
    EXPECT_TRUE(set.isLastPickedPointNo_Value(1));
    EXPECT_FALSE(set.isLastPickedPointNo_Value(2));
}

TEST(FaultSetModel, CountingValidPatchesRefreshesTheirRecordsPointCounts)
{
    ZNFaultPatchManager set(4);
    append(set, 1, {P(1, 1), S, P(2, 2)});
    append(set, 3, {P(3, 3)});
    set.getFaultPatch(2)->setNbPoint(7);
    EXPECT_EQ(set.getNumberOfValidPatch(), 2);
    EXPECT_EQ(set.getFaultPatch(1)->getNbPoint(), 3) << "entries, separators included";
    EXPECT_EQ(set.getFaultPatch(3)->getNbPoint(), 1);
    EXPECT_EQ(set.getFaultPatch(2)->getNbPoint(), 7) << "an empty patch is left alone";
}

TEST(FaultSetModel, PickedPatchParametersComeFromHandPickedPointsOnly)
{
    ZNFaultPatchManager set(3);
    append(set, 1, {P(0, 0, 0), P(2, 0, 0), S, P(0, 2, 0), P(2, 2, 0), P(50, 50, 50, true)});
    set.computePatchParameters();
    const ZNFaultPatch* patch = set.getFaultPatch(1);
    EXPECT_EQ(patch->getNbPoint(), 4);
    EXPECT_EQ(patch->getCDG(), core::vec3(1, 1, 0));
    EXPECT_NEAR(std::fabs(patch->getNormal().z), 1.0, 1e-12);
    EXPECT_EQ(set.getFaultPatch(2)->getNbPoint(), 0);
}

TEST(FaultSetModel, AutomaticPatchParametersComeFromVoxelsReadFromTheOrigin)
{
    ZNFaultPatchManager set(3);
    set.setPicked(false);
    set.getFaultPatch(1)->setOrigin(10, 20, 30);
    core::MultiArray<core::ByteTriplet>& voxels = set.getPatchVoxels();
    voxels.addElement(1, core::ByteTriplet(0, 0, 0), false);
    voxels.addElement(1, core::ByteTriplet(-56, 2, -4), false);  // -56 reads as 200
    set.computePatchParameters();
    const ZNFaultPatch* patch = set.getFaultPatch(1);
    EXPECT_EQ(patch->getNbPoint(), 2);
    EXPECT_EQ(patch->getCDG(), core::vec3(110, 21, 28));
    EXPECT_EQ(set.getVoxelPosition(1, core::ByteTriplet(-56, 2, -4)), core::vec3(210, 22, 26));
}

TEST(FaultSetModel, APatchWithBothPicksAndVoxelsIsReportedAndTreatedAsPicked)
{
    RecordingEventBus bus;
    ZNFaultPatchManager set(3);
    append(set, 2, {P(1, 1, 1), P(3, 3, 3)});
    set.getFaultPatch(2)->setOrigin(0, 0, 0);
    set.getPatchVoxels().addElement(2, core::ByteTriplet(9, 9, 9), false);
    set.computePatchParameters();
    EXPECT_TRUE(bus.contains(ZNEventBus::Error, "Pb with picked patch"));
    EXPECT_EQ(set.getFaultPatch(2)->getNbPoint(), 2);
    EXPECT_EQ(set.getFaultPatch(2)->getCDG(), core::vec3(2, 2, 2));
}

TEST(FaultSetModel, InitWithResetDropsEveryDescriptorAndWithoutOnlyThoseOutOfRange)
{
    ZNFaultPatchManager set(6);
    append(set, 2, {P(1, 1)});
    append(set, 4, {P(2, 2)});
    set.insertNewFaultLight(2);
    set.insertNewFaultLight(4);
    set.setLock(true);
    set.setCurrentPickedFaultId(2);
    set.init(3, false);
    ASSERT_EQ(set.getFaultLightList().size(), 1);
    EXPECT_EQ(set.getFaultLightList()[0]->getFaultId(), 2);
    EXPECT_FALSE(set.isLocked());
    EXPECT_EQ(set.getCurrentPickedFaultId(), core::kNoValue);
    EXPECT_EQ(set.getNumberOfPickedPoint(2), 0);
    set.init(3, true);
    EXPECT_TRUE(set.getFaultLightList().isEmpty());
    EXPECT_TRUE(set.isValid());
}

TEST(FaultSetModel, AnAddedPatchIsAnEmptyFaultOfItsOwn)
{
    ZNFaultPatchManager set;
    const int id = set.addPatch();
    EXPECT_EQ(id, 2);
    EXPECT_EQ(set.getNumberOfPatch(), 3);
    EXPECT_EQ(set.getFather(id), id);
    EXPECT_TRUE(set.addPickedPoint(id, P(1, 2)));
    set.setFather(1, id);
    set.initElementListBis();
    EXPECT_EQ(listOf(set, 1), (std::vector<int>{2, 1}));  // the last patch holds a list
    const int next = set.addPatch();
    EXPECT_EQ(listOf(set, 1), (std::vector<int>{2, 1}));
    EXPECT_EQ(listOf(set, next), std::vector<int>{next});
    EXPECT_TRUE(set.isValid());
}

TEST(FaultSetModel, AddedPatchesTakeTheUnitsOfTheSetWhichSoStaysInItsDomain)
{
    ZNFaultPatchManager set;
    const georef::UnitObject time(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond);
    set.SetUnitObject(time);
    for (int k = 0; k < 10; ++k) set.addPatch();  // the middle patch, read for the set's units, is a new one
    EXPECT_EQ(set.getUnitObject(set.getNumberOfPatch() - 1), time);
    EXPECT_TRUE(set.GetUnitObject().isTime());
}

TEST(FaultSetModel, TheValidityCheckNamesStaleLinkedLists)
{
    ZNFaultPatchManager set(6);
    set.setFather(3, 2);
    QString why;
    EXPECT_TRUE(set.isValid(&why));  // 3 is not linked yet: no list lies
    set.initElementListBis();
    set.setFather(3, 3);             // the list of 2 still holds 3
    EXPECT_FALSE(set.isValid(&why));
    EXPECT_EQ(why, "list of 2");
}


TEST(FaultSetModel, TheUnitsOfTheFaultSetAreThoseOfItsMiddlePatch)
{
    ZNFaultPatchManager set(5);
    const georef::UnitObject time(georef::UnitObject::SpatialFoot,
                                  georef::UnitObject::VerticalMillisecond);
    set.getFaultPatch(2)->SetUnitObject(time);
    EXPECT_EQ(set.GetUnitObject(), time);
    set.SetUnitObject(georef::UnitObject());
    EXPECT_EQ(set.getUnitObject(2), georef::UnitObject());
    EXPECT_EQ(set.getUnitObject(4), georef::UnitObject());
    EXPECT_EQ(set.getUnitObject(9), georef::UnitObject()) << "default units for a bad id";
}
