#include "volumeio/segyreader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include <QFile>
#include <QFileInfo>

#include <segyio/segy.h>

#include <zneventbus.h>

#include "znstridedprogress.h"
#include "volumeio/filesamples.h"
#include "volumeio/filewindow.h"
#include "volumeio/segylayout.h"
#include "volumeio/segyworld.h"

namespace volumeio {
namespace {
constexpr double kMicroToMilli = 1e-3;

using Problem = SegyProblem;
Problem fileProblem(const QString& reason) { return {ZNEventBus::FileError, reason}; }
Problem contentProblem(const QString& reason) { return {ZNEventBus::Error, reason}; }

// Closes the segyio handle on every way out.
struct SegyHandle {
    segy_file* fp = nullptr;
    ~SegyHandle() { if (fp) segy_close(fp); }
};

// Tells segyio the sample format and byte order of `layout`, so that it swaps what it
// reads into the machine's order.
Problem setFormat(segy_file* fp, const SegyLayout& layout)
{
    char bh[SEGY_BINARY_HEADER_SIZE];
    if (segy_binheader(fp, bh) != SEGY_OK)
        return fileProblem(QStringLiteral("cannot read the binary header"));
    if (segy_set_format(fp, layout.format | (layout.littleEndian ? SEGY_LSB : SEGY_MSB)) != SEGY_OK)
        return contentProblem(QStringLiteral("unsupported sample format %1").arg(layout.format));
    return {};
}

// The header values of every trace that the reader uses, in file order.
struct TraceHeaders {
    std::vector<int> inlines;
    std::vector<int> crosslines;
    std::vector<core::vec2> cdp;       // scaled CDP X, Y
    std::vector<core::vec2> source;    // scaled source X, Y
    double delayMilli = 0.0;           // of the first trace
};

double coordinateScale(int32_t scalar)
{
    if (scalar > 0) return scalar;
    if (scalar < 0) return -1.0 / scalar;
    return 1.0;
}

// A field of the trace header: its offset (0-based) and size in bytes.
struct HeaderField {
    int offset = 0;
    int bytes = 0;  // 2 or 4; 0 where no field starts
};

// The field that starts at 1-based byte `byte` of a trace header, as segyio knows them.
HeaderField headerField(int byte)
{
    if (byte < 1 || byte > SEGY_TRACE_HEADER_SIZE) return {};
    char probe[SEGY_TRACE_HEADER_SIZE] = {};
    probe[byte - 1] = 1;  // segyio reads big-endian: the value tells the field's size
    int32_t value = 0;
    if (segy_get_field(probe, byte, &value) != SEGY_OK) return {};
    return {byte - 1, value == (1 << 24) ? 4 : 2};
}

// The signed value of field `f` of `header` in the given byte order.
int32_t fieldValue(const uchar* header, const HeaderField& f, bool little)
{
    uint32_t value = 0;
    for (int k = 0; k < f.bytes; ++k) value = (value << 8) | header[f.offset + (little ? f.bytes - 1 - k : k)];
    if (f.bytes == 2) return static_cast<int16_t>(value);
    return static_cast<int32_t>(value);
}

// Bytes of the file given to the traces whose headers are read at once.
constexpr qint64 kHeaderWindowBytes = qint64(32) << 20;

// Reads the trace headers window by window from `file` (open); `progress` counts one
// item per trace.
Problem readTraceHeaders(QFile& file, const SegyLayout& layout, const SegyReadOptions& options,
                         ZNStridedProgress& progress, TraceHeaders& out)
{
    const HeaderField il = headerField(options.inlineByte), xl = headerField(options.crosslineByte);
    if (il.bytes == 0 || xl.bytes == 0)
        return contentProblem(QStringLiteral("bytes %1 and %2 are not both trace header fields")
                                  .arg(options.inlineByte).arg(options.crosslineByte));
    const HeaderField scalar = headerField(SEGY_TR_SOURCE_GROUP_SCALAR), cdpX = headerField(SEGY_TR_CDP_X),
                      cdpY = headerField(SEGY_TR_CDP_Y), srcX = headerField(SEGY_TR_SOURCE_X),
                      srcY = headerField(SEGY_TR_SOURCE_Y), delay = headerField(SEGY_TR_DELAY_REC_TIME);
    const qint64 traceBytes = SEGY_TRACE_HEADER_SIZE + qint64(layout.traceBodyBytes());
    const int perWindow = static_cast<int>(std::max<qint64>(1, kHeaderWindowBytes / traceBytes));
    const bool little = layout.littleEndian;
    for (int t0 = 0; t0 < layout.traceCount; t0 += perWindow) {
        const int t1 = static_cast<int>(std::min<qint64>(layout.traceCount, qint64(t0) + perWindow));
        const qint64 first = layout.trace0 + t0 * traceBytes;
        const FileWindow window(file, first, layout.trace0 + (t1 - 1) * traceBytes + SEGY_TRACE_HEADER_SIZE);
        if (!window.bytes()) return fileProblem(QStringLiteral("cannot read the header of trace %1").arg(t0 + 1));
        for (int t = t0; t < t1; ++t) {
            const uchar* th = window.bytes() + (t - t0) * traceBytes;
            if (t == 0) out.delayMilli = fieldValue(th, delay, little);
            const double scale = coordinateScale(fieldValue(th, scalar, little));
            out.inlines.push_back(fieldValue(th, il, little));
            out.crosslines.push_back(fieldValue(th, xl, little));
            out.cdp.emplace_back(fieldValue(th, cdpX, little) * scale, fieldValue(th, cdpY, little) * scale);
            out.source.emplace_back(fieldValue(th, srcX, little) * scale, fieldValue(th, srcY, little) * scale);
            if (progress.next()) return contentProblem(QStringLiteral("reading cancelled"));
        }
    }
    return {};
}

// Native samples of `format` (after segy_to_native) as floats.
void toFloat(int format, const char* in, int count, float* out)
{
    for (int k = 0; k < count; ++k) {
        switch (format) {
        case SEGY_SIGNED_INTEGER_4_BYTE: {
            int32_t v;
            std::memcpy(&v, in + 4 * k, 4);
            out[k] = static_cast<float>(v);
            break;
        }
        case SEGY_SIGNED_SHORT_2_BYTE: {
            int16_t v;
            std::memcpy(&v, in + 2 * k, 2);
            out[k] = v;
            break;
        }
        case SEGY_SIGNED_CHAR_1_BYTE: out[k] = static_cast<int8_t>(in[k]); break;
        default: std::memcpy(out + k, in + 4 * k, 4); break;   // IBM (converted) or IEEE
        }
    }
}

// Where the samples of the traces lie when they are 4-byte floats and the file's order of
// the traces is regular on the grid: trace (i, j) the (t00 + a i + b j)-th, as in files
// sorted by inline or by crossline, lines numbered up or down. False otherwise.
bool regularSampleLayout(const SegyLayout& layout, const SegyGrid& grid, FileSampleLayout& out)
{
    if (layout.format != SEGY_IBM_FLOAT_4_BYTE && layout.format != SEGY_IEEE_FLOAT_4_BYTE) return false;
    const int ni = grid.inlineCount(), nc = grid.crosslineCount();
    std::vector<int> traceAt(static_cast<std::size_t>(ni) * nc, -1);
    for (int t = 0; t < layout.traceCount; ++t)
        traceAt[grid.inlineIndexOfTrace[t] + static_cast<std::size_t>(ni) * grid.crosslineIndexOfTrace[t]] = t;
    const qint64 t00 = traceAt[0];
    const qint64 a = ni > 1 ? traceAt[1] - t00 : 0;
    const qint64 b = nc > 1 ? traceAt[static_cast<std::size_t>(ni)] - t00 : 0;
    for (int t = 0; t < layout.traceCount; ++t)
        if (t != t00 + a * grid.inlineIndexOfTrace[t] + b * grid.crosslineIndexOfTrace[t]) return false;
    const qint64 traceBytes = SEGY_TRACE_HEADER_SIZE + qint64(layout.traceBodyBytes());
    out.size[0] = ni;
    out.size[1] = nc;
    out.size[2] = layout.samples;
    out.origin = layout.trace0 + t00 * traceBytes + traceBytes - layout.sampleBytes;
    out.step[0] = a * traceBytes;
    out.step[1] = b * traceBytes;
    out.step[2] = layout.sampleBytes / layout.samples;
    out.swap = layout.littleEndian != (Q_BYTE_ORDER == Q_LITTLE_ENDIAN);
    out.coding = layout.format == SEGY_IBM_FLOAT_4_BYTE ? SampleCoding::Ibm : SampleCoding::Ieee;
    return true;
}

// Reads samples z0 .. z0 + depth - 1 of every trace into its column of `out` (slices of
// the grid's nx x ny samples, x fastest) through segyio, one trace at a time: for
// integer samples and traces in no regular order. `progress` (may be null) steps once a
// trace.
Problem readTraces(segy_file* fp, const SegyLayout& layout, const SegyGrid& grid,
                   ZNStridedProgress* progress, int z0, int depth, float* out)
{
    // Only the samples asked for are read. segyio counts a trace's additional headers,
    // which come first, as samples of its body: they are skipped as samples too (240
    // bytes hold a whole number of samples of every format).
    const int bytesPerSample = layout.sampleBytes / layout.samples;
    const int skipped = layout.extraTraceHeaders * SegyLayout::kTraceHeaderBytes / bytesPerSample;
    std::vector<char> raw(static_cast<std::size_t>(depth) * bytesPerSample);
    std::vector<float> trace(static_cast<std::size_t>(depth));
    const std::size_t slice = static_cast<std::size_t>(grid.inlineCount()) * grid.crosslineCount();
    for (int t = 0; t < layout.traceCount; ++t) {
        if (segy_readsubtr(fp, t, skipped + z0, skipped + z0 + depth, 1, raw.data(), nullptr, layout.trace0,
                           layout.traceBodyBytes()) != SEGY_OK)
            return fileProblem(QStringLiteral("cannot read the samples of trace %1").arg(t + 1));
        segy_to_native(layout.format, depth, raw.data());
        toFloat(layout.format, raw.data(), depth, trace.data());
        float* column = out + grid.inlineIndexOfTrace[t] +
                        static_cast<std::size_t>(grid.inlineCount()) * grid.crosslineIndexOfTrace[t];
        for (int k = 0; k < depth; ++k) column[slice * k] = trace[k];
        if (progress && progress->next())
            return contentProblem(QStringLiteral("reading cancelled"));
    }
    return {};
}

// The map positions to place the grid with: CDP when any is set, else source.
SegyCoordinateSource chooseCoordinates(const TraceHeaders& h)
{
    const auto anySet = [](const std::vector<core::vec2>& points) {
        return std::any_of(points.begin(), points.end(),
                           [](const core::vec2& p) { return p != core::vec2(); });
    };
    if (anySet(h.cdp)) return SegyCoordinateSource::Cdp;
    if (anySet(h.source)) return SegyCoordinateSource::Source;
    return SegyCoordinateSource::None;
}

SegyInfo describe(const SegyLayout& layout, const SegyGrid& grid, double delayMilli,
                  SegyCoordinateSource coordinates)
{
    SegyInfo i;
    i.inlineNumbers = grid.inlineNumbers;
    i.crosslineNumbers = grid.crosslineNumbers;
    i.sampleCount = layout.samples;
    i.sampleIntervalMicro = layout.intervalMicro;
    i.firstSampleTime = delayMilli;
    i.formatCode = layout.format;
    i.littleEndian = layout.littleEndian;
    i.sorting = grid.sorting;
    i.coordinates = coordinates;
    i.traceCount = layout.traceCount;
    return i;
}

// Geometry and world mapping of the file at `path`, from its headers, into `out`. The
// bar "Reading SEG-Y" is made into `progress` once the trace count is known, with
// `passes` steps per trace (the headers take one).
Problem readGeometry(const QString& path, const SegyReadOptions& options, int passes,
                     std::unique_ptr<ZNStridedProgress>& progress, SegyGeometry& out)
{
    const QFileInfo info(path);
    if (!info.exists()) return fileProblem(QStringLiteral("cannot open: no such file"));
    if (!info.isFile()) return fileProblem(QStringLiteral("cannot open: a folder, not a file"));
    SegyLayout& layout = out.layout;
    Problem p = readSegyLayout(path, layout);
    if (p.isSet()) return p;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return fileProblem(QStringLiteral("cannot open"));
    progress = std::make_unique<ZNStridedProgress>(QStringLiteral("Reading SEG-Y"),
                                                   qint64(passes) * layout.traceCount);
    TraceHeaders headers;
    p = readTraceHeaders(file, layout, options, *progress, headers);
    if (p.isSet()) return p;
    const QString gridProblem = inferSegyGrid(headers.inlines, headers.crosslines, out.grid);
    if (!gridProblem.isEmpty()) return contentProblem(gridProblem);
    const SegyCoordinateSource source = chooseCoordinates(headers);
    static const std::vector<core::vec2> kNoPositions;
    const std::vector<core::vec2>& points = source == SegyCoordinateSource::Cdp ? headers.cdp
                                          : source == SegyCoordinateSource::Source ? headers.source
                                                                                   : kNoPositions;
    const SegyVerticalAxis vertical{
        headers.delayMilli, layout.intervalMicro > 0 ? layout.intervalMicro * kMicroToMilli : 1.0};
    const SegyWorldFit fit = segyBlocToWorld(out.grid, points, vertical);
    out.space = georef::BlocSpace(out.grid.inlineCount(), out.grid.crosslineCount(), layout.samples, fit.blocToWorld);
    out.regular = regularSampleLayout(layout, out.grid, out.samples);
    out.info = describe(layout, out.grid, headers.delayMilli,
                        fit.fromCoordinates ? source : SegyCoordinateSource::None);
    return {};
}

// Samples z0 .. z0 + depth - 1 of every trace of the file `g` describes into `out`.
Problem readSlices(const QString& path, const SegyGeometry& g, int z0, int depth, float* out,
                   ZNStridedProgress* progress)
{
    if (z0 < 0 || depth < 1 || depth > g.space.nz() - z0)
        return contentProblem(QStringLiteral("the slices asked for lie outside the volume"));
    if (g.regular) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) return fileProblem(QStringLiteral("cannot open"));
        bool cancelled = false;
        const QString reason = readFileSamples(file, g.samples, z0, depth, out, progress, g.layout.traceCount,
                                               cancelled);
        if (!reason.isEmpty()) return cancelled ? contentProblem(reason) : fileProblem(reason);
        return {};
    }
    SegyHandle handle;
    handle.fp = segy_open(QFile::encodeName(path).constData(), "rb");
    if (!handle.fp) return fileProblem(QStringLiteral("cannot open"));
    const Problem p = setFormat(handle.fp, g.layout);
    if (p.isSet()) return p;
    return readTraces(handle.fp, g.layout, g.grid, progress, z0, depth, out);
}

// Geometry, samples and world mapping of the file at `path`, into `out`.
Problem readVolume(const QString& path, const SegyReadOptions& options, SegyReadResult& out)
{
    std::unique_ptr<ZNStridedProgress> progress;
    SegyGeometry g;
    Problem p = readGeometry(path, options, 2, progress, g);
    if (p.isSet()) return p;
    out.image = ZN3DImage<float>::unfilled(g.space);
    if (out.image.isNull())
        return contentProblem(QStringLiteral("not enough memory for the volume"));
    p = readSlices(path, g, 0, g.space.nz(), out.image.data(), progress.get());
    if (p.isSet()) return p;
    out.info = g.info;
    return {};
}
} // namespace

QString readSegyGeometry(const QString& path, SegyGeometry& geometry, const SegyReadOptions& options)
{
    std::unique_ptr<ZNStridedProgress> progress;
    SegyGeometry g;
    const Problem problem = readGeometry(path, options, 1, progress, g);
    if (problem.isSet()) return reportVolumeError(problem.kind, path, problem.reason);
    geometry = std::move(g);
    return QString();
}

QString readSegySlices(const QString& path, const SegyGeometry& geometry, int z0, int depth, float* out)
{
    const Problem problem = readSlices(path, geometry, z0, depth, out, nullptr);
    return problem.isSet() ? reportVolumeError(problem.kind, path, problem.reason) : QString();
}

SegyReadResult readSegyVolume(const QString& path, const SegyReadOptions& options)
{
    SegyReadResult result;
    Problem problem = readVolume(path, options, result);
    if (problem.isSet()) {
        result = SegyReadResult();
        result.error = reportVolumeError(problem.kind, path, problem.reason);
    }
    return result;
}

} // namespace volumeio
