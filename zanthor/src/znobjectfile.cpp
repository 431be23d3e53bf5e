#include "znobjectfile.h"

#include <limits>

#include <QDir>
#include <QFile>

#include "znbytesource.h"
#include "zneventbus.h"
#include "znxml.h"

namespace {
const QString kGlobalHeader = QStringLiteral("GlobalHeader");
const QString kGlobalObject = QStringLiteral("globalObject");
const QString kHeaderOffset = QStringLiteral("headerOffset");
const QString kHeaderSize = QStringLiteral("headerSize");
const QString kVersion = QStringLiteral("Version");
const QString kDataOffset = QStringLiteral("DataOffset");
const QString kVersionNumberKey = QStringLiteral("VersionNumber");
const QString kWithTampon = QStringLiteral("WithTampon");

constexpr int kLongPathLength = 261;           // paths this long need the Windows prefix
constexpr qint64 kLargestHeader = qint64(1) << 40; // sizes beyond it are corrupt, not real
constexpr int kZeroChunk = 64 * 1024;           // bytes of zeros written per call

// What the global header block tells: the header size and the data offset.
struct GlobalHeaderInfo {
    qint64 headerSize = -1;
    qint64 dataOffset = ZNObjectFile::kNoDataOffset;
};

// Parses the global header block. A block without a valid "headerSize" or with sizes
// that cannot describe a file gives dataOffset kNoDataOffset.
GlobalHeaderInfo parseGlobalHeader(const QByteArray& block)
{
    GlobalHeaderInfo info;
    const int textEnd = block.indexOf('\0');
    QDomDocument doc;
    if (!doc.setContent(textEnd < 0 ? block : block.left(textEnd))) return info;
    const QDomElement root = doc.documentElement();
    bool found = false;
    const qint64 headerSize = ZNXml::readInt(root, kHeaderSize, -1, &found);
    if (!found || headerSize < 0 || headerSize > kLargestHeader) return info;

    qint64 dataOffset = headerSize + ZNObjectFile::kGlobalHeaderSize;
    if (ZNXml::readString(root, kVersion) == kWithTampon) {
        dataOffset = ZNXml::readInt(root, kDataOffset, -1, &found);
        if (!found || dataOffset < headerSize + ZNObjectFile::kGlobalHeaderSize) return info;
    }
    info.headerSize = headerSize;
    info.dataOffset = dataOffset;
    return info;
}

GlobalHeaderInfo readGlobalHeader(ZNByteSource& file)
{
    QByteArray block(ZNObjectFile::kGlobalHeaderSize, '\0');
    if (!file.seek(0) || !file.read(block.data(), block.size())) return {};
    return parseGlobalHeader(block);
}

GlobalHeaderInfo readGlobalHeader(QIODevice& file)
{
    ZNDeviceSource source(file);
    return readGlobalHeader(source);
}

void setError(int* error, int code)
{
    if (error) *error = code;
}
} // namespace

QString ZNObjectFile::errorText(int code)
{
    switch (code) {
    case ErrorHeaderResize:
        return QStringLiteral(
            "Error when attempting to resize the header of the file. Please re-save the object.");
    case ErrorOpen:
        return QStringLiteral("Error when attempting to open the file.");
    case ErrorWrite:
        return QStringLiteral("Error when attempting to write into the file.");
    default:
        return {};
    }
}

QDomElement ZNObjectFile::createHeaderDocument(QDomDocument& doc)
{
    doc = QDomDocument();
    QDomElement root = doc.createElement(kGlobalObject);
    doc.appendChild(root);
    return root;
}

ZNXmlElement ZNObjectFile::createHeaderDocument(ZNXmlTree& doc)
{
    doc = ZNXmlTree();
    ZNXmlElement root = doc.createElement(kGlobalObject);
    doc.appendChild(root);
    return root;
}

QByteArray ZNObjectFile::headerBytes(const QDomDocument& doc) { return doc.toByteArray(); }

QByteArray ZNObjectFile::globalHeaderBlock(qint64 headerSize, qint64 dataOffset)
{
    QDomDocument doc;
    QDomElement root = doc.createElement(kGlobalHeader);
    doc.appendChild(root);
    ZNXml::appendInt(doc, root, kHeaderOffset, kGlobalHeaderSize);
    ZNXml::appendInt(doc, root, kHeaderSize, headerSize);
    ZNXml::appendString(doc, root, kVersion, kWithTampon);
    ZNXml::appendInt(doc, root, kDataOffset, dataOffset);
    ZNXml::appendInt(doc, root, kVersionNumberKey, kVersionNumber);

    // The text is printed into a block one byte longer than stored, so that it always
    // ends with a zero inside the file when it is shorter than the block.
    QByteArray block(kGlobalHeaderSize + 1, '\0');
    const QByteArray text = doc.toByteArray();
    memcpy(block.data(), text.constData(), static_cast<size_t>(qMin(text.size(), kGlobalHeaderSize)));
    block.truncate(kGlobalHeaderSize);
    return block;
}

qint64 ZNObjectFile::getDataOffset(QIODevice& file) { return readGlobalHeader(file).dataOffset; }

qint64 ZNObjectFile::getDataOffset(ZNByteSource& file) { return readGlobalHeader(file).dataOffset; }

qint64 ZNObjectFile::getDataOffset(const QString& path)
{
    QFile file(platformPath(path));
    if (!file.open(QIODevice::ReadOnly)) return kNoDataOffset;
    return getDataOffset(file);
}

bool ZNObjectFile::readHeader(const QString& path, Header& header, const QString& type)
{
    QFile file(platformPath(path));
    if (!file.open(QIODevice::ReadOnly)) return false;
    ZNDeviceSource source(file);
    return readHeader(source, header, type);
}

bool ZNObjectFile::readHeaderText(ZNByteSource& file, QByteArray& text, qint64& dataOffset)
{
    text.clear();
    const GlobalHeaderInfo info = readGlobalHeader(file);
    if (info.dataOffset == kNoDataOffset) return false;
    if (info.headerSize > std::numeric_limits<int>::max() || !file.seek(kGlobalHeaderSize) ||
        !file.mayHold(info.headerSize))
        return false;
    QByteArray bytes(static_cast<int>(info.headerSize), '\0');
    if (!file.read(bytes.data(), info.headerSize)) return false;
    text = bytes;
    dataOffset = info.dataOffset;
    return true;
}

bool ZNObjectFile::readHeader(ZNByteSource& file, Header& header, const QString& type)
{
    // Parsed as a flat tree first: its reader bounds the nesting, which a DOM parser does
    // not (a deeply nested hostile header would exhaust the stack when freed).
    TreeHeader read;
    if (!readHeader(file, read)) return false;
    if (!type.isEmpty() && !read.objectHeader.hasTag(type)) return false;
    header.document = read.tree.toDocument();
    header.objectHeader = header.document.documentElement().firstChildElement();
    header.type = header.objectHeader.tagName();
    header.headerSize = read.headerSize;
    header.dataOffset = read.dataOffset;
    return true;
}

bool ZNObjectFile::readHeader(ZNByteSource& file, TreeHeader& header)
{
    QByteArray text;
    qint64 dataOffset = kNoDataOffset;
    if (!readHeaderText(file, text, dataOffset) || !header.tree.setContent(text)) return false;
    const ZNXmlElement root = header.tree.documentElement();
    const ZNXmlElement objectHeader = root.firstChildElement();
    if (!root.hasTag(kGlobalObject) || objectHeader.isNull()) return false;
    header.objectHeader = objectHeader;
    header.headerSize = text.size();
    header.dataOffset = dataOffset;
    return true;
}

QString ZNObjectFile::readObjectType(const QString& path)
{
    QFile file(platformPath(path));
    if (!file.open(QIODevice::ReadOnly)) return QString();
    ZNDeviceSource source(file);
    TreeHeader read;
    return readHeader(source, read) ? read.objectHeader.tagName() : QString();
}

bool ZNObjectFile::rewriteHeader(const QString& path, const QDomDocument& doc, int* error)
{
    QFile file(platformPath(path));
    if (!file.open(QIODevice::ReadWrite)) {
        reportOpenError(path, file.errorString());
        setError(error, ErrorOpen);
        return false;
    }
    const QByteArray text = headerBytes(doc);
    const qint64 length = text.size();
    const qint64 dataOffset = getDataOffset(file);
    // A data offset beyond the end belongs to a damaged file: zero-filling up to it
    // would write what was never there.
    if (!(length + kGlobalHeaderSize + 1 < dataOffset) || dataOffset > file.size()) {
        ZNEventBus::sendMessage(ZNEventBus::FileError, errorText(ErrorHeaderResize));
        setError(error, ErrorHeaderResize);
        return false;
    }
    const QByteArray block = globalHeaderBlock(length, dataOffset);
    const bool written = file.seek(0) && file.write(block) == block.size() &&
                         file.write(text) == length &&
                         writeZeros(file, dataOffset - kGlobalHeaderSize - length) &&
                         file.flush();
    if (!written) {
        reportWriteError(path);
        setError(error, ErrorWrite);
        return false;
    }
    return true;
}

bool ZNObjectFile::writeZeros(QIODevice& file, qint64 count)
{
    const QByteArray zeros(static_cast<int>(qBound<qint64>(0, count, kZeroChunk)), '\0');
    while (count > 0) {
        const qint64 n = qMin<qint64>(count, zeros.size());
        if (file.write(zeros.constData(), n) != n) return false;
        count -= n;
    }
    return true;
}

QString ZNObjectFile::longPathForm(const QString& path)
{
    const QString native = QDir::toNativeSeparators(path);
    if (native.size() < kLongPathLength) return path;
    return QStringLiteral("\\\\?\\") + native;
}

QString ZNObjectFile::platformPath(const QString& path)
{
#ifdef Q_OS_WIN
    return longPathForm(path);
#else
    return path;
#endif
}

void ZNObjectFile::reportOpenError(const QString& path, const QString& systemText)
{
    ZNEventBus::sendMessage(ZNEventBus::FileError,
                            QStringLiteral("Error when opening in Write mode file : ") + path +
                                QLatin1Char(' ') + systemText);
}

void ZNObjectFile::reportWriteError(const QString& path)
{
    ZNEventBus::sendMessage(ZNEventBus::FileError, QStringLiteral("Error when writing into ") + path);
}
