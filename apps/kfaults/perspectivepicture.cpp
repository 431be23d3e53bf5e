#include "perspectivepicture.h"

#include <algorithm>
#include <cmath>

#include <QPainter>

#include "picturecanvas.h"
#include "zbufferraster.h"

namespace kfaults {

using namespace picture;

namespace {

constexpr double kDegree = M_PI / 180.0;
constexpr double kMinElevation = 5.0;
constexpr double kMaxElevation = 85.0;
constexpr double kAutoVerticalShare = 0.5;  // vertical extent / horizontal extent
constexpr double kFloorPadding = 0.05;      // of the horizontal extent
constexpr double kLegendShare = 0.2;        // of the picture width
constexpr double kFitMargin = 0.92;         // share of the plot the scene may fill
constexpr int kFloorTicks = 5;
constexpr double kFog = 0.35;               // share of background mixed in at the far end
constexpr double kOutlineDarkening = 0.55;  // outline colour: fault colour towards black
constexpr double kFootprintFading = 0.7;    // footprint colour: fault colour towards the floor
const QColor kFloorColour(246, 246, 243);

// A pinhole camera looking at the scene centre; world y is up.
struct Camera {
    core::vec3 eye, right, up, forward;
    double focal = 1.0;        // pixels per unit of tangent
    double centreX = 0.0, centreY = 0.0;

    // Screen x, y in pixels and z = 1 / distance along the view (0 behind the eye).
    core::vec3 project(const core::vec3& p) const
    {
        const core::vec3 v = p - eye;
        const double depth = std::max(v.dot(forward), 1e-9);
        return {centreX + focal * v.dot(right) / depth, centreY - focal * v.dot(up) / depth, 1.0 / depth};
    }
};

struct Scene {
    MeshBounds bounds;           // of the exaggerated scene
    double exaggeration = 1.0;
    double floorY = 0.0;
    double east0 = 0, east1 = 0, north0 = 0, north1 = 0;  // floor rectangle
};

// Scene space has y up: world y (time or depth, growing downward) is negated, then
// stretched by the vertical exaggeration.
core::vec3 exaggerated(const core::vec3& p, double factor) { return {p.x, -p.y * factor, p.z}; }

Camera makeCamera(const Scene& scene, const PerspectiveSettings& settings, const QRect& plot)
{
    const double azimuth = settings.viewerAzimuthDegrees * kDegree;
    const double elevation = std::clamp(settings.viewerElevationDegrees, kMinElevation, kMaxElevation) * kDegree;
    const core::vec3 towardEye(std::sin(azimuth) * std::cos(elevation), std::sin(elevation),
                               std::cos(azimuth) * std::cos(elevation));
    const core::vec3 size = scene.bounds.size();
    const double radius = std::max(0.5 * size.length(), 1e-6);
    const double halfField = std::clamp(settings.fieldOfViewDegrees, 5.0, 120.0) * kDegree / 2;
    Camera camera;
    camera.forward = -towardEye;
    camera.eye = scene.bounds.centre() + towardEye * (radius / std::sin(halfField));
    camera.right = core::vec3(-std::cos(azimuth), 0.0, std::sin(azimuth));
    camera.up = (core::vec3(0, 1, 0) + camera.forward * std::sin(elevation)).normalized();
    // Fit: project the corners of the scene and of the floor at unit focal length.
    double lowX = 1e300, highX = -1e300, lowY = 1e300, highY = -1e300;
    for (int corner = 0; corner < 8; ++corner) {
        const core::vec3 p((corner & 1) ? scene.east1 : scene.east0,
                           (corner & 2) ? scene.bounds.high.y : scene.floorY,
                           (corner & 4) ? scene.north1 : scene.north0);
        const core::vec3 s = camera.project(p);
        lowX = std::min(lowX, s.x), highX = std::max(highX, s.x);
        lowY = std::min(lowY, s.y), highY = std::max(highY, s.y);
    }
    const double spanX = std::max(highX - lowX, 1e-12), spanY = std::max(highY - lowY, 1e-12);
    camera.focal = kFitMargin * std::min(plot.width() / spanX, plot.height() / spanY);
    camera.centreX = plot.center().x() - camera.focal * (lowX + highX) / 2;
    camera.centreY = plot.center().y() - camera.focal * (lowY + highY) / 2;
    return camera;
}

QRgb shaded(const QColor& colour, const core::vec3& normal, const core::vec3& light, double ambient)
{
    const double lambert = std::fabs(normal.dot(light));
    const double intensity = ambient + (1.0 - ambient) * lambert;
    return qRgb(int(colour.red() * intensity), int(colour.green() * intensity), int(colour.blue() * intensity));
}

// Edges used by exactly one valid triangle: the outline of the surface and of its holes.
std::vector<std::array<int, 2>> boundaryEdges(const fault::exchange::TriangleMesh& mesh)
{
    std::vector<std::array<int, 2>> edges;
    const int count = static_cast<int>(mesh.vertices.size());
    for (const auto& t : mesh.triangles) {
        if (!isValidTriangle(t, count)) continue;
        for (int i = 0; i < 3; ++i)
            edges.push_back({std::min(t[i], t[(i + 1) % 3]), std::max(t[i], t[(i + 1) % 3])});
    }
    std::sort(edges.begin(), edges.end());
    std::vector<std::array<int, 2>> boundary;
    for (size_t i = 0; i < edges.size();) {
        size_t j = i;
        while (j < edges.size() && edges[j] == edges[i]) ++j;
        if (j - i == 1) boundary.push_back(edges[i]);
        i = j;
    }
    return boundary;
}

// Distance along the view of the nearest and farthest scene corner.
std::pair<double, double> depthRange(const Scene& scene, const Camera& camera)
{
    double nearest = 1e300, farthest = -1e300;
    for (int corner = 0; corner < 8; ++corner) {
        const core::vec3 p((corner & 1) ? scene.bounds.high.x : scene.bounds.low.x,
                           (corner & 2) ? scene.bounds.high.y : scene.bounds.low.y,
                           (corner & 4) ? scene.bounds.high.z : scene.bounds.low.z);
        const double d = (p - camera.eye).dot(camera.forward);
        nearest = std::min(nearest, d), farthest = std::max(farthest, d);
    }
    return {nearest, farthest};
}

void drawFaults(QImage& image, const QRect& plot, const std::vector<FaultMesh>& faults, const Scene& scene,
                const Camera& camera, const PerspectiveSettings& settings)
{
    ZBufferRaster raster(image, plot);
    const double ambient = std::clamp(settings.ambient, 0.0, 1.0);
    const core::vec3 light = (camera.right * -0.35 + camera.up * 0.5 - camera.forward * 0.8).normalized();
    const auto [nearest, farthest] = depthRange(scene, camera);
    const double depthSpan = std::max(farthest - nearest, 1e-9);
    auto fogged = [&](QRgb colour, const core::vec3& at) {
        const double share = std::clamp(((at - camera.eye).dot(camera.forward) - nearest) / depthSpan, 0.0, 1.0);
        return mix(QColor(colour), settings.background, kFog * share).rgb();
    };
    for (const FaultMesh& fault : faults) {
        const auto& vertices = fault.surface.vertices;
        const int count = static_cast<int>(vertices.size());
        for (const auto& tri : fault.surface.triangles) {
            if (!isValidTriangle(tri, count)) continue;
            const core::vec3 a = exaggerated(vertices[tri[0]], scene.exaggeration);
            const core::vec3 b = exaggerated(vertices[tri[1]], scene.exaggeration);
            const core::vec3 c = exaggerated(vertices[tri[2]], scene.exaggeration);
            const core::vec3 normal = (b - a).cross(c - a).normalized();
            const QRgb colour = fogged(shaded(fault.colour, normal, light, ambient), (a + b + c) / 3.0);
            raster.fillTriangle(camera.project(a), camera.project(b), camera.project(c), colour);
        }
    }
    for (const FaultMesh& fault : faults) {
        const QColor outline = mix(fault.colour, Qt::black, kOutlineDarkening);
        for (const auto& edge : boundaryEdges(fault.surface)) {
            const core::vec3 a = exaggerated(fault.surface.vertices[edge[0]], scene.exaggeration);
            const core::vec3 b = exaggerated(fault.surface.vertices[edge[1]], scene.exaggeration);
            raster.drawLine(camera.project(a), camera.project(b), fogged(outline.rgb(), (a + b) / 2.0));
        }
    }
}

QPointF screen(const Camera& camera, double east, double y, double north)
{
    const core::vec3 s = camera.project({east, y, north});
    return {s.x, s.y};
}

// Each fault's vertical projection on the floor, tinted with its colour: the map view
// laid on the floor, which tells where a fault stands better than perspective alone.
void drawFootprints(QPainter& painter, const std::vector<FaultMesh>& faults, const Scene& scene,
                    const Camera& camera, const QColor& floor)
{
    QImage layer(painter.device()->width(), painter.device()->height(), QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    QPainter footprint(&layer);
    footprint.setRenderHint(QPainter::Antialiasing);
    for (const FaultMesh& fault : faults) {
        const QColor tint = mix(fault.colour, floor, kFootprintFading);
        footprint.setPen(QPen(tint, 1));
        footprint.setBrush(tint);
        const auto& vertices = fault.surface.vertices;
        const int count = static_cast<int>(vertices.size());
        for (const auto& tri : fault.surface.triangles) {
            if (!isValidTriangle(tri, count)) continue;
            QPointF corners[3];
            for (int i = 0; i < 3; ++i)
                corners[i] = screen(camera, vertices[tri[i]].x, scene.floorY, vertices[tri[i]].z);
            footprint.drawPolygon(corners, 3);
        }
    }
    footprint.end();
    painter.drawImage(0, 0, layer);
}

void drawFloor(QPainter& painter, const Scene& scene, const Camera& camera, const PictureStyle& style)
{
    const double y = scene.floorY;
    const QPointF corners[4] = {screen(camera, scene.east0, y, scene.north0), screen(camera, scene.east1, y, scene.north0),
                                screen(camera, scene.east1, y, scene.north1), screen(camera, scene.east0, y, scene.north1)};
    painter.setPen(Qt::NoPen);
    painter.setBrush(kFloorColour);
    painter.drawPolygon(corners, 4);
    painter.setPen(QPen(style.faint.darker(108), 1));
    const double eastStep = niceStep(scene.east1 - scene.east0, kFloorTicks);
    for (double e = std::ceil(scene.east0 / eastStep) * eastStep; e <= scene.east1; e += eastStep)
        painter.drawLine(screen(camera, e, y, scene.north0), screen(camera, e, y, scene.north1));
    const double northStep = niceStep(scene.north1 - scene.north0, kFloorTicks);
    for (double n = std::ceil(scene.north0 / northStep) * northStep; n <= scene.north1; n += northStep)
        painter.drawLine(screen(camera, scene.east0, y, n), screen(camera, scene.east1, y, n));
    painter.setPen(QPen(style.ink, style.lineWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolygon(corners, 4);
}

// Index 0..3 of the floor corner nearest to (or farthest from) the eye, in the order
// (east0, north0), (east1, north0), (east1, north1), (east0, north1).
int floorCorner(const Scene& scene, const Camera& camera, bool nearest)
{
    int best = 0;
    double bestDistance = nearest ? 1e300 : -1e300;
    for (int i = 0; i < 4; ++i) {
        const core::vec3 p((i == 1 || i == 2) ? scene.east1 : scene.east0, scene.floorY,
                           i >= 2 ? scene.north1 : scene.north0);
        const double d = (p - camera.eye).length();
        if (nearest ? d < bestDistance : d > bestDistance) best = i, bestDistance = d;
    }
    return best;
}

void drawZAxis(QPainter& painter, const Scene& scene, const Camera& camera, const PerspectiveSettings& settings,
               const PictureStyle& style)
{
    const int corner = floorCorner(scene, camera, false);
    const double east = (corner == 1 || corner == 2) ? scene.east1 : scene.east0;
    const double north = corner >= 2 ? scene.north1 : scene.north0;
    const double top = scene.bounds.high.y, bottom = scene.floorY;
    painter.setPen(QPen(style.ink, style.lineWidth));
    painter.drawLine(screen(camera, east, bottom, north), screen(camera, east, top, north));
    painter.setFont(style.font(style.smallPixels));
    const double zTop = -top / scene.exaggeration, zBottom = -bottom / scene.exaggeration;
    const double step = niceStep(zBottom - zTop, kFloorTicks);
    const int height = painter.fontMetrics().height();
    for (double z = std::ceil(zTop / step) * step; z <= zBottom + step * 1e-9; z += step) {
        const QPointF p = screen(camera, east, -z * scene.exaggeration, north);
        painter.drawLine(p, p + QPointF(-height / 3.0, 0));
        painter.drawText(QRectF(p.x() - 200 - height / 2.0, p.y() - height / 2.0, 200, height),
                         Qt::AlignRight | Qt::AlignVCenter, formatValue(z, step));
    }
    const QString unit = settings.verticalUnit.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(settings.verticalUnit);
    const QPointF label = screen(camera, east, top, north);
    painter.setFont(style.font(style.labelPixels));
    painter.drawText(QRectF(label.x() - 150, label.y() - height * 2, 300, height * 1.5),
                     Qt::AlignHCenter | Qt::AlignBottom, QStringLiteral("Z") + unit);
}

// Tick labels along the two floor edges that meet at the corner nearest to the eye.
void drawFloorLabels(QPainter& painter, const Scene& scene, const Camera& camera, const PictureStyle& style)
{
    const int corner = floorCorner(scene, camera, true);
    const double eastEdge = (corner == 1 || corner == 2) ? scene.east1 : scene.east0;
    const double northEdge = corner >= 2 ? scene.north1 : scene.north0;
    const QPointF centre = screen(camera, (scene.east0 + scene.east1) / 2, scene.floorY, (scene.north0 + scene.north1) / 2);
    painter.setFont(style.font(style.smallPixels));
    painter.setPen(style.ink);
    const int height = painter.fontMetrics().height();
    auto label = [&](const QPointF& at, const QString& text) {
        const QPointF away = at - centre;
        const double length = std::max(1.0, std::hypot(away.x(), away.y()));
        const QPointF anchor = at + away / length * height;
        painter.drawText(QRectF(anchor.x() - 100, anchor.y() - height / 2.0, 200, height), Qt::AlignCenter, text);
    };
    const double eastStep = niceStep(scene.east1 - scene.east0, kFloorTicks);
    for (double e = std::ceil(scene.east0 / eastStep) * eastStep; e <= scene.east1; e += eastStep)
        label(screen(camera, e, scene.floorY, northEdge), formatValue(e, eastStep));
    const double northStep = niceStep(scene.north1 - scene.north0, kFloorTicks);
    for (double n = std::ceil(scene.north0 / northStep) * northStep; n <= scene.north1; n += northStep)
        label(screen(camera, eastEdge, scene.floorY, n), formatValue(n, northStep));
}

// A compass in `area`: an arrow along the screen direction of north on the floor.
void drawCompass(QPainter& painter, const QRect& area, const Scene& scene, const Camera& camera,
                 const PictureStyle& style)
{
    const double east = (scene.east0 + scene.east1) / 2, north = (scene.north0 + scene.north1) / 2;
    const double reach = (scene.north1 - scene.north0) / 4;
    const QPointF from = screen(camera, east, scene.floorY, north);
    const QPointF to = screen(camera, east, scene.floorY, north + reach);
    const double length = std::hypot(to.x() - from.x(), to.y() - from.y());
    if (!(length > 0.0)) return;
    const QPointF direction = (to - from) / length;
    const double radius = std::min(area.width(), area.height()) / 2.0 - style.labelPixels;
    const QPointF centre(area.left() + radius + style.labelPixels, area.center().y());
    painter.setPen(QPen(style.faint.darker(120), 1));
    painter.drawEllipse(centre, radius, radius);
    painter.setPen(QPen(style.ink, style.lineWidth * 2));
    const QPointF tip = centre + direction * radius * 0.85;
    painter.drawLine(centre - direction * radius * 0.5, tip);
    const QPointF side(-direction.y(), direction.x());
    painter.setBrush(style.ink);
    const QPointF head[3] = {tip, tip - direction * radius * 0.3 + side * radius * 0.15,
                             tip - direction * radius * 0.3 - side * radius * 0.15};
    painter.drawPolygon(head, 3);
    painter.setBrush(Qt::NoBrush);
    painter.setFont(style.font(style.labelPixels, true));
    const QPointF label = centre + direction * (radius + style.labelPixels * 0.7);
    painter.drawText(QRectF(label.x() - style.labelPixels, label.y() - style.labelPixels, style.labelPixels * 2,
                            style.labelPixels * 2),
                     Qt::AlignCenter, QStringLiteral("N"));
}

Scene makeScene(const std::vector<FaultMesh>& faults, double exaggeration)
{
    Scene scene;
    scene.exaggeration = exaggeration;
    const MeshBounds raw = boundsOf(faults);
    scene.bounds.include(exaggerated(raw.low, exaggeration));
    scene.bounds.include(exaggerated(raw.high, exaggeration));
    const core::vec3 size = scene.bounds.size();
    const double pad = std::max({size.x, size.z, 1.0}) * kFloorPadding;
    scene.east0 = scene.bounds.low.x - pad, scene.east1 = scene.bounds.high.x + pad;
    scene.north0 = scene.bounds.low.z - pad, scene.north1 = scene.bounds.high.z + pad;
    scene.floorY = scene.bounds.low.y;
    return scene;
}

} // namespace

double effectiveVerticalExaggeration(const std::vector<FaultMesh>& faults, const PerspectiveSettings& settings)
{
    if (settings.verticalExaggeration > 0.0) return settings.verticalExaggeration;
    const MeshBounds bounds = boundsOf(faults);
    const core::vec3 size = bounds.size();
    const double horizontal = std::max(size.x, size.z);
    if (bounds.empty || !(size.y > 0.0) || !(horizontal > 0.0)) return 1.0;
    return kAutoVerticalShare * horizontal / size.y;
}

QImage renderPerspective(const std::vector<FaultMesh>& faults, const PerspectiveSettings& settings)
{
    QImage image = blankPicture(settings.width, settings.height, settings.background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const PictureStyle style(image.size());
    const int legendWidth = int(image.width() * kLegendShare);
    const QRect plot = drawFrame(painter, settings.title,
                                 PlotMargins{style.margin, legendWidth + style.margin, style.margin}, style);
    if (plot.width() < 2 || plot.height() < 2) return image;
    if (boundsOf(faults).empty) {
        drawNote(painter, plot, QStringLiteral("No fault surface to show"), style);
        return image;
    }
    const double exaggeration = effectiveVerticalExaggeration(faults, settings);
    const Scene scene = makeScene(faults, exaggeration);
    const Camera camera = makeCamera(scene, settings, plot);
    drawFloor(painter, scene, camera, style);
    drawFootprints(painter, faults, scene, camera, kFloorColour);
    drawZAxis(painter, scene, camera, settings, style);
    painter.end();
    drawFaults(image, plot, faults, scene, camera, settings);
    painter.begin(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawFloorLabels(painter, scene, camera, style);

    std::vector<LegendEntry> entries;
    for (const FaultMesh& fault : faults) entries.push_back({fault.surface.name, fault.colour});
    const QRect legendArea(plot.right() + style.margin, plot.top(), legendWidth - style.margin, plot.height() * 3 / 4);
    const int bottom = drawLegend(painter, legendArea, entries, style);
    painter.setFont(style.font(style.smallPixels));
    painter.setPen(style.ink);
    const QString caption = QStringLiteral("Seen from N%1°E, %2° above the horizon\nVertical exaggeration ×%3")
                                .arg(std::fmod(std::fmod(settings.viewerAzimuthDegrees, 360.0) + 360.0, 360.0), 0, 'f', 0)
                                .arg(std::clamp(settings.viewerElevationDegrees, kMinElevation, kMaxElevation), 0, 'f', 0)
                                .arg(exaggeration, 0, 'g', 3);
    const QRect captionArea(legendArea.left(), bottom + style.margin, legendArea.width(), style.smallPixels * 5);
    painter.drawText(captionArea, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, caption);
    drawCompass(painter, QRect(legendArea.left(), captionArea.bottom() + style.margin, legendArea.width(),
                               style.titlePixels * 4),
                scene, camera, style);
    return image;
}

} // namespace kfaults
