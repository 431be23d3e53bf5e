#pragma once
#include <vector>

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPainter>
#include <QRect>
#include <QString>

// Drawing pieces shared by the report pictures: text sizes that follow the picture's
// size, tick steps, titles, legends, axes, scale bar and north arrow. Drawing only: no
// widget, so everything works on the offscreen platform (text needs a QGuiApplication).
namespace kfaults::picture {

// Text sizes and margins for a picture of `size`, so that small and large pictures keep
// the same proportions. All in pixels.
struct PictureStyle {
    explicit PictureStyle(const QSize& size);
    QFont font(int pixelSize, bool bold = false) const;

    int titlePixels;
    int labelPixels;
    int smallPixels;
    int margin;      // space around the plot and between blocks
    int lineWidth;   // frames and axes
    QColor ink;      // text, frames and ticks
    QColor faint;    // grid lines
};

// Space kept around a picture's plot, in pixels, besides the title band on top.
struct PlotMargins {
    int left = 0;
    int right = 0;
    int bottom = 0;
};

// A `width` x `height` picture (a size below 1 counts as 1) filled with `background`.
QImage blankPicture(int width, int height, const QColor& background);
// Draws the title band of `painter`'s picture and returns the plot rectangle that the
// title and `margins` leave; it may be empty for a tiny picture.
QRect drawFrame(QPainter& painter, const QString& title, const PlotMargins& margins, const PictureStyle& style);

// A tick step of 1, 2 or 5 times a power of ten giving about `targetCount` intervals
// over `range`; 1 for a range that is not positive or not finite.
double niceStep(double range, int targetCount);
// `value` with as many decimals as `step` needs (none for steps of 1 and more).
QString formatValue(double value, double step);

// The title, centred in `area`, elided when too long.
void drawTitle(QPainter& painter, const QRect& area, const QString& title, const PictureStyle& style);

struct LegendEntry {
    QString name;
    QColor colour;
};
// Swatches and names from the top of `area` down; entries that do not fit are summed up
// as "… and N more". Returns the y just below the last line drawn.
int drawLegend(QPainter& painter, const QRect& area, const std::vector<LegendEntry>& entries,
               const PictureStyle& style);

// A linear mapping from values to pixels along one axis.
struct AxisMapping {
    double valueLow = 0.0;
    double valueHigh = 1.0;
    double pixelLow = 0.0;
    double pixelHigh = 1.0;
    double toPixel(double value) const;
};
// Ticks, tick labels and the axis title below `plot` (horizontal) or left of it
// (vertical), with faint grid lines across the plot.
void drawHorizontalAxis(QPainter& painter, const QRect& plot, const AxisMapping& axis,
                        const QString& title, const PictureStyle& style);
void drawVerticalAxis(QPainter& painter, const QRect& plot, const AxisMapping& axis,
                      const QString& title, const PictureStyle& style);

// A black and white scale bar of a round length in the lower left corner of `plot`.
void drawScaleBar(QPainter& painter, const QRect& plot, double pixelsPerUnit, const QString& unit,
                  const PictureStyle& style);
// An arrow pointing to the top of the picture, labelled N, in the upper right of `plot`.
void drawNorthArrow(QPainter& painter, const QRect& plot, const PictureStyle& style);
// A centred note in `plot`, for pictures with nothing to show.
void drawNote(QPainter& painter, const QRect& plot, const QString& text, const PictureStyle& style);

// `colour` mixed with `other`: weight 0 keeps `colour`, 1 gives `other`; rounded to the
// 8 bits per channel an image holds.
QColor mix(const QColor& colour, const QColor& other, double weight);

} // namespace kfaults::picture
