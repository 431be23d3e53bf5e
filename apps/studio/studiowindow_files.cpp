// The studio's files: opening (in the background), saving, importing and exporting.
#include "studiowindow.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>

#include <exchange/faultsetsticks.h>
#include <exchange/gocadtsurf.h>
#include <faultsurfacemeshing.h>
#include <zn3dfaultpatch.h>
#include <zneventbus.h>
#include <znrawvolumedialog.h>

#include "faultsetdocument.h"
#include "studioproject.h"
#include "studiotree.h"

namespace {

const QString kFaultSetSuffix = QStringLiteral("faultset");

QString faultSetFilter()
{
    return QObject::tr("Fault sets (*.faultset);;All files (*)");
}

// The file dialog filters of the stick formats, in the order of the format enumeration.
QStringList stickFilters()
{
    return {QObject::tr("Charisma fault sticks (*.txt *.dat *.cha)"),
            QObject::tr("IESX / Kingdom fault sticks (*.txt *.dat *.iesx)"),
            QObject::tr("OpendTect fault sticks (*.txt *.dat *.fss)"),
            QObject::tr("GOCAD PLine (*.pl)")};
}

fault::exchange::StickFormat formatOfFilter(const QString& filter)
{
    const int index = stickFilters().indexOf(filter);
    return static_cast<fault::exchange::StickFormat>(index < 0 ? 0 : index);
}

// The path `path` with `suffix` added when the user typed none.
QString withSuffix(const QString& path, const QString& suffix)
{
    return QFileInfo(path).suffix().isEmpty() ? path + QLatin1Char('.') + suffix : path;
}

} // namespace

void StudioWindow::openFiles(const QStringList& paths)
{
    for (const QString& path : paths) {
        if (!QFileInfo(path).isFile()) {
            reportFailure(tr("%1: no such file").arg(path));
            continue;
        }
        const QString suffix = QFileInfo(path).suffix().toLower();
        if (suffix == kFaultSetSuffix) {
            openFaultSet(path);
            continue;
        }
        fault::exchange::StickFormat stickFormat;
        const volumeio::VolumeFormat format = volumeio::formatOfFileName(path);
        if (format == volumeio::VolumeFormat::Raw && fault::exchange::guessStickFormat(path, stickFormat)) {
            importSticks(path, stickFormat);
            continue;
        }
        volumeio::VolumeSource source{format, path, {}};
        if (format == volumeio::VolumeFormat::Raw && !askRawLayout(path, source)) continue;
        openVolume(source);
    }
}

void StudioWindow::openVolume(const volumeio::VolumeSource& source)
{
    auto loaded = std::make_shared<LoadedVolume>();
    const QString path = source.path;
    runTask(tr("Open %1").arg(QFileInfo(path).fileName()), [source, loaded] { *loaded = readVolumeFile(source); },
            [this, loaded, path] {
                if (!loaded->ok()) {
                    reportFailure(loaded->error);
                    return false;
                }
                loaded->volume->setName(m_project->uniqueName(loaded->volume->name()));
                m_project->addVolume(std::move(loaded->volume));
                m_recent.add(path);
                return true;
            });
}

void StudioWindow::openFaultSet(const QString& path)
{
    if (FaultSetDocument* open = m_project->documentWithPath(path)) {
        m_studioTree->selectFault(open, -9999);  // already open: shown, not read twice
        emit taskFinished(tr("Open %1").arg(QFileInfo(path).fileName()), true);
        return;
    }
    auto loaded = std::make_shared<LoadedFaultSet>();
    runTask(tr("Open %1").arg(QFileInfo(path).fileName()), [path, loaded] { *loaded = readFaultSetFile(path); },
            [this, loaded, path] {
                if (!loaded->ok()) {
                    reportFailure(loaded->error);
                    return false;
                }
                addLoadedFaultSet(*loaded, path, QFileInfo(path).completeBaseName());
                m_recent.add(path);
                return true;
            });
}

void StudioWindow::importSticks(const QString& path, fault::exchange::StickFormat format)
{
    auto loaded = std::make_shared<LoadedFaultSet>();
    runTask(tr("Import %1").arg(QFileInfo(path).fileName()),
            [path, format, loaded] { *loaded = importStickFile(path, format); },
            [this, loaded, path] {
                if (!loaded->ok()) {
                    reportFailure(loaded->error);
                    return false;
                }
                // An import is a new fault set: saving it asks for its file.
                addLoadedFaultSet(*loaded, QString(), QFileInfo(path).completeBaseName());
                return true;
            });
}

void StudioWindow::addLoadedFaultSet(LoadedFaultSet& loaded, const QString& path, const QString& name)
{
    const QString unique = m_project->uniqueName(name);
    loaded.set->setObjectName(unique);
    auto document = std::make_unique<FaultSetDocument>(std::move(loaded.set), std::move(loaded.surfaces),
                                                       path, unique);
    document->setMergeCandidates(loaded.mergeCandidates, loaded.mergeCandidateCosts);
    FaultSetDocument* added = m_project->addFaultSet(std::move(document));
    if (path.isEmpty()) added->markModified();
}

bool StudioWindow::saveFaultSet(FaultSetDocument* document, const QString& path)
{
    if (!document) return false;
    const QString target = path.isEmpty() ? document->path() : path;
    if (target.isEmpty()) {
        chooseAndSaveAs(document);
        return !document->isModified();
    }
    ZNFaultPatchManager* set = document->faultSet();
    QList<ZN3DFaultPatch*> meshes;
    for (int faultId : document->faultIds()) meshes << document->surface(faultId);
    set->setWithMesh(true);
    ZNEventBus::clearLastErrorOfThisThread();
    if (!set->writePickedFault(target, false, &meshes, true)) {
        const QString reason = ZNEventBus::lastErrorOfThisThread();
        reportFailure(reason.isEmpty() ? tr("%1: cannot be written").arg(target)
                                       : tr("%1: cannot be written (%2)").arg(target, reason));
        return false;
    }
    document->setPath(target);
    document->markSaved();
    m_recent.add(target);
    ZNEventBus::sendMessage(ZNEventBus::Information, tr("Saved %1").arg(target));
    return true;
}

bool StudioWindow::exportSticks(FaultSetDocument* document, const QString& path,
                                fault::exchange::StickFormat format)
{
    if (!document) return false;
    const fault::exchange::ExchangeStatus status =
        fault::exchange::writeSticks(path, format, fault::exchange::sticksOfFaultSet(*document->faultSet()));
    if (!status) {
        reportFailure(status.message);
        return false;
    }
    ZNEventBus::sendMessage(ZNEventBus::Information, tr("Exported the sticks to %1").arg(path));
    return true;
}

bool StudioWindow::exportSurfaces(FaultSetDocument* document, const QString& path)
{
    if (!document) return false;
    std::vector<fault::exchange::TriangleMesh> meshes;
    for (int faultId : document->faultIds())
        if (const ZN3DFaultPatch* surface = document->surface(faultId)) meshes.push_back(fault::triangleMeshOf(*surface));
    const auto domain = document->faultSet()->GetUnitObject().isTime() ? fault::exchange::VerticalDomain::Time
                                                                       : fault::exchange::VerticalDomain::Depth;
    const fault::exchange::ExchangeStatus status = fault::exchange::writeGocadTSurf(path, meshes, domain);
    if (!status) {
        reportFailure(status.message);
        return false;
    }
    ZNEventBus::sendMessage(ZNEventBus::Information, tr("Exported the surfaces to %1").arg(path));
    return true;
}

bool StudioWindow::closeFaultSet(FaultSetDocument* document)
{
    if (!document) return false;
    if (document->isModified()) {
        const QMessageBox::StandardButton answer = m_askUnsaved(document);
        if (answer == QMessageBox::Cancel) return false;
        if (answer == QMessageBox::Save && !saveFaultSet(document)) return false;
    }
    m_project->removeFaultSet(document);
    return true;
}

void StudioWindow::updateRecentMenu()
{
    m_recentMenu->clear();
    for (const QString& path : m_recent.paths())
        m_recentMenu->addAction(path, this, [this, path] { openFiles({path}); });
    m_recentMenu->setEnabled(!m_recentMenu->isEmpty());
}

bool StudioWindow::askRawLayout(const QString& path, volumeio::VolumeSource& source)
{
    ZNRawVolumeDialog dialog(path, this);
    if (dialog.exec() != QDialog::Accepted) return false;
    source.format = volumeio::VolumeFormat::Raw;
    source.raw = dialog.layout();
    return true;
}

void StudioWindow::chooseAndOpenVolume()
{
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Open Volume"), QString(),
        tr("Volumes (*.sgy *.segy *.bloc *.raw *.f32 *.bin);;SEG-Y (*.sgy *.segy);;Block files (*.bloc);;"
           "Raw float32 (*)"));
    if (!path.isEmpty()) openFiles({path});
}

void StudioWindow::chooseAndOpenFaultSet()
{
    const QStringList paths = QFileDialog::getOpenFileNames(this, tr("Open Fault Set"), QString(), faultSetFilter());
    for (const QString& path : paths) openFaultSet(path);
}

void StudioWindow::chooseAndImportSticks()
{
    QString filter;
    const QString path = QFileDialog::getOpenFileName(this, tr("Import Sticks"), QString(),
                                                      stickFilters().join(QStringLiteral(";;")), &filter);
    if (!path.isEmpty()) importSticks(path, formatOfFilter(filter));
}

void StudioWindow::chooseAndSaveAs(FaultSetDocument* document)
{
    if (!document) return;
    const QString path = QFileDialog::getSaveFileName(this, tr("Save Fault Set"), document->path(), faultSetFilter());
    if (!path.isEmpty()) saveFaultSet(document, withSuffix(path, kFaultSetSuffix));
}

void StudioWindow::chooseAndExportSticks(FaultSetDocument* document)
{
    if (!document) return;
    QString filter;
    const QString path = QFileDialog::getSaveFileName(this, tr("Export Sticks"), QString(),
                                                      stickFilters().join(QStringLiteral(";;")), &filter);
    if (!path.isEmpty()) exportSticks(document, path, formatOfFilter(filter));
}

void StudioWindow::chooseAndExportSurfaces(FaultSetDocument* document)
{
    if (!document) return;
    const QString path = QFileDialog::getSaveFileName(this, tr("Export Surfaces"), QString(),
                                                      tr("GOCAD TSurf (*.ts)"));
    if (!path.isEmpty()) exportSurfaces(document, withSuffix(path, QStringLiteral("ts")));
}
