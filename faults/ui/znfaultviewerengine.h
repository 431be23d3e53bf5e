#pragma once
#include <functional>
#include <memory>
#include <vector>

#include <QColor>
#include <QDomDocument>
#include <QDomElement>
#include <QPen>
#include <QPointer>
#include <QRectF>
#include <QString>

#include <core/array.h>
#include <core/pointwithbool.h>
#include <core/vec3.h>
#include <faultplanemapping.h>
#include <img/image.h>
#include <property/znpropertysheet.h>
#include <zn3dfaultpatch.h>
#include <znseismicblocviewerengine.h>

class QPainter;
class ZNFaultPatchManager;
class ZNMultiPolygon;
class ZNMultiPolygonDraw;

// The engine of the fault viewer: one fault of a fault set shown "unfolded" on its own
// plane, as a seismic section is shown. A plain class, tested without a window; the
// widget (ZNFaultViewer) forwards events to it, paints what it says and carries out the
// actions it sends (setViewerActionListener).
//
// Image. A fault is shown through its projection image (ZN3DFaultPatch::getProjectionImage):
// a one-layer grid on the fault's regression plane, columns along the strike, rows down
// the dip, the third axis along the normal. The displayed block is that grid, width x
// height x 1 samples, shown as its only time slice: image pixel (c, r) is block (c, r, 0)
// and the block's matrix takes it to the world. The engine keeps three images of the
// image's size: the index image (the patch covering each pixel, -9999 where none), the
// projection (the fault's id where the fault's surface covers the pixel, -9999.0
// elsewhere) and the mapped image (the data mapped along the fault, -9999.0 where there is
// none). The displayed samples are the mapped image once data was mapped; before, the
// fault's relief: how far its surface lies from the plane along the normal at each pixel
// (world units, signed), which shows how the fault bends.
//
// Scale. The projection's grid steps are the fault's gridding steps (mesh resolution
// along the strike and the normal, Z sampling down the dip) times the projection scale:
// 1 with the scale type "Fault Gridding" (the default), or the "Spatial Scale" typed in
// with "Custom". With "Survey Grid" the steps are the survey's cells instead (the fault
// set's grid: its smaller lateral bin along the strike and the normal, its sample down
// the dip), so that one pixel shows about one sample of the survey's volumes whatever
// the fault's gridding parameters.
//
// Actions. The engine tells its viewer what to do by name: "UPDATE_CAPTION" (the
// caption changed), "FRAME_CHANGED" (another image: refit, re-map), "UPDATE_VIEWER_OBJECT"
// (the drawn objects changed), "UPDATE_PALETTE_MANAGER" (the samples' range changed),
// "REFRESH_FAULT_VIEWER" (project the fault again) and "UPDATE_REF_POINT" (the goto point
// moved: the other views follow it).
//
// Picking. While a fault is shown, world points under the mouse lie on the fault's
// surface (along the normal through the pixel), the whole fault counts as the section
// shown, and edits go through the fault set's picking operations (the host's picking
// session), so undo, auto-save and re-meshing work as in the section views.
class ZNFaultViewerEngine : public ZNSeismicBlocViewerEngine {
public:
    // The caption's mode, the viewer's mode name while a fault is shown, the action names.
    static QString faultPickingModeName() { return QStringLiteral("faultpicking"); }
    static QString gotoModeName() { return QStringLiteral("TYPE_GOTO"); }
    static QString eraseModeName() { return QStringLiteral("TYPE_FAULT_ERASE"); }
    static QString edgePolylineName() { return QStringLiteral("faultEdgePolyline"); }

    static constexpr double kDefaultScaleFactor = 1.0;
    static constexpr double kNearestPixels = 10.0;   // reach of getNearestPickedPoint
    static constexpr int kEdgeWidth = 3;             // the outline's pen
    static constexpr int kMarkWidth = 2;             // the mapped fault's mark in 3D views
    static constexpr int kNoFault = -1;              // mapped fault id when none is shown
    static constexpr double kMaxSpatialScale = 100.0;
    static constexpr double kMinSpatialScale = 0.01;

    enum class ScaleType { FaultGridding = 0, SurveyGrid = 1, Custom = 2 };

    ZNFaultViewerEngine();
    ~ZNFaultViewerEngine() override;

    // ----- host hooks -----

    // Receives every action sent to the viewer.
    using ViewerActionListener = std::function<void(const QString& action)>;
    void setViewerActionListener(ViewerActionListener listener) { m_actions = std::move(listener); }
    // Marks a fault in the host's 3D views with `pen` (null fault: remove the mark).
    using MappedFaultMarker = std::function<void(ZN3DFaultPatch* fault, const QPen& pen)>;
    void setMappedFaultMarker(MappedFaultMarker marker) { m_marker = std::move(marker); }

    // ----- fault set and fault -----

    void setFaultPatchManager(ZNFaultPatchManager* manager);
    ZNFaultPatchManager* getFaultPatchManager() const;
    // The father id of the fault shown; kNoFault when none.
    int getMappedFaultId() const { return m_mappedFaultId; }
    void setMappedFaultId(int id) { m_mappedFaultId = id; }
    // The fault shown; null when none (or deleted since).
    ZN3DFaultPatch* getCurrentFaultPatch() const { return m_fault.data(); }
    bool isFaultProjected() const { return m_projected; }
    // The id taken from the fault when it was projected; -9999 when none.
    int getProjectedFaultId() const { return m_projectedId; }
    // Shows fault `faultIndex` of `manager` (any patch of the fault): the manager is kept
    // only while the host's registry knows it; index 0 or out of range does nothing; a
    // fault the manager marks as not shown (a hidden fault, see setFaultShown) is
    // ignored. Returns whether the fault's projection was made; when it could not be,
    // "Could not load image for fault <name>" is sent on the event bus (kind 1) and the
    // previous state stays.
    bool project3DFaultPatch(ZNFaultPatchManager* manager, int faultIndex);
    // The same with the image for picking (ZN3DFaultPatch::getProjectionImageForPicking):
    // wider than the mesh by a margin and showing the sticks, so that points can be
    // picked beyond the surface. Sends "UPDATE_CAPTION" and "FRAME_CHANGED". When the
    // mouse mode is "TYPE_FAULT_ERASE", the view is moved so that the fault's first
    // valid picked point lies under `mouse` (viewport).
    bool project3DFaultPatchForPicking(ZNFaultPatchManager* manager, int faultIndex, const QPointF& mouse);
    // After an edit of the fault shown: its projection is made again (for picking when the
    // last projection was), the view kept where the grid is the same, and
    // "UPDATE_VIEWER_OBJECT" sent. False without a fault.
    bool project3DFaultPatchForPicking();
    // Whether the host shows a fault; a hidden fault is never projected. Without an answer
    // every fault is shown.
    using FaultShown = std::function<bool(const ZNFaultPatchManager* manager, int faultId)>;
    void setFaultShown(FaultShown shown) { m_faultShown = std::move(shown); }
    // Forgets the fault: images, block and outline cleared; sends "UPDATE_CAPTION",
    // "FRAME_CHANGED", "UPDATE_VIEWER_OBJECT" and "UPDATE_PALETTE_MANAGER".
    void clearFaultViewer();
    // Sends "REFRESH_FAULT_VIEWER".
    void refresh();
    // Marks `fault` (null: none) in the host's 3D views with a green pen (Qt colour 8) of
    // width kMarkWidth, through the marker hook.
    void setCurrentMappedFault(ZN3DFaultPatch* fault);

    // ----- images -----

    // Adopts a block space: an empty block over it (no fault), the image sized by
    // adjustImageSizeWithBlocSpace, then the view fitted.
    void initWithBloc(const georef::BlocSpace& blocSpace);
    // Makes the images square, of side sqrt(nx^2 + ny^2 + nz^2) x scale factor rounded
    // half away from zero, so that any fault plane through the block fits; nothing
    // happens when they are that size already.
    void adjustImageSizeWithBlocSpace(const georef::BlocSpace& blocSpace);
    // Deletes and re-creates the three images at the new size: index image -9999, the two
    // float images -9999.0.
    void setImageSize(int width, int height);
    int imageWidth() const { return m_index.width(); }
    int imageHeight() const { return m_index.height(); }
    // The largest size of the displayed block; 0 without one.
    int getBlocSpaceMaxSize() const;
    double scaleFactor() const { return m_scaleFactor; }
    void setScaleFactor(double factor);
    const img::IndexImage& indexImage() const { return m_index; }
    const img::Image& projectionImage() const { return m_projection; }
    const img::Image& mappedImage() const { return m_mapped; }
    // The fault's relief (see the class comment); -9999.0 off the fault.
    const img::Image& reliefImage() const { return m_relief; }
    // Fills `image` with -9999, then, for a manager and a fault index 1..n-1, writes each
    // patch id of the fault at the pixels of its points (getPatchPointPosition taken
    // through the fault set's grid and the displayed block to the image, each coordinate
    // rounded half away from zero); later patches overwrite earlier ones.
    void fillIndexImage(const ZNFaultPatchManager* manager, int faultIndex, img::IndexImage& image) const;
    // The same into the engine's own index image (shown until data is mapped).
    void fillIndexImage(const ZNFaultPatchManager* manager, int faultIndex);
    // The world-to-image matrix (homogeneous) of the displayed block: image column, row
    // and offset along the normal; identity without block.
    core::mat4 worldToImageMatrix() const;

    // ----- coordinates -----

    // (column, row, offset along the normal) of a world point; (-9999, -9999, -9999)
    // without block.
    core::vec3 from3dWorldToImage(const core::vec3& world) const;
    // The world point under a viewport point: on the fault's surface where the pixel
    // belongs to the fault (the nearest crossing of the surface with the line along the
    // normal through the pixel), on the plane elsewhere; without a fault the base
    // engine's point.
    core::vec3 fromViewportTo3dWorld(const QPointF& viewport) const;
    core::vec3 viewportToWorld(const QPointF& viewport) const override { return fromViewportTo3dWorld(viewport); }
    // The world direction of the line under the mouse: the unit normal of the plane;
    // (0, 0, 0) without a fault.
    core::vec3 getWorldMouseAxe() const;
    // The viewport rectangle of the image's pixels that hold data (mapped data, or the
    // fault's coverage before); empty without any.
    QRectF getWorkingAreaInsideViewport() const;
    void drawWorkingArea(QPainter& painter) const;
    // Whether a world point falls inside the image shown.
    bool isWorldPointOnCurrentFrame(const core::vec3& world) const;

    // ----- picked points (a copy for drawing and hit tests) -----

    void insertPickedPoint(const core::Array<core::PointWithBool>& points);
    // The fault's own points (null: none), then asks the viewer to redraw.
    void updatePickedPoint(const ZN3DFaultPatch* fault);
    void clearPickingPoint() { m_pickedCount = 0; }
    int pickedPointCount() const { return m_pickedCount; }
    // Draws the picked points and their sticks while picked points are shown.
    void drawPickedPoint(QPainter& painter) const;
    // The picked point, or the point of a stick segment, nearest to the mouse within
    // kNearestPixels viewport pixels; a point wins over a segment only when strictly
    // nearer. (-9999, -9999, -9999) when none is, or while picked points are hidden.
    core::vec3 getNearestPickedPoint(const QPointF& mouse) const;
    const core::vec3& getNearestMousePoint() const { return m_nearestMouse; }
    void setNearestMousePoint(const core::vec3& p) { m_nearestMouse = p; }

    // ----- outline -----

    // Replaces the viewer object named "faultEdgePolyline" by the fault's meshing polygon
    // drawn with a black pen (Qt colour 2) of width 3; none when the fault has no polygon.
    void insertEdgePolyline(const ZN3DFaultPatch* fault);
    // Removes every viewer object named "faultEdgePolyline".
    void removeEdgePolyline();
    void setFaultEdgePolyline(const ZNMultiPolygon& polygon);
    const ZNMultiPolygonDraw* getFaultEdgePolyline() const { return m_edge.get(); }
    void clearFaultEdgePolyline() { removeEdgePolyline(); }
    void drawFaultEdgePolyline(QPainter& painter) const;

    // ----- mouse mode and goto point -----

    // With `enabled`, `name` becomes the mode; the host's modes that mean nothing on a
    // fault plane (horizon, strati, sequence, well tie, salt, frequency and track modes,
    // "SNAP_MODE", and "FAULT_PICKING": picking here is the viewer's own "faultpicking")
    // become "TYPE_GOTO". Disabling the current mode leaves no mode (navigation).
    void setMouseMode(const QString& name, bool enabled);
    // The modes replaced by "TYPE_GOTO", in their order.
    static const QStringList& modesReplacedByGoto();
    // The goto point becomes the nearest picked point, or the base engine's world point
    // under the mouse when there is none; it is the reference point, and
    // "UPDATE_REF_POINT" is sent.
    void updateGotoPoint(const QPointF& mouse);
    bool hasGotoPoint() const { return hasReferencePoint(); }
    const core::vec3& gotoPoint() const { return referencePoint(); }
    void drawGotoPoint(QPainter& painter) const;
    // Centres the view on a world point's pixel; false (nothing moved) when it lies
    // outside the image.
    bool goto3DPoint(const core::vec3& world);

    // ----- caption -----

    // "Allan Diagram" in that mode; otherwise "Fault Editing: " (or "Fault Viewer: " once
    // after setViewerCaption) and the fault's name ("Unnamed" when empty), or "Empty"
    // when no fault is shown or its fault set is gone. Every call clears the viewer flag.
    QString getCaption();
    void setViewerCaption() { m_viewerCaption = true; }
    bool isAllanDiagramMode() const { return m_allanDiagram; }
    void setAllanDiagramMode(bool on) { m_allanDiagram = on; }
    // The title over the image: the fault's name and the data mapped on it.
    QString sectionTitle() const override;
    QString acrossTitle() const override;
    std::vector<Tick> acrossTicks(double minimumSpacing) const override;
    // Rows run along the strike, which is horizontal: each row has one time (or depth).
    QString downTitle() const override;
    std::vector<Tick> downTicks(double minimumSpacing) const override;

    // ----- settings -----

    const QColor& drawerBackgroundColor() const { return m_background; }
    void setDrawerBackgroundColor(const QColor& colour) { m_background = colour; }
    const QColor& drawerBackgroundColorPicking() const { return m_backgroundPicking; }
    void setDrawerBackgroundColorPicking(const QColor& colour) { m_backgroundPicking = colour; }
    // The background of the mode in use.
    QColor backgroundColour() const;
    bool isAutoGoto() const { return m_autoGoto; }
    void setAutoGoto(bool on) { m_autoGoto = on; }
    bool isPickedPointShown() const { return m_showPicked; }
    void setPickedPointShown(bool shown);
    bool isFrozen() const { return m_frozen; }
    void setFrozen(bool frozen) { m_frozen = frozen; }
    bool isScaleShown() const { return m_showScale; }
    void setScaleShown(bool shown);
    bool isColorScaleShown() const { return m_showColorScale; }
    void setColorScaleShown(bool shown);
    ScaleType scaleType() const { return m_scaleType; }
    // The projection's grid steps for the fault shown (see the class comment); (0, 0, 0)
    // without a fault.
    core::vec3 projectionSampling() const;
    // The scale of "Custom" (1 until typed in).
    double spatialScale() const { return m_spatialScale; }
    const fault::FaultPlaneMappingSettings& mappingSettings() const { return m_mapping; }
    void setMappingSettings(const fault::FaultPlaneMappingSettings& settings) { m_mapping = settings; }
    // Whether the view moves to the reference point set in other views (the host's cross
    // navigation); it is shown either way.
    bool getUseObjectForCrossNavigation() const { return m_crossNavigation; }
    void setUseObjectForCrossNavigation(bool use) { m_crossNavigation = use; }
    // The viewer's mode name: "faultpicking" while a fault is shown, empty otherwise.
    const QString& viewerModeName() const { return m_viewerMode; }

    // Appends the element "ZNFaultViewer" with the attributes "DrawerBackgroundColor",
    // "AutoGoto", "PickedPoint" and "DrawerBackgroundColorPicking" (colours "#aarrggbb",
    // flags "0" or "1") to `parent`.
    void createHeaderSettings(QDomDocument& doc, QDomElement& parent) const;
    // Reads them back from the first "ZNFaultViewer" child of `parent`; an attribute
    // missing or unreadable keeps its value.
    void getHeaderSettings(const QDomElement& parent);

    // The property sheet: group "Fault Viewer" ("Picked Point", "Freeze", "Scale Type",
    // "Spatial Scale", "Show Scale", "Color Scale", "Z Domain", "BackGround Color Picking
    // Viewer") and group "Data Mapping" ("Smoothing", "WindowSize", "Spatial dev (px)",
    // "Vertical dev (px)", "Interpolation", "Corr Threshold", "Smooth"). Rows with an icon
    // carry its name under the attribute "iconName".
    void createProperty(ZNPropertySheet& sheet) const;
    // Applies an edit of row `id`; a value of the wrong type, outside the row's range or
    // equal to the current one changes nothing (false). A change of the projection scale
    // sends "REFRESH_FAULT_VIEWER".
    bool updateProperty(const QString& id, const QVariant& value);

    // ----- data mapping -----

    // Maps `dataBlock` onto the fault shown with the mapping settings
    // (fault::mapDataOnFaultPlane), slice by slice under the bar "Map data on fault plane"
    // (nested in `progressParent`; -2 for none), then shows it and sends
    // "UPDATE_PALETTE_MANAGER". When the vertical domains of the data and of the fault
    // differ, a message box "Extract Data along Fault" says "Vertical domains not
    // compatible" and false is returned, nothing changed. True when done, also when
    // nothing could be mapped; false when cancelled or failed, without a data block or
    // without a fault shown (the image as it was).
    bool extractData(ZNBloc* dataBlock, int progressParent);
    // The inputs of a mapping, copied, for work on another thread: the projection and its
    // image-to-world matrix; false without a fault.
    bool mappingInputs(img::Image& projection, core::mat4& imageToWorld) const;
    // Whether data of `units` may be mapped on the fault shown (same vertical domain);
    // shows the message box when not.
    bool checkDomain(const georef::UnitObject& units) const;
    // Shows a mapped image made elsewhere (of the image's size; another size is refused)
    // and sends "UPDATE_PALETTE_MANAGER". `name` names the data in the title.
    bool setMappedImage(img::Image&& mapped, const QString& name);
    // The name of the data mapped; empty when none.
    const QString& mappedDataName() const { return m_mappedName; }
    // Makes the displayed block show the mapped image (or the relief before any data was
    // mapped), keeping the view.
    void displayTimeImage();

    // ----- ZNPickingViewer -----

    // The whole fault is shown at once: its points are never off the section.
    core::vec2 projectToScreen(const core::vec3& point) const override;
    double distanceToSection(const core::vec3& point) const override;
    // A fault plane is no section of the survey: no automatic points are made on it.
    bool getShownRandomLine(geom::RandomLine& line) const override;

private:
    void send(const QString& action) const;
    // Shared steps of the two projections: the projection image and grid of the fault,
    // shown. `forPicking` chooses the image.
    bool projectFault(ZNFaultPatchManager* manager, int faultIndex, bool forPicking);
    bool showProjection(std::unique_ptr<img::Image> projection, const georef::BlocSpace& space, bool keepView);
    // The fault of `faultIndex`, or null when the index, the fault or its visibility
    // forbid showing it; `father` receives its id.
    ZN3DFaultPatch* faultToShow(ZNFaultPatchManager* manager, int faultIndex, int& father) const;
    void updateLayoutProperty(ZNPropertySheet* sheet) const;
    // The nearest crossing of the fault's mesh with the line through `origin` along
    // `axis`; false when there is none.
    bool surfaceAlong(const core::vec3& origin, const core::vec3& axis, core::vec3& hit) const;
    // Files the fault's facettes by the tiles of the image their projection covers, so
    // that surfaceAlong tries the few under a pixel.
    void indexFacettes();
    // The relief of every pixel of the fault.
    void computeRelief();
    struct FacetteTiles {
        static constexpr int kTile = 8;        // pixels a side
        int columns = 0;                       // tiles across
        int rows = 0;
        int facettes = -1;                     // of the mesh indexed; -1: none
        std::vector<std::vector<int>> lists;   // facettes per tile, row by row
    };

    QPointer<ZNFaultPatchManager> m_manager;
    int m_mappedFaultId = kNoFault;
    QPointer<ZN3DFaultPatch> m_fault;            // shown, not owned
    int m_projectedId = -9999;
    bool m_projected = false;
    bool m_forPicking = false;                   // the last projection was for picking
    img::IndexImage m_index;                     // patch per pixel
    img::Image m_projection;                     // the fault's coverage
    img::Image m_mapped;                         // data mapped along the fault
    img::Image m_relief;                         // the surface's distance from the plane
    bool m_hasMapped = false;
    QString m_mappedName;
    std::shared_ptr<ZN3DImage<float>> m_displayed;  // the displayed block's samples
    double m_scaleFactor = kDefaultScaleFactor;
    std::shared_ptr<ZNMultiPolygonDraw> m_edge;
    core::Array<core::PointWithBool> m_picked;
    int m_pickedCount = 0;
    core::vec3 m_nearestMouse{-9999.0, -9999.0, -9999.0};
    QString m_storedMouseMode;
    QString m_viewerMode;
    bool m_viewerCaption = false;
    bool m_allanDiagram = false;
    QColor m_background{Qt::white};
    QColor m_backgroundPicking{235, 240, 250};
    bool m_autoGoto = false;
    bool m_showPicked = true;
    bool m_frozen = false;
    bool m_showScale = true;
    bool m_showColorScale = true;
    bool m_crossNavigation = true;
    ScaleType m_scaleType = ScaleType::FaultGridding;
    double m_spatialScale = 1.0;
    fault::FaultPlaneMappingSettings m_mapping;
    FacetteTiles m_tiles;
    ViewerActionListener m_actions;
    MappedFaultMarker m_marker;
    FaultShown m_faultShown;
};
