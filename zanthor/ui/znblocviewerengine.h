#pragma once
#include <functional>
#include <memory>
#include <vector>

#include <QMargins>
#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QString>

#include <core/vec2.h>
#include <core/vec3.h>
#include <geom/randomline.h>
#include <georef/blocspace.h>
#include <znbloc.h>
#include <znpickingviewer.h>

class ZNSectionDrawable;

// The engine of a 2D viewer of a block: which section of the displayed block is shown,
// how the section's pixels map to the viewport, to block indices and to world
// coordinates, the objects drawn over it, the mouse mode and the reference point. A plain
// class, tested without a window: the widget forwards events to it and paints what it
// says.
//
// Sections and their image. An inline (x = i) shows crossline across and sample down;
// a crossline (y = j) inline across and sample down; a time slice (z = k) inline across
// and crossline down; a random line the traces along a polyline of the block's map
// (x, y), one per voxel of its length, and sample down. Image positions are continuous:
// the centre of pixel (c, r) is at (c, r).
//
// Viewport. The image lands in the viewport scaled (separately across and down) and
// shifted; zooming keeps the image point under the cursor where it was, panning moves
// the image with the cursor, fitting shows the whole image inside the margins kept for
// the axes.
//
// The engine implements ZNPickingViewer, so that the fault set's picking works on it:
// screen positions are viewport pixels, the section is given in world coordinates, and
// the host says which patches it draws (setPatchShown).
class ZNBlocViewerEngine : public ZNPickingViewer {
public:
    enum class SectionKind { Inline = 0, Crossline = 1, Slice = 2, RandomLine = 3 };
    static constexpr double kMinScale = 1e-3;  // viewport pixels per image pixel
    static constexpr double kMaxScale = 1e3;

    ZNBlocViewerEngine();
    ~ZNBlocViewerEngine() override;

    // ----- displayed block -----

    // Replaces the displayed block (null: none), shared with whoever else reads it. The
    // section keeps its kind, its index clamped into the new block, and the view fits.
    void setBloc(std::shared_ptr<ZNBloc> bloc);
    ZNBloc* getBloc() const { return m_bloc.get(); }
    std::shared_ptr<ZNBloc> sharedBloc() const { return m_bloc; }
    // The block's geometry; an empty block space without a block.
    const georef::BlocSpace& blocSpace() const;

    // ----- section -----

    SectionKind sectionKind() const { return m_kind; }
    int sectionIndex() const { return m_index; }
    // Shows section `index` of `kind`, clamped into the block (a random line keeps its
    // nodes); false when that is what was shown already.
    bool setSection(SectionKind kind, int index);
    // Moves by `steps` sections of the current kind, stopping at the first and the last;
    // false when it did not move.
    bool stepSection(int steps);
    // Sections of a kind in the block: nx, ny, nz, and 1 for a random line; 0 without block.
    int sectionCount(SectionKind kind) const;
    // Shows a random line through `nodes` (block x, y; at least two distinct nodes).
    // False, nothing changed, for fewer.
    bool setRandomLine(const std::vector<core::vec2>& nodes);
    const std::vector<core::vec2>& randomLineNodes() const { return m_nodes; }
    // Traces across and samples down; empty without block.
    QSize imageSize() const;
    // Changes each time the block or the section changes, so that caches know.
    quint64 sectionVersion() const { return m_sectionVersion; }

    // ----- image, block, world -----

    // Block position (x, y, z indices, continuous) of an image position.
    core::vec3 imageToBloc(const QPointF& image) const;
    // The image position of a block point projected onto the section, and in `distance`
    // (may be null) how far it lies from the section, in voxels. False without block.
    bool blocToImage(const core::vec3& bloc, QPointF& image, double* distance = nullptr) const;
    core::vec3 blocToWorld(const core::vec3& bloc) const { return blocSpace().blocToWorld(bloc); }
    core::vec3 worldToBloc(const core::vec3& world) const { return blocSpace().worldToBloc(world); }

    // ----- viewport -----

    void setViewportSize(const QSize& size);
    const QSize& viewportSize() const { return m_viewport; }
    // Room kept for the axes around the image when it is fitted.
    void setMargins(const QMargins& margins) { m_margins = margins; }
    const QMargins& margins() const { return m_margins; }
    // Shows the whole image inside the viewport's margins. Until the user zooms or pans,
    // the view stays fitted: a new viewport size or a new section of another shape fits
    // again.
    void fit();
    bool isFitted() const { return m_fitted; }
    // Multiplies the scale by `factor` (kept within kMinScale..kMaxScale) around the
    // viewport point `anchor`, whose image point stays under it.
    void zoomAt(const QPointF& anchor, double factor);
    // Moves the image by `delta` viewport pixels.
    void pan(const QPointF& delta);
    QPointF imageToViewport(const QPointF& image) const;
    QPointF viewportToImage(const QPointF& viewport) const;
    // The viewport rectangle the image's pixels cover.
    QRectF imageRectInViewport() const;
    double scaleAcross() const { return m_scaleX; }
    double scaleDown() const { return m_scaleY; }

    core::vec3 viewportToWorld(const QPointF& viewport) const;
    // The viewport position of a world point projected onto the section and its distance
    // from it in voxels; false without block.
    bool worldToViewport(const core::vec3& world, QPointF& viewport, double* distance = nullptr) const;

    // ----- drawn objects -----

    void addDrawable(std::shared_ptr<ZNSectionDrawable> drawable);
    void removeDrawable(const ZNSectionDrawable* drawable);
    void clearDrawables();
    // In drawing order (later ones on top).
    const std::vector<std::shared_ptr<ZNSectionDrawable>>& drawables() const { return m_drawables; }
    // The visible drawable nearest to `viewport` within `tolerance` pixels (the later one
    // on ties: it is drawn on top); null when none.
    ZNSectionDrawable* drawableAt(const QPointF& viewport, double tolerance) const;

    // ----- mouse mode and reference point -----

    const QString& getMouseModeName() const { return m_mouseMode; }
    void setMouseModeName(const QString& name) { m_mouseMode = name; }
    // The point shared by every view of the frame (cross navigation), in world coordinates.
    bool hasReferencePoint() const { return m_hasReference; }
    const core::vec3& referencePoint() const { return m_reference; }
    void setReferencePoint(const core::vec3& world);
    void clearReferencePoint();
    // Shows the section of the current kind through `world` (an inline shows the inline
    // through it, and so on); false when that is the section shown or without block.
    bool goToWorldPoint(const core::vec3& world);

    // ----- ZNPickingViewer -----

    // Points farther than pickingBand() voxels from the section are placed far outside
    // the screen, so that picking on one section never reaches the points of another.
    static constexpr double kPickingBand = 0.5;
    static constexpr double kOffSection = 1e9;  // screen coordinates of such points
    core::vec2 projectToScreen(const core::vec3& point) const override;
    double distanceToSection(const core::vec3& point) const override;
    bool isPatchShown(const ZNObject* faultSet, int patchId) const override;
    // The section as a vertical section of world space (vertical axis y); false for a
    // time slice or without block.
    bool getShownRandomLine(geom::RandomLine& line) const override;
    using PatchShown = std::function<bool(const ZNObject* faultSet, int patchId)>;
    // The host's answer to isPatchShown; without one no patch is shown.
    void setPatchShown(PatchShown shown) { m_patchShown = std::move(shown); }

    // Called after every change of what the view shows (the widget repaints).
    void setChangeListener(std::function<void()> listener) { m_listener = std::move(listener); }

protected:
    // Tells the listener; derived engines call it after their own changes.
    void changed();
    // After the block or the section changed: derived engines drop their caches here.
    virtual void sectionChanged() {}

private:
    void sectionIsNew();
    // Arc length of each random line node along the line (in voxels).
    void measureRandomLine();
    // The map position (block x, y) at arc length `s` of the random line, clamped to it.
    core::vec2 randomLinePoint(double s) const;

    std::shared_ptr<ZNBloc> m_bloc;
    SectionKind m_kind = SectionKind::Inline;
    int m_index = 0;
    std::vector<core::vec2> m_nodes;     // random line, block map coordinates
    std::vector<double> m_nodeArc;       // arc length at each node
    quint64 m_sectionVersion = 0;
    QSize m_viewport{1, 1};
    QMargins m_margins;
    double m_scaleX = 1.0;               // viewport pixels per image pixel, across
    double m_scaleY = 1.0;               // and down
    QPointF m_offset;                    // viewport position of image point (0, 0)
    bool m_fitted = true;                // fitted, not zoomed or panned since
    std::vector<std::shared_ptr<ZNSectionDrawable>> m_drawables;
    QString m_mouseMode;
    bool m_hasReference = false;
    core::vec3 m_reference;
    PatchShown m_patchShown;
    std::function<void()> m_listener;
};
