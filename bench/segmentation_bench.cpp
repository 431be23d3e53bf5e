// Fault patch segmentation of a 256^3 likelihood volume against a plain 26-connected
// breadth-first labelling of the same voxels, and the peak memory of the slab-by-slab
// segmentation of the same volume stored in a block file.
//
// Each volume holds a few planar faults of Gaussian profile (unit peak, standard deviation
// of one voxel across the plane) limited to disks, plus Gaussian noise: a family of
// sub-parallel faults, and a set of crossing faults. After the timed benchmarks the
// program prints the time ratios (segmentation / plain labelling) and runs the
// out-of-core segmentation of the family in a child process of its own, which measures
// its peak resident memory over what it held before, and prints it against one slab.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <segmentation/faultpatchlabelimage.h>
#include <znbloc.h>
#include <znservice.h>
#include <znslabplanner.h>

#include "segmentationvolumes.h"

namespace {

using namespace benchvolumes;

constexpr int kSlabSlices = 32;            // cz the out-of-core planner is given room for
constexpr const char* kChildFlag = "--out-of-core-child";

// The baseline: every voxel strictly above the threshold gets the label of its
// 26-connected component, breadth-first from the first voxel of each in scan order.
int plainLabelling(const ZN3DImage<float>& likelihood, ZN3DImage<int>& labels,
                   std::vector<size_t>& queue)
{
    const int nx = likelihood.nx(), ny = likelihood.ny(), nz = likelihood.nz();
    const float* lik = likelihood.data();
    int* lab = labels.data();
    const std::ptrdiff_t sx = 1, sy = nx, sz = static_cast<std::ptrdiff_t>(nx) * ny;
    int label = 0;
    for (size_t seed = 0; seed < likelihood.voxelCount(); ++seed) {
        if (!(lik[seed] > kThreshold) || lab[seed] >= 0) continue;
        lab[seed] = ++label;
        queue.clear();
        queue.push_back(seed);
        for (size_t head = 0; head < queue.size(); ++head) {
            const size_t i = queue[head];
            const int x = static_cast<int>(i % nx), y = static_cast<int>((i / nx) % ny),
                      z = static_cast<int>(i / sz);
            for (int dz = -1; dz <= 1; ++dz) {
                if (z + dz < 0 || z + dz >= nz) continue;
                for (int dy = -1; dy <= 1; ++dy) {
                    if (y + dy < 0 || y + dy >= ny) continue;
                    for (int dx = -1; dx <= 1; ++dx) {
                        if (x + dx < 0 || x + dx >= nx) continue;
                        const size_t n = i + dx * sx + dy * sy + dz * sz;
                        if (lik[n] > kThreshold && lab[n] < 0) {
                            lab[n] = label;
                            queue.push_back(n);
                        }
                    }
                }
            }
        }
    }
    return label;
}

void BM_PlainLabelling(benchmark::State& state)
{
    const ZN3DImage<float>& v = volume(static_cast<int>(state.range(0)));
    std::vector<size_t> queue;
    int components = 0;
    for (auto _ : state) {
        ZN3DImage<int> labels(v.blocSpace(), -9999);
        components = plainLabelling(v, labels, queue);
        benchmark::DoNotOptimize(labels.data());
    }
    size_t above = 0;
    for (size_t i = 0; i < v.voxelCount(); ++i) above += v.data()[i] > kThreshold;
    state.counters["components"] = components;
    state.counters["above_percent"] = 100.0 * above / v.voxelCount();
}
BENCHMARK(BM_PlainLabelling)->Arg(FaultFamily)->Arg(CrossingFaults)
    ->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_FaultPatchSegmentation(benchmark::State& state)
{
    ZN3DImage<float>& v = volume(static_cast<int>(state.range(0)));
    int patches = 0;
    for (auto _ : state) {
        int sliceCount = 0, labelCounter = 0;
        std::unique_ptr<ZN3DImage<int>> labels(fault::segmentation::getFaultPatchLabelImage(
            &v, kMaxLabelCount, sliceCount, labelCounter, kMaxPatchSize, kMaxPlaneDeviation,
            kGrowthIterations, kThreshold, -1));
        patches = labelCounter - 1;
        benchmark::DoNotOptimize(labels.get());
    }
    state.counters["patches"] = patches;
}
BENCHMARK(BM_FaultPatchSegmentation)->Arg(FaultFamily)->Arg(CrossingFaults)
    ->Unit(benchmark::kMillisecond)->Iterations(5);

// Keeps the mean times of every benchmark run, by name and argument, besides the console
// output. CPU time is kept too: on a busy machine it is the steadier of the two.
class RecordingReporter : public benchmark::ConsoleReporter {
public:
    struct Times {
        double real = 0.0;
        double cpu = 0.0;
    };
    std::map<std::string, Times> times;
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Iteration)
                times[r.run_name.function_name + "/" + r.run_name.args] = {r.GetAdjustedRealTime(),
                                                                           r.GetAdjustedCPUTime()};
        ConsoleReporter::ReportRuns(runs);
    }
    void printRatios() const
    {
        for (int kind : {FaultFamily, CrossingFaults}) {
            const std::string arg = "/" + std::to_string(kind);
            const auto plain = times.find("BM_PlainLabelling" + arg);
            const auto segmentation = times.find("BM_FaultPatchSegmentation" + arg);
            if (plain == times.end() || segmentation == times.end()) continue;
            std::printf("%s: segmentation / plain labelling = %.2f real time, %.2f CPU time "
                        "(goal <= 2.00)\n",
                        kVolumeNames[kind], segmentation->second.real / plain->second.real,
                        segmentation->second.cpu / plain->second.cpu);
        }
    }
};

// A field of /proc/self/status in kB; -1 when unreadable.
long statusKb(const char* field)
{
    FILE* f = std::fopen("/proc/self/status", "r");
    if (!f) return -1;
    char line[256];
    long value = -1;
    const size_t n = std::strlen(field);
    while (std::fgets(line, sizeof line, f))
        if (std::strncmp(line, field, n) == 0 && line[n] == ':') value = std::atol(line + n + 1);
    std::fclose(f);
    return value;
}

// Resets the peak resident size to the current one; false when the system refuses.
bool resetPeak()
{
    FILE* f = std::fopen("/proc/self/clear_refs", "w");
    if (!f) return false;
    const bool ok = std::fputs("5", f) >= 0;
    return std::fclose(f) == 0 && ok;
}

long long slabBytes()
{
    return static_cast<long long>(kSlabSlices + 3) * kSize * kSize * (sizeof(float) + sizeof(int));
}

// The child: segments the block file at `path` slab by slab and prints its memory use.
int outOfCoreChild(const char* path)
{
    ZNBloc input;
    if (!input.open(QString::fromLocal8Bit(path))) return 1;
    ZNSlabPlanner planner(static_cast<long long>(kSize) * kSize * 2 * kSlabSlices);
    ZNScopedService<ZNSlabPlanner> scope(planner);
    int warm = 0;
#pragma omp parallel reduction(+ : warm)
    warm += 1;  // start the thread pool before measuring
    const QString output = QString::fromLocal8Bit(path) + QStringLiteral(".labels");
    const bool reset = resetPeak();
    const long before = statusKb("VmRSS");
    const long peakBefore = statusKb("VmHWM");
    const auto start = std::chrono::steady_clock::now();
    int firstSlice = 0;
    const bool ok = fault::segmentation::getFaultPatchLabelImageLargeFile(
        &input, output, firstSlice, kMaxPatchSize, kMaxPlaneDeviation, kGrowthIterations,
        kThreshold, -1);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const long peak = statusKb("VmHWM");
    QFile::remove(output);
    std::printf("%d %d %ld %ld %ld %.3f %d\n", ok ? 1 : 0, reset ? 1 : 0, before, peakBefore, peak,
                seconds, warm);
    return ok ? 0 : 1;
}

void reportOutOfCore(const char* self)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("likelihood.znb"));
    {
        ZNBloc out;
        const ZN3DImage<float>& v = volume(FaultFamily);
        if (!out.create(path, v.blocSpace(), 0, kSize, ZNBloc::Float32) ||
            !out.writeSlices(0, v, 0, kSize) || !out.close()) {
            std::printf("out-of-core: could not write the likelihood block\n");
            return;
        }
    }
    const std::string command = std::string("'") + self + "' " + kChildFlag + " '" +
                                path.toStdString() + "'";
    FILE* child = popen(command.c_str(), "r");
    int ok = 0, reset = 0, threads = 0;
    long before = -1, peakBefore = -1, peak = -1;
    double seconds = 0.0;
    const int read = child ? std::fscanf(child, "%d %d %ld %ld %ld %lf %d", &ok, &reset, &before,
                                         &peakBefore, &peak, &seconds, &threads)
                           : 0;
    if (child) pclose(child);
    if (read != 7 || !ok) {
        std::printf("out-of-core: the child run failed\n");
        return;
    }
    const long base = reset ? before : peakBefore;  // without a reset, the older peak
    const double increase = (peak - base) * 1024.0;
    std::printf("out-of-core (fault family): %.2f s, %d slices per slab + 3, %d threads\n", seconds,
                kSlabSlices, threads);
    std::printf("out-of-core: resident before %ld kB, peak %ld kB (peak %s), increase %.1f MB\n",
                before, peak, reset ? "reset before the run" : "not resettable", increase / 1e6);
    std::printf("out-of-core: one slab (likelihood + labels of %d slices) %.1f MB; "
                "peak increase / slab = %.3f (goal <= 1.10)\n",
                kSlabSlices + 3, slabBytes() / 1e6, increase / slabBytes());
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], kChildFlag) == 0) return outOfCoreChild(argv[2]);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    reportOutOfCore(argv[0]);
    benchmark::Shutdown();
    return 0;
}
