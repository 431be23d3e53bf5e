// Reading and writing the geometry of a ZN3DObjectDraw: the data block of its object
// file, the large-file variant and the stream form.
#include "3dobject/zn3dobjectdraw.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <core/assertion.h>
#include <znbytesource.h>
#include <zneventbus.h>
#include <znobjectfile.h>

namespace {
const char* const kSource = "zanthor/code/3dobject/zn3dobjectdraw";
constexpr int kCountBytes = 4;  // one count of the stream form

qint64 dataOffsetOf(const QString& path)
{
    const qint64 offset = ZNObjectFile::getDataOffset(path);
    return offset < 0 ? ZN3DObjectDraw::kMissingDataOffset : offset;
}
} // namespace

bool ZN3DObjectDraw::checkRecordSize(int recordSize, const char* function)
{
    return CORE_CHECK(recordSize == 8 || recordSize == 4, function, kSource);
}

bool ZN3DObjectDraw::readBlocks(ZNByteSource& source, int recordSize, int points, int facettes,
                                const char* function, Geometry& geometry)
{
    geometry.hasPoints = checkRecordSize(recordSize, function);
    if (geometry.hasPoints &&
        !ZN3DObjectRecords::readPoints(source, recordSize, points, geometry.points))
        return false;
    return ZN3DObjectRecords::readFacettes(source, facettes, geometry.facettes);
}

void ZN3DObjectDraw::keepGeometry(Geometry& geometry)
{
    if (geometry.hasPoints) m_points.swap(geometry.points);
    m_facettes.swap(geometry.facettes);
    m_headerPoints = -1;
    m_headerFacettes = -1;
    geometryLoaded();
}

bool ZN3DObjectDraw::readDataBlock(ZNByteSource& source, qint64 offset, int maxPoints,
                                   const char* function)
{
    const int allPoints = m_headerPoints >= 0 ? m_headerPoints : m_points.size();
    const int allFacettes = m_headerFacettes >= 0 ? m_headerFacettes : m_facettes.size();
    const int points = maxPoints > 0 ? qMin(maxPoints, allPoints) : allPoints;
    const int facettes = maxPoints > 0 ? 0 : allFacettes;
    Geometry geometry;
    if (!source.seek(offset) ||
        !readBlocks(source, m_recordSize, points, facettes, function, geometry))
        return false;
    keepGeometry(geometry);
    return true;
}

bool ZN3DObjectDraw::getData(const QString& path) { return getData(path, 0); }

bool ZN3DObjectDraw::getData(const QString& path, int maxPoints)
{
    const qint64 offset = dataOffsetOf(path);
    QFile file(ZNObjectFile::platformPath(path));
    if (!file.open(QIODevice::ReadOnly)) {
        ZNEventBus::sendMessage(ZNEventBus::FileError, QStringLiteral("Error when opening ") + path);
        return false;
    }
    ZNDeviceSource source(file);
    return readDataBlock(source, offset, maxPoints, "ZN3DObjectDraw::getData");
}

bool ZN3DObjectDraw::getDataLargeFile(const QString& path)
{
    const int _file = ZNFdReader::openForReading(ZNObjectFile::platformPath(path));
    if (!CORE_CHECK(_file!=-1, "ZN3DObjectDraw::getDataLargeFile", kSource)) return false;
    ZNFdReader reader(_file);
    const qint64 offset = ZNObjectFile::getDataOffset(reader);
    if (offset < 0) return false;
    return readDataBlock(reader, offset, 0, "ZN3DObjectDraw::getDataLargeFile");
}

bool ZN3DObjectDraw::readObjectFile(const QString& path)
{
    ZNObjectFile::Header header;
    HeaderValues values;
    if (!ZNObjectFile::readHeader(path, header) || !parseHeader(header.objectHeader, values))
        return false;
    const qint64 claimed = ZN3DObjectRecords::blockBytes(values.points, values.facettes, values.recordSize);
    QFile file(ZNObjectFile::platformPath(path));
    if (!file.open(QIODevice::ReadOnly) || header.dataOffset + claimed > file.size()) return false;

    ZNDeviceSource source(file);
    Geometry geometry;
    if (!source.seek(header.dataOffset) ||
        !readBlocks(source, values.recordSize, values.points, values.facettes,
                    "ZN3DObjectDraw::readObjectFile", geometry))
        return false;
    applyHeader(values);
    keepGeometry(geometry);
    return true;
}

bool ZN3DObjectDraw::writeBlocks(QIODevice& out, const char* function) const
{
    if (checkRecordSize(m_recordSize, function) &&
        !ZN3DObjectRecords::writePoints(out, m_recordSize, m_points.data(), m_points.size()))
        return false;
    return ZN3DObjectRecords::writeFacettes(out, m_facettes.data(), m_facettes.size());
}

bool ZN3DObjectDraw::writeData(QIODevice& file, qint64 offset) const
{
    return file.seek(offset) && writeBlocks(file, "ZN3DObjectDraw::writeData");
}

bool ZN3DObjectDraw::writeDataStream(QIODevice& stream) const
{
    uchar counts[2 * kCountBytes];
    qToLittleEndian<qint32>(m_points.size(), counts);
    qToLittleEndian<qint32>(m_facettes.size(), counts + kCountBytes);
    return stream.write(reinterpret_cast<const char*>(counts), sizeof counts) == sizeof counts &&
           writeBlocks(stream, "ZN3DObjectDraw::writeDataStream");
}

bool ZN3DObjectDraw::readDataStream(ZNByteSource& stream)
{
    uchar counts[2 * kCountBytes];
    if (!stream.read(counts, sizeof counts)) return false;
    const qint32 points = qFromLittleEndian<qint32>(counts);
    const qint32 facettes = qFromLittleEndian<qint32>(counts + kCountBytes);
    if (points < 0 || facettes < 0) return false;
    Geometry geometry;
    if (!readBlocks(stream, m_recordSize, points, facettes, "ZN3DObjectDraw::readDataStream", geometry))
        return false;
    keepGeometry(geometry);
    return true;
}
