#include "znseismicviewerabstractengine.h"

#include <cmath>

#include <core/conventions.h>
#include <georef/unitobject.h>

namespace {

// The round step (1, 2 or 5 times a power of ten) of values along an axis on which one
// value unit spans `pixelsPerUnit` pixels, so that ticks are at least `spacing` apart.
double roundStep(double pixelsPerUnit, double spacing)
{
    if (!(pixelsPerUnit > 0.0)) return 0.0;
    const double raw = spacing / pixelsPerUnit;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (double m : {1.0, 2.0, 5.0, 10.0})
        if (m * power >= raw) return m * power;
    return 10.0 * power;
}

QString number(double v)
{
    return QString::number(v, 'g', 10);
}

} // namespace

void ZNSeismicViewerAbstractEngine::setColourMap(img::ColourScale::Map map)
{
    if (map == m_scale.map()) return;
    m_scale.setMap(map);
    if (m_rangeMode == RangeMode::FromData) m_rangePending = true;
    dropPicture();
    changed();
}

void ZNSeismicViewerAbstractEngine::setManualRange(float minimum, float maximum)
{
    m_rangeMode = RangeMode::Manual;
    m_rangePending = false;
    m_scale.setRange(minimum, maximum);
    dropPicture();
    changed();
}

void ZNSeismicViewerAbstractEngine::setRangeFromData()
{
    m_rangeMode = RangeMode::FromData;
    m_rangePending = true;
    dropPicture();
    changed();
}

void ZNSeismicViewerAbstractEngine::setLineNumbering(const georef::LineNumbering& lines)
{
    m_lines = lines;
    changed();
}

void ZNSeismicViewerAbstractEngine::sectionChanged()
{
    m_samplesRead = false;
    m_samples = img::Image();
    dropPicture();
}

void ZNSeismicViewerAbstractEngine::dropPicture()
{
    m_pictureMade = false;
    m_picture = QImage();
}

const img::Image* ZNSeismicViewerAbstractEngine::sectionSamples()
{
    if (!m_samplesRead) {
        m_samplesRead = true;
        img::Image samples;
        if (getBloc() && readSectionSamples(samples)) m_samples = std::move(samples);
    }
    if (m_samples.isEmpty()) return nullptr;
    if (m_rangePending) takeRangeFromData();
    return &m_samples;
}

void ZNSeismicViewerAbstractEngine::takeRangeFromData()
{
    m_rangePending = false;
    const auto range = m_scale.map() == img::ColourScale::Map::Seismic
                           ? img::ColourScale::symmetricClipRange(m_samples.data(), m_samples.sampleCount())
                           : img::ColourScale::minMaxRange(m_samples.data(), m_samples.sampleCount());
    m_scale.setRange(range.first, range.second);
    dropPicture();
}

const QImage& ZNSeismicViewerAbstractEngine::sectionImage()
{
    const img::Image* samples = sectionSamples();
    if (m_pictureMade) return m_picture;
    m_pictureMade = true;
    if (!samples) return m_picture;
    QImage picture(samples->width(), samples->height(), QImage::Format_ARGB32);
    if (picture.isNull()) return m_picture;
    for (int r = 0; r < samples->height(); ++r)
        m_scale.colourRow(samples->row(r), samples->width(), reinterpret_cast<QRgb*>(picture.scanLine(r)));
    m_picture = std::move(picture);
    return m_picture;
}

float ZNSeismicViewerAbstractEngine::sampleAtViewport(const QPointF& viewport)
{
    const img::Image* samples = sectionSamples();
    if (!samples) return static_cast<float>(core::kNoValueReal);
    const QPointF image = viewportToImage(viewport);
    const int c = static_cast<int>(std::floor(image.x() + 0.5));
    const int r = static_cast<int>(std::floor(image.y() + 0.5));
    return samples->value(c, r, static_cast<float>(core::kNoValueReal));
}

bool ZNSeismicViewerAbstractEngine::isTime() const
{
    const ZNBloc* bloc = getBloc();
    return bloc && bloc->unitObject().isTime();
}

QString ZNSeismicViewerAbstractEngine::verticalUnit() const
{
    const ZNBloc* bloc = getBloc();
    switch (bloc ? bloc->unitObject().getVerticalUnit() : georef::UnitObject::VerticalMetre) {
    case georef::UnitObject::VerticalFoot: return QStringLiteral("ft");
    case georef::UnitObject::VerticalMillisecond: return QStringLiteral("ms");
    case georef::UnitObject::VerticalSecond: return QStringLiteral("s");
    default: return QStringLiteral("m");
    }
}

ZNSeismicViewerAbstractEngine::AxisLine ZNSeismicViewerAbstractEngine::acrossLine() const
{
    switch (sectionKind()) {
    case SectionKind::Inline: return {double(m_lines.firstCrossline), double(m_lines.crosslineStep)};
    case SectionKind::Crossline:
    case SectionKind::Slice: return {double(m_lines.firstInline), double(m_lines.inlineStep)};
    case SectionKind::RandomLine: return {0.0, 1.0};
    }
    return {};
}

ZNSeismicViewerAbstractEngine::AxisLine ZNSeismicViewerAbstractEngine::downLine() const
{
    if (sectionKind() == SectionKind::Slice) return {double(m_lines.firstCrossline), double(m_lines.crosslineStep)};
    // World y (time or depth) of the samples of the section's middle trace.
    const QSize size = imageSize();
    const core::vec3 top = blocToWorld(imageToBloc(QPointF(size.width() / 2, 0.0)));
    const core::vec3 next = blocToWorld(imageToBloc(QPointF(size.width() / 2, 1.0)));
    return {top.y, next.y - top.y};
}

QString ZNSeismicViewerAbstractEngine::acrossTitle() const
{
    switch (sectionKind()) {
    case SectionKind::Inline: return QStringLiteral("Crossline");
    case SectionKind::Crossline:
    case SectionKind::Slice: return QStringLiteral("Inline");
    case SectionKind::RandomLine: return QStringLiteral("Trace");
    }
    return QString();
}

QString ZNSeismicViewerAbstractEngine::downTitle() const
{
    if (sectionKind() == SectionKind::Slice) return QStringLiteral("Crossline");
    return QStringLiteral("%1 (%2)").arg(isTime() ? QStringLiteral("Time") : QStringLiteral("Depth"), verticalUnit());
}

QString ZNSeismicViewerAbstractEngine::sectionTitle() const
{
    switch (sectionKind()) {
    case SectionKind::Inline: return QStringLiteral("Inline %1").arg(m_lines.inlineNumber(sectionIndex()));
    case SectionKind::Crossline: return QStringLiteral("Crossline %1").arg(m_lines.crosslineNumber(sectionIndex()));
    case SectionKind::Slice: {
        const double y = blocToWorld({0.0, 0.0, double(sectionIndex())}).y;
        return QStringLiteral("%1 %2 %3").arg(isTime() ? QStringLiteral("Time") : QStringLiteral("Depth"),
                                              number(y), verticalUnit());
    }
    case SectionKind::RandomLine: return QStringLiteral("Random line");
    }
    return QString();
}

namespace {
// Ticks along an axis whose value at image position p is first + step * p, over positions
// 0..count-1. A continuous axis (time, depth) gets round values; an axis of lines
// (`lines` true) gets ticks on lines only, every 1, 2, 5, 10... lines, on round line
// numbers when the grid allows.
std::vector<ZNSeismicViewerAbstractEngine::Tick> ticksOf(double first, double step, int count, double pixelsPerPosition,
                                                        double spacing, bool lines)
{
    std::vector<ZNSeismicViewerAbstractEngine::Tick> ticks;
    if (count <= 0 || step == 0.0 || !(pixelsPerPosition > 0.0)) return ticks;
    if (lines) {
        const int every = static_cast<int>(std::max(1.0, roundStep(pixelsPerPosition, spacing)));
        const double valueStep = every * std::fabs(step);
        int start = 0;
        for (int c = 0; c < every; ++c)
            if (std::fabs(std::remainder(first + step * c, valueStep)) < 1e-9) {
                start = c;
                break;
            }
        for (int c = start; c < count; c += every) ticks.push_back({double(c), number(first + step * c)});
        return ticks;
    }
    const double valueStep = roundStep(pixelsPerPosition / std::fabs(step), spacing);
    const double a = first;
    const double b = first + step * (count - 1);
    const double low = std::min(a, b);
    const double high = std::max(a, b);
    for (double v = std::ceil(low / valueStep) * valueStep; v <= high + 1e-9 * std::fabs(valueStep); v += valueStep)
        ticks.push_back({(v - first) / step, number(std::fabs(v) < 1e-9 * valueStep ? 0.0 : v)});
    return ticks;
}
} // namespace

std::vector<ZNSeismicViewerAbstractEngine::Tick> ZNSeismicViewerAbstractEngine::continuousTicks(
    double first, double step, int count, double pixelsPerPosition, double spacing)
{
    return ticksOf(first, step, count, pixelsPerPosition, spacing, false);
}

std::vector<ZNSeismicViewerAbstractEngine::Tick> ZNSeismicViewerAbstractEngine::acrossTicks(double minimumSpacing) const
{
    const AxisLine line = acrossLine();
    return ticksOf(line.first, line.step, imageSize().width(), scaleAcross(), minimumSpacing, true);
}

std::vector<ZNSeismicViewerAbstractEngine::Tick> ZNSeismicViewerAbstractEngine::downTicks(double minimumSpacing) const
{
    const AxisLine line = downLine();
    return ticksOf(line.first, line.step, imageSize().height(), scaleDown(), minimumSpacing,
                   sectionKind() == SectionKind::Slice);
}
