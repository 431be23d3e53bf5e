#include "studioloading.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <exchange/faultsetsticks.h>
#include <faultmergecandidates.h>
#include <faultpalette.h>
#include <synthetic/syntheticvolume.h>
#include <zn3dfaultpatch.h>
#include <zneventbus.h>
#include <znfaultpatchmanager.h>
#include <znprogressbarmgr.h>

namespace {

QString failure(const QString& path, const QString& what)
{
    const QString reason = ZNEventBus::lastErrorOfThisThread();
    const QString name = QFileInfo(path).fileName();
    return reason.isEmpty() ? QStringLiteral("%1: %2").arg(name, what)
                            : QStringLiteral("%1: %2 (%3)").arg(name, what, reason);
}

// Moves everything of `loaded` to the GUI thread.
void handOver(LoadedFaultSet& loaded)
{
    moveToGuiThread(loaded.set.get());
    for (auto& surface : loaded.surfaces) moveToGuiThread(surface.second.get());
}

// The fault set read from `path`, with the surfaces of its faults, handed to the GUI
// thread; "cancelled" when the meshing was.
LoadedFaultSet withSurfaces(std::unique_ptr<ZNFaultPatchManager> set, const QString& path)
{
    LoadedFaultSet loaded;
    set->setObjectName(QFileInfo(path).completeBaseName());
    if (!makeSurfaces(*set, loaded.surfaces)) {
        loaded.surfaces.clear();
        loaded.error = QStringLiteral("cancelled");
        return loaded;
    }
    loaded.set = std::move(set);
    handOver(loaded);
    return loaded;
}

} // namespace

void moveToGuiThread(QObject* object)
{
    if (object && QCoreApplication::instance()) object->moveToThread(QCoreApplication::instance()->thread());
}

bool makeSurfaces(ZNFaultPatchManager& set, std::map<int, std::unique_ptr<ZN3DFaultPatch>>& surfaces)
{
    const QList<ZN3DFaultPatchLight*> lights = set.getFaultLightList();
    const int bar = ZNProgressBarMgr::createProgressBar(QStringLiteral("Meshing faults"), lights.size());
    bool cancelled = false;
    for (const ZN3DFaultPatchLight* light : lights) {
        if ((cancelled = ZNProgressBarMgr::isProgressBarCancelled(bar))) break;
        std::unique_ptr<ZN3DFaultPatch> surface(set.createPicked3DFaultPatch(light));
        if (surface) {
            if (surface->getNumberOfFacettes() == 0) surface->updateMeshWithPickedPoint();
            surfaces[light->getFaultId()] = std::move(surface);
        }
        ZNProgressBarMgr::incrementProgressBar(bar);
    }
    ZNProgressBarMgr::closeProgressBar(bar);
    return !cancelled;
}

LoadedFaultSet readFaultSetFile(const QString& path)
{
    LoadedFaultSet loaded;
    ZNEventBus::clearLastErrorOfThisThread();
    auto set = std::make_unique<ZNFaultPatchManager>();
    if (!set->readPickedFault(path, false, -1)) {
        loaded.error = failure(path, QStringLiteral("not a readable fault set"));
        return loaded;
    }
    return withSurfaces(std::move(set), path);
}

LoadedFaultSet importStickFile(const QString& path, fault::exchange::StickFormat format)
{
    LoadedFaultSet loaded;
    ZNEventBus::clearLastErrorOfThisThread();
    fault::exchange::StickSet sticks;
    const fault::exchange::ExchangeStatus status = fault::exchange::readSticks(path, format, sticks);
    if (!status) {
        loaded.error = status.message;
        return loaded;
    }
    std::unique_ptr<ZNFaultPatchManager> set(fault::exchange::faultSetFromSticks(sticks));
    if (!set) {
        loaded.error = failure(path, QStringLiteral("not enough memory for its faults"));
        return loaded;
    }
    return withSurfaces(std::move(set), path);
}

LoadedFaultSet faultSetOfExtraction(fault::FaultExtraction& x, const fault::FaultExtractionSettings& settings)
{
    LoadedFaultSet loaded;
    if (!x.ok() || !x.picked) {
        loaded.error = x.error.isEmpty() ? QStringLiteral("no fault set") : x.error;
        return loaded;
    }
    if (x.automatic)
        fault::mergeCandidatesOfExtraction(*x.automatic, x.faults, settings.extraction.maxMergeCost,
                                           settings.sticks.minVoxelsPerFault, loaded.mergeCandidates,
                                           loaded.mergeCandidateCosts, -1);
    x.automatic.reset();  // the studio works on the sticks; the voxels are not kept
    const QList<ZN3DFaultPatchLight*> lights = x.picked->getFaultLightList();
    int index = 0;
    for (ZN3DFaultPatchLight* light : lights) {
        // Extracted faults take the palette's colours, so neighbours in the list differ.
        QPen pen = light->getPen();
        pen.setColor(fault::faultColour(index++));
        light->setPen(pen);
        std::unique_ptr<ZN3DFaultPatch> surface(x.picked->createPicked3DFaultPatch(light));
        if (!surface) continue;
        surface->setMeshingMethod(x.surfaceSettings.method);
        surface->setUtmPrecision(x.surfaceSettings.meshResolution);
        surface->setTimePrecision(x.surfaceSettings.zSampling);
        surface->setInterpolationSize(x.surfaceSettings.interpolationSize);
        // Fault i + 1 of the picked set is mesh i of the extraction.
        const std::size_t i = static_cast<std::size_t>(light->getFaultId() - 1);
        if (i < x.meshes.size()) {
            const fault::exchange::TriangleMesh& mesh = x.meshes[i];
            core::Array<core::vec3> points;
            core::Array<ZNFacette> facettes;
            const int vertexCount = static_cast<int>(mesh.vertices.size());
            const int triangleCount = static_cast<int>(mesh.triangles.size());
            if (points.resize(vertexCount) && facettes.resize(triangleCount)) {
                for (int v = 0; v < vertexCount; ++v) points[v] = mesh.vertices[static_cast<std::size_t>(v)];
                for (int t = 0; t < triangleCount; ++t)
                    for (int c = 0; c < 3; ++c)
                        facettes[t].index[c] = static_cast<quint32>(mesh.triangles[static_cast<std::size_t>(t)][c]);
                surface->setMesh(std::move(points), std::move(facettes));
            }
        }
        x.picked->findFaultLight(light->getFaultId())->copy(surface.get(), false);
        loaded.surfaces[light->getFaultId()] = std::move(surface);
    }
    loaded.set = std::move(x.picked);
    handOver(loaded);
    return loaded;
}

LoadedVolume readVolumeFile(const volumeio::VolumeSource& source)
{
    LoadedVolume loaded;
    volumeio::VolumeReadResult r = volumeio::readVolume(source);
    if (!r.ok()) {
        loaded.error = r.error;
        return loaded;
    }
    auto image = std::make_shared<const ZN3DImage<float>>(std::move(r.image));
    loaded.volume = std::make_unique<ZNVolume>(image, r.units, QFileInfo(source.path).fileName(), source.path);
    loaded.volume->setLines(r.lines);
    return loaded;
}

LoadedVolume syntheticVolume(int size, quint64 seed)
{
    LoadedVolume loaded;
    fault::synthetic::SyntheticVolume v =
        fault::synthetic::generateSyntheticVolume(fault::synthetic::defaultScene(size, size, size, seed));
    if (!v.ok()) {
        loaded.error = v.error;
        return loaded;
    }
    auto image = std::make_shared<const ZN3DImage<float>>(std::move(v.likelihood));
    loaded.volume = std::make_unique<ZNVolume>(image, georef::UnitObject(),
                                               QStringLiteral("Synthetic likelihood %1^3").arg(size));
    return loaded;
}
