#include <gtest/gtest.h>

#include <core/multiarray.h>
#include <volumeio/gridaxes.h>
#include <znfaultpatchmanager.h>

#include <faultsurfacemeshing.h>

TEST(SurfaceSettingsFor, StickSpacingInWorldUnitsWithinTheSheetRanges)
{
    struct Case {
        core::vec3 step;             // world units per inline, crossline, sample; 0: no survey
        std::vector<int> expected;   // mesh resolution, Z sampling, interpolation size
    };
    // Sticks 8 cells apart along strike, points 4 cells apart down dip: no survey keeps
    // the descriptor's defaults, voxel units raise the grid step to its minimum, the
    // larger lateral step counts, coarse surveys are clamped.
    for (const Case& c : {Case{{0, 0, 0}, {100, 25, 11}}, Case{{1, 1, 1}, {50, 4, 8}},
                          Case{{12.5, 25, 4}, {200, 16, 200}}, Case{{200, 100, 50}, {500, 100, 1000}}}) {
        const georef::BlocSpace space = c.step.x == 0 ? georef::BlocSpace()
                                                      : georef::BlocSpace(8, 8, 8, volumeio::axisAlignedBlocToWorld(c.step));
        const fault::SurfaceSettings s = fault::surfaceSettingsFor(space, {}, 0);
        EXPECT_EQ(s.method, 0);
        EXPECT_EQ(std::vector<int>({s.meshResolution, s.zSampling, s.interpolationSize}), c.expected) << c.step.x;
    }
}

TEST(MeshFault, AFaultOfOneStickIsNamedWithoutTrianglesAndABadIdGivesAnUnnamedEmptyMesh)
{
    core::MultiArray<core::vec3> rows(1);
    for (int p = 0; p < 4; ++p) rows.addElement(0, core::vec3(10, 25.0 * p, 20), false);
    ZNFaultPatchManager set(rows);
    set.findFaultLight(1)->SetFaultName("lone stick");
    const fault::FaultSurface lone = fault::meshFault(set, 1, fault::SurfaceSettings());
    EXPECT_EQ(lone.mesh.name, "lone stick");
    EXPECT_TRUE(lone.mesh.triangles.empty());
    EXPECT_EQ(lone.area, -9999.0);
    EXPECT_EQ(set.findFaultPatch(1), nullptr);   // the temporary patch left the set
    const fault::FaultSurface bad = fault::meshFault(set, 7, fault::SurfaceSettings());
    EXPECT_TRUE(bad.mesh.name.isEmpty());
    EXPECT_TRUE(bad.mesh.vertices.empty());
}
