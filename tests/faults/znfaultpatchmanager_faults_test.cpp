#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include <QTemporaryDir>

#include <core/conventions.h>
#include <znfaultpatchmanager.h>

#include "faultsetfixtures.h"

using namespace fixtures;

namespace {
core::vec3 V(double x, double y, double z) { return {x, y, z}; }
const core::vec3 kSeparatorVec(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);
} // namespace

// ----- descriptors -----

TEST(FaultDescriptors, ANewDescriptorTakesTheSettingsButNotTheColourOfItsTemplate)
{
    ZNFaultPatchManager set(4);
    ZN3DFaultPatchLight settings;
    settings.setFilterSize(13);
    settings.setMeshingMethod(0);
    settings.SetFaultName("Template");
    settings.setLink(77);
    settings.setSaved(true);
    settings.setPen(QPen(QColor(1, 2, 3)));
    std::unique_ptr<ZN3DFaultPatchLight> light(set.createNewFaultLight(3, &settings));
    EXPECT_EQ(light->getFaultId(), 3);
    EXPECT_EQ(light->getFilterSize(), 13);
    EXPECT_EQ(light->getMeshingMethod(), 0);
    EXPECT_EQ(light->GetFaultName(), "Template");
    EXPECT_EQ(light->getLink(), 0u);
    EXPECT_FALSE(light->isSaved());
    EXPECT_TRUE(light->getPatchList().empty());
    // Each of red, green and blue is drawn in 0..256: (1, 2, 3) is as unlikely as any.
    EXPECT_NE(light->getPen().color(), QColor(1, 2, 3));
}

TEST(FaultDescriptors, InsertedDescriptorsListTheirFaultAndTakeItsSamplingPrecisions)
{
    ZNFaultPatchManager set(6);
    linkPatches(set, 2, {3, 4});
    set.getFaultPatch(2)->setSamplingVect(V(50, 20, 80));
    set.getFaultPatch(3)->setSamplingVect(V(60, 8.9, 40.7));
    set.getFaultPatch(4)->setSamplingVect(V(70, 30, 90));
    ZN3DFaultPatchLight* light = set.insertNewFaultLight(3);
    ASSERT_NE(light, nullptr);
    EXPECT_EQ(light->getFaultId(), 3);
    EXPECT_EQ(std::vector<int>(light->getPatchList().begin(), light->getPatchList().end()),
              (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(light->getUtmPrecision(), 40) << "the smaller of the lateral steps, truncated";
    EXPECT_EQ(light->getTimePrecision(), 8);
    EXPECT_EQ(set.findFaultLight(3), light);
}

TEST(FaultDescriptors, MergedSamplingTakesTheSmallestStepAndSkipsTheUnsetMarker)
{
    ZNFaultPatchManager set(5);
    set.getFaultPatch(1)->setSamplingVect(V(core::kNoValueReal, 25, 100));
    set.getFaultPatch(2)->setSamplingVect(V(70, core::kNoValueReal, 90));
    set.getFaultPatch(3)->setSamplingVect(V(80, 12, 95));
    core::Array<int> list;
    EXPECT_EQ(set.getMergedSamplingVect(list), kSeparatorVec);
    for (int id : {1, 2, 3, 99}) list.add(id);
    EXPECT_EQ(set.getMergedSamplingVect(list), V(70, 12, 90));
}

TEST(FaultDescriptors, FindingAcceptsOnlyPatchIdsAndReturnsTheFirstMatch)
{
    ZNFaultPatchManager set(4);
    ZN3DFaultPatchLight* first = set.insertNewFaultLight(2);
    set.insertNewFaultLight(2);
    EXPECT_EQ(set.findFaultLight(2), first);
    EXPECT_EQ(set.findFaultLight(0), nullptr);
    EXPECT_EQ(set.findFaultLight(4), nullptr);
    EXPECT_EQ(set.findFaultLight(1), nullptr);
}

TEST(FaultDescriptors, ADescriptorOfABadIdIsRefusedAndDeleted)
{
    ZNFaultPatchManager set(3);
    EXPECT_FALSE(set.insertNewFaultLight(static_cast<ZN3DFaultPatchLight*>(nullptr)));
    auto* light = new ZN3DFaultPatchLight();
    light->setFaultId(0);
    EXPECT_FALSE(set.insertNewFaultLight(light));  // deleted: the sanitizer build checks
    EXPECT_TRUE(set.getFaultLightList().isEmpty());
}

TEST(FaultDescriptors, RemovingDeletesOnlyDescriptorsOfTheList)
{
    ZNFaultPatchManager set(4);
    set.insertNewFaultLight(1);
    ZN3DFaultPatchLight* second = set.insertNewFaultLight(2);
    ZN3DFaultPatchLight stranger;
    set.removeFaultLight(&stranger);
    set.removeFaultLight(nullptr);
    set.removeFaultLight(3);
    EXPECT_EQ(set.getFaultLightList().size(), 2);
    set.removeFaultLight(1);
    ASSERT_EQ(set.getFaultLightList().size(), 1);
    EXPECT_EQ(set.getFaultLightList()[0], second);
    set.removeFaultLight(second);
    EXPECT_TRUE(set.getFaultLightList().isEmpty());
}

// ----- removing whole faults -----

namespace {
// Three faults: 1 (patches 1 and 2 merged, named "A"), 3 ("B"), 4 ("C"), each with points.
void threeFaults(ZNFaultPatchManager& set)
{
    append(set, 1, {P(0, 0), P(0, 10), S, P(5, 0), P(5, 10)});
    append(set, 2, {P(10, 0), P(10, 10, 0, true)});
    append(set, 3, {P(50, 0), P(50, 10)});
    append(set, 4, {P(90, 0), P(90, 10)});
    linkPatches(set, 1, {2});
    const char* names[] = {"A", "B", "C"};
    int k = 0;
    for (int fault : {1, 3, 4}) set.insertNewFaultLight(fault)->SetFaultName(names[k++]);
}
} // namespace

TEST(RemovingFaults, AFaultGoesWithItsDescriptorAndTheEntriesOfEveryPatchOfItsTree)
{
    ZNFaultPatchManager set(5);
    threeFaults(set);
    const State before = State::of(set);
    const QColor colour = set.findFaultLight(1)->getPen().color();
    ZNFaultPatchManager::RemovedFault removed;
    ASSERT_TRUE(set.removePickedFault(1, &removed));
    EXPECT_TRUE(pointsOf(set, 1).empty());
    EXPECT_TRUE(pointsOf(set, 2).empty());
    EXPECT_EQ(pointsOf(set, 3).size(), 2u);
    EXPECT_EQ(set.getFather(2), 1);  // the tree stays as it was
    EXPECT_EQ(set.findFaultLight(1), nullptr);
    EXPECT_EQ(State::of(set).faultNames, (std::vector<QString>{"B", "C"}));
    EXPECT_EQ(removed.patchIds.size(), 2u);

    ASSERT_TRUE(set.restorePickedFault(removed));
    EXPECT_EQ(State::of(set), before);  // points (automatic flags too), order of the list
    EXPECT_EQ(set.findFaultLight(1)->getPen().color(), colour);
}

TEST(RemovingFaults, TheDescriptorReturnsToItsPlaceAndTheCursorsLeaveTheRemovedFault)
{
    ZNFaultPatchManager set(5);
    threeFaults(set);
    set.setCurrentPickedFaultId(2);
    set.setCurrentMovingPointId(0);
    ZNFaultPatchManager::RemovedFault middle;
    ASSERT_TRUE(set.removePickedFault(3, &middle));
    EXPECT_EQ(set.getCurrentPickedFaultId(), 2);  // elsewhere: kept
    ZNFaultPatchManager::RemovedFault first;
    ASSERT_TRUE(set.removePickedFault(1, &first));
    EXPECT_EQ(set.getCurrentPickedFaultId(), -9999);
    EXPECT_EQ(set.getCurrentMovingPointId(), -9999);
    ASSERT_TRUE(set.restorePickedFault(middle));  // its place (1) is past the list's end now
    ASSERT_TRUE(set.restorePickedFault(first));
    EXPECT_EQ(State::of(set).faultNames, (std::vector<QString>{"A", "C", "B"}));
}

TEST(RemovingFaults, RefusalsChangeNothing)
{
    ZNFaultPatchManager set(6);
    threeFaults(set);
    const State before = State::of(set);
    for (int bad : {0, 2, 5, 6, -1, -9999})  // reserved, not a root, empty without descriptor, outside
        EXPECT_FALSE(set.removePickedFault(bad, nullptr)) << bad;
    EXPECT_EQ(State::of(set), before);

    ZNFaultPatchManager::RemovedFault removed;
    ASSERT_TRUE(set.removePickedFault(3, &removed));
    const State without = State::of(set);
    set.addPickedPoint(3, P(1, 1));  // the patch was picked again meanwhile
    EXPECT_FALSE(set.restorePickedFault(removed));
    set.removePickedPoint(3, 0);
    set.insertNewFaultLight(3);      // or got a descriptor again
    EXPECT_FALSE(set.restorePickedFault(removed));
    set.removeFaultLight(3);
    ZNFaultPatchManager::RemovedFault outside = removed;
    outside.patchIds = {9};
    EXPECT_FALSE(set.restorePickedFault(outside));
    EXPECT_EQ(State::of(set), without);
}

// ----- conversions -----

TEST(FaultSetConversions, EachRowOfPointsBecomesOneFault)
{
    core::MultiArray<core::vec3> rows(3);
    for (const core::vec3& p : {V(0, 0, 0), V(0, 1, 0), kSeparatorVec, V(1, 0, 0)})
        rows.addElement(0, p, false);
    rows.addElement(2, V(5, 5, 5), false);  // row 1 stays empty
    ZNFaultPatchManager set(rows, 60, 12);
    ASSERT_EQ(set.getNumberOfPatch(), 4);
    EXPECT_EQ(pointsOf(set, 1), (Points{P(0, 0), P(0, 1), S, P(1, 0)}));
    EXPECT_TRUE(pointsOf(set, 2).empty());
    EXPECT_EQ(pointsOf(set, 3), (Points{P(5, 5, 5)}));
    ASSERT_EQ(set.getFaultLightList().size(), 2) << "an empty row makes no fault";
    EXPECT_EQ(set.getFaultLightList()[0]->getFaultId(), 1);
    EXPECT_EQ(set.getFaultLightList()[1]->getFaultId(), 3);
    EXPECT_EQ(set.getFaultLightList()[0]->getUtmPrecision(), 60);
    EXPECT_EQ(set.getFaultLightList()[0]->getTimePrecision(), 12);
    EXPECT_EQ(set.getFaultPatch(2)->getSamplingVect(), V(60, 12, 60));
    EXPECT_TRUE(set.isValid());
}

TEST(FaultSetConversions, LinesBecomeTwoPointSticksBetweenSeparators)
{
    core::MultiArray<geom::Line> rows(2);
    rows.addElement(0, geom::Line(V(0, 0, 0), V(0, 10, 0)), false);
    rows.addElement(0, geom::Line(V(5, 0, 0), V(5, 10, 0)), false);
    rows.addElement(1, geom::Line(V(9, 0, 9), V(9, 10, 9)), false);
    ZNFaultPatchManager set(rows, 100, 25, 17);
    EXPECT_EQ(pointsOf(set, 1), (Points{P(0, 0), P(0, 10), S, P(5, 0), P(5, 10)}));
    EXPECT_EQ(pointsOf(set, 2), (Points{P(9, 0, 9), P(9, 10, 9)}));
    ASSERT_EQ(set.getFaultLightList().size(), 2);
    EXPECT_EQ(set.getFaultLightList()[1]->getInterpolationSize(), 17);
}

TEST(FaultSetConversions, LinesWithSettingsTakeEverySettingButTheColour)
{
    core::MultiArray<geom::Line> rows(1);
    rows.addElement(0, geom::Line(V(0, 0, 0), V(0, 1, 0)), false);
    ZN3DFaultPatchLight settings;
    settings.setUtmPrecision(75);
    settings.setTimePrecision(5);
    settings.setFilterSize(3);
    settings.setShowPreview(false);
    ZNFaultPatchManager set(rows, &settings);
    ASSERT_EQ(set.getFaultLightList().size(), 1);
    const ZN3DFaultPatchLight* light = set.getFaultLightList()[0];
    EXPECT_EQ(light->getUtmPrecision(), 75);
    EXPECT_EQ(light->getTimePrecision(), 5);
    EXPECT_EQ(light->getFilterSize(), 3);
    EXPECT_FALSE(light->getShowPreview());
    ZNFaultPatchManager defaults(rows, nullptr);
    EXPECT_EQ(defaults.getFaultLightList()[0]->getUtmPrecision(), 100);
}

TEST(FaultSetConversions, SticksNameTheirFaultAfterTheFirstNamedStick)
{
    core::MultiArray<ZNFaultStick> rows(2);
    ZNFaultStick unnamed(V(0, 0, 0), V(0, 1, 0), 0, 0);
    ZNFaultStick named(V(1, 0, 0), V(1, 1, 0), 0, 0);
    named.SetFaultName("F7");
    rows.addElement(0, unnamed, false);
    rows.addElement(0, named, false);
    rows.addElement(1, unnamed, false);
    ZNFaultPatchManager set(rows, georef::UnitObject(), 100, 25);
    EXPECT_EQ(pointsOf(set, 1), (Points{P(0, 0), P(0, 1), S, P(1, 0), P(1, 1)}));
    ASSERT_EQ(set.getFaultLightList().size(), 2);
    EXPECT_EQ(set.getFaultLightList()[0]->GetFaultName(), "F7");
    EXPECT_EQ(set.getFaultLightList()[1]->GetFaultName(), "Unnamed");
}

TEST(FaultSetConversions, PickedPointRowsAreCopiedAsTheyAreFromTheFirstRowOn)
{
    core::MultiArray<core::PointWithBool> rows(3);
    rows.addElement(0, P(99, 99), false);  // a reserved row, skipped
    for (const core::PointWithBool& p : {P(1, 1), S, P(2, 2, 0, true)}) rows.addElement(1, p, false);
    rows.addElement(2, P(3, 3), false);
    ZNFaultPatchManager set(1, rows);
    ASSERT_EQ(set.getNumberOfPatch(), 3);
    EXPECT_EQ(pointsOf(set, 1), (Points{P(1, 1), S, P(2, 2, 0, true)}));
    EXPECT_EQ(pointsOf(set, 2), (Points{P(3, 3)}));
    ZNFaultPatchManager all(-4, rows);
    EXPECT_EQ(all.getNumberOfPatch(), 4);
    EXPECT_EQ(pointsOf(all, 1), (Points{P(99, 99)}));
}

TEST(FaultSetConversions, ACopyIsIndependentOfItsSource)
{
    ZNFaultPatchManager source(4);
    append(source, 1, {P(1, 1), S, P(2, 2)});
    linkPatches(source, 1, {3});
    source.insertNewFaultLight(1)->SetFaultName("Main");
    source.setBlocSpace(georef::BlocSpace(10, 20, 30));
    source.setPicked(false);
    source.setStoredId(12);
    source.insertUndoListConfiguration("Pick Point", 1);
    source.setCurrentPickedFaultId(1);

    ZNFaultPatchManager copy(source);
    EXPECT_EQ(State::of(copy), State::of(source));
    EXPECT_EQ(copy.getBlocSpace(), source.getBlocSpace());
    EXPECT_FALSE(copy.isPicked());
    EXPECT_EQ(copy.getStoredId(), 12);
    EXPECT_EQ(copy.getNumberOfConfiguration(), 0);
    EXPECT_EQ(copy.getCurrentPickedFaultId(), core::kNoValue);
    EXPECT_NE(copy.findFaultLight(1), source.findFaultLight(1));

    copy.addPickedPoint(1, P(5, 5));
    copy.findFaultLight(1)->SetFaultName("Copy");
    EXPECT_EQ(source.getNumberOfPickedPoint(1), 3);
    EXPECT_EQ(source.findFaultLight(1)->GetFaultName(), "Main");
    EXPECT_TRUE(copy.isValid());
}

namespace {
// The first descriptor of `faultId` in list order, found by walking the list.
const ZN3DFaultPatchLight* walkFor(const ZNFaultPatchManager& set, int faultId)
{
    if (faultId < 1 || faultId >= set.getNumberOfPatch()) return nullptr;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList())
        if (light->getFaultId() == faultId) return light;
    return nullptr;
}
} // namespace

TEST(FaultDescriptors, FindingThroughTheIndexAgreesWithTheListAfterEveryChange)
{
    // Descriptors are found through an index by id: every way the list changes must
    // leave findFaultLight answering as a walk through the list would.
    const std::function<void(ZNFaultPatchManager&)> changes[] = {
        [](ZNFaultPatchManager& set) { set.insertNewFaultLight(3); },
        [](ZNFaultPatchManager& set) { set.insertNewFaultLight(2); },  // a second of 2
        [](ZNFaultPatchManager& set) { set.removeFaultLight(2); },
        [](ZNFaultPatchManager& set) { set.removeFaultLight(set.getFaultLightList().first()); },
        [](ZNFaultPatchManager& set) { set.addPatch(); set.insertNewFaultLight(set.getNumberOfPatch() - 1); },
        [](ZNFaultPatchManager& set) { set.concatFaultPatchManager(set); },
        [](ZNFaultPatchManager& set) {
            QTemporaryDir dir;
            ASSERT_TRUE(set.writePickedFault(dir.filePath("set"), false, nullptr, false));
            ASSERT_TRUE(set.readPickedFault(dir.filePath("set"), false, -1));
        },
        [](ZNFaultPatchManager& set) {
            core::Array<int> patches;
            for (int p = 1; p < set.getNumberOfPatch(); p += 2) patches.add(p);
            std::unique_ptr<ZNFaultPatchManager> sub(set.extractSubFaultPatchManager(patches));
            ASSERT_TRUE(sub);
            for (int id = -1; id <= sub->getNumberOfPatch(); ++id)
                EXPECT_EQ(sub->findFaultLight(id), walkFor(*sub, id)) << "sub " << id;
        },
        [](ZNFaultPatchManager& set) {
            // A fault taken out and put back: its descriptor returns to its place.
            const int id = set.getFaultLightList()[1]->getFaultId();
            set.addPickedPoint(id, core::PointWithBool(1, 2, 3));
            ZNFaultPatchManager::RemovedFault removed;
            ASSERT_TRUE(set.removePickedFault(id, &removed));
            EXPECT_EQ(set.findFaultLight(id), walkFor(set, id));
            ASSERT_TRUE(set.restorePickedFault(removed));
        },
        [](ZNFaultPatchManager& set) { set.init(set.getNumberOfPatch(), false); },
        [](ZNFaultPatchManager& set) { set.init(4, true); set.insertNewFaultLight(1); },
    };
    ZNFaultPatchManager set(6);
    for (int id = 1; id < 6; ++id) set.insertNewFaultLight(id);
    int step = 0;
    for (const auto& change : changes) {
        ASSERT_NO_FATAL_FAILURE(change(set));
        ++step;
        for (int id = -1; id <= set.getNumberOfPatch(); ++id)
            EXPECT_EQ(set.findFaultLight(id), walkFor(set, id)) << "after change " << step << ", id " << id;
    }
}
