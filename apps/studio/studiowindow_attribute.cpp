// The studio's fault likelihood: the attribute of an open seismic volume, computed on a
// worker, its volumes joining the project.
#include "studiowindow.h"

#include <algorithm>

#include <attribute/faultattribute.h>
#include <znattributesettingsdialog.h>
#include <zneventbus.h>
#include <znobjecttree.h>
#include <znsectionview.h>

#include "studioproject.h"
#include "studiotree.h"
#include "studioviews.h"

namespace {

// What the attribute's volumes take from the seismic's: its units and line numbers.
struct SeismicOrigin {
    QString name;
    georef::UnitObject units;
    georef::LineNumbering lines;
};

// A volume of the attribute, on the seismic's grid, with its lines and units.
std::unique_ptr<ZNVolume> attributeVolume(ZN3DImage<float>&& samples, const SeismicOrigin& seismic, const QString& name)
{
    auto volume = std::make_unique<ZNVolume>(std::make_shared<const ZN3DImage<float>>(std::move(samples)),
                                             seismic.units, name);
    volume->setLines(seismic.lines);
    return volume;
}

// Strike and dip are angles, not amplitudes: their views spread a perceptual map from
// the smallest to the largest angle instead of a symmetric clip around 0.
void showAsAngles(const StudioViews& views, const ZNVolume* volume)
{
    for (ZNSectionView* view : views.sectionViews())
        if (views.volumeOf(view) == volume) {
            view->engine().setColourMap(img::ColourScale::Map::Viridis);
            view->syncControls();
            view->viewer()->update();
        }
}

} // namespace

void StudioWindow::computeFaultLikelihood(ZNVolume* volume, const fault::attribute::FaultAttributeSettings& settings,
                                          bool withOrientation)
{
    if (!volume) return;
    // The worker reads the shared samples; the volume may be closed meanwhile, so what
    // the new volumes take from it is copied now.
    std::shared_ptr<const ZN3DImage<float>> image = volume->sharedImage();
    const SeismicOrigin seismic{volume->name(), volume->units(), volume->lines()};
    auto result = std::make_shared<fault::attribute::FaultAttributeVolumes>();
    runTask(tr("Compute the fault likelihood of %1").arg(volume->name()),
            [image, settings, withOrientation, result] {
                *result = fault::attribute::computeFaultAttribute(*image, settings, withOrientation, -1);
            },
            [this, result, seismic] {
                if (!result->ok()) {
                    // The attribute sent its own reason to the log; the notification names the volume.
                    if (result->error == QLatin1String("cancelled"))
                        ZNEventBus::sendMessage(ZNEventBus::Information, tr("Fault likelihood cancelled"));
                    else
                        reportFailure(tr("The fault likelihood of %1 could not be computed: %2")
                                          .arg(seismic.name, result->error));
                    return false;
                }
                const QString& of = seismic.name;
                ZNVolume* likelihood = m_project->addVolume(attributeVolume(
                    std::move(result->likelihood), seismic, m_project->uniqueName(tr("Fault likelihood of %1").arg(of))));
                if (!result->strike.isEmpty())
                    showAsAngles(*m_views, m_project->addVolume(attributeVolume(
                        std::move(result->strike), seismic, m_project->uniqueName(tr("Fault strike of %1").arg(of)))));
                if (!result->dip.isEmpty())
                    showAsAngles(*m_views, m_project->addVolume(attributeVolume(
                        std::move(result->dip), seismic, m_project->uniqueName(tr("Fault dip of %1").arg(of)))));
                if (QStandardItem* item = m_studioTree->volumeItem(likelihood)) m_tree->selectItem(item);
                return true;
            });
}

void StudioWindow::chooseAndComputeLikelihood(ZNVolume* volume)
{
    const QList<ZNVolume*> volumes = m_project->volumes();
    if (volumes.isEmpty()) {
        reportFailure(tr("Open a seismic volume first (File > Open Volume)"));
        return;
    }
    QStringList names;
    for (const ZNVolume* v : volumes) names << v->name();
    ZNAttributeSettingsDialog dialog(names, this);
    ZNVolume* chosen = volume ? volume : m_currentVolume;
    dialog.setVolumeIndex(chosen ? std::max(0, static_cast<int>(volumes.indexOf(chosen))) : 0);
    if (dialog.exec() != QDialog::Accepted || dialog.volumeIndex() < 0) return;
    computeFaultLikelihood(volumes[dialog.volumeIndex()], dialog.settings(), dialog.withOrientation());
}
