// Writes the committed fault set corpus: a small valid fault set in both forms and the
// broken variants of its files that every reader must refuse cleanly. The tests read the
// committed copies in tests/data/faultset; the fuzz target starts from them. Run it again
// when the file format changes:
//   faultset_corpus tests/data/faultset
//
// Valid files: valid_2d.faultset and valid_3d.faultset, 5 patches: patches 1 and 2 form
// fault 1 (2's father is 1, the descriptor "F1"), patch 3 is fault 3 ("North"), patch 4
// is empty; sticks with separators and automatic points, a rectangle per patch, time
// units in feet, a scaled and shifted block-to-world matrix. Broken files go to corrupt/;
// a name starting with "3d_" holds the 3D form, every other one the 2D form.
#include <cstdio>
#include <functional>
#include <limits>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <znfaultpatchmanager.h>
#include <znobjectfile.h>
#include <znobjectfilewriter.h>

namespace {

constexpr qint64 kReserve = 64;             // header room of the corpus files
constexpr int kPatches = 5;
constexpr int kFathersBytes = 4 * kPatches;
constexpr int kPatch0Bytes2D = 4 + 32;      // count 0 and a rectangle
constexpr int kGarbageBytes = 200;          // header bytes overwritten by garbage

using Named = QList<QPair<QString, QByteArray>>;

void fill(ZNFaultPatchManager& set, bool twoD)
{
    set.init(kPatches, true);
    georef::BlocSpace space(40, 30, 200);
    core::mat4 matrix;
    matrix(0, 0) = 12.5;
    matrix(1, 1) = 4.0;
    matrix(2, 2) = 25.0;
    matrix(0, 3) = 600000.0;
    matrix(2, 3) = 6.1e6;
    space.setFromBlocToWorldMatrix(matrix);
    set.setBlocSpace(space);
    set.SetUnitObject(georef::UnitObject(georef::UnitObject::SpatialFoot,
                                         georef::UnitObject::VerticalMillisecond));

    const core::PointWithBool S = core::PointWithBool::separator();
    const QList<QList<core::PointWithBool>> points = {
        {{600010.5, 1200.25, 6100000.125}, {600012.5, 1300.0, 6100001.0, true}, S,
         {600020.0, 1210.5, 6100010.0}, {600021.0, 1320.75, 6100011.5}},
        {{600030.0, 1000.0, 6100020.0}, S, S},
        {{1.0 / 3.0, -2.5e-7, 1e300}},
    };
    for (int id = 1; id <= points.size(); ++id)
        for (const core::PointWithBool& p : points[id - 1]) set.addPickedPoint(id, p);
    for (int id = 0; id < kPatches; ++id) {
        set.getFaultPatch(id)->setRect(geom::Rect2d(id, -id * 0.5, id + 10.25, 1e-3 * id));
        set.getFaultPatch(id)->setIs2dFaultPatch(twoD);
    }
    set.setFather(2, 1);
    set.initElementListBis();
    for (const auto& fault : {qMakePair(1, QStringLiteral("F1")), qMakePair(3, QStringLiteral("North"))}) {
        ZN3DFaultPatchLight* light = set.insertNewFaultLight(fault.first);
        light->setPen(QPen(QColor(10 * fault.first, 200, 30), 2.5, Qt::DashLine));
        light->SetFaultName(fault.second);
        light->setInterpolationSize(20 + fault.first);
        light->setTransparency(0.25f);
    }
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray validFile(bool twoD)
{
    ZNFaultPatchManager set;
    fill(set, twoD);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("f"));
    ZNObjectFileWriter writer(path);
    const qint64 offset = writer.create(set.createHeaderDocument(), kReserve);
    const bool ok = offset >= 0 &&
                    set.writePickedFaultData(*writer.device(), offset, twoD, nullptr, false) &&
                    writer.commit();
    return ok ? readAll(path) : QByteArray();
}

// `bytes` with the object header edited by `edit`, the data unchanged.
QByteArray withHeader(const QByteArray& bytes, const std::function<void(QDomElement&)>& edit)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("f"));
    ZNObjectFile::Header header;
    if (!writeAll(path, bytes) || !ZNObjectFile::readHeader(path, header)) return {};
    edit(header.objectHeader);
    return ZNObjectFile::rewriteHeader(path, header.document) ? readAll(path) : QByteArray();
}

// `bytes` with the key-value element `key` of `element` set to `value`.
QByteArray withValue(const QByteArray& bytes, const QString& element, const QString& key,
                     const QString& value)
{
    return withHeader(bytes, [&](QDomElement& h) {
        QDomElement parent = element.isEmpty() ? h : h.firstChildElement(element);
        parent.firstChildElement(key).setAttribute(QStringLiteral("value"), value);
    });
}

template <class T>
QByteArray with(QByteArray bytes, qint64 at, T value)
{
    qToLittleEndian<T>(value, reinterpret_cast<uchar*>(bytes.data() + at));
    return bytes;
}

qint64 dataOffsetOf(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return ZNObjectFile::getDataOffset(buffer);
}

Named brokenFiles(const QByteArray& v2, const QByteArray& v3)
{
    const int d2 = static_cast<int>(dataOffsetOf(v2));
    const int d3 = static_cast<int>(dataOffsetOf(v3));
    const int count1In2D = d2 + kFathersBytes + kPatch0Bytes2D;
    const int count1In3D = d3 + kFathersBytes + 4;
    const int header = ZNObjectFile::kGlobalHeaderSize;
    const QString maxInt = QString::number(std::numeric_limits<int>::max());

    QByteArray garbage = v2;
    for (int i = header; i < header + kGarbageBytes; ++i) garbage[i] = static_cast<char>(i * 37);
    QByteArray badXml = v2;
    badXml.replace("</globalObject>", "</globalObjekt>");
    QByteArray hugeHeader = v2;
    const QByteArray sizeKey = "headerSize value=\"";
    const int at = hugeHeader.indexOf(sizeKey) + sizeKey.size();
    hugeHeader.replace(at, hugeHeader.indexOf('"', at) - at, "99999999");

    Named files = {
        {"empty", QByteArray()},
        {"truncated_in_global_header", v2.left(1000)},
        {"truncated_in_header", v2.left(header + 100)},
        {"truncated_at_data", v2.left(d2)},
        {"truncated_in_fathers", v2.left(d2 + 10)},
        {"truncated_in_count", v2.left(d2 + kFathersBytes + 2)},
        {"truncated_in_rectangle", v2.left(d2 + kFathersBytes + 20)},
        {"truncated_in_points", v2.left(count1In2D + 44)},
        {"truncated_last_byte", v2.left(v2.size() - 1)},
        {"3d_truncated_in_points", v3.left(count1In3D + 34)},
        {"3d_truncated_last_byte", v3.left(v3.size() - 1)},
        {"garbage_header", garbage},
        {"bad_xml", badXml},
        {"huge_header_size", hugeHeader},
        {"not_a_fault_set",
         withHeader(v2, [](QDomElement& h) { h.setTagName(QStringLiteral("ZN3DObjectDraw")); })},
        {"count_1000001", with<qint32>(v2, count1In2D, 1000001)},
        {"negative_count", with<qint32>(v2, count1In2D, -5)},
        {"count_beyond_file", with<qint32>(v2, count1In2D, 1000)},
        {"3d_count_1000001", with<qint32>(v3, count1In3D, 1000001)},
        {"father_out_of_range", with<qint32>(v2, d2 + 8, 99)},
        {"negative_father", with<qint32>(v2, d2 + 8, -1)},
        {"father_loop", with<qint32>(with<qint32>(v2, d2 + 4, 2), d2 + 8, 1)},
        {"nan_coordinate", with<double>(v2, count1In2D + 12, std::numeric_limits<double>::quiet_NaN())},
        {"3d_infinite_coordinate", with<double>(v3, count1In3D + 4, std::numeric_limits<double>::infinity())},
    };
    const QList<QStringList> headerValues = {
        {"unknown_version", "", "Version", "4"},
        {"negative_version", "", "Version", "-1"},
        {"version_not_a_number", "", "Version", "three"},
        {"zero_patches", "", "numberOfPatch", "0"},
        {"more_patches_than_elements", "", "numberOfPatch", "6"},
        {"huge_patch_count", "", "numberOfPatch", maxInt},
        {"descriptor_id_0", "ZN3DFaultPatchLight", "faultId", "0"},
        {"descriptor_id_beyond", "ZN3DFaultPatchLight", "faultId", "5"},
    };
    for (const QStringList& v : headerValues) files.append({v[0], withValue(v2, v[1], v[2], v[3])});
    return files;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: faultset_corpus <directory>\n");
        return 2;
    }
    const QString directory = QString::fromLocal8Bit(argv[1]);
    const QByteArray v2 = validFile(true);
    const QByteArray v3 = validFile(false);
    bool ok = QDir().mkpath(directory + QStringLiteral("/corrupt")) &&
              writeAll(directory + QStringLiteral("/valid_2d.faultset"), v2) &&
              writeAll(directory + QStringLiteral("/valid_3d.faultset"), v3);
    for (const auto& file : brokenFiles(v2, v3)) {
        const bool emptyByDesign = file.first == QLatin1String("empty");
        ok = ok && (emptyByDesign || !file.second.isEmpty()) &&
             writeAll(directory + QStringLiteral("/corrupt/") + file.first + QStringLiteral(".faultset"),
                      file.second);
    }
    if (!ok) std::fprintf(stderr, "faultset_corpus: could not write the corpus\n");
    return ok ? 0 : 1;
}
