#include "unfoldedpicture.h"

#include <algorithm>
#include <cmath>
#include <set>

#include <QPainter>

#include "picturecanvas.h"

namespace kfaults {

using namespace picture;

namespace {

constexpr double kGoldenTurn = 0.6180339887498949;  // of a full hue circle
constexpr int kShadeCycle = 3;
constexpr double kSaturations[kShadeCycle] = {0.75, 0.55, 0.9};
constexpr double kValues[kShadeCycle] = {0.9, 0.75, 0.62};
constexpr double kBarShare = 0.16;     // of the picture width, for the colour bar
constexpr int kMaxBarHeightLines = 24; // bar height in text lines at most
constexpr int kLabelTarget = 12;       // labels on the bar when ids do not all fit

QImage colourCells(const IdImage& ids, const UnfoldedSettings& settings)
{
    QImage cells(ids.width, ids.height, QImage::Format_RGB32);
    for (int row = 0; row < ids.height; ++row) {
        QRgb* line = reinterpret_cast<QRgb*>(cells.scanLine(row));
        for (int column = 0; column < ids.width; ++column) {
            const int id = ids.at(column, row);
            line[column] = (id == core::kNoValue ? settings.empty : patchColour(id)).rgb();
        }
    }
    return cells;
}

void drawColourBar(QPainter& painter, const QRect& area, const std::vector<int>& present, const PictureStyle& style)
{
    painter.setFont(style.font(style.labelPixels));
    painter.setPen(style.ink);
    const int line = painter.fontMetrics().height();
    painter.drawText(QRect(area.left(), area.top(), area.width(), line), Qt::AlignLeft, QStringLiteral("Patch id"));
    const int count = static_cast<int>(present.size());
    if (count == 0) return;
    const int barTop = area.top() + line * 3 / 2;
    const int barHeight = std::min(area.bottom() - barTop, line * kMaxBarHeightLines);
    const int barWidth = line;
    if (barHeight <= 0) return;
    for (int i = 0; i < count; ++i) {
        const int y0 = barTop + barHeight * i / count;
        const int y1 = barTop + barHeight * (i + 1) / count;
        painter.fillRect(QRect(area.left(), y0, barWidth, std::max(1, y1 - y0)), patchColour(present[i]));
    }
    painter.setPen(QPen(style.ink, 1));
    painter.drawRect(QRect(area.left(), barTop, barWidth, barHeight));
    painter.setFont(style.font(style.smallPixels));
    const int text = painter.fontMetrics().height();
    const int fitting = std::max(1, barHeight / text);
    const int every = count <= fitting ? 1 : int(std::ceil(double(count) / std::min(fitting, kLabelTarget)));
    for (int i = 0; i < count; i += every) {
        const int y = barTop + int(barHeight * (i + 0.5) / count);
        painter.drawLine(area.left() + barWidth, y, area.left() + barWidth + text / 3, y);
        painter.drawText(QRect(area.left() + barWidth + text / 2, y - text / 2, area.width() - barWidth, text),
                         Qt::AlignLeft | Qt::AlignVCenter, QString::number(present[i]));
    }
}

} // namespace

QColor patchColour(int id)
{
    if (id == core::kNoValue) return QColor(Qt::gray);
    const double turn = std::fmod(std::fabs(double(id)) * kGoldenTurn, 1.0);
    const int shade = int(std::abs(id % kShadeCycle));
    return QColor(QColor::fromHsvF(turn, kSaturations[shade], kValues[shade]).rgb());
}

QImage renderUnfolded(const IdImage& ids, const UnfoldedSettings& settings)
{
    QImage image = blankPicture(settings.width, settings.height, settings.background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const PictureStyle style(image.size());
    const int barWidth = int(image.width() * kBarShare);
    const PlotMargins margins{style.margin + style.labelPixels * 4, barWidth + style.margin,
                              style.margin + style.labelPixels * 4};
    const QRect area = drawFrame(painter, settings.title, margins, style);
    if (area.width() < 2 || area.height() < 2) return image;
    if (!ids.isConsistent() || ids.width == 0 || ids.height == 0) {
        painter.setPen(QPen(style.ink, style.lineWidth));
        painter.drawRect(area);
        drawNote(painter, area, QStringLiteral("Empty projection image"), style);
        return image;
    }
    const double cell = std::min(double(area.width()) / ids.width, double(area.height()) / ids.height);
    const QRect plot(area.left() + int((area.width() - cell * ids.width) / 2),
                     area.top() + int((area.height() - cell * ids.height) / 2),
                     std::max(1, int(std::lround(cell * ids.width))), std::max(1, int(std::lround(cell * ids.height))));
    const AxisMapping columns{0.0, double(ids.width), double(plot.left()), double(plot.right() + 1)};
    const AxisMapping rows{0.0, double(ids.height), double(plot.top()), double(plot.bottom() + 1)};
    drawHorizontalAxis(painter, plot, columns, settings.horizontalLabel, style);
    drawVerticalAxis(painter, plot, rows, settings.verticalLabel, style);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(plot, colourCells(ids, settings));
    painter.setPen(QPen(style.ink, style.lineWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(plot);

    std::set<int> present;
    for (int id : ids.ids)
        if (id != core::kNoValue) present.insert(id);
    drawColourBar(painter, QRect(plot.right() + style.margin * 2, plot.top(), barWidth - style.margin,
                                 std::max(plot.height(), style.labelPixels * 8)),
                  std::vector<int>(present.begin(), present.end()), style);
    return image;
}

} // namespace kfaults
