#include <gtest/gtest.h>

#include <limits>

#include <georef/blocspace.h>
#include <geom/symmetriceigen.h>
#include <zn3dimage.h>

#include <cmath>

using core::mat4;
using core::vec3;
using georef::BlocSpace;

TEST(BlocSpace, WorldToBlocIsTheInverseOfBlocToWorld)
{
    mat4 m = mat4::scaling({12.5, -4.0, 25.0});
    m.m[3] = 605000.0;
    m.m[11] = 6073000.0;
    BlocSpace space(100, 200, 300, m);
    const vec3 p(10, 20, 30);
    const vec3 back = space.worldToBloc(space.blocToWorld(p));
    EXPECT_NEAR(back.x, 10, 1e-9);
    EXPECT_NEAR(back.y, 20, 1e-9);
    EXPECT_NEAR(back.z, 30, 1e-9);
    EXPECT_EQ(space.voxelCount(), 100LL * 200 * 300);
}

TEST(BlocSpace, RefusesASingularMatrixAndClampsSizes)
{
    BlocSpace space(-3, 4, 5);
    EXPECT_EQ(space.nx(), 0);
    EXPECT_TRUE(space.isEmpty());
    EXPECT_FALSE(space.setFromBlocToWorldMatrix(mat4::zero()));
    EXPECT_EQ(space.getFromBlocToWorldMatrix(), mat4());
    EXPECT_TRUE(space.contains({0, 0, 0}) == false);
    BlocSpace grid(2, 2, 2);
    EXPECT_TRUE(grid.contains({1, 1, 1}));
    EXPECT_FALSE(grid.contains({2, 0, 0}));
    EXPECT_FALSE(grid.contains({0, -1, 0}));
}

TEST(BlocSpace, AVoxelCountBeyond64BitsSaturates)
{
    const int big = std::numeric_limits<int>::max();
    EXPECT_EQ(BlocSpace(big, big, 1).voxelCount(), static_cast<long long>(big) * big);
    EXPECT_EQ(BlocSpace(big, big, 2).voxelCount(), 2 * static_cast<long long>(big) * big);
    EXPECT_EQ(BlocSpace(big, big, 3).voxelCount(), std::numeric_limits<long long>::max());
    EXPECT_EQ(BlocSpace(big, big, big).voxelCount(), std::numeric_limits<long long>::max());
    EXPECT_FALSE(BlocSpace(big, big, big).isEmpty());
    EXPECT_TRUE(ZN3DImage<float>(BlocSpace(big, big, big)).isNull());
}

TEST(SymmetricEigen, PairsComeInDecreasingOrderWithUnitVectors)
{
    // A rotated diagonal matrix diag(9, 4, 1): rotation of 30 degrees about z.
    const double c = std::cos(M_PI / 6), s = std::sin(M_PI / 6);
    const double d[3] = {9, 4, 1};
    const double r[3][3] = {{c, -s, 0}, {s, c, 0}, {0, 0, 1}};
    double m[9] = {};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k) m[3 * i + j] += r[i][k] * d[k] * r[j][k];
    const auto pairs = geom::symmetricEigenPairs(m);
    EXPECT_NEAR(pairs[0].value, 9, 1e-12);
    EXPECT_NEAR(pairs[1].value, 4, 1e-12);
    EXPECT_NEAR(pairs[2].value, 1, 1e-12);
    EXPECT_NEAR(std::fabs(pairs[0].vector.x), c, 1e-12);
    EXPECT_NEAR(std::fabs(pairs[0].vector.y), s, 1e-12);
    EXPECT_NEAR(std::fabs(pairs[2].vector.z), 1, 1e-12);
    for (const auto& p : pairs) EXPECT_NEAR(p.vector.length(), 1, 1e-12);
}

TEST(SymmetricEigen, NonFiniteInputGivesNonFinitePairs)
{
    const double m[9] = {NAN, 0, 0, 0, 1, 0, 0, 0, 1};
    const auto pairs = geom::symmetricEigenPairs(m);
    EXPECT_TRUE(std::isnan(pairs[0].value));
    EXPECT_TRUE(std::isnan(pairs[2].vector.x));
}
