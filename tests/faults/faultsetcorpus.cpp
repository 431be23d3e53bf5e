#include "faultsetcorpus.h"

#include <functional>
#include <limits>

#include <QBuffer>
#include <QDir>
#include <QTemporaryDir>
#include <QtEndian>

#include <testfiles.h>
#include <znobjectfile.h>
#include <znobjectfilewriter.h>

namespace faultsetcorpus {

namespace {
constexpr qint64 kReserve = 64;  // header room of the corpus files
constexpr int kPatches = 5;
constexpr int kFathers = 4 * kPatches;  // bytes of the fathers

using HeaderEdit = std::function<void(QDomElement& objectHeader)>;

// `bytes` with its object header edited in place (the data unchanged).
QByteArray withHeader(const QByteArray& bytes, const HeaderEdit& edit)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("f.faultset"));
    ZNObjectFile::Header header;
    if (!writeFileBytes(path, bytes) || !ZNObjectFile::readHeader(path, header)) return {};
    edit(header.objectHeader);
    if (!ZNObjectFile::rewriteHeader(path, header.document)) return {};
    return readFileBytes(path);
}

HeaderEdit setValue(const QString& key, const QString& value)
{
    return [=](QDomElement& h) { h.firstChildElement(key).setAttribute(QStringLiteral("value"), value); };
}

HeaderEdit setDescriptorId(const QString& id)
{
    return [=](QDomElement& h) {
        h.firstChildElement(QStringLiteral("ZN3DFaultPatchLight"))
            .firstChildElement(QStringLiteral("faultId"))
            .setAttribute(QStringLiteral("value"), id);
    };
}

qint64 dataOffsetOf(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return ZNObjectFile::getDataOffset(buffer);
}

QByteArray withInt(QByteArray bytes, qint64 at, qint32 value)
{
    qToLittleEndian<qint32>(value, reinterpret_cast<uchar*>(bytes.data() + at));
    return bytes;
}

QByteArray withReal(QByteArray bytes, qint64 at, double value)
{
    qToLittleEndian<double>(value, reinterpret_cast<uchar*>(bytes.data() + at));
    return bytes;
}
} // namespace

QByteArray withHeaderValue(const QByteArray& bytes, const QString& key, const QString& value)
{
    return withHeader(bytes, setValue(key, value));
}

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

    const QList<QPair<int, QString>> faults = {{1, QStringLiteral("F1")}, {3, QStringLiteral("North")}};
    for (const auto& fault : faults) {
        ZN3DFaultPatchLight* light = set.insertNewFaultLight(fault.first);
        light->setPen(QPen(QColor(10 * fault.first, 200, 30), 2.5, Qt::DashLine));
        light->SetFaultName(fault.second);
        light->setInterpolationSize(20 + fault.first);
        light->setTransparency(0.25f);
    }
}

QByteArray fileOf(const ZNFaultPatchManager& set, bool twoD)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("f.faultset"));
    ZNObjectFileWriter writer(path);
    const qint64 offset = writer.create(set.createHeaderDocument(), kReserve);
    const bool ok = offset >= 0 &&
                    set.writePickedFaultData(*writer.device(), offset, twoD, nullptr, false) &&
                    writer.commit();
    return ok ? readFileBytes(path) : QByteArray();
}

QByteArray validFile(bool twoD)
{
    ZNFaultPatchManager set;
    fill(set, twoD);
    return fileOf(set, twoD);
}

QList<QPair<QString, QByteArray>> brokenFiles()
{
    const QByteArray v2 = validFile(true);
    const QByteArray v3 = validFile(false);
    const qint64 d2 = dataOffsetOf(v2);
    const qint64 d3 = dataOffsetOf(v3);
    const qint64 header = ZNObjectFile::kGlobalHeaderSize;
    const qint64 count1In2D = d2 + kFathers + 36;  // after patch 0's count and rectangle
    const qint64 count1In3D = d3 + kFathers + 4;

    QByteArray garbage = v2;
    for (qint64 i = header; i < header + 200; ++i) garbage[int(i)] = static_cast<char>(i * 37);
    QByteArray badXml = v2;
    badXml.replace("</globalObject>", "</globalObjekt>");
    QByteArray hugeHeader = v2;
    const QByteArray sizeKey = "headerSize value=\"";
    const int at = hugeHeader.indexOf(sizeKey) + sizeKey.size();
    hugeHeader.replace(at, hugeHeader.indexOf('"', at) - at, "99999999");
    const int maxInt = std::numeric_limits<int>::max();

    return {
        {QStringLiteral("empty.faultset"), QByteArray()},
        {QStringLiteral("truncated_in_global_header.faultset"), v2.left(1000)},
        {QStringLiteral("truncated_in_header.faultset"), v2.left(int(header) + 100)},
        {QStringLiteral("truncated_at_data.faultset"), v2.left(int(d2))},
        {QStringLiteral("truncated_in_fathers.faultset"), v2.left(int(d2) + 10)},
        {QStringLiteral("truncated_in_count.faultset"), v2.left(int(d2) + kFathers + 2)},
        {QStringLiteral("truncated_in_rectangle.faultset"), v2.left(int(d2) + kFathers + 20)},
        {QStringLiteral("truncated_in_points.faultset"), v2.left(int(count1In2D) + 4 + 40)},
        {QStringLiteral("truncated_last_byte.faultset"), v2.left(v2.size() - 1)},
        {QStringLiteral("3d_truncated_in_points.faultset"), v3.left(int(count1In3D) + 4 + 30)},
        {QStringLiteral("3d_truncated_last_byte.faultset"), v3.left(v3.size() - 1)},
        {QStringLiteral("garbage_header.faultset"), garbage},
        {QStringLiteral("bad_xml.faultset"), badXml},
        {QStringLiteral("huge_header_size.faultset"), hugeHeader},
        {QStringLiteral("not_a_fault_set.faultset"),
         withHeader(v2, [](QDomElement& h) { h.setTagName(QStringLiteral("ZN3DObjectDraw")); })},
        {QStringLiteral("unknown_version.faultset"), withHeader(v2, setValue("Version", "4"))},
        {QStringLiteral("negative_version.faultset"), withHeader(v2, setValue("Version", "-1"))},
        {QStringLiteral("version_not_a_number.faultset"), withHeader(v2, setValue("Version", "three"))},
        {QStringLiteral("zero_patches.faultset"), withHeader(v2, setValue("numberOfPatch", "0"))},
        {QStringLiteral("more_patches_than_elements.faultset"),
         withHeader(v2, setValue("numberOfPatch", "6"))},
        {QStringLiteral("huge_patch_count.faultset"),
         withHeader(v2, setValue("numberOfPatch", QString::number(maxInt)))},
        {QStringLiteral("count_1000001.faultset"), withInt(v2, count1In2D, 1000001)},
        {QStringLiteral("negative_count.faultset"), withInt(v2, count1In2D, -5)},
        {QStringLiteral("count_beyond_file.faultset"), withInt(v2, count1In2D, 1000)},
        {QStringLiteral("3d_count_1000001.faultset"), withInt(v3, count1In3D, 1000001)},
        {QStringLiteral("father_out_of_range.faultset"), withInt(v2, d2 + 8, 99)},
        {QStringLiteral("negative_father.faultset"), withInt(v2, d2 + 8, -1)},
        {QStringLiteral("father_loop.faultset"), withInt(withInt(v2, d2 + 4, 2), d2 + 8, 1)},
        {QStringLiteral("descriptor_id_0.faultset"), withHeader(v2, setDescriptorId("0"))},
        {QStringLiteral("descriptor_id_beyond.faultset"), withHeader(v2, setDescriptorId("5"))},
        {QStringLiteral("nan_coordinate.faultset"),
         withReal(v2, count1In2D + 4 + 8, std::numeric_limits<double>::quiet_NaN())},
        {QStringLiteral("3d_infinite_coordinate.faultset"),
         withReal(v3, count1In3D + 4, std::numeric_limits<double>::infinity())},
    };
}

QString committedDirectory() { return QStringLiteral(KORVALITH_TEST_DATA_DIR "/faultset"); }

bool regenerate(const QString& directory)
{
    QDir().mkpath(directory + QStringLiteral("/corrupt"));
    bool ok = writeFileBytes(directory + QStringLiteral("/valid_2d.faultset"), validFile(true));
    ok = writeFileBytes(directory + QStringLiteral("/valid_3d.faultset"), validFile(false)) && ok;
    for (const auto& file : brokenFiles())
        ok = writeFileBytes(directory + QStringLiteral("/corrupt/") + file.first, file.second) && ok;
    return ok;
}

} // namespace faultsetcorpus
