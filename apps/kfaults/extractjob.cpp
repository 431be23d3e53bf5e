#include "extractjob.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QRegularExpression>

#include <faultextractionfromseismic.h>
#include <faultextractionpipeline.h>
#include <synthetic/syntheticseismic.h>
#include <synthetic/syntheticvolume.h>
#include <volumeio/volumeslabreader.h>
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

bool parseMemorySize(const QString& text, double& bytes)
{
    static const QRegularExpression kSize(QStringLiteral("^\\s*([0-9]+(?:\\.[0-9]*)?)\\s*([kmgt]?)(?:i?b)?\\s*$"),
                                          QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = kSize.match(text);
    if (!m.hasMatch()) return false;
    const QString unit = m.captured(2).toLower();
    const int power = unit.isEmpty() ? 0 : QStringLiteral("kmgt").indexOf(unit) + 1;
    const double value = m.captured(1).toDouble() * std::pow(1024.0, power);
    if (!(value >= 1.0) || !std::isfinite(value)) return false;
    bytes = value;
    return true;
}

namespace {

// How a run uses memory: in memory, or slab by slab within a budget for the whole run.
struct MemoryPlan {
    bool slabs = false;
    double budget = 0.0;
    bool automatic = false;  // chosen because the volume would not fit
    QString note;            // said on stderr when automatic
};

QString gibibytes(double bytes)
{
    constexpr double kGibibyte = 1024.0 * 1024.0 * 1024.0;
    return QString::number(bytes / kGibibyte, 'f', 2) + QStringLiteral(" GiB");
}

MemoryPlan planMemory(const ExtractOptions& o, const volumeio::VolumeSlabReader& reader)
{
    MemoryPlan plan;
    if (o.memoryBudget > 0.0) {
        plan.slabs = true;
        plan.budget = o.memoryBudget;
        return plan;
    }
    const double available = static_cast<double>(availableMemoryBytes());
    const double needed = kInMemoryFactor * reader.volumeBytes();
    if (available <= 0.0 || needed <= available) return plan;
    constexpr double kAvailableShare = 0.5;   // the rest for the system's file cache and others
    plan.slabs = true;
    plan.automatic = true;
    plan.budget = kAvailableShare * available;
    plan.note = QStringLiteral("%1: the volume (%2) would need about %3 in memory, more than the %4 available: "
                               "extracting slab by slab within %5 (--memory-budget sets it)")
                    .arg(o.inputPath, gibibytes(reader.volumeBytes()), gibibytes(needed), gibibytes(available),
                         gibibytes(plan.budget));
    return plan;
}

// The report's account of how the run used memory.
QJsonObject memoryJson(const MemoryPlan& plan, const fault::FaultExtraction& x)
{
    if (!plan.slabs) return QJsonObject{{"mode", "memory"}};
    return QJsonObject{{"mode", "slabs"},
                       {"budgetBytes", plan.budget},
                       {"budgetChosen", plan.automatic ? "automatic" : "given"},
                       {"segmentationWindows", x.segmentationWindows},
                       {"seedSlicesPerWindow", x.seedSlicesPerWindow},
                       {"labelSlabSlices", x.labelSlabSlices}};
}

// Writes the outputs of extraction `x` into `folder` (prepared) and moves them into place.
ExtractResult writeOutputs(const ExtractOptions& o, OutputFolder& folder, const fault::FaultExtraction& x,
                           const PlantedTruth* truth, const StepClock& clock, const QElapsedTimer& total,
                           const QJsonObject& memory)
{
    const ExtractionProducts products{o, *x.automatic, *x.picked, x.faults, x.surfaceSettings,
                                      x.meshes, x.areas, truth, x.note, memory};
    QJsonObject counts{{"patches", x.patchCount},
                       {"merges", x.patchCount - x.mergedFaultCount},
                       {"mergedFaults", x.mergedFaultCount},
                       {"crossingLeftoversJoined", x.leftoversJoined},
                       {"crossingLeftoversDropped", x.leftoversDropped},
                       {"faults", static_cast<int>(x.faults.size())},
                       {"duplicatePairs", x.duplicates.size()}};

    if (folder.stagingPath().isEmpty() && !folder.prepare()) return failure(folder.problem());
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

// Bytes kept out of the extraction's own budget: the fault sets, the reader's mapped
// window and the outputs' slabs.
double reserveOf(double budget)
{
    constexpr double kReserveShare = 0.15;
    constexpr double kLeastReserve = 16.0 * (1 << 20);
    return std::max(kLeastReserve, kReserveShare * budget);
}

// The run slab by slab within plan.budget.
ExtractResult runInSlabs(const ExtractOptions& o, OutputFolder& folder, volumeio::VolumeSlabReader& reader,
                         const MemoryPlan& plan, StepClock& clock, const QElapsedTimer& total)
{
    const double held = static_cast<double>(std::max(0LL, residentBytes()));
    const double reserve = reserveOf(plan.budget);
    const double extractionBudget = plan.budget - held - reserve;
    if (extractionBudget <= 0.0)
        return failure(QStringLiteral("a memory budget of %1 bytes is too small: the program holds %2 bytes and "
                                      "keeps %3 for the faults")
                           .arg(plan.budget, 0, 'f', 0).arg(held, 0, 'f', 0).arg(reserve, 0, 'f', 0));
    if (!folder.prepare()) return failure(folder.problem());
    clock.stop("input");
    QString readError;
    const fault::LikelihoodSlabs slabs{reader.blocSpace(), [&reader, &readError](int z0, int count, float* out) {
                                           readError = reader.read(z0, count, out);
                                           return readError.isEmpty();
                                       }};
    fault::FaultExtractionSettings settings{o.extraction, o.sticks, o.surfaceMethod, true};
    const fault::SlabExtractionSettings slabSettings{extractionBudget, folder.stagingPath()};
    const auto observer = [&clock](const char* step) { clock.stop(step); };
    fault::FaultExtraction x = fault::extractFaults(slabs, reader.units(), settings, slabSettings, -1, observer);
    if (!x.ok()) return failure(readError.isEmpty() ? LastError::withDetail(x.error) : readError);
    ExtractResult result = writeOutputs(o, folder, x, nullptr, clock, total, memoryJson(plan, x));
    result.memoryNote = plan.note;
    return result;
}

} // namespace

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
    const bool fromFile = o.input != InputKind::Synthetic && !o.fromSeismic;
    if (!fromFile && o.memoryBudget > 0.0)
        return failure(QStringLiteral("--memory-budget works on a likelihood volume read from a file "
                                      "(--input, without --from-seismic)"));
    MemoryPlan plan;
    if (fromFile) {
        volumeio::VolumeSlabReader reader;
        const QString openError = reader.open(volumeSourceOf(o));
        if (!openError.isEmpty()) return failure(openError);
        plan = planMemory(o, reader);
        if (plan.slabs) return runInSlabs(o, folder, reader, plan, clock, total);
    }
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
    return writeOutputs(o, folder, x, in.truth.get(), clock, total, memoryJson(plan, x));
}

} // namespace kfaults
