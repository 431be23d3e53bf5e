#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <znfaultpatchmanager.h>
#include <znsettings.h>

#include "faultsetfixtures.h"
#include "testservices.h"

using namespace fixtures;

namespace {

const georef::UnitObject kTime(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond);
const georef::UnitObject kDepth(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMetre);

void setStep(const QVariant& step)
{
    ZNSettings::setValue(QStringLiteral("FaultPicking"), QStringLiteral("AutoSaveStep"), step);
}

// Patch `id` gets `points`, the 2D flag and the units.
void setPatch(ZNFaultPatchManager& set, int id, const Points& points, bool twoD,
              const georef::UnitObject& units)
{
    append(set, id, points);
    set.getFaultPatch(id)->setIs2dFaultPatch(twoD);
    set.getFaultPatch(id)->SetUnitObject(units);
}

std::vector<int> fathersOf(const ZNFaultPatchManager& set)
{
    std::vector<int> fathers;
    for (int i = 0; i < set.getNumberOfPatch(); ++i) fathers.push_back(set.getFather(i));
    return fathers;
}

} // namespace

TEST(AutoSave, ACombinationWritesOnceItsCounterReachesTheStep)
{
    const QList<QPair<QVariant, QString>> cases = {
        // step, result of each call (1 wrote, 0 only counted)
        {1, "111"}, {3, "001001"}, {0, "11"}, {-3, "1"}, {"not a number", "00000000010"},
    };
    QTemporaryDir dir;
    for (const auto& c : cases) {
        setStep(c.first);
        ZNFaultPatchManager set;
        QString writes;
        for (int k = 0; k < c.second.size(); ++k) writes += set.autoSave(dir.path(), true, true) ? "1" : "0";
        EXPECT_EQ(writes, c.second) << c.first.toString().toStdString();
    }
    // Each combination counts on its own; init resets the counters.
    setStep(10);
    ZNFaultPatchManager set;
    for (int k = 0; k < 3; ++k) set.autoSave(dir.path(), true, false);
    EXPECT_EQ(set.getAutoSaveCounter(true, false), 3);
    EXPECT_EQ(set.getAutoSaveCounter(true, true) + set.getAutoSaveCounter(false, false) +
                  set.getAutoSaveCounter(false, true), 0);
    set.init(2, true);
    EXPECT_EQ(set.getAutoSaveCounter(true, false), 0);
}

TEST(AutoSave, TheEmergencyFileHoldsThePatchesOfItsKindAndDomainAndIsReplacedByTheNext)
{
    setStep(1);
    QTemporaryDir dir;
    RecordingProgress progress;
    ZNFaultPatchManager set(6);
    setPatch(set, 1, {P(1, 1), P(2, 2)}, true, kTime);
    setPatch(set, 2, {P(3, 3)}, false, kTime);
    setPatch(set, 3, {P(4, 4)}, true, kDepth);
    setPatch(set, 4, {P(5, 5), S, P(6, 6)}, true, kTime);
    linkPatches(set, 1, {4});
    set.insertNewFaultLight(1)->SetFaultName("Main");

    ZNFaultPatchManager saved;
    for (int edit = 0; edit < 2; ++edit) {  // the second save replaces the first
        set.addPickedPoint(1, P(7, edit));
        ASSERT_TRUE(set.autoSave(dir.path(), true, true));
        ASSERT_TRUE(saved.readPickedFault(dir.filePath("EmergencySave_Time"), true, -2));
        EXPECT_EQ(saved.getNumberOfPatch(), 4);  // reserved, patches 1 and 4, spare
        EXPECT_EQ(pointsOf(saved, 1), pointsOf(set, 1));
        EXPECT_EQ(pointsOf(saved, 2), pointsOf(set, 4));
        EXPECT_EQ(saved.getFather(2), 1);
        EXPECT_EQ(saved.findFaultLight(1)->GetFaultName(), "Main");
    }
    EXPECT_EQ(progress.titles.first(), "Faults saving: Emergency Save");
    ASSERT_TRUE(set.autoSave(dir.path(), true, false));
    ASSERT_TRUE(saved.readPickedFault(dir.filePath("EmergencySave_Depth"), true, -2));
    EXPECT_EQ(saved.getNumberOfPatch(), 3);
    EXPECT_EQ(pointsOf(saved, 1), pointsOf(set, 3));
}

TEST(ExtractFaultSet, ListedPatchesKeepTheirFaultsUnderRemappedFathersAndDescriptors)
{
    ZNFaultPatchManager set(6);
    for (int id = 1; id <= 4; ++id) append(set, id, {P(id, id), S, P(id, -id, 0, true)});
    linkPatches(set, 1, {2, 3});
    set.insertNewFaultLight(1)->SetFaultName("A");
    set.insertNewFaultLight(4)->SetFaultName("B");

    // 3, 2, 4 become 1, 2, 3 and a spare patch follows; fault 1's root is not listed, so
    // its first listed patch (old 3) becomes the root. Bad ids and repeats are skipped.
    core::Array<int> list;
    for (int id : {3, 2, 4, 99, 0, 3}) list.add(id);
    const std::unique_ptr<ZNFaultPatchManager> sub(set.extractSubFaultPatchManager(list));
    EXPECT_EQ(fathersOf(*sub), (std::vector<int>{0, 1, 1, 3, 4}));
    EXPECT_EQ(pointsOf(*sub, 1), pointsOf(set, 3));
    EXPECT_EQ(pointsOf(*sub, 3), pointsOf(set, 4));
    EXPECT_EQ(sub->findFaultLight(1)->GetFaultName(), "A");
    EXPECT_EQ(sub->findFaultLight(1)->getPen().color(), set.findFaultLight(1)->getPen().color());
    EXPECT_EQ(sub->findFaultLight(1)->getPatchList().size(), 2);
    EXPECT_EQ(sub->findFaultLight(3)->GetFaultName(), "B");
    EXPECT_TRUE(sub->isValid());

    // A listed root stays the root.
    list.clear();
    for (int id : {2, 1}) list.add(id);
    const std::unique_ptr<ZNFaultPatchManager> withRoot(set.extractSubFaultPatchManager(list));
    EXPECT_EQ(fathersOf(*withRoot), (std::vector<int>{0, 2, 2, 3}));
    EXPECT_EQ(withRoot->findFaultLight(2)->GetFaultName(), "A");
}

TEST(ConcatFaultSet, TheOtherSetsPatchesAndFaultsFollowOursUnrenamed)
{
    ZNFaultPatchManager ours(3);
    append(ours, 1, {P(1, 1)});
    ours.insertNewFaultLight(1)->SetFaultName("Ours");

    ZNFaultPatchManager other(5);  // patches 1 to 3, then the spare patch 4
    other.setBlocSpace(georef::BlocSpace(5, 6, 7));
    for (int id = 1; id <= 3; ++id) append(other, id, {P(10 * id, 0), S, P(10 * id, 1, 0, true)});
    linkPatches(other, 1, {3});
    other.insertNewFaultLight(1)->SetFaultName("X");
    other.insertNewFaultLight(2)->SetFaultName("Ours");  // same name: kept
    other.findFaultLight(2)->setInterpolationSize(77);

    ASSERT_TRUE(ours.concatFaultPatchManager(other));
    EXPECT_EQ(fathersOf(ours), (std::vector<int>{0, 1, 2, 3, 4, 3, 6}));
    for (int q = 1; q <= 3; ++q) EXPECT_EQ(pointsOf(ours, q + 2), pointsOf(other, q));
    ASSERT_EQ(ours.getFaultLightList().size(), 3);
    EXPECT_EQ(ours.findFaultLight(3)->GetFaultName(), "X");
    EXPECT_EQ(ours.findFaultLight(3)->getPen().color(), other.findFaultLight(1)->getPen().color());
    EXPECT_EQ(ours.findFaultLight(3)->getPatchList().size(), 2);
    EXPECT_EQ(ours.findFaultLight(4)->GetFaultName(), "Ours");
    EXPECT_EQ(ours.findFaultLight(4)->getInterpolationSize(), 77);
    EXPECT_EQ(ours.getBlocSpace(), other.getBlocSpace());  // ours was empty
    EXPECT_TRUE(ours.isValid());

    ASSERT_TRUE(ours.concatFaultPatchManager(ours));
    EXPECT_EQ(ours.getNumberOfPatch(), 13);
    EXPECT_EQ(ours.getFaultLightList().size(), 6);
    EXPECT_TRUE(ours.isValid());
}
