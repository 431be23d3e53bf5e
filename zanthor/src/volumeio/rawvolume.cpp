#include "volumeio/rawvolume.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <QFile>
#include <QSaveFile>
#include <QtEndian>

#include <zneventbus.h>

#include "volumeio/filesamples.h"
#include "volumeio/gridaxes.h"
#include "znstridedprogress.h"
#include "znwritefailure.h"
#include "znwriteback.h"

namespace volumeio {
namespace {
constexpr std::size_t kSampleBytes = 4;
constexpr std::size_t kChunkSamples = 1 << 18;   // 1 MiB of samples per read or write

int axisIndex(Axis a) { return static_cast<int>(a); }

bool isPermutation(const AxisOrder& axes)
{
    return axes[0] != axes[1] && axes[0] != axes[2] && axes[1] != axes[2];
}

bool hostIs(ByteOrder order)
{
    return (Q_BYTE_ORDER == Q_BIG_ENDIAN) == (order == ByteOrder::BigEndian);
}

// Walks the voxels of an image in the order of a file whose fastest axis comes first in
// `axes`: index() is the image index of the current file position.
class FileOrderCursor {
public:
    FileOrderCursor(int nx, int ny, int nz, const AxisOrder& axes)
    {
        const std::size_t sizes[3] = {std::size_t(nx), std::size_t(ny), std::size_t(nz)};
        const std::size_t strides[3] = {1, sizes[0], sizes[0] * sizes[1]};
        for (int k = 0; k < 3; ++k) {
            m_count[k] = sizes[axisIndex(axes[k])];
            m_stride[k] = strides[axisIndex(axes[k])];
        }
    }
    std::size_t index() const { return m_index; }
    void advance()
    {
        for (int k = 0; k < 3; ++k) {
            m_index += m_stride[k];
            if (++m_position[k] < m_count[k] || k == 2) return;
            m_index -= m_stride[k] * m_count[k];
            m_position[k] = 0;
        }
    }

private:
    std::size_t m_count[3];
    std::size_t m_stride[3];
    std::size_t m_position[3] = {0, 0, 0};
    std::size_t m_index = 0;
};

// A one-line reason when the layout cannot describe a volume; empty otherwise.
QString layoutProblem(const RawVolumeLayout& l)
{
    if (l.nInline <= 0 || l.nCrossline <= 0 || l.nSample <= 0)
        return QStringLiteral("raw volume sizes must be positive (got %1 x %2 x %3)")
            .arg(l.nInline).arg(l.nCrossline).arg(l.nSample);
    if (!isPermutation(l.axes)) return QStringLiteral("the axis order must name each axis once");
    for (int k = 0; k < 3; ++k)
        if (!(std::isfinite(l.spacing[k]) && l.spacing[k] > 0.0))
            return QStringLiteral("the spacing must be positive (got %1, %2, %3)")
                .arg(l.spacing.x).arg(l.spacing.y).arg(l.spacing.z);
    return {};
}

VolumeReadResult failed(int kind, const QString& path, const QString& reason)
{
    VolumeReadResult r;
    r.error = reportVolumeError(kind, path, reason);
    return r;
}

template <class T>
T decode(quint32 word, bool swap)
{
    if (swap) word = qbswap(word);
    T value;
    std::memcpy(&value, &word, kSampleBytes);
    return value;
}

template <class T>
quint32 encode(T value, bool swap)
{
    quint32 word;
    std::memcpy(&word, &value, kSampleBytes);
    return swap ? qbswap(word) : word;
}

// Bytes of the layout's samples, or 0 when that number exceeds what a file can hold.
unsigned long long layoutBytes(const RawVolumeLayout& l)
{
    const unsigned long long limit = std::numeric_limits<qint64>::max() / kSampleBytes;
    const unsigned long long traces = static_cast<unsigned long long>(l.nInline) * l.nCrossline;
    if (traces > limit / static_cast<unsigned long long>(l.nSample)) return 0;
    return traces * l.nSample * kSampleBytes;
}

// Where the samples of a raw file of `layout` lie, 4 bytes each from the file's start.
FileSampleLayout fileLayoutOf(const RawVolumeLayout& layout)
{
    FileSampleLayout file;
    file.size[0] = layout.nInline;
    file.size[1] = layout.nCrossline;
    file.size[2] = layout.nSample;
    qint64 step = kSampleBytes;
    for (Axis a : layout.axes) {
        file.step[axisIndex(a)] = step;
        step *= file.size[axisIndex(a)];
    }
    file.swap = !hostIs(layout.byteOrder);
    return file;
}
} // namespace

namespace {

// Whether a sample is a value a volume could hold.
bool isPlausible(float value)
{
    constexpr float kSmallest = 1e-30f;
    constexpr float kLargest = 1e30f;
    const float magnitude = std::fabs(value);
    return value == 0.0f || (magnitude >= kSmallest && magnitude <= kLargest);
}

} // namespace

ByteOrder detectByteOrder(const QString& path, bool* decided)
{
    constexpr int kBlocks = 64;
    constexpr qint64 kBlockBytes = 4096;
    if (decided) *decided = false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return ByteOrder::BigEndian;
    const qint64 size = file.size() / qint64(kSampleBytes) * qint64(kSampleBytes);
    long long implausible[2] = {0, 0};  // read big-endian, little-endian
    for (int k = 0; k < kBlocks; ++k) {
        const qint64 at = size > kBlockBytes ? (size - kBlockBytes) * k / (kBlocks - 1) / qint64(kSampleBytes) *
                                                   qint64(kSampleBytes)
                                             : 0;
        if (!file.seek(at)) break;
        const QByteArray bytes = file.read(std::min(kBlockBytes, size - at));
        for (qint64 i = 0; i + qint64(kSampleBytes) <= bytes.size(); i += qint64(kSampleBytes)) {
            const quint32 big = qFromBigEndian<quint32>(bytes.constData() + i);
            const quint32 little = qFromLittleEndian<quint32>(bytes.constData() + i);
            implausible[0] += !isPlausible(decode<float>(big, false));
            implausible[1] += !isPlausible(decode<float>(little, false));
        }
        if (size <= kBlockBytes) break;
    }
    if (implausible[0] == implausible[1]) return ByteOrder::BigEndian;
    if (decided) *decided = true;
    return implausible[1] < implausible[0] ? ByteOrder::LittleEndian : ByteOrder::BigEndian;
}

QString byteOrderName(ByteOrder order)
{
    return order == ByteOrder::LittleEndian ? QStringLiteral("little") : QStringLiteral("big");
}

bool parseAxisOrder(const QString& text, AxisOrder& out)
{
    const QString letters = text.trimmed().toLower();
    if (letters.size() != 3) return false;
    AxisOrder parsed;
    for (int k = 0; k < 3; ++k) {
        const int i = QStringLiteral("xyz").indexOf(letters[k]);
        if (i < 0) return false;
        parsed[k] = static_cast<Axis>(i);
    }
    if (!isPermutation(parsed)) return false;
    out = parsed;
    return true;
}

QString axisOrderName(const AxisOrder& order)
{
    QString name;
    for (Axis a : order) name += QStringLiteral("xyz")[axisIndex(a)];
    return name;
}

QString rawSampleLayout(const RawVolumeLayout& layout, qint64 fileBytes, FileSampleLayout& samples)
{
    const QString problem = layoutProblem(layout);
    if (!problem.isEmpty()) return problem;
    const unsigned long long expected = layoutBytes(layout);
    if (expected == 0)
        return QStringLiteral("sizes %1 x %2 x %3 are too large")
            .arg(layout.nInline).arg(layout.nCrossline).arg(layout.nSample);
    if (static_cast<unsigned long long>(fileBytes) != expected)
        return QStringLiteral("holds %1 bytes, but %2 x %3 x %4 float32 samples need %5")
            .arg(fileBytes).arg(layout.nInline).arg(layout.nCrossline).arg(layout.nSample).arg(expected);
    samples = fileLayoutOf(layout);
    return QString();
}

georef::BlocSpace rawBlocSpace(const RawVolumeLayout& layout)
{
    return georef::BlocSpace(layout.nInline, layout.nCrossline, layout.nSample, axisAlignedBlocToWorld(layout.spacing));
}

VolumeReadResult readRawFloat32Volume(const QString& path, const RawVolumeLayout& layout)
{
    const QString problem = layoutProblem(layout);
    if (!problem.isEmpty()) return failed(ZNEventBus::Error, path, problem);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failed(ZNEventBus::FileError, path,
                      QStringLiteral("cannot open: ") + file.errorString());
    FileSampleLayout samples;
    const QString mismatch = rawSampleLayout(layout, file.size(), samples);
    if (!mismatch.isEmpty()) return failed(ZNEventBus::Error, path, mismatch);
    VolumeReadResult result;
    result.image = ZN3DImage<float>::unfilled(rawBlocSpace(layout));
    if (result.image.isNull())
        return failed(ZNEventBus::Error, path, QStringLiteral("not enough memory for the volume"));
    ZNStridedProgress progress(QStringLiteral("Reading raw volume"), layout.nSample);
    bool cancelled = false;
    const QString reason = readFileSamples(file, samples, 0, result.image, &progress, layout.nSample, cancelled);
    if (!reason.isEmpty()) return failed(cancelled ? ZNEventBus::Error : ZNEventBus::FileError, path, reason);
    return result;
}

template <class T>
QString writeRawVolume(const QString& path, const ZN3DImage<T>& image, ByteOrder byteOrder,
                       const AxisOrder& axes)
{
    static_assert(sizeof(T) == kSampleBytes, "raw volumes hold 4-byte samples");
    if (!isPermutation(axes))
        return reportVolumeError(ZNEventBus::Error, path,
                                 QStringLiteral("the axis order must name each axis once"));
    if (image.isEmpty())
        return reportVolumeError(ZNEventBus::Error, path,
                                 QStringLiteral("the volume to write is empty"));
    errno = 0;  // a failure names the system call that failed after this point
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return reportVolumeError(ZNEventBus::FileError, path,
                                 QStringLiteral("cannot write: ") + file.errorString());
    ZNWriteback writeback(file);  // streams the chunks to disk as they are written
    QString failure;  // why a write failed, taken before the cancel rewords it
    const bool swap = !hostIs(byteOrder);
    const std::size_t count = image.voxelCount();
    std::vector<quint32> chunk(std::min(count, kChunkSamples));
    FileOrderCursor cursor(image.nx(), image.ny(), image.nz(), axes);
    for (std::size_t done = 0; done < count;) {
        const std::size_t n = std::min(chunk.size(), count - done);
        for (std::size_t i = 0; i < n; ++i, cursor.advance())
            chunk[i] = encode<T>(image.data()[cursor.index()], swap);
        const qint64 bytes = qint64(n * kSampleBytes);
        const qint64 offset = qint64(done * kSampleBytes);
        if (file.write(reinterpret_cast<const char*>(chunk.data()), bytes) != bytes ||
            !writeback.written(offset, bytes)) {
            failure = ZNWriteFailure::reason(file, errno);
            file.cancelWriting();
            break;
        }
        done += n;
    }
    const int systemError = errno;
    if (!file.commit()) {
        if (failure.isEmpty()) failure = ZNWriteFailure::reason(file, systemError ? systemError : errno);
        return reportVolumeError(ZNEventBus::FileError, path, QStringLiteral("cannot write: ") + failure);
    }
    return {};
}

template QString writeRawVolume<float>(const QString&, const ZN3DImage<float>&, ByteOrder,
                                       const AxisOrder&);
template QString writeRawVolume<std::int32_t>(const QString&, const ZN3DImage<std::int32_t>&,
                                              ByteOrder, const AxisOrder&);

} // namespace volumeio
