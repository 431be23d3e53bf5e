// The project browser's fault plugin on a folder of 1,000 fault set files of 100 faults
// each: the time from asking for the folder to the last fault name in the tree (the
// files listed and their items made on the GUI thread, the names read by the plugin's
// reader thread and added file by file; the model made and destroyed outside that time),
// with the GUI thread's CPU time within it, against one plain loop, on one thread, that
// reads the same files' headers with the framework's header reader (ZNObjectFile), and
// the share of each file's bytes the plugin reads. Printed for context: a plain loop
// that only reads the header bytes, and a plain loop of the plugin's own name reader.
//
// Each figure is the min and median of kRounds rounds, run alternately, warm (the files
// in the page cache, as just after they were written) and cold (their cached pages
// dropped before each round, as when a project is opened). The bytes read come from the
// process's read counter (/proc/self/io, "rchar"). Runs on Qt's offscreen platform.
//
//   build/bench/projectbrowser_bench [files] [faults]
#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <core/multiarray.h>
#include <znbytesource.h>
#include <znfaultpatchmanager.h>
#include <znobjectfile.h>
#include <znprojectbrowseritem.h>
#include <znprojectbrowsermodel.h>
#include <znprojectbrowserpluginfault.h>
#include <znprojectbrowserpluginreadfaultthread.h>

namespace {

constexpr int kRounds = 7;
constexpr int kSticksPerFault = 5;
constexpr int kPointsPerStick = 10;
const QString kFilter = QStringLiteral("*.faultset");

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}
double minimum(const std::vector<double>& v)
{
    return *std::min_element(v.begin(), v.end());
}

// Bytes the process has read through read calls so far; -1 when the system cannot tell.
qint64 bytesRead()
{
    QFile io(QStringLiteral("/proc/self/io"));
    if (!io.open(QIODevice::ReadOnly)) return -1;
    for (const QByteArray& line : io.readAll().split('\n'))
        if (line.startsWith("rchar:")) return line.mid(6).trimmed().toLongLong();
    return -1;
}

// A picked fault set of `faults` named faults, each of kSticksPerFault sticks.
bool writeFaultSet(const QString& path, int faults)
{
    core::MultiArray<core::vec3> rows(faults);
    for (int f = 0; f < faults; ++f)
        for (int s = 0; s < kSticksPerFault; ++s) {
            for (int p = 0; p < kPointsPerStick; ++p)
                rows.addElement(f, core::vec3(10.0 * f + s, 10.0 * p, 20.0 * s), false);
            rows.addElement(f, core::vec3(-9999.0, -9999.0, -9999.0), false);
        }
    ZNFaultPatchManager set(rows, georef::UnitObject());
    for (int f = 0; f < faults; ++f) set.findFaultLight(f + 1)->SetFaultName(QStringLiteral("Fault %1").arg(f + 1));
    return set.writePickedFault(path, false, nullptr, false);
}

// Drops the cached pages of every file of `paths`.
void dropCaches(const QStringList& paths)
{
    for (const QString& path : paths) {
        const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
        if (fd < 0) continue;
        ::fdatasync(fd);
        ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
        ::close(fd);
    }
}

// Milliseconds of `work`.
double timeMs(const std::function<void()>& work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    return clock.nsecsElapsed() / 1e6;
}

// CPU time of the calling thread or of the whole process, in milliseconds.
double cpuMs(clockid_t which)
{
    timespec t{};
    clock_gettime(which, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

// What one fill by the plugin took.
struct Fill {
    double ms = 0.0;     // from asking for the folder to the last name in the tree
    double guiMs = 0.0;  // CPU time of this (the GUI) thread meanwhile
    double cpuMs = 0.0;  // CPU time of the process (both threads) meanwhile
    qint64 names = 0;    // names in the tree at the end
};

// The plugin fills the folder into a new model (made and destroyed outside the time).
Fill fillWithPlugin(const QString& folder)
{
    ZNProjectBrowserModel model;
    ZNProjectBrowserPluginFault plugin(&model);
    ZNProjectBrowserItem* branch = model.addBranch(&plugin, QStringLiteral("Fault Sets"), {kFilter});
    QEventLoop loop;
    QTimer poll;
    poll.setInterval(1);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (plugin.readerCount() == 0) loop.quit();
    });
    Fill fill;
    const double guiBefore = cpuMs(CLOCK_THREAD_CPUTIME_ID), cpuBefore = cpuMs(CLOCK_PROCESS_CPUTIME_ID);
    QElapsedTimer clock;
    clock.start();
    model.setDirectory(folder);
    poll.start();
    loop.exec();
    fill.ms = clock.nsecsElapsed() / 1e6;
    fill.guiMs = cpuMs(CLOCK_THREAD_CPUTIME_ID) - guiBefore;
    fill.cpuMs = cpuMs(CLOCK_PROCESS_CPUTIME_ID) - cpuBefore;
    for (int row = 0; row < branch->rowCount(); ++row) fill.names += branch->child(row)->rowCount();
    return fill;
}

struct Figures {
    std::vector<double> plugin, pluginGui, pluginCpu, plainHeaders, plainHeadersCpu, plainBytes, plainNames;
};

void print(const char* what, const std::vector<double>& v)
{
    std::printf("  %-58s min %7.1f ms  median %7.1f ms\n", what, minimum(v), median(v));
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int files = argc > 1 ? std::max(1, atoi(argv[1])) : 1000;
    const int faults = argc > 2 ? std::max(1, atoi(argv[2])) : 100;

    QTemporaryDir dir;
    const QString first = dir.filePath(QStringLiteral("set0000.faultset"));
    if (!writeFaultSet(first, faults)) {
        std::printf("cannot write %s\n", qPrintable(first));
        return 1;
    }
    QStringList paths{first};
    for (int k = 1; k < files; ++k) {
        paths << dir.filePath(QStringLiteral("set%1.faultset").arg(k, 4, 10, QLatin1Char('0')));
        if (!QFile::copy(first, paths.last())) {
            std::printf("cannot copy to %s\n", qPrintable(paths.last()));
            return 1;
        }
    }
    ZNObjectFile::Header header;
    ZNObjectFile::readHeader(first, header);
    const qint64 fileBytes = QFileInfo(first).size();
    const qint64 headerBytes = ZNObjectFile::kGlobalHeaderSize + header.headerSize;
    std::printf("%d fault set files of %d faults, %lld bytes each (global header and XML header %lld bytes, "
                "data from byte %lld)\n",
                files, faults, fileBytes, headerBytes, header.dataOffset);

    for (const bool cold : {false, true}) {
        Figures f;
        qint64 pluginBytes = 0, names = 0;
        for (int round = 0; round < kRounds; ++round) {
            if (cold) dropCaches(paths);
            const qint64 before = bytesRead();
            const Fill fill = fillWithPlugin(dir.path());
            f.plugin.push_back(fill.ms);
            f.pluginGui.push_back(fill.guiMs);
            f.pluginCpu.push_back(fill.cpuMs);
            names = fill.names;
            pluginBytes = bytesRead() - before;

            if (cold) dropCaches(paths);
            const double headersCpu = cpuMs(CLOCK_PROCESS_CPUTIME_ID);
            f.plainHeaders.push_back(timeMs([&] {
                for (const QString& path : paths) {
                    QFile file(path);
                    file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
                    ZNDeviceSource source(file);
                    ZNObjectFile::TreeHeader tree;
                    ZNObjectFile::readHeader(source, tree);
                }
            }));
            f.plainHeadersCpu.push_back(cpuMs(CLOCK_PROCESS_CPUTIME_ID) - headersCpu);
            if (cold) dropCaches(paths);
            f.plainBytes.push_back(timeMs([&] {
                for (const QString& path : paths) {
                    QFile file(path);
                    file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
                    ZNDeviceSource source(file);
                    QByteArray text;
                    qint64 offset = 0;
                    ZNObjectFile::readHeaderText(source, text, offset);
                }
            }));
            if (cold) dropCaches(paths);
            f.plainNames.push_back(timeMs([&] {
                for (const QString& path : paths) ZNProjectBrowserPluginReadFaultThread::readFaultNames(path);
            }));
        }
        std::printf("%s:\n", cold ? "cold (pages dropped before each round)" : "warm (files in the page cache)");
        print("plugin: folder to last name in the tree", f.plugin);
        print("  of which CPU time of the GUI thread (items, names)", f.pluginGui);
        print("  of which CPU time of the process (both threads)", f.pluginCpu);
        print("plain loop: each header read (ZNObjectFile::readHeader)", f.plainHeaders);
        print("  of which CPU time", f.plainHeadersCpu);
        print("plain loop: each header's bytes read, not parsed", f.plainBytes);
        print("plain loop: each file's names read (the plugin's reader)", f.plainNames);
        std::printf("  ratio plugin / plain header loop: min %.2f  median %.2f  (goal <= 1.5)\n",
                    minimum(f.plugin) / minimum(f.plainHeaders), median(f.plugin) / median(f.plainHeaders));
        std::printf("  CPU time ratio, plugin / plain header loop: min %.2f  median %.2f\n",
                    minimum(f.pluginCpu) / minimum(f.plainHeadersCpu), median(f.pluginCpu) / median(f.plainHeadersCpu));
        std::printf("  names in the tree: %lld of %lld\n", names, qint64(files) * faults);
        if (pluginBytes >= 0)
            std::printf("  bytes read by the plugin's round: %lld of %lld in the files (%.1f%%; the headers are %.1f%%)\n",
                        pluginBytes, fileBytes * files, 100.0 * pluginBytes / double(fileBytes * files),
                        100.0 * headerBytes / double(fileBytes));
    }
    return 0;
}
