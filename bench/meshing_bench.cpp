// Meshing of a thousand picked faults of 20 sticks x 20 points by each gridding method of
// the 3D fault patch, the faults shared between the cores by OpenMP. Default settings:
// mesh resolution 100, Z sampling 25, smooth factor 7, interpolation size 11.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include <zn3dfaultpatch.h>

namespace {

constexpr int kFaults = 1000;
constexpr int kSticks = 20;
constexpr int kPointsPerStick = 20;
constexpr double kStickSpacing = 50.0;  // metres along the strike
constexpr double kPointStep = 10.0;     // along the dip
constexpr double kBendLength = 1000.0;  // the bend's offset is bend x a^2 / this
constexpr double kDegToRad = M_PI / 180.0;

// A fault of random strike (0..360), dip (40..85) and bend, picked down its dip.
core::Array<core::PointWithBool> randomFault(std::mt19937& rng)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double strike = 360.0 * unit(rng) * kDegToRad, dip = (40.0 + 45.0 * unit(rng)) * kDegToRad;
    const double dipDirection = strike + M_PI / 2;
    const core::vec3 along(std::sin(strike), 0.0, std::cos(strike));
    const core::vec3 down = core::vec3(std::sin(dipDirection), 0.0, std::cos(dipDirection)) * std::cos(dip) +
                            core::vec3(0.0, std::sin(dip), 0.0);
    const core::vec3 normal = along.cross(down);
    const core::vec3 origin(5000.0 * unit(rng), 1000.0 + 500.0 * unit(rng), 5000.0 * unit(rng));
    const double bend = 0.05 * unit(rng);
    core::Array<core::PointWithBool> points;
    for (int s = 0; s < kSticks; ++s) {
        if (s > 0) points.add(core::PointWithBool::separator());
        const double a = s * kStickSpacing + 10.0 * unit(rng);
        for (int k = 0; k < kPointsPerStick; ++k) {
            const double b = k * kPointStep + 2.0 * unit(rng);
            const double offset = bend * a * a / kBendLength;  // along the normal
            points.add(core::PointWithBool(origin + along * a + down * b + normal * offset));
        }
    }
    return points;
}

void BM_MeshThousandFaults(benchmark::State& state)
{
    std::mt19937 rng(12345);
    // Patches are made on this thread: their colours come from the shared generator.
    std::vector<std::unique_ptr<ZN3DFaultPatch>> patches;
    for (int f = 0; f < kFaults; ++f) {
        patches.push_back(std::make_unique<ZN3DFaultPatch>());
        patches.back()->setPickedPoints(randomFault(rng));
        patches.back()->setMeshingMethod(static_cast<int>(state.range(0)));
    }
    long long triangles = 0;
    for (auto _ : state) {
        triangles = 0;
#pragma omp parallel for schedule(dynamic) reduction(+ : triangles)
        for (int f = 0; f < kFaults; ++f) {
            patches[f]->updateMeshWithPickedPoint();
            triangles += patches[f]->getNumberOfFacettes();
        }
    }
    state.counters["triangles"] = static_cast<double>(triangles);
    state.counters["triangles_per_second"] =
        benchmark::Counter(static_cast<double>(triangles), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_MeshThousandFaults)
    ->ArgName("method")
    ->Arg(ZN3DFaultPatch::ConvexEnvelop)
    ->Arg(ZN3DFaultPatch::MinimumEnvelop)
    ->Unit(benchmark::kSecond)
    ->UseRealTime()
    ->Iterations(3);

} // namespace

BENCHMARK_MAIN();
