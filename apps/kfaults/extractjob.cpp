#include "extractjob.h"

#include <algorithm>
#include <memory>
#include <new>

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>

#include <faultextractionfromseismic.h>
#include <faultextractionpipeline.h>
#include <synthetic/syntheticseismic.h>
#include <synthetic/syntheticvolume.h>
#include <volumeio/volumesource.h>

#include "extractoutputs.h"
#include "interruptibleprogress.h"
#include "lasterror.h"
#include "outputfolder.h"
#include "plantedtruth.h"
#include "processmemory.h"
#include "stagedfiles.h"

namespace kfaults {
namespace {

// The likelihood volume, the units of its world coordinates and, for the built-in scene,
// its truth.
struct LoadedInput {
    ZN3DImage<float> likelihood;
    georef::UnitObject units;
    std::unique_ptr<PlantedTruth> truth;
    QString error;
};

LoadedInput loadInput(const ExtractOptions& o)
{
    LoadedInput in;
    if (o.input == InputKind::Synthetic && o.fromSeismic) {
        const int n = o.syntheticSize;
        fault::synthetic::SyntheticSeismic seismic =
            fault::synthetic::generateSyntheticSeismic(fault::synthetic::defaultSeismicScene(n, n, n, o.seed));
        if (!seismic.ok()) {
            in.error = seismic.error;
            return in;
        }
        in.truth = std::make_unique<PlantedTruth>(seismic.faults, seismic.plantedIds);
        in.likelihood = std::move(seismic.amplitude);   // seismic amplitude until the attribute
        return in;
    }
    if (o.input == InputKind::Synthetic) {
        const int n = o.syntheticSize;
        fault::synthetic::SyntheticVolume volume =
            fault::synthetic::generateSyntheticVolume(fault::synthetic::defaultScene(n, n, n, o.seed));
        if (!volume.ok()) {
            in.error = volume.error;
            return in;
        }
        in.truth = std::make_unique<PlantedTruth>(volume);   // releases the planted-id image
        in.likelihood = std::move(volume.likelihood);
        return in;
    }
    volumeio::VolumeReadResult r = volumeio::readVolume(volumeSourceOf(o));
    in.error = r.error;
    in.likelihood = std::move(r.image);
    in.units = r.units;
    return in;
}

// Times the steps of the run, in milliseconds, and the process's peak resident memory
// (bytes) at the end of each, in the order they ran.
class StepClock {
public:
    void start() { m_timer.start(); }
    void stop(const char* step)
    {
        constexpr double kNanosecondsPerMillisecond = 1e6;
        m_timings.insert(QLatin1String(step), static_cast<double>(m_timer.nsecsElapsed()) / kNanosecondsPerMillisecond);
        m_peaks.insert(QLatin1String(step), static_cast<double>(peakResidentBytes()));
        m_timer.start();
    }
    const QJsonObject& timings() const { return m_timings; }
    const QJsonObject& peaks() const { return m_peaks; }

private:
    QElapsedTimer m_timer;
    QJsonObject m_timings;
    QJsonObject m_peaks;
};

ExtractResult failure(const QString& what)
{
    ExtractResult r;
    r.cancelled = InterruptibleProgress::interrupted();
    r.error = r.cancelled ? QStringLiteral("cancelled") : what;
    return r;
}

} // namespace

volumeio::VolumeSource volumeSourceOf(const ExtractOptions& o)
{
    return volumeSource(o.input, o.inputPath, o.raw);
}

ExtractResult runExtract(const ExtractOptions& o)
{
    LastError::clear();
    QElapsedTimer total;
    total.start();
    const QString settingsProblem = o.sticks.problem();
    if (!settingsProblem.isEmpty()) return failure(settingsProblem);
    OutputFolder folder(o.outputDir);
    if (!folder.isWritable()) return failure(folder.problem());

    StepClock clock;
    clock.start();
    LoadedInput in = loadInput(o);
    if (!in.error.isEmpty()) return failure(in.error);
    if (in.likelihood.isEmpty()) return failure(QStringLiteral("the input volume is empty"));
    clock.stop("input");

    fault::FaultExtractionSettings settings{o.extraction, o.sticks, o.surfaceMethod, true};
    const auto observer = [&clock](const char* step) { clock.stop(step); };
    fault::FaultExtraction x =
        o.fromSeismic ? fault::extractFaultsFromSeismic(in.likelihood, in.units, o.attribute, settings, -1, observer)
                      : fault::extractFaults(in.likelihood, in.units, settings, -1, observer);
    if (!x.ok()) return failure(LastError::withDetail(x.error));

    const ExtractionProducts products{o, *x.automatic, *x.picked, x.faults, x.surfaceSettings,
                                      x.meshes, x.areas, in.truth.get(), x.note};
    QJsonObject counts{{"patches", x.patchCount},
                       {"merges", x.patchCount - x.mergedFaultCount},
                       {"mergedFaults", x.mergedFaultCount},
                       {"crossingLeftoversJoined", x.leftoversJoined},
                       {"crossingLeftoversDropped", x.leftoversDropped},
                       {"faults", static_cast<int>(x.faults.size())},
                       {"duplicatePairs", x.duplicates.size()}};

    if (!folder.prepare()) return failure(folder.problem());
    ExtractResult result;
    QStringList staged;
    const QString outputError = writeExtractionOutputs(products, folder.stagingPath(), clock.timings(),
                                                       clock.peaks(), counts, total, staged, result.report);
    // Errors name the files where the user will look for them, not where they are staged.
    if (!outputError.isEmpty() || InterruptibleProgress::interrupted())
        return failure(QString(outputError).replace(folder.stagingPath(), QDir(o.outputDir).path()));
    if (!folder.commit(staged, result.files, o.testStopAfterMoves)) return failure(folder.problem());
    result.note = x.note;
    return result;
}

} // namespace kfaults
