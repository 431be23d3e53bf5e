// Writing and reading a whole fault set file in the 2D form (second argument 1) and the
// 3D form (0), against one plain sequential write or read of the same number of bytes
// made in the same run. The reported time is the fault set's; the counters give its
// throughput and "vs_plain", the plain operation's time divided by the fault set's (1 is
// as fast as the plain I/O; the goal is at least 0.5).
//
// Sizes (first argument): 10,000 patches x 1,000 entries (about 320 MB in the 2D form and
// 240 MB in the 3D form) and 1,000 x 1,000. Files live in the temporary folder and are
// deleted after each benchmark.
#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <znfaultpatchmanager.h>

namespace {

constexpr int kEntriesPerPatch = 1000;
constexpr int kStickLength = 10;  // entries per stick; a separator closes each stick

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// A picked fault set of `patches` patches of kEntriesPerPatch entries, one fault each.
std::unique_ptr<ZNFaultPatchManager> makeFaultSet(int patches)
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
    return std::make_unique<ZNFaultPatchManager>(0, rows);
}

// One plain write of `bytes` to `path`; seconds taken.
double plainWrite(const QString& path, const QByteArray& bytes)
{
    const Clock::time_point start = Clock::now();
    QFile file(path);
    const bool ok = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    file.close();
    const double taken = secondsSince(start);
    return ok ? taken : -1.0;
}

// One plain read of the whole file at `path` into `into` (already sized); seconds taken.
double plainRead(const QString& path, QByteArray& into)
{
    const Clock::time_point start = Clock::now();
    QFile file(path);
    const bool ok = file.open(QIODevice::ReadOnly) && file.read(into.data(), into.size()) == into.size();
    const double taken = secondsSince(start);
    return ok ? taken : -1.0;
}

void report(benchmark::State& state, qint64 bytes, double faultSetSeconds, double plainSeconds)
{
    const double megabytes = double(bytes) * state.iterations() / 1e6;
    state.counters["MB"] = double(bytes) / 1e6;
    state.counters["MB/s"] = megabytes / faultSetSeconds;
    state.counters["plain_MB/s"] = megabytes / plainSeconds;
    state.counters["vs_plain"] = plainSeconds / faultSetSeconds;
}

void BM_WriteFaultSet(benchmark::State& state)
{
    const bool twoD = state.range(1) != 0;
    const std::unique_ptr<ZNFaultPatchManager> set = makeFaultSet(static_cast<int>(state.range(0)));
    QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/faultset_bench_XXXXXX"));
    const QString path = dir.filePath(QStringLiteral("set.faultset"));
    const QString plainPath = dir.filePath(QStringLiteral("plain.bin"));
    double faultSetSeconds = 0.0;
    double plainSeconds = 0.0;
    qint64 bytes = 0;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        if (!set->writePickedFault(path, twoD, nullptr, false)) state.SkipWithError("write failed");
        const double taken = secondsSince(start);
        state.SetIterationTime(taken);
        faultSetSeconds += taken;

        bytes = QFileInfo(path).size();
        const QByteArray same(static_cast<int>(bytes), '\x5a');
        plainSeconds += plainWrite(plainPath, same);
        QFile::remove(plainPath);
    }
    report(state, bytes, faultSetSeconds, plainSeconds);
}

void BM_ReadFaultSet(benchmark::State& state)
{
    const bool twoD = state.range(1) != 0;
    QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/faultset_bench_XXXXXX"));
    const QString path = dir.filePath(QStringLiteral("set.faultset"));
    if (!makeFaultSet(static_cast<int>(state.range(0)))->writePickedFault(path, twoD, nullptr, false))
        state.SkipWithError("write failed");
    const qint64 bytes = QFileInfo(path).size();
    QByteArray plain(static_cast<int>(bytes), '\0');
    double faultSetSeconds = 0.0;
    double plainSeconds = 0.0;
    for (auto _ : state) {
        auto read = std::make_unique<ZNFaultPatchManager>();
        const Clock::time_point start = Clock::now();
        if (!read->readPickedFault(path, twoD, ZNFaultPatchManager::kNoProgressBar))
            state.SkipWithError("read failed");
        const double taken = secondsSince(start);
        state.SetIterationTime(taken);
        faultSetSeconds += taken;
        read.reset();

        plainSeconds += plainRead(path, plain);
    }
    report(state, bytes, faultSetSeconds, plainSeconds);
}

void sizes(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"patches", "twoD"})->UseManualTime()->Unit(benchmark::kMillisecond);
    b->Args({10000, 1})->Args({10000, 0})->Args({1000, 1})->Args({1000, 0})->Iterations(3);
}

BENCHMARK(BM_WriteFaultSet)->Apply(sizes);
BENCHMARK(BM_ReadFaultSet)->Apply(sizes);

} // namespace

BENCHMARK_MAIN();
