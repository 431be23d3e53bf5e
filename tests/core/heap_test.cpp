#include <gtest/gtest.h>

#include <core/heap.h>
#include <core/triplet.h>

#include <algorithm>
#include <random>

using core::Duplet;
using core::Heap;

TEST(Heap, PopsInIncreasingCostOrder)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> cost(0.0, 1.0);
    Heap<int> heap(4);
    std::vector<double> pushed;
    for (int i = 0; i < 500; ++i) {
        pushed.push_back(cost(rng));
        ASSERT_TRUE(heap.push(pushed.back(), i));
    }
    std::sort(pushed.begin(), pushed.end());
    for (double expected : pushed) {
        double c;
        int item;
        ASSERT_TRUE(heap.pop(c, item));
        EXPECT_EQ(c, expected);
    }
    EXPECT_TRUE(heap.empty());
}

TEST(Heap, PopOnEmptyLeavesOutputsUntouched)
{
    Heap<Duplet> heap;
    double c = 3.0;
    Duplet d(1, 2);
    EXPECT_FALSE(heap.pop(c, d));
    EXPECT_EQ(c, 3.0);
    EXPECT_EQ(d, Duplet(1, 2));
    EXPECT_EQ(heap.top(), nullptr);
}

TEST(Heap, EqualCostsComeOutInTheOrderTheSiftRulesGive)
{
    // Sift-up swaps only on a strictly greater parent and sift-down only toward a strictly
    // smaller child, preferring the left child on ties: with equal costs the first entry
    // stays on top and the last one is moved up by each pop.
    Heap<int> heap;
    for (int i = 0; i < 4; ++i) heap.push(1.0, i);
    std::vector<int> order;
    double c;
    int item;
    while (heap.pop(c, item)) order.push_back(item);
    EXPECT_EQ(order, (std::vector<int>{0, 3, 2, 1}));
}
