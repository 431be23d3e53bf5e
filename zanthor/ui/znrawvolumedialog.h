#pragma once
#include <QDialog>

#include <volumeio/rawvolume.h>

class QComboBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QLabel;
class QSpinBox;

// Asks for the layout of a raw float32 volume before it is read: samples along inline,
// crossline and sample, byte order, axis order (fastest first) and spacing. The file
// size is shown against the size the layout implies, and OK is enabled only when they
// match, so a layout that cannot be right is never tried. A file whose size is a cube
// of samples starts with that cube; big-endian trace order is the default, as in the
// command-line tool.
class ZNRawVolumeDialog : public QDialog {
    Q_OBJECT
public:
    static constexpr int kMaxSamplesPerAxis = 1 << 20;

    ZNRawVolumeDialog(const QString& path, QWidget* parent = nullptr);

    volumeio::RawVolumeLayout layout() const;
    void setLayout(const volumeio::RawVolumeLayout& layout);
    // True when the layout's byte count equals the file's size.
    bool layoutMatchesFile() const;
    qint64 fileSize() const { return m_fileSize; }

private:
    void updateCheck();

    qint64 m_fileSize = 0;
    QSpinBox* m_sizes[3];
    QComboBox* m_byteOrder;
    QComboBox* m_axisOrder;
    QDoubleSpinBox* m_spacing[3];
    QLabel* m_check;
    QDialogButtonBox* m_buttons;
};
