#include "volumeio/filesamples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include <QtEndian>

#include "volumeio/filewindow.h"
#include "znstridedprogress.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define ZN_SSE2_SAMPLES 1
#else
#define ZN_SSE2_SAMPLES 0
#endif

namespace volumeio {

namespace {

constexpr int kSampleBytes = 4;
constexpr int kTileRows = 16;     // voxels along x per tile: one 64-byte line of the image
constexpr int kTileColumns = 4;   // samples along the file's fastest axis per tile
// Images at least this large are written past the caches: they are far larger than any
// cache, and a row written whole costs no read of the line it replaces.
constexpr std::size_t kStreamingBytes = std::size_t(16) << 20;

// A box of voxels: lo[a] <= index < hi[a] along each axis a.
struct Box {
    int lo[3];
    int hi[3];
    bool isEmpty() const { return lo[0] >= hi[0] || lo[1] >= hi[1] || lo[2] >= hi[2]; }
};

// One window of the file in memory and where its samples go.
struct Window {
    const uchar* bytes = nullptr;  // the window's first byte
    qint64 first = 0;              // file offset of bytes[0]
    const FileSampleLayout* layout = nullptr;
    float* out = nullptr;          // voxel (0, 0, z0) of the image
    std::size_t outStep[3] = {1, 0, 0};
    int z0 = 0;

    const uchar* at(int x, int y, int z) const
    {
        const FileSampleLayout& l = *layout;
        return bytes + (l.origin + x * l.step[0] + y * l.step[1] + z * l.step[2] - first);
    }
    float* target(int x, int y, int z) const
    {
        return out + x * outStep[0] + y * outStep[1] + static_cast<std::size_t>(z - z0) * outStep[2];
    }
};

inline quint32 wordAt(const uchar* p, bool swap)
{
    quint32 word;
    std::memcpy(&word, p, kSampleBytes);
    return swap ? qbswap(word) : word;
}

inline float decode(const uchar* p, bool swap, SampleCoding coding)
{
    const quint32 word = wordAt(p, swap);
    if (coding == SampleCoding::Ibm) return ibmToIeee(word);
    float value;
    std::memcpy(&value, &word, kSampleBytes);
    return value;
}

// Sample by sample, along the file's fastest axis innermost: the tails the tiles leave.
void copyScalar(const Window& w, const Box& b)
{
    const FileSampleLayout& l = *w.layout;
    for (int z = b.lo[2]; z < b.hi[2]; ++z)
        for (int y = b.lo[1]; y < b.hi[1]; ++y)
            for (int x = b.lo[0]; x < b.hi[0]; ++x) *w.target(x, y, z) = decode(w.at(x, y, z), l.swap, l.coding);
}

#if ZN_SSE2_SAMPLES
// Reverses the bytes of each 32-bit lane.
inline __m128i swapLanes(__m128i v)
{
    v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
    return _mm_shufflelo_epi16(_mm_shufflehi_epi16(v, 0xB1), 0xB1);
}

template <bool Swap>
inline __m128 loadFour(const uchar* p)
{
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    return _mm_castsi128_ps(Swap ? swapLanes(v) : v);
}

// Writes the 16 values of one image row of a tile.
template <bool Stream, bool Ibm>
inline void storeRow(float* dst, __m128 a, __m128 b, __m128 c, __m128 d)
{
    if (Ibm) {
        alignas(16) quint32 words[kTileRows];
        _mm_store_ps(reinterpret_cast<float*>(words), a);
        _mm_store_ps(reinterpret_cast<float*>(words + 4), b);
        _mm_store_ps(reinterpret_cast<float*>(words + 8), c);
        _mm_store_ps(reinterpret_cast<float*>(words + 12), d);
        for (int k = 0; k < kTileRows; ++k) dst[k] = ibmToIeee(words[k]);
    } else if (Stream) {
        _mm_stream_ps(dst, a);
        _mm_stream_ps(dst + 4, b);
        _mm_stream_ps(dst + 8, c);
        _mm_stream_ps(dst + 12, d);
    } else {
        _mm_storeu_ps(dst, a);
        _mm_storeu_ps(dst + 4, b);
        _mm_storeu_ps(dst + 8, c);
        _mm_storeu_ps(dst + 12, d);
    }
}

// 16 runs of 4 samples (one run per x, runs `rowStep` bytes apart) into 4 image rows of
// 16 voxels (`dstStep` floats apart).
template <bool Swap, bool Stream, bool Ibm>
inline void copyTile(const uchar* src, qint64 rowStep, float* dst, std::size_t dstStep)
{
    __m128 r[kTileRows];
    for (int k = 0; k < kTileRows; ++k) r[k] = loadFour<Swap>(src + k * rowStep);
    for (int k = 0; k < kTileRows; k += kTileColumns) _MM_TRANSPOSE4_PS(r[k], r[k + 1], r[k + 2], r[k + 3]);
    for (int c = 0; c < kTileColumns; ++c)
        storeRow<Stream, Ibm>(dst + c * dstStep, r[c], r[4 + c], r[8 + c], r[12 + c]);
}

// The box by tiles: x by 16, the file's fastest axis `f` (step +4) by 4, the third axis
// `o` outermost; what does not fill a tile goes sample by sample.
template <bool Swap, bool Stream, bool Ibm>
void copyTiles(const Window& w, const Box& b, int f)
{
    const int o = 3 - f;  // x is axis 0
    const int xEnd = b.lo[0] + (b.hi[0] - b.lo[0]) / kTileRows * kTileRows;
    const int fEnd = b.lo[f] + (b.hi[f] - b.lo[f]) / kTileColumns * kTileColumns;
    const qint64 rowStep = w.layout->step[0];
    const std::size_t dstStep = w.outStep[f];
    int v[3];
    for (v[o] = b.lo[o]; v[o] < b.hi[o]; ++v[o])
        for (v[0] = b.lo[0]; v[0] < xEnd; v[0] += kTileRows)
            for (v[f] = b.lo[f]; v[f] < fEnd; v[f] += kTileColumns)
                copyTile<Swap, Stream, Ibm>(w.at(v[0], v[1], v[2]), rowStep, w.target(v[0], v[1], v[2]), dstStep);
    Box xTail = b;
    xTail.lo[0] = xEnd;
    if (!xTail.isEmpty()) copyScalar(w, xTail);
    Box fTail = b;
    fTail.hi[0] = xEnd;
    fTail.lo[f] = fEnd;
    if (!fTail.isEmpty()) copyScalar(w, fTail);
}

// Rows of x stored contiguously (step +4): four samples at a time.
template <bool Swap>
void copyRows(const Window& w, const Box& b, SampleCoding coding)
{
    const int n = b.hi[0] - b.lo[0];
    for (int z = b.lo[2]; z < b.hi[2]; ++z)
        for (int y = b.lo[1]; y < b.hi[1]; ++y) {
            const uchar* src = w.at(b.lo[0], y, z);
            float* dst = w.target(b.lo[0], y, z);
            int x = 0;
            if (coding == SampleCoding::Ieee)
                for (; x + kTileColumns <= n; x += kTileColumns)
                    _mm_storeu_ps(dst + x, loadFour<Swap>(src + x * kSampleBytes));
            for (; x < n; ++x) dst[x] = decode(src + x * kSampleBytes, Swap, coding);
        }
}
#endif

// Copies box `b` of the window into the image by the fastest route the layout allows.
void copyBox(const Window& w, const Box& b, bool stream)
{
#if ZN_SSE2_SAMPLES
    const FileSampleLayout& l = *w.layout;
    int f = -1;  // the axis whose samples follow each other in the file
    for (int a = 0; a < 3; ++a)
        if (l.step[a] == kSampleBytes && l.size[a] > 1) f = a;
    const bool ibm = l.coding == SampleCoding::Ibm;
    if (f == 0) {
        if (l.swap) copyRows<true>(w, b, l.coding);
        else copyRows<false>(w, b, l.coding);
        return;
    }
    if (f > 0) {
        if (ibm) {
            if (l.swap) copyTiles<true, false, true>(w, b, f);
            else copyTiles<false, false, true>(w, b, f);
        } else if (stream) {
            if (l.swap) copyTiles<true, true, false>(w, b, f);
            else copyTiles<false, true, false>(w, b, f);
        } else {
            if (l.swap) copyTiles<true, false, false>(w, b, f);
            else copyTiles<false, false, false>(w, b, f);
        }
        return;
    }
#else
    (void)stream;
#endif
    copyScalar(w, b);
}

// The first and one-past-last file offsets of the samples of box `b`.
void extentOf(const FileSampleLayout& l, const Box& b, qint64& first, qint64& end)
{
    first = end = l.origin;
    for (int a = 0; a < 3; ++a) {
        const qint64 low = l.step[a] * b.lo[a];
        const qint64 high = l.step[a] * (b.hi[a] - 1);
        first += std::min(low, high);
        end += std::max(low, high);
    }
    end += kSampleBytes;
}

// The axis with the largest step among those longer than one voxel.
int slowestAxis(const FileSampleLayout& l)
{
    int slow = 2;
    qint64 largest = -1;
    for (int a = 0; a < 3; ++a) {
        const qint64 magnitude = l.step[a] < 0 ? -l.step[a] : l.step[a];
        if (l.size[a] > 1 && magnitude > largest) {
            largest = magnitude;
            slow = a;
        }
    }
    return slow;
}

} // namespace

bool FileSampleLayout::fitsIn(qint64 fileBytes) const
{
    if (size[0] <= 0 || size[1] <= 0 || size[2] <= 0 || origin < 0) return false;
    const Box all{{0, 0, 0}, {size[0], size[1], size[2]}};
    qint64 first = 0, end = 0;
    extentOf(*this, all, first, end);
    return first >= 0 && end <= fileBytes;
}

float ibmToIeee(quint32 bits)
{
    constexpr quint32 kFractionMask = 0x00ffffffu;
    constexpr int kExponentBias = 64;
    constexpr int kFractionBits = 24;
    const quint32 fraction = bits & kFractionMask;
    const int exponent = static_cast<int>((bits >> kFractionBits) & 0x7fu);
    const bool negative = (bits >> 31) != 0;
    // fraction * 16^(exponent - 64) / 2^24, exact in double and rounded once to float.
    const double magnitude = std::ldexp(static_cast<double>(fraction), 4 * (exponent - kExponentBias) - kFractionBits);
    const float value = static_cast<float>(magnitude);
    return negative ? -value : value;
}

namespace {

// How the slices z0 .. z0 + depth - 1 are cut into windows along the slowest axis.
struct WindowPlan {
    int slow = 2;       // the axis cut
    int perWindow = 1;  // voxels of that axis per window
    int count = 0;      // windows
};

WindowPlan planWindows(const FileSampleLayout& layout, int depth, qint64 windowBytes)
{
    WindowPlan plan;
    plan.slow = slowestAxis(layout);
    const qint64 slowStep = std::max<qint64>(kSampleBytes, std::abs(layout.step[plan.slow]));
    plan.perWindow = static_cast<int>(std::clamp<qint64>(windowBytes / slowStep, 1, std::numeric_limits<int>::max()));
    if (plan.slow == 0) plan.perWindow = std::max(kTileRows, plan.perWindow / kTileRows * kTileRows);
    const int span = plan.slow == 2 ? depth : layout.size[plan.slow];
    plan.count = span > 0 ? (span + plan.perWindow - 1) / plan.perWindow : 0;
    return plan;
}

} // namespace

QString readFileSamples(QFile& file, const FileSampleLayout& layout, int z0, ZN3DImage<float>& out,
                        ZNStridedProgress* progress, qint64 progressItems, bool& cancelled, qint64 windowBytes)
{
    if (out.nx() != layout.size[0] || out.ny() != layout.size[1]) {
        cancelled = false;
        return QStringLiteral("the slices asked for lie outside the volume");
    }
    return readFileSamples(file, layout, z0, out.nz(), out.data(), progress, progressItems, cancelled, windowBytes);
}

QString readFileSamples(QFile& file, const FileSampleLayout& layout, int z0, int depth, float* out,
                        ZNStridedProgress* progress, qint64 progressItems, bool& cancelled, qint64 windowBytes)
{
    cancelled = false;
    if (out == nullptr || z0 < 0 || depth <= 0 || depth > layout.size[2] - z0)
        return QStringLiteral("the slices asked for lie outside the volume");
    const std::size_t sliceSize = static_cast<std::size_t>(layout.size[0]) * static_cast<std::size_t>(layout.size[1]);
    const Box wanted{{0, 0, z0}, {layout.size[0], layout.size[1], z0 + depth}};
    const WindowPlan plan = planWindows(layout, depth, windowBytes);

    Window w;
    w.layout = &layout;
    w.out = out;
    w.outStep[1] = static_cast<std::size_t>(layout.size[0]);
    w.outStep[2] = sliceSize;
    w.z0 = z0;
    const bool stream = reinterpret_cast<std::uintptr_t>(out) % 16 == 0 && layout.size[0] % 4 == 0 &&
                        sliceSize * depth * sizeof(float) >= kStreamingBytes;
    const qint64 progressStart = progress ? progress->done() : 0;
    QString failure;
    for (int k = 0; k < plan.count && failure.isEmpty(); ++k) {
        Box part = wanted;
        part.lo[plan.slow] = wanted.lo[plan.slow] + k * plan.perWindow;
        part.hi[plan.slow] = std::min(wanted.hi[plan.slow], part.lo[plan.slow] + plan.perWindow);
        qint64 first = 0, end = 0;
        extentOf(layout, part, first, end);
        const FileWindow window(file, first, end);
        if (!window.bytes()) {
            failure = QStringLiteral("read failed at byte %1: %2").arg(first).arg(file.errorString());
            break;
        }
        w.bytes = window.bytes();
        w.first = first;
        copyBox(w, part, stream);
        if (progress && progress->reach(progressStart + progressItems * (k + 1) / plan.count)) {
            cancelled = true;
            failure = QStringLiteral("reading cancelled");
        }
    }
#if ZN_SSE2_SAMPLES
    if (stream) _mm_sfence();  // the streamed rows are visible to every thread from here
#endif
    return failure;
}

} // namespace volumeio
