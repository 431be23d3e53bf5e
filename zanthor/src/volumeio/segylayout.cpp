#include "volumeio/segylayout.h"

#include <climits>

#include <QFile>

#include <zneventbus.h>

namespace volumeio {
namespace {

constexpr qint64 kTextHeaderBytes = 3200;
constexpr qint64 kHeadersBytes = kTextHeaderBytes + 400;
constexpr int kTraceHeaderBytes = SegyLayout::kTraceHeaderBytes;
constexpr int kMaxVariableTextHeaders = 32767;  // records searched for the end stanza

// Byte positions (1-based, as the standard counts them) of the binary header's fields.
constexpr int kIntervalByte = 3217;
constexpr int kSamplesByte = 3221;
constexpr int kFormatByte = 3225;
constexpr int kExtendedSamplesByte = 3269;   // revision 2, 32 bits
constexpr int kRevisionByte = 3501;          // major revision in the high byte
constexpr int kTextHeadersByte = 3505;       // extended textual headers, signed 16 bits
constexpr int kExtraTraceHeadersByte = 3507; // revision 2, 32 bits
constexpr int kFirstTraceOffsetByte = 3521;  // revision 2, 64 bits
// And of the trace header's (1-based within the header).
constexpr int kTraceSamplesByte = 115;
constexpr int kTraceIntervalByte = 117;

struct KnownFormat {
    int code;
    int bytes;
    const char* description;
    bool supported;
};
const KnownFormat kFormats[] = {
    {1, 4, "4-byte IBM float", true},          {2, 4, "4-byte signed integer", true},
    {3, 2, "2-byte signed integer", true},     {4, 4, "4-byte fixed-point with gain", false},
    {5, 4, "4-byte IEEE float", true},         {6, 8, "8-byte IEEE float", false},
    {7, 3, "3-byte signed integer", false},    {8, 1, "1-byte signed integer", true},
    {9, 8, "8-byte signed integer", false},    {10, 4, "4-byte unsigned integer", false},
    {11, 2, "2-byte unsigned integer", false}, {12, 8, "8-byte unsigned integer", false},
    {15, 3, "3-byte unsigned integer", false}, {16, 1, "1-byte unsigned integer", false},
};

const KnownFormat* knownFormat(int code)
{
    for (const KnownFormat& f : kFormats)
        if (f.code == code) return &f;
    return nullptr;
}

SegyProblem fileProblem(const QString& reason) { return {ZNEventBus::FileError, reason}; }
SegyProblem contentProblem(const QString& reason) { return {ZNEventBus::Error, reason}; }

// An unsigned field of `size` bytes at `offset` of `bytes` in the given byte order.
quint64 unsignedAt(const QByteArray& bytes, int offset, int size, bool little)
{
    quint64 value = 0;
    for (int k = 0; k < size; ++k) {
        const quint64 byte = static_cast<uchar>(bytes[offset + (little ? size - 1 - k : k)]);
        value = (value << 8) | byte;
    }
    return value;
}

// The file's first 3600 bytes and what is read from them in the file's byte order.
class Headers {
public:
    explicit Headers(QFile& file) : m_file(file) {}
    bool read() { return m_file.seek(0) && (m_bytes = m_file.read(kHeadersBytes)).size() == kHeadersBytes; }
    void setLittleEndian(bool little) { m_little = little; }
    // The binary header's field at 1-based file byte `byte`.
    quint64 field(int byte, int size) const { return unsignedAt(m_bytes, byte - 1, size, m_little); }
    // The field of `size` bytes at 1-based byte `byte` of the trace header at `offset`.
    bool traceField(qint64 offset, int byte, int size, quint64& value)
    {
        const QByteArray bytes = m_file.seek(offset + byte - 1) ? m_file.read(size) : QByteArray();
        if (bytes.size() != size) return false;
        value = unsignedAt(bytes, 0, size, m_little);
        return true;
    }
    int majorRevision() const { return static_cast<int>(field(kRevisionByte, 2) >> 8); }

    QFile& m_file;

private:
    QByteArray m_bytes;
    bool m_little = false;
};

SegyProblem readFormat(Headers& h, SegyLayout& layout)
{
    const int code = static_cast<int>(h.field(kFormatByte, 2));
    const int swapped = ((code & 0xFF) << 8) | ((code >> 8) & 0xFF);
    layout.littleEndian = !knownFormat(code) && knownFormat(swapped);
    layout.format = layout.littleEndian ? swapped : code;
    h.setLittleEndian(layout.littleEndian);
    const KnownFormat* format = knownFormat(layout.format);
    if (!format)
        return contentProblem(QStringLiteral("not a SEG-Y file, or an unsupported one: sample "
                                             "format code %1 (supported: 1, 2, 3, 5, 8)")
                                  .arg(code));
    if (!format->supported)
        return contentProblem(QStringLiteral("%1 samples (format %2) are not supported "
                                             "(supported: 1, 2, 3, 5, 8)")
                                  .arg(QLatin1String(format->description))
                                  .arg(format->code));
    return {};
}

// True when the 3200-byte record at `offset` holds the end stanza, in ASCII or EBCDIC.
bool holdsEndStanza(QFile& file, qint64 offset)
{
    static const QByteArray ascii("((SEG: EndText))");
    static const QByteArray ebcdic("\x4D\x4D\xE2\xC5\xC7\x7A\x40\xC5\x95\x84\xE3\x85\xA7\xA3\x5D\x5D");
    const QByteArray record = file.seek(offset) ? file.read(kTextHeaderBytes) : QByteArray();
    return record.contains(ascii) || record.contains(ebcdic);
}

SegyProblem findFirstTrace(Headers& h, qint64 fileSize, SegyLayout& layout)
{
    const int count = static_cast<int16_t>(h.field(kTextHeadersByte, 2));
    if (count >= 0) {
        layout.trace0 = kHeadersBytes + kTextHeaderBytes * count;
        return {};
    }
    if (count != -1)
        return contentProblem(QStringLiteral("the binary header counts %1 extended textual headers").arg(count));
    const quint64 offset = h.majorRevision() >= 2 ? h.field(kFirstTraceOffsetByte, 8) : 0;
    if (offset >= quint64(kHeadersBytes) && offset <= quint64(fileSize)) {
        layout.trace0 = static_cast<qint64>(offset);
        return {};
    }
    // A variable number of records: the last one holds the end stanza.
    for (int k = 0; k < kMaxVariableTextHeaders; ++k) {
        const qint64 record = kHeadersBytes + kTextHeaderBytes * k;
        if (record + kTextHeaderBytes > fileSize) break;
        if (holdsEndStanza(h.m_file, record)) {
            layout.trace0 = record + kTextHeaderBytes;
            return {};
        }
    }
    return contentProblem(QStringLiteral("a variable number of extended textual headers (-1) "
                                         "without the record that ends them ((SEG: EndText))"));
}

SegyProblem readCounts(Headers& h, qint64 fileSize, SegyLayout& layout)
{
    if (layout.trace0 == fileSize)
        return contentProblem(QStringLiteral("no trace after the headers (the file ends at byte "
                                             "%1, where the first trace would begin)")
                                  .arg(fileSize));
    if (layout.trace0 > fileSize)
        return contentProblem(QStringLiteral("no trace after the headers (first trace at byte %1 "
                                             "of %2)").arg(layout.trace0).arg(fileSize));
    quint64 traceSamples = 0, traceInterval = 0;
    if (layout.trace0 + kTraceHeaderBytes > fileSize ||
        !h.traceField(layout.trace0, kTraceSamplesByte, 2, traceSamples) ||
        !h.traceField(layout.trace0, kTraceIntervalByte, 2, traceInterval))
        return fileProblem(QStringLiteral("truncated: the first trace header ends past the end of "
                                          "the file (%1 bytes)").arg(fileSize));
    const bool revision2 = h.majorRevision() >= 2;
    quint64 samples = h.field(kSamplesByte, 2);
    if (samples == 0 && revision2) samples = h.field(kExtendedSamplesByte, 4);
    if (samples == 0) samples = traceSamples;
    if (samples == 0 || samples > INT_MAX) return contentProblem(QStringLiteral("no sample count in the headers"));
    layout.samples = static_cast<int>(samples);
    const quint64 interval = h.field(kIntervalByte, 2);
    layout.intervalMicro = static_cast<int>(interval > 0 ? interval : traceInterval);
    const quint64 extra = revision2 ? h.field(kExtraTraceHeadersByte, 4) : 0;
    const int sampleSize = knownFormat(layout.format)->bytes;
    // Every product below stays within 64 bits: samples and extra are below 2^32.
    const qint64 sampleBytes = qint64(samples) * sampleSize;
    const qint64 traceBytes = kTraceHeaderBytes * (1 + qint64(extra)) + sampleBytes;
    const qint64 dataBytes = fileSize - layout.trace0;
    if (traceBytes > dataBytes)
        return fileProblem(QStringLiteral("truncated: the %1 bytes after the headers hold no whole "
                                          "%2-byte trace (%3 samples, %4)")
                               .arg(dataBytes).arg(traceBytes).arg(layout.samples)
                               .arg(segyFormatDescription(layout.format)));
    if (traceBytes - kTraceHeaderBytes > INT_MAX)
        return contentProblem(QStringLiteral("traces of %1 bytes are too large").arg(traceBytes));
    layout.sampleBytes = static_cast<int>(sampleBytes);
    layout.extraTraceHeaders = static_cast<int>(extra);
    if (dataBytes % traceBytes != 0)
        return fileProblem(
            QStringLiteral("truncated: the %1 bytes after the headers are not a whole "
                           "number of %2-byte traces (%3 samples, %4%5)")
                .arg(dataBytes)
                .arg(traceBytes)
                .arg(layout.samples)
                .arg(segyFormatDescription(layout.format))
                .arg(extra > 0 ? QStringLiteral(", %1 additional trace headers").arg(extra) : QString()));
    if (dataBytes / traceBytes > INT32_MAX) return contentProblem(QStringLiteral("too many traces"));
    layout.traceCount = static_cast<int>(dataBytes / traceBytes);
    return {};
}

} // namespace

QString segyFormatDescription(int code)
{
    const KnownFormat* f = knownFormat(code);
    return f ? QLatin1String(f->description) : QString();
}

SegyProblem readSegyLayout(const QString& path, SegyLayout& layout)
{
    layout = SegyLayout();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return fileProblem(QStringLiteral("cannot open"));
    const qint64 fileSize = file.size();
    if (fileSize < kHeadersBytes)
        return contentProblem(
            QStringLiteral("not a SEG-Y file: %1 bytes, fewer than its headers take").arg(fileSize));
    Headers headers(file);
    if (!headers.read()) return fileProblem(QStringLiteral("cannot read the headers"));
    SegyProblem p = readFormat(headers, layout);
    if (!p.isSet()) p = findFirstTrace(headers, fileSize, layout);
    if (!p.isSet()) p = readCounts(headers, fileSize, layout);
    return p;
}

} // namespace volumeio
