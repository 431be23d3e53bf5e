#pragma once
#include <QPointer>
#include <QString>
#include <QVariant>

#include <3dobject/zn3dobjectdraw.h>
#include <core/array.h>
#include <core/mat4.h>
#include <core/pointwithbool.h>
#include <core/vec3.h>
#include <geom/box3.h>
#include <geom/plane.h>
#include <georef/blocspace.h>
#include <georef/unitobject.h>
#include <img/image.h>

#include "surface/planeframe.h"
#include "zn3dfaultpatchlight.h"
#include "znfaultstick.h"
#include "znfaultsurface.h"

class ZNFaultPatchManager;
class ZNMultiPolygon;
class ZNPropertySheet;

// One fault as the user sees and edits it: its picked points (sticks separated by
// separators, in the fault set's world space: y vertical, growing downward), its
// descriptor settings (name, pen, gridding parameters) and the triangulated surface
// computed from the points. The mesh replaces the drawable's points and facettes.
//
// Gridding parameters live in the descriptor part: mesh resolution is the UTM precision,
// Z sampling the time precision, smooth factor the filter size, extrapolation the spare
// integer, and the stored opacity the descriptor's transparency (1 = opaque).
//
// Meshing uses the hand-picked points only: entries flagged as automatic are crossings of
// the current mesh with a section, and meshing them again would freeze the old surface.
// Both methods lay the sticks out on the fault's regression plane (see
// fault::surface::PlaneFrame), so sticks picked on inlines, crosslines or time slices
// mix freely:
// - "Convex Envelop" (0): a height field over the plane, on a grid of lateral step
//   max(mesh resolution, 50) and down-dip step the Z sampling, filled inside the sticks'
//   convex envelope by linear interpolation on their constrained Delaunay triangulation,
//   smoothed by a separable triangular filter whose odd length comes from the smooth
//   factor, and triangulated within the envelope;
// - "Minimum Envelop" (1): the sticks (widened by the extrapolation distance when it is
//   not 0) triangulated by a constrained Delaunay triangulation that keeps every stick
//   segment, refined so that no edge is longer than the interpolation size, limited to
//   the strips between neighbouring sticks (the convex envelope when the strips would
//   leave a stick point out).
//
// A fault patch may be attached to a fault set (setFaultSet), which then uses its mesh
// when picking; it detaches itself when deleted. Drawing is the viewer's.
class ZN3DFaultPatch : public ZN3DObjectDraw, public ZN3DFaultPatchLight, public ZNFaultSurface {
    Q_OBJECT
public:
    // Results of updateProperty.
    enum PropertyUpdate { PropertyUnchanged = 0, PropertyRenamed = 4, PropertyStored = 5 };
    enum GriddingMethod { ConvexEnvelop = 0, MinimumEnvelop = 1 };

    static constexpr double kAreaScale = 100000.0;   // computed area = mesh area / this
    static constexpr int kMinimumLateralStep = 50;   // of the meshing grids
    static constexpr float kDefaultOpacity = 0.5f;
    static constexpr double kFlatHorizontal = 0.001; // horizontal length of a flat normal
    // Largest image the projections make (pixels); a larger grid gives no image.
    static constexpr long long kMaxImagePixels = 64LL * 1024 * 1024;
    // Cells added around the picked points and mesh of the image for picking.
    static constexpr int kPickingMarginCells = 2;

    // With the survey's block space and the fault's units.
    ZN3DFaultPatch(const georef::BlocSpace& blocSpace, QObject* parent,
                   const georef::UnitObject& units);
    ZN3DFaultPatch(QObject* parent, const georef::UnitObject& units);
    // `baseStyle` selects the drawable's own display mode: no information rows, no mesh
    // resolution or Z sampling rows, and interpolation and extrapolation edits post no
    // action (see updateProperty).
    explicit ZN3DFaultPatch(bool baseStyle = false);
    // Detaches the patch from its fault set.
    ~ZN3DFaultPatch() override;

    // The patch's own state: opacity 0.5 (drawable and stored), 3D, meshing on, not
    // saved, not selected, computed area 0, reference point unset, picked points drawn.
    // The other descriptor settings are left as they are.
    void init();

    // "ZN3DFaultPatch".
    QString getZNObjectType() const override;
    // The fault's name.
    QString getName() const override { return GetFaultName(); }

    // The drawable's header (the surface as a 3D object); the descriptor's header is
    // ZN3DFaultPatchLight::createHeader.
    QDomElement createHeader(QDomDocument& doc) const override;
    bool getHeader(const QDomElement* header) override;

    // Copies every setting of `light`, its patch list included, and gives the drawable
    // its pen and opacity.
    void setDescriptor(const ZN3DFaultPatchLight& light);

    // The pen of the fault: drawable edge and descriptor pen are set together.
    const QPen& getPen() const { return ZN3DObjectDraw::getPen(); }
    void setPen(const QPen& pen);
    // Opacity, 0 transparent .. 1 opaque: the drawable's and the stored one together.
    float getTransparency() const { return ZN3DObjectDraw::getTransparency(); }
    void setTransparency(float opacity);
    float getStoredOpacity() const { return ZN3DFaultPatchLight::getTransparency(); }

    // ----- header settings -----

    // Appends the drawable's display settings and one element "ZN3DFaultPatch" (or
    // "ZN2DFaultPatch" for a 2D patch) holding "DrawPickedPoint" and "ShowPreview" (3D
    // only), "ShowPickingIntersection", "MeshingMethod", "SmootFactor" (spelt so in the
    // files), "InterpSize", "Extrapolation" and "Transparency" (the opacity).
    void createHeaderSettings(QDomDocument& doc, QDomElement& parent) const;
    // Reads them back from `parent`. For a 3D patch picked points are first drawn and the
    // preview hidden; every child present then sets its value, a missing one keeps it.
    void getHeaderSettings(const QDomElement& parent);

    // ----- property sheet -----

    // The information rows "Fault set name", "Name" (the only editable one), "Fault
    // Strike", "Dip Direction", "Dip" (degrees, no decimals), "Size" (computed area, two
    // decimals), "Saved" (none with the base-style flag), then the drawable's edge and
    // fill rows.
    void createProperty(ZNPropertySheet& sheet) const override;
    // The gridding rows: "Gridding Method", "Mesh Resolution" (50..500, step 10) and
    // "Z Sampling" (1..100) but not with the base-style flag, "Smooth Factor" (1..101),
    // "Interp Size" (5..1000) and "Extrapolation" (0..100) disabled while the method is
    // 0, "Show Picking" (3D only; disabled and false while the drawable display flag is
    // set), "Show Picking Intersection", "Show Preview" (3D only), "Transparency"
    // (0..100, step 10: (1 - opacity) x 100).
    void createGlobalProperty(ZNPropertySheet& sheet) const;
    // Applies an edit of row `id`. A value equal to the stored one, of the wrong type or
    // outside the row's range changes nothing and returns PropertyUnchanged. Otherwise
    // the value is stored, the row of `sheet` (may be null) follows, an action is posted
    // for this object ("UPDATE_FAULT_MESH" for gridding values, "UPDATE_FAULT_LIGHT" for
    // display ones; interpolation, extrapolation and method edits post none with the
    // base-style flag) and PropertyRenamed (after "Name") or PropertyStored is returned.
    // A rename also makes the file name the directory of the current one, the directory
    // separator and the new name. Edits of the drawable's rows ("Style Edge", "Width
    // Edge", "Style Fill", or "Edge" with a QPen) change the fault's pen.
    int updateProperty(const QString& id, const QVariant& value, ZNPropertySheet* sheet);
    // The same without a sheet; true when something was stored.
    bool updateProperty(const QString& id, const QVariant& value) override;

    // ----- state -----

    bool is2D() const { return m_is2D; }
    void set2D(bool is2D) { m_is2D = is2D; }
    // When false, updateMeshWithPickedPoint computes no mesh.
    bool isMeshing() const { return m_meshing; }
    void setMeshing(bool meshing) { m_meshing = meshing; }
    bool isBaseStyle() const { return m_baseStyle; }
    // The drawable display flag of the host: while set, "Show Picking" is disabled.
    bool getDisplayFlag() const { return m_displayFlag; }
    void setDisplayFlag(bool flag) { m_displayFlag = flag; }
    bool isSelectedAsCuttedFault() const { return m_selectedAsCutted; }
    void setSelectedAsCuttedFault(bool selected) { m_selectedAsCutted = selected; }
    bool isSelectedAsMainFault() const { return m_selectedAsMain; }
    void setSelectedAsMainFault(bool selected) { m_selectedAsMain = selected; }
    // The mesh area / 100000, in the square of the world unit; 0 until computed.
    double getComputedArea() const { return m_computedArea; }
    // Sets the computed area from the current mesh (-9999.0 without facettes).
    void updateComputedArea();
    // A reference position of the host; (-9999, -9999, -9999) until set.
    const core::vec3& getReferencePoint() const { return m_referencePoint; }
    void setReferencePoint(const core::vec3& p) { m_referencePoint = p; }
    const QString& getFaultSetName() const { return m_faultSetName; }
    void setFaultSetName(const QString& name) { m_faultSetName = name; }
    const georef::BlocSpace& getBlocSpace() const { return m_blocSpace; }
    void setBlocSpace(const georef::BlocSpace& blocSpace) { m_blocSpace = blocSpace; }

    // The fault set the patch is attached to (null when none or deleted). Setting one
    // detaches the patch from the previous one and attaches it to the new one.
    ZNFaultPatchManager* getFaultSet() const;
    void setFaultSet(ZNFaultPatchManager* faultSet);

    // ----- picked points -----

    // The fault's picked points, separators between sticks.
    const core::Array<core::PointWithBool>& getPickedPoints() const { return m_pickedPoints; }
    void setPickedPoints(const core::Array<core::PointWithBool>& points) { m_pickedPoints = points; }
    // Box of the points that are not separators; empty until updateMeshWithPickedPoint.
    const geom::Box3& getPickedPointBoundingBox() const { return m_pickedBox; }
    // True when at least two hand-picked sticks hold two points or more each.
    bool testValidity() const;

    // ----- surface -----

    // Replaces the mesh by `points` and `facettes` (world coordinates) and updates the
    // computed area.
    void setMesh(const core::Array<core::vec3>& points, const core::Array<ZNFacette>& facettes);
    // The same, taking over the arrays instead of copying them (left empty).
    void setMesh(core::Array<core::vec3>&& points, core::Array<ZNFacette>&& facettes);
    // Recomputes the picked-point box, then, when meshing is on, the mesh by the
    // gridding method (0 or 1; any other computes nothing). True when a mesh was made.
    bool updateMeshWithPickedPoint();
    // The two methods (see the class comment). Each runs only on a valid patch and then
    // replaces the mesh (emptied when the sticks span no area) and the computed area.
    bool getMeshWithPickedPoint();
    bool getMeshWithPickedPointDelaunay();
    // The hand-picked sticks widened by `distance` (world units): every stick lengthened
    // at both ends along its end segments, and the two outermost sticks copied that far
    // further out on the plane. Separators between sticks; automatic entries dropped.
    core::Array<core::PointWithBool> getExpandedPolyline(double distance) const;
    // The matrix from the regression plane's coordinates (a strike, b down dip, w normal)
    // to world coordinates, fitted to the hand-picked points; false, `planeToWorld`
    // untouched, with fewer than two.
    bool getFaultMeshingRegressionMatrix(core::mat4& planeToWorld) const;
    // The outline of the area the current gridding method meshes, in world coordinates:
    // one polygon per piece. Null for an invalid patch; owned by the caller.
    ZNMultiPolygon* getMeshingPolygon() const;

    // ----- normal and angles (degrees) -----

    // The unit normal of the plane fitted to the hand-picked points, turned so that its y
    // is never positive; (-9999, -9999, -9999) when the mesh has no facette or no plane
    // can be fitted.
    core::vec3 getNormal() const;
    // The same with every point's y multiplied by `scale` first.
    core::vec3 getScaledNormal(double scale) const;
    // Direction of the horizontal part of `v`, clockwise from north (+z) to east (+x),
    // in (0, 360]: "Dip Direction" of a normal that points up. A horizontal part shorter
    // than 0.001 gives 180. -9999.0 when x is -9999.0.
    static double getAzimuthAngle(const core::vec3& v);
    // 90 + asin(y / |n|): 0 for a flat plane, 90 for a vertical one when y <= 0.
    // -9999.0 when x is -9999.0 or n is zero.
    static double getDipAngle(const core::vec3& normal);
    // The strike of the plane of normal `normal`: its azimuth - 90, in [0, 360).
    // -9999.0 passes through.
    static double getFaultPlaneAzimuthAngle(const core::vec3& normal);

    // ----- planes, block spaces, projections -----

    // Least-squares planes (invalid with fewer than two points): of the hand-picked
    // points; of `points`; of the entries of `points` that are not separators; of the
    // hand-picked points mapped by `matrix` (projective, each divided by its own w).
    geom::Plane getFaultPlane() const;
    static geom::Plane getFaultPlane(const core::Array<core::vec3>& points);
    static geom::Plane getFaultPlane(const core::Array<core::PointWithBool>& points);
    geom::Plane getFaultPlane(const core::mat4& matrix) const;

    // A one-layer grid on the fault's regression plane (hand-picked points, or the mesh
    // when they fit no plane): block x along the strike, block y down the dip, block z
    // along the normal, steps `sampling` (x, y, z), covering `planeBox` (plane
    // coordinates a, b, w; the layer lies at the middle of its w range). An empty block
    // space when there is no plane, a step is not positive or the grid would exceed
    // kMaxImagePixels.
    georef::BlocSpace getFaultBlocSpace(const geom::Box3& planeBox, const core::vec3& sampling) const;
    // The grid around the mesh at (mesh resolution, Z sampling, mesh resolution); around
    // the hand-picked points when there is no mesh.
    georef::BlocSpace getFaultBlocSpace() const;
    // The grid around the entries of `points` that are not separators.
    georef::BlocSpace getFaultBlocSpaceWithPointArray(const core::Array<core::PointWithBool>& points,
                                                      const core::vec3& sampling) const;

    // The mesh flattened on its plane: the grid around the mesh at (mesh resolution,
    // Z sampling, mesh resolution) x `scale` (no lower bound on the lateral step) is
    // written into `blocSpace` and its block-to-world matrix into `matrix`; the returned
    // image (width nx, height ny) holds the fault id in every pixel a facette covers,
    // -9999 elsewhere. Null (arguments untouched) without facettes, for a step that is
    // not positive, or for a grid too large. Owned by the caller.
    img::Image* getProjectionImage(georef::BlocSpace& blocSpace, core::mat4& matrix,
                                   double scale) const;
    // The same on a grid of the given steps (along the strike, down the dip, along the
    // normal; world units), whatever the gridding parameters.
    img::Image* getProjectionImage(georef::BlocSpace& blocSpace, core::mat4& matrix,
                                   const core::vec3& sampling) const;
    // The picked sticks flattened on the plane, on the grid around the hand-picked
    // points at (max(mesh resolution, 50), Z sampling, the same lateral step). With
    // `blocSpace`, the grid is written into it and every pixel inside the meshing polygon
    // holds the sticks' height over the plane (w) interpolated as the meshing does; without
    // it, only the pixels the sticks cross hold their height. Other pixels hold -9999.
    // `polygon` (may be null) receives the meshing polygon. Null for an invalid patch;
    // owned by the caller.
    img::Image* getProjectionImageFromPickedPoint(georef::BlocSpace* blocSpace,
                                                  ZNMultiPolygon* polygon) const;
    // The image shown while picking: as getProjectionImage at scale 1, but around both
    // the mesh and the hand-picked points with kPickingMarginCells more cells on every
    // side, so that points can be picked beyond the current surface; the sticks are drawn
    // with the fault id too, so a fault without mesh shows them. Null when there is
    // neither mesh nor plane.
    img::Image* getProjectionImageForPicking(georef::BlocSpace& blocSpace, core::mat4& matrix) const;
    // The same on a grid of the given steps (see getProjectionImage); null for a step that
    // is not positive.
    img::Image* getProjectionImageForPicking(georef::BlocSpace& blocSpace, core::mat4& matrix,
                                             const core::vec3& sampling) const;

    // Sticks cut from the mesh: every `step`-th column of `blocSpace` (starting at step /
    // 2; a step below 1 counts as 1) defines the plane through it that holds the block's y
    // and z axes; each connected piece of the mesh's crossing with it gives one stick from
    // its shallower end to its deeper end, indices (column, piece), named after the fault.
    // `sticks` is replaced; returns the number of sticks.
    int getFaultStick(const georef::BlocSpace& blocSpace, core::Array<ZNFaultStick>& sticks,
                      int step) const;

    // ----- ZNFaultSurface -----

    int getFaultSurfaceId() const override { return getFaultId(); }
    void setCurrentFault(bool current) override { m_highlighted = current; }
    bool isCurrentFault() const override { return m_highlighted; }
    bool getSurfaceMesh(core::Array<core::vec3>& vertices,
                        core::Array<core::Triplet>& triangles) const override;

private:
    // The regression frame of the hand-picked points, or of the mesh when they fit none.
    fault::surface::PlaneFrame layoutFrame() const;
    // The grid around the mesh (and with `withPicks` the picked points) at `sampling`,
    // `margin` cells larger on every side.
    georef::BlocSpace blocSpaceAround(const core::vec3& sampling, bool withPicks, int margin) const;
    core::vec3 griddingSampling(bool lowerBound) const;

    georef::BlocSpace m_blocSpace;                 // survey grid of the fault set
    core::Array<core::PointWithBool> m_pickedPoints;
    geom::Box3 m_pickedBox;
    QPointer<ZNFaultPatchManager> m_faultSet;      // attached to, not owned
    QString m_faultSetName;
    bool m_baseStyle = false;
    bool m_displayFlag = false;
    bool m_is2D = false;
    bool m_meshing = true;
    bool m_selectedAsCutted = false;
    bool m_selectedAsMain = false;
    bool m_highlighted = false;                    // the fault being edited
    double m_computedArea = 0.0;
    core::vec3 m_referencePoint{core::kNoValueReal, core::kNoValueReal, core::kNoValueReal};
};
