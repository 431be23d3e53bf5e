#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <Eigen/Eigenvalues>
#include <omp.h>

#include <segmentation/patchspread.h>

using core::Triplet;
using fault::segmentation::planeDeviation;

namespace {

// The spread computed the textbook way: two passes in double, Eigen's solver.
double naiveDeviation(const core::Array<Triplet>& voxels)
{
    Eigen::Vector3d mean = Eigen::Vector3d::Zero();
    for (const Triplet& t : voxels) mean += Eigen::Vector3d(t.x, t.y, t.z);
    mean /= voxels.size();
    Eigen::Matrix3d c = Eigen::Matrix3d::Zero();
    for (const Triplet& t : voxels) {
        const Eigen::Vector3d d = Eigen::Vector3d(t.x, t.y, t.z) - mean;
        c += d * d.transpose();
    }
    c /= voxels.size();
    return std::sqrt(
        std::max(0.0, Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(c).eigenvalues()(0)));
}

core::Array<Triplet> noisyPlane(int side, unsigned seed, int offset = 0)
{
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> jitter(-1, 1);
    core::Array<Triplet> voxels;
    for (int a = 0; a < side; ++a)
        for (int b = 0; b < side; ++b)
            voxels.add({offset + a, offset + b, offset + (a + b) / 3 + jitter(rng)});
    return voxels;
}

} // namespace

TEST(PlaneDeviation, MatchesTheTextbookCovarianceAwayFromTheOrigin)
{
    for (int offset : {0, 1000, 2000000}) {
        const core::Array<Triplet> voxels = noisyPlane(30, 5, offset);
        EXPECT_NEAR(planeDeviation(voxels), naiveDeviation(noisyPlane(30, 5)), 1e-9);
    }
}

TEST(PlaneDeviation, VoxelsOnOnePlaneHaveNoSpread)
{
    core::Array<Triplet> flat;
    for (int a = 0; a < 7; ++a)
        for (int b = 0; b < 5; ++b) flat.add({a, 3, b});
    EXPECT_EQ(planeDeviation(flat), 0.0);

    core::Array<Triplet> threePoints;
    for (const Triplet& t : {Triplet(0, 0, 0), Triplet(5, 1, 2), Triplet(-3, 7, 11)})
        threePoints.add(t);
    EXPECT_EQ(planeDeviation(threePoints), 0.0);

    core::Array<Triplet> tilted;
    for (int a = 0; a < 9; ++a)
        for (int b = 0; b < 9; ++b) tilted.add({a, b, 2 * a - b});
    EXPECT_LT(planeDeviation(tilted), 1e-6);
}

TEST(PlaneDeviation, AnEmptySetHasNoValue)
{
    EXPECT_EQ(planeDeviation(core::Array<Triplet>()), -9999.0);
}

TEST(PlaneDeviation, IsTheSameBitForBitOnAnyNumberOfThreadsAndInAnyOrder)
{
    const core::Array<Triplet> voxels = noisyPlane(200, 3);  // 40000: summed in parallel
    core::Array<Triplet> reversed;
    for (int i = voxels.size() - 1; i >= 0; --i) reversed.add(voxels[i]);
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    const double one = planeDeviation(voxels);
    omp_set_num_threads(3);
    const double three = planeDeviation(voxels);
    omp_set_num_threads(threads);
    EXPECT_EQ(one, three);
    EXPECT_NEAR(planeDeviation(reversed), one, 1e-12);
    EXPECT_GT(one, 0.1);
}

TEST(VoxelMoments, GiveThePlaneDeviationOfTheSameVoxelsBitForBit)
{
    for (int side : {0, 1, 2, 10, 40}) {
        const core::Array<Triplet> voxels = noisyPlane(side, 8, 1000);
        for (int chunk : {1, 7, 1000}) {
            fault::segmentation::VoxelMoments moments;
            for (int i = 0; i < voxels.size(); i += chunk)
                moments.add(voxels.begin() + i,
                            voxels.begin() + std::min(voxels.size(), i + chunk));
            EXPECT_EQ(moments.count(), voxels.size());
            EXPECT_EQ(moments.planeDeviation(), planeDeviation(voxels));
        }
    }
}

TEST(VoxelMoments, ASpreadTheyForceIsReachedByEverySupersetUpToTheLimitAndNoMore)
{
    // Two crossing planes centred on the origin. The superset that spreads least adds the
    // missing voxels at their mean, the origin: its spread is sqrt(count / limit) times
    // theirs, which the test must tell apart from just above it.
    constexpr int kReach = 4;
    core::Array<Triplet> cross;
    for (int a = -kReach; a <= kReach; ++a)
        for (int b = -kReach; b <= kReach; ++b) {
            cross.add({a, b, 0});
            if (b != 0) cross.add({a, 0, b});
        }
    fault::segmentation::VoxelMoments moments;
    moments.add(cross.begin(), cross.end());
    std::mt19937 rng(2);
    std::uniform_int_distribution<int> position(-kReach, kReach);
    for (int limit : {cross.size(), 2 * cross.size(), 5 * cross.size()}) {
        SCOPED_TRACE(limit);
        core::Array<Triplet> atMean = cross;
        core::Array<Triplet> scattered = cross;
        while (atMean.size() < limit) {
            atMean.add({0, 0, 0});
            scattered.add({position(rng), position(rng), position(rng)});
        }
        const double least = planeDeviation(atMean);
        EXPECT_TRUE(moments.forcesDeviationOver(least * (1.0 - 1e-6), limit, kReach));
        EXPECT_FALSE(moments.forcesDeviationOver(least * (1.0 + 1e-6), limit, kReach));
        for (double deviation = 0.05; deviation < 4.0; deviation += 0.05)
            if (moments.forcesDeviationOver(deviation, limit, kReach)) {
                EXPECT_GE(planeDeviation(atMean), deviation);
                EXPECT_GE(planeDeviation(scattered), deviation);
            }
    }
}

TEST(VoxelMoments, NoSpreadIsBelowANonPositiveDeviationAndNoVoxelsForceNothing)
{
    fault::segmentation::VoxelMoments moments;
    EXPECT_FALSE(moments.forcesDeviationOver(1.0, 10, 5));
    EXPECT_EQ(moments.planeDeviation(), -9999.0);
    const Triplet one(3, 4, 5);
    moments.add(&one, &one + 1);
    for (double deviation : {0.0, -1.0, std::nan("")})
        EXPECT_TRUE(moments.forcesDeviationOver(deviation, 10, 5));
    EXPECT_FALSE(moments.forcesDeviationOver(1e-3, 10, 5));
    moments.reset();
    EXPECT_EQ(moments.count(), 0);
}
