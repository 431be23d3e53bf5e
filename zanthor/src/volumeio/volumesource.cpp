#include "volumeio/volumesource.h"

#include <QFileInfo>

#include "volumeio/segyreader.h"
#include "zneventbus.h"
#include "znbloc.h"

namespace volumeio {
namespace {

struct FormatName {
    VolumeFormat format;
    const char* name;
};
constexpr FormatName kFormatNames[] = {
    {VolumeFormat::Segy, "segy"}, {VolumeFormat::Raw, "raw"}, {VolumeFormat::Bloc, "bloc"}};

// The numbering of a regular grid of lines; a grid whose numbers do not step evenly is
// numbered by index.
georef::LineNumbering lineNumberingOf(const SegyInfo& info)
{
    const auto regular = [](const std::vector<int>& numbers, int& first, int& step) {
        if (numbers.empty()) return;
        const int candidate = numbers.size() > 1 ? numbers[1] - numbers[0] : 1;
        for (std::size_t i = 1; i < numbers.size(); ++i)
            if (numbers[i] - numbers[i - 1] != candidate) return;
        first = numbers[0];
        step = candidate;
    };
    georef::LineNumbering lines;
    regular(info.inlineNumbers, lines.firstInline, lines.inlineStep);
    regular(info.crosslineNumbers, lines.firstCrossline, lines.crosslineStep);
    return lines;
}

} // namespace

georef::UnitObject segyUnits()
{
    return georef::UnitObject(georef::UnitObject::SpatialMetre,
                              georef::UnitObject::VerticalMillisecond);
}

VolumeFormat formatOfFileName(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("sgy") || suffix == QLatin1String("segy")) return VolumeFormat::Segy;
    if (suffix == QLatin1String("bloc")) return VolumeFormat::Bloc;
    return VolumeFormat::Raw;
}

QString formatName(VolumeFormat format)
{
    for (const FormatName& f : kFormatNames)
        if (f.format == format) return QLatin1String(f.name);
    return QString();
}

bool formatFromName(const QString& name, VolumeFormat& out)
{
    for (const FormatName& f : kFormatNames)
        if (name == QLatin1String(f.name)) {
            out = f.format;
            return true;
        }
    return false;
}

VolumeReadResult readBlocVolume(const QString& path)
{
    VolumeReadResult result;
    ZNBloc bloc;
    if (!bloc.open(path)) {
        result.error = reportVolumeError(ZNEventBus::FileError, path,
                                         QStringLiteral("not a readable block file"));
        return result;
    }
    // A block that opens holds all its samples: when they cannot be read whole, memory
    // for them is what is missing unless an image of their size can be had.
    if (!bloc.readBox(0, 0, 0, bloc.nx(), bloc.ny(), bloc.nz(), result.image)) {
        result.image = ZN3DImage<float>();
        const bool fits = !ZN3DImage<float>(georef::BlocSpace(bloc.nx(), bloc.ny(), bloc.nz())).isNull();
        result.error = fits ? reportVolumeError(ZNEventBus::FileError, path,
                                                QStringLiteral("the samples of the block file cannot be read"))
                            : reportVolumeError(ZNEventBus::Error, path,
                                                QStringLiteral("not enough memory for the volume"));
        return result;
    }
    result.units = bloc.unitObject();
    return result;
}

VolumeReadResult readVolume(const VolumeSource& source)
{
    switch (source.format) {
    case VolumeFormat::Segy: {
        SegyReadResult r = readSegyVolume(source.path);
        VolumeReadResult result{std::move(r.image), std::move(r.error), segyUnits(), {}};
        result.lines = lineNumberingOf(r.info);
        return result;
    }
    case VolumeFormat::Raw:
        return readRawFloat32Volume(source.path, source.raw);
    case VolumeFormat::Bloc:
        return readBlocVolume(source.path);
    }
    VolumeReadResult unknown;
    unknown.error = reportVolumeError(ZNEventBus::Error, source.path, QStringLiteral("unknown volume format"));
    return unknown;
}

} // namespace volumeio
