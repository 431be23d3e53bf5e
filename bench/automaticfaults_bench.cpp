// The automatic step of a fault extraction (label image -> fault set -> contacts ->
// patch parameters -> fastContactMerging) on the segmentation benchmark's 256^3 volumes,
// timed against the segmentation of the same volume in the same run; and two synthetic
// stress tests: 100,000 patches merged, and the duplicate scan of 10,000 faults. After the
// timed benchmarks the program prints each figure against its goal.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <automaticfaultextraction.h>
#include <segmentation/faultpatchlabelimage.h>
#include <znfaultpatchmanager.h>

#include "segmentationvolumes.h"

namespace {

using namespace benchvolumes;

const double kMergeCost = fault::AutomaticExtractionSettings().maxMergeCost;

// Stress fault set: kPlanes planes of kSide x kSide patches, each patch a 4 x 4 grid of
// points a little off its plane, touching its right and lower neighbours.
constexpr int kPlanes = 10;
constexpr int kSide = 100;                 // patches along each side of a plane
constexpr int kPatchPoints = 4;            // points along each side of a patch
constexpr double kRoughness = 0.3;         // offset of the points across their plane
constexpr double kPlaneTilt = 12.0;        // degrees between successive planes
constexpr double kPlaneGap = 2000.0;       // distance between successive planes' origins

// Duplicate scan: kFaults faults of two 3-point sticks on kInlines inlines, every
// kCopyEvery-th fault a copy of the fault kFaults / 2 before it.
constexpr int kFaults = 10000;
constexpr int kInlines = 1000;
constexpr int kCopyEvery = 10;

std::unique_ptr<ZN3DImage<int>> segment(ZN3DImage<float>& likelihood)
{
    int sliceCount = 0;
    int labelCounter = 0;
    return std::unique_ptr<ZN3DImage<int>>(fault::segmentation::getFaultPatchLabelImage(
        &likelihood, kMaxLabelCount, sliceCount, labelCounter, kMaxPatchSize, kMaxPlaneDeviation,
        kGrowthIterations, kThreshold, -1));
}

const ZN3DImage<int>& labels(int kind)
{
    static std::unique_ptr<ZN3DImage<int>> cached[2];
    if (!cached[kind]) cached[kind] = segment(volume(kind));
    return *cached[kind];
}

int countFaults(const ZNFaultPatchManager& set)
{
    int faults = 0;
    for (int p = 1; p < set.getNumberOfPatch() - 1; ++p)
        faults += set.getFather(p) == p && set.getFaultPatch(p)->getNbPoint() > 0;
    return faults;
}

void BM_Segmentation(benchmark::State& state)
{
    ZN3DImage<float>& v = volume(static_cast<int>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(segment(v).get());
}
BENCHMARK(BM_Segmentation)->Arg(FaultFamily)->Arg(CrossingFaults)
    ->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_AutomaticStep(benchmark::State& state)
{
    const ZN3DImage<int>& image = labels(static_cast<int>(state.range(0)));
    int patches = 0;
    int faults = 0;
    for (auto _ : state) {
        ZNFaultPatchManager set;
        set.init(&image);
        set.fastContactMerging(kMergeCost, -1);
        patches = set.getNumberOfPatch();
        faults = countFaults(set);
    }
    state.counters["patches"] = patches;
    state.counters["faults"] = faults;
}
BENCHMARK(BM_AutomaticStep)->Arg(FaultFamily)->Arg(CrossingFaults)
    ->Unit(benchmark::kMillisecond)->Iterations(3);

// Built once, released by main() while the host's registry still exists.
std::unique_ptr<ZNFaultPatchManager> g_stressSet;

ZNFaultPatchManager& stressSet()
{
    std::unique_ptr<ZNFaultPatchManager>& set = g_stressSet;
    if (set) return *set;
    set = std::make_unique<ZNFaultPatchManager>(kPlanes * kSide * kSide + 2);
    const auto id = [](int plane, int i, int j) { return 1 + (plane * kSide + j) * kSide + i; };
    for (int plane = 0; plane < kPlanes; ++plane) {
        const double tilt = plane * kPlaneTilt * M_PI / 180.0;
        const core::vec3 u(1, 0, 0);
        const core::vec3 v(0, std::cos(tilt), std::sin(tilt));
        const core::vec3 normal = u.cross(v);
        const core::vec3 origin(plane * kPlaneGap, 0, 0);
        for (int j = 0; j < kSide; ++j)
            for (int i = 0; i < kSide; ++i) {
                ZNFaultPatch* patch = set->getFaultPatch(id(plane, i, j));
                for (int a = 0; a < kPatchPoints; ++a)
                    for (int b = 0; b < kPatchPoints; ++b) {
                        const double side = (a + b) % 2 == 0 ? kRoughness : -kRoughness;
                        patch->addPoint(origin + u * (kPatchPoints * i + a) +
                                        v * (kPatchPoints * j + b) + normal * side);
                    }
                if (i > 0) set->addContact(id(plane, i - 1, j), id(plane, i, j));
                if (j > 0) set->addContact(id(plane, i, j - 1), id(plane, i, j));
                if (plane > 0 && i == 0)
                    set->addContact(id(plane - 1, kSide - 1, j), id(plane, i, j));
            }
    }
    return *set;
}

void BM_MergeStress(benchmark::State& state)
{
    ZNFaultPatchManager& set = stressSet();
    for (auto _ : state) {
        state.PauseTiming();
        for (int p = 0; p < set.getNumberOfPatch(); ++p) set.setFather(p, p);
        set.initElementListBis();
        state.ResumeTiming();
        set.fastContactMerging(kMergeCost, -1);
    }
    state.counters["patches"] = set.getNumberOfPatch() - 2;
    state.counters["faults"] = countFaults(set);
}
BENCHMARK(BM_MergeStress)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_DuplicateScan(benchmark::State& state)
{
    ZNFaultPatchManager set(kFaults + 2);
    for (int f = 1; f <= kFaults; ++f) {
        const int source = f % kCopyEvery == 0 && f > kFaults / 2 ? f - kFaults / 2 : f;
        const double x = (source * 7) % kInlines;
        const double y = 100.0 + source % 97;
        const double z = 500.0 + source % 89;
        for (const core::vec3& p : {core::vec3(x, y, z), core::vec3(x, y + 10, z + 3),
                                    core::vec3(x, y + 20, z + 5), core::vec3(-9999, 0, 0),
                                    core::vec3(x + 2, y, z), core::vec3(x + 2, y + 12, z + 4),
                                    core::vec3(x + 2, y + 21, z + 6)})
            set.addPickedPoint(f, core::PointWithBool(p));
    }
    core::Array<core::Duplet> pairs;
    for (auto _ : state) {
        pairs.clear();
        set.getSameFaultArray(pairs, -1);
    }
    state.counters["faults"] = kFaults;
    state.counters["pairs"] = pairs.size();
}
BENCHMARK(BM_DuplicateScan)->Unit(benchmark::kMillisecond)->Iterations(5);

// Keeps the mean real and CPU time of every run besides the console output.
class RecordingReporter : public benchmark::ConsoleReporter {
public:
    std::map<std::string, std::pair<double, double>> times;   // ms: real, CPU
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Iteration)
                times[r.run_name.str()] = {r.GetAdjustedRealTime(), r.GetAdjustedCPUTime()};
        ConsoleReporter::ReportRuns(runs);
    }
    void printSummary() const
    {
        for (int kind : {FaultFamily, CrossingFaults}) {
            const std::string arg = "/" + std::to_string(kind) + "/iterations:3";
            const auto step = times.find("BM_AutomaticStep" + arg);
            const auto segmentation = times.find("BM_Segmentation" + arg);
            if (step == times.end() || segmentation == times.end()) continue;
            std::printf("%s: automatic step / segmentation = %.2f real time, %.2f CPU time "
                        "(goal <= 1.00)\n",
                        kVolumeNames[kind], step->second.first / segmentation->second.first,
                        step->second.second / segmentation->second.second);
        }
        const auto merge = times.find("BM_MergeStress/iterations:3");
        if (merge != times.end())
            std::printf("100000 patches merged: %.3f s real, %.3f s CPU (goal <= 1 s)\n",
                        merge->second.first / 1e3, merge->second.second / 1e3);
        const auto scan = times.find("BM_DuplicateScan/iterations:5");
        if (scan != times.end())
            std::printf("duplicate scan of 10000 faults: %.4f s real, %.4f s CPU (goal <= 0.1 s)\n",
                        scan->second.first / 1e3, scan->second.second / 1e3);
    }
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printSummary();
    g_stressSet.reset();
    benchmark::Shutdown();
    return 0;
}
