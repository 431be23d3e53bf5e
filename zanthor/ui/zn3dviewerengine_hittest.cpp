// Hit tests of the 3D view engine on the scene's geometry.
#include <algorithm>
#include <cmath>

#include "zn3dviewerengine.h"

namespace {

constexpr double kRayBoxMargin = 1e-9;  // relative growth of a box tested against the ray

// The line of sight from `origin` along `direction` (t in 0..1 covers near to far)
// against triangle a, b, c: t and the barycentric (u, v) of the hit, or false.
bool rayTriangle(const core::vec3& origin, const core::vec3& direction, const core::vec3& a, const core::vec3& b,
                 const core::vec3& c, double& t, double& u, double& v)
{
    const core::vec3 e1 = b - a, e2 = c - a;
    const core::vec3 p = direction.cross(e2);
    const double det = e1.dot(p);
    if (det == 0.0 || !std::isfinite(det)) return false;
    const double inverse = 1.0 / det;
    const core::vec3 s = origin - a;
    u = s.dot(p) * inverse;
    if (u < 0.0 || u > 1.0) return false;
    const core::vec3 q = s.cross(e1);
    v = direction.dot(q) * inverse;
    if (v < 0.0 || u + v > 1.0) return false;
    t = e2.dot(q) * inverse;
    return t >= 0.0 && t <= 1.0;
}

// Whether the segment origin + t direction, t in 0..1, meets `box` (slab test).
bool segmentMeetsBox(const core::vec3& origin, const core::vec3& direction, const geom::Box3& box)
{
    double enter = 0.0, leave = 1.0;
    const core::vec3 margin = box.size() * kRayBoxMargin;
    for (int axis = 0; axis < 3; ++axis) {
        const double low = box.low[axis] - margin[axis], high = box.high[axis] + margin[axis];
        if (direction[axis] == 0.0) {
            if (origin[axis] < low || origin[axis] > high) return false;
            continue;
        }
        double t0 = (low - origin[axis]) / direction[axis], t1 = (high - origin[axis]) / direction[axis];
        if (t0 > t1) std::swap(t0, t1);
        enter = std::max(enter, t0);
        leave = std::min(leave, t1);
        if (enter > leave) return false;
    }
    return true;
}

// Whether a section's image is transparent at texture coordinates (s, t).
bool transparentAt(const QImage& image, double s, double t)
{
    if (image.isNull()) return false;
    const int column = std::clamp(int(s * image.width()), 0, image.width() - 1);
    const int row = std::clamp(int(t * image.height()), 0, image.height() - 1);
    return qAlpha(image.pixel(column, row)) < 128;
}

} // namespace

ZN3DViewerEngine::Hit ZN3DViewerEngine::hitTest(const core::vec2& screen, bool pickableOnly) const
{
    core::vec3 nearPoint, farPoint;
    m_camera.ray(screen, nearPoint, farPoint);
    Hit best;
    if (nearPoint.x == core::kNoValueReal || farPoint.x == core::kNoValueReal) return best;
    for (const ZN3DScene::Item* item : drawOrder()) {
        if (pickableOnly && !item->pickable) continue;
        const Hit hit = hitItem(*item, screen, nearPoint, farPoint);
        if (hit.isHit() && (!best.isHit() || hit.depth < best.depth)) best = hit;
    }
    return best;
}

bool ZN3DViewerEngine::mayBeUnder(const ZN3DScene::Item& item, const core::vec2& screen) const
{
    const ZN3DScene::Kind kind = item.kind();
    if (kind != ZN3DScene::Kind::Section &&
        !(kind == ZN3DScene::Kind::Surface &&
          std::get<ZN3DSurfaceItem>(item.content).mode != ZN3DSurfaceItem::Mode::Points))
        return true;
    if (item.box.isEmpty()) return false;
    core::vec3 nearPoint, farPoint;
    m_camera.ray(screen, nearPoint, farPoint);
    if (nearPoint.x == core::kNoValueReal || farPoint.x == core::kNoValueReal) return true;
    return segmentMeetsBox(nearPoint, farPoint - nearPoint, item.box);
}

ZN3DViewerEngine::Hit ZN3DViewerEngine::hitTestItem(int id, const core::vec2& screen) const
{
    const ZN3DScene::Item* item = m_scene.item(id);
    core::vec3 nearPoint, farPoint;
    m_camera.ray(screen, nearPoint, farPoint);
    if (!item || nearPoint.x == core::kNoValueReal || farPoint.x == core::kNoValueReal) return Hit();
    if (const auto* surface = std::get_if<ZN3DSurfaceItem>(&item->content))
        if (!surface->object) return Hit();
    return hitItem(*item, screen, nearPoint, farPoint);
}

ZN3DViewerEngine::Hit ZN3DViewerEngine::hitItem(const ZN3DScene::Item& item, const core::vec2& screen,
                                               const core::vec3& nearPoint, const core::vec3& farPoint) const
{
    Hit hit;
    // Triangles are tested relative to the item's origin, where coordinates are small.
    const core::vec3 origin = nearPoint - item.origin, direction = farPoint - nearPoint;
    auto keepTriangleHit = [&](double t) {
        const core::vec3 world = nearPoint + direction * t;
        const double depth = m_camera.depthOf(world);
        if (!hit.isHit() || depth < hit.depth) hit = {item.id, world, depth};
    };
    std::vector<core::vec3> ends;  // segment ends, two by two
    double radius = kLineHitTolerance;
    switch (item.kind()) {
    case ZN3DScene::Kind::Surface: {
        const auto& surface = std::get<ZN3DSurfaceItem>(item.content);
        const core::Array<core::vec3>& points = surface.object->getPoints();
        if (surface.mode == ZN3DSurfaceItem::Mode::Points) {
            const std::vector<core::vec3> all(points.begin(), points.end());
            hit = hitPoints(all, screen, surface.pointSize / 2.0 + kLineHitTolerance);
            hit.id = hit.isHit() ? item.id : core::kNoValue;
            return hit;
        }
        if (!mayBeUnder(item, screen)) return hit;
        const int count = points.size();
        for (const ZNFacette& f : surface.object->getFacettes()) {
            if (f.index[0] >= uint32_t(count) || f.index[1] >= uint32_t(count) || f.index[2] >= uint32_t(count))
                continue;
            double t = 0.0, u = 0.0, v = 0.0;
            if (rayTriangle(origin, direction, points[f.index[0]] - item.origin, points[f.index[1]] - item.origin,
                            points[f.index[2]] - item.origin, t, u, v))
                keepTriangleHit(t);
        }
        return hit;
    }
    case ZN3DScene::Kind::Section: {
        const auto& section = std::get<ZN3DSectionItem>(item.content);
        if (!mayBeUnder(item, screen)) return hit;
        core::vec3 c[4];
        for (int i = 0; i < 4; ++i) c[i] = section.corners[i] - item.origin;
        double t = 0.0, u = 0.0, v = 0.0;
        // Texture coordinates of the two triangles (0, 1, 2) and (0, 2, 3).
        if (rayTriangle(origin, direction, c[0], c[1], c[2], t, u, v) && !transparentAt(section.image, u + v, v))
            keepTriangleHit(t);
        if (rayTriangle(origin, direction, c[0], c[2], c[3], t, u, v) && !transparentAt(section.image, u, u + v))
            keepTriangleHit(t);
        return hit;
    }
    case ZN3DScene::Kind::Polyline: {
        const auto& lines = std::get<ZN3DPolylineItem>(item.content);
        std::vector<core::vec3> points;
        for (size_t i = 0; i < lines.points.size(); ++i) {
            if (lines.points[i].x == core::kNoValueReal) continue;
            points.push_back(lines.points[i]);
            if (i + 1 < lines.points.size() && lines.points[i + 1].x != core::kNoValueReal)
                ends.push_back(lines.points[i]), ends.push_back(lines.points[i + 1]);
        }
        hit = hitSegments(ends, screen, lines.width / 2.0 + kLineHitTolerance);
        if (lines.pointSize > 0.0f) {
            const Hit onPoint = hitPoints(points, screen, lines.pointSize / 2.0 + kLineHitTolerance);
            if (onPoint.isHit() && (!hit.isHit() || onPoint.depth < hit.depth)) hit = onPoint;
        }
        hit.id = hit.isHit() ? item.id : core::kNoValue;
        return hit;
    }
    case ZN3DScene::Kind::Box: {
        const ZN3DBoxItem& box = std::get<ZN3DBoxItem>(item.content);
        if (box.isEmpty()) return hit;
        for (size_t corner = 0; corner < 8; ++corner)
            for (size_t bit = 1; bit < 8; bit <<= 1)
                if (!(corner & bit)) ends.push_back(box.corners[corner]), ends.push_back(box.corners[corner | bit]);
        break;
    }
    case ZN3DScene::Kind::ReferencePoint: {
        const auto& point = std::get<ZN3DReferencePointItem>(item.content);
        const double arm = armLengthOf(point);
        for (int axis = 0; axis < 3; ++axis) {
            core::vec3 offset;
            offset[axis] = arm;
            offset = m_camera.toWorld(offset);
            ends.push_back(point.position - offset), ends.push_back(point.position + offset);
        }
        radius += point.width / 2.0;
        break;
    }
    }
    hit = hitSegments(ends, screen, radius);
    hit.id = hit.isHit() ? item.id : core::kNoValue;
    return hit;
}

ZN3DViewerEngine::Hit ZN3DViewerEngine::hitSegments(const std::vector<core::vec3>& ends, const core::vec2& screen,
                                                    double radius) const
{
    Hit hit;
    for (size_t i = 0; i + 1 < ends.size(); i += 2) {
        core::vec3 a, b;
        if (!m_camera.project(ends[i], a) || !m_camera.project(ends[i + 1], b)) continue;
        if (a.z < 0.0 || a.z > 1.0 || b.z < 0.0 || b.z > 1.0) continue;  // outside the depth range
        const core::vec2 sa(a.x, m_camera.height() - a.y), sb(b.x, m_camera.height() - b.y);
        const core::vec2 along = sb - sa;
        const double length2 = along.dot(along);
        const double s = length2 > 0.0 ? std::clamp((screen - sa).dot(along) / length2, 0.0, 1.0) : 0.0;
        if ((sa + along * s - screen).length() > radius) continue;
        const core::vec3 world = ends[i] + (ends[i + 1] - ends[i]) * s;
        const double depth = a.z + (b.z - a.z) * s;
        if (!hit.isHit() || depth < hit.depth) hit = {0, world, depth};
    }
    return hit;
}

ZN3DViewerEngine::Hit ZN3DViewerEngine::hitPoints(const std::vector<core::vec3>& points, const core::vec2& screen,
                                                  double radius) const
{
    Hit hit;
    for (const core::vec3& p : points) {
        core::vec3 w;
        if (!m_camera.project(p, w) || w.z < 0.0 || w.z > 1.0) continue;
        if ((core::vec2(w.x, m_camera.height() - w.y) - screen).length() > radius) continue;
        if (!hit.isHit() || w.z < hit.depth) hit = {0, p, w.z};
    }
    return hit;
}
