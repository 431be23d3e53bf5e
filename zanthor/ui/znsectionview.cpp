#include "znsectionview.h"

#include <cmath>
#include <limits>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
using Kind = ZNBlocViewerEngine::SectionKind;
constexpr double kRangeLimit = 1e12;  // largest magnitude typed in the range boxes
} // namespace

ZNSectionView::ZNSectionView(std::unique_ptr<ZNSeismicViewerAbstractEngine> sectionEngine, QWidget* parent)
    : QWidget(parent), m_viewer(new ZNSectionViewer(std::move(sectionEngine)))
{
    setObjectName(QStringLiteral("sectionView"));
    auto* controls = new QHBoxLayout;
    m_kind = new QComboBox(this);
    m_kind->setObjectName(QStringLiteral("sectionKind"));
    m_kind->addItems({tr("Inline"), tr("Crossline"), tr("Time slice")});
    m_number = new QSpinBox(this);
    m_number->setObjectName(QStringLiteral("sectionNumber"));
    m_number->setToolTip(tr("The section's line number (or sample index of a slice)"));
    m_slider = new QSlider(Qt::Horizontal, this);
    m_slider->setObjectName(QStringLiteral("sectionSlider"));
    m_map = new QComboBox(this);
    m_map->setObjectName(QStringLiteral("colourMap"));
    m_map->addItems(img::ColourScale::mapNames());
    m_fromData = new QCheckBox(tr("Range from data"), this);
    m_fromData->setObjectName(QStringLiteral("rangeFromData"));
    m_minimum = new QDoubleSpinBox(this);
    m_maximum = new QDoubleSpinBox(this);
    m_minimum->setObjectName(QStringLiteral("rangeMinimum"));
    m_maximum->setObjectName(QStringLiteral("rangeMaximum"));
    for (QDoubleSpinBox* box : {m_minimum, m_maximum}) {
        box->setRange(-kRangeLimit, kRangeLimit);
        box->setDecimals(4);
        box->setKeyboardTracking(false);
    }
    auto* fit = new QToolButton(this);
    fit->setObjectName(QStringLiteral("fitButton"));
    fit->setText(tr("Fit"));
    controls->addWidget(m_kind);
    controls->addWidget(m_number);
    controls->addWidget(m_slider, 1);
    controls->addWidget(m_map);
    controls->addWidget(m_fromData);
    controls->addWidget(m_minimum);
    controls->addWidget(m_maximum);
    controls->addWidget(fit);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addLayout(controls);
    layout->addWidget(m_viewer, 1);

    connect(m_kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ZNSectionView::applyKind);
    connect(m_number, QOverload<int>::of(&QSpinBox::valueChanged), this, &ZNSectionView::applyLineNumber);
    connect(m_slider, &QSlider::valueChanged, this, [this](int index) {
        if (!m_syncing) engine().setSection(engine().sectionKind(), index);
    });
    connect(m_map, &QComboBox::currentTextChanged, this, [this](const QString& name) {
        img::ColourScale::Map map;
        if (!m_syncing && img::ColourScale::mapFromName(name, map)) engine().setColourMap(map);
        syncControls();
    });
    connect(m_fromData, &QCheckBox::toggled, this, [this] { applyRange(); });
    connect(m_minimum, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &ZNSectionView::applyRange);
    connect(m_maximum, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &ZNSectionView::applyRange);
    connect(fit, &QToolButton::clicked, this, [this] { engine().fit(); });
    connect(m_viewer, &ZNSectionViewer::sectionChanged, this, &ZNSectionView::syncControls);
    syncControls();
}

int ZNSectionView::numberOf(int index) const
{
    const georef::LineNumbering& lines = engine().lineNumbering();
    switch (engine().sectionKind()) {
    case Kind::Inline: return lines.inlineNumber(index);
    case Kind::Crossline: return lines.crosslineNumber(index);
    default: return index;
    }
}

int ZNSectionView::indexOf(int number) const
{
    const georef::LineNumbering& lines = engine().lineNumbering();
    switch (engine().sectionKind()) {
    case Kind::Inline: return lines.inlineStep ? (number - lines.firstInline) / lines.inlineStep : 0;
    case Kind::Crossline: return lines.crosslineStep ? (number - lines.firstCrossline) / lines.crosslineStep : 0;
    default: return number;
    }
}

void ZNSectionView::syncControls()
{
    m_syncing = true;
    ZNSeismicViewerAbstractEngine& e = engine();
    const Kind kind = e.sectionKind();
    const int count = e.sectionCount(kind);
    if (kind != Kind::RandomLine) m_kind->setCurrentIndex(static_cast<int>(kind));
    const bool stepping = kind != Kind::RandomLine && count > 0;
    m_number->setEnabled(stepping);
    m_slider->setEnabled(stepping);
    if (stepping) {
        const int first = numberOf(0);
        const int last = numberOf(count - 1);
        m_number->setRange(std::min(first, last), std::max(first, last));
        m_number->setSingleStep(count > 1 ? std::abs(numberOf(1) - first) : 1);
        m_number->setValue(numberOf(e.sectionIndex()));
        m_slider->setRange(0, count - 1);
        m_slider->setValue(e.sectionIndex());
    }
    m_map->setCurrentText(img::ColourScale::mapName(e.colourScale().map()));
    const bool fromData = e.rangeMode() == ZNSeismicViewerAbstractEngine::RangeMode::FromData;
    e.sectionSamples();  // a range from the data is taken on the first read
    m_fromData->setChecked(fromData);
    m_minimum->setEnabled(!fromData);
    m_maximum->setEnabled(!fromData);
    m_minimum->setValue(e.colourScale().minimum());
    m_maximum->setValue(e.colourScale().maximum());
    m_syncing = false;
}

void ZNSectionView::applyKind(int kindIndex)
{
    if (m_syncing) return;
    // The new kind's section through the middle of the current one.
    const QSize size = engine().imageSize();
    const core::vec3 middle = engine().imageToBloc(QPointF(size.width() / 2.0, size.height() / 2.0));
    const Kind kind = static_cast<Kind>(kindIndex);
    const double along = kind == Kind::Inline ? middle.x : kind == Kind::Crossline ? middle.y : middle.z;
    engine().setSection(kind, static_cast<int>(std::lround(along)));
    syncControls();
}

void ZNSectionView::applyLineNumber(int number)
{
    if (!m_syncing) engine().setSection(engine().sectionKind(), indexOf(number));
}

void ZNSectionView::applyRange()
{
    if (m_syncing) return;
    if (m_fromData->isChecked()) engine().setRangeFromData();
    else engine().setManualRange(static_cast<float>(m_minimum->value()), static_cast<float>(m_maximum->value()));
    syncControls();
}
