// Meshing of a thousand picked faults of 20 sticks x 20 points by each gridding method of
// the 3D fault patch, the faults shared between the cores by OpenMP. Default settings:
// mesh resolution 100, Z sampling 25, smooth factor 7, interpolation size 11.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <vector>

#include <zn3dfaultpatch.h>

#include "randomfaults.h"

namespace {

constexpr int kFaults = 1000;

void BM_MeshThousandFaults(benchmark::State& state)
{
    std::mt19937 rng(12345);
    // Patches are made on this thread: their colours come from the shared generator.
    std::vector<std::unique_ptr<ZN3DFaultPatch>> patches;
    for (int f = 0; f < kFaults; ++f) {
        patches.push_back(std::make_unique<ZN3DFaultPatch>());
        patches.back()->setPickedPoints(benchfaults::randomFault(rng));
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
