#include <gtest/gtest.h>

#include <cstring>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <3dobject/zn3dobjectdraw.h>
#include <testfiles.h>
#include <testservices.h>
#include <testxml.h>
#include <znbytesource.h>
#include <znobjectfile.h>
#include <znxml.h>

#include "objectcorpus.h"

namespace {

// Everything a reader may change, to compare before and after.
struct Snapshot {
    QList<double> coordinates;
    QList<uint32_t> indices;
    QPen pen;
    QBrush brush;
    core::vec3 pixelSize;
    int recordSize;

    explicit Snapshot(const ZN3DObjectDraw& o)
        : pen(o.getPen()), brush(o.getBrush()), pixelSize(o.getPixelSize()), recordSize(o.getRecordSize())
    {
        for (const core::vec3& p : o.getPoints()) coordinates << p.x << p.y << p.z;
        for (const ZNFacette& f : o.getFacettes()) indices << f.index[0] << f.index[1] << f.index[2];
    }
    bool operator==(const Snapshot& b) const
    {
        return coordinates == b.coordinates && indices == b.indices && pen == b.pen &&
               brush == b.brush && pixelSize == b.pixelSize && recordSize == b.recordSize;
    }
};

class ObjectDrawTest : public testing::Test {
protected:
    QTemporaryDir dir;
    QString path(const QString& name = QStringLiteral("object.zn3d")) const { return dir.filePath(name); }

    // Reads the header of `file` into `object`, then its data with getData.
    static bool readWithGetData(ZN3DObjectDraw& object, const QString& file, int maxPoints = 0)
    {
        ZNObjectFile::Header header;
        return ZNObjectFile::readHeader(file, header) && object.getHeader(&header.objectHeader) &&
               object.getData(file, maxPoints);
    }
};

// A byte source that cannot tell how much is left, as a pipe.
class PipeSource : public ZNByteSource {
public:
    explicit PipeSource(QByteArray bytes) : m_bytes(std::move(bytes)) {}
    bool read(void* out, qint64 n) override
    {
        if (n < 0 || m_pos + n > m_bytes.size()) return false;
        memcpy(out, m_bytes.constData() + m_pos, size_t(n));
        m_pos += n;
        return true;
    }
    bool seek(qint64) override { return false; }
    qint64 pos() const override { return m_pos; }
    qint64 remaining() const override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_pos = 0;
};

// Parses a "ZN3DObjectDraw" header element with the given children into `doc`.
QDomElement headerElement(QDomDocument& doc, const QString& children)
{
    return parseXml(doc, QStringLiteral("<ZN3DObjectDraw>%1</ZN3DObjectDraw>").arg(children));
}

} // namespace

TEST_F(ObjectDrawTest, RoundTripIsExactAtRecordSize8AndRoundsCoordinatesTo32BitsAt4)
{
    const georef::UnitObject units(georef::UnitObject::SpatialFoot, georef::UnitObject::VerticalMillisecond);
    for (int recordSize : {8, 4}) {
        SCOPED_TRACE(recordSize);
        ZN3DObjectDraw source;
        objectcorpus::fill(source, recordSize);
        source.SetUnitObject(units);
        ASSERT_TRUE(source.writeObjectFile(path()));
        Snapshot expected(source);
        if (recordSize == 4) {
            for (double& c : expected.coordinates) c = double(float(c));
            EXPECT_NE(expected.coordinates, Snapshot(source).coordinates);  // some do round
        }
        ZN3DObjectDraw viaFile, viaGetData;
        ASSERT_TRUE(viaFile.readObjectFile(path()));
        ASSERT_TRUE(readWithGetData(viaGetData, path()));
        for (const ZN3DObjectDraw* read : {&viaFile, &viaGetData}) {
            EXPECT_TRUE(Snapshot(*read) == expected);
            EXPECT_EQ(read->GetUnitObject(), units);
        }
    }
}

TEST_F(ObjectDrawTest, DataBlockIsPointsThenFacettesLittleEndianWithoutCounts)
{
    for (int recordSize : {4, 8}) {
        SCOPED_TRACE(recordSize);
        ZN3DObjectDraw object;
        objectcorpus::fill(object, recordSize);
        ASSERT_TRUE(object.writeObjectFile(path()));
        const QByteArray bytes = readFileBytes(path());
        const qint64 offset = ZNObjectFile::getDataOffset(path());
        const QByteArray data = bytes.mid(offset);
        ASSERT_EQ(data.size(), 5 * 3 * recordSize + 3 * 12);

        const double y0 = object.getPoints()[0].y;
        if (recordSize == 4) {
            const float expected = float(y0);
            EXPECT_EQ(data.mid(4, 4), QByteArray(reinterpret_cast<const char*>(&expected), 4));
        } else {
            EXPECT_EQ(data.mid(8, 8), QByteArray(reinterpret_cast<const char*>(&y0), 8));
        }
        const QByteArray facette1 = data.mid(5 * 3 * recordSize + 12, 12);
        EXPECT_EQ(facette1, QByteArray::fromHex("010000000300000002000000"));
    }
}

TEST_F(ObjectDrawTest, EmptyObjectWritesNoDataAndReadsBackEmpty)
{
    ZN3DObjectDraw empty;
    ASSERT_TRUE(empty.writeObjectFile(path()));
    EXPECT_EQ(ZNObjectFile::getDataOffset(path()), QFileInfo(path()).size());
    ZN3DObjectDraw read;
    objectcorpus::fill(read, 8);
    ASSERT_TRUE(read.readObjectFile(path()));
    EXPECT_EQ(read.getNumberOfPoints(), 0);
    EXPECT_EQ(read.getNumberOfFacettes(), 0);
    EXPECT_EQ(read.getRecordSize(), 4);
}

TEST(ObjectDrawEstimate, IsThreeTimesFacetteAndPointBytesPlusTheMargin)
{
    const struct { bool filled; int recordSize; qint64 bytes; } cases[] = {
        {false, 4, 43935}, {true, 4, 3 * (4 * 3 + 4 * 5 + 14645)}, {true, 8, 3 * (4 * 3 + 8 * 5 + 14645)},
    };
    for (const auto& c : cases) {
        ZN3DObjectDraw object;  // filled: 5 points, 3 facettes
        if (c.filled) objectcorpus::fill(object, c.recordSize);
        EXPECT_EQ(object.getEstimatedFileSize(), c.bytes) << c.filled << " " << c.recordSize;
    }
    ZN3DObjectDraw object;
    objectcorpus::fill(object, 6);
    StderrCapture err;
    EXPECT_EQ(object.getEstimatedFileSize(), 0);
    EXPECT_TRUE(err.text().startsWith(QStringLiteral(
        "ERROR: assert fail (recordSize == 8 || recordSize == 4) in "
        "ZN3DObjectDraw::getEstimatedFileSize at ")));
}

TEST_F(ObjectDrawTest, PartialReadTakesTheFirstPointsAndNoFacette)
{
    ZN3DObjectDraw source;
    objectcorpus::fill(source, 8);
    ASSERT_TRUE(source.writeObjectFile(path()));
    const struct { int maxPoints, points, facettes; } cases[] = {
        {2, 2, 0}, {5, 5, 0}, {50, 5, 0}, {0, 5, 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.maxPoints);
        ZN3DObjectDraw read;
        ASSERT_TRUE(readWithGetData(read, path(), c.maxPoints));
        ASSERT_EQ(read.getNumberOfPoints(), c.points);
        EXPECT_EQ(read.getNumberOfFacettes(), c.facettes);
        EXPECT_EQ(read.getPoints()[c.points - 1], source.getPoints()[c.points - 1]);
    }
}

TEST_F(ObjectDrawTest, LargeFileReadMatchesTheOrdinaryRead)
{
    ZN3DObjectDraw source;
    auto& points = source.getPoints();
    points.reserve(100000);
    for (int i = 0; i < 100000; ++i) points.add(core::vec3(i * 0.5, -i, i * 1e-3));  // > 1 buffer
    ZNFacette f;
    f.index[0] = 99999;
    source.getFacettes().add(f);
    source.setRecordSize(8);
    ASSERT_TRUE(source.writeObjectFile(path()));

    ZN3DObjectDraw read;
    ZNObjectFile::Header header;
    ASSERT_TRUE(ZNObjectFile::readHeader(path(), header));
    ASSERT_TRUE(read.getHeader(&header.objectHeader));
    ASSERT_TRUE(read.getDataLargeFile(path()));
    EXPECT_TRUE(Snapshot(read) == Snapshot(source));
}

TEST_F(ObjectDrawTest, LargeFileReadFailsWithoutOffsetOrFileAndKeepsTheObject)
{
    ZN3DObjectDraw object;
    objectcorpus::fill(object, 4);
    const Snapshot before(object);
    ASSERT_TRUE(writeFileBytes(path(), QByteArray(4000, 'q')));  // no global header: no data offset
    {
        StderrCapture err;
        EXPECT_FALSE(object.getDataLargeFile(path()));
        EXPECT_TRUE(err.text().isEmpty());
    }
    {
        StderrCapture err;
        EXPECT_FALSE(object.getDataLargeFile(path(QStringLiteral("missing.zn3d"))));
        EXPECT_TRUE(err.text().startsWith(QStringLiteral(
            "ERROR: assert fail (_file!=-1) in ZN3DObjectDraw::getDataLargeFile at ")));
    }
    EXPECT_TRUE(Snapshot(object) == before);
}

TEST_F(ObjectDrawTest, GetDataOfAMissingFileSendsTheOpenMessageAndKeepsTheObject)
{
    ZN3DObjectDraw object;
    objectcorpus::fill(object, 4);
    const Snapshot before(object);
    RecordingEventBus bus;
    EXPECT_FALSE(object.getData(path(QStringLiteral("missing.zn3d"))));
    EXPECT_TRUE(bus.contains(ZNEventBus::FileError,
                             QStringLiteral("Error when opening ") + path(QStringLiteral("missing.zn3d"))));
    EXPECT_TRUE(Snapshot(object) == before);
}

TEST(ObjectDrawStream, TwoObjectsEmbeddedInOneStreamReadBackInOrder)
{
    ZN3DObjectDraw first, second, empty;
    objectcorpus::fill(first, 8);
    objectcorpus::fill(second, 4);
    second.getPoints().removeAt(0);
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    ASSERT_TRUE(first.writeDataStream(buffer));
    ASSERT_TRUE(empty.writeDataStream(buffer));
    ASSERT_TRUE(second.writeDataStream(buffer));
    EXPECT_EQ(buffer.size(), (8 + 5 * 24 + 36) + 8 + (8 + 4 * 12 + 36));

    buffer.seek(0);
    ZNDeviceSource source(buffer);
    ZN3DObjectDraw a, b, c;
    a.setRecordSize(8);
    ASSERT_TRUE(a.readDataStream(source));
    ASSERT_TRUE(b.readDataStream(source));
    ASSERT_TRUE(c.readDataStream(source));
    EXPECT_EQ(source.remaining(), 0);
    EXPECT_EQ(a.getPoints()[4], first.getPoints()[4]);
    EXPECT_EQ(b.getNumberOfPoints(), 0);
    EXPECT_EQ(c.getNumberOfPoints(), 4);
    EXPECT_EQ(c.getFacettes()[1], second.getFacettes()[1]);
}

TEST(ObjectDrawStream, ShortOrDamagedStreamsFailAndLeaveTheObjectUnchanged)
{
    ZN3DObjectDraw written;
    objectcorpus::fill(written, 4);
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    ASSERT_TRUE(written.writeDataStream(buffer));
    const QByteArray full = buffer.data();

    QByteArray negative = full;
    negative.replace(0, 4, QByteArray::fromHex("ffffffff"));
    QByteArray huge = full;
    huge.replace(4, 4, QByteArray::fromHex("ffffff7f"));
    const QList<QPair<const char*, QByteArray>> cases = {
        {"empty", {}}, {"half a count", full.left(2)}, {"counts only", full.left(8)},
        {"short points", full.left(30)}, {"short facettes", full.left(full.size() - 1)},
        {"negative count", negative}, {"huge facette count", huge},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        ZN3DObjectDraw object;
        objectcorpus::fill(object, 4);
        object.getPoints()[0] = core::vec3(7, 7, 7);
        const Snapshot before(object);
        QBuffer in;
        in.setData(c.second);
        in.open(QIODevice::ReadOnly);
        ZNDeviceSource source(in);
        EXPECT_FALSE(object.readDataStream(source));
        EXPECT_TRUE(Snapshot(object) == before);

        PipeSource pipe(c.second);  // the same without knowing the size in advance
        EXPECT_FALSE(object.readDataStream(pipe));
        EXPECT_TRUE(Snapshot(object) == before);
    }
}

TEST(ObjectDrawHeader, WritesItsChildrenInOrder)
{
    ZN3DObjectDraw object;
    objectcorpus::fill(object, 8);
    QDomDocument doc;
    const QDomElement e = object.createHeader(doc);
    EXPECT_EQ(e.tagName(), QStringLiteral("ZN3DObjectDraw"));
    EXPECT_EQ(childTags(e), (QStringList{"numberOfPoint", "numberOffacette", "pen", "brush", "pixelSize",
                                 "recordSize", "unitsObject"}));
    EXPECT_EQ(ZNXml::readInt(e, "numberOfPoint", -1), 5);
    EXPECT_EQ(ZNXml::readInt(e, "numberOffacette", -1), 3);
    EXPECT_EQ(ZNXml::readInt(e, "recordSize", -1), 8);
}

TEST(ObjectDrawHeader, MissingPixelSizeAndRecordSizeTakeTheirDefaults)
{
    QDomDocument doc;
    const QDomElement e = headerElement(
        doc, QStringLiteral("<numberOfPoint value=\"7\"/><numberOffacette value=\"2\"/>"));
    ZN3DObjectDraw object;
    object.setPixelSize(core::vec3(3, 3, 3));
    object.setRecordSize(8);
    ASSERT_TRUE(object.getHeader(&e));
    EXPECT_EQ(object.getPixelSize(), core::vec3(1, 1, 1));
    EXPECT_EQ(object.getRecordSize(), 4);
}

TEST_F(ObjectDrawTest, HeaderCountsSizeTheNextDataReadOnlyWhenTheFileHoldsThem)
{
    ZN3DObjectDraw source;
    objectcorpus::fill(source, 4);
    ASSERT_TRUE(source.writeObjectFile(path()));
    // The data block holds 96 bytes: 5 points and 3 facettes of 12 bytes each.
    for (const char* points : {"2147483647", "9", "8", "5", "3"}) {
        SCOPED_TRACE(points);
        QDomDocument doc;
        const QDomElement e = headerElement(
            doc, QStringLiteral("<numberOfPoint value=\"%1\"/><numberOffacette value=\"0\"/>")
                     .arg(QLatin1String(points)));
        ZN3DObjectDraw object;
        ASSERT_TRUE(object.getHeader(&e));
        EXPECT_EQ(object.getNumberOfPoints(), 0);  // nothing allocated before the data
        const int wanted = QByteArray(points).toInt();
        const bool fits = wanted <= 8;
        EXPECT_EQ(object.getData(path()), fits);
        EXPECT_EQ(object.getNumberOfPoints(), fits ? wanted : 0);
    }
}

TEST(ObjectDrawHeader, NegativeOrOversizedCountsAreRefusedWithoutChange)
{
    for (const char* count : {"-1", "2147483648", "12x"}) {
        SCOPED_TRACE(count);
        QDomDocument doc;
        const QDomElement e = headerElement(
            doc, QStringLiteral("<numberOfPoint value=\"%1\"/><recordSize value=\"8\"/>")
                     .arg(QLatin1String(count)));
        ZN3DObjectDraw object;
        objectcorpus::fill(object, 4);
        const Snapshot before(object);
        if (QByteArray(count) == "12x") {
            // Text that is not a number reads as a missing count: no points.
            EXPECT_TRUE(object.getHeader(&e));
            EXPECT_EQ(object.getNumberOfPoints(), 0);
        } else {
            EXPECT_FALSE(object.getHeader(&e));
            EXPECT_TRUE(Snapshot(object) == before);
        }
    }
    ZN3DObjectDraw object;
    EXPECT_FALSE(object.getHeader(nullptr));
}

TEST_F(ObjectDrawTest, InvalidRecordSizeSkipsThePointBlockOnWriteAndRead)
{
    ZN3DObjectDraw source;
    objectcorpus::fill(source, 6);
    StderrCapture err;
    ASSERT_TRUE(source.writeObjectFile(path()));
    const qint64 offset = ZNObjectFile::getDataOffset(path());
    EXPECT_EQ(QFileInfo(path()).size() - offset, 3 * 12);  // facettes only

    ZN3DObjectDraw read;
    read.getPoints().add(core::vec3(9, 9, 9));
    ASSERT_TRUE(read.readObjectFile(path()));
    const QString printed = err.text();
    EXPECT_TRUE(printed.contains(QStringLiteral(
        "ERROR: assert fail (recordSize == 8 || recordSize == 4) in ZN3DObjectDraw::writeData at ")));
    EXPECT_TRUE(printed.contains(QStringLiteral("(recordSize == 8 || recordSize == 4) in ZN3DObjectDraw::readObjectFile")));
    ASSERT_EQ(read.getNumberOfPoints(), 1);
    EXPECT_EQ(read.getPoints()[0], core::vec3(9, 9, 9));
    EXPECT_EQ(read.getFacettes()[2], source.getFacettes()[2]);
    EXPECT_EQ(read.getRecordSize(), 6);
}

TEST_F(ObjectDrawTest, HeaderRewriteKeepsTheGeometry)
{
    ZN3DObjectDraw object;
    objectcorpus::fill(object, 8);
    ASSERT_TRUE(object.writeObjectFile(path(), 500));
    object.setPen(QPen(Qt::blue, 7, Qt::DotLine));
    ASSERT_TRUE(object.rewriteObjectHeader(path()));
    ZN3DObjectDraw read;
    ASSERT_TRUE(read.readObjectFile(path()));
    EXPECT_TRUE(Snapshot(read) == Snapshot(object));

    ZN3DObjectDraw tight;
    objectcorpus::fill(tight, 8);
    ASSERT_TRUE(tight.writeObjectFile(path(), 0));
    const QByteArray before = readFileBytes(path());
    tight.setWidgetName(QStringLiteral("not in the header"));
    tight.getPoints().add(core::vec3());  // "5" becomes "6": same length, no spare byte
    RecordingEventBus bus;
    EXPECT_FALSE(tight.rewriteObjectHeader(path()));
    EXPECT_EQ(tight.getLastFileError(), ZNObjectFile::ErrorHeaderResize);
    EXPECT_EQ(readFileBytes(path()), before);
}

TEST_F(ObjectDrawTest, CorruptedFilesAreRefusedAndChangeNothing)
{
    int dataReadsTried = 0;
    for (const auto& file : objectcorpus::corruptedFiles()) {
        SCOPED_TRACE(file.first.toStdString());
        ASSERT_TRUE(writeFileBytes(path(), file.second));
        RecordingEventBus bus;

        ZN3DObjectDraw object;
        objectcorpus::fill(object, 8);
        object.getPoints()[1] = core::vec3(-1, -2, -3);
        const Snapshot before(object);
        EXPECT_FALSE(object.readObjectFile(path()));
        EXPECT_TRUE(Snapshot(object) == before);

        // The data readers after a header that reads: they must refuse the data.
        ZNObjectFile::Header header;
        ZN3DObjectDraw viaHeader;
        if (ZNObjectFile::readHeader(path(), header) && viaHeader.getHeader(&header.objectHeader)) {
            ++dataReadsTried;
            EXPECT_FALSE(viaHeader.getData(path()));
            EXPECT_FALSE(viaHeader.getDataLargeFile(path()));
            EXPECT_EQ(viaHeader.getNumberOfPoints(), 0);
            EXPECT_EQ(viaHeader.getNumberOfFacettes(), 0);
        }
    }
    EXPECT_EQ(dataReadsTried, 6);
}

TEST(ObjectDrawCorpus, CommittedFilesAreThoseTheWriterMakesAndTheValidOneReads)
{
    const QString directory = objectcorpus::committedDirectory();
    if (qEnvironmentVariableIsSet("KORVALITH_REGENERATE_CORPUS")) {
        ASSERT_TRUE(objectcorpus::regenerate(directory));
    }
    EXPECT_EQ(readFileBytes(directory + QStringLiteral("/valid_record4.zn3d")), objectcorpus::validFile());
    const auto corrupted = objectcorpus::corruptedFiles();
    EXPECT_EQ(QDir(directory + QStringLiteral("/corrupt")).entryList(QDir::Files).size(), corrupted.size());
    for (const auto& file : corrupted) {
        EXPECT_EQ(readFileBytes(directory + QStringLiteral("/corrupt/") + file.first), file.second)
            << file.first.toStdString();
    }

    ZN3DObjectDraw read;
    ASSERT_TRUE(read.readObjectFile(directory + QStringLiteral("/valid_record4.zn3d")));
    EXPECT_EQ(read.getNumberOfPoints(), 5);
    EXPECT_EQ(read.getPen().style(), Qt::DashLine);
}
