#include <gtest/gtest.h>

#include <cmath>

#include <core/multiarray.h>
#include <volumeio/gridaxes.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>

#include <faultsurfaces.h>

namespace {
using kfaults::SurfaceSettings;

struct SpacingCase {
    const char* name;
    core::vec3 step;         // world units per inline, crossline, sample; 0: no survey
    int method;
    SurfaceSettings expected;
};

SurfaceSettings expect(int method, int resolution, int zSampling, int interpolation)
{
    SurfaceSettings s;
    s.method = method;
    s.meshResolution = resolution;
    s.zSampling = zSampling;
    s.interpolationSize = interpolation;
    return s;
}

class SurfaceSettingsForSurvey : public ::testing::TestWithParam<SpacingCase> {};

TEST_P(SurfaceSettingsForSurvey, FollowStickSpacingInWorldUnitsWithinTheSheetRanges)
{
    const SpacingCase& c = GetParam();
    const georef::BlocSpace space =
        c.step.x == 0 ? georef::BlocSpace() : georef::BlocSpace(64, 64, 64, volumeio::axisAlignedBlocToWorld(c.step));
    const SurfaceSettings s = kfaults::surfaceSettingsFor(space, fault::SticksFromVoxelsSettings(), c.method);
    EXPECT_EQ(s.method, c.expected.method);
    EXPECT_EQ(s.meshResolution, c.expected.meshResolution);
    EXPECT_EQ(s.zSampling, c.expected.zSampling);
    EXPECT_EQ(s.interpolationSize, c.expected.interpolationSize);
}

// Sticks 8 cells apart along strike, points 4 cells apart down dip.
INSTANTIATE_TEST_SUITE_P(
    Surveys, SurfaceSettingsForSurvey,
    ::testing::Values(
        SpacingCase{"NoSurveyKeepsDescriptorDefaults", {0, 0, 0}, 0,
                    expect(0, ZN3DFaultPatchLight::kDefaultUtmPrecision, ZN3DFaultPatchLight::kDefaultTimePrecision,
                           ZN3DFaultPatchLight::kDefaultInterpolationSize)},
        SpacingCase{"VoxelUnitsRaiseTheGridStepToItsMinimum", {1, 1, 1}, 1, expect(1, 50, 4, 8)},
        SpacingCase{"MetresAndMillisecondsUseTheLargerLateralStep", {12.5, 25, 4}, 1, expect(1, 200, 16, 200)},
        SpacingCase{"CoarseSurveysAreClampedToTheRanges", {200, 100, 50}, 0, expect(0, 500, 100, 1000)}),
    [](const auto& info) { return std::string(info.param.name); });

// A fault set with one fault per entry of `sticksPerFault`: parallel sticks 50 apart
// along x, each 100 long down a plane dipping 60 degrees (5 points), fault k shifted by
// 1000 k along z. Fault k + 1 is named `names[k]`.
ZNFaultPatchManager* planeFaults(const std::vector<int>& sticksPerFault, const QStringList& names)
{
    const core::vec3 along(1, 0, 0);
    const core::vec3 down(0, std::sin(M_PI / 3), std::cos(M_PI / 3));
    constexpr double kStickSpacing = 50, kPointSpacing = 25;
    constexpr int kPoints = 5;
    core::MultiArray<core::vec3> rows(static_cast<int>(sticksPerFault.size()));
    for (int f = 0; f < static_cast<int>(sticksPerFault.size()); ++f)
        for (int s = 0; s < sticksPerFault[f]; ++s) {
            if (s > 0) rows.addElement(f, core::vec3(-9999, -9999, -9999), false);
            for (int p = 0; p < kPoints; ++p)
                rows.addElement(f, core::vec3(0, 0, 1000.0 * f) + along * (kStickSpacing * s) +
                                       down * (kPointSpacing * p), false);
        }
    auto* set = new ZNFaultPatchManager(rows);
    for (int k = 0; k < names.size(); ++k) set->findFaultLight(k + 1)->SetFaultName(names[k]);
    return set;
}

class MeshFaultMethod : public ::testing::TestWithParam<int> {};

TEST_P(MeshFaultMethod, PlanarSticksGiveANamedSurfaceOnTheirPlaneCoveringTheirRectangle)
{
    const std::unique_ptr<ZNFaultPatchManager> set(planeFaults({5, 3}, {"north block F1", "F2"}));
    SurfaceSettings settings;
    settings.method = GetParam();
    settings.interpolationSize = 20;
    settings.zSampling = 10;
    const core::vec3 normal = core::vec3(1, 0, 0).cross(core::vec3(0, std::sin(M_PI / 3), std::cos(M_PI / 3)));
    const double widths[] = {200.0, 100.0};   // (sticks - 1) x 50
    for (int k = 0; k < 2; ++k) {
        const kfaults::FaultSurface s = kfaults::meshFault(*set, k + 1, settings);
        EXPECT_EQ(s.mesh.name, k == 0 ? "north block F1" : "F2");
        ASSERT_FALSE(s.mesh.triangles.empty());
        EXPECT_EQ(s.mesh.firstBadTriangle(), -9999);
        EXPECT_NEAR(s.area, widths[k] * 100.0, 1e-6 * widths[k] * 100.0);
        for (const core::vec3& v : s.mesh.vertices) {
            const core::vec3 local = v - core::vec3(0, 0, 1000.0 * k);
            EXPECT_NEAR(local.dot(normal), 0.0, 1e-6);
            EXPECT_GE(local.x, -1e-6);
            EXPECT_LE(local.x, widths[k] + 1e-6);
        }
        EXPECT_EQ(set->findFaultPatch(k + 1), nullptr);   // the temporary patch is gone
    }
}

INSTANTIATE_TEST_SUITE_P(Methods, MeshFaultMethod, ::testing::Values(0, 1),
                         [](const auto& info) { return info.param == 0 ? "ConvexEnvelop" : "MinimumEnvelop"; });

TEST(MeshFault, AFaultOfOneStickIsNamedWithoutTrianglesAndABadIdGivesAnUnnamedEmptyMesh)
{
    const std::unique_ptr<ZNFaultPatchManager> set(planeFaults({1}, {"lone"}));
    const kfaults::FaultSurface lone = kfaults::meshFault(*set, 1, SurfaceSettings());
    EXPECT_EQ(lone.mesh.name, "lone");
    EXPECT_TRUE(lone.mesh.triangles.empty());
    EXPECT_EQ(lone.area, -9999.0);
    const kfaults::FaultSurface bad = kfaults::meshFault(*set, 7, SurfaceSettings());
    EXPECT_TRUE(bad.mesh.name.isEmpty());
    EXPECT_TRUE(bad.mesh.vertices.empty());
}

} // namespace
