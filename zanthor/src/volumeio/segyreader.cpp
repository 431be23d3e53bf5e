#include "volumeio/segyreader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <QFile>
#include <QFileInfo>

#include <segyio/segy.h>

#include <zneventbus.h>

#include "znstridedprogress.h"
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

// Reads field `byte` of trace header `th`; false when segyio knows no field there.
bool field(const char* th, int byte, int& out)
{
    int32_t value = 0;
    if (segy_get_field(th, byte, &value) != SEGY_OK) return false;
    out = value;
    return true;
}

Problem readTraceHeaders(segy_file* fp, const SegyLayout& layout, const SegyReadOptions& options,
                         ZNStridedProgress& progress, TraceHeaders& out)
{
    char th[SEGY_TRACE_HEADER_SIZE];
    for (int t = 0; t < layout.traceCount; ++t) {
        if (segy_traceheader(fp, t, th, layout.trace0, layout.traceBodyBytes()) != SEGY_OK)
            return fileProblem(QStringLiteral("cannot read the header of trace %1").arg(t + 1));
        int il = 0, xl = 0, scalar = 0, cdpX = 0, cdpY = 0, srcX = 0, srcY = 0, delay = 0;
        if (!field(th, options.inlineByte, il) || !field(th, options.crosslineByte, xl))
            return contentProblem(QStringLiteral("bytes %1 and %2 are not both trace header fields")
                                      .arg(options.inlineByte).arg(options.crosslineByte));
        field(th, SEGY_TR_SOURCE_GROUP_SCALAR, scalar);
        field(th, SEGY_TR_CDP_X, cdpX);
        field(th, SEGY_TR_CDP_Y, cdpY);
        field(th, SEGY_TR_SOURCE_X, srcX);
        field(th, SEGY_TR_SOURCE_Y, srcY);
        if (t == 0 && field(th, SEGY_TR_DELAY_REC_TIME, delay)) out.delayMilli = delay;
        const double scale = coordinateScale(scalar);
        out.inlines.push_back(il);
        out.crosslines.push_back(xl);
        out.cdp.emplace_back(cdpX * scale, cdpY * scale);
        out.source.emplace_back(srcX * scale, srcY * scale);
        if (progress.next())
            return contentProblem(QStringLiteral("reading cancelled"));
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

// Reads every trace into its column of `image`.
Problem readTraces(segy_file* fp, const SegyLayout& layout, const SegyGrid& grid,
                   ZNStridedProgress& progress, ZN3DImage<float>& image)
{
    // segyio reads a trace's additional headers with its samples: they come first.
    std::vector<char> raw(layout.traceBodyBytes());
    char* samples = raw.data() + (layout.traceBodyBytes() - layout.sampleBytes);
    std::vector<float> trace(layout.samples);
    const std::size_t slice = image.sliceSize();
    for (int t = 0; t < layout.traceCount; ++t) {
        if (segy_readtrace(fp, t, raw.data(), layout.trace0, layout.traceBodyBytes()) != SEGY_OK)
            return fileProblem(QStringLiteral("cannot read the samples of trace %1").arg(t + 1));
        segy_to_native(layout.format, layout.samples, samples);
        toFloat(layout.format, samples, layout.samples, trace.data());
        float* column = image.data() +
                        image.index(grid.inlineIndexOfTrace[t], grid.crosslineIndexOfTrace[t], 0);
        for (int k = 0; k < layout.samples; ++k) column[slice * k] = trace[k];
        if (progress.next())
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

// Geometry, samples and world mapping of the file at `path`, into `out`.
Problem readVolume(const QString& path, const SegyReadOptions& options, SegyReadResult& out)
{
    const QFileInfo info(path);
    if (!info.exists()) return fileProblem(QStringLiteral("cannot open: no such file"));
    if (!info.isFile()) return fileProblem(QStringLiteral("cannot open: a folder, not a file"));
    SegyLayout layout;
    Problem p = readSegyLayout(path, layout);
    if (p.isSet()) return p;
    SegyHandle file;
    file.fp = segy_open(QFile::encodeName(path).constData(), "rb");
    if (!file.fp) return fileProblem(QStringLiteral("cannot open"));
    p = setFormat(file.fp, layout);
    if (p.isSet()) return p;
    ZNStridedProgress progress(QStringLiteral("Reading SEG-Y"), 2 * std::size_t(layout.traceCount));
    TraceHeaders headers;
    p = readTraceHeaders(file.fp, layout, options, progress, headers);
    if (p.isSet()) return p;
    SegyGrid grid;
    const QString gridProblem = inferSegyGrid(headers.inlines, headers.crosslines, grid);
    if (!gridProblem.isEmpty()) return contentProblem(gridProblem);
    const SegyCoordinateSource source = chooseCoordinates(headers);
    static const std::vector<core::vec2> kNoPositions;
    const std::vector<core::vec2>& points = source == SegyCoordinateSource::Cdp ? headers.cdp
                                          : source == SegyCoordinateSource::Source ? headers.source
                                                                                   : kNoPositions;
    const SegyVerticalAxis vertical{
        headers.delayMilli, layout.intervalMicro > 0 ? layout.intervalMicro * kMicroToMilli : 1.0};
    const SegyWorldFit fit = segyBlocToWorld(grid, points, vertical);
    out.image = ZN3DImage<float>(georef::BlocSpace(grid.inlineCount(), grid.crosslineCount(),
                                                   layout.samples, fit.blocToWorld));
    if (out.image.isNull())
        return contentProblem(QStringLiteral("not enough memory for the volume"));
    p = readTraces(file.fp, layout, grid, progress, out.image);
    if (p.isSet()) return p;
    out.info = describe(layout, grid, headers.delayMilli,
                        fit.fromCoordinates ? source : SegyCoordinateSource::None);
    return {};
}
} // namespace

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
