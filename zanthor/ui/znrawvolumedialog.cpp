#include "znrawvolumedialog.h"

#include <cmath>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSpinBox>

namespace {
constexpr qint64 kSampleBytes = 4;
const char* const kAxisOrders[] = {"zyx", "xyz", "zxy", "yxz", "xzy", "yzx"};  // trace order first
constexpr double kMaxSpacing = 1e6;  // world units per voxel
const char* const kAxisNames[] = {"Inline", "Crossline", "Sample"};
} // namespace

ZNRawVolumeDialog::ZNRawVolumeDialog(const QString& path, QWidget* parent)
    : QDialog(parent), m_fileSize(QFileInfo(path).size())
{
    setObjectName(QStringLiteral("rawVolumeDialog"));
    setWindowTitle(tr("Raw volume layout"));
    auto* form = new QFormLayout(this);
    form->addRow(tr("File:"), new QLabel(QFileInfo(path).fileName(), this));
    auto* sizes = new QHBoxLayout;
    auto* spacings = new QHBoxLayout;
    for (int k = 0; k < 3; ++k) {
        m_sizes[k] = new QSpinBox(this);
        m_sizes[k]->setObjectName(QStringLiteral("size%1").arg(k));
        m_sizes[k]->setRange(1, kMaxSamplesPerAxis);
        m_sizes[k]->setToolTip(tr("%1 samples").arg(tr(kAxisNames[k])));
        sizes->addWidget(m_sizes[k]);
        m_spacing[k] = new QDoubleSpinBox(this);
        m_spacing[k]->setObjectName(QStringLiteral("spacing%1").arg(k));
        m_spacing[k]->setRange(1e-6, kMaxSpacing);
        m_spacing[k]->setDecimals(4);
        m_spacing[k]->setValue(1.0);
        m_spacing[k]->setToolTip(tr("World units per voxel along the %1 axis").arg(tr(kAxisNames[k]).toLower()));
        spacings->addWidget(m_spacing[k]);
        connect(m_sizes[k], QOverload<int>::of(&QSpinBox::valueChanged), this, &ZNRawVolumeDialog::updateCheck);
    }
    form->addRow(tr("Samples (inline, crossline, sample):"), sizes);
    m_byteOrder = new QComboBox(this);
    m_byteOrder->setObjectName(QStringLiteral("byteOrder"));
    m_byteOrder->addItems({tr("Big-endian"), tr("Little-endian")});
    form->addRow(tr("Byte order:"), m_byteOrder);
    m_axisOrder = new QComboBox(this);
    m_axisOrder->setObjectName(QStringLiteral("axisOrder"));
    for (const char* order : kAxisOrders) m_axisOrder->addItem(QLatin1String(order));
    m_axisOrder->setToolTip(tr("Axes, fastest first: x inline, y crossline, z sample "
                               "(zyx: the samples of each trace together, the usual export order)"));
    form->addRow(tr("Axis order:"), m_axisOrder);
    form->addRow(tr("Spacing:"), spacings);
    m_check = new QLabel(this);
    m_check->setObjectName(QStringLiteral("sizeCheck"));
    form->addRow(m_check);
    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(m_buttons);

    // A file of n^3 samples starts as that cube.
    const qint64 samples = m_fileSize / kSampleBytes;
    const int side = static_cast<int>(std::lround(std::cbrt(static_cast<double>(samples))));
    const int start = static_cast<qint64>(side) * side * side == samples && side > 0 ? side : 1;
    for (QSpinBox* s : m_sizes) s->setValue(start);
    updateCheck();
}

volumeio::RawVolumeLayout ZNRawVolumeDialog::layout() const
{
    volumeio::RawVolumeLayout l;
    l.nInline = m_sizes[0]->value();
    l.nCrossline = m_sizes[1]->value();
    l.nSample = m_sizes[2]->value();
    l.byteOrder = m_byteOrder->currentIndex() == 1 ? volumeio::ByteOrder::LittleEndian
                                                   : volumeio::ByteOrder::BigEndian;
    volumeio::parseAxisOrder(m_axisOrder->currentText(), l.axes);
    l.spacing = core::vec3(m_spacing[0]->value(), m_spacing[1]->value(), m_spacing[2]->value());
    return l;
}

void ZNRawVolumeDialog::setLayout(const volumeio::RawVolumeLayout& l)
{
    m_sizes[0]->setValue(l.nInline);
    m_sizes[1]->setValue(l.nCrossline);
    m_sizes[2]->setValue(l.nSample);
    m_byteOrder->setCurrentIndex(l.byteOrder == volumeio::ByteOrder::LittleEndian ? 1 : 0);
    const int order = m_axisOrder->findText(volumeio::axisOrderName(l.axes));
    if (order >= 0) m_axisOrder->setCurrentIndex(order);
    m_spacing[0]->setValue(l.spacing.x);
    m_spacing[1]->setValue(l.spacing.y);
    m_spacing[2]->setValue(l.spacing.z);
    updateCheck();
}

bool ZNRawVolumeDialog::layoutMatchesFile() const
{
    const qint64 bytes = static_cast<qint64>(m_sizes[0]->value()) * m_sizes[1]->value() *
                         m_sizes[2]->value() * kSampleBytes;
    return bytes == m_fileSize;
}

void ZNRawVolumeDialog::updateCheck()
{
    const qint64 bytes = static_cast<qint64>(m_sizes[0]->value()) * m_sizes[1]->value() *
                         m_sizes[2]->value() * kSampleBytes;
    const QLocale locale;
    const bool match = layoutMatchesFile();
    m_check->setText(match ? tr("%1 bytes: the file's size").arg(locale.toString(bytes))
                           : tr("%1 bytes, but the file holds %2").arg(locale.toString(bytes), locale.toString(m_fileSize)));
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(match);
}
