#pragma once
#include <core/mat4.h>
#include <core/vec2.h>
#include <core/vec3.h>
#include <geom/box3.h>

// The camera of a 3D view: an orbit around a centre, a perspective or orthographic
// projection and the viewport, with the matrices and the world <-> window conversions
// that follow. A plain value type: no window, no OpenGL context.
//
// Axes (see core/conventions.h): world x is east, z north, y vertical growing downward
// (time or depth). The scene is drawn in display space, the world with y multiplied by
// the vertical exaggeration; the camera orbits in display space, so that an exaggerated
// section still turns around its centre, and every conversion takes and returns world
// coordinates.
//
// Orientation: the viewing direction (from the eye to the centre) points to `azimuth`
// degrees clockwise from north and `elevation` degrees below the horizontal (90 looks
// straight down, -90 straight up). Screen up is world up (-y) tilted with the view; at
// elevation +-90 it is the azimuth's direction, so the map view (azimuth 0, elevation 90)
// shows north up and east right.
//
// Windows coordinates follow gluProject: x from the viewport's left edge, y from its
// bottom edge, both in pixels, and the depth in 0 (near plane) .. 1 (far plane). Screen
// coordinates are Qt's: x from the left edge, y from the top edge, in pixels; the pixel
// of row r and column c covers [c, c + 1) x [r, r + 1), its centre is (c + 0.5, r + 0.5).
// Projections go through GLU (gluProject / gluUnProject on these matrices), which needs
// no context.
class ZN3DCamera {
public:
    enum class Projection { Perspective, Orthographic };
    // The standard views: from above, and from each side looking at the centre across it
    // (FromSouth stands south of the scene and looks north).
    enum class StandardView { Map, FromNorth, FromSouth, FromEast, FromWest };

    static constexpr double kDefaultFieldOfView = 30.0;  // degrees, vertical
    static constexpr double kMinimumFieldOfView = 1.0;
    static constexpr double kMaximumFieldOfView = 120.0;
    static constexpr double kDefaultAzimuth = 30.0;
    static constexpr double kDefaultElevation = 30.0;
    static constexpr double kFitMargin = 1.15;      // room around a fitted box, for its labels
    static constexpr double kDepthMargin = 1.1;     // near and far planes around the scene sphere
    static constexpr double kNearFarRatio = 1e-4;   // smallest near / far of a perspective
    static constexpr double kMinimumDistanceRatio = 1e-4;  // of the scene radius
    static constexpr double kMaximumDistanceRatio = 1e4;
    static constexpr double kLargestDistance = 1e12;  // without a scene box

    ZN3DCamera() = default;

    // ----- viewport -----

    // The viewport size in pixels; sizes below 1 become 1.
    void setViewport(int width, int height);
    int width() const { return m_width; }
    int height() const { return m_height; }
    double aspect() const { return double(m_width) / m_height; }

    // ----- state -----

    // The orbit centre, in world coordinates.
    const core::vec3& centre() const { return m_centre; }
    void setCentre(const core::vec3& centre) { m_centre = centre; }
    // Distance from the eye to the centre in display units; kept within the limits of
    // distanceLimits().
    double distance() const { return m_distance; }
    void setDistance(double distance);
    // Degrees; the azimuth is kept in [0, 360), the elevation clamped to [-90, 90].
    double azimuth() const { return m_azimuth; }
    double elevation() const { return m_elevation; }
    void setOrientation(double azimuth, double elevation);
    void setStandardView(StandardView view);
    // The scale of the vertical axis; values <= 0 or not finite are refused (false).
    double verticalExaggeration() const { return m_exaggeration; }
    bool setVerticalExaggeration(double exaggeration);
    Projection projection() const { return m_projection; }
    void setProjection(Projection projection) { m_projection = projection; }
    // Vertical field of view in degrees, clamped to [1, 120]. In orthographic projection
    // the view's half height is distance x tan(fov / 2), so that switching projections
    // keeps the centre's plane at the same size.
    double fieldOfView() const { return m_fieldOfView; }
    void setFieldOfView(double degrees);
    // The world box of what is drawn: it places the near and far planes and scales the
    // distance limits. An empty box uses a sphere of the current distance around the centre.
    const geom::Box3& sceneBox() const { return m_sceneBox; }
    void setSceneBox(const geom::Box3& box) { m_sceneBox = box; }

    // ----- moves -----

    // Turns the view around the centre by these angles (degrees); the centre stays where
    // it is on the screen.
    void orbit(double deltaAzimuth, double deltaElevation);
    // Moves the centre so that the point under `from`, at the centre's depth, comes
    // under `to` (screen coordinates).
    void pan(const core::vec2& from, const core::vec2& to);
    // Dolly by `factor` (< 1 closer) around `anchor` (world): the anchor stays at the same
    // screen position. The factor is reduced when the distance would leave its limits.
    void zoomAround(const core::vec3& anchor, double factor);
    // The same around the point under `screen` at the centre's depth.
    void zoomAt(const core::vec2& screen, double factor);
    // Centres the view on `box` (world) and sets the distance so that the whole box is
    // on the screen, orientation unchanged. False, nothing changed, for an empty box.
    bool fit(const geom::Box3& box);

    // ----- matrices (row-major, see core/mat4.h) -----

    // World -> eye coordinates: the vertical exaggeration, then the look-at of the orbit.
    core::mat4 viewMatrix() const;
    // Display -> eye coordinates (the look-at alone).
    core::mat4 displayViewMatrix() const;
    // Eye -> clip coordinates, as gluPerspective or glOrtho build it.
    core::mat4 projectionMatrix() const;
    double nearPlane() const;
    double farPlane() const;

    // ----- conversions -----

    core::vec3 toDisplay(const core::vec3& world) const { return {world.x, world.y * m_exaggeration, world.z}; }
    core::vec3 toWorld(const core::vec3& display) const { return {display.x, display.y / m_exaggeration, display.z}; }
    // Eye position and unit viewing direction (eye to centre), in display space.
    core::vec3 eyeDisplay() const;
    core::vec3 viewDirection() const;
    // The window coordinates of a world point (gluProject). False, `window` untouched,
    // when the point has no projection (on the eye's plane).
    bool project(const core::vec3& world, core::vec3& window) const;
    // The world point at window coordinates (gluUnProject). False, `world` untouched,
    // when the matrices cannot be inverted.
    bool unproject(const core::vec3& window, core::vec3& world) const;
    // The same with screen coordinates; unprojectable points give (-9999, -9999) and
    // (-9999, -9999, -9999).
    core::vec2 worldToScreen(const core::vec3& world) const;
    core::vec3 screenToWorld(const core::vec2& screen, double depth) const;
    // The window depth of a world point (-9999 when it has none).
    double depthOf(const core::vec3& world) const;
    // The line of sight through `screen`: its points on the near and far planes (world).
    void ray(const core::vec2& screen, core::vec3& nearPoint, core::vec3& farPoint) const;
    // Display units covered by one pixel at the depth of `world`.
    double displayUnitsPerPixel(const core::vec3& world) const;

    // The smallest and largest distance allowed, from the scene box.
    void distanceLimits(double& smallest, double& largest) const;

private:
    // Bounding sphere of the scene in display space (centre and radius).
    void sceneSphere(core::vec3& centre, double& radius) const;
    // Distance limits for a scene of world box `box`.
    void limitsFor(const geom::Box3& box, double& smallest, double& largest) const;
    void rightAndUp(core::vec3& right, core::vec3& up) const;
    double halfHeightAtCentre() const;

    int m_width = 1;
    int m_height = 1;
    core::vec3 m_centre;
    double m_distance = 10.0;
    double m_azimuth = kDefaultAzimuth;
    double m_elevation = kDefaultElevation;
    double m_exaggeration = 1.0;
    double m_fieldOfView = kDefaultFieldOfView;
    Projection m_projection = Projection::Perspective;
    geom::Box3 m_sceneBox;
};
