#pragma once
#include <cstdint>

#include <QtGlobal>

#include <core/array.h>
#include <core/vec3.h>

class QIODevice;
class ZNByteSource;

// One triangle of a triangulated surface: three indices into the object's point array.
struct ZNFacette {
    uint32_t index[3] = {0, 0, 0};

    bool operator==(const ZNFacette& b) const
    {
        return index[0] == b.index[0] && index[1] == b.index[1] && index[2] == b.index[2];
    }
    bool operator!=(const ZNFacette& b) const { return !(*this == b); }
};

// The binary records of a triangulated surface, little-endian, no padding, no counts:
//   a point record is x, y, z as three IEEE floats of `recordSize` bytes each (4 or 8);
//   in memory coordinates are always 64-bit, so writing with 4 rounds them to 32 bits;
//   a facette record is three unsigned 32-bit point indices (12 bytes).
// Every other record size is invalid: no point record has that size, so point blocks
// are neither written nor read with it.
namespace ZN3DObjectRecords {

constexpr int kFacetteBytes = 12;

bool isValidRecordSize(int recordSize);
// Bytes of one point record: 12 or 24; 0 for an invalid record size.
int pointBytes(int recordSize);
// Bytes of a data block of `points` point records and `facettes` facette records.
qint64 blockBytes(qint64 points, qint64 facettes, int recordSize);

// Reads `count` point records and appends them to `points`. Memory grows only as
// records are actually read, so a count larger than the source never allocates beyond
// about twice what the source holds; false as soon as the source is known to be too
// short, on a short read or a failed allocation (`points` may then hold a part).
bool readPoints(ZNByteSource& source, int recordSize, int count, core::Array<core::vec3>& points);
// The same for facette records.
bool readFacettes(ZNByteSource& source, int count, core::Array<ZNFacette>& facettes);

// Writes the first `count` points (or facettes) at the device's position; false when a
// write fails.
bool writePoints(QIODevice& out, int recordSize, const core::vec3* points, int count);
bool writeFacettes(QIODevice& out, const ZNFacette* facettes, int count);

} // namespace ZN3DObjectRecords
