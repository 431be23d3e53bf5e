#include "likelihoodjob.h"

#include <memory>

#include <QDir>
#include <QSaveFile>
#include <QTemporaryDir>

#include <attribute/faultattribute.h>
#include <synthetic/syntheticseismic.h>
#include <volumeio/volumesource.h>
#include <znbloc.h>

#include "attributepicture.h"
#include "interruptibleprogress.h"
#include "lasterror.h"
#include "picturefile.h"
#include "stagedfiles.h"

namespace kfaults {
namespace {

using fault::attribute::SeismicSlices;

// The seismic of a run: in memory, or a block file read slab by slab.
struct SeismicInput {
    ZN3DImage<float> image;
    ZNBloc bloc;
    std::unique_ptr<SeismicSlices> slices;
    georef::UnitObject units;
    QString error;
};

void loadInput(const LikelihoodOptions& o, SeismicInput& in)
{
    switch (o.input) {
    case InputKind::Synthetic: {
        fault::synthetic::SyntheticSeismic s = fault::synthetic::generateSyntheticSeismic(
            fault::synthetic::defaultSeismicScene(o.syntheticSize, o.syntheticSize, o.syntheticSize, o.seed));
        in.error = s.error;
        in.image = std::move(s.amplitude);
        break;
    }
    case InputKind::Segy:
    case InputKind::Raw: {
        volumeio::VolumeReadResult r = volumeio::readVolume(volumeSource(o.input, o.inputPath, o.raw));
        in.error = r.error;
        in.image = std::move(r.image);
        in.units = r.units;
        break;
    }
    case InputKind::Bloc:
        if (!in.bloc.open(o.inputPath)) {
            in.error = QStringLiteral("%1: not a readable block file").arg(o.inputPath);
            return;
        }
        in.units = in.bloc.unitObject();
        in.slices = std::make_unique<fault::attribute::BlocSeismicSlices>(in.bloc);
        return;
    }
    if (in.error.isEmpty() && in.image.isEmpty()) in.error = QStringLiteral("the input volume is empty");
    if (in.error.isEmpty()) in.slices = std::make_unique<fault::attribute::ImageSeismicSlices>(in.image);
}

// The inline section at index x (crossline across, samples down) and the time slice at
// index z of a volume read slice by slice; false when a slice cannot be read.
bool readSections(SeismicSlices& volume, int x, int z, Section& inlineSection, Section& slice)
{
    const georef::BlocSpace& space = volume.blocSpace();
    inlineSection.values = ZN3DImage<float>(space.ny(), space.nz(), 1);
    if (inlineSection.values.isNull() || !volume.read(z, 1, slice.values)) return false;
    for (int k = 0; k < space.nz(); ++k) {
        ZN3DImage<float> one;
        if (!volume.read(k, 1, one)) return false;
        for (int y = 0; y < space.ny(); ++y) inlineSection.values(y, k, 0) = one(x, y, 0);
    }
    return true;
}

QString writePicture(SeismicSlices& seismic, const QString& likelihoodPath, const QString& path)
{
    const georef::BlocSpace& space = seismic.blocSpace();
    const int x = space.nx() / 2, z = space.nz() / 2;
    Section seismicInline{QStringLiteral("Seismic, inline %1").arg(x), {}};
    Section seismicSlice{QStringLiteral("Seismic, slice %1").arg(z), {}};
    Section likelihoodInline{QStringLiteral("Likelihood, inline %1").arg(x), {}};
    Section likelihoodSlice{QStringLiteral("Likelihood, slice %1").arg(z), {}};
    ZNBloc bloc;
    if (!bloc.open(likelihoodPath)) return QStringLiteral("%1: cannot be read back").arg(likelihoodPath);
    fault::attribute::BlocSeismicSlices likelihood(bloc);
    if (!readSections(seismic, x, z, seismicInline, seismicSlice) ||
        !readSections(likelihood, x, z, likelihoodInline, likelihoodSlice))
        return QStringLiteral("the sections of the picture cannot be read");
    QString problem;
    if (!savePng(renderAttributePicture(seismicInline, likelihoodInline, seismicSlice, likelihoodSlice), path, &problem))
        return problem;
    return {};
}

bool saveText(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

// The raw float32 copy of block file `name`.bloc and its header, one volume in memory.
QString writeRaw(const QDir& dir, const QString& name, const QString& what, QStringList& written)
{
    ZNBloc bloc;
    ZN3DImage<float> volume;
    const QString blocPath = dir.filePath(name + QStringLiteral(".bloc"));
    if (!bloc.open(blocPath) || !bloc.readBox(0, 0, 0, bloc.nx(), bloc.ny(), bloc.nz(), volume))
        return QStringLiteral("%1: cannot be read back").arg(blocPath);
    const QString rawName = name + QStringLiteral(".float32.raw");
    const QString error = volumeio::writeRawVolume<float>(dir.filePath(rawName), volume,
                                                          volumeio::ByteOrder::LittleEndian, volumeio::kImageOrder);
    if (!error.isEmpty()) return error;
    written << dir.filePath(rawName);
    const QString header = QStringLiteral("# %1: one float32 per voxel\n"
                                          "file %2\nnInline %3\nnCrossline %4\nnSample %5\nsampleType float32\n"
                                          "byteOrder little\naxisOrder xyz\nnoValue -9999\n")
                               .arg(what, rawName).arg(volume.nx()).arg(volume.ny()).arg(volume.nz());
    const QString headerPath = dir.filePath(name + QStringLiteral(".float32.txt"));
    if (!saveText(headerPath, header.toUtf8())) return QStringLiteral("%1: cannot be written").arg(headerPath);
    written << headerPath;
    return {};
}

LikelihoodResult failure(const QString& what)
{
    LikelihoodResult r;
    r.cancelled = InterruptibleProgress::interrupted();
    r.error = r.cancelled ? QStringLiteral("cancelled") : what;
    return r;
}

} // namespace

LikelihoodResult runLikelihood(const LikelihoodOptions& o)
{
    LastError::clear();
    const QString problem = o.attribute.problem();
    if (!problem.isEmpty()) return failure(problem);
    if (!QDir().mkpath(o.outputDir))
        return failure(QStringLiteral("%1: cannot create the output folder").arg(o.outputDir));
    SeismicInput in;
    loadInput(o, in);
    if (!in.error.isEmpty()) return failure(in.error);

    QTemporaryDir staging(QDir(o.outputDir).filePath(QStringLiteral(".kfaults-partial-XXXXXX")));
    if (!staging.isValid()) return failure(QStringLiteral("%1: cannot write in the output folder").arg(o.outputDir));
    const QDir dir(staging.path());
    auto blocOf = [&](const char* name) { return dir.filePath(QLatin1String(name) + QStringLiteral(".bloc")); };
    const fault::attribute::FaultAttributeFiles files{blocOf(LikelihoodNames::likelihood),
                                                       blocOf(LikelihoodNames::strike), blocOf(LikelihoodNames::dip)};
    const QString error = fault::attribute::computeFaultAttributeFiles(*in.slices, files, in.units, o.attribute, -1);
    if (!error.isEmpty()) return failure(error);
    QStringList staged{files.likelihood, files.strike, files.dip};
    if (o.pictures) {
        const QString path = dir.filePath(LikelihoodNames::picture);
        const QString pictureError = writePicture(*in.slices, files.likelihood, path);
        if (!pictureError.isEmpty()) return failure(pictureError);
        staged << path;
    }
    in.slices.reset();
    in.image = ZN3DImage<float>();   // the raw copies read one volume at a time
    const std::pair<const char*, const char*> raws[] = {
        {LikelihoodNames::likelihood, "fault likelihood, 0 to 1"},
        {LikelihoodNames::strike, "strike of the fault, world degrees"},
        {LikelihoodNames::dip, "dip of the fault, world degrees"}};
    for (const auto& [name, what] : raws) {
        if (InterruptibleProgress::interrupted()) return failure(QString());
        const QString rawError = writeRaw(dir, QLatin1String(name), QLatin1String(what), staged);
        if (!rawError.isEmpty()) return failure(rawError);
    }
    LikelihoodResult result;
    const QString moveError = moveIntoPlace(staged, o.outputDir, result.files);
    if (!moveError.isEmpty()) return failure(moveError);
    return result;
}

} // namespace kfaults
