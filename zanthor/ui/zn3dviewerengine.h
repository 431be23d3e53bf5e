#pragma once
#include <functional>
#include <vector>

#include <QColor>
#include <QString>

#include <core/mat4.h>
#include <core/vec2.h>
#include <core/vec3.h>

#include "zn3dcamera.h"
#include "zn3dscene.h"

// The state and the rules of a 3D view, without a window: the scene, the camera, what a
// mouse or key gesture does to them, the order in which items are drawn, the labels to
// write over the picture and the hit tests. A view widget forwards its events here and
// paints what the engine says.
//
// Gestures (screen coordinates, see ZN3DCamera):
// - left drag orbits around the centre; shift + left drag and middle drag pan;
//   a press that moves less than kClickTolerance pixels before its release is a click
//   and moves nothing (the widget picks on it; with Ctrl it sets the reference point);
// - the wheel zooms around the point under the cursor (the widget passes the picked
//   point; without one, the point at the centre's depth);
// - keys: F or Home fits everything drawn; M the map view, N / S / E / W the views from
//   the north / south / east / west side; arrows orbit by kKeyOrbitStep degrees; + and -
//   zoom at the centre; Page Up / Page Down double / halve the vertical exaggeration;
//   P switches between perspective and orthographic projection.
//
// Fitting: fitAll() fits the box of the items drawn. The view stays fitted (it fits
// again when the viewport changes) until a gesture or a camera call moves it; the
// first time the scene holds something drawn, it is fitted.
class ZN3DViewerEngine {
public:
    enum class DragMode { None, Orbit, Pan };

    // What lies under a screen position: the item (-9999 when none) and the world point.
    struct Hit {
        int id = core::kNoValue;
        core::vec3 world{core::kNoValueReal, core::kNoValueReal, core::kNoValueReal};
        double depth = core::kNoValueReal;  // window depth of the point, 0..1

        bool isHit() const { return id != core::kNoValue; }
    };

    // A text to write over the picture, centred on a screen position.
    struct Label {
        core::vec2 screen;
        QString text;
        QColor colour;
    };

    static constexpr double kOrbitDegreesPerPixel = 0.4;
    static constexpr double kWheelZoomPerNotch = 0.8;  // distance factor of one notch forward
    static constexpr int kWheelNotch = 120;            // angle delta of one notch (Qt's unit)
    static constexpr double kClickTolerance = 4.0;     // pixels
    static constexpr double kLineHitTolerance = 4.0;   // pixels beyond half a line's width
    static constexpr double kKeyOrbitStep = 15.0;      // degrees
    static constexpr double kKeyZoomFactor = 0.8;
    static constexpr double kExaggerationStep = 2.0;
    static constexpr double kLabelOffset = 14.0;       // pixels from the box edge, outward

    ZN3DViewerEngine();
    ZN3DViewerEngine(const ZN3DViewerEngine&) = delete;
    ZN3DViewerEngine& operator=(const ZN3DViewerEngine&) = delete;

    // The items shown; change them freely, the engine follows (see ZN3DScene).
    ZN3DScene& scene() { return m_scene; }
    const ZN3DScene& scene() const { return m_scene; }

    const ZN3DCamera& camera() const { return m_camera; }
    // Replaces the camera (its viewport and scene box are kept the engine's).
    void setCamera(const ZN3DCamera& camera);

    QColor background() const { return m_background; }
    void setBackground(const QColor& colour);

    // Called after every change of the scene or the camera; a view schedules a frame.
    void setChangedCallback(std::function<void()> callback) { m_changed = std::move(callback); }

    // ----- camera moves -----

    // The viewport in pixels (the drawable's size, device pixels).
    void setViewport(int width, int height);
    void orbit(double deltaAzimuth, double deltaElevation);
    void pan(const core::vec2& from, const core::vec2& to);
    // Dolly by `factor` (< 1 closer) keeping `anchor` (world; null: the point under
    // `screen` at the centre's depth) at its screen position.
    void zoomAt(const core::vec2& screen, double factor, const core::vec3* anchor = nullptr);
    // Fits everything drawn; false, nothing changed, when nothing is.
    bool fitAll();
    bool fit(const geom::Box3& box);
    // The orientation of a standard view; centre and distance kept.
    void setStandardView(ZN3DCamera::StandardView view);
    // Any orientation (see ZN3DCamera); centre and distance kept.
    void setOrientation(double azimuth, double elevation);
    // False, nothing changed, for a value that is not a positive number.
    bool setVerticalExaggeration(double exaggeration);
    void setProjection(ZN3DCamera::Projection projection);
    // Moves the centre to `world`, distance and orientation kept.
    void centreOn(const core::vec3& world);

    // ----- gestures -----

    // A button went down: the drag it starts (shown only once the cursor moves beyond
    // the click tolerance).
    DragMode pressAt(const core::vec2& screen, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    void moveTo(const core::vec2& screen);
    // The button came up: true when the press was a click of the left button.
    bool releaseAt(const core::vec2& screen);
    DragMode dragMode() const { return m_drag; }
    // The modifiers held when the current or last press happened.
    Qt::KeyboardModifiers pressModifiers() const { return m_pressModifiers; }
    // The wheel turned by `angleDelta` (Qt's eighths of a degree; positive away from the
    // user zooms in) at `screen`; `anchor` as for zoomAt.
    void wheelAt(const core::vec2& screen, int angleDelta, const core::vec3* anchor = nullptr);
    // A key shortcut of the class comment; false for any other key.
    bool keyPressed(int key, Qt::KeyboardModifiers modifiers);

    // ----- drawing -----

    // The items to draw, in order: the opaque ones in scene order, then the transparent
    // ones from the farthest to the nearest (by the distance of their box's centre to
    // the eye). Pointers are valid until the scene changes.
    std::vector<const ZN3DScene::Item*> drawOrder() const;
    // Local -> eye coordinates of an item's vertices: the world position minus the item's
    // origin (`Item::origin`), or, for a reference point, the unit cross (arms from -1
    // to 1 along each axis) scaled to its arm length in pixels.
    core::mat4 modelViewOf(const ZN3DScene::Item& item) const;
    // The arm length, in display units, of a reference point's cross.
    double armLengthOf(const ZN3DReferencePointItem& point) const;
    // The texts of the boxes drawn: per named axis, its name at the middle of the edge
    // along it that lies farthest out on the screen, and its two end values.
    std::vector<Label> labels() const;

    // ----- hit tests -----

    // The nearest item under `screen` and the world point hit, computed on the geometry
    // (triangles and section quadrilaterals along the line of sight; lines and points
    // within their half width plus kLineHitTolerance pixels). Only pickable items unless
    // `pickableOnly` is false; hidden ones never. A view with a depth buffer picks the
    // same way through it.
    Hit hitTest(const core::vec2& screen, bool pickableOnly = true) const;
    // The same for item `id` alone, drawn or not; no hit for an unknown id.
    Hit hitTestItem(int id, const core::vec2& screen) const;
    // False when nothing of `item` can be drawn at `screen`: a surface or section whose
    // box the line of sight misses. Lines, points and crosses, drawn wider than their
    // box, always may.
    bool mayBeUnder(const ZN3DScene::Item& item, const core::vec2& screen) const;

private:
    void sceneChanged();
    void cameraMoved();  // a move that leaves the fitted state
    void changed();
    Hit hitItem(const ZN3DScene::Item& item, const core::vec2& screen, const core::vec3& nearPoint,
                const core::vec3& farPoint) const;
    // Nearest hit of the screen segments a[i] - b[i] (world) within `radius` pixels.
    Hit hitSegments(const std::vector<core::vec3>& ends, const core::vec2& screen, double radius) const;
    Hit hitPoints(const std::vector<core::vec3>& points, const core::vec2& screen, double radius) const;

    ZN3DScene m_scene;
    ZN3DCamera m_camera;
    QColor m_background{40, 44, 52};
    bool m_fitted = false;        // the view shows the fitted scene (see the class comment)
    bool m_autoFitted = false;    // the scene was fitted when it first held something drawn
    DragMode m_drag = DragMode::None;
    DragMode m_pendingDrag = DragMode::None;  // the press's drag, before the cursor moves enough
    Qt::MouseButton m_pressButton = Qt::NoButton;
    Qt::KeyboardModifiers m_pressModifiers;
    core::vec2 m_pressPosition;
    core::vec2 m_lastPosition;
    std::function<void()> m_changed;
};
