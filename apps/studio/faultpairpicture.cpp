#include "faultpairpicture.h"

#include <algorithm>
#include <cmath>

#include <QPainter>
#include <QPainterPath>

#include <geom/symmetriceigen.h>

namespace {

constexpr double kMargin = 0.1;          // of the picture, left free on each side
constexpr double kFirstWidth = 0.09;     // pen widths, of the picture's size
constexpr double kSecondWidth = 0.035;
constexpr double kFlatShare = 1e-9;      // second spread below this share of the first: a line
constexpr double kFlatPlane = 0.1;       // horizontal share of a normal below which a plane is flat
const QColor kBackground(250, 250, 250);
const QColor kBorder(190, 190, 190);

template <class Visit>
void forEachPoint(const core::Array<core::PointWithBool>& points, Visit visit)
{
    for (const core::PointWithBool& p : points)
        if (!p.isSeparator()) visit(p.position());
}

// The sticks of `points` as screen polylines (one point for a one-point stick).
QPainterPath sticksPath(const core::Array<core::PointWithBool>& points, const FaultPairPlane& plane,
                        const QPointF& offset, double scale)
{
    QPainterPath path;
    bool open = false;
    for (const core::PointWithBool& p : points) {
        if (p.isSeparator()) {
            open = false;
            continue;
        }
        const core::vec3 d = p.position() - plane.centre;
        const QPointF screen = offset + QPointF(d.dot(plane.along), d.dot(plane.down)) * scale;
        if (open) {
            path.lineTo(screen);
        } else {
            path.moveTo(screen);
            path.lineTo(screen);  // a stick of one point still shows
            open = true;
        }
    }
    return path;
}

} // namespace

QColor firstFaultColour() { return QColor(230, 100, 30); }
QColor secondFaultColour() { return QColor(40, 120, 230); }
QColor mergedFaultColour() { return QColor(120, 70, 160); }

FaultPairPlane faultPairPlane(const core::Array<core::PointWithBool>& first,
                              const core::Array<core::PointWithBool>& second)
{
    FaultPairPlane plane;
    int n = 0;
    for (const auto* list : {&first, &second})
        forEachPoint(*list, [&](const core::vec3& p) {
            plane.centre = plane.centre + p;
            ++n;
        });
    if (n < 3) return plane;
    plane.centre = plane.centre / double(n);
    double m[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0};
    for (const auto* list : {&first, &second})
        forEachPoint(*list, [&](const core::vec3& p) {
            const core::vec3 d = p - plane.centre;
            const double c[3] = {d.x, d.y, d.z};
            for (int r = 0; r < 3; ++r)
                for (int k = 0; k < 3; ++k) m[3 * r + k] += c[r] * c[k] / n;
        });
    const auto pairs = geom::symmetricEigenPairs(m);
    if (!(pairs[1].value > kFlatShare * pairs[0].value)) return plane;
    plane.normal = pairs[2].vector.normalized();
    // Along strike (horizontal in the plane) when the plane is not flat, so that sticks
    // picked down the dip stand upright; along the greatest spread otherwise.
    const core::vec3 strike = core::vec3(0, 1, 0).cross(plane.normal);
    plane.along = strike.length() > kFlatPlane ? strike.normalized() : pairs[0].vector.normalized();
    plane.down = plane.normal.cross(plane.along).normalized();
    if (plane.down.y < 0) plane.down = -plane.down;
    plane.valid = true;
    return plane;
}

QImage faultPairPicture(const core::Array<core::PointWithBool>& first,
                        const core::Array<core::PointWithBool>& second, int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(kBorder, 1.0));
    painter.setBrush(kBackground);
    painter.drawRoundedRect(QRectF(0.5, 0.5, size - 1.0, size - 1.0), size * 0.08, size * 0.08);

    const FaultPairPlane plane = faultPairPlane(first, second);
    if (!plane.valid) return image;
    double minU = 1e300, maxU = -1e300, minV = 1e300, maxV = -1e300;
    for (const auto* list : {&first, &second})
        forEachPoint(*list, [&](const core::vec3& p) {
            const core::vec3 d = p - plane.centre;
            minU = std::min(minU, d.dot(plane.along));
            maxU = std::max(maxU, d.dot(plane.along));
            minV = std::min(minV, d.dot(plane.down));
            maxV = std::max(maxV, d.dot(plane.down));
        });
    const double room = size * (1.0 - 2.0 * kMargin);
    const double scale = room / std::max({maxU - minU, maxV - minV, 1e-12});
    const QPointF offset(size / 2.0 - (minU + maxU) / 2.0 * scale, size / 2.0 - (minV + maxV) / 2.0 * scale);
    painter.setBrush(Qt::NoBrush);
    const struct {
        const core::Array<core::PointWithBool>* points;
        QColor colour;
        double width;
    } layers[] = {{&first, firstFaultColour(), kFirstWidth}, {&second, secondFaultColour(), kSecondWidth}};
    for (const auto& layer : layers) {
        painter.setPen(QPen(layer.colour, std::max(1.0, size * layer.width), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(sticksPath(*layer.points, plane, offset, scale));
    }
    return image;
}
