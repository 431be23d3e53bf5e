#include "picturecanvas.h"

#include <algorithm>
#include <cmath>

#include <QFontMetrics>
#include <QPainterPath>

namespace kfaults::picture {

namespace {
constexpr double kReferenceHeight = 900.0;  // the size the base pixel sizes are made for
constexpr int kTitleBase = 26;
constexpr int kLabelBase = 17;
constexpr int kSmallBase = 14;
constexpr int kMarginBase = 18;
constexpr int kMinimumPixels = 7;
constexpr int kTickCount = 6;
constexpr double kTickLength = 0.4;         // of the label size
constexpr int kFaintGrey = 225;
constexpr int kInkGrey = 40;

int scaled(int base, double factor) { return std::max(kMinimumPixels, int(std::lround(base * factor))); }
} // namespace

PictureStyle::PictureStyle(const QSize& size)
{
    // Text shrinks slower than the picture so that small pictures stay readable.
    const double factor = std::sqrt(std::max(1, std::min(size.height(), size.width() * 3 / 4)) / kReferenceHeight);
    titlePixels = scaled(kTitleBase, factor);
    labelPixels = scaled(kLabelBase, factor);
    smallPixels = scaled(kSmallBase, factor);
    margin = scaled(kMarginBase, factor);
    lineWidth = std::max(1, int(std::lround(1.5 * factor)));
    ink = QColor(kInkGrey, kInkGrey, kInkGrey);
    faint = QColor(kFaintGrey, kFaintGrey, kFaintGrey);
}

QFont PictureStyle::font(int pixelSize, bool bold) const
{
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(pixelSize);
    f.setBold(bold);
    return f;
}

QImage blankPicture(int width, int height, const QColor& background)
{
    QImage image(std::max(1, width), std::max(1, height), QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    return image;
}

QRect drawFrame(QPainter& painter, const QString& title, const PlotMargins& margins, const PictureStyle& style)
{
    const int width = painter.device()->width();
    const int height = painter.device()->height();
    const int titleHeight = style.titlePixels * 2;
    drawTitle(painter, QRect(0, 0, width, titleHeight), title, style);
    return QRect(margins.left, titleHeight, width - margins.left - margins.right,
                 height - titleHeight - margins.bottom);
}

double niceStep(double range, int targetCount)
{
    if (!(range > 0.0) || !std::isfinite(range) || targetCount < 1) return 1.0;
    const double raw = range / targetCount;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    const double fraction = raw / power;
    const double nice = fraction < 1.5 ? 1.0 : fraction < 3.5 ? 2.0 : fraction < 7.5 ? 5.0 : 10.0;
    return nice * power;
}

QString formatValue(double value, double step)
{
    const int decimals = step >= 1.0 ? 0 : int(std::ceil(-std::log10(step) - 1e-9));
    const double rounded = std::fabs(value) < step * 1e-6 ? 0.0 : value;
    return QString::number(rounded, 'f', std::clamp(decimals, 0, 6));
}

void drawTitle(QPainter& painter, const QRect& area, const QString& title, const PictureStyle& style)
{
    painter.setFont(style.font(style.titlePixels, true));
    painter.setPen(style.ink);
    const QString shown = painter.fontMetrics().elidedText(title, Qt::ElideRight, area.width());
    painter.drawText(area, Qt::AlignCenter, shown);
}

int drawLegend(QPainter& painter, const QRect& area, const std::vector<LegendEntry>& entries,
               const PictureStyle& style)
{
    painter.setFont(style.font(style.labelPixels));
    const QFontMetrics metrics = painter.fontMetrics();
    const int lineHeight = metrics.height() * 5 / 4;
    const int swatch = metrics.height() * 3 / 4;
    const int capacity = std::max(1, area.height() / lineHeight);
    const int count = static_cast<int>(entries.size());
    const int shown = count <= capacity ? count : capacity - 1;
    int y = area.top();
    for (int i = 0; i < shown; ++i, y += lineHeight) {
        const QRect box(area.left(), y + (lineHeight - swatch) / 2, swatch, swatch);
        painter.setPen(QPen(entries[i].colour.darker(140), 1));
        painter.setBrush(entries[i].colour);
        painter.drawRect(box);
        painter.setPen(style.ink);
        const QRect text(box.right() + swatch / 2, y, area.right() - box.right() - swatch / 2, lineHeight);
        painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(entries[i].name, Qt::ElideRight, text.width()));
    }
    if (shown < count) {
        painter.setPen(style.ink);
        painter.drawText(QRect(area.left(), y, area.width(), lineHeight), Qt::AlignLeft | Qt::AlignVCenter,
                         QStringLiteral("… and %1 more").arg(count - shown));
        y += lineHeight;
    }
    painter.setBrush(Qt::NoBrush);
    return y;
}

double AxisMapping::toPixel(double value) const
{
    const double span = valueHigh - valueLow;
    const double t = span != 0.0 ? (value - valueLow) / span : 0.5;
    return pixelLow + t * (pixelHigh - pixelLow);
}

namespace {
// Calls `tick(value, pixel)` for every round value of `axis` inside its range.
template <class Tick> void forEachTick(const AxisMapping& axis, Tick tick)
{
    const double low = std::min(axis.valueLow, axis.valueHigh);
    const double high = std::max(axis.valueLow, axis.valueHigh);
    const double step = niceStep(high - low, kTickCount);
    for (double v = std::ceil(low / step) * step; v <= high + step * 1e-9; v += step)
        tick(v, step, axis.toPixel(v));
}
} // namespace

void drawHorizontalAxis(QPainter& painter, const QRect& plot, const AxisMapping& axis,
                        const QString& title, const PictureStyle& style)
{
    painter.setFont(style.font(style.smallPixels));
    const int tick = std::max(3, int(style.labelPixels * kTickLength));
    const int textHeight = painter.fontMetrics().height();
    forEachTick(axis, [&](double value, double step, double pixel) {
        const int x = int(std::lround(pixel));
        painter.setPen(QPen(style.faint, 1));
        painter.drawLine(x, plot.top(), x, plot.bottom());
        painter.setPen(QPen(style.ink, style.lineWidth));
        painter.drawLine(x, plot.bottom(), x, plot.bottom() + tick);
        const QRect label(x - 100, plot.bottom() + tick, 200, textHeight);
        painter.drawText(label, Qt::AlignHCenter | Qt::AlignTop, formatValue(value, step));
    });
    painter.setFont(style.font(style.labelPixels));
    painter.drawText(QRect(plot.left(), plot.bottom() + tick + textHeight, plot.width(),
                           painter.fontMetrics().height() * 3 / 2),
                     Qt::AlignCenter, title);
}

void drawVerticalAxis(QPainter& painter, const QRect& plot, const AxisMapping& axis,
                      const QString& title, const PictureStyle& style)
{
    painter.setFont(style.font(style.smallPixels));
    const int tick = std::max(3, int(style.labelPixels * kTickLength));
    const int textHeight = painter.fontMetrics().height();
    int widest = 0;
    forEachTick(axis, [&](double value, double step, double pixel) {
        const int y = int(std::lround(pixel));
        painter.setPen(QPen(style.faint, 1));
        painter.drawLine(plot.left(), y, plot.right(), y);
        painter.setPen(QPen(style.ink, style.lineWidth));
        painter.drawLine(plot.left() - tick, y, plot.left(), y);
        const QString text = formatValue(value, step);
        widest = std::max(widest, painter.fontMetrics().horizontalAdvance(text));
        painter.drawText(QRect(plot.left() - tick - 4 - 300, y - textHeight / 2, 300, textHeight),
                         Qt::AlignRight | Qt::AlignVCenter, text);
    });
    painter.save();
    painter.setFont(style.font(style.labelPixels));
    const int x = plot.left() - tick - 4 - widest - painter.fontMetrics().height() / 2;
    painter.translate(x, plot.center().y());
    painter.rotate(-90);
    painter.drawText(QRect(-plot.height() / 2, -painter.fontMetrics().height(), plot.height(),
                           painter.fontMetrics().height()),
                     Qt::AlignCenter, title);
    painter.restore();
}

void drawScaleBar(QPainter& painter, const QRect& plot, double pixelsPerUnit, const QString& unit,
                  const PictureStyle& style)
{
    if (!(pixelsPerUnit > 0.0)) return;
    const double targetUnits = plot.width() / 5.0 / pixelsPerUnit;
    const double length = niceStep(targetUnits * 2.0, 2);
    const int barPixels = int(std::lround(length * pixelsPerUnit));
    const int height = std::max(4, style.smallPixels / 2);
    const int left = plot.left() + style.margin;
    const int top = plot.bottom() - style.margin - height;
    const int halves = 2;
    for (int i = 0; i < halves; ++i) {
        const QRect part(left + i * barPixels / halves, top, barPixels / halves, height);
        painter.setPen(QPen(style.ink, 1));
        painter.setBrush(i % 2 == 0 ? style.ink : QColor(Qt::white));
        painter.drawRect(part);
    }
    painter.setBrush(Qt::NoBrush);
    painter.setFont(style.font(style.smallPixels));
    painter.setPen(style.ink);
    const QString text = QStringLiteral("%1 %2").arg(formatValue(length, length), unit).trimmed();
    painter.drawText(QRect(left, top - painter.fontMetrics().height() - 2, barPixels * 2,
                           painter.fontMetrics().height()),
                     Qt::AlignLeft | Qt::AlignBottom, text);
}

void drawNorthArrow(QPainter& painter, const QRect& plot, const PictureStyle& style)
{
    const int size = style.titlePixels * 2;
    const QPointF tip(plot.right() - style.margin - size / 2.0, plot.top() + style.margin + style.labelPixels * 1.5);
    QPainterPath arrow;
    arrow.moveTo(tip);
    arrow.lineTo(tip + QPointF(size * 0.3, size));
    arrow.lineTo(tip + QPointF(0, size * 0.75));
    arrow.lineTo(tip + QPointF(-size * 0.3, size));
    arrow.closeSubpath();
    painter.setPen(QPen(style.ink, 1));
    painter.setBrush(style.ink);
    painter.drawPath(arrow);
    painter.setBrush(Qt::NoBrush);
    painter.setFont(style.font(style.labelPixels, true));
    painter.drawText(QRectF(tip.x() - size, tip.y() - style.labelPixels * 1.5, size * 2, style.labelPixels * 1.4),
                     Qt::AlignHCenter | Qt::AlignBottom, QStringLiteral("N"));
}

void drawNote(QPainter& painter, const QRect& plot, const QString& text, const PictureStyle& style)
{
    painter.setFont(style.font(style.labelPixels));
    painter.setPen(style.ink);
    painter.drawText(plot, Qt::AlignCenter, text);
}

QColor mix(const QColor& colour, const QColor& other, double weight)
{
    const double w = std::clamp(weight, 0.0, 1.0);
    const QColor mixed = QColor::fromRgbF(colour.redF() * (1 - w) + other.redF() * w,
                                          colour.greenF() * (1 - w) + other.greenF() * w,
                                          colour.blueF() * (1 - w) + other.blueF() * w);
    return QColor(mixed.rgb());
}

} // namespace kfaults::picture
