#pragma once
#include <QString>
#include <QtGlobal>

// Where the traces of a SEG-Y file lie and what their samples are, read from the file's
// own header bytes. segyio reads the 16-bit counts as signed values (a sample count of
// 40000 comes out negative) and knows none of revision 2's fields, so the reader takes
// these from here and uses segyio for the traces themselves.
namespace volumeio {

struct SegyLayout {
    int format = 0;                // sample format code
    bool littleEndian = false;     // the file's byte order
    int samples = 0;               // per trace
    int intervalMicro = 0;         // sample interval; 0 when no header holds one
    qint64 trace0 = 0;             // byte offset of the first trace header
    int extraTraceHeaders = 0;     // revision 2: 240-byte headers after each trace header
    int sampleBytes = 0;           // bytes of one trace's samples
    int traceCount = 0;

    // Bytes between the end of a trace header and the next trace header: the additional
    // headers, then the samples. What segyio is told a trace holds.
    int traceBodyBytes() const { return extraTraceHeaders * kTraceHeaderBytes + sampleBytes; }

    static constexpr int kTraceHeaderBytes = 240;
};

// Why a file cannot be read: the event kind it is reported with (ZNEventBus) and the
// reason; an empty reason when nothing is wrong.
struct SegyProblem {
    int kind = 0;
    QString reason;
    bool isSet() const { return !reason.isEmpty(); }
};

// Fills `layout` from the 3600-byte headers and the first trace header of the file at
// `path`. The sample format comes from its code in either byte order (the byte order is
// the one that gives a known code); the sample count from the binary header read as an
// unsigned value, else revision 2's 32-bit count, else the first trace header; the first
// trace lies after the extended textual headers the binary header counts (-1: up to the
// record holding "((SEG: EndText))", or revision 2's first-trace offset); revision 2
// files may give each trace additional 240-byte headers. Every size is checked against
// the file's size before it is multiplied. Refused: a file shorter than its headers,
// without traces, whose sample format is not one of 1, 2, 3, 5 and 8 (an unsupported
// known format named by what it is), without a sample count, or not holding a whole
// number of traces.
SegyProblem readSegyLayout(const QString& path, SegyLayout& layout);

// How a message names sample format `code`: "4-byte IBM float", ..., "4-byte unsigned
// integer"; empty for a code the standard does not define.
QString segyFormatDescription(int code);

} // namespace volumeio
