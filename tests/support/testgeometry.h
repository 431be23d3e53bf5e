#pragma once
// Geometric comparisons of the tests.
#include <gtest/gtest.h>

#include <core/vec3.h>

// Expects every coordinate of `actual` within `tolerance` of that of `expected`.
inline void expectNear(const core::vec3& actual, const core::vec3& expected, double tolerance)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}
