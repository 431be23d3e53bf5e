// Mapping a 512^3 block file along a fault that crosses the whole volume (a plane
// dipping 60 degrees through every slice, one pixel per voxel: 512 x 591 pixels), in one
// run: the time of fault::mapDataOnFaultPlane against reading the slices it touches once
// through the same block (ZNBloc::readSlice, and as one-slice boxes as the mapping reads
// them), warm (the file in the page cache, min and median of alternated rounds) and cold
// (dropped from it first); the other mapping
// settings' times; and the peak resident memory of the mapping (the process's high-water
// mark, reset before it) against one slice plus the voxel lists, with the default list
// budget and with a budget of 8 MiB.
//
// Usage: faultplanemapping_bench [rounds] [folder]  (rounds default 9, at least 5; folder: where the
// 512 MiB file goes, default the system's temporary folder).
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <faultplanemapping.h>
#include <znbloc.h>

#include "benchtiming.h"

using benchtiming::dropCache;
using benchtiming::msOf;
using benchtiming::Stats;
using benchtiming::statsOf;

namespace {

constexpr int kSize = 512;
constexpr double kDip = 60.0 * M_PI / 180.0;
constexpr int kOffset = 40;  // crossline of the fault's top

// The resident high-water mark (kB), after resetting it to the present size when `reset`.
long peakResidentKb(bool reset)
{
    if (reset) std::ofstream("/proc/self/clear_refs") << "5";
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
    return -1;
}
long residentKb()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    return -1;
}

bool writeVolume(const QString& path)
{
    ZNBloc bloc;
    if (!bloc.create(path, georef::BlocSpace(kSize, kSize, kSize), 0, kSize, ZNBloc::Float32)) return false;
    ZN3DImage<float> slice(kSize, kSize, 1);
    for (int k = 0; k < kSize; ++k) {
        for (int j = 0; j < kSize; ++j)
            for (int i = 0; i < kSize; ++i) slice(i, j, 0) = 1.0f + std::sin(0.3f * k) + 0.001f * i;
        if (!bloc.writeSlices(k, slice, 0, 1)) return false;
    }
    return bloc.close();
}

// Pixel (c, r) at voxel (c, kOffset + r cos(dip), r sin(dip)); the normal across it.
core::mat4 faultImageToWorld()
{
    core::mat4 m = core::mat4::zero();
    m(0, 0) = 1.0;
    m(1, 1) = std::cos(kDip);
    m(2, 1) = std::sin(kDip);
    m(1, 2) = -std::sin(kDip);
    m(2, 2) = std::cos(kDip);
    m(1, 3) = kOffset;
    m(3, 3) = 1.0;
    return m;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(5, std::atoi(argv[1])) : 9;
    QTemporaryDir dir(argc > 2 ? QString::fromLocal8Bit(argv[2]) + QStringLiteral("/fpm-XXXXXX") : QString());
    const QString path = dir.filePath(QStringLiteral("volume.bloc"));
    std::printf("writing %d^3 float32 block file...\n", kSize);
    if (!dir.isValid() || !writeVolume(path)) {
        std::printf("cannot write %s\n", qPrintable(path));
        return 1;
    }
    ZNBloc data;
    if (!data.open(path)) return 1;
    const int rows = static_cast<int>(std::ceil(kSize / std::sin(kDip)));
    const img::Image projected(kSize, rows, 1.0f);
    const core::mat4 toWorld = faultImageToWorld();
    fault::FaultPlaneMappingStats stats;
    img::Image mapped;
    fault::mapDataOnFaultPlane(projected, toWorld, data, {}, mapped, -2, &stats);  // warms the cache
    std::printf("fault image %d x %d, %lld voxels listed, %zu slices touched, %d pixels mapped\n", kSize, rows,
                stats.voxelsListed, stats.slicesRead.size(), stats.pixelsMapped);

    const auto readTouched = [&] {
        img::Image slice;
        for (int k : stats.slicesRead) data.readSlice(k, slice);
    };
    const auto mapOnce = [&](const fault::FaultPlaneMappingSettings& s) {
        img::Image out;
        fault::mapDataOnFaultPlane(projected, toWorld, data, s, out, -2);
    };
    // The mapping reads each slice as a one-slice box; readSlice also copies it into an
    // image. Both readings are baselines: the plain one, and the least the mapping could do.
    const auto readTouchedBoxes = [&] {
        ZN3DImage<float> box;
        for (int k : stats.slicesRead) data.readBox(0, 0, k, kSize, kSize, 1, box);
    };
    std::vector<double> mapping, reading, boxReading;
    for (int round = 0; round < rounds; ++round) {
        reading.push_back(msOf(readTouched));
        mapping.push_back(msOf([&] { mapOnce({}); }));
        boxReading.push_back(msOf(readTouchedBoxes));
    }
    const Stats m = statsOf(mapping), r = statsOf(reading), b = statsOf(boxReading);
    // Rounds alternate, so each round's ratio compares runs under the same load.
    const auto medianRatio = [&](const std::vector<double>& baseline) {
        std::vector<double> ratios;
        for (std::size_t k = 0; k < mapping.size(); ++k) ratios.push_back(mapping[k] / baseline[k]);
        return statsOf(ratios).median;
    };
    std::printf("warm, %d alternated rounds: mapping min %.1f ms median %.1f ms\n", rounds, m.min, m.median);
    std::printf("  reading the touched slices (readSlice) min %.1f median %.1f ms; ratio of the mins %.2f, "
                "median of the rounds' ratios %.2f\n",
                r.min, r.median, m.min / r.min, medianRatio(reading));
    std::printf("  reading them as one-slice boxes (readBox) min %.1f median %.1f ms; ratio of the mins %.2f, "
                "median of the rounds' ratios %.2f\n",
                b.min, b.median, m.min / b.min, medianRatio(boxReading));

    std::vector<double> coldMapping, coldReading;
    for (int round = 0; round < std::min(rounds, 2); ++round) {
        dropCache(path);
        coldReading.push_back(msOf(readTouched));
        dropCache(path);
        coldMapping.push_back(msOf([&] { mapOnce({}); }));
    }
    const Stats cm = statsOf(coldMapping), cr = statsOf(coldReading);
    std::printf("cold: mapping min %.0f ms; reading min %.0f ms; ratio %.2f\n", cm.min, cr.min, cm.min / cr.min);

    const struct {
        const char* name;
        std::function<void(fault::FaultPlaneMappingSettings&)> set;
    } settings[] = {
        {"Smooth Mean", [](auto& s) { s.combine = fault::FaultPlaneMappingSettings::Combine::Mean; }},
        {"Smooth Max Amplitude", [](auto& s) { s.combine = fault::FaultPlaneMappingSettings::Combine::MaxAmplitude; }},
        {"WindowSize 10", [](auto& s) { s.windowSize = 10; }},
        {"Corr Threshold 0.5", [](auto& s) { s.correlationThreshold = 0.5; }},
        {"Interpolation 5", [](auto& s) { s.interpolationRadius = 5; }},
        {"Smoothing 2 x 2 px", [](auto& s) { s.smoothing = true; s.spatialDeviation = s.verticalDeviation = 2.0; }},
    };
    for (const auto& c : settings) {
        fault::FaultPlaneMappingSettings s;
        c.set(s);
        std::vector<double> times;
        for (int round = 0; round < std::min(rounds, 3); ++round) times.push_back(msOf([&] { mapOnce(s); }));
        std::printf("  %-22s min %.1f ms (%.2f x the plain mapping)\n", c.name, statsOf(times).min,
                    statsOf(times).min / m.min);
    }

    for (long long budget : {fault::FaultPlaneMappingSettings::kDefaultListBudgetBytes, 8LL << 20}) {
        fault::FaultPlaneMappingSettings s;
        s.listBudgetBytes = budget;
        fault::FaultPlaneMappingStats st;
        img::Image out;
        malloc_trim(0);  // what earlier runs freed would otherwise hide the growth
        const long before = residentKb();
        peakResidentKb(true);
        const double ms = msOf([&] { fault::mapDataOnFaultPlane(projected, toWorld, data, s, out, -2, &st); });
        const long peak = peakResidentKb(false) - before;
        const double slice = st.sliceBytes / 1024.0;
        std::printf("budget %lld MiB: %.1f ms, %d sweeps; peak resident growth %ld kB; one slice %.0f kB, lists %.0f kB, "
                    "result and images %.0f kB; peak / (slice + lists + result) %.2f; volume %.0f MiB\n",
                    budget >> 20, ms, st.listSweeps, peak, slice, st.listBytes / 1024.0,
                    (st.imageBytes + 4.0 * kSize * rows) / 1024.0,
                    peak / (slice + st.listBytes / 1024.0 + (st.imageBytes + 4.0 * kSize * rows) / 1024.0),
                    4.0 * kSize * kSize * kSize / (1 << 20));
    }
    return 0;
}
