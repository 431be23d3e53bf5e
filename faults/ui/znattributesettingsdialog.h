#pragma once
#include <QDialog>
#include <QStringList>

#include <attribute/faultattributesettings.h>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QLabel;

// The settings of the fault-likelihood attribute, as `kfaults likelihood` takes them: the
// same defaults and explanations (each field's tooltip), the seismic volume to compute it
// from among those given, and whether the strike and dip volumes are wanted too. A line
// under the fields tells how many orientations the scan will try, or what is wrong with
// the settings, in which case there is nothing to accept.
class ZNAttributeSettingsDialog : public QDialog {
    Q_OBJECT
public:
    // `volumes`: the names of the open volumes, in the order the caller knows them.
    explicit ZNAttributeSettingsDialog(const QStringList& volumes, QWidget* parent = nullptr);

    fault::attribute::FaultAttributeSettings settings() const;
    void setSettings(const fault::attribute::FaultAttributeSettings& settings);
    // Index into `volumes` of the volume chosen; -1 when there is none.
    int volumeIndex() const;
    void setVolumeIndex(int index);
    // True when the strike and dip volumes are to be computed as well (the default).
    bool withOrientation() const;

    // The line under the fields, as shown.
    QString scanText() const;

private:
    void updateScan();

    QComboBox* m_volume;
    QDoubleSpinBox* m_strikeStep;
    QDoubleSpinBox* m_minDip;
    QDoubleSpinBox* m_maxDip;
    QDoubleSpinBox* m_dipStep;
    QDoubleSpinBox* m_strikeSigma;
    QDoubleSpinBox* m_dipHalfLength;
    QDoubleSpinBox* m_power;
    QCheckBox* m_thin;
    QCheckBox* m_orientation;
    QLabel* m_scan;
    QDialogButtonBox* m_buttons;
    bool m_hasVolumes;
};
