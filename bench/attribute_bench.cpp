// The fault-likelihood attribute on synthetic seismic, in one run:
// - on a 256^3 volume, the attribute (likelihood only, in memory) against one 3D
//   Gaussian smoothing of the same volume (recursive, sigma 2: its cost does not depend
//   on sigma), alternated, min and median of the rounds, with the number of strike/dip
//   orientations scanned;
// - on a 101 x 102 x 103 volume, the attribute's time, for comparison with published
//   timings of the scanning method on that size;
// - the peak memory of the attribute as a child process (so that the high-water mark is
//   its own): the volume read from a block file into memory and its likelihood computed
//   there, against the volume's size; and block file to block files under a slab planner
//   budget of twice the volume, against that budget.
//
// Usage: attribute_bench [rounds]   (default 5)
// The memory children are this program with "--memory image|file BLOCFILE".
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <attribute/faultattribute.h>
#include <attribute/faultscans.h>
#include <attribute/recursivegaussian.h>
#include <synthetic/syntheticseismic.h>
#include <znbloc.h>
#include <znservice.h>
#include <znslabplanner.h>

namespace {

constexpr int kSize = 256;
constexpr double kGaussianSigma = 2.0;
constexpr long long kBytesPerSample = 4;
constexpr long long kFileBudgetShare = 2;   // planner budget out of core, in volumes

double secondsOf(const std::function<void()>& run)
{
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct Spread {
    double min, median;
};
Spread spreadOf(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return {v.front(), v[v.size() / 2]};
}

// A field of /proc/self/status in bytes (VmRSS, VmHWM); 0 when unreadable.
long long statusBytes(const std::string& field)
{
    std::ifstream status("/proc/self/status");
    std::string key;
    long long kilobytes = 0;
    while (status >> key) {
        if (key == field + ":" && status >> kilobytes) return kilobytes * 1024;
        status.ignore(1 << 16, '\n');
    }
    return 0;
}

ZN3DImage<float> seismicOf(int nx, int ny, int nz)
{
    return fault::synthetic::generateSyntheticSeismic(fault::synthetic::defaultSeismicScene(nx, ny, nz, 1)).amplitude;
}

// Child: prints the attribute's peak (bytes above what the process held before reading
// the volume) and the volume's bytes.
int memoryChild(const std::string& mode, const QString& blocPath)
{
    const long long before = statusBytes("VmRSS");
    ZNBloc bloc;
    if (!bloc.open(blocPath)) return 1;
    const long long volumeBytes = static_cast<long long>(bloc.nx()) * bloc.ny() * bloc.nz() * kBytesPerSample;
    QString error;
    if (mode == "image") {
        ZN3DImage<float> seismic;
        if (!bloc.readBox(0, 0, 0, bloc.nx(), bloc.ny(), bloc.nz(), seismic)) return 1;
        error = fault::attribute::computeFaultAttribute(seismic, fault::attribute::FaultAttributeSettings(), false, -1).error;
    } else {
        ZNSlabPlanner planner(kFileBudgetShare * volumeBytes);
        ZNScopedService<ZNSlabPlanner> scope(planner);
        QTemporaryDir out;
        fault::attribute::BlocSeismicSlices slices(bloc);
        error = fault::attribute::computeFaultAttributeFiles(
            slices, {out.filePath("l.bloc"), out.filePath("s.bloc"), out.filePath("d.bloc")}, bloc.unitObject(),
            fault::attribute::FaultAttributeSettings(), -1);
    }
    if (!error.isEmpty()) return 1;
    std::printf("%lld %lld\n", statusBytes("VmHWM") - before, volumeBytes);
    return 0;
}

void printMemory(const char* program, const QString& blocPath)
{
    for (const char* mode : {"image", "file"}) {
        QProcess child;
        child.start(QString::fromLocal8Bit(program), {"--memory", mode, blocPath});
        long long peak = 0, volume = 0;
        if (!child.waitForFinished(-1) || child.exitCode() != 0 ||
            std::sscanf(child.readAllStandardOutput().constData(), "%lld %lld", &peak, &volume) != 2) {
            std::printf("memory %s: the child failed\n", mode);
            continue;
        }
        if (std::string(mode) == "image")
            std::printf("memory, volume in memory: peak %.1f MB above the process before reading = %.2f x the "
                        "volume (%.1f MB), seismic and likelihood included\n",
                        peak / 1e6, static_cast<double>(peak) / volume, volume / 1e6);
        else
            std::printf("memory, block file to block files: peak %.1f MB above the process's start, planner "
                        "budget %.1f MB (%.2f x the budget)\n",
                        peak / 1e6, volume * kFileBudgetShare / 1e6,
                        static_cast<double>(peak) / static_cast<double>(volume * kFileBudgetShare));
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc == 4 && std::string(argv[1]) == "--memory") return memoryChild(argv[2], QString::fromLocal8Bit(argv[3]));
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    const fault::attribute::FaultAttributeSettings settings;
    const fault::attribute::ScanPlan plan = fault::attribute::planScans(settings);
    std::printf("orientations scanned: %zu (%zu strikes), windows %g samples along strike (sigma), +-%g down dip\n",
                plan.scans.size(), plan.groups.size(), settings.strikeSigma, settings.dipHalfLength);

    const ZN3DImage<float> seismic = seismicOf(kSize, kSize, kSize);
    std::vector<double> gaussian, attribute;
    for (int r = 0; r < rounds; ++r) {
        std::unique_ptr<ZN3DImage<float>> copy = seismic.clone();
        gaussian.push_back(secondsOf([&] { fault::attribute::smoothGaussian3D(*copy, kGaussianSigma); }));
        attribute.push_back(secondsOf([&] { fault::attribute::computeFaultAttribute(seismic, settings, false, -1); }));
    }
    const Spread g = spreadOf(gaussian), a = spreadOf(attribute);
    std::printf("%d^3, %d rounds: 3D Gaussian min %.3f s median %.3f s; attribute min %.2f s median %.2f s; "
                "ratio min %.1f median %.1f (%.3f Gaussians per orientation)\n",
                kSize, rounds, g.min, g.median, a.min, a.median, a.min / g.min, a.median / g.median,
                a.median / g.median / static_cast<double>(plan.scans.size()));

    const ZN3DImage<float> small = seismicOf(101, 102, 103);
    std::vector<double> smallTimes;
    for (int r = 0; r < rounds; ++r)
        smallTimes.push_back(secondsOf([&] { fault::attribute::computeFaultAttribute(small, settings, true, -1); }));
    const Spread s = spreadOf(smallTimes);
    std::printf("101 x 102 x 103 with strike and dip: min %.3f s median %.3f s\n", s.min, s.median);

    QTemporaryDir dir;
    ZNBloc bloc;
    const QString path = dir.filePath("seismic.bloc");
    if (!bloc.create(path, seismic.blocSpace(), 0, kSize, ZNBloc::Float32) || !bloc.writeSlices(0, seismic, 0, kSize) ||
        !bloc.close()) {
        std::printf("the block file cannot be written\n");
        return 1;
    }
    printMemory(argv[0], path);
    return 0;
}
