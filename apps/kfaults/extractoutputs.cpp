#include "extractoutputs.h"

#include <algorithm>
#include <cerrno>
#include <memory>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>

#include <core/conventions.h>
#include <exchange/gocadtsurf.h>
#include <synthetic/faultmatcher.h>
#include <synthetic/strikedip.h>
#include <volumeio/rawvolume.h>
#include <znfaultpatchmanager.h>
#include <znwritefailure.h>

#include "commands.h"
#include "faultmesh.h"
#include "faultvolumeoutput.h"
#include "faultunfolding.h"
#include "mapviewpicture.h"
#include "perspectivepicture.h"
#include "picturefile.h"
#include "plantedtruth.h"
#include "processmemory.h"
#include "unfoldedpicture.h"

namespace kfaults {
namespace {

QString writePictures(const ExtractionProducts& p, const QDir& dir, QStringList& written)
{
    std::vector<FaultMesh> drawn;
    drawn.reserve(p.meshes.size());
    for (std::size_t i = 0; i < p.meshes.size(); ++i)
        drawn.push_back({p.meshes[i], faultColour(static_cast<int>(i))});
    QString problem;
    MapViewSettings map;
    map.horizontalUnit = QStringLiteral("voxels");
    const QString mapPath = dir.filePath(OutputNames::mapView);
    if (!savePng(renderMapView(drawn, map), mapPath, &problem)) return problem;
    written << mapPath;
    PerspectiveSettings view;
    view.horizontalUnit = QStringLiteral("voxels");
    const QString viewPath = dir.filePath(OutputNames::perspective);
    if (!savePng(renderPerspective(drawn, view), viewPath, &problem)) return problem;
    written << viewPath;

    std::vector<std::size_t> bySize(p.faults.size());
    for (std::size_t i = 0; i < bySize.size(); ++i) bySize[i] = i;
    std::stable_sort(bySize.begin(), bySize.end(), [&](std::size_t a, std::size_t b) {
        return p.faults[a].voxelCount > p.faults[b].voxelCount;
    });
    const std::size_t unfolded = std::min<std::size_t>(bySize.size(), std::max(0, p.options.unfoldedPictures));
    for (std::size_t k = 0; k < unfolded; ++k) {
        const fault::FaultSticks& f = p.faults[bySize[k]];
        UnfoldedSettings settings;
        settings.title = QStringLiteral("%1 unfolded on its plane (cells: patches)").arg(f.name);
        const QString path = dir.filePath(QStringLiteral("unfolded_fault_%1.png").arg(f.faultId));
        if (!savePng(renderUnfolded(unfoldFault(p.automatic, f), settings), path, &problem)) return problem;
        written << path;
    }
    return QString();
}

QJsonObject settingsJson(const ExtractOptions& o)
{
    const fault::AutomaticExtractionSettings& e = o.extraction;
    const fault::SticksFromVoxelsSettings& s = o.sticks;
    return QJsonObject{{"likelihoodThreshold", e.likelihoodThreshold},
                       {"maxPatchSize", e.maxPatchSize},
                       {"maxPlaneDeviation", e.maxPlaneDeviation},
                       {"growthIterations", e.growthIterations},
                       {"maxLabelCount", e.maxLabelCount},
                       {"maxMergeCost", e.maxMergeCost},
                       {"sectionSpacing", s.sectionSpacing},
                       {"sectionHalfWidth", s.sectionHalfWidth},
                       {"pointSpacing", s.pointSpacing},
                       {"minPointsPerStick", s.minPointsPerStick},
                       {"minSticksPerFault", s.minSticksPerFault},
                       {"minVoxelsPerFault", s.minVoxelsPerFault}};
}

QJsonObject surfaceJson(const fault::SurfaceSettings& s)
{
    return QJsonObject{{"method", s.methodName()},
                       {"meshResolution", s.meshResolution},
                       {"zSampling", s.zSampling},
                       {"interpolationSize", s.interpolationSize}};
}

// The grid axes of every volume read and written: which index is which.
QJsonObject axesJson()
{
    return QJsonObject{{"x", "inline"}, {"y", "crossline"}, {"z", "sample (time or depth, downwards)"}};
}

QJsonObject inputJson(const ExtractOptions& o, const georef::BlocSpace& space)
{
    static const char* const kKinds[] = {"synthetic", "segy", "raw", "bloc"};
    QJsonObject in{{"kind", kKinds[static_cast<int>(o.input)]},
                   {"size", QJsonArray{space.nx(), space.ny(), space.nz()}},
                   {"axes", axesJson()}};
    if (o.input == InputKind::Synthetic) in.insert("seed", QString::number(o.seed));
    else in.insert("path", QDir().absoluteFilePath(o.inputPath));
    if (o.input == InputKind::Raw) {
        static const char* const kChoices[] = {"given", "detected", "undecided (big-endian)"};
        in.insert("axisOrder", volumeio::axisOrderName(o.raw.axes));
        in.insert("byteOrder", volumeio::byteOrderName(o.raw.byteOrder));
        in.insert("byteOrderChosen", kChoices[static_cast<int>(o.byteOrderChoice)]);
    }
    in.insert("seismic", o.fromSeismic);
    return in;
}

// The fault volume's form and the order of its samples.
QJsonObject faultVolumeJson(const ExtractOptions& o)
{
    return QJsonObject{{"form", faultVolumeFormName(o.faultVolume)},
                       {"axisOrder", kFaultVolumeAxisOrder},
                       {"axes", axesJson()},
                       {"noValue", core::kNoValue}};
}

QJsonArray faultsJson(const ExtractionProducts& p)
{
    QJsonArray faults;
    const georef::BlocSpace& space = p.automatic.getBlocSpace();
    for (std::size_t i = 0; i < p.faults.size(); ++i) {
        const fault::FaultSticks& f = p.faults[i];
        const fault::synthetic::StrikeDip sd =
            fault::synthetic::strikeDipOfWorldNormal(fault::synthetic::gridNormalToWorld(f.normal, space));
        faults.append(QJsonObject{{"id", f.faultId},
                                  {"name", f.name},
                                  {"voxelCount", static_cast<double>(f.voxelCount)},
                                  {"sticks", static_cast<int>(f.sticks.size())},
                                  {"strike", sd.strike},
                                  {"dip", sd.dip},
                                  {"area", p.areas[i]}});
    }
    return faults;
}

// Which extracted fault covers each planted fault of the built-in scene.
QJsonObject matchJson(const PlantedTruth& truth, const ZN3DImage<int>& labels)
{
    using namespace fault::synthetic;
    const ZN3DImage<int> plantedIds = truth.plantedIds();
    if (plantedIds.isNull()) return QJsonObject{{"error", "out of memory for the planted faults"}};
    const FaultMatchReport r = matchFaults(labels, plantedIds, truth.faults());
    if (!r.ok()) return QJsonObject{{"error", r.error}};
    QJsonArray planted;
    bool everyOneIsOneFault = true;
    std::vector<int> bestLabels;
    for (const PlantedFaultMatch& m : r.planted) {
        OrientationError error{core::kNoValueReal, core::kNoValueReal};
        for (const ExtractedFaultMatch& e : r.extracted)
            if (e.label == m.bestLabel) error = e.error;
        everyOneIsOneFault = everyOneIsOneFault && m.significantLabels == 1;
        bestLabels.push_back(m.bestLabel);
        planted.append(QJsonObject{{"name", truth.faults()[static_cast<std::size_t>(m.plantedId)].name},
                                   {"voxelCount", static_cast<double>(m.voxelCount)},
                                   {"fault", m.bestLabel},
                                   {"recoveredFraction", m.recoveredFraction},
                                   {"pieces", m.significantLabels},
                                   {"strikeError", error.strike},
                                   {"dipError", error.dip}});
    }
    std::sort(bestLabels.begin(), bestLabels.end());
    const bool apart = std::adjacent_find(bestLabels.begin(), bestLabels.end()) == bestLabels.end();
    return QJsonObject{{"planted", planted},
                       {"everyPlantedFaultIsOneFault", everyOneIsOneFault},
                       {"plantedFaultsKeptApart", apart}};
}

} // namespace

QString writeExtractionOutputs(const ExtractionProducts& p, const QString& folder,
                               QJsonObject timings, QJsonObject peaks, const QJsonObject& counts,
                               const QElapsedTimer& total, QStringList& written,
                               QJsonObject& report)
{
    QElapsedTimer timer;
    timer.start();
    const QDir dir(folder);
    const QString setPath = dir.filePath(OutputNames::faultSet);
    errno = 0;  // a failure names the system call that failed after this point
    if (!p.picked.writePickedFault(setPath, false, nullptr, false)) return cannotBeWritten(setPath, errno);
    written << setPath;
    const QString surfacePath = dir.filePath(OutputNames::surfaces);
    // A raw volume or the built-in scene says nothing of its vertical domain.
    const auto domain = p.picked.GetUnitObject().isTime() ? fault::exchange::VerticalDomain::Time
                                                          : fault::exchange::VerticalDomain::Unknown;
    const fault::exchange::ExchangeStatus status = fault::exchange::writeGocadTSurf(surfacePath, p.meshes, domain);
    if (!status) return QStringLiteral("%1: %2").arg(surfacePath, status.detail);
    written << surfacePath;

    const QString volumeError = writeFaultVolume(p.automatic, dir, p.options.faultVolume, written);
    if (!volumeError.isEmpty()) return volumeError;
    QJsonObject match;
    if (p.truth) {
        // The built-in volume is small and held anyway; its labels are released before
        // the pictures are drawn.
        std::unique_ptr<ZN3DImage<int>> labels(p.automatic.createFaultLabelImage());
        match = labels ? matchJson(*p.truth, *labels) : QJsonObject{{"error", "out of memory for the fault volume"}};
    }
    if (p.options.pictures) {
        const QString pictureError = writePictures(p, dir, written);
        if (!pictureError.isEmpty()) return pictureError;
    }
    constexpr double kNanosecondsPerMillisecond = 1e6;
    timings.insert("outputs", static_cast<double>(timer.nsecsElapsed()) / kNanosecondsPerMillisecond);
    timings.insert("total", static_cast<double>(total.nsecsElapsed()) / kNanosecondsPerMillisecond);
    const long long peak = peakResidentBytes();
    peaks.insert("outputs", static_cast<double>(peak));
    const georef::BlocSpace& space = p.automatic.getBlocSpace();
    QJsonObject memory = p.memoryMode;
    memory.insert("volumeBytes", static_cast<double>(space.voxelCount()) * sizeof(float));
    memory.insert("peakResidentBytes", static_cast<double>(peak));
    memory.insert("peakResidentBytesAfterStep", peaks);

    report = QJsonObject{{"input", inputJson(p.options, space)},
                         {"settings", settingsJson(p.options)},
                         {"surfaces", surfaceJson(p.surfaceSettings)},
                         {"faultVolume", faultVolumeJson(p.options)},
                         {"timingsMs", timings},
                         {"memory", memory},
                         {"counts", counts},
                         {"faults", faultsJson(p)}};
    if (p.truth) report.insert("match", match);
    if (!p.note.isEmpty()) report.insert("note", p.note);
    const QString reportPath = dir.filePath(OutputNames::report);
    const QString reportError = saveTextFile(reportPath, QJsonDocument(report).toJson(QJsonDocument::Indented));
    if (!reportError.isEmpty()) return reportError;
    written << reportPath;
    return QString();
}

} // namespace kfaults
