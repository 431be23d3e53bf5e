#include "znextractionsettingsdialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QPushButton>
#include <QSpinBox>

#include <zn3dfaultpatch.h>

#include "znsettingsfields.h"

namespace {

using settingsfields::intField;
using settingsfields::IntRange;
using settingsfields::realField;
using settingsfields::RealRange;

// Ranges of the fields: wide enough for any survey, narrow enough to catch a typo.
constexpr RealRange kThreshold{0.0, 1.0, 0.05, 2};
constexpr IntRange kPatchSize{10, 1000000, 50};
constexpr RealRange kPlaneDeviation{0.1, 20.0, 0.1, 2};
constexpr IntRange kGrowthIterations{1, 500, 1};
constexpr RealRange kMergeCost{0.1, 20.0, 0.1, 2};
constexpr RealRange kSpacing{1.0, 200.0, 1.0, 1};
constexpr IntRange kFaultVoxels{1, 100000000, 10};

} // namespace

ZNExtractionSettingsDialog::ZNExtractionSettingsDialog(const QStringList& volumes, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("extractionSettingsDialog"));
    setWindowTitle(tr("Extract faults from a likelihood volume"));
    auto* form = new QFormLayout(this);

    m_volume = settingsfields::volumeField(this, volumes, tr("The fault-likelihood volume to extract faults from"));
    form->addRow(tr("Likelihood volume:"), m_volume);

    m_threshold = realField(this, "likelihoodThreshold", kThreshold,
        tr("Seeds and patch growth need a likelihood above this. Raise it on noisy volumes, "
           "lower it when faults come out in pieces with holes."));
    m_maxPatchSize = intField(this, "maxPatchSize", kPatchSize,
        tr("Voxels a patch grows to (patches under a third of it are dropped). Smaller keeps "
           "small or curved faults, larger gives fewer patches."));
    m_planeDeviation = realField(this, "maxPlaneDeviation", kPlaneDeviation,
        tr("Spread, in voxels, a patch may have across its plane. Raise it for thick or rough faults."));
    m_growthIterations = intField(this, "growthIterations", kGrowthIterations,
        tr("Rings a patch grows by."));
    m_mergeCost = realField(this, "maxMergeCost", kMergeCost,
        tr("Spread, in voxels, two merged faults may have across their common plane. Lower it "
           "when distinct faults merge (crossing faults), raise it when one fault stays in pieces."));
    m_sectionSpacing = realField(this, "sectionSpacing", kSpacing,
        tr("Distance, in voxels, between two sticks along strike."));
    m_pointSpacing = realField(this, "pointSpacing", kSpacing,
        tr("Distance, in voxels, between two points of a stick down dip."));
    m_minFaultVoxels = intField(this, "minFaultVoxels", kFaultVoxels,
        tr("Merged faults with fewer voxels get no sticks."));
    m_surfaceMethod = new QComboBox(this);
    m_surfaceMethod->setObjectName(QStringLiteral("surfaceMethod"));
    m_surfaceMethod->addItem(QStringLiteral("Convex Envelop"), int(ZN3DFaultPatch::ConvexEnvelop));
    m_surfaceMethod->addItem(QStringLiteral("Minimum Envelop"), int(ZN3DFaultPatch::MinimumEnvelop));
    m_surfaceMethod->setToolTip(
        tr("How each fault is meshed from its sticks: \"Minimum Envelop\" keeps every stick "
           "segment and meshes only between neighbouring sticks; \"Convex Envelop\" is a "
           "smoothed grid over the sticks' convex envelope."));

    form->addRow(tr("Likelihood threshold:"), m_threshold);
    form->addRow(tr("Maximum patch size:"), m_maxPatchSize);
    form->addRow(tr("Maximum plane deviation:"), m_planeDeviation);
    form->addRow(tr("Growth iterations:"), m_growthIterations);
    form->addRow(tr("Maximum merge cost:"), m_mergeCost);
    form->addRow(tr("Section spacing:"), m_sectionSpacing);
    form->addRow(tr("Point spacing:"), m_pointSpacing);
    form->addRow(tr("Minimum fault voxels:"), m_minFaultVoxels);
    form->addRow(tr("Surface method:"), m_surfaceMethod);

    auto* buttons = settingsfields::dialogButtons(this, [this] { setSettings(fault::FaultExtractionSettings()); });
    buttons->button(QDialogButtonBox::Ok)->setEnabled(!volumes.isEmpty());
    form->addRow(buttons);
    setSettings(fault::FaultExtractionSettings());
}

fault::FaultExtractionSettings ZNExtractionSettingsDialog::settings() const
{
    fault::FaultExtractionSettings s;
    s.extraction.likelihoodThreshold = m_threshold->value();
    s.extraction.maxPatchSize = m_maxPatchSize->value();
    s.extraction.maxPlaneDeviation = m_planeDeviation->value();
    s.extraction.growthIterations = m_growthIterations->value();
    s.extraction.maxMergeCost = m_mergeCost->value();
    s.sticks.sectionSpacing = m_sectionSpacing->value();
    s.sticks.pointSpacing = m_pointSpacing->value();
    s.sticks.minVoxelsPerFault = m_minFaultVoxels->value();
    s.surfaceMethod = m_surfaceMethod->currentData().toInt();
    return s;
}

void ZNExtractionSettingsDialog::setSettings(const fault::FaultExtractionSettings& s)
{
    m_threshold->setValue(s.extraction.likelihoodThreshold);
    m_maxPatchSize->setValue(s.extraction.maxPatchSize);
    m_planeDeviation->setValue(s.extraction.maxPlaneDeviation);
    m_growthIterations->setValue(s.extraction.growthIterations);
    m_mergeCost->setValue(s.extraction.maxMergeCost);
    m_sectionSpacing->setValue(s.sticks.sectionSpacing);
    m_pointSpacing->setValue(s.sticks.pointSpacing);
    m_minFaultVoxels->setValue(s.sticks.minVoxelsPerFault);
    const int method = m_surfaceMethod->findData(s.surfaceMethod);
    if (method >= 0) m_surfaceMethod->setCurrentIndex(method);
}

int ZNExtractionSettingsDialog::volumeIndex() const
{
    return m_volume->currentIndex();
}

void ZNExtractionSettingsDialog::setVolumeIndex(int index)
{
    m_volume->setCurrentIndex(index);
}
