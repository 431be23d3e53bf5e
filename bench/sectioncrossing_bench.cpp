// Cost of making the automatic points of one patch: the triangulation between its sticks
// and the crossing with the shown section, for faults of growing numbers of sticks of 40
// points each. The fault dips, so a section across its strike meets it along a curve
// that runs through many strips (up to 200).
#include <benchmark/benchmark.h>

#include <core/multiarray.h>
#include <znsectioncrossing.h>

namespace {
constexpr int kPointsPerStick = 40;

constexpr double kDip = 0.5;     // lateral shift per point down a stick
constexpr double kStrike = 0.1;  // lateral shift from one stick to the next

// Stick k lies in the section z = k, shifted along x with depth (dip) and with k.
core::Array<core::PointWithBool> dippingFault(int sticks)
{
    core::Array<core::PointWithBool> points(sticks * (kPointsPerStick + 1));
    for (int k = 0; k < sticks; ++k) {
        if (k > 0) points.add(core::PointWithBool::separator());
        for (int j = 0; j < kPointsPerStick; ++j)
            points.add(core::PointWithBool(kDip * j + kStrike * k, j, k));
    }
    return points;
}

// The section x = c across the fault's strike, c chosen mid-fault.
geom::RandomLine crossingSection(int sticks)
{
    const double c = kDip * kPointsPerStick / 2 + kStrike * sticks / 2;
    geom::RandomLine line;
    line.nodes.add(core::vec2(c, -1.0));
    line.nodes.add(core::vec2(c, sticks + 1.0));
    line.verticalMin = -1.0;
    line.verticalMax = kPointsPerStick + 1.0;
    return line;
}
} // namespace

static void BM_TriangulateAndCross(benchmark::State& state)
{
    const int sticks = static_cast<int>(state.range(0));
    const core::Array<core::PointWithBool> points = dippingFault(sticks);
    const geom::RandomLine section = crossingSection(sticks);
    core::Array<core::vec3> vertices;
    core::Array<core::Triplet> triangles;
    core::MultiArray<core::vec3> lines;
    for (auto _ : state) {
        ZNSectionCrossing::triangulateSticks(points.data(), points.size(), vertices, triangles);
        ZNSectionCrossing::crossSection(vertices, triangles, section, lines);
        benchmark::DoNotOptimize(lines.getTotalCount());
    }
    state.counters["crossing points"] = static_cast<double>(lines.getTotalCount());
    state.SetComplexityN(sticks);
}
BENCHMARK(BM_TriangulateAndCross)->RangeMultiplier(4)->Range(4, 256)->Complexity();

BENCHMARK_MAIN();
