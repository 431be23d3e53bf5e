#include <gtest/gtest.h>

#include <core/multiarray.h>

#include <testservices.h>

using core::ByteTriplet;
using core::MultiArray;
using core::PointWithBool;

namespace {
PointWithBool P(double v, bool flag = false) { return PointWithBool(v, v + 1, v + 2, flag); }

std::vector<double> xs(const MultiArray<PointWithBool>& a, int i)
{
    std::vector<double> r;
    for (int j = 0; j < a.getCount(i); ++j) r.push_back(a(i, j).x);
    return r;
}

// Every slot past the count holds a default element.
template <class T> void expectDefaultTail(const MultiArray<T>& a, int i)
{
    for (int j = a.getCount(i); j < a.getCapacity(i); ++j) EXPECT_TRUE(a.getArray(i)[j] == T());
}
} // namespace

TEST(MultiArray, NewSubArraysAreEmptyAndBadIndicesReadAsNoValue)
{
    MultiArray<PointWithBool> a(3, 4);
    EXPECT_EQ(a.getNumberOfArray(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(a.getCount(i), 0);
        EXPECT_EQ(a.getArray(i), nullptr);
    }
    for (int bad : {-1, 3}) {
        EXPECT_EQ(a.getCount(bad), -9999);
        EXPECT_EQ(a.getArray(bad), nullptr);
        EXPECT_EQ(a.element(bad, 0), nullptr);
    }
    MultiArray<PointWithBool> none;
    EXPECT_FALSE(none.hasCountArray());
    EXPECT_EQ(none.getCount(0), -9999);
}

TEST(MultiArray, AddElementGrowsAFullSubArrayByExactlyTheGrowthStep)
{
    MultiArray<PointWithBool> a(1, 4);
    for (int k = 0; k < 4; ++k) ASSERT_TRUE(a.addElement(0, P(k), false));
    EXPECT_EQ(a.getCapacity(0), 4);
    ASSERT_TRUE(a.addElement(0, P(4), false));
    EXPECT_EQ(a.getCapacity(0), 8);
    EXPECT_EQ(xs(a, 0), (std::vector<double>{0, 1, 2, 3, 4}));
    expectDefaultTail(a, 0);
}

TEST(MultiArray, AddElementRejectsOnlyExactPositionDuplicatesWhenAsked)
{
    MultiArray<PointWithBool> a(1, 2);
    ASSERT_TRUE(a.addElement(0, P(1, false), true));
    EXPECT_FALSE(a.addElement(0, P(1, true), true)) << "the flag takes no part in the test";
    EXPECT_TRUE(a.addElement(0, PointWithBool(1, 2, 3.0000001), true));
    EXPECT_TRUE(a.addElement(0, P(1), false)) << "interactive picks may repeat a position";
    EXPECT_EQ(a.getCount(0), 3);
    EXPECT_FALSE(a.addElement(1, P(1), false));
    EXPECT_FALSE(a.addElement(-1, P(1), true));
}

TEST(MultiArray, InsertElementPlacesBeforePositionAndAppendsAtCount)
{
    MultiArray<PointWithBool> a(1, 2);
    a.insertElement(0, 0, P(2));
    a.insertElement(0, 0, P(0));
    a.insertElement(0, 1, P(1));
    a.insertElement(0, 3, P(3));  // position == count appends
    EXPECT_EQ(xs(a, 0), (std::vector<double>{0, 1, 2, 3}));
    a.insertElement(0, 5, P(9));  // count + 1: nothing happens
    a.insertElement(0, -1, P(9));
    EXPECT_EQ(xs(a, 0), (std::vector<double>{0, 1, 2, 3}));
    EXPECT_EQ(a.getCapacity(0), 4);
    a.insertElement(0, 2, P(7));
    EXPECT_EQ(a.getCapacity(0), 6);
    EXPECT_EQ(xs(a, 0), (std::vector<double>{0, 1, 7, 2, 3}));
    expectDefaultTail(a, 0);
}

TEST(MultiArray, InsertElementWithoutCountArrayReportsTheFixedAssertionLine)
{
    MultiArray<PointWithBool> none;
    StderrCapture err;
    none.insertElement(0, 0, P(1));
    EXPECT_EQ(err.text().toStdString(),
              "ERROR: assert fail (m_countArray!=nullptr) in "
              "core::MultiArray<class core::PointWithBool>::insertElement at "
              "core/include/core/multiarray: 405\n");
}

TEST(MultiArray, CopyOneArrayWithoutCountArrayNamesItsElementType)
{
    MultiArray<ByteTriplet> bytes, target(1);
    MultiArray<int> ints, intTarget(1);
    StderrCapture err;
    bytes.copyOneArray(0, target, 0);
    ints.copyOneArray(0, intTarget, 0);
    EXPECT_EQ(err.text().toStdString(),
              "ERROR: assert fail (m_countArray) in core::MultiArray<class "
              "core::ByteTriplet>::copyOneArray at core/include/core/multiarray: 389\n"
              "ERROR: assert fail (m_countArray) in core::MultiArray<int>::copyOneArray at "
              "core/include/core/multiarray: 389\n");
}

TEST(MultiArray, SetArraySizeAllocatesExactlyAndNeverShrinks)
{
    MultiArray<int> a(2, 10);
    ASSERT_TRUE(a.setArraySize(0, 7, false));
    EXPECT_EQ(a.getCapacity(0), 7);
    EXPECT_EQ(a.getCount(0), 0);
    ASSERT_TRUE(a.setArraySize(0, 3, true));
    EXPECT_EQ(a.getCapacity(0), 7);
    EXPECT_EQ(a.getCount(0), 3);
    EXPECT_FALSE(a.setArraySize(0, -1, true));
    EXPECT_FALSE(a.setArraySize(2, 1, true));
    EXPECT_EQ(a.getCount(0), 3);
}

TEST(MultiArray, CopyOneArrayReplacesTheTargetSubArray)
{
    MultiArray<PointWithBool> source(2, 3), target(2, 3);
    for (int k = 0; k < 5; ++k) source.addElement(1, P(k, k % 2 == 0), false);
    for (int k = 0; k < 8; ++k) target.addElement(0, P(100 + k), false);
    source.copyOneArray(1, target, 0);
    ASSERT_EQ(target.getCount(0), 5);
    for (int k = 0; k < 5; ++k) {
        EXPECT_EQ(target(0, k).x, k);
        EXPECT_EQ(target(0, k).flag, k % 2 == 0);
    }
    expectDefaultTail(target, 0);
    source.copyOneArray(1, target, 7);  // bad target: skipped silently
    EXPECT_EQ(target.getNumberOfArray(), 2);
}

TEST(MultiArray, CopiesAreDeepAndIndependent)
{
    MultiArray<PointWithBool> a(2, 2);
    a.addElement(0, P(1), false);
    MultiArray<PointWithBool> b(a);
    b.addElement(0, P(2), false);
    b(0, 0).x = 42;
    EXPECT_EQ(xs(a, 0), (std::vector<double>{1}));
    a = b;
    EXPECT_EQ(xs(a, 0), (std::vector<double>{42, 2}));
    MultiArray<PointWithBool> moved(std::move(a));
    EXPECT_EQ(moved.getCount(0), 2);
    EXPECT_FALSE(a.hasCountArray());
}

TEST(MultiArray, SubArraysCanBeAddedRemovedAndCompacted)
{
    MultiArray<int> a(1, 8);
    a.addElement(0, 10, false);
    ASSERT_EQ(a.addArray(), 1);
    a.addElement(1, 20, false);
    a.addElement(1, 21, false);
    ASSERT_EQ(a.addArray(), 2);
    a.addElement(2, 30, false);
    ASSERT_TRUE(a.removeArray(1));
    ASSERT_EQ(a.getNumberOfArray(), 2);
    EXPECT_EQ(a(1, 0), 30);
    EXPECT_TRUE(a.removeElement(0, 0));
    EXPECT_FALSE(a.removeElement(0, 0));
    a.compact();
    EXPECT_EQ(a.getCapacity(0), 0);
    EXPECT_EQ(a.getCapacity(1), 1);
    EXPECT_EQ(a.getTotalCount(), 1);
    ASSERT_TRUE(a.setNumberOfArray(1));
    EXPECT_EQ(a.getCount(0), 0);
    EXPECT_EQ(a.getCount(1), -9999);
}
