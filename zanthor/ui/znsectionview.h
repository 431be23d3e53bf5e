#pragma once
#include <QWidget>

#include "znsectionviewer.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QSlider;
class QSpinBox;

// A section viewer with its controls: the kind of section (inline, crossline, time
// slice), the section by its line number (spin box) or by sliding, the colour map, and
// the range (from the data, or typed in). The controls follow the viewer when the user
// steps with the keyboard, and the viewer follows the controls.
class ZNSectionView : public QWidget {
    Q_OBJECT
public:
    explicit ZNSectionView(std::unique_ptr<ZNSeismicViewerAbstractEngine> engine, QWidget* parent = nullptr);

    ZNSectionViewer* viewer() const { return m_viewer; }
    ZNSeismicViewerAbstractEngine& engine() const { return m_viewer->engine(); }
    // Brings the controls in line with the engine (after the host changed it).
    void syncControls();

private:
    void applyKind(int kindIndex);
    void applyLineNumber(int number);
    void applyRange();
    // The line number of section `index` of the engine's kind, and back.
    int numberOf(int index) const;
    int indexOf(int number) const;

    ZNSectionViewer* m_viewer;
    QComboBox* m_kind;
    QSpinBox* m_number;
    QSlider* m_slider;
    QComboBox* m_map;
    QCheckBox* m_fromData;
    QDoubleSpinBox* m_minimum;
    QDoubleSpinBox* m_maximum;
    bool m_syncing = false;
};
