#include "zn3dcamera.h"

#include <algorithm>
#include <cmath>

#include <GL/glu.h>

#include <core/conventions.h>

namespace {

constexpr double kDegToRad = M_PI / 180.0;
constexpr double kTinyRadius = 1e-9;  // radius of a box of one point

// The matrices and viewport as GLU reads them: column-major arrays.
struct GluView {
    GLdouble model[16];
    GLdouble projection[16];
    GLint viewport[4];

    GluView(const core::mat4& modelView, const core::mat4& projectionMatrix, int width, int height)
        : viewport{0, 0, width, height}
    {
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c) {
                model[4 * c + r] = modelView(r, c);
                projection[4 * c + r] = projectionMatrix(r, c);
            }
    }
};

} // namespace

void ZN3DCamera::setViewport(int width, int height)
{
    m_width = std::max(1, width);
    m_height = std::max(1, height);
}

void ZN3DCamera::setDistance(double distance)
{
    if (!std::isfinite(distance)) return;
    double smallest = 0.0, largest = 0.0;
    distanceLimits(smallest, largest);
    m_distance = std::clamp(distance, smallest, largest);
}

void ZN3DCamera::setOrientation(double azimuth, double elevation)
{
    if (!std::isfinite(azimuth) || !std::isfinite(elevation)) return;
    azimuth = std::fmod(azimuth, 360.0);
    if (azimuth < 0.0) azimuth += 360.0;
    if (azimuth >= 360.0) azimuth = 0.0;  // -1e-17 + 360 rounds to 360
    m_azimuth = azimuth;
    m_elevation = std::clamp(elevation, -90.0, 90.0);
}

void ZN3DCamera::setStandardView(StandardView view)
{
    switch (view) {
    case StandardView::Map: setOrientation(0.0, 90.0); break;
    case StandardView::FromSouth: setOrientation(0.0, 0.0); break;
    case StandardView::FromWest: setOrientation(90.0, 0.0); break;
    case StandardView::FromNorth: setOrientation(180.0, 0.0); break;
    case StandardView::FromEast: setOrientation(270.0, 0.0); break;
    }
}

bool ZN3DCamera::setVerticalExaggeration(double exaggeration)
{
    if (!(exaggeration > 0.0) || !std::isfinite(exaggeration)) return false;
    m_exaggeration = exaggeration;
    return true;
}

void ZN3DCamera::setFieldOfView(double degrees)
{
    if (!std::isfinite(degrees)) return;
    m_fieldOfView = std::clamp(degrees, kMinimumFieldOfView, kMaximumFieldOfView);
}

void ZN3DCamera::orbit(double deltaAzimuth, double deltaElevation)
{
    setOrientation(m_azimuth + deltaAzimuth, m_elevation + deltaElevation);
}

void ZN3DCamera::pan(const core::vec2& from, const core::vec2& to)
{
    const double depth = depthOf(m_centre);
    if (depth == core::kNoValueReal) return;
    const core::vec3 a = screenToWorld(from, depth), b = screenToWorld(to, depth);
    if (a.x == core::kNoValueReal || b.x == core::kNoValueReal) return;
    m_centre += a - b;
}

void ZN3DCamera::zoomAround(const core::vec3& anchor, double factor)
{
    if (!(factor > 0.0) || !std::isfinite(factor)) return;
    double smallest = 0.0, largest = 0.0;
    distanceLimits(smallest, largest);
    const double distance = std::clamp(m_distance * factor, smallest, largest);
    factor = distance / m_distance;
    // A homothety of the eye and the centre about the anchor keeps the anchor's line of
    // sight, hence its screen position, in both projections.
    m_centre = anchor + (m_centre - anchor) * factor;
    m_distance = distance;
}

void ZN3DCamera::zoomAt(const core::vec2& screen, double factor)
{
    const double depth = depthOf(m_centre);
    if (depth == core::kNoValueReal) return;
    const core::vec3 anchor = screenToWorld(screen, depth);
    if (anchor.x == core::kNoValueReal) return;
    zoomAround(anchor, factor);
}

bool ZN3DCamera::fit(const geom::Box3& box)
{
    if (box.isEmpty()) return false;
    m_centre = (box.low + box.high) / 2.0;
    // The nearest distance at which every corner of the box lies in the view, its
    // offsets across the view grown by the margin.
    core::vec3 right, up;
    rightAndUp(right, up);
    const core::vec3 forward = viewDirection(), centre = toDisplay(m_centre);
    const double tanVertical = std::tan(m_fieldOfView * kDegToRad / 2.0), tanHorizontal = tanVertical * aspect();
    double distance = 0.0;
    for (int corner = 0; corner < 8; ++corner) {
        const core::vec3 p((corner & 1) ? box.high.x : box.low.x, (corner & 2) ? box.high.y : box.low.y,
                           (corner & 4) ? box.high.z : box.low.z);
        const core::vec3 offset = toDisplay(p) - centre;
        const double across = std::fabs(offset.dot(right)) * kFitMargin;
        const double upward = std::fabs(offset.dot(up)) * kFitMargin;
        if (m_projection == Projection::Perspective) {
            const double along = offset.dot(forward);  // beyond the centre's plane
            distance = std::max({distance, across / tanHorizontal - along, upward / tanVertical - along});
        } else {
            distance = std::max({distance, across / tanHorizontal, upward / tanVertical});
        }
    }
    // The limits follow the scene box, of which the fitted box is part.
    geom::Box3 scene = m_sceneBox;
    scene.include(box.low);
    scene.include(box.high);
    double smallest = 0.0, largest = 0.0;
    limitsFor(scene, smallest, largest);
    m_distance = std::clamp(distance, smallest, largest);
    return true;
}

core::vec3 ZN3DCamera::viewDirection() const
{
    const double a = m_azimuth * kDegToRad, e = m_elevation * kDegToRad;
    return {std::cos(e) * std::sin(a), std::sin(e), std::cos(e) * std::cos(a)};
}

void ZN3DCamera::rightAndUp(core::vec3& right, core::vec3& up) const
{
    // Right is horizontal, a quarter turn clockwise from the azimuth; it stays defined
    // when looking straight down or up.
    const double a = m_azimuth * kDegToRad;
    right = core::vec3(std::cos(a), 0.0, -std::sin(a));
    up = right.cross(viewDirection()).normalized();
}

core::vec3 ZN3DCamera::eyeDisplay() const { return toDisplay(m_centre) - viewDirection() * m_distance; }

core::mat4 ZN3DCamera::displayViewMatrix() const
{
    core::vec3 right, up;
    rightAndUp(right, up);
    const core::vec3 forward = viewDirection(), eye = eyeDisplay();
    core::mat4 m;
    const core::vec3 rows[3] = {right, up, -forward};
    for (int r = 0; r < 3; ++r) {
        m(r, 0) = rows[r].x;
        m(r, 1) = rows[r].y;
        m(r, 2) = rows[r].z;
        m(r, 3) = -rows[r].dot(eye);
    }
    return m;
}

core::mat4 ZN3DCamera::viewMatrix() const
{
    return displayViewMatrix() * core::mat4::scaling({1.0, m_exaggeration, 1.0});
}

void ZN3DCamera::sceneSphere(core::vec3& centre, double& radius) const
{
    if (m_sceneBox.isEmpty()) {
        centre = toDisplay(m_centre);
        radius = m_distance;
        return;
    }
    const core::vec3 low = toDisplay(m_sceneBox.low), high = toDisplay(m_sceneBox.high);
    centre = (low + high) / 2.0;
    radius = std::max(kTinyRadius, (high - low).length() / 2.0);
}

double ZN3DCamera::farPlane() const
{
    core::vec3 centre;
    double radius = 0.0;
    sceneSphere(centre, radius);
    // Along the view axis: the sphere's far side, and never less than the centre's plane
    // with room behind it.
    const double along = (centre - eyeDisplay()).dot(viewDirection());
    return std::max(along + radius * kDepthMargin, m_distance * 2.0);
}

double ZN3DCamera::nearPlane() const
{
    core::vec3 centre;
    double radius = 0.0;
    sceneSphere(centre, radius);
    const double along = (centre - eyeDisplay()).dot(viewDirection());
    // In front of the centre's plane, and in perspective not so near that the depth
    // buffer loses its resolution.
    const double nearSide = std::min(along - radius * kDepthMargin, m_distance * 0.5);
    if (m_projection == Projection::Orthographic) return nearSide;
    return std::max(nearSide, farPlane() * kNearFarRatio);
}

double ZN3DCamera::halfHeightAtCentre() const { return m_distance * std::tan(m_fieldOfView * kDegToRad / 2.0); }

core::mat4 ZN3DCamera::projectionMatrix() const
{
    const double n = nearPlane(), f = farPlane();
    core::mat4 m = core::mat4::zero();
    if (m_projection == Projection::Perspective) {
        const double cot = 1.0 / std::tan(m_fieldOfView * kDegToRad / 2.0);
        m(0, 0) = cot / aspect();
        m(1, 1) = cot;
        m(2, 2) = (f + n) / (n - f);
        m(2, 3) = 2.0 * f * n / (n - f);
        m(3, 2) = -1.0;
    } else {
        const double halfHeight = halfHeightAtCentre(), halfWidth = halfHeight * aspect();
        m(0, 0) = 1.0 / halfWidth;
        m(1, 1) = 1.0 / halfHeight;
        m(2, 2) = -2.0 / (f - n);
        m(2, 3) = -(f + n) / (f - n);
        m(3, 3) = 1.0;
    }
    return m;
}

bool ZN3DCamera::project(const core::vec3& world, core::vec3& window) const
{
    const GluView glu(viewMatrix(), projectionMatrix(), m_width, m_height);
    GLdouble x = 0.0, y = 0.0, z = 0.0;
    if (gluProject(world.x, world.y, world.z, glu.model, glu.projection, glu.viewport, &x, &y, &z) != GL_TRUE)
        return false;
    window = {x, y, z};
    return true;
}

bool ZN3DCamera::unproject(const core::vec3& window, core::vec3& world) const
{
    const GluView glu(viewMatrix(), projectionMatrix(), m_width, m_height);
    GLdouble x = 0.0, y = 0.0, z = 0.0;
    if (gluUnProject(window.x, window.y, window.z, glu.model, glu.projection, glu.viewport, &x, &y, &z) != GL_TRUE)
        return false;
    world = {x, y, z};
    return true;
}

core::vec2 ZN3DCamera::worldToScreen(const core::vec3& world) const
{
    core::vec3 window;
    if (!project(world, window)) return {core::kNoValueReal, core::kNoValueReal};
    return {window.x, m_height - window.y};
}

core::vec3 ZN3DCamera::screenToWorld(const core::vec2& screen, double depth) const
{
    core::vec3 world(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);
    unproject({screen.x, m_height - screen.y, depth}, world);
    return world;
}

double ZN3DCamera::depthOf(const core::vec3& world) const
{
    core::vec3 window;
    return project(world, window) ? window.z : core::kNoValueReal;
}

void ZN3DCamera::ray(const core::vec2& screen, core::vec3& nearPoint, core::vec3& farPoint) const
{
    nearPoint = screenToWorld(screen, 0.0);
    farPoint = screenToWorld(screen, 1.0);
}

double ZN3DCamera::displayUnitsPerPixel(const core::vec3& world) const
{
    const double halfAngleTan = std::tan(m_fieldOfView * kDegToRad / 2.0);
    if (m_projection == Projection::Orthographic) return 2.0 * m_distance * halfAngleTan / m_height;
    const double depth = std::max((toDisplay(world) - eyeDisplay()).dot(viewDirection()), nearPlane());
    return 2.0 * depth * halfAngleTan / m_height;
}

void ZN3DCamera::distanceLimits(double& smallest, double& largest) const
{
    limitsFor(m_sceneBox, smallest, largest);
}

void ZN3DCamera::limitsFor(const geom::Box3& box, double& smallest, double& largest) const
{
    if (box.isEmpty()) {
        smallest = kTinyRadius;
        largest = kLargestDistance;
        return;
    }
    const double radius = std::max(kTinyRadius, (toDisplay(box.high) - toDisplay(box.low)).length() / 2.0);
    smallest = radius * kMinimumDistanceRatio;
    largest = radius * kMaximumDistanceRatio;
}
