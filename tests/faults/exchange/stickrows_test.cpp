#include <gtest/gtest.h>

#include <exchange/stickrows.h>

#include "exchangetesthelpers.h"

using namespace fault::exchange;
using core::vec3;

TEST(StickRows, SticksBecomeRowsWithOneSeparatorBetweenTwoSticks)
{
    const StickSet set = exchangetest::sampleSet(true);
    core::MultiArray<vec3> rows;
    QStringList names;
    ASSERT_TRUE(toStickRows(set, rows, names));
    EXPECT_EQ(names, (QStringList{"Main Fault", "F2", "North Branch 3"}));
    ASSERT_EQ(rows.getNumberOfArray(), 3);
    EXPECT_EQ(rows.getCount(0), 3 + 1 + 2);
    EXPECT_EQ(rows(0, 3).x, core::kNoValueReal);
    EXPECT_EQ(rows(0, 4), set.faults[0].sticks[1][0].world);
    EXPECT_EQ(rows.getCount(1), 3);
    EXPECT_EQ(rows.getCount(2), 2 + 1 + 2 + 1 + 2);
}

TEST(StickRows, RowsBackToSticksKeepGeometryButNotLineNumbers)
{
    const StickSet set = exchangetest::sampleSet(true);
    core::MultiArray<vec3> rows;
    QStringList names;
    ASSERT_TRUE(toStickRows(set, rows, names));
    exchangetest::expectSameSticks(set, fromStickRows(rows, names), 0.0, false);
}

TEST(StickRows, StraySeparatorsGiveNoEmptyStickAndMissingNamesAreUnnamed)
{
    const vec3 sep(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);
    core::MultiArray<vec3> rows(2);
    for (const vec3& p : {sep, vec3(1, 2, 3), sep, sep, vec3(4, 5, 6), vec3(7, 8, 9), sep})
        rows.addElement(0, p, false);
    const StickSet set = fromStickRows(rows, {QStringLiteral("A")});
    ASSERT_EQ(set.faults.size(), 2u);
    ASSERT_EQ(set.faults[0].sticks.size(), 2u);
    EXPECT_EQ(set.faults[0].sticks[1].size(), 2u);
    EXPECT_EQ(set.faults[1].name, QStringLiteral("Unnamed"));
    EXPECT_TRUE(set.faults[1].sticks.empty());
}
