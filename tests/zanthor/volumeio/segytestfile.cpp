#include "segytestfile.h"

#include <cmath>
#include <cstring>

namespace {
void put(QByteArray& b, int offset, uint64_t value, int bytes, bool little)
{
    for (int k = 0; k < bytes; ++k) {
        const int shift = little ? 8 * k : 8 * (bytes - 1 - k);
        b[offset + k] = static_cast<char>((value >> shift) & 0xFF);
    }
}

int sampleBytes(int format) { return format == 3 ? 2 : format == 8 ? 1 : 4; }

uint32_t encodeSample(int format, double v)
{
    switch (format) {
    case 1: return ibmFromDouble(v);
    case 2: return static_cast<uint32_t>(static_cast<int32_t>(v));
    case 3: return static_cast<uint16_t>(static_cast<int16_t>(v));
    case 8: return static_cast<uint8_t>(static_cast<int8_t>(v));
    default: {
        const float f = static_cast<float>(v);
        uint32_t bits;
        std::memcpy(&bits, &f, 4);
        return bits;
    }
    }
}
} // namespace

uint32_t ibmFromDouble(double v)
{
    if (v == 0.0) return 0;
    const uint32_t sign = v < 0 ? 0x80000000u : 0u;
    double m = std::fabs(v);
    int exponent = 0;
    while (m >= 1.0) { m /= 16.0; ++exponent; }
    while (m < 1.0 / 16.0) { m *= 16.0; --exponent; }
    uint32_t fraction = static_cast<uint32_t>(std::lround(m * 16777216.0));
    if (fraction == 0x1000000u) { fraction >>= 4; ++exponent; }
    return sign | (static_cast<uint32_t>(exponent + 64) << 24) | fraction;
}

QByteArray buildSegy(const TestSegy& s)
{
    const bool le = s.littleEndian;
    const int ns = s.traces.empty() ? 0 : static_cast<int>(s.traces[0].samples.size());
    QByteArray b(3600 + 3200 * std::max(0, s.extendedHeaders), ' ');
    for (int k = 3200; k < 3600; ++k) b[k] = 0;
    put(b, 3216, s.intervalMicro, 2, le);
    put(b, 3220, s.binarySamples >= 0 ? s.binarySamples : ns, 2, le);
    put(b, 3224, s.format, 2, le);
    const int declared = s.declaredExtendedHeaders >= 0 ? s.declaredExtendedHeaders : s.extendedHeaders;
    put(b, 3504, declared, 2, le);
    put(b, 3500, s.revision, 2, le);
    put(b, 3268, s.extendedSamples, 4, le);
    put(b, 3506, s.extraTraceHeaders, 4, le);
    if (s.endStanza && s.extendedHeaders > 0) b.replace(3600 + 3200 * (s.extendedHeaders - 1), 16, "((SEG: EndText))");
    const int bytes = sampleBytes(s.format);
    for (const TestTrace& t : s.traces) {
        QByteArray h(240, 0);
        put(h, 70, static_cast<uint16_t>(t.scalar), 2, le);
        put(h, 72, static_cast<uint32_t>(t.sourceX), 4, le);
        put(h, 76, static_cast<uint32_t>(t.sourceY), 4, le);
        put(h, 108, static_cast<uint16_t>(s.delayMilli), 2, le);
        put(h, 114, t.samples.size(), 2, le);
        put(h, 116, s.intervalMicro, 2, le);
        put(h, 180, static_cast<uint32_t>(t.cdpX), 4, le);
        put(h, 184, static_cast<uint32_t>(t.cdpY), 4, le);
        put(h, 188, static_cast<uint32_t>(t.inlineNumber), 4, le);
        put(h, 192, static_cast<uint32_t>(t.crosslineNumber), 4, le);
        QByteArray data(bytes * static_cast<int>(t.samples.size()), 0);
        for (std::size_t k = 0; k < t.samples.size(); ++k)
            put(data, bytes * static_cast<int>(k), encodeSample(s.format, t.samples[k]), bytes, le);
        const int extra = s.writtenExtraTraceHeaders >= 0 ? s.writtenExtraTraceHeaders : s.extraTraceHeaders;
        b += h + QByteArray(240 * extra, 0) + data;
    }
    return b;
}

TestSegy gridSegy(int il0, int ilStep, int nIl, int xl0, int xlStep, int nXl, int samples)
{
    TestSegy s;
    for (int i = 0; i < nIl; ++i)
        for (int j = 0; j < nXl; ++j) {
            TestTrace t;
            t.inlineNumber = il0 + i * ilStep;
            t.crosslineNumber = xl0 + j * xlStep;
            for (int k = 0; k < samples; ++k)
                t.samples.push_back(t.inlineNumber * 100 + t.crosslineNumber + k);
            s.traces.push_back(t);
        }
    return s;
}
