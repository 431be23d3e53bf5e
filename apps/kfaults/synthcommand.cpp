#include <memory>

#include <CLI/CLI.hpp>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <synthetic/syntheticseismic.h>
#include <synthetic/syntheticvolume.h>
#include <volumeio/rawvolume.h>
#include <znbloc.h>

#include "commandline.h"
#include "commands.h"
#include "lasterror.h"

namespace kfaults {
namespace {

struct SynthArguments {
    std::string out = "kfaults-synth";
    int size = 128;
    std::uint64_t seed = 1;
    bool seismic = false;        // the built-in seismic instead of the likelihood volume
    double signalToNoise = 2.0;  // of the seismic
};

template <class T>
bool writeBloc(const QString& path, const ZN3DImage<T>& image, int type)
{
    ZNBloc bloc;
    return bloc.create(path, image.blocSpace(), 0, image.nz(), type) &&
           bloc.writeSlices(0, image, 0, image.nz()) && bloc.close();
}

QJsonArray plantedJson(const std::vector<fault::synthetic::PlantedFault>& faults,
                       const std::vector<double>& throws = {})
{
    using fault::synthetic::PlantedFault;
    QJsonArray out;
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const PlantedFault& f = faults[i];
        QJsonObject o{{"id", static_cast<int>(i)},
                      {"name", f.name},
                      {"shape", f.shape == PlantedFault::Shape::Disc ? "disc" : "plane"},
                      {"centre", QJsonArray{f.centre.x, f.centre.y, f.centre.z}},
                      {"strike", f.orientation.strike},
                      {"dip", f.orientation.dip},
                      {"width", f.width}};
        if (f.shape == PlantedFault::Shape::Disc) {
            o.insert("radiusAlongStrike", f.radiusAlongStrike);
            o.insert("radiusAlongDip", f.radiusAlongDip);
        }
        if (i < throws.size()) o.insert("throw", throws[i]);
        out.append(o);
    }
    return out;
}

bool saveJson(const QString& path, const QJsonObject& description)
{
    QSaveFile file(path);
    const QByteArray bytes = QJsonDocument(description).toJson(QJsonDocument::Indented);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

// The built-in seismic: amplitude as a block file and raw float32, planted ids, truth.
void runSynthSeismic(const SynthArguments& a, CommandIo& io)
{
    const QString folder = QString::fromStdString(a.out);
    fault::synthetic::SeismicScene scene = fault::synthetic::defaultSeismicScene(a.size, a.size, a.size, a.seed);
    scene.signalToNoise = a.signalToNoise;
    const fault::synthetic::SyntheticSeismic v = fault::synthetic::generateSyntheticSeismic(scene);
    if (stopIfInterrupted(io)) return;  // before the folder is touched
    if (!v.ok()) return io.fail(v.error, kExitFailure);
    if (!QDir().mkpath(folder))
        return io.fail(QStringLiteral("%1: cannot create the output folder").arg(folder), kExitFailure);
    const QDir dir(folder);
    const QString seismic = dir.filePath("seismic.bloc");
    const QString raw = dir.filePath("seismic.float32.raw");
    const QString planted = dir.filePath("planted_ids.bloc");
    const QString truth = dir.filePath("planted_faults.json");
    if (!writeBloc(seismic, v.amplitude, ZNBloc::Float32) || !writeBloc(planted, v.plantedIds, ZNBloc::Int32))
        return io.fail(LastError::withDetail(QStringLiteral("%1: cannot be written").arg(folder)), kExitFailure);
    const QString rawError =
        volumeio::writeRawVolume<float>(raw, v.amplitude, volumeio::ByteOrder::BigEndian, volumeio::kTraceOrder);
    if (!rawError.isEmpty()) return io.fail(rawError, kExitFailure);
    const QJsonObject description{{"size", QJsonArray{a.size, a.size, a.size}},
                                  {"seed", QString::number(a.seed)},
                                  {"signalToNoise", a.signalToNoise},
                                  {"peakFrequency", scene.peakFrequency},
                                  {"raw", QJsonObject{{"file", "seismic.float32.raw"},
                                                      {"byteOrder", "big"},
                                                      {"axisOrder", "zyx"}}},
                                  {"faults", plantedJson(v.faults, v.throwSamples)}};
    if (!saveJson(truth, description)) return io.fail(QStringLiteral("%1: cannot be written").arg(truth), kExitFailure);
    for (const QString& f : {seismic, raw, planted, truth}) io.out << f.toStdString() << '\n';
}

void runSynth(const SynthArguments& a, CommandIo& io)
{
    if (a.seismic) return runSynthSeismic(a, io);
    const QString folder = QString::fromStdString(a.out);
    const fault::synthetic::SyntheticVolume v =
        fault::synthetic::generateSyntheticVolume(fault::synthetic::defaultScene(a.size, a.size, a.size, a.seed));
    if (stopIfInterrupted(io)) return;  // before the folder is touched
    if (!v.ok()) return io.fail(v.error, kExitFailure);
    if (!QDir().mkpath(folder))
        return io.fail(QStringLiteral("%1: cannot create the output folder").arg(folder), kExitFailure);
    const QDir dir(folder);
    const QString likelihood = dir.filePath("likelihood.bloc");
    const QString raw = dir.filePath("likelihood.float32.raw");
    const QString planted = dir.filePath("planted_ids.bloc");
    const QString truth = dir.filePath("planted_faults.json");
    if (!writeBloc(likelihood, v.likelihood, ZNBloc::Float32) || !writeBloc(planted, v.plantedIds, ZNBloc::Int32))
        return io.fail(LastError::withDetail(QStringLiteral("%1: cannot be written").arg(folder)), kExitFailure);
    const QString rawError =
        volumeio::writeRawVolume<float>(raw, v.likelihood, volumeio::ByteOrder::BigEndian, volumeio::kTraceOrder);
    if (!rawError.isEmpty()) return io.fail(rawError, kExitFailure);
    const QJsonObject description{{"size", QJsonArray{a.size, a.size, a.size}},
                                  {"seed", QString::number(a.seed)},
                                  {"raw", QJsonObject{{"file", "likelihood.float32.raw"},
                                                      {"byteOrder", "big"},
                                                      {"axisOrder", "zyx"}}},
                                  {"faults", plantedJson(v.faults)}};
    if (!saveJson(truth, description))
        return io.fail(QStringLiteral("%1: cannot be written").arg(truth), kExitFailure);
    for (const QString& f : {likelihood, raw, planted, truth}) io.out << f.toStdString() << '\n';
}

} // namespace

void addSynthCommand(CLI::App& tool, CommandIo& io)
{
    auto args = std::make_shared<SynthArguments>();
    CLI::App* c = tool.add_subcommand(
        "synth", "Write the built-in synthetic fault-likelihood volume (block file and raw "
                 "float32, big-endian, trace order), its planted-fault ids (block file) and "
                 "its planted faults (JSON). Prints the files written.");
    c->add_option("-o,--out", args->out, "Output folder (created when missing)")->capture_default_str();
    c->add_option("--size", args->size, "Voxels along each axis")->check(CLI::Range(16, 1024))->capture_default_str();
    c->add_option("--seed", args->seed, "Seed of the noise")->capture_default_str();
    c->add_flag("--seismic", args->seismic,
                "Write the built-in synthetic seismic instead (seismic.bloc, seismic.float32.raw, "
                "planted_ids.bloc, planted_faults.json with each fault's throw)");
    c->add_option("--snr", args->signalToNoise, "Seismic: rms of the signal over rms of the noise, 0 for none")
        ->check(CLI::NonNegativeNumber)->capture_default_str();
    c->callback([args, &io] { runSynth(*args, io); });
}

} // namespace kfaults
