#include "extractjob.h"

#include <algorithm>
#include <memory>
#include <new>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QTemporaryDir>

#include <segmentation/faultpatchlabelimage.h>
#include <synthetic/syntheticvolume.h>
#include <volumeio/segyreader.h>
#include <znbloc.h>
#include <znfaultpatchmanager.h>

#include "extractoutputs.h"
#include "faultsurfaces.h"
#include "interruptibleprogress.h"
#include "lasterror.h"
#include "plantedtruth.h"
#include "processmemory.h"

namespace kfaults {
namespace {

// The likelihood volume and, for the built-in scene, its truth.
struct LoadedInput {
    ZN3DImage<float> likelihood;
    std::unique_ptr<PlantedTruth> truth;
    QString error;
};

LoadedInput readBlocVolume(const QString& path)
{
    LoadedInput in;
    ZNBloc bloc;
    if (!bloc.open(path) ||
        !bloc.readBox(0, 0, 0, bloc.nx(), bloc.ny(), bloc.nz(), in.likelihood))
        in.error = QStringLiteral("%1: not a readable block file").arg(path);
    return in;
}

LoadedInput loadInput(const ExtractOptions& o)
{
    LoadedInput in;
    switch (o.input) {
    case InputKind::Synthetic: {
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
    case InputKind::Segy: {
        volumeio::SegyReadResult r = volumeio::readSegyVolume(o.inputPath);
        in.error = r.error;
        in.likelihood = std::move(r.image);
        return in;
    }
    case InputKind::Raw: {
        volumeio::VolumeReadResult r = volumeio::readRawFloat32Volume(o.inputPath, o.raw);
        in.error = r.error;
        in.likelihood = std::move(r.image);
        return in;
    }
    case InputKind::Bloc:
        return readBlocVolume(o.inputPath);
    }
    return in;
}

int countFaultsWithVoxels(const ZNFaultPatchManager& set)
{
    std::vector<char> isRoot(static_cast<std::size_t>(set.getNumberOfPatch()), 0);
    for (int p = 1; p < set.getNumberOfPatch(); ++p)
        if (set.getPatchVoxels().getCount(p) > 0) {
            const int root = set.getFather(p);
            if (root >= 0 && root < set.getNumberOfPatch()) isRoot[static_cast<std::size_t>(root)] = 1;
        }
    return static_cast<int>(std::count(isRoot.begin(), isRoot.end(), 1));
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

ExtractResult runExtract(const ExtractOptions& o)
{
    LastError::clear();
    QElapsedTimer total;
    total.start();
    const QString settingsProblem = o.sticks.problem();
    if (!settingsProblem.isEmpty()) return failure(settingsProblem);
    if (!QDir().mkpath(o.outputDir))
        return failure(QStringLiteral("%1: cannot create the output folder").arg(o.outputDir));

    StepClock clock;
    clock.start();
    LoadedInput in = loadInput(o);
    if (!in.error.isEmpty()) return failure(in.error);
    if (in.likelihood.isEmpty()) return failure(QStringLiteral("the input volume is empty"));
    clock.stop("input");

    clock.start();
    const fault::AutomaticExtractionSettings& e = o.extraction;
    int sliceCount = 0;
    int labelCounter = 0;
    std::unique_ptr<ZN3DImage<int>> labels(fault::segmentation::getFaultPatchLabelImage(
        &in.likelihood, e.maxLabelCount, sliceCount, labelCounter, e.maxPatchSize,
        e.maxPlaneDeviation, e.growthIterations, e.likelihoodThreshold, -1));
    if (!labels) return failure(LastError::withDetail(QStringLiteral("segmentation failed")));
    in.likelihood = ZN3DImage<float>();  // not needed any more: keeps the peak memory down
    clock.stop("segmentation");

    clock.start();
    std::unique_ptr<ZNFaultPatchManager> set(new (std::nothrow) ZNFaultPatchManager());
    if (!set || !set->init(labels.get()))
        return failure(LastError::withDetail(QStringLiteral("no fault patch in the volume")));
    labels.reset();
    const int patchesBefore = countFaultsWithVoxels(*set);
    clock.stop("faultSet");

    clock.start();
    if (!set->fastContactMerging(e.maxMergeCost, -1)) return failure(QStringLiteral("merging failed"));
    const int faultsAfter = countFaultsWithVoxels(*set);
    clock.stop("merging");

    clock.start();
    const std::vector<fault::FaultSticks> faults = fault::sticksOfAllFaults(*set, o.sticks);
    std::unique_ptr<ZNFaultPatchManager> picked(fault::createPickedFaultSet(faults, *set));
    if (!picked) return failure(QStringLiteral("out of memory building the sticks"));
    if (o.input == InputKind::Segy)
        picked->SetUnitObject(georef::UnitObject(georef::UnitObject::SpatialMetre,
                                                 georef::UnitObject::VerticalMillisecond));
    clock.stop("sticks");

    clock.start();
    core::Array<core::Duplet> duplicates;
    if (!picked->getSameFaultArray(duplicates, -1)) return failure(QStringLiteral("duplicate detection failed"));
    clock.stop("duplicates");

    clock.start();
    // Fault i of the picked set is entry i of `faults`, with id i + 1.
    const SurfaceSettings surfaceSettings = surfaceSettingsFor(picked->getBlocSpace(), o.sticks, o.surfaceMethod);
    std::vector<fault::exchange::TriangleMesh> meshes;
    std::vector<double> areas;
    for (std::size_t i = 0; i < faults.size(); ++i) {
        if (InterruptibleProgress::interrupted()) return failure(QString());
        FaultSurface surface = meshFault(*picked, static_cast<int>(i) + 1, surfaceSettings);
        meshes.push_back(std::move(surface.mesh));
        areas.push_back(surface.area);
    }
    clock.stop("surfaces");

    const ExtractionProducts products{o, *set, *picked, faults, surfaceSettings, meshes, areas, in.truth.get()};
    QJsonObject counts{{"patches", patchesBefore},
                       {"merges", patchesBefore - faultsAfter},
                       {"mergedFaults", faultsAfter},
                       {"faults", static_cast<int>(faults.size())},
                       {"duplicatePairs", duplicates.size()}};

    QTemporaryDir staging(QDir(o.outputDir).filePath(QStringLiteral(".kfaults-partial-XXXXXX")));
    if (!staging.isValid()) return failure(QStringLiteral("%1: cannot write in the output folder").arg(o.outputDir));
    ExtractResult result;
    QStringList staged;
    const QString outputError = writeExtractionOutputs(products, staging.path(), clock.timings(),
                                                       clock.peaks(), counts, total, staged, result.report);
    if (!outputError.isEmpty() || InterruptibleProgress::interrupted()) return failure(outputError);
    for (const QString& file : staged) {
        const QString target = QDir(o.outputDir).absoluteFilePath(QFileInfo(file).fileName());
        QFile::remove(target);
        if (!QFile::rename(file, target))
            return failure(QStringLiteral("%1: cannot be written").arg(target));
        result.files << target;
    }
    return result;
}

} // namespace kfaults
