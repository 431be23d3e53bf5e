// The studio's automatic extraction and its demo.
#include "studiowindow.h"

#include <algorithm>

#include <znextractionsettingsdialog.h>
#include <zneventbus.h>

#include "studioproject.h"

void StudioWindow::extractFaults(ZNVolume* volume, const fault::FaultExtractionSettings& settings)
{
    if (!volume) return;
    // The worker reads the shared samples; the volume may be closed meanwhile.
    std::shared_ptr<const ZN3DImage<float>> image = volume->sharedImage();
    const georef::UnitObject units = volume->units();
    const QString name = tr("Faults of %1").arg(volume->name());
    auto loaded = std::make_shared<LoadedFaultSet>();
    auto note = std::make_shared<QString>();
    runTask(tr("Extract faults of %1").arg(volume->name()),
            [image, units, settings, loaded, note] {
                fault::FaultExtraction x = fault::extractFaults(*image, units, settings);
                *note = x.note;
                *loaded = faultSetOfExtraction(x, settings);
            },
            [this, loaded, name, note] {
                if (!loaded->ok()) {
                    if (loaded->error == QLatin1String("cancelled"))
                        ZNEventBus::sendMessage(ZNEventBus::Information, tr("Extraction cancelled"));
                    else
                        reportFailure(tr("Extraction failed: %1").arg(loaded->error));
                    return false;
                }
                addLoadedFaultSet(*loaded, QString(), name);
                // An empty fault set is a result: the log says why it is empty.
                if (!note->isEmpty()) ZNEventBus::sendMessage(ZNEventBus::Information, *note);
                return true;
            });
}

void StudioWindow::openDemo(int size, quint64 seed)
{
    auto volume = std::make_shared<LoadedVolume>();
    auto faults = std::make_shared<LoadedFaultSet>();
    runTask(tr("Open the demo"),
            [size, seed, volume, faults] {
                *volume = syntheticVolume(size, seed);
                if (!volume->ok()) return;
                fault::FaultExtraction x = fault::extractFaults(volume->volume->image(), volume->volume->units(),
                                                                fault::FaultExtractionSettings());
                *faults = faultSetOfExtraction(x);
            },
            [this, volume, faults] {
                if (!volume->ok() || !faults->ok()) {
                    reportFailure(tr("The demo could not be made: %1").arg(volume->ok() ? faults->error : volume->error));
                    return false;
                }
                const QString name = volume->volume->name();
                m_project->addVolume(std::move(volume->volume));
                addLoadedFaultSet(*faults, QString(), tr("Faults of %1").arg(name));
                emit demoOpened();
                return true;
            });
}

void StudioWindow::chooseAndExtract(ZNVolume* volume)
{
    const QList<ZNVolume*> volumes = m_project->volumes();
    if (volumes.isEmpty()) {
        reportFailure(tr("Open a fault-likelihood volume first (File > Open Volume)"));
        return;
    }
    QStringList names;
    for (const ZNVolume* v : volumes) names << v->name();
    ZNExtractionSettingsDialog dialog(names, this);
    ZNVolume* chosen = volume ? volume : m_currentVolume;
    dialog.setVolumeIndex(chosen ? std::max(0, static_cast<int>(volumes.indexOf(chosen))) : 0);
    if (dialog.exec() != QDialog::Accepted || dialog.volumeIndex() < 0) return;
    extractFaults(volumes[dialog.volumeIndex()], dialog.settings());
}
