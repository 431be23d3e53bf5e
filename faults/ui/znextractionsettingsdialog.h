#pragma once
#include <QDialog>
#include <QStringList>

#include <faultextractionpipeline.h>

class QComboBox;
class QDoubleSpinBox;
class QSpinBox;

// The settings of an automatic fault extraction, as `kfaults extract` takes them: the
// same defaults, ranges and explanations (each field's tooltip says what it does and how
// to tune it), and the volume to extract from among those given.
class ZNExtractionSettingsDialog : public QDialog {
    Q_OBJECT
public:
    // `volumes`: the names of the open volumes, in the order the caller knows them.
    explicit ZNExtractionSettingsDialog(const QStringList& volumes, QWidget* parent = nullptr);

    fault::FaultExtractionSettings settings() const;
    void setSettings(const fault::FaultExtractionSettings& settings);
    // Index into `volumes` of the volume chosen; -1 when there is none.
    int volumeIndex() const;
    void setVolumeIndex(int index);

private:
    QComboBox* m_volume;
    QDoubleSpinBox* m_threshold;
    QSpinBox* m_maxPatchSize;
    QDoubleSpinBox* m_planeDeviation;
    QSpinBox* m_growthIterations;
    QDoubleSpinBox* m_mergeCost;
    QDoubleSpinBox* m_sectionSpacing;
    QDoubleSpinBox* m_pointSpacing;
    QSpinBox* m_minFaultVoxels;
    QComboBox* m_surfaceMethod;
};
