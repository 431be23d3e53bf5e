#include <gtest/gtest.h>

#include <core/array.h>

#include <array>

#include <testservices.h>

using core::Array;

TEST(Array, GrowsArithmeticallyByItsStep)
{
    Array<int> a(3);
    for (int i = 0; i < 4; ++i) ASSERT_TRUE(a.add(i));
    EXPECT_EQ(a.capacity(), 6);
    ASSERT_TRUE(a.reserve(20));
    EXPECT_EQ(a.capacity(), 20);
    EXPECT_EQ(a.size(), 4);
}

TEST(Array, InsertAndRemoveKeepOrderAndRefuseBadPositions)
{
    Array<int> a;
    a.add(1);
    a.add(3);
    EXPECT_TRUE(a.insert(1, 2));
    EXPECT_TRUE(a.insert(3, 4));
    EXPECT_FALSE(a.insert(5, 9));
    EXPECT_FALSE(a.insert(-1, 9));
    EXPECT_TRUE(a.removeAt(0));
    EXPECT_FALSE(a.removeAt(3));
    EXPECT_EQ(std::vector<int>(a.begin(), a.end()), (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(a.at(3), nullptr);
    EXPECT_EQ(a.indexOf(4), 2);
}

TEST(Array, ResizeDefaultsNewElementsAndResetsRemovedOnes)
{
    Array<int> a;
    a.fill(3, 7);
    ASSERT_TRUE(a.resize(1));
    ASSERT_TRUE(a.resize(3));
    EXPECT_EQ(std::vector<int>(a.begin(), a.end()), (std::vector<int>{7, 0, 0}));
    EXPECT_FALSE(a.resize(-2));
    EXPECT_EQ(a.size(), 3);
}

TEST(Array, AFailedAllocationReportsAndLeavesTheArrayUnchanged)
{
    using Block = std::array<double, 64>;  // 512 bytes: 2^31 of them is 1 TiB
    Array<Block> a;
    a.add(Block{1.5});
    StderrCapture err;
    // Far more than the machine's memory: the allocator refuses it.
    EXPECT_FALSE(a.resize(0x7ffffff0));
    EXPECT_EQ(a.size(), 1);
    EXPECT_EQ(a[0][0], 1.5);
    EXPECT_NE(err.text().indexOf("ERROR: assert fail (fresh != nullptr) in core::Array::reallocate"),
              -1);
}

TEST(Array, CopiesAreDeepAndMovesEmptyTheSource)
{
    Array<int> a;
    a.add(1);
    Array<int> b(a);
    b[0] = 2;
    EXPECT_EQ(a[0], 1);
    Array<int> c(std::move(b));
    EXPECT_EQ(c[0], 2);
    EXPECT_TRUE(b.empty());
}
