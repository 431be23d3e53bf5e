#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include <synthetic/syntheticvolume.h>

#include <plantedtruth.h>

TEST(PlantedTruth, RunsDecodeToTheSameIdsAndTheVolumesImageIsReleased)
{
    constexpr int N = -9999;
    // 4 x 3 x 2 voxels: nothing planted; one fault everywhere; runs across a row end and
    // across the slice end; neighbouring voxels of other faults.
    const std::vector<std::pair<std::vector<int>, std::size_t>> cases = {
        {std::vector<int>(24, N), 0},
        {std::vector<int>(24, 1), 1},
        {{N, N, N, 0, 0, N, N, N, N, N, N, 2, 2, N, N, N, N, N, N, N, N, N, N, 0}, 3},
        {{0, 1, 1, 2, 0, 0, N, 1, N, N, N, N, N, N, N, N, N, N, N, N, N, N, 2, 2}, 6}};
    for (const auto& [ids, runs] : cases) {
        fault::synthetic::SyntheticVolume volume;
        volume.faults.resize(3);
        volume.plantedIds = ZN3DImage<int>(georef::BlocSpace(4, 3, 2));
        std::copy(ids.begin(), ids.end(), volume.plantedIds.data());
        const kfaults::PlantedTruth truth(volume);
        EXPECT_TRUE(volume.plantedIds.isEmpty());
        EXPECT_EQ(truth.runCount(), runs);
        EXPECT_EQ(truth.faults().size(), 3u);
        const ZN3DImage<int> decoded = truth.plantedIds();
        ASSERT_EQ(decoded.blocSpace(), georef::BlocSpace(4, 3, 2));
        EXPECT_EQ(std::vector<int>(decoded.data(), decoded.data() + decoded.voxelCount()), ids);
    }
}
