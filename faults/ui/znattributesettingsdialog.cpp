#include "znattributesettingsdialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>

#include <attribute/faultscans.h>

#include "znsettingsfields.h"

namespace {

using settingsfields::realField;
using settingsfields::RealRange;

// Ranges of the fields: those the attribute accepts, so that only combinations (dips in
// the wrong order, too many orientations) remain to be refused.
constexpr RealRange kStrikeStep{0.5, 180.0, 1.0, 1};
constexpr RealRange kDip{20.0, 90.0, 5.0, 1};
constexpr RealRange kDipStep{0.5, 90.0, 1.0, 1};
constexpr RealRange kLength{1.0, 64.0, 0.5, 1};
constexpr RealRange kPower{1.0, 64.0, 1.0, 1};

} // namespace

ZNAttributeSettingsDialog::ZNAttributeSettingsDialog(const QStringList& volumes, QWidget* parent)
    : QDialog(parent), m_hasVolumes(!volumes.isEmpty())
{
    setObjectName(QStringLiteral("attributeSettingsDialog"));
    setWindowTitle(tr("Compute the fault likelihood of a seismic volume"));
    auto* form = new QFormLayout(this);

    m_volume = settingsfields::volumeField(this, volumes, tr("The seismic amplitude volume whose fault likelihood is computed"));
    form->addRow(tr("Seismic volume:"), m_volume);

    m_strikeStep = realField(this, "strikeStep", kStrikeStep,
        tr("Degrees between two fault strikes the scan tries, over 0 to 360. Smaller finds "
           "orientations more precisely, at a cost that grows with the number of orientations."));
    m_minDip = realField(this, "minDip", kDip,
        tr("Shallowest fault dip scanned, in degrees on the volume's grid (one sample along "
           "every axis counts the same)."));
    m_maxDip = realField(this, "maxDip", kDip, tr("Steepest fault dip scanned, in degrees on the grid."));
    m_dipStep = realField(this, "dipStep", kDipStep, tr("Degrees between two scanned dips."));
    m_strikeSigma = realField(this, "strikeSigma", kLength,
        tr("Samples of smoothing along a fault's strike: longer is steadier on noisy data, "
           "shorter follows curved faults."));
    m_dipHalfLength = realField(this, "dipHalfLength", kLength,
        tr("Samples of the window down a fault's dip, on either side."));
    m_power = realField(this, "semblancePower", kPower,
        tr("p of likelihood = 1 - semblance^p, the semblance relative to the layers: larger "
           "raises the likelihood of weak faults, and of noise."));
    m_thin = new QCheckBox(tr("Thin to each fault's ridge"), this);
    m_thin->setObjectName(QStringLiteral("thin"));
    m_thin->setToolTip(tr("Keep only the highest likelihood across each fault, as the extraction expects."));
    m_orientation = new QCheckBox(tr("Strike and dip volumes too"), this);
    m_orientation->setObjectName(QStringLiteral("withOrientation"));
    m_orientation->setChecked(true);
    m_orientation->setToolTip(tr("Also add the strike and dip of the fault at each voxel, "
                                 "each a volume of the seismic's size."));
    m_scan = new QLabel(this);
    m_scan->setObjectName(QStringLiteral("scan"));

    form->addRow(tr("Strike step:"), m_strikeStep);
    form->addRow(tr("Smallest dip:"), m_minDip);
    form->addRow(tr("Largest dip:"), m_maxDip);
    form->addRow(tr("Dip step:"), m_dipStep);
    form->addRow(tr("Strike smoothing:"), m_strikeSigma);
    form->addRow(tr("Dip half-length:"), m_dipHalfLength);
    form->addRow(tr("Semblance power:"), m_power);
    form->addRow(QString(), m_thin);
    form->addRow(QString(), m_orientation);
    form->addRow(m_scan);

    m_buttons = settingsfields::dialogButtons(this, [this] { setSettings(fault::attribute::FaultAttributeSettings()); });
    form->addRow(m_buttons);
    for (QDoubleSpinBox* box : {m_strikeStep, m_minDip, m_maxDip, m_dipStep})
        connect(box, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this] { updateScan(); });
    setSettings(fault::attribute::FaultAttributeSettings());
}

fault::attribute::FaultAttributeSettings ZNAttributeSettingsDialog::settings() const
{
    fault::attribute::FaultAttributeSettings s;
    s.strikeStep = m_strikeStep->value();
    s.minDip = m_minDip->value();
    s.maxDip = m_maxDip->value();
    s.dipStep = m_dipStep->value();
    s.strikeSigma = m_strikeSigma->value();
    s.dipHalfLength = m_dipHalfLength->value();
    s.semblancePower = m_power->value();
    s.thin = m_thin->isChecked();
    return s;
}

void ZNAttributeSettingsDialog::setSettings(const fault::attribute::FaultAttributeSettings& s)
{
    m_strikeStep->setValue(s.strikeStep);
    m_minDip->setValue(s.minDip);
    m_maxDip->setValue(s.maxDip);
    m_dipStep->setValue(s.dipStep);
    m_strikeSigma->setValue(s.strikeSigma);
    m_dipHalfLength->setValue(s.dipHalfLength);
    m_power->setValue(s.semblancePower);
    m_thin->setChecked(s.thin);
    updateScan();
}

int ZNAttributeSettingsDialog::volumeIndex() const { return m_volume->currentIndex(); }

void ZNAttributeSettingsDialog::setVolumeIndex(int index) { m_volume->setCurrentIndex(index); }

bool ZNAttributeSettingsDialog::withOrientation() const { return m_orientation->isChecked(); }

QString ZNAttributeSettingsDialog::scanText() const { return m_scan->text(); }

void ZNAttributeSettingsDialog::updateScan()
{
    const fault::attribute::FaultAttributeSettings s = settings();
    const QString problem = s.problem();
    m_scan->setText(problem.isEmpty()
                        ? tr("The scan tries %1 fault orientations.").arg(fault::attribute::planScans(s).scans.size())
                        : problem);
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(m_hasVolumes && problem.isEmpty());
}
