#include "volumeinput.h"

#include <map>

#include <CLI/CLI.hpp>
#include <QFileInfo>

namespace kfaults {

void addVolumeOptions(CLI::App& c, VolumeArguments& a, const std::string& inputHelp)
{
    c.add_option("-i,--input", a.input, inputHelp);
    c.add_option("--format", a.format, "Input format: auto (by extension), segy, raw, bloc")
        ->check(CLI::IsMember({"auto", "segy", "raw", "bloc"}))->capture_default_str();
    c.add_option("--size", a.size, "Raw input: samples along inline, crossline, sample")->expected(3);
    c.add_option("--byte-order", a.byteOrder,
                 "Raw input: big or little; by default the order in which the samples read as "
                 "plausible numbers (said on stderr)")
        ->check(CLI::IsMember({"big", "little"}));
    c.add_option("--axis-order", a.axisOrder, "Raw input: axes fastest first, x inline, y crossline, z sample")
        ->capture_default_str();
    c.add_option("--spacing", a.spacing, "Raw input: world units per voxel along x, y, z")
        ->expected(3)->check(CLI::PositiveNumber);
}

bool inputKindOf(const VolumeArguments& a, InputKind& kind, QString& problem)
{
    if (a.input.empty()) {
        kind = InputKind::Synthetic;
        return true;
    }
    std::string format = a.format;
    if (format == "auto")
        format = volumeio::formatName(volumeio::formatOfFileName(QString::fromStdString(a.input))).toStdString();
    static const std::map<std::string, InputKind> kKinds{
        {"segy", InputKind::Segy}, {"raw", InputKind::Raw}, {"bloc", InputKind::Bloc}};
    const auto it = kKinds.find(format);
    if (it == kKinds.end()) {
        problem = QStringLiteral("unknown input format \"%1\"").arg(QString::fromStdString(format));
        return false;
    }
    kind = it->second;
    return true;
}

bool resolveInput(const VolumeArguments& a, InputKind& kind, QString& path, volumeio::RawVolumeLayout& raw,
                  QString& problem, ByteOrderChoice* choice)
{
    if (!inputKindOf(a, kind, problem)) return false;
    path = QString::fromStdString(a.input);
    if (kind != InputKind::Synthetic && !QFileInfo::exists(path)) {
        problem = QStringLiteral("%1: no such file").arg(path);
        return false;
    }
    if (kind != InputKind::Synthetic && QFileInfo(path).isDir()) {
        problem = QStringLiteral("%1: a folder, not a volume file").arg(path);
        return false;
    }
    return kind != InputKind::Raw || rawLayoutOf(a, raw, problem, choice);
}

QString byteOrderNote(const QString& path, const volumeio::RawVolumeLayout& raw, ByteOrderChoice choice)
{
    if (choice != ByteOrderChoice::Detected) return QString();
    return QStringLiteral("%1: samples read %2-endian (detected; --byte-order sets it)")
        .arg(path, volumeio::byteOrderName(raw.byteOrder));
}

volumeio::VolumeSource volumeSource(InputKind kind, const QString& path, const volumeio::RawVolumeLayout& raw)
{
    volumeio::VolumeSource source;
    source.path = path;
    source.raw = raw;
    source.format = kind == InputKind::Segy   ? volumeio::VolumeFormat::Segy
                    : kind == InputKind::Bloc ? volumeio::VolumeFormat::Bloc
                                              : volumeio::VolumeFormat::Raw;
    return source;
}

bool rawLayoutOf(const VolumeArguments& a, volumeio::RawVolumeLayout& layout, QString& problem,
                 ByteOrderChoice* choice)
{
    if (a.size.size() != 3) {
        problem = QStringLiteral("a raw volume needs --size NINLINE NCROSSLINE NSAMPLE");
        return false;
    }
    layout.nInline = a.size[0];
    layout.nCrossline = a.size[1];
    layout.nSample = a.size[2];
    if (!volumeio::parseAxisOrder(QString::fromStdString(a.axisOrder), layout.axes)) {
        problem = QStringLiteral("--axis-order takes three distinct letters of x, y, z, fastest first");
        return false;
    }
    layout.spacing = core::vec3(a.spacing[0], a.spacing[1], a.spacing[2]);
    ByteOrderChoice chosen = ByteOrderChoice::Given;
    if (a.byteOrder.empty()) {
        bool decided = false;
        layout.byteOrder = volumeio::detectByteOrder(QString::fromStdString(a.input), &decided);
        chosen = decided ? ByteOrderChoice::Detected : ByteOrderChoice::Undecided;
    } else {
        layout.byteOrder = a.byteOrder == "little" ? volumeio::ByteOrder::LittleEndian
                                                   : volumeio::ByteOrder::BigEndian;
    }
    if (choice) *choice = chosen;
    return true;
}

} // namespace kfaults
