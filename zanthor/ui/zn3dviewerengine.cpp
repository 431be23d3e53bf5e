#include "zn3dviewerengine.h"

#include <algorithm>
#include <cmath>

ZN3DViewerEngine::ZN3DViewerEngine()
{
    m_scene.setChangedCallback([this] { sceneChanged(); });
}

void ZN3DViewerEngine::setCamera(const ZN3DCamera& camera)
{
    const int width = m_camera.width(), height = m_camera.height();
    const geom::Box3 box = m_camera.sceneBox();
    m_camera = camera;
    m_camera.setViewport(width, height);
    m_camera.setSceneBox(box);
    cameraMoved();
}

void ZN3DViewerEngine::setBackground(const QColor& colour)
{
    m_background = colour;
    changed();
}

void ZN3DViewerEngine::setViewport(int width, int height)
{
    m_camera.setViewport(width, height);
    if (m_fitted) m_camera.fit(m_scene.boundingBox());
    changed();
}

void ZN3DViewerEngine::orbit(double deltaAzimuth, double deltaElevation)
{
    m_camera.orbit(deltaAzimuth, deltaElevation);
    cameraMoved();
}

void ZN3DViewerEngine::pan(const core::vec2& from, const core::vec2& to)
{
    m_camera.pan(from, to);
    cameraMoved();
}

void ZN3DViewerEngine::zoomAt(const core::vec2& screen, double factor, const core::vec3* anchor)
{
    if (anchor)
        m_camera.zoomAround(*anchor, factor);
    else
        m_camera.zoomAt(screen, factor);
    cameraMoved();
}

bool ZN3DViewerEngine::fitAll() { return fit(m_scene.boundingBox()); }

bool ZN3DViewerEngine::fit(const geom::Box3& box)
{
    if (!m_camera.fit(box)) return false;
    const geom::Box3 scene = m_scene.boundingBox();
    m_fitted = !scene.isEmpty() && box.low == scene.low && box.high == scene.high;
    changed();
    return true;
}

void ZN3DViewerEngine::setStandardView(ZN3DCamera::StandardView view)
{
    m_camera.setStandardView(view);
    changed();  // centre and distance are kept: a fitted view stays fitted
}

void ZN3DViewerEngine::setOrientation(double azimuth, double elevation)
{
    m_camera.setOrientation(azimuth, elevation);
    changed();  // as for the standard views
}

bool ZN3DViewerEngine::setVerticalExaggeration(double exaggeration)
{
    if (!m_camera.setVerticalExaggeration(exaggeration)) return false;
    if (m_fitted) m_camera.fit(m_scene.boundingBox());
    changed();
    return true;
}

void ZN3DViewerEngine::setProjection(ZN3DCamera::Projection projection)
{
    m_camera.setProjection(projection);
    if (m_fitted) m_camera.fit(m_scene.boundingBox());
    changed();
}

void ZN3DViewerEngine::centreOn(const core::vec3& world)
{
    m_camera.setCentre(world);
    cameraMoved();
}

ZN3DViewerEngine::DragMode ZN3DViewerEngine::pressAt(const core::vec2& screen, Qt::MouseButton button,
                                                     Qt::KeyboardModifiers modifiers)
{
    m_pressButton = button;
    m_pressModifiers = modifiers;
    m_pressPosition = m_lastPosition = screen;
    m_drag = DragMode::None;
    m_pendingDrag = DragMode::None;
    if (button == Qt::MiddleButton || (button == Qt::LeftButton && (modifiers & Qt::ShiftModifier)))
        m_pendingDrag = DragMode::Pan;
    else if (button == Qt::LeftButton && !(modifiers & Qt::ControlModifier))
        m_pendingDrag = DragMode::Orbit;
    return m_pendingDrag;
}

void ZN3DViewerEngine::moveTo(const core::vec2& screen)
{
    if (m_drag == DragMode::None) {
        if (m_pendingDrag == DragMode::None || (screen - m_pressPosition).length() < kClickTolerance) return;
        m_drag = m_pendingDrag;
    }
    const core::vec2 delta = screen - m_lastPosition;
    if (m_drag == DragMode::Orbit)
        orbit(delta.x * kOrbitDegreesPerPixel, delta.y * kOrbitDegreesPerPixel);
    else
        pan(m_lastPosition, screen);
    m_lastPosition = screen;
}

bool ZN3DViewerEngine::releaseAt(const core::vec2& screen)
{
    const bool click = m_pressButton == Qt::LeftButton && m_drag == DragMode::None &&
                       (screen - m_pressPosition).length() < kClickTolerance;
    m_drag = m_pendingDrag = DragMode::None;
    m_pressButton = Qt::NoButton;
    return click;
}

void ZN3DViewerEngine::wheelAt(const core::vec2& screen, int angleDelta, const core::vec3* anchor)
{
    if (angleDelta == 0) return;
    zoomAt(screen, std::pow(kWheelZoomPerNotch, double(angleDelta) / kWheelNotch), anchor);
}

bool ZN3DViewerEngine::keyPressed(int key, Qt::KeyboardModifiers modifiers)
{
    Q_UNUSED(modifiers);
    using View = ZN3DCamera::StandardView;
    const core::vec2 middle(m_camera.width() / 2.0, m_camera.height() / 2.0);
    switch (key) {
    case Qt::Key_F:
    case Qt::Key_Home: fitAll(); return true;
    case Qt::Key_M: setStandardView(View::Map); return true;
    case Qt::Key_N: setStandardView(View::FromNorth); return true;
    case Qt::Key_S: setStandardView(View::FromSouth); return true;
    case Qt::Key_E: setStandardView(View::FromEast); return true;
    case Qt::Key_W: setStandardView(View::FromWest); return true;
    case Qt::Key_Left: orbit(-kKeyOrbitStep, 0.0); return true;
    case Qt::Key_Right: orbit(kKeyOrbitStep, 0.0); return true;
    case Qt::Key_Up: orbit(0.0, kKeyOrbitStep); return true;
    case Qt::Key_Down: orbit(0.0, -kKeyOrbitStep); return true;
    case Qt::Key_Plus:
    case Qt::Key_Equal: zoomAt(middle, kKeyZoomFactor); return true;
    case Qt::Key_Minus: zoomAt(middle, 1.0 / kKeyZoomFactor); return true;
    case Qt::Key_PageUp: setVerticalExaggeration(m_camera.verticalExaggeration() * kExaggerationStep); return true;
    case Qt::Key_PageDown: setVerticalExaggeration(m_camera.verticalExaggeration() / kExaggerationStep); return true;
    case Qt::Key_P:
        setProjection(m_camera.projection() == ZN3DCamera::Projection::Perspective
                          ? ZN3DCamera::Projection::Orthographic
                          : ZN3DCamera::Projection::Perspective);
        return true;
    default: return false;
    }
}

std::vector<const ZN3DScene::Item*> ZN3DViewerEngine::drawOrder() const
{
    std::vector<const ZN3DScene::Item*> order, transparent;
    for (const ZN3DScene::Item& item : m_scene.items()) {
        if (!item.isDrawn()) continue;
        (item.isTransparent() ? transparent : order).push_back(&item);
    }
    const core::vec3 eye = m_camera.eyeDisplay();
    auto distance = [&](const ZN3DScene::Item* item) { return (m_camera.toDisplay(item->origin) - eye).length(); };
    std::stable_sort(transparent.begin(), transparent.end(),
                     [&](const ZN3DScene::Item* a, const ZN3DScene::Item* b) { return distance(a) > distance(b); });
    order.insert(order.end(), transparent.begin(), transparent.end());
    return order;
}

double ZN3DViewerEngine::armLengthOf(const ZN3DReferencePointItem& point) const
{
    return point.armPixels * m_camera.displayUnitsPerPixel(point.position);
}

core::mat4 ZN3DViewerEngine::modelViewOf(const ZN3DScene::Item& item) const
{
    if (const auto* point = std::get_if<ZN3DReferencePointItem>(&item.content)) {
        const double arm = armLengthOf(*point);
        return m_camera.displayViewMatrix() * core::mat4::translation(m_camera.toDisplay(point->position)) *
               core::mat4::scaling({arm, arm, arm});
    }
    return m_camera.viewMatrix() * core::mat4::translation(item.origin);
}

std::vector<ZN3DViewerEngine::Label> ZN3DViewerEngine::labels() const
{
    std::vector<Label> labels;
    for (const ZN3DScene::Item* item : drawOrder()) {
        const auto* boxItem = std::get_if<ZN3DBoxItem>(&item->content);
        if (!boxItem || boxItem->isEmpty()) continue;
        const std::array<core::vec3, 8>& corners = boxItem->corners;
        const core::vec2 centre = m_camera.worldToScreen((corners[0] + corners[7]) / 2.0);
        if (centre.x == core::kNoValueReal) continue;
        for (size_t axis = 0; axis < 3; ++axis) {
            const ZN3DBoxItem::Axis& labelled = boxItem->axes[axis];
            if (labelled.name.isEmpty()) continue;
            // The four edges along `axis`: from each corner at its low end.
            const size_t bit = size_t(1) << axis;
            double farthest = -1.0;
            core::vec3 bestLow, bestHigh;
            core::vec2 bestMiddle;
            for (size_t corner = 0; corner < 8; ++corner) {
                if (corner & bit) continue;
                const core::vec3 low = corners[corner], high = corners[corner | bit];
                const core::vec2 middle = m_camera.worldToScreen((low + high) / 2.0);
                if (middle.x == core::kNoValueReal) continue;
                const double out = (middle - centre).length();
                if (out > farthest) farthest = out, bestLow = low, bestHigh = high, bestMiddle = middle;
            }
            if (farthest < 0.0) continue;
            const core::vec2 outward = farthest > 0.0 ? (bestMiddle - centre) / farthest : core::vec2(0.0, -1.0);
            const core::vec2 offset = outward * kLabelOffset;
            const core::vec2 lowEnd = m_camera.worldToScreen(bestLow), highEnd = m_camera.worldToScreen(bestHigh);
            labels.push_back({bestMiddle + offset, labelled.name, boxItem->colour});
            if (lowEnd.x != core::kNoValueReal)
                labels.push_back({lowEnd + offset, QString::number(labelled.first, 'g', 6), boxItem->colour});
            if (highEnd.x != core::kNoValueReal)
                labels.push_back({highEnd + offset, QString::number(labelled.last, 'g', 6), boxItem->colour});
        }
    }
    return labels;
}

void ZN3DViewerEngine::sceneChanged()
{
    const geom::Box3 box = m_scene.boundingBox();
    m_camera.setSceneBox(box);
    if (!m_autoFitted && !box.isEmpty()) {
        m_fitted = m_autoFitted = true;
    }
    if (m_fitted && !box.isEmpty()) m_camera.fit(box);
    changed();
}

void ZN3DViewerEngine::cameraMoved()
{
    m_fitted = false;
    changed();
}

void ZN3DViewerEngine::changed()
{
    if (m_changed) m_changed();
}
