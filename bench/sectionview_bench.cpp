// Stepping a section viewer through a 512^3 float volume, in one run: the time to show
// the next inline, crossline or time slice (the samples read and turned into the
// section's picture by the viewer's engine), for the volume in memory and for a block
// file on disk, warm (in the page cache) and cold (dropped from it first), against reading
// that section's bytes once by the plainest code (a strided copy from memory; one pread
// per contiguous run of the file) and against 16 ms (one frame at 60 Hz). Min and median
// of the steps.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <QGuiApplication>
#include <QTemporaryDir>

#include <znbloc.h>

#include "benchtiming.h"
#include <znobjectfile.h>
#include <znseismicblocviewerengine.h>

using benchtiming::dropCache;
using benchtiming::msOf;
using benchtiming::Stats;
using benchtiming::statsOf;

namespace {

constexpr int kSize = 512;
constexpr int kSteps = 9;  // sections stepped through per case
using Kind = ZNBlocViewerEngine::SectionKind;

// The plainest read of a section's samples from the file: one pread per run of
// consecutive samples (a row of a crossline, the whole slice, one sample of an inline).
double plainFileRead(const QString& path, qint64 dataOffset, Kind kind, int index, std::vector<float>& out)
{
    const int fd = ::open(path.toLocal8Bit().constData(), O_RDONLY);
    const qint64 n = kSize;
    out.assign(static_cast<std::size_t>(n * n), 0.0f);
    const double ms = msOf([&] {
        if (kind == Kind::Slice) {
            ::pread(fd, out.data(), static_cast<size_t>(n * n * 4), dataOffset + qint64(index) * n * n * 4);
            return;
        }
        for (qint64 z = 0; z < n; ++z) {
            if (kind == Kind::Crossline) {
                ::pread(fd, out.data() + z * n, static_cast<size_t>(n * 4), dataOffset + ((z * n + index) * n) * 4);
                continue;
            }
            for (qint64 y = 0; y < n; ++y)
                ::pread(fd, out.data() + z * n + y, 4, dataOffset + ((z * n + y) * n + index) * 4);
        }
    });
    ::close(fd);
    return ms;
}

// The plainest copy of a section's samples out of memory.
double plainMemoryRead(const ZN3DImage<float>& image, Kind kind, int index, std::vector<float>& out)
{
    const int n = kSize;
    out.assign(static_cast<std::size_t>(n) * n, 0.0f);
    return msOf([&] {
        for (int r = 0; r < n; ++r)
            for (int c = 0; c < n; ++c)
                out[static_cast<std::size_t>(r) * n + c] = kind == Kind::Inline      ? image(index, c, r)
                                                           : kind == Kind::Crossline ? image(c, index, r)
                                                                                     : image(c, r, index);
    });
}

const char* nameOf(Kind kind)
{
    return kind == Kind::Inline ? "inline" : kind == Kind::Crossline ? "crossline" : "time slice";
}

void report(const char* what, Kind kind, const std::vector<double>& viewer, const std::vector<double>& plain)
{
    const Stats v = statsOf(viewer);
    const Stats p = statsOf(plain);
    std::printf("%-8s %-10s  viewer min %7.2f ms median %7.2f ms | plain read min %7.2f ms median %7.2f ms | "
                "ratio min %5.2f median %5.2f | median vs 16 ms %4.2f\n",
                what, nameOf(kind), v.min, v.median, p.min, p.median, v.min / p.min, v.median / p.median,
                v.median / 16.0);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    auto image = std::make_shared<ZN3DImage<float>>(georef::BlocSpace(kSize, kSize, kSize));
    for (std::size_t i = 0; i < image->voxelCount(); ++i) image->data()[i] = static_cast<float>((i * 2654435761u) % 1000) / 500.0f - 1.0f;
    QTemporaryDir dir;
    const QString path = dir.filePath("volume.bloc");
    {
        ZNBloc out;
        if (!out.create(path, image->blocSpace(), 0, kSize, ZNBloc::Float32) || !out.writeSlices(0, *image, 0, kSize) ||
            !out.close()) {
            std::printf("cannot write the block file\n");
            return 1;
        }
    }
    ZNObjectFile::Header header;
    ZNObjectFile::readHeader(path, header);
    std::printf("volume %d^3 float32 (%.0f MiB); %d steps per case\n", kSize, kSize * double(kSize) * kSize * 4 / 1048576.0, kSteps);

    for (Kind kind : {Kind::Inline, Kind::Crossline, Kind::Slice}) {
        // In memory.
        {
            ZNSeismicBlocViewerEngine engine;
            auto bloc = std::make_shared<ZNBloc>();
            bloc->openImage(image);
            engine.setBloc(bloc);
            engine.setSection(kind, 100);
            engine.sectionImage();
            std::vector<double> viewer, plain;
            std::vector<float> buffer;
            for (int s = 0; s < kSteps; ++s) {
                viewer.push_back(msOf([&] {
                    engine.stepSection(1);
                    engine.sectionImage();
                }));
                plain.push_back(plainMemoryRead(*image, kind, engine.sectionIndex(), buffer));
            }
            report("memory", kind, viewer, plain);
        }
        // Block file, warm then cold.
        for (const bool cold : {false, true}) {
            ZNSeismicBlocViewerEngine engine;
            auto bloc = std::make_shared<ZNBloc>();
            bloc->open(path);
            engine.setBloc(bloc);
            engine.setSection(kind, 200);
            engine.sectionImage();
            std::vector<double> viewer, plain;
            std::vector<float> buffer;
            for (int s = 0; s < kSteps; ++s) {
                const int next = engine.sectionIndex() + 1;
                if (cold) {
                    // Pages the block keeps mapped stay resident: it lets go of them
                    // before the cache is dropped, for both reads.
                    bloc->close();
                    dropCache(path);
                    plain.push_back(plainFileRead(path, header.dataOffset, kind, next, buffer));
                    dropCache(path);
                    bloc->open(path);
                    engine.setBloc(bloc);
                } else {
                    plain.push_back(plainFileRead(path, header.dataOffset, kind, next, buffer));
                }
                viewer.push_back(msOf([&] {
                    engine.stepSection(1);
                    engine.sectionImage();
                }));
            }
            report(cold ? "cold" : "warm", kind, viewer, plain);
        }
    }
    return 0;
}
