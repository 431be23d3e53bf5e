// End-to-end run of the automatic extraction on the built-in 256^3 volume. Prints, in
// the same run: one single-thread 26-neighbour stencil pass over the volume
// (baselines.h), the extraction steps in process (segmentation to merged fault set), and the whole `kfaults extract` command
// without pictures on the volume saved as a block file (run as a child process, so that
// its peak memory is its own), with the ratios to the stencil pass and the command's peak
// memory against the volume's size.
//
// The command's peak is the one it writes into its report.json (the high-water mark of
// its own address space). The children's maxrss of getrusage is not used: a child
// started by system() shares this process's address space until it execs, and the
// kernel then records this process's high-water mark as the child's, so that figure
// measures the benchmark (which holds the volume three times over), not the command.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <automaticfaultextraction.h>
#include <synthetic/syntheticvolume.h>
#include <znbloc.h>
#include <znfaultpatchmanager.h>

#include "baselines.h"

namespace {
constexpr int kSize = 256;

// The peak resident bytes the command wrote into its report; 0 when unreadable.
double reportedPeakBytes(const QString& reportPath)
{
    QFile file(reportPath);
    if (!file.open(QIODevice::ReadOnly)) return 0.0;
    const QJsonObject memory = QJsonDocument::fromJson(file.readAll()).object()["memory"].toObject();
    return std::max(0.0, memory["peakResidentBytes"].toDouble());
}

void EndToEnd(benchmark::State& state)
{
#ifndef KFAULTS_EXE
    state.SkipWithError("built without the kfaults executable");
    return;
#define KFAULTS_EXE ""
#endif
    fault::synthetic::SyntheticVolume v =
        fault::synthetic::generateSyntheticVolume(fault::synthetic::defaultScene(kSize, kSize, kSize));
    QTemporaryDir dir;
    const QString blocPath = dir.filePath("likelihood.bloc");
    ZNBloc bloc;
    if (!v.ok() || !bloc.create(blocPath, v.likelihood.blocSpace(), 0, kSize, ZNBloc::Float32) ||
        !bloc.writeSlices(0, v.likelihood, 0, kSize) || !bloc.close()) {
        state.SkipWithError("cannot prepare the volume");
        return;
    }
    ZN3DImage<float> smoothed(v.likelihood.blocSpace(), 0.0f);
    double stencil = 0, steps = 0, command = 0;
    int commandStatus = 0;
    for (auto _ : state) {
        stencil = baselines::secondsOf([&] {
            baselines::stencil26(v.likelihood.data(), smoothed.data(), kSize, kSize, kSize);
        });
        steps = baselines::secondsOf([&] {
            std::unique_ptr<ZNFaultPatchManager> set(
                fault::extractAutomaticFaults(&v.likelihood, fault::AutomaticExtractionSettings(), -1));
            benchmark::DoNotOptimize(set.get());
        });
        const std::string call = std::string(KFAULTS_EXE) + " extract --no-pictures -i " +
                                 blocPath.toStdString() + " -o " + dir.filePath("out").toStdString() +
                                 " > /dev/null";
        command = baselines::secondsOf([&] { commandStatus = std::system(call.c_str()); });
    }
    const double peakBytes = reportedPeakBytes(dir.filePath("out/report.json"));
    const double volumeBytes = static_cast<double>(v.likelihood.voxelCount()) * sizeof(float);
    if (commandStatus != 0) state.SkipWithError("kfaults extract failed");
    state.counters["stencil_s"] = stencil;
    state.counters["steps_s"] = steps;
    state.counters["command_s"] = command;
    state.counters["steps_over_stencil"] = steps / stencil;
    state.counters["command_over_stencil"] = command / stencil;
    state.counters["command_peak_over_volume"] = peakBytes / volumeBytes;
}
BENCHMARK(EndToEnd)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
} // namespace

BENCHMARK_MAIN();
