#include "objectcorpus.h"

#include <QDir>
#include <QTemporaryDir>

#include <testfiles.h>
#include <znobjectfile.h>
#include <znxml.h>

namespace objectcorpus {

namespace {
constexpr qint64 kReserve = 64;  // header room of the corpus files

// validFile() with the header element's `key` set to `value`, the data unchanged.
QByteArray withHeaderValue(const QString& key, const QString& value)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("o.zn3d"));
    if (!writeFileBytes(path, validFile())) return {};
    ZNObjectFile::Header header;
    if (!ZNObjectFile::readHeader(path, header)) return {};
    header.objectHeader.firstChildElement(key).setAttribute(QStringLiteral("value"), value);
    if (!ZNObjectFile::rewriteHeader(path, header.document)) return {};
    return readFileBytes(path);
}
} // namespace

void fill(ZN3DObjectDraw& object, int recordSize)
{
    auto& points = object.getPoints();
    points.clear();
    for (int i = 0; i < 5; ++i) points.add(core::vec3(0.1 * i, 1000.3 + i, -2.7e5 / (i + 1)));
    auto& facettes = object.getFacettes();
    facettes.clear();
    for (const ZNFacette& f : {ZNFacette{{0, 1, 2}}, ZNFacette{{1, 3, 2}}, ZNFacette{{3, 4, 2}}})
        facettes.add(f);
    object.setPen(QPen(QColor(200, 10, 20), 3, Qt::DashLine));
    object.setBrush(QBrush(QColor(1, 2, 3, 128), Qt::Dense4Pattern));
    object.setPixelSize(core::vec3(12.5, 4, 12.5));
    object.setRecordSize(recordSize);
}

QByteArray validFile()
{
    ZN3DObjectDraw object;
    fill(object, 4);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("o.zn3d"));
    return object.writeObjectFile(path, kReserve) ? readFileBytes(path) : QByteArray();
}

QList<QPair<QString, QByteArray>> corruptedFiles()
{
    const QByteArray valid = validFile();
    const int headerStart = ZNObjectFile::kGlobalHeaderSize;
    const int dataOffset = valid.size() - (5 * 12 + 3 * 12);
    QByteArray garbage = valid;
    for (int i = headerStart; i < headerStart + 200; ++i) garbage[i] = static_cast<char>(i * 37);
    QByteArray hugeHeader = valid;
    const QByteArray sizeKey = "headerSize value=\"";
    const int at = hugeHeader.indexOf(sizeKey) + sizeKey.size();
    hugeHeader.replace(at, hugeHeader.indexOf('"', at) - at, "99999999");

    return {
        {QStringLiteral("empty.zn3d"), QByteArray()},
        {QStringLiteral("truncated_in_global_header.zn3d"), valid.left(1000)},
        {QStringLiteral("truncated_in_header.zn3d"), valid.left(headerStart + 100)},
        {QStringLiteral("truncated_at_data.zn3d"), valid.left(dataOffset)},
        {QStringLiteral("truncated_in_points.zn3d"), valid.left(dataOffset + 20)},
        {QStringLiteral("truncated_in_facettes.zn3d"), valid.left(valid.size() - 5)},
        {QStringLiteral("garbage_header.zn3d"), garbage},
        {QStringLiteral("huge_header_size.zn3d"), hugeHeader},
        {QStringLiteral("too_many_points.zn3d"),
         withHeaderValue(QStringLiteral("numberOfPoint"), QStringLiteral("2147483647"))},
        {QStringLiteral("too_many_facettes.zn3d"),
         withHeaderValue(QStringLiteral("numberOffacette"), QStringLiteral("1000000"))},
        {QStringLiteral("negative_count.zn3d"),
         withHeaderValue(QStringLiteral("numberOfPoint"), QStringLiteral("-3"))},
        {QStringLiteral("record_size_8_on_4_data.zn3d"),
         withHeaderValue(QStringLiteral("recordSize"), QStringLiteral("8"))},
    };
}

QString committedDirectory() { return QStringLiteral(KORVALITH_TEST_DATA_DIR "/3dobject"); }

bool regenerate(const QString& directory)
{
    QDir().mkpath(directory + QStringLiteral("/corrupt"));
    bool ok = writeFileBytes(directory + QStringLiteral("/valid_record4.zn3d"), validFile());
    for (const auto& file : corruptedFiles())
        ok = writeFileBytes(directory + QStringLiteral("/corrupt/") + file.first, file.second) && ok;
    return ok;
}

} // namespace objectcorpus
