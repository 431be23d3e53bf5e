#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include <QTemporaryDir>

#include <synthetic/syntheticvolume.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>
#include <znfaultsticksfromvoxels.h>

using fault::FaultSticks;

namespace {
constexpr int kSize = 48;

// A label image on the synthetic block space (world x inline, y sample, z crossline)
// holding, as label 1, every voxel within half a voxel of the plane through the volume's
// centre with grid normal `normal`.
std::unique_ptr<ZN3DImage<int>> plantedPlane(const core::vec3& normal)
{
    auto labels = std::make_unique<ZN3DImage<int>>(
        fault::synthetic::syntheticBlocSpace(kSize, kSize, kSize), -9999);
    const core::vec3 n = normal.normalized();
    const core::vec3 centre(kSize / 2, kSize / 2, kSize / 2);
    for (int z = 0; z < kSize; ++z)
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x)
                if (std::abs((core::vec3(x, y, z) - centre).dot(n)) <= 0.5) (*labels)(x, y, z) = 1;
    return labels;
}
} // namespace

struct PlaneCase {
    const char* name;
    core::vec3 normal;  // grid
};

class SticksOfPlantedPlane : public ::testing::TestWithParam<PlaneCase> {};

TEST_P(SticksOfPlantedPlane, SticksLieOnThePlaneOnePerSectionOrderedDownDip)
{
    const auto labels = plantedPlane(GetParam().normal);
    ZNFaultPatchManager set;
    ASSERT_TRUE(set.init(labels.get()));
    fault::SticksFromVoxelsSettings settings;
    const FaultSticks f = fault::sticksFromVoxels(set, 1, settings);
    ASSERT_GE(f.sticks.size(), 4u);
    EXPECT_EQ(f.name, "Fault 1");

    const core::vec3 n = GetParam().normal.normalized();
    const core::vec3 centre(kSize / 2, kSize / 2, kSize / 2);
    const georef::BlocSpace& space = set.getBlocSpace();
    std::vector<double> sections;  // mean position of each stick along strike
    for (const auto& stick : f.sticks) {
        ASSERT_GE(stick.size(), 2u);
        double section = 0.0;
        for (const core::vec3& world : stick) section += space.worldToBloc(world).dot(f.strikeAxis) / stick.size();
        double previousDepth = -1.0;
        for (const core::vec3& world : stick) {
            const core::vec3 p = space.worldToBloc(world);
            EXPECT_LT(std::abs((p - centre).dot(n)), 0.75) << GetParam().name;      // on the plane
            EXPECT_NEAR(p.dot(f.strikeAxis), section, settings.sectionHalfWidth);  // in its section
            EXPECT_GT(p.z, previousDepth);                                          // top first
            previousDepth = p.z;
        }
        sections.push_back(section);
    }
    for (std::size_t k = 1; k < sections.size(); ++k)  // one stick per section, in order
        EXPECT_NEAR(sections[k] - sections[k - 1], settings.sectionSpacing, 1.0) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(
    Planes, SticksOfPlantedPlane,
    ::testing::Values(PlaneCase{"vertical", {1, 0, 0}}, PlaneCase{"dipping", {1, 0, -0.6}},
                      PlaneCase{"oblique", {1, 0.7, -0.8}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SticksFromVoxels, PickedFaultSetReadsBackWithNamesAndSticks)
{
    const auto labels = plantedPlane({1, 0.3, -0.5});
    ZNFaultPatchManager set;
    ASSERT_TRUE(set.init(labels.get()));
    const std::vector<FaultSticks> faults = fault::sticksOfAllFaults(set);
    ASSERT_EQ(faults.size(), 1u);
    std::unique_ptr<ZNFaultPatchManager> picked(fault::createPickedFaultSet(faults, set));
    ASSERT_TRUE(picked);
    QTemporaryDir dir;
    const QString path = dir.filePath("sticks.flt");
    ASSERT_TRUE(picked->writePickedFault(path, false, nullptr, false));

    ZNFaultPatchManager back;
    ASSERT_TRUE(back.readPickedFault(path, false, ZNFaultPatchManager::kNoProgressBar));
    ASSERT_NE(back.findFaultLight(1), nullptr);
    EXPECT_EQ(back.findFaultLight(1)->GetFaultName(), faults[0].name);
    EXPECT_EQ(back.getNumberOfSticks(1), static_cast<int>(faults[0].sticks.size()));
    EXPECT_EQ(back.getPickedPoints()(1, 0).x, faults[0].sticks[0][0].x);
}

TEST(SticksFromVoxels, BadIdsPickedSetsAndBadSettingsGiveNoSticks)
{
    const auto labels = plantedPlane({1, 0, 0});
    ZNFaultPatchManager set;
    ASSERT_TRUE(set.init(labels.get()));
    EXPECT_TRUE(fault::sticksFromVoxels(set, 0).sticks.empty());
    EXPECT_TRUE(fault::sticksFromVoxels(set, 9999).sticks.empty());
    fault::SticksFromVoxelsSettings bad;
    bad.sectionSpacing = 0;
    EXPECT_FALSE(bad.problem().isEmpty());
    EXPECT_TRUE(fault::sticksFromVoxels(set, 1, bad).sticks.empty());
    ZNFaultPatchManager picked;
    EXPECT_TRUE(fault::sticksOfAllFaults(picked).empty());
}
