#include <gtest/gtest.h>

#include <core/mat4.h>
#include <testgeometry.h>

using core::mat4;
using core::vec3;

namespace {
constexpr double kTolerance = 1e-9;
} // namespace

TEST(Mat4, TransformsPointsRowMajorWithTheirOwnW)
{
    mat4 m = mat4::translation({10, 20, 30});
    expectNear(m.transformPoint({1, 2, 3}), {11, 22, 33}, kTolerance);
    m.m[15] = 2.0;  // w = 2: everything halves
    expectNear(m.transformPoint({1, 2, 3}), {5.5, 11, 16.5}, kTolerance);
    m = mat4();
    m.m[12] = 1.0;  // w = x + 1
    expectNear(m.transformPoint({1, 4, 6}), {0.5, 2, 3}, kTolerance);
    expectNear(m.transformVector({1, 4, 6}), {1, 4, 6}, kTolerance);
}

TEST(Mat4, ProductAppliesRightOperandFirst)
{
    const mat4 t = mat4::translation({1, 0, 0});
    const mat4 s = mat4::scaling({2, 2, 2});
    expectNear((t * s).transformPoint({1, 1, 1}), {3, 2, 2}, kTolerance);
    expectNear((s * t).transformPoint({1, 1, 1}), {4, 2, 2}, kTolerance);
}

TEST(Mat4, InverseUndoesAnAffineSurveyMatrix)
{
    // A rotated, scaled survey grid with an origin far from zero, as real surveys have.
    mat4 m = mat4::zero();
    m.m[0] = 12.5 * 0.8; m.m[1] = -25.0 * 0.6; m.m[3] = 605000.0;
    m.m[8] = 12.5 * 0.6; m.m[9] = 25.0 * 0.8; m.m[11] = 6073000.0;
    m.m[6] = -4.0; m.m[7] = 0.0;
    m.m[15] = 1.0;
    mat4 inv;
    ASSERT_TRUE(m.inverse(inv));
    const vec3 p(123, 456, 78);
    expectNear(inv.transformPoint(m.transformPoint(p)), p, 1e-6);
}

TEST(Mat4, SingularMatrixHasNoInverseAndOutputIsUntouched)
{
    mat4 m = mat4::scaling({1, 0, 1});
    mat4 out = mat4::translation({7, 7, 7});
    EXPECT_FALSE(m.inverse(out));
    EXPECT_EQ(out, mat4::translation({7, 7, 7}));
    EXPECT_FALSE(mat4::zero().inverse(out));
}
