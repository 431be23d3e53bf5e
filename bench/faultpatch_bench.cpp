// Cost of the per-patch queries that merging runs millions of times: merging two records,
// and the planar merge score (two 3x3 eigen-decompositions), against the bare moment
// accumulation that fills a record.
#include <benchmark/benchmark.h>

#include <random>

#include <znfaultpatch.h>

namespace {
ZNFaultPatch planarPatch(double offset, unsigned seed)
{
    std::mt19937 rng(seed);
    std::normal_distribution<double> noise(0.0, 0.05);
    ZNFaultPatch p;
    for (int i = 0; i < 20; ++i)
        for (int j = 0; j < 20; ++j) p.addPoint({i + offset, j + noise(rng), 0.3 * i + noise(rng)});
    return p;
}
} // namespace

static void BM_AccumulateMoments(benchmark::State& state)
{
    ZNFaultPatch p;
    double t = 0.0;
    for (auto _ : state) {
        p.addPoint({t, t + 1.0, t + 2.0});
        t += 1.0;
    }
    benchmark::DoNotOptimize(p);
}
BENCHMARK(BM_AccumulateMoments);

static void BM_MergeRecords(benchmark::State& state)
{
    const ZNFaultPatch a = planarPatch(0.0, 1), b = planarPatch(25.0, 2);
    for (auto _ : state) benchmark::DoNotOptimize(a + b);
}
BENCHMARK(BM_MergeRecords);

static void BM_MergeCost(benchmark::State& state)
{
    const ZNFaultPatch a = planarPatch(0.0, 1), b = planarPatch(25.0, 2);
    for (auto _ : state) benchmark::DoNotOptimize(a.getMergeCost(b));
}
BENCHMARK(BM_MergeCost);

BENCHMARK_MAIN();
