#include "mapviewpicture.h"

#include <algorithm>

#include <QLinearGradient>
#include <QPainter>
#include <QFontMetrics>
#include <QPolygonF>

#include "picturecanvas.h"

namespace kfaults {

using namespace picture;

namespace {

constexpr double kPadding = 0.04;        // of the map extent, around the faults
constexpr double kLegendShare = 0.2;     // of the picture width
constexpr double kMinimumExtent = 1.0;   // world units, for a map of a single line
constexpr int kMaxLabelledFaults = 20;   // more names than this would only clutter the map
constexpr int kLabelBoxAlpha = 210;

struct Triangle {
    double depth;  // mean Z, positive down
    int fault;
    int index;
};

// Extends the smaller of the two ranges so that both map to `plot` at one scale.
double fitEqualScale(double& east0, double& east1, double& north0, double& north1, const QRect& plot)
{
    const double scale = std::min(plot.width() / (east1 - east0), plot.height() / (north1 - north0));
    const double eastGrow = (plot.width() / scale - (east1 - east0)) / 2;
    const double northGrow = (plot.height() / scale - (north1 - north0)) / 2;
    east0 -= eastGrow;
    east1 += eastGrow;
    north0 -= northGrow;
    north1 += northGrow;
    return scale;
}

std::vector<Triangle> trianglesDeepestFirst(const std::vector<FaultMesh>& faults)
{
    std::vector<Triangle> triangles;
    for (size_t f = 0; f < faults.size(); ++f) {
        const auto& mesh = faults[f].surface;
        const int count = static_cast<int>(mesh.vertices.size());
        for (size_t t = 0; t < mesh.triangles.size(); ++t) {
            const auto& tri = mesh.triangles[t];
            if (!isValidTriangle(tri, count)) continue;
            const double y = (mesh.vertices[tri[0]].y + mesh.vertices[tri[1]].y + mesh.vertices[tri[2]].y) / 3;
            triangles.push_back({y, static_cast<int>(f), static_cast<int>(t)});  // world y is depth
        }
    }
    std::stable_sort(triangles.begin(), triangles.end(),
                     [](const Triangle& a, const Triangle& b) { return a.depth > b.depth; });
    return triangles;
}

// Each fault's name at the centre of its vertices, on a pale box so that it reads on any
// colour.
void drawFaultLabels(QPainter& painter, const std::vector<FaultMesh>& faults, const AxisMapping& eastAxis,
                     const AxisMapping& northAxis, const PictureStyle& style)
{
    painter.setFont(style.font(style.smallPixels));
    const QFontMetrics metrics = painter.fontMetrics();
    for (const FaultMesh& fault : faults) {
        if (fault.surface.vertices.empty() || fault.surface.triangles.empty()) continue;
        core::vec3 centre;
        for (const core::vec3& v : fault.surface.vertices) centre += v;
        centre = centre / double(fault.surface.vertices.size());
        const QPointF at(eastAxis.toPixel(centre.x), northAxis.toPixel(centre.z));
        const QString& name = fault.surface.name;
        const int pad = std::max(2, style.smallPixels / 4);
        const QRectF box(at.x() - metrics.horizontalAdvance(name) / 2.0 - pad, at.y() - metrics.height() / 2.0,
                         metrics.horizontalAdvance(name) + 2 * pad, metrics.height());
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(255, 255, 255, kLabelBoxAlpha));
        painter.drawRoundedRect(box, pad, pad);
        painter.setPen(style.ink);
        painter.drawText(box, Qt::AlignCenter, name);
    }
    painter.setBrush(Qt::NoBrush);
}

void drawDepthKey(QPainter& painter, const QRect& area, double shallow, double deep,
                  const MapViewSettings& settings, const PictureStyle& style)
{
    painter.setFont(style.font(style.labelPixels));
    painter.setPen(style.ink);
    const int line = painter.fontMetrics().height();
    const QString unit = settings.verticalUnit.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(settings.verticalUnit);
    painter.drawText(QRect(area.left(), area.top(), area.width(), line), Qt::AlignLeft, QStringLiteral("Z") + unit);
    const QRect bar(area.left(), area.top() + line * 2, line, std::min(area.height() - line * 3, line * 6));
    if (bar.height() <= 0) return;
    QLinearGradient gradient(bar.topLeft(), bar.bottomLeft());
    const QColor grey(150, 150, 150);
    gradient.setColorAt(0.0, mix(grey, Qt::white, settings.shallowLightening));
    gradient.setColorAt(1.0, mix(grey, Qt::black, settings.deepDarkening));
    painter.setPen(QPen(style.ink, 1));
    painter.setBrush(gradient);
    painter.drawRect(bar);
    painter.setBrush(Qt::NoBrush);
    painter.setFont(style.font(style.smallPixels));
    const double step = niceStep(deep - shallow, 4);
    const int text = painter.fontMetrics().height();
    const QRect top(bar.right() + line / 2, bar.top() - text / 2, area.width(), text);
    painter.drawText(top, Qt::AlignLeft | Qt::AlignVCenter, formatValue(shallow, step) + QStringLiteral("  shallow"));
    const QRect bottom(bar.right() + line / 2, bar.bottom() - text / 2, area.width(), text);
    painter.drawText(bottom, Qt::AlignLeft | Qt::AlignVCenter, formatValue(deep, step) + QStringLiteral("  deep"));
}

} // namespace

QImage renderMapView(const std::vector<FaultMesh>& faults, const MapViewSettings& settings)
{
    QImage image = blankPicture(settings.width, settings.height, settings.background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const PictureStyle style(image.size());
    const int legendWidth = int(image.width() * kLegendShare);
    const PlotMargins margins{style.margin + style.labelPixels * 6, legendWidth + style.margin,
                              style.margin + style.labelPixels * 4};
    const QRect plot = drawFrame(painter, settings.title, margins, style);
    if (plot.width() < 2 || plot.height() < 2) return image;

    const MeshBounds bounds = boundsOf(faults);
    if (bounds.empty) {
        painter.setPen(QPen(style.ink, style.lineWidth));
        painter.drawRect(plot);
        drawNote(painter, plot, QStringLiteral("No fault surface to show"), style);
        return image;
    }
    const double padEast = std::max(bounds.size().x, kMinimumExtent) * kPadding + kMinimumExtent / 2;
    const double padNorth = std::max(bounds.size().z, kMinimumExtent) * kPadding + kMinimumExtent / 2;
    double east0 = bounds.low.x - padEast, east1 = bounds.high.x + padEast;
    double north0 = bounds.low.z - padNorth, north1 = bounds.high.z + padNorth;
    const double scale = fitEqualScale(east0, east1, north0, north1, plot);
    const AxisMapping eastAxis{east0, east1, double(plot.left()), double(plot.right())};
    const AxisMapping northAxis{north0, north1, double(plot.bottom()), double(plot.top())};

    drawHorizontalAxis(painter, plot, eastAxis, QStringLiteral("Easting (%1)").arg(settings.horizontalUnit), style);
    drawVerticalAxis(painter, plot, northAxis, QStringLiteral("Northing (%1)").arg(settings.horizontalUnit), style);

    const double shallow = bounds.low.y;  // world y grows downward
    const double deep = bounds.high.y;
    const double depthRange = deep - shallow;
    painter.save();
    painter.setClipRect(plot);
    for (const Triangle& t : trianglesDeepestFirst(faults)) {
        const FaultMesh& fault = faults[t.fault];
        const auto& tri = fault.surface.triangles[t.index];
        QPolygonF polygon;
        for (int corner : tri) {
            const core::vec3& v = fault.surface.vertices[corner];
            polygon << QPointF(eastAxis.toPixel(v.x), northAxis.toPixel(v.z));
        }
        const double depthShare = depthRange > 0.0 ? (t.depth - shallow) / depthRange : 0.5;
        const QColor colour = depthShare < 0.5
                                  ? mix(fault.colour, Qt::white, settings.shallowLightening * (1 - 2 * depthShare))
                                  : mix(fault.colour, Qt::black, settings.deepDarkening * (2 * depthShare - 1));
        painter.setPen(QPen(colour, 0.8));
        painter.setBrush(colour);
        painter.drawPolygon(polygon);
    }
    if (static_cast<int>(faults.size()) <= kMaxLabelledFaults) drawFaultLabels(painter, faults, eastAxis, northAxis, style);
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(style.ink, style.lineWidth));
    painter.drawRect(plot);
    drawScaleBar(painter, plot, scale, settings.horizontalUnit, style);
    drawNorthArrow(painter, plot, style);

    std::vector<LegendEntry> entries;
    for (const FaultMesh& fault : faults) entries.push_back({fault.surface.name, fault.colour});
    const QRect legendArea(plot.right() + style.margin * 2, plot.top(), legendWidth - style.margin * 2,
                           plot.height() * 2 / 3);
    const int legendBottom = drawLegend(painter, legendArea, entries, style);
    drawDepthKey(painter, QRect(legendArea.left(), legendBottom + style.margin, legendArea.width(),
                                plot.bottom() - legendBottom - style.margin),
                 shallow, deep, settings, style);
    return image;
}

} // namespace kfaults
