#include <gtest/gtest.h>

#include <vector>

#include <core/conventions.h>
#include <znfaultpatchmanager.h>

#include "faultsetfixtures.h"
#include "testservices.h"

using namespace fixtures;

namespace {

// Two sticks on inlines x and x + 2.
Points baseFault(double x)
{
    return {P(x, 20, 30), P(x, 25, 31), S, P(x + 2, 20, 30), P(x + 2, 26, 32)};
}

std::vector<std::pair<int, int>> pairsOf(const core::Array<core::Duplet>& pairs)
{
    std::vector<std::pair<int, int>> out;
    for (const core::Duplet& d : pairs) out.emplace_back(d.a, d.b);
    return out;
}

// Faults 1..11: copies, near copies and degenerate faults (see the test).
void fillDuplicates(ZNFaultPatchManager& set)
{
    for (int f : {1, 2, 6}) append(set, f, baseFault(10));
    for (int f : {3, 4, 5}) append(set, f, baseFault(15));
    append(set, 7, {P(10, 20, 30), P(10, 25, 31), S, P(12, 20, 30), P(12, 26, 32 + 1e-9)});
    append(set, 8, {P(10, 20, 30), P(10.3, 25.2, 30.8), S, P(12, 20, 30), P(12, 26, 32)});
    append(set, 9, {P(40, 40, 40)});
    append(set, 10, {P(40, 40, 40)});
    using Units = georef::UnitObject;
    set.getFaultPatch(6)->SetUnitObject(Units(Units::SpatialMetre, Units::VerticalMillisecond));
}

} // namespace

TEST(SimilarFaults, CopiesArePairedWithinTheirGroupAndNearCopiesAreNot)
{
    ZNFaultPatchManager set(12);
    fillDuplicates(set);
    // 6 is in time, 7's box is larger by a hair, 9 and 10 are single points, 11 is empty;
    // 8 differs from 1 by less than half a step and its box is the same.
    core::Array<core::Duplet> pairs;
    EXPECT_TRUE(set.getSameFaultArray(pairs, -1));
    const std::vector<std::pair<int, int>> expected{{1, 2}, {1, 8}, {2, 8},
                                                    {3, 4}, {3, 5}, {4, 5}};
    EXPECT_EQ(pairsOf(pairs), expected);
    EXPECT_FALSE(set.testSameFault(1, 6));
    EXPECT_FALSE(set.testSameFault(1, 7));
    EXPECT_FALSE(set.testSameFault(1, 11));
    EXPECT_FALSE(set.isSameVerticalDomain(1, 6));
    EXPECT_TRUE(set.isSameVerticalDomain(1, 2));

    set.insertNewFaultLight(1)->SetFaultName(QStringLiteral("F1"));
    QList<QPair<QString, QString>> names;
    pairs.clear();
    EXPECT_TRUE(set.getRemovedSameFaultArray(pairs, -1, &names));
    ASSERT_EQ(names.size(), 6);
    EXPECT_EQ(names[0], qMakePair(QStringLiteral("F1"), QString()));

    RecordingProgress progress(1);
    EXPECT_FALSE(set.getSameFaultArray(pairs, -1));
    EXPECT_EQ(progress.titles.value(0), QStringLiteral("Similar Fault Detection"));
}

TEST(SimilarFaults, BoxesAreInBlockSpace)
{
    ZNFaultPatchManager set(4);
    set.setBlocSpace(georef::BlocSpace(50, 50, 50, core::mat4::scaling({2.0, 4.0, 2.0})));
    append(set, 1, baseFault(20));
    double box[6] = {};
    core::Array<int> list;
    list.add(1);
    ASSERT_TRUE(set.getPatchListBlocRect(list, box));
    EXPECT_EQ(std::vector<double>(box, box + 6), (std::vector<double>{10, 5, 15, 11, 6.5, 16}));
    list[0] = 2;
    EXPECT_FALSE(set.getPatchListBlocRect(list, box));
}

TEST(SimilarFaults, PatchTypesAgreeOnlyWhenEveryFlagIsTheSame)
{
    ZNFaultPatchManager set(4);
    set.getFaultPatch(2)->setIs2dFaultPatch(true);
    set.getFaultPatch(3)->setIs2dFaultPatch(true);
    struct Case {
        std::vector<int> patches;
        bool same;
        bool is2d;   // expected flag; starts true, unchanged when not the same or empty
    };
    for (const Case& c : {Case{{}, true, true}, Case{{2, 3}, true, true}, Case{{1}, true, false},
                          Case{{2, 1}, false, true}}) {
        core::Array<int> list;
        for (int p : c.patches) list.add(p);
        bool is2d = true;
        EXPECT_EQ(set.isSameFaultType(list, is2d), c.same);
        EXPECT_EQ(is2d, c.is2d);
    }
}

TEST(SimilarFaults, TheEdgeCaseSummaryCountsEachFaultByItsFirstProblem)
{
    ZNFaultPatchManager set(9);
    append(set, 2, {P(1, 1), S, P(2, 2)});                          // only isolated points
    append(set, 3, {P(1, 1), P(1, 2), S, P(2, 1), P(2, 2)});        // no surface attached
    append(set, 4, {P(1, 1), P(1, 2), S, P(2, 1), P(2, 2)});        // a meshed surface
    append(set, 5, {P(1, 1), P(1, 2)});                             // one stick ...
    set.setFather(7, 5);                                            // ... and an empty patch
    set.initElementListBis();
    MeshSurface surface(4);
    surface.vertices.add({0, 0, 0});
    surface.triangles.add({0, 0, 0});
    set.attachFaultSurface(&surface);
    core::Array<int> faults;
    EXPECT_EQ(set.getFaultsEdgeCasesAnalysis(faults), QString());
    for (int f : {1, 2, 3, 4, 5, 6}) faults.add(f);
    EXPECT_EQ(set.getFaultsEdgeCasesAnalysis(faults),
              QStringLiteral("2 with a patch without picked points, 1 with a patch with only "
                             "isolated picked points, 1 with a no surface patch, 1 with a one "
                             "stick patch"));
    set.detachFaultSurface(&surface);
}
