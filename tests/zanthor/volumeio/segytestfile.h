#pragma once
// Builds SEG-Y files for the reader's tests, byte by byte from the standard's layout
// (3200-byte text header, 400-byte binary header, then 240-byte trace headers each
// followed by its samples), independently of the reader and of segyio.
#include <cstdint>
#include <vector>

#include <QByteArray>
#include <QString>

struct TestTrace {
    int inlineNumber = 0;        // bytes 189-192
    int crosslineNumber = 0;     // bytes 193-196
    int cdpX = 0, cdpY = 0;      // bytes 181-188
    int sourceX = 0, sourceY = 0;  // bytes 73-80
    int16_t scalar = 0;          // bytes 71-72
    std::vector<double> samples;
};

struct TestSegy {
    int format = 5;                  // sample format code, bytes 3225-3226
    bool littleEndian = false;
    int intervalMicro = 4000;        // binary header, bytes 3217-3218
    int binarySamples = -1;          // bytes 3221-3222; -1: the first trace's count
    int extendedHeaders = 0;         // extended text headers written after the binary one
    int declaredExtendedHeaders = -1;  // bytes 3505-3506; -1: extendedHeaders
    bool endStanza = false;          // "((SEG: EndText))" opens the last extended header
    int revision = 0x0100;           // bytes 3501-3502, major revision in the high byte
    int extendedSamples = 0;         // revision 2, bytes 3269-3272
    int extraTraceHeaders = 0;       // revision 2, bytes 3507-3510
    int writtenExtraTraceHeaders = -1;  // zero headers written after each trace header;
                                        // -1: extraTraceHeaders
    int16_t delayMilli = 0;          // every trace, bytes 109-110
    std::vector<TestTrace> traces;
};

// The bytes of the file.
QByteArray buildSegy(const TestSegy& segy);
// A regular grid: inlines il0, il0 + ilStep, ... (nIl of them), crosslines likewise,
// inline-sorted, sample k of (il, xl) = il * 100 + xl + k, positions left 0.
TestSegy gridSegy(int il0, int ilStep, int nIl, int xl0, int xlStep, int nXl, int samples);
// The IBM single-precision encoding of `v` (round to nearest).
uint32_t ibmFromDouble(double v);
