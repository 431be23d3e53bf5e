// Fault sets of many small faults: N one-stick faults of two points, as an import of a
// stick file of N faults makes them, for N = 20,000 and 100,000.
//   Import: the fault set built from the sticks, every fault named through findFaultLight,
//           names kept apart (storedfaultnames.h), the set written;
//   Read:   the file read back and every descriptor found again by its id.
// Each benchmark fits its growth over N (BigO, RMS): about N is linear, as it should be;
// a walk through every fault per fault would show as N^2. The per_fault counter is the
// time per fault, which stays flat when the growth is linear.
#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <core/multiarray.h>
#include <storedfaultnames.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>

namespace {

core::MultiArray<core::vec3> oneStickFaults(int n)
{
    core::MultiArray<core::vec3> rows(n);
    for (int f = 0; f < n; ++f) {
        const double x = 400000.0 + (f % 300) * 25.0, z = 6700000.0 + (f / 300) * 25.0;
        rows.addElement(f, core::vec3(x, 1000.0, z), false);
        rows.addElement(f, core::vec3(x + 10.0, 1500.0, z), false);
    }
    return rows;
}

bool importFaults(const core::MultiArray<core::vec3>& rows, const QString& path)
{
    ZNFaultPatchManager set(rows);
    for (int f = 0; f < rows.getNumberOfArray(); ++f)
        if (ZN3DFaultPatchLight* light = set.findFaultLight(f + 1)) light->SetFaultName(QStringLiteral("Fault %1").arg(f + 1));
    fault::makeStoredFaultNamesUnique(set);
    return set.writePickedFault(path, false, nullptr, false);
}

void BM_Import(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const core::MultiArray<core::vec3> rows = oneStickFaults(n);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("many.faultset"));
    for (auto _ : state)
        if (!importFaults(rows, path)) state.SkipWithError("the fault set cannot be written");
    state.SetComplexityN(n);
    state.counters["per_fault"] = benchmark::Counter(static_cast<double>(n), benchmark::Counter::kIsIterationInvariantRate |
                                                                               benchmark::Counter::kInvert);
}

void BM_Read(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("many.faultset"));
    if (!importFaults(oneStickFaults(n), path)) state.SkipWithError("the fault set cannot be written");
    for (auto _ : state) {
        ZNFaultPatchManager set;
        if (!set.readPickedFault(path, false, ZNFaultPatchManager::kNoProgressBar))
            state.SkipWithError("the fault set cannot be read");
        int found = 0;
        for (const ZN3DFaultPatchLight* light : set.getFaultLightList())
            found += set.findFaultLight(light->getFaultId()) == light;
        benchmark::DoNotOptimize(found);
    }
    state.SetComplexityN(n);
    state.counters["per_fault"] = benchmark::Counter(static_cast<double>(n), benchmark::Counter::kIsIterationInvariantRate |
                                                                               benchmark::Counter::kInvert);
}

} // namespace

BENCHMARK(BM_Import)->Arg(20000)->Arg(100000)->Unit(benchmark::kMillisecond)->Complexity()->Iterations(3);
BENCHMARK(BM_Read)->Arg(20000)->Arg(100000)->Unit(benchmark::kMillisecond)->Complexity()->Iterations(3);

BENCHMARK_MAIN();
