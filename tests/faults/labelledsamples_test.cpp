#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include <labelledsamples.h>
#include <zn3dimage.h>
#include <znfaultpatchmanager.h>

namespace {

using Visited = std::vector<std::pair<int, int>>;

Visited plainScan(const std::vector<int>& row, int begin, int end)
{
    Visited out;
    for (int x = begin; x < end; ++x)
        if (row[x] >= 1) out.emplace_back(x, row[x]);
    return out;
}

} // namespace

TEST(LabelledSamples, AreVisitedInOrderForEveryRowLengthAndRange)
{
    // Rows shorter than, equal to and longer than the eight samples tested together, with
    // the values that border "labelled": negatives, 0, 1 and the largest label.
    const int values[] = {-9999, INT_MIN, -1, 0, 1, 2, INT_MAX};
    std::mt19937 rng(3);
    std::uniform_int_distribution<int> pick(0, 6);
    std::bernoulli_distribution sparse(0.8);
    for (int width = 0; width <= 40; ++width) {
        std::vector<int> row(static_cast<std::size_t>(width));
        for (int& v : row) v = sparse(rng) ? -9999 : values[pick(rng)];
        for (int begin = 0; begin <= width; begin += 3)
            for (int end = begin; end <= width; end += 5) {
                Visited seen;
                EXPECT_TRUE(fault::forEachLabelled(row.data(), begin, end, [&](int x, int label) {
                    seen.emplace_back(x, label);
                    return true;
                }));
                EXPECT_EQ(seen, plainScan(row, begin, end)) << width << " [" << begin << ", " << end << ")";
            }
    }
}

TEST(LabelledSamples, StopAtTheFirstVisitThatSaysSo)
{
    const std::vector<int> row{0, 3, -9999, 4, 0, 0, 0, 0, 0, 0, 5, 6, 0, 7};
    for (int stopAt = 0; stopAt < 5; ++stopAt) {
        int visits = 0;
        const bool finished = fault::forEachLabelled(row.data(), 0, static_cast<int>(row.size()),
                                                     [&](int, int) { return visits++ != stopAt; });
        EXPECT_FALSE(finished);
        EXPECT_EQ(visits, stopAt + 1);
    }
}

TEST(LabelledSamples, AFaultSetBuiltFromRandomLabelsHasEveryVoxelAndEveryForwardContact)
{
    // Rows wider than one test of eight samples, labels scattered densely enough to meet.
    const int nx = 37, ny = 6, nz = 5;
    ZN3DImage<int> image(georef::BlocSpace(nx, ny, nz), -9999);
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> label(1, 6);
    std::bernoulli_distribution labelled(0.3);
    std::vector<int> counts(7, 0);
    for (std::size_t i = 0; i < image.voxelCount(); ++i)
        if (labelled(rng)) ++counts[static_cast<std::size_t>(image.data()[i] = label(rng))];
    // Contacts from every interior voxel towards its six forward neighbours.
    std::set<std::pair<int, int>> expected;
    const int steps[6][3] = {{1, 0, 0}, {1, -1, 0}, {1, 1, 0}, {0, 0, 1}, {0, -1, 1}, {0, 1, 1}};
    for (int z = 0; z + 1 < nz; ++z)
        for (int y = 1; y + 1 < ny; ++y)
            for (int x = 1; x + 1 < nx; ++x) {
                const int a = image(x, y, z);
                if (a < 1) continue;
                for (const auto& s : steps) {
                    const int b = image(x + s[0], y + s[1], z + s[2]);
                    if (b >= 1 && b != a) expected.insert({std::min(a, b), std::max(a, b)});
                }
            }
    ZNFaultPatchManager set;
    ASSERT_TRUE(set.init(&image));
    std::set<std::pair<int, int>> contacts;
    for (int patch = 1; patch <= 6; ++patch) {
        EXPECT_EQ(set.getPatchVoxels().getCount(patch), counts[static_cast<std::size_t>(patch)]) << patch;
        for (int k = 0; k < set.getNumberOfContact(patch); ++k) {
            const int other = set.getContact(patch, k);
            contacts.insert({std::min(patch, other), std::max(patch, other)});
        }
    }
    EXPECT_EQ(contacts, expected);
}
