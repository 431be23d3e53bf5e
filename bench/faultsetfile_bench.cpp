// Writing and reading a whole fault set file in the 2D form (second argument 1) and the
// 3D form (0), against one plain sequential write or read of the same number of bytes
// made in the same run. The reported time is the fault set's wall time; the counters give
// its throughput and the plain operation's time divided by the fault set's (1 is as fast
// as the plain I/O; the goal is at least 0.5):
//   vs_plain         wall time;
//   vs_plain_cpu     CPU time of the process (user and system), which a busy machine
//                    disturbs less than the wall time;
//   vs_plain_synced  (writes) wall time of a plain write followed by fdatasync: the fault
//                    set's writer syncs its temporary file to disk before renaming it over
//                    the target, so that a crash never leaves a half-written fault set;
//   vs_plain_reused  (reads) wall time of a plain read into a buffer already in memory,
//                    which costs the copy out of the page cache and nothing else: the
//                    bound no reader that allocates what it reads can reach. The plain read
//                    of vs_plain reads into freshly mapped pages instead.
//
// Reads run twice: from the page cache (the file was just written; the plain reads then
// cost the copy and, for vs_plain, bringing in fresh pages) and cold (fourth argument 1: the file's cached pages are
// dropped before each read of either kind, as when a project is opened), which is how an
// interpreter meets a fault set.
//
// Sizes (first argument): 10,000 patches x 1,000 entries (about 320 MB in the 2D form and
// 240 MB in the 3D form) and 1,000 x 1,000. The third argument is the number of patches
// per fault: 1 gives one descriptor per patch, the largest header (about 6 MB of XML for
// 10,000 patches); 100 gives a header mostly made of the patch elements. Files live in
// the temporary folder and are deleted after each benchmark.
#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>
#include <memory>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <znfaultpatchmanager.h>

namespace {

constexpr int kEntriesPerPatch = 1000;
constexpr int kStickLength = 10;  // entries per stick; a separator closes each stick

// Wall and process CPU seconds of a span of work.
struct Span {
    double wall = 0.0;
    double cpu = 0.0;
    Span& operator+=(const Span& o)
    {
        wall += o.wall;
        cpu += o.cpu;
        return *this;
    }
};

double cpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

// Measures `work`; a failed work is reported on `state`.
template <class Work>
Span measure(benchmark::State& state, Work work)
{
    const auto wallStart = std::chrono::steady_clock::now();
    const double cpuStart = cpuSeconds();
    if (!work()) state.SkipWithError("I/O failed");
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - wallStart).count(),
            cpuSeconds() - cpuStart};
}

// A picked fault set of `patches` patches of kEntriesPerPatch entries, grouped into
// faults of `perFault` consecutive patches, one descriptor per fault.
std::unique_ptr<ZNFaultPatchManager> makeFaultSet(int patches, int perFault)
{
    core::MultiArray<core::PointWithBool> rows(patches);
    for (int r = 0; r < patches; ++r) {
        rows.setArraySize(r, kEntriesPerPatch, true);
        for (int k = 0; k < kEntriesPerPatch; ++k) {
            const bool separator = k % kStickLength == kStickLength - 1;
            rows(r, k) = separator ? core::PointWithBool::separator()
                                   : core::PointWithBool(r * 25.0 + k, k * 4.0, r * 12.5, k % 3 == 0);
        }
    }
    auto set = std::make_unique<ZNFaultPatchManager>(0, rows);
    for (int id = 1; id <= patches; ++id) {
        const int root = 1 + (id - 1) / perFault * perFault;
        if (root == id) continue;
        set->setFather(id, root);
        set->removeFaultLight(id);
    }
    set->initElementListBis();
    set->fillFaultLightListPatchList();
    return set;
}

std::unique_ptr<ZNFaultPatchManager> makeFaultSet(const benchmark::State& state)
{
    return makeFaultSet(static_cast<int>(state.range(0)), static_cast<int>(state.range(2)));
}

// One plain write of `bytes` to `path`, synced to disk when `sync`.
bool plainWrite(const QString& path, const QByteArray& bytes, bool sync)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush() &&
           (!sync || fdatasync(file.handle()) == 0);
}

// Drops the cached pages of the file at `path` (synced first, so that they can go).
void dropCache(const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    if (fd < 0) return;
    fdatasync(fd);
    posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    ::close(fd);
}

// One plain read of the `bytes` bytes of the file at `path` into `into`.
bool plainReadInto(const QString& path, qint64 bytes, char* into)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(into, bytes) == bytes;
}

// One plain read into memory fresh from the system, as a reader has to put what it reads
// somewhere new: the pages are mapped for this read and unmapped after it, so that the
// cost of bringing them in is counted whatever the allocator kept from earlier work.
bool plainRead(const QString& path, qint64 bytes)
{
    void* fresh = mmap(nullptr, size_t(bytes), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (fresh == MAP_FAILED) return false;
    const bool read = plainReadInto(path, bytes, static_cast<char*>(fresh));
    munmap(fresh, size_t(bytes));
    return read;
}

void report(benchmark::State& state, qint64 bytes, const Span& faultSet, const Span& plain)
{
    const double megabytes = double(bytes) * double(state.iterations()) / 1e6;
    state.counters["MB"] = double(bytes) / 1e6;
    state.counters["MB/s"] = megabytes / faultSet.wall;
    state.counters["plain_MB/s"] = megabytes / plain.wall;
    state.counters["vs_plain"] = plain.wall / faultSet.wall;
    state.counters["vs_plain_cpu"] = plain.cpu / faultSet.cpu;
}

void BM_WriteFaultSet(benchmark::State& state)
{
    const bool twoD = state.range(1) != 0;
    const std::unique_ptr<ZNFaultPatchManager> set = makeFaultSet(state);
    QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/faultset_bench_XXXXXX"));
    const QString path = dir.filePath(QStringLiteral("set.faultset"));
    // Each write replaces the file its kind wrote in the previous iteration, as a save
    // replaces the previous fault set (dropping the old file's pages is part of the cost).
    const QString plainPath = dir.filePath(QStringLiteral("plain.bin"));
    const QString syncedPath = dir.filePath(QStringLiteral("synced.bin"));
    Span faultSet, plain, synced;
    qint64 bytes = 0;
    for (auto _ : state) {
        const Span span = measure(state, [&] { return set->writePickedFault(path, twoD, nullptr, false); });
        state.SetIterationTime(span.wall);
        faultSet += span;

        bytes = QFileInfo(path).size();
        const QByteArray same(static_cast<int>(bytes), '\x5a');
        plain += measure(state, [&] { return plainWrite(plainPath, same, false); });
        synced += measure(state, [&] { return plainWrite(syncedPath, same, true); });
    }
    report(state, bytes, faultSet, plain);
    state.counters["vs_plain_synced"] = synced.wall / faultSet.wall;
}

void BM_ReadFaultSet(benchmark::State& state)
{
    const bool twoD = state.range(1) != 0;
    const bool cold = state.range(3) != 0;
    QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/faultset_bench_XXXXXX"));
    const QString path = dir.filePath(QStringLiteral("set.faultset"));
    if (!makeFaultSet(state)->writePickedFault(path, twoD, nullptr, false))
        state.SkipWithError("write failed");
    const qint64 bytes = QFileInfo(path).size();
    QByteArray reused(static_cast<int>(bytes), '\0');  // touched once, before the runs
    Span faultSet, plain, intoReused;
    for (auto _ : state) {
        auto read = std::make_unique<ZNFaultPatchManager>();
        if (cold) dropCache(path);
        const Span span = measure(state, [&] {
            return read->readPickedFault(path, twoD, ZNFaultPatchManager::kNoProgressBar);
        });
        state.SetIterationTime(span.wall);
        faultSet += span;
        read.reset();
        if (cold) dropCache(path);
        plain += measure(state, [&] { return plainRead(path, bytes); });
        if (cold) dropCache(path);
        intoReused += measure(state, [&] { return plainReadInto(path, bytes, reused.data()); });
    }
    report(state, bytes, faultSet, plain);
    state.counters["vs_plain_reused"] = intoReused.wall / faultSet.wall;
}

void sizes(benchmark::internal::Benchmark* b, bool withCold)
{
    b->ArgNames({"patches", "twoD", "perFault", "cold"})->UseManualTime()->Unit(benchmark::kMillisecond);
    for (const int cold : {0, 1}) {
        if (cold && !withCold) continue;
        for (const int perFault : {1, 100})
            for (const int patches : {10000, 1000})
                for (const int twoD : {1, 0}) b->Args({patches, twoD, perFault, cold});
    }
    b->Iterations(3);
}

BENCHMARK(BM_WriteFaultSet)->Apply([](benchmark::internal::Benchmark* b) { sizes(b, false); });
BENCHMARK(BM_ReadFaultSet)->Apply([](benchmark::internal::Benchmark* b) { sizes(b, true); });

} // namespace

BENCHMARK_MAIN();
