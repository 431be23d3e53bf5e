#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include <synthetic/syntheticvolume.h>

#include <plantedtruth.h>
#include <processmemory.h>

namespace {

struct TruthCase {
    const char* name;
    std::vector<int> ids;      // 4 x 3 x 2 voxels in sample order; -9999 for none
    std::size_t runs;
};

class PlantedTruthEncoding : public ::testing::TestWithParam<TruthCase> {};

TEST_P(PlantedTruthEncoding, DecodesToTheSameImageAndReleasesTheVolumesIds)
{
    fault::synthetic::SyntheticVolume volume;
    volume.faults.resize(3);
    volume.faults[2].name = "third";
    volume.plantedIds = ZN3DImage<int>(georef::BlocSpace(4, 3, 2));
    ASSERT_EQ(volume.plantedIds.voxelCount(), GetParam().ids.size());
    std::memcpy(volume.plantedIds.data(), GetParam().ids.data(), GetParam().ids.size() * sizeof(int));

    const kfaults::PlantedTruth truth(volume);
    EXPECT_TRUE(volume.plantedIds.isEmpty());
    EXPECT_EQ(truth.runCount(), GetParam().runs);
    ASSERT_EQ(truth.faults().size(), 3u);
    EXPECT_EQ(truth.faults()[2].name, "third");
    const ZN3DImage<int> decoded = truth.plantedIds();
    ASSERT_EQ(decoded.blocSpace(), georef::BlocSpace(4, 3, 2));
    EXPECT_EQ(std::vector<int>(decoded.data(), decoded.data() + decoded.voxelCount()), GetParam().ids);
}

constexpr int N = -9999;
INSTANTIATE_TEST_SUITE_P(
    Patterns, PlantedTruthEncoding,
    ::testing::Values(
        TruthCase{"NothingPlanted", std::vector<int>(24, N), 0},
        TruthCase{"EverythingOneFault", std::vector<int>(24, 1), 1},
        TruthCase{"RunCrossingRowAndSliceEnds", {N, N, N, 0, 0, N, N, N, N, N, N, 2,
                                                 2, N, N, N, N, N, N, N, N, N, N, 0}, 3},
        TruthCase{"NeighboursOfOtherFaultsStayApart", {0, 1, 1, 2, 0, 0, N, 1, N, N, N, N,
                                                       N, N, N, N, N, N, N, N, N, N, 2, 2}, 6}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ProcessMemory, PeakCountsTouchedPagesInBytes)
{
    constexpr std::size_t kTouched = 64u << 20;
    std::vector<char> block(kTouched, 1);
    const long long peak = kfaults::peakResidentBytes();
    if (peak == -9999) GTEST_SKIP() << "no /proc/self/status here";
    EXPECT_GE(peak, static_cast<long long>(kTouched));
    EXPECT_EQ(peak % 1024, 0);
    EXPECT_EQ(block[kTouched / 2], 1);
}

} // namespace
