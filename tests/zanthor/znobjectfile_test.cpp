#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <testfiles.h>
#include <znbytesource.h>
#include <testservices.h>
#include <znobject.h>
#include <znobjectfile.h>
#include <znobjectfilewriter.h>
#include <znxml.h>

namespace {

// An object whose header holds one string and whose data is a fixed byte string.
class NoteObject : public ZNObject {
public:
    QString note = QStringLiteral("first");
    QByteArray data = QByteArray("DATA-BLOCK");
    bool failData = false;

    QString getZNObjectType() const override { return QStringLiteral("NoteObject"); }
    QDomElement createHeader(QDomDocument& doc) const override
    {
        QDomElement e = ZNObject::createHeader(doc);
        ZNXml::appendString(doc, e, QStringLiteral("note"), note);
        return e;
    }
    bool writeData(QIODevice& file, qint64 offset) const override
    {
        return !failData && file.seek(offset) && file.write(data) == data.size();
    }
};

// A file whose first 2500 bytes hold `text` zero-padded, followed by `rest`.
QByteArray withGlobalHeader(const QByteArray& text, const QByteArray& rest = {})
{
    QByteArray block = text;
    block.append(QByteArray(ZNObjectFile::kGlobalHeaderSize - text.size(), '\0'));
    return block + rest;
}

// The streamed header read of the file at `path`; the text of each visited element's
// "id" value and its "note" text, joined by a colon, go to `visited`.
class ObjectFileTest : public testing::Test {
protected:
    QTemporaryDir dir;
    QString path(const QString& name = QStringLiteral("object.zno")) const
    {
        return dir.filePath(name);
    }
};

} // namespace

TEST_F(ObjectFileTest, CreatedFileHasPaddedGlobalHeaderThenHeaderThenZeroReserveThenData)
{
    NoteObject object;
    const qint64 reserve = 300;
    ASSERT_TRUE(object.writeObjectFile(path(), reserve));
    const QByteArray bytes = readFileBytes(path());
    const QByteArray header = ZNObjectFile::headerBytes(object.createHeaderDocument());
    const qint64 dataOffset = ZNObjectFile::kGlobalHeaderSize + header.size() + reserve;

    ASSERT_EQ(bytes.size(), dataOffset + object.data.size());
    const QByteArray block = bytes.left(ZNObjectFile::kGlobalHeaderSize);
    const int textEnd = block.indexOf('\0');
    ASSERT_GT(textEnd, 0);
    EXPECT_EQ(block.mid(textEnd), QByteArray(ZNObjectFile::kGlobalHeaderSize - textEnd, '\0'));
    EXPECT_EQ(bytes.mid(ZNObjectFile::kGlobalHeaderSize, header.size()), header);
    EXPECT_EQ(bytes.mid(ZNObjectFile::kGlobalHeaderSize + header.size(), reserve),
              QByteArray(reserve, '\0'));
    EXPECT_EQ(bytes.mid(dataOffset), object.data);

    QDomDocument global;
    ASSERT_TRUE(global.setContent(block.left(textEnd)));
    const QDomElement root = global.documentElement();
    EXPECT_EQ(root.tagName(), QStringLiteral("GlobalHeader"));
    QStringList keys;
    for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        keys << e.tagName() + QLatin1Char('=') + e.attribute(QStringLiteral("value"));
    EXPECT_EQ(keys, (QStringList{QStringLiteral("headerOffset=2500"),
                                 QStringLiteral("headerSize=") + QString::number(header.size()),
                                 QStringLiteral("Version=WithTampon"),
                                 QStringLiteral("DataOffset=") + QString::number(dataOffset),
                                 QStringLiteral("VersionNumber=1")}));
    EXPECT_EQ(ZNObjectFile::getDataOffset(path()), dataOffset);
}

TEST_F(ObjectFileTest, DataOffsetIsHeaderEndPlusReserveForEveryReserveSize)
{
    for (qint64 reserve : {qint64(0), qint64(1), qint64(70000)}) {
        SCOPED_TRACE(reserve);
        QDomDocument doc;
        QDomElement root = ZNObjectFile::createHeaderDocument(doc);
        root.appendChild(doc.createElement(QStringLiteral("Thing")));
        ZNObjectFileWriter writer(path());
        const qint64 offset = writer.create(doc, reserve);
        const qint64 expected =
            ZNObjectFile::kGlobalHeaderSize + ZNObjectFile::headerBytes(doc).size() + reserve;
        EXPECT_EQ(offset, expected);
        EXPECT_EQ(writer.device()->pos(), expected);
        ASSERT_TRUE(writer.commit());
        EXPECT_EQ(ZNObjectFile::getDataOffset(path()), expected);
        EXPECT_EQ(QFileInfo(path()).size(), expected);
    }
}

TEST_F(ObjectFileTest, HeaderIsReadWithoutTheData)
{
    NoteObject object;
    object.note = QStringLiteral("second");
    ASSERT_TRUE(object.writeObjectFile(path(), 0));
    // Damage the data region: the header must still read.
    QFile f(path());
    ASSERT_TRUE(f.open(QIODevice::Append));
    f.write("garbage");
    f.close();

    ZNObjectFile::Header header;
    ASSERT_TRUE(ZNObjectFile::readHeader(path(), header));
    EXPECT_EQ(header.type, QStringLiteral("NoteObject"));
    EXPECT_EQ(ZNXml::readString(header.objectHeader, QStringLiteral("note")), QStringLiteral("second"));
    EXPECT_EQ(header.dataOffset, ZNObjectFile::getDataOffset(path()));
    EXPECT_EQ(ZNObjectFile::readObjectType(path()), QStringLiteral("NoteObject"));
}

TEST_F(ObjectFileTest, AReaderOfOneTypeRefusesAnotherBeforeBuildingItsDocument)
{
    NoteObject object;
    ASSERT_TRUE(object.writeObjectFile(path(), 0));
    ZNObjectFile::Header header;
    header.type = QStringLiteral("untouched");
    EXPECT_FALSE(ZNObjectFile::readHeader(path(), header, QStringLiteral("ZNBloc")));
    EXPECT_EQ(header.type, QStringLiteral("untouched"));
    EXPECT_TRUE(header.document.isNull());
    ASSERT_TRUE(ZNObjectFile::readHeader(path(), header, QStringLiteral("NoteObject")));
    EXPECT_EQ(header.type, QStringLiteral("NoteObject"));
    EXPECT_EQ(ZNXml::readString(header.objectHeader, QStringLiteral("note")), QStringLiteral("first"));
}

TEST_F(ObjectFileTest, DataOffsetOfDamagedGlobalHeadersIsMinusOne)
{
    const QByteArray size10 = "<GlobalHeader><headerSize value=\"10\"/>";
    struct Case {
        const char* name;
        QByteArray bytes;
        qint64 expected;
    } cases[] = {
        {"empty file", {}, -1},
        {"shorter than the block", QByteArray(100, 'x'), -1},
        {"garbage instead of xml", QByteArray(3000, '\x7f'), -1},
        {"no headerSize", withGlobalHeader("<GlobalHeader><Version value=\"WithTampon\"/></GlobalHeader>"), -1},
        {"headerSize not a number", withGlobalHeader("<GlobalHeader><headerSize value=\"ten\"/></GlobalHeader>"), -1},
        {"negative headerSize", withGlobalHeader("<GlobalHeader><headerSize value=\"-5\"/></GlobalHeader>"), -1},
        {"huge headerSize", withGlobalHeader("<GlobalHeader><headerSize value=\"9223372036854775000\"/></GlobalHeader>"), -1},
        {"reserve form without DataOffset",
         withGlobalHeader(size10 + "<Version value=\"WithTampon\"/></GlobalHeader>"), -1},
        {"DataOffset inside the header",
         withGlobalHeader(size10 + "<Version value=\"WithTampon\"/><DataOffset value=\"2505\"/></GlobalHeader>"), -1},
        {"form without reserve", withGlobalHeader(size10 + "</GlobalHeader>"), 2510},
        {"reserve form", withGlobalHeader(size10 + "<Version value=\"WithTampon\"/><DataOffset value=\"4000\"/></GlobalHeader>"), 4000},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(writeFileBytes(path(), c.bytes));
        EXPECT_EQ(ZNObjectFile::getDataOffset(path()), c.expected);
    }
    EXPECT_EQ(ZNObjectFile::getDataOffset(path(QStringLiteral("missing.zno"))), -1);
}

TEST_F(ObjectFileTest, DamagedHeadersAreRejectedAndLeaveTheResultUntouched)
{
    const QByteArray xml = "<globalObject><Thing/></globalObject>";
    const QByteArray deep = "<globalObject><Thing>" + QByteArray("<e>").repeated(100000) +
                            QByteArray("</e>").repeated(100000) + "</Thing></globalObject>";
    auto globalFor = [](qint64 size) {
        return withGlobalHeader("<GlobalHeader><headerSize value=\"" + QByteArray::number(size) +
                                "\"/></GlobalHeader>");
    };
    struct Case {
        const char* name;
        QByteArray bytes;
    } cases[] = {
        {"header longer than the file", globalFor(1 << 30) + xml},
        {"truncated header", globalFor(xml.size()) + xml.left(xml.size() - 5)},
        {"garbage header", globalFor(xml.size()) + QByteArray(xml.size(), '#')},
        {"wrong root", globalFor(11) + "<other><a/>"},
        {"no object element", globalFor(15) + "<globalObject/>"},
        {"nesting deeper than any header", globalFor(deep.size()) + deep},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(writeFileBytes(path(), c.bytes));
        ZNObjectFile::Header header;
        header.type = QStringLiteral("unchanged");
        EXPECT_FALSE(ZNObjectFile::readHeader(path(), header));
        EXPECT_EQ(header.type, QStringLiteral("unchanged"));
        EXPECT_TRUE(ZNObjectFile::readObjectType(path()).isEmpty());
        ZNFdReader file(ZNFdReader::openForReading(path()));
        ZNObjectFile::TreeHeader tree;
        EXPECT_FALSE(ZNObjectFile::readHeader(file, tree));
        EXPECT_EQ(tree.dataOffset, ZNObjectFile::kNoDataOffset);
    }
}

TEST_F(ObjectFileTest, HeaderReadsAsADomDocumentAndAsATreeAlike)
{
    const QByteArray xml =
        "<globalObject><Set kind=\"a\"><count value=\"2\"/><Item><id value=\"1\"/></Item>"
        "<units><unit value=\"m\"/></units><Item><id value=\"2\"/><note>x &amp; y</note></Item>"
        "</Set></globalObject>";
    const QByteArray global = "<GlobalHeader><headerSize value=\"" + QByteArray::number(xml.size()) +
                              "\"/></GlobalHeader>";
    ASSERT_TRUE(writeFileBytes(path(), withGlobalHeader(global, xml)));

    ZNObjectFile::Header dom;
    ASSERT_TRUE(ZNObjectFile::readHeader(path(), dom));
    ZNFdReader file(ZNFdReader::openForReading(path()));
    ZNObjectFile::TreeHeader tree;
    ASSERT_TRUE(ZNObjectFile::readHeader(file, tree));

    EXPECT_EQ(dom.type, QStringLiteral("Set"));
    EXPECT_EQ(tree.objectHeader.tagName(), QStringLiteral("Set"));
    EXPECT_EQ(dom.objectHeader.attribute(QStringLiteral("kind")), QStringLiteral("a"));
    EXPECT_EQ(tree.objectHeader.attribute(QStringLiteral("kind")), QStringLiteral("a"));
    EXPECT_EQ(ZNXml::readInt(dom.objectHeader, QStringLiteral("count"), 0), 2);
    EXPECT_EQ(ZNXml::readInt(tree.objectHeader, QStringLiteral("count"), 0), 2);
    const QDomElement domSecond =
        dom.objectHeader.firstChildElement(QStringLiteral("Item")).nextSiblingElement(QStringLiteral("Item"));
    const ZNXmlElement treeSecond =
        tree.objectHeader.firstChildElement(QStringLiteral("Item")).nextSiblingElement(QStringLiteral("Item"));
    EXPECT_EQ(domSecond.firstChildElement(QStringLiteral("note")).text(), QStringLiteral("x & y"));
    EXPECT_EQ(treeSecond.firstChildElement(QStringLiteral("note")).text(), QStringLiteral("x & y"));
    EXPECT_EQ(dom.headerSize, xml.size());
    EXPECT_EQ(tree.headerSize, xml.size());
    EXPECT_EQ(dom.dataOffset, ZNObjectFile::kGlobalHeaderSize + xml.size());
    EXPECT_EQ(tree.dataOffset, dom.dataOffset);
}

TEST_F(ObjectFileTest, HeaderRewriteThatFitsKeepsTheDataInPlace)
{
    NoteObject object;
    ASSERT_TRUE(object.writeObjectFile(path(), 200));
    const QByteArray before = readFileBytes(path());
    const qint64 offset = ZNObjectFile::getDataOffset(path());

    object.note = QString(150, QLatin1Char('n'));  // grows the header into the reserve
    ASSERT_TRUE(object.rewriteObjectHeader(path()));
    EXPECT_EQ(object.getLastFileError(), -1);

    const QByteArray after = readFileBytes(path());
    ASSERT_EQ(after.size(), before.size());
    EXPECT_EQ(after.mid(offset), before.mid(offset));
    EXPECT_EQ(ZNObjectFile::getDataOffset(path()), offset);
    const QByteArray header = ZNObjectFile::headerBytes(object.createHeaderDocument());
    const qint64 headerEnd = ZNObjectFile::kGlobalHeaderSize + header.size();
    EXPECT_EQ(after.mid(headerEnd, offset - headerEnd), QByteArray(offset - headerEnd, '\0'));
    ZNObjectFile::Header read;
    ASSERT_TRUE(ZNObjectFile::readHeader(path(), read));
    EXPECT_EQ(ZNXml::readString(read.objectHeader, QStringLiteral("note")), object.note);

    object.note = QStringLiteral("s");  // shrinking zeroes what the longer header left
    ASSERT_TRUE(object.rewriteObjectHeader(path()));
    EXPECT_EQ(readFileBytes(path()).mid(offset), before.mid(offset));
    ASSERT_TRUE(ZNObjectFile::readHeader(path(), read));
    EXPECT_EQ(ZNXml::readString(read.objectHeader, QStringLiteral("note")), QStringLiteral("s"));
}

TEST_F(ObjectFileTest, HeaderRewriteNeedsOneSpareByteBeforeTheData)
{
    // Header length L fits only while L + 2501 < data offset.
    for (int extra : {0, 1, 2}) {
        SCOPED_TRACE(extra);
        NoteObject object;
        ASSERT_TRUE(object.writeObjectFile(path(), 0));
        const QByteArray before = readFileBytes(path());
        const qint64 oldLength = ZNObjectFile::headerBytes(object.createHeaderDocument()).size();
        // With no reserve the data starts right after the old header: a new header
        // `extra` bytes shorter fits only when extra >= 2.
        object.note = object.note.left(object.note.size() - extra);
        const qint64 newLength = ZNObjectFile::headerBytes(object.createHeaderDocument()).size();
        ASSERT_EQ(newLength, oldLength - extra);
        const bool fits = newLength + 2501 < 2500 + oldLength;
        RecordingEventBus bus;
        EXPECT_EQ(object.rewriteObjectHeader(path()), fits);
        if (!fits) {
            EXPECT_EQ(readFileBytes(path()), before);
            EXPECT_EQ(object.getLastFileError(), ZNObjectFile::ErrorHeaderResize);
            const QString text = QStringLiteral(
                "Error when attempting to resize the header of the file. Please re-save the object.");
            EXPECT_EQ(object.getLastFileErrorText(), text);
            EXPECT_TRUE(bus.contains(ZNEventBus::FileError, text));
        }
    }
}

TEST_F(ObjectFileTest, HeaderRewriteRefusesFilesThatAreNotObjectFilesOrEndBeforeTheirData)
{
    NoteObject object;
    RecordingEventBus bus;
    ASSERT_TRUE(writeFileBytes(path(), QByteArray(5000, 'z')));
    EXPECT_FALSE(object.rewriteObjectHeader(path()));
    EXPECT_EQ(readFileBytes(path()), QByteArray(5000, 'z'));

    const QByteArray farData = withGlobalHeader(
        "<GlobalHeader><headerSize value=\"10\"/><Version value=\"WithTampon\"/>"
        "<DataOffset value=\"100000000\"/></GlobalHeader>", "0123456789");
    ASSERT_TRUE(writeFileBytes(path(), farData));
    EXPECT_FALSE(object.rewriteObjectHeader(path()));
    EXPECT_EQ(readFileBytes(path()), farData);
}

TEST_F(ObjectFileTest, OpenFailuresReportCodeOneAndTheOpenMessage)
{
    const QString unreachable = dir.filePath(QStringLiteral("no/such/dir/object.zno"));
    NoteObject object;
    {
        RecordingEventBus bus;
        EXPECT_FALSE(object.writeObjectFile(unreachable));
        EXPECT_EQ(object.getLastFileError(), ZNObjectFile::ErrorOpen);
        EXPECT_EQ(object.getLastFileErrorText(), QStringLiteral("Error when attempting to open the file."));
        ASSERT_EQ(bus.messages.size(), 1);
        EXPECT_EQ(bus.messages[0].first, ZNEventBus::FileError);
        EXPECT_TRUE(bus.messages[0].second.startsWith(
            QStringLiteral("Error when opening in Write mode file : ") + unreachable));
    }
    {
        RecordingEventBus bus;
        EXPECT_FALSE(object.rewriteObjectHeader(unreachable));
        EXPECT_EQ(object.getLastFileError(), ZNObjectFile::ErrorOpen);
        EXPECT_FALSE(QFile::exists(unreachable));
    }
}

TEST_F(ObjectFileTest, FailedDataWriteReportsCodeTwoAndKeepsThePreviousFile)
{
    NoteObject object;
    ASSERT_TRUE(object.writeObjectFile(path()));
    const QByteArray before = readFileBytes(path());

    object.failData = true;
    object.note = QStringLiteral("never saved");
    RecordingEventBus bus;
    EXPECT_FALSE(object.writeObjectFile(path()));
    EXPECT_EQ(object.getLastFileError(), ZNObjectFile::ErrorWrite);
    EXPECT_EQ(object.getLastFileErrorText(),
              QStringLiteral("Error when attempting to write into the file."));
    EXPECT_TRUE(bus.contains(ZNEventBus::FileError, QStringLiteral("Error when writing into ") + path()));
    EXPECT_EQ(readFileBytes(path()), before);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("object.zno")});
}

TEST_F(ObjectFileTest, WriterDestroyedBeforeCommitLeavesNoFile)
{
    {
        QDomDocument doc;
        ZNObjectFile::createHeaderDocument(doc).appendChild(doc.createElement(QStringLiteral("T")));
        ZNObjectFileWriter writer(path());
        ASSERT_GT(writer.create(doc, 0), 0);
    }
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files).isEmpty());
}

TEST(ObjectFilePaths, OnlyPathsOf261CharactersOrMoreGetTheLongPathPrefix)
{
    const QString shortPath = QStringLiteral("/d/") + QString(257, QLatin1Char('a'));  // 260
    const QString longPath = shortPath + QLatin1Char('b');                            // 261
    EXPECT_EQ(ZNObjectFile::longPathForm(shortPath), shortPath);
    EXPECT_EQ(ZNObjectFile::longPathForm(longPath),
              QStringLiteral("\\\\?\\") + QDir::toNativeSeparators(longPath));
}
