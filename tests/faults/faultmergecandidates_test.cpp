// The merge candidates an extraction leaves to the user: touching faults that stayed
// apart, best first, numbered as the picked fault set.
#include <gtest/gtest.h>

#include <faultmergecandidates.h>
#include <znfaultpatchmanager.h>

namespace {

// A grid of n x n points in patch `patch` from `origin` along u and v, its record updated.
void addPlane(ZNFaultPatchManager& set, int patch, core::vec3 origin, core::vec3 u, core::vec3 v, int n = 6)
{
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) set.addPickedPoint(patch, core::PointWithBool(origin + u * i + v * j));
    set.updatePickedPatchParameters(patch);
}

fault::FaultSticks sticksOf(int faultId)
{
    fault::FaultSticks f;
    f.faultId = faultId;
    return f;
}

// Faults 1 (patches 1 and 4), 2 and 3 touch fault 1; 5 touches it but gave no sticks.
// 2 lies in fault 1's plane, 3 is tilted out of it.
ZNFaultPatchManager touchingFaults()
{
    const core::vec3 X(1, 0, 0), Y(0, 1, 0);
    ZNFaultPatchManager set(7);
    addPlane(set, 1, {0, 0, 0}, X, Y);
    addPlane(set, 4, {0, -6, 0}, X, Y);
    addPlane(set, 2, {6, 0, 0}, X, Y);
    addPlane(set, 3, {0, 6, 0}, X, core::vec3(0, 1, 1).normalized());
    addPlane(set, 5, {-6, 0, 0}, X, Y);
    set.setFather(4, 1);
    set.initElementListBis();
    for (int other : {2, 3, 5}) set.addContact(1, other);
    set.addContact(4, 2);
    return set;
}

} // namespace

TEST(MergeCandidates, TouchingFaultsLeftApartComeBestFirstInPickedIds)
{
    ZNFaultPatchManager set = touchingFaults();
    // Picked faults 1, 2, 3 hold the sticks of automatic faults 3, 1, 2.
    const std::vector<fault::FaultSticks> faults = {sticksOf(3), sticksOf(1), sticksOf(2)};
    core::Array<core::Duplet> pairs;
    core::Array<double> costs;
    ASSERT_TRUE(fault::mergeCandidatesOfExtraction(set, faults, 10.0, 11, pairs, costs, -1));
    ASSERT_EQ(pairs.size(), 2);
    ASSERT_EQ(costs.size(), 2);
    EXPECT_EQ(pairs[0], core::Duplet(2, 3));  // automatic 1 and 2: one plane
    EXPECT_EQ(pairs[1], core::Duplet(1, 2));  // automatic 1 and 3: tilted
    EXPECT_LT(costs[0], 1e-6);
    EXPECT_GT(costs[1], costs[0]);

    struct Case {
        double maxCost;
        int minFaultSize;
        int expected;
    };
    for (const Case& c : {Case{costs[1] * 0.99, 11, 1}, Case{10.0, 36, 2}, Case{10.0, 37, 0}}) {
        ASSERT_TRUE(fault::mergeCandidatesOfExtraction(set, faults, c.maxCost, c.minFaultSize, pairs, costs, -1));
        EXPECT_EQ(pairs.size(), c.expected) << c.maxCost << " " << c.minFaultSize;
        EXPECT_EQ(costs.size(), c.expected);
    }
}

TEST(MergeCandidates, AFaultSetWithoutContactsOrSticksHasNone)
{
    ZNFaultPatchManager picked(4);
    core::Array<core::Duplet> pairs;
    core::Array<double> costs;
    pairs.add(core::Duplet(1, 2));  // replaced
    EXPECT_TRUE(fault::mergeCandidatesOfExtraction(picked, {sticksOf(1), sticksOf(2)}, 10.0, 1, pairs, costs, -1));
    EXPECT_TRUE(pairs.empty());
    ZNFaultPatchManager set = touchingFaults();
    EXPECT_TRUE(fault::mergeCandidatesOfExtraction(set, {}, 10.0, 1, pairs, costs, -1));
    EXPECT_TRUE(pairs.empty());
}
