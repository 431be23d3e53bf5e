#include "3dobject/zn3dobjectrecords.h"

#include <cstring>
#include <vector>

#include <QIODevice>
#include <QtEndian>

#include <znbytesource.h>

namespace {
constexpr int kChunkRecords = 16384;  // records encoded or decoded per buffer
constexpr int kCoordinates = 3;

void putFloat(uchar* out, double value)
{
    const float f = static_cast<float>(value);
    quint32 bits;
    memcpy(&bits, &f, sizeof bits);
    qToLittleEndian(bits, out);
}

void putDouble(uchar* out, double value)
{
    quint64 bits;
    memcpy(&bits, &value, sizeof bits);
    qToLittleEndian(bits, out);
}

double getFloat(const uchar* in)
{
    const quint32 bits = qFromLittleEndian<quint32>(in);
    float f;
    memcpy(&f, &bits, sizeof f);
    return f;
}

double getDouble(const uchar* in)
{
    const quint64 bits = qFromLittleEndian<quint64>(in);
    double d;
    memcpy(&d, &bits, sizeof d);
    return d;
}

// Grows `array` to `size` elements, doubling its capacity so that appending chunk by
// chunk stays linear; never beyond `limit` slots.
template <class T>
bool growTo(core::Array<T>& array, int size, int limit)
{
    if (size > array.capacity()) {
        const long long doubled = 2LL * array.capacity();
        const int target = static_cast<int>(qBound<long long>(size, doubled, limit));
        if (!array.reserve(target)) return false;
    }
    return array.resize(size);
}

// Reads `count` records of `recordBytes` each, decoding chunk by chunk into the slots
// appended to `array`.
template <class T, class Decode>
bool readRecords(ZNByteSource& source, int count, int recordBytes, core::Array<T>& array,
                 Decode decode)
{
    if (count < 0 || !source.mayHold(qint64(count) * recordBytes)) return false;
    const int first = array.size();
    const int limit = first + count;
    if (limit < first) return false;  // would pass the largest array
    std::vector<uchar> buffer(static_cast<size_t>(qMin(count, kChunkRecords)) * recordBytes);
    for (int done = 0; done < count;) {
        const int n = qMin(count - done, kChunkRecords);
        if (!source.read(buffer.data(), qint64(n) * recordBytes)) return false;
        if (!growTo(array, first + done + n, limit)) return false;
        for (int i = 0; i < n; ++i) decode(buffer.data() + size_t(i) * recordBytes, array[first + done + i]);
        done += n;
    }
    return true;
}

template <class T, class Encode>
bool writeRecords(QIODevice& out, const T* records, int count, int recordBytes, Encode encode)
{
    std::vector<uchar> buffer(static_cast<size_t>(qMin(qMax(count, 0), kChunkRecords)) * recordBytes);
    for (int done = 0; done < count;) {
        const int n = qMin(count - done, kChunkRecords);
        for (int i = 0; i < n; ++i) encode(records[done + i], buffer.data() + size_t(i) * recordBytes);
        const qint64 bytes = qint64(n) * recordBytes;
        if (out.write(reinterpret_cast<const char*>(buffer.data()), bytes) != bytes) return false;
        done += n;
    }
    return true;
}
} // namespace

namespace ZN3DObjectRecords {

bool isValidRecordSize(int recordSize) { return recordSize == 4 || recordSize == 8; }

int pointBytes(int recordSize) { return isValidRecordSize(recordSize) ? kCoordinates * recordSize : 0; }

qint64 blockBytes(qint64 points, qint64 facettes, int recordSize)
{
    return points * pointBytes(recordSize) + facettes * kFacetteBytes;
}

bool readPoints(ZNByteSource& source, int recordSize, int count, core::Array<core::vec3>& points)
{
    const int bytes = pointBytes(recordSize);
    if (bytes == 0) return false;
    const bool narrow = recordSize == 4;
    return readRecords(source, count, bytes, points, [=](const uchar* in, core::vec3& p) {
        for (int c = 0; c < kCoordinates; ++c)
            p[c] = narrow ? getFloat(in + c * recordSize) : getDouble(in + c * recordSize);
    });
}

bool readFacettes(ZNByteSource& source, int count, core::Array<ZNFacette>& facettes)
{
    return readRecords(source, count, kFacetteBytes, facettes, [](const uchar* in, ZNFacette& f) {
        for (int c = 0; c < kCoordinates; ++c) f.index[c] = qFromLittleEndian<quint32>(in + 4 * c);
    });
}

bool writePoints(QIODevice& out, int recordSize, const core::vec3* points, int count)
{
    const int bytes = pointBytes(recordSize);
    if (bytes == 0) return false;
    const bool narrow = recordSize == 4;
    return writeRecords(out, points, count, bytes, [=](const core::vec3& p, uchar* o) {
        for (int c = 0; c < kCoordinates; ++c) {
            if (narrow)
                putFloat(o + c * recordSize, p[c]);
            else
                putDouble(o + c * recordSize, p[c]);
        }
    });
}

bool writeFacettes(QIODevice& out, const ZNFacette* facettes, int count)
{
    return writeRecords(out, facettes, count, kFacetteBytes, [](const ZNFacette& f, uchar* o) {
        for (int c = 0; c < kCoordinates; ++c) qToLittleEndian<quint32>(f.index[c], o + 4 * c);
    });
}

} // namespace ZN3DObjectRecords
