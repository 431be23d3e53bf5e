// The automatic extraction against the plainest fast code for the same work
// (baselines.h), every ratio measured in this one run, each step alternated with its
// baseline over the rounds and reported by minimum and median. The volume: four planar
// faults crossing each other with noise (segmentationvolumes.h), scaled to the size.
//
// - input: volumeio::readVolume of the volume stored as raw float32 (big-endian,
//   trace order: a byte swap and a change of axis order), as SEG-Y (IEEE floats,
//   big-endian, inline-sorted traces) and as a block file, against a plain read of the
//   same file (goals: raw <= 1.5, SEG-Y <= 2, block <= 1.2);
// - segmentation: the fault patch segmentation on one thread against the breadth-first
//   labelling of the same voxels, on the crossing faults and on four faults of which two
//   cross, both at 256^3 and at the size asked for, and on the built-in volume (goal <= 2), and
//   its time on two threads against one;
// - command: `kfaults extract --no-pictures` on the raw file, run as a child process:
//   its whole time against a plain read of the file + the breadth-first labelling + a
//   plain synced write of the labels (goal <= 2), its output step against a plain synced
//   write of the bytes it wrote (goal <= 1.5), and the peak memory it reports against
//   the volume's size (goal <= 3).
//
// Usage: extraction_bench [size] [rounds] [sections...]   (default 512 5, every section:
// input segmentation command). The files go to a temporary folder beside the working
// directory (TMPDIR), on the disk the outputs of a real run would go to.
#include <omp.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <automaticfaultextraction.h>
#include <synthetic/syntheticvolume.h>
#include <volumeio/rawvolume.h>
#include <volumeio/volumesource.h>
#include <znbloc.h>

#include "baselines.h"
#include "segmentationvolumes.h"
#include "segywriter.h"

namespace {

using baselines::Comparison;

constexpr float kThreshold = 0.5f;

void printComparison(const char* what, const Comparison& c, const char* goal)
{
    std::printf("%-44s %7.3f s min %7.3f s median | baseline %7.3f / %7.3f | ratio %5.2f min %5.2f median (goal %s)\n",
                what, c.step.min, c.step.median, c.baseline.min, c.baseline.median, c.minRatio(),
                c.medianRatio(), goal);
}

void printLoad()
{
    double load[3] = {0, 0, 0};
    if (getloadavg(load, 3) == 3)
        std::printf("load average %.2f %.2f %.2f on %d processors\n", load[0], load[1], load[2],
                    omp_get_num_procs());
}

// The breadth-first baseline on `volume` into fresh labels; the component count.
int breadthFirst(const ZN3DImage<float>& volume)
{
    std::unique_ptr<int[]> labels(new int[volume.voxelCount()]());
    std::vector<std::uint32_t> queue;
    return baselines::labelBreadthFirst26(volume.data(), volume.nx(), volume.ny(), volume.nz(), kThreshold,
                                          labels.get(), queue);
}

double shareAbove(const ZN3DImage<float>& volume)
{
    std::size_t above = 0;
    for (std::size_t i = 0; i < volume.voxelCount(); ++i) above += volume.data()[i] > kThreshold;
    return static_cast<double>(above) / static_cast<double>(volume.voxelCount());
}

struct Files {
    QString raw, segy, bloc;
};

bool writeFiles(const ZN3DImage<float>& volume, const QDir& dir, Files& files)
{
    files.raw = dir.filePath("likelihood.float32.raw");
    files.segy = dir.filePath("likelihood.sgy");
    files.bloc = dir.filePath("likelihood.bloc");
    ZNBloc bloc;
    return volumeio::writeRawVolume<float>(files.raw, volume, volumeio::ByteOrder::BigEndian,
                                           volumeio::kTraceOrder).isEmpty() &&
           benchsegy::writeSegy(files.segy.toStdString(), volume) &&
           bloc.create(files.bloc, volume.blocSpace(), 0, volume.nz(), ZNBloc::Float32) &&
           bloc.writeSlices(0, volume, 0, volume.nz()) && bloc.close();
}

void benchInput(const ZN3DImage<float>& volume, const Files& files, int rounds)
{
    std::printf("\ninput (%d x %d x %d float32, %.0f MiB)\n", volume.nx(), volume.ny(), volume.nz(),
                volume.voxelCount() * 4.0 / (1 << 20));
    struct Case {
        const char* name;
        QString path;
        volumeio::VolumeFormat format;
        const char* goal;
    };
    volumeio::RawVolumeLayout layout;
    layout.nInline = volume.nx();
    layout.nCrossline = volume.ny();
    layout.nSample = volume.nz();
    for (const Case& c : {Case{"raw (byte swap, trace order) / plain read", files.raw, volumeio::VolumeFormat::Raw, "<= 1.5"},
                          Case{"SEG-Y (IEEE, big-endian) / plain read", files.segy, volumeio::VolumeFormat::Segy, "<= 2"},
                          Case{"block file / plain read", files.bloc, volumeio::VolumeFormat::Bloc, "<= 1.2"}}) {
        volumeio::VolumeSource source{c.format, c.path, layout};
        bool ok = true;
        const Comparison r = baselines::alternate(
            rounds, [&] { ok = volumeio::readVolume(source).ok() && ok; },
            [&] { baselines::plainRead(c.path.toStdString()); });
        if (!ok) std::printf("  %s: the read failed\n", c.name);
        printComparison(c.name, r, c.goal);
    }
}

// The segmentation with the extraction's defaults on `threads` threads.
void segment(ZN3DImage<float>& volume, int threads)
{
    const int before = omp_get_max_threads();
    omp_set_num_threads(threads);
    std::unique_ptr<ZN3DImage<int>> labels(fault::segmentLikelihood(&volume, fault::AutomaticExtractionSettings(), -1));
    omp_set_num_threads(before);
    if (!labels) std::printf("  the segmentation failed\n");
}

void benchSegmentation(ZN3DImage<float>& volume, const char* name, int rounds)
{
    std::printf("\nsegmentation, %s (%d^3, %.2f %% above %.1f, extraction defaults)\n", name, volume.nx(),
                100.0 * shareAbove(volume), kThreshold);
    int components = 0;
    const Comparison one = baselines::alternate(
        rounds, [&] { segment(volume, 1); }, [&] { components = breadthFirst(volume); });
    printComparison("one thread / breadth-first labelling", one, "<= 2");
    // The labelling alone, into labels allocated and cleared beforehand.
    std::unique_ptr<int[]> labels(new int[volume.voxelCount()]);
    std::vector<std::uint32_t> queue;
    std::vector<double> alone;
    for (int r = 0; r < rounds; ++r) {
        std::fill(labels.get(), labels.get() + volume.voxelCount(), 0);
        alone.push_back(baselines::secondsOf([&] {
            baselines::labelBreadthFirst26(volume.data(), volume.nx(), volume.ny(), volume.nz(), kThreshold,
                                           labels.get(), queue);
        }));
    }
    printComparison("one thread / labelling into ready labels", Comparison{one.step, baselines::spreadOf(alone)},
                    "<= 2");
    std::printf("  (%d components of the breadth-first labelling; the first baseline allocates its labels "
                "as the segmentation does)\n", components);
    const Comparison two = baselines::alternate(
        rounds, [&] { segment(volume, 2); }, [&] { segment(volume, 1); });
    printComparison("two threads / one thread", two, "< 1 on an idle machine");
}

QJsonObject readReport(const QString& folder)
{
    QFile file(QDir(folder).filePath("report.json"));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

long long folderBytes(const QString& folder)
{
    long long bytes = 0;
    for (const QFileInfo& f : QDir(folder).entryInfoList(QDir::Files)) bytes += f.size();
    return bytes;
}

void benchCommand(const ZN3DImage<float>& volume, const Files& files, const QDir& dir, int rounds)
{
#ifndef KFAULTS_EXE
    std::printf("\ncommand: built without the kfaults executable\n");
    (void)volume, (void)files, (void)dir, (void)rounds;
#else
    const QString out = dir.filePath("out");
    const std::string call = std::string(KFAULTS_EXE) + " extract --no-pictures --byte-order big -i " +
                             files.raw.toStdString() + " --size " + std::to_string(volume.nx()) + " " +
                             std::to_string(volume.ny()) + " " + std::to_string(volume.nz()) + " -o " +
                             out.toStdString() + " > /dev/null";
    const std::string scratch = dir.filePath("baseline.bytes").toStdString();
    // A first run, untimed, tells the bytes the outputs hold.
    if (std::system(call.c_str()) != 0) {
        std::printf("\ncommand: kfaults extract failed\n");
        return;
    }
    const long long outputBytes = folderBytes(out);
    std::unique_ptr<char[]> payload(new char[static_cast<std::size_t>(outputBytes)]());
    std::vector<double> whole, outputs, baseline, syncedWrites;
    double peak = 0.0;
    const auto command = [&] {
        whole.push_back(baselines::secondsOf([&] { std::system(call.c_str()); }));
        const QJsonObject report = readReport(out);
        outputs.push_back(report["timingsMs"].toObject()["outputs"].toDouble() / 1000.0);
        peak = std::max(peak, report["memory"].toObject()["peakResidentBytes"].toDouble());
    };
    // The plain work of a whole run: read the file, label its voxels, write the labels.
    const auto plain = [&] {
        baseline.push_back(baselines::secondsOf([&] {
            baselines::plainRead(files.raw.toStdString());
            std::unique_ptr<int[]> labels(new int[volume.voxelCount()]());
            std::vector<std::uint32_t> queue;
            baselines::labelBreadthFirst26(volume.data(), volume.nx(), volume.ny(), volume.nz(), kThreshold,
                                           labels.get(), queue);
            baselines::plainSyncedWrite(scratch, reinterpret_cast<const char*>(labels.get()),
                                        volume.voxelCount() * sizeof(int));
        }));
    };
    const auto write = [&] {
        syncedWrites.push_back(baselines::secondsOf([&] {
            baselines::plainSyncedWrite(scratch, payload.get(), static_cast<std::size_t>(outputBytes));
        }));
    };
    for (int r = 0; r < rounds; ++r) {
        if (r % 2 == 0) {
            command(), plain(), write();
        } else {
            write(), plain(), command();
        }
    }
    QFile::remove(QString::fromStdString(scratch));
    std::printf("\ncommand: kfaults extract --no-pictures on the raw file (%.0f MiB of outputs)\n",
                outputBytes / 1048576.0);
    printComparison("whole / (read + labelling + synced write)",
                    Comparison{baselines::spreadOf(whole), baselines::spreadOf(baseline)}, "<= 2");
    printComparison("output step / plain synced write",
                    Comparison{baselines::spreadOf(outputs), baselines::spreadOf(syncedWrites)}, "<= 1.5");
    std::printf("%-44s %7.2f (goal <= 3)\n", "peak resident memory / volume", peak / (volume.voxelCount() * 4.0));
#endif
}

} // namespace

int main(int argc, char** argv)
{
    const int size = argc > 1 ? std::atoi(argv[1]) : 512;
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
    std::set<std::string> sections;
    for (int k = 3; k < argc; ++k) sections.insert(argv[k]);
    const auto wanted = [&](const char* s) { return sections.empty() || sections.count(s) > 0; };
    if (size < 32 || rounds < 1) {
        std::fprintf(stderr, "usage: extraction_bench [size >= 32] [rounds >= 1] [input|segmentation|command...]\n");
        return 2;
    }
    printLoad();
    // Four planar faults crossing each other, with noise, scaled to the size asked for.
    std::unique_ptr<ZN3DImage<float>> crossing = benchvolumes::makeVolume(benchvolumes::kCrossing, size);
    std::printf("volume: %d^3, four crossing planar faults, %.2f %% of the voxels above %.1f\n", size,
                100.0 * shareAbove(*crossing), kThreshold);
    QTemporaryDir dir(QDir::current().filePath("extraction-bench-XXXXXX"));
    Files files;
    if ((wanted("input") || wanted("command")) && !writeFiles(*crossing, QDir(dir.path()), files)) {
        std::fprintf(stderr, "cannot write the input files into %s\n", dir.path().toLocal8Bit().constData());
        return 1;
    }
    if (wanted("input")) benchInput(*crossing, files, rounds);
    if (wanted("segmentation")) {
        benchSegmentation(benchvolumes::volume(benchvolumes::CrossingFaults), "four crossing planar faults", rounds);
        benchSegmentation(*benchvolumes::makeVolume(benchvolumes::kOneCrossing),
                          "four planar faults, two of them crossing", rounds);
        if (size != benchvolumes::kSize) {
            benchSegmentation(*crossing, "four crossing planar faults", rounds);
            benchSegmentation(*benchvolumes::makeVolume(benchvolumes::kOneCrossing, size),
                              "four planar faults, two of them crossing", rounds);
        }
        fault::synthetic::SyntheticVolume builtIn =
            fault::synthetic::generateSyntheticVolume(fault::synthetic::defaultScene(size, size, size));
        builtIn.plantedIds = ZN3DImage<int>();
        if (builtIn.ok()) benchSegmentation(builtIn.likelihood, "the built-in volume", rounds);
    }
    if (wanted("command")) benchCommand(*crossing, files, QDir(dir.path()), rounds);
    printLoad();
    return 0;
}
