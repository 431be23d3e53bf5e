#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <set>
#include <vector>

#include <QTemporaryDir>

#include <core/conventions.h>
#include <znbloc.h>
#include <znfaultpatchmanager.h>
#include <znlabelrecordfile.h>

#include "testservices.h"

namespace {

using Labels = ZN3DImage<int>;

// A label image of nx x ny x nz voxels, all unlabelled.
Labels labels(int nx, int ny, int nz) { return Labels(georef::BlocSpace(nx, ny, nz), -9999); }

// Fills the box [x0, x1] x [y0, y1] x [z0, z1] with `label`.
void fill(Labels& image, int label, core::Triplet from, core::Triplet to)
{
    for (int z = from.z; z <= to.z; ++z)
        for (int y = from.y; y <= to.y; ++y)
            for (int x = from.x; x <= to.x; ++x) image(x, y, z) = label;
}

std::set<int> contactsOf(const ZNFaultPatchManager& set, int patch)
{
    std::set<int> out;
    for (int k = 0; k < set.getNumberOfContact(patch); ++k) out.insert(set.getContact(patch, k));
    return out;
}

// Picks in patch `patch` a grid of nu x nv points from `origin` along the unit steps u and
// v, and updates its record; with `thickness` each point is doubled at +-thickness along
// u x v, so the record's spread across its plane is `thickness`.
void addPlane(ZNFaultPatchManager& set, int patch, core::vec3 origin, core::vec3 u, core::vec3 v,
              int nu, int nv, double thickness = 0.0)
{
    const core::vec3 n = u.cross(v).normalized();
    for (int i = 0; i < nu; ++i)
        for (int j = 0; j < nv; ++j) {
            const core::vec3 p = origin + u * i + v * j;
            for (const double side : thickness == 0.0 ? std::vector<double>{0.0}
                                                      : std::vector<double>{1.0, -1.0})
                set.addPickedPoint(patch, core::PointWithBool(p + n * (side * thickness)));
        }
    set.updatePickedPatchParameters(patch);
}

const core::vec3 X(1, 0, 0), Y(0, 1, 0), Z(0, 0, 1);

} // namespace

TEST(AutomaticFaultSet, EachLabelBecomesAPatchWithItsVoxelsAndSymmetricContacts)
{
    Labels image = labels(8, 6, 4);
    fill(image, 1, {1, 1, 1}, {3, 4, 2});
    fill(image, 3, {4, 1, 1}, {5, 2, 1});   // beside label 1 in slice 1
    fill(image, 2, {1, 1, 3}, {2, 2, 3});   // under label 1, in the next slice
    fill(image, 5, {7, 0, 0}, {7, 5, 3});   // only on the border column: seen by no one
    ZNFaultPatchManager set;
    ASSERT_TRUE(set.init(&image));
    EXPECT_FALSE(set.isPicked());
    EXPECT_EQ(set.getNumberOfPatch(), 7);  // labels 0..5 and the spare patch
    EXPECT_EQ(set.getBlocSpace(), image.blocSpace());
    EXPECT_EQ(set.getFaultPatch(1)->getNbPoint(), 24);
    EXPECT_EQ(set.getPatchVoxels().getCount(4), 0);
    EXPECT_TRUE(set.isValid());
    EXPECT_EQ(contactsOf(set, 1), (std::set<int>{2, 3}));
    EXPECT_EQ(contactsOf(set, 2), std::set<int>{1});
    EXPECT_EQ(contactsOf(set, 3), std::set<int>{1});
    EXPECT_TRUE(contactsOf(set, 5).empty());
    std::unique_ptr<Labels> faults(set.createFaultLabelImage());
    ASSERT_TRUE(faults);
    EXPECT_TRUE(std::equal(image.data(), image.data() + image.voxelCount(), faults->data()));

    RecordingEventBus bus;   // the pass on its own, label k being patch k
    ZNFaultPatchManager plain(7);
    EXPECT_TRUE(plain.getLateralContact(&image, -1));
    EXPECT_TRUE(bus.contains(4, QStringLiteral("Get Lateral Contact")));
    for (int p = 0; p < 7; ++p) EXPECT_EQ(contactsOf(plain, p), contactsOf(set, p)) << p;
}

TEST(AutomaticFaultSet, AVolumeWithoutLabelsIsRefused)
{
    RecordingEventBus bus;
    ZNFaultPatchManager set;
    const Labels empty = labels(4, 4, 4);
    EXPECT_FALSE(set.init(&empty));
    EXPECT_FALSE(set.init(static_cast<const Labels*>(nullptr)));
    EXPECT_FALSE(set.init(static_cast<ZNBloc*>(nullptr), 4));
    EXPECT_EQ(bus.messages.size(), 3);
    EXPECT_EQ(set.getNumberOfPatch(), 2);
    EXPECT_TRUE(set.isValid());
}

TEST(AutomaticFaultSet, VoxelsBeyond127StepsGoToAFurtherPatchOfTheSameFault)
{
    struct Case {
        core::Triplet last;   // the label runs from the origin to here
        int patches;          // patches the label is cut into
    };
    for (const Case c : {Case{{127, 0, 0}, 1}, Case{{128, 0, 0}, 2}, Case{{0, 2, 200}, 2},
                         Case{{130, 1, 129}, 4}}) {
        Labels image = labels(c.last.x + 1, c.last.y + 1, c.last.z + 1);
        fill(image, 1, {0, 0, 0}, c.last);
        ZNFaultPatchManager set;
        ASSERT_TRUE(set.init(&image));
        EXPECT_EQ(set.getNumberOfPatch(), 2 + c.patches);
        long long voxels = 0;
        for (int p = 1; p <= c.patches; ++p) {
            EXPECT_EQ(set.getFather(p), 1);
            voxels += set.getPatchVoxels().getCount(p);
        }
        EXPECT_EQ(voxels, static_cast<long long>(image.voxelCount()));
        std::unique_ptr<Labels> faults(set.createFaultLabelImage());
        EXPECT_TRUE(std::equal(image.data(), image.data() + image.voxelCount(), faults->data()));
        EXPECT_TRUE(set.isValid());
    }
    ZNFaultPatchManager set(3);
    EXPECT_FALSE(set.testPatchPointByteTriplet(1, {0, 0, 0}));  // origin undefined
    set.getFaultPatch(1)->setOrigin(10, 10, 10);
    EXPECT_TRUE(set.testPatchPointByteTriplet(1, {137, -117, 10}));
    EXPECT_FALSE(set.testPatchPointByteTriplet(1, {138, 10, 10}));
    EXPECT_FALSE(set.testPatchPointByteTriplet(1, {10, 10, -118}));
    EXPECT_EQ(set.getPatchPointByteTriplet(1, {137, -117, 10}), core::ByteTriplet(127, -127, 0));
}

TEST(AutomaticFaultSet, ABlockFileOrARecordFileReadSlabBySlabGivesTheSameFaultSet)
{
    Labels image = labels(140, 5, 7);
    fill(image, 1, {1, 1, 0}, {139, 1, 6});   // two boxes along x
    fill(image, 2, {1, 2, 0}, {3, 3, 6});
    fill(image, 4, {4, 2, 3}, {6, 3, 3});
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("labels.znb"));
    ZNBloc out;
    ASSERT_TRUE(out.create(path, image.blocSpace(), 0, 7, ZNBloc::Int32));
    ASSERT_TRUE(out.writeSlices(0, image, 0, 7) && out.close());
    ZNBloc in;
    ASSERT_TRUE(in.open(path));
    ZNLabelRecordFile records;
    ASSERT_TRUE(records.create(dir.filePath(QStringLiteral("labels.records")), image.blocSpace()));
    ASSERT_TRUE(records.appendSlices(image.data(), 7) && records.finish());
    ZNFaultPatchManager fromImage, fromBloc, fromRecords;
    ASSERT_TRUE(fromImage.init(&image));
    ASSERT_TRUE(fromBloc.init(&in, 2));
    ASSERT_TRUE(fromRecords.init(&records, 3));
    for (const ZNFaultPatchManager* slabs : {&fromBloc, &fromRecords}) {
        ASSERT_EQ(slabs->getNumberOfPatch(), fromImage.getNumberOfPatch());
        for (int p = 0; p < fromImage.getNumberOfPatch(); ++p) {
            EXPECT_EQ(contactsOf(*slabs, p), contactsOf(fromImage, p)) << p;
            const int count = fromImage.getPatchVoxels().getCount(p);
            ASSERT_EQ(slabs->getPatchVoxels().getCount(p), count) << p;
            for (int k = 0; k < count; ++k)
                EXPECT_EQ(slabs->getPatchVoxels().getArray(p)[k], fromImage.getPatchVoxels().getArray(p)[k]);
            EXPECT_EQ(slabs->getFather(p), fromImage.getFather(p));
        }
    }
    EXPECT_EQ(contactsOf(fromImage, 4), (std::set<int>{1, 2}));
    ZNLabelRecordFile unfinished;
    ASSERT_TRUE(unfinished.create(dir.filePath(QStringLiteral("u.records")), image.blocSpace()));
    RecordingEventBus bus;
    EXPECT_FALSE(fromRecords.init(&unfinished, 3));
    EXPECT_EQ(fromRecords.getNumberOfPatch(), ZNFaultPatchManager().getNumberOfPatch());
}

TEST(AutomaticFaultMerging, OnlyPatchesOfTheMinimumSizeEnterTheContactHeap)
{
    for (const int points : {10, 11}) {
        ZNFaultPatchManager set(4);
        addPlane(set, 1, {0, 0, 0}, X, Y, points, 1);
        addPlane(set, 2, {0, 1, 0}, X, Y, 11, 1);
        set.addContact(1, 2);
        core::Heap<core::Duplet> heap;
        EXPECT_TRUE(set.getSortedDirectContact(heap, 1.0, -1));
        EXPECT_EQ(heap.size(), points == 11 ? 1 : 0) << points;
    }
}

TEST(AutomaticFaultMerging, AQueuedPairIsMergedOnlyWhenTheWholeFaultsStayThin)
{
    const double threshold = 1.0;   // pairs are queued below 0.5
    for (const bool grown : {false, true}) {
        ZNFaultPatchManager set(5);
        addPlane(set, 1, {0, 0, 0}, X, Y, 5, 5, 0.49);
        addPlane(set, 2, {5, 0, 0}, X, Y, 5, 5, 0.49);
        addPlane(set, 3, {0, 0, 3}, X, Y, 10, 5);   // a parallel plane 3 steps away
        set.addContact(1, 2);
        if (grown) {
            ASSERT_TRUE(set.mergePatch(3, 1));
        }
        EXPECT_LT(set.getMergeCost(*set.getFaultPatch(1), *set.getFaultPatch(2)), 0.5);
        EXPECT_TRUE(set.fastContactMerging(threshold, -1));
        EXPECT_EQ(set.getFather(2) == set.getFather(1), !grown) << grown;
        EXPECT_FALSE(set.isMergingInProgress());
        EXPECT_TRUE(set.isValid());
    }
}

TEST(AutomaticFaultMerging, FaultsWhoseDipsDifferByMoreThanFiveDegreesStayApart)
{
    for (const double degrees : {4.0, 6.0}) {
        ZNFaultPatchManager set(4);
        const double a = 30.0 * M_PI / 180.0;
        const double b = (30.0 + degrees) * M_PI / 180.0;
        // Both planes hold x; their normals (0, sin, cos) differ by `degrees` in y.
        addPlane(set, 1, {0, 0, 0}, X, {0, std::cos(a), -std::sin(a)}, 5, 5);
        addPlane(set, 2, {5, 0, 0}, X, {0, std::cos(b), -std::sin(b)}, 5, 5);
        set.addContact(1, 2);
        EXPECT_TRUE(set.fastContactMerging(100.0, -1));
        EXPECT_EQ(set.getFather(1) == set.getFather(2), degrees < 5.0) << degrees;
    }
}

TEST(AutomaticFaultMerging, MergingRelinksTheFaultAndRefusesPatchesOfOneFault)
{
    ZNFaultPatchManager set(6);
    EXPECT_TRUE(set.mergePatch(3, 4));
    EXPECT_TRUE(set.mergePatch(1, 3));   // fault 1 joins fault 4: 4's patches, then 1
    EXPECT_EQ(set.getFather(1), 4);
    core::Array<int> list;
    set.getPatchListWithLinkedList(1, list, true);
    EXPECT_EQ(std::vector<int>(list.begin(), list.end()), (std::vector<int>{4, 3, 1}));
    for (const auto& pair : {std::pair{1, 1}, std::pair{3, 1}, std::pair{0, 2}, std::pair{2, 0},
                             std::pair{2, 6}, std::pair{-1, 2}})
        EXPECT_FALSE(set.mergePatch(pair.first, pair.second)) << pair.first << pair.second;
    EXPECT_EQ(set.getFather(2), 2);
    EXPECT_TRUE(set.isValid());
}

TEST(AutomaticFaultMerging, TheLastPatchJoinsAFaultLikeAnyOtherAndStaysJoinedInTheFile)
{
    struct Case {
        int patches, a, b;
        std::vector<int> fathers;  // after the merge
        std::vector<int> fault;    // the patches of b's fault, root first
    };
    const Case cases[] = {
        {3, 2, 1, {0, 1, 1}, {1, 2}},
        {3, 1, 2, {0, 2, 2}, {2, 1}},
        {5, 4, 2, {0, 1, 2, 3, 2}, {2, 4}},
    };
    QTemporaryDir dir;
    for (const Case& c : cases) {
        ZNFaultPatchManager set(c.patches);
        ASSERT_TRUE(set.mergePatch(c.a, c.b)) << c.patches << c.a << c.b;
        const QString path = dir.filePath(QStringLiteral("set%1%2").arg(c.a).arg(c.b));
        ASSERT_TRUE(set.writePickedFault(path, false, nullptr, false));
        ZNFaultPatchManager read;
        ASSERT_TRUE(read.readPickedFault(path, false, -1));
        for (const ZNFaultPatchManager* s : {&set, &read}) {
            std::vector<int> fathers;
            for (int i = 0; i < s->getNumberOfPatch(); ++i) fathers.push_back(s->getFather(i));
            EXPECT_EQ(fathers, c.fathers) << c.patches << c.a << c.b;
            core::Array<int> list;
            s->getPatchListWithLinkedList(c.a, list, true);
            EXPECT_EQ(std::vector<int>(list.begin(), list.end()), c.fault);
        }
        EXPECT_FALSE(read.mergePatch(c.a, c.b));  // already one fault
        EXPECT_FALSE(read.mergePatch(0, c.b));    // patch 0 stands for no fault
    }
}

TEST(AutomaticFaultMerging, ContactMergingJoinsAPatchInTheLastPlace)
{
    // Only two real patches: 1 and the last one, touching on one plane.
    ZNFaultPatchManager set(3);
    addPlane(set, 1, {0, 0, 0}, X, Y, 5, 5);
    addPlane(set, 2, {5, 0, 0}, X, Y, 5, 5);
    set.addContact(1, 2);
    EXPECT_TRUE(set.fastContactMerging(1.0, -1));
    EXPECT_EQ(set.getFather(1), set.getFather(2));
}

TEST(AutomaticFaultMerging, ContactCostsAreTheMeanOrTheLargestOfThePairs)
{
    ZNFaultPatchManager set(5);
    addPlane(set, 1, {0, 0, 0}, X, Y, 4, 4, 0.2);
    addPlane(set, 2, {4, 0, 0}, X, Y, 4, 4, 0.2);
    addPlane(set, 3, {0, 4, 0}, X, Y, 4, 4, 0.6);
    core::Array<core::Duplet> contacts;
    EXPECT_EQ(set.getContactArrayPlanarMergeCost(contacts, false), -9999.0);
    EXPECT_EQ(set.getContactArrayPlanarMergeCost(contacts, true), -9999.0);
    contacts.add({1, 2});
    contacts.add({1, 3});
    const double a = set.getMergeCost(*set.getFaultPatch(1), *set.getFaultPatch(2));
    const double b = set.getMergeCost(*set.getFaultPatch(1), *set.getFaultPatch(3));
    EXPECT_NEAR(a, 0.2, 1e-9);
    EXPECT_DOUBLE_EQ(set.getContactArrayPlanarMergeCost(contacts, false), (a + b) / 2);
    EXPECT_DOUBLE_EQ(set.getContactArrayPlanarMergeCost(contacts, true), b);
    EXPECT_EQ(set.getContactArrayPlanarMergeCost(1, 2, false), -9999.0);   // not in contact
}

TEST(AutomaticFaultMerging, ACancelledMergeStopsWithConsistentFathers)
{
    const int patches = 400;  // a row of coplanar patches, each touching the next
    for (const int cancelAfter : {1, 150}) {
        ZNFaultPatchManager set(patches + 2);
        for (int p = 1; p <= patches; ++p) {
            addPlane(set, p, {4.0 * p, 0, 0}, X, Y, 4, 4);
            if (p > 1) set.addContact(p - 1, p);
        }
        RecordingProgress progress(cancelAfter);
        EXPECT_FALSE(set.fastContactMerging(1.0, -1));
        EXPECT_TRUE(set.isValid());
        EXPECT_FALSE(set.isMergingInProgress());
        std::set<int> faults;
        for (int p = 1; p <= patches; ++p) faults.insert(set.getFather(p));
        // Cancelled while scoring: no merge; while merging: some, not all.
        EXPECT_EQ(faults.size() == patches, cancelAfter == 1) << cancelAfter;
        EXPECT_GT(faults.size(), 1u);
    }
    ZNFaultPatchManager tiny(2);
    EXPECT_TRUE(tiny.fastContactMerging(1.0, -1));
}

TEST(AutomaticFaultMerging, FaultContactMergingJoinsNeighboursButNotOverlappingFaults)
{
    RecordingEventBus bus;
    ZNFaultPatchManager set(6);
    addPlane(set, 1, {0, 0, 0}, X, Y, 6, 6);
    addPlane(set, 2, {6, 0, 0}, X, Y, 6, 6);
    addPlane(set, 3, {0, 6, 0}, X, Y, 6, 6);
    addPlane(set, 4, {1, 1, 0.4}, X, Y, 5, 5);   // lies over patch 1
    set.addContact(1, 2);
    set.addContact(1, 3);
    set.addContact(1, 4);
    EXPECT_FALSE(set.testFaultPatchMerge(1, 4));
    EXPECT_TRUE(set.testFaultPatchMerge(1, 2));
    core::Array<core::Duplet> log;
    EXPECT_TRUE(set.fastContactMergingWithFaultContactBis(11, 1, 0.5, &log, -1));
    EXPECT_EQ(log.size(), 2);
    EXPECT_EQ(set.getFather(1), set.getFather(2));
    EXPECT_EQ(set.getFather(1), set.getFather(3));
    EXPECT_NE(set.getFather(4), set.getFather(1));
    EXPECT_TRUE(bus.contains(4, QStringLiteral("Nb Merge : 2")));
    core::Array<int> connex;
    set.getConnexFault(2, connex);
    EXPECT_EQ(std::vector<int>(connex.begin(), connex.end()), std::vector<int>{4});
}

TEST(AutomaticFaultSet, TheFaultLabelsOfEverySlabAreThoseOfTheWholeImage)
{
    // Label 1 runs through 200 slices, so that its voxels lie in two patches whose
    // origins are 128 slices apart; label 3 is a small patch at the far end.
    Labels image = labels(6, 5, 200);
    fill(image, 1, {1, 1, 0}, {2, 3, 199});
    fill(image, 3, {4, 0, 190}, {5, 1, 199});
    ZNFaultPatchManager set;
    ASSERT_TRUE(set.init(&image));
    std::unique_ptr<Labels> whole(set.createFaultLabelImage());
    ASSERT_TRUE(whole);
    for (const int depth : {1, 7, 64, 128, 200})
        for (const bool reused : {false, true}) {
            // Filled from scratch, or one slab cleared where it was painted and reused.
            Labels slab(georef::BlocSpace(6, 5, depth), reused ? -9999 : 42);
            for (int z0 = 0; z0 + depth <= 200; z0 += depth) {
                ASSERT_TRUE(set.fillFaultLabelSlab(z0, slab, reused));
                EXPECT_TRUE(std::equal(slab.data(), slab.data() + slab.voxelCount(), whole->slice(z0)))
                    << "slices " << z0 << " to " << z0 + depth - 1 << (reused ? ", reused" : "");
                if (reused) {
                    ASSERT_TRUE(set.clearFaultLabelSlab(z0, slab));
                }
            }
        }
    Labels untouched(georef::BlocSpace(6, 5, 10), 42);
    Labels narrow(georef::BlocSpace(5, 5, 10), 42);
    for (int z0 : {-1, 191}) {
        EXPECT_FALSE(set.fillFaultLabelSlab(z0, untouched)) << z0;
        EXPECT_FALSE(set.clearFaultLabelSlab(z0, untouched)) << z0;
    }
    EXPECT_FALSE(set.fillFaultLabelSlab(0, narrow));
    EXPECT_EQ(untouched(0, 0, 0), 42);
    EXPECT_EQ(narrow(0, 0, 0), 42);
}

TEST(AutomaticFaultSet, AFaultLeftOverWhereTwoFaultsCrossJoinsTheOneItFitsOrIsDropped)
{
    // Two planes crossing along the z axis through (20, 20): label 1 at x = 20, label 2 at
    // y = 20. Label 3 lies beside plane 1 (x = 21) against the crossing, touching both;
    // label 4 touches plane 1 only. Faults of up to 100 voxels are settled: not the planes.
    const auto crossing = [] {
        Labels image = labels(40, 40, 12);
        fill(image, 1, {20, 0, 0}, {20, 39, 11});
        fill(image, 2, {0, 20, 0}, {39, 20, 11});
        fill(image, 3, {21, 21, 0}, {21, 24, 11});
        fill(image, 4, {19, 35, 0}, {19, 37, 11});
        return image;
    };
    struct Case {
        const char* name;
        int maxVoxels;
        double maxCost;
        int joined, dropped;
        int faultOfLabel3;   // -1: its voxels are dropped
    };
    const Case cases[] = {
        {"fits plane 1", 100, 2.5, 1, 0, 1},
        {"fits no plane well enough", 100, 0.05, 0, 1, -1},
        {"too large to be a leftover", 47, 2.5, 0, 0, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Labels image = crossing();
        ZNFaultPatchManager set;
        ASSERT_TRUE(set.init(&image));
        ASSERT_EQ(set.getFather(3), 3);
        const ZNFaultPatchManager::LeftoverOutcome outcome = set.settleCrossingLeftovers(c.maxVoxels, c.maxCost);
        EXPECT_EQ(outcome.joined, c.joined);
        EXPECT_EQ(outcome.dropped, c.dropped);
        std::unique_ptr<Labels> faults(set.createFaultLabelImage());
        ASSERT_TRUE(faults);
        EXPECT_EQ((*faults)(21, 22, 5), c.faultOfLabel3 < 0 ? -9999 : c.faultOfLabel3);
        EXPECT_EQ((*faults)(19, 36, 5), 4);  // touches one fault only: kept
        EXPECT_EQ((*faults)(20, 5, 5), 1);
        EXPECT_EQ((*faults)(5, 20, 5), 2);
        if (c.faultOfLabel3 < 0) {
            EXPECT_EQ(set.getFaultPatch(3)->getNbPoint(), 0);
        }
    }
}
