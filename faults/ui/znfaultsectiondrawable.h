#pragma once
#include <functional>
#include <map>
#include <vector>

#include <QColor>
#include <QLineF>

#include <core/vec3.h>
#include <znsectiondrawable.h>

class ZN3DObject;
class ZNFaultPatchManager;

// The faults of a fault set over a section: for each fault shown, its sticks where they
// lie on the section or near it (within band() voxels, fainter the farther; the points
// of the current fault with square handles) and its trace, where its surface cuts the
// section, in the fault's colour.
//
// The drawable reads the fault set and the surfaces when it draws: the host tells it
// which faults are shown and where their surfaces are (providers), and calls
// surfaceChanged() when a surface's mesh changed (the trace of an inline, crossline or
// time slice is cut from the surface's vertices in block coordinates, kept until then).
class ZNFaultSectionDrawable : public ZNSectionDrawable {
public:
    static constexpr double kDefaultBand = 3.0;        // voxels
    static constexpr double kPointRadius = 3.0;        // pixels
    static constexpr double kHandleSize = 7.0;         // pixels, the current fault's points
    static constexpr double kTraceWidth = 2.0;         // pixels
    static constexpr double kStickWidth = 2.0;         // pixels

    using SurfaceOf = std::function<const ZN3DObject*(int faultId)>;
    using IsShown = std::function<bool(int faultId)>;

    // `set` is not owned and must outlive the drawable (or be replaced).
    ZNFaultSectionDrawable(const ZNFaultPatchManager* set, SurfaceOf surfaceOf, IsShown isShown);

    double band() const { return m_band; }
    void setBand(double voxels) { m_band = voxels; }
    int currentFault() const { return m_currentFault; }
    void setCurrentFault(int faultId) { m_currentFault = faultId; }
    // Forgets what was kept of a fault's surface (-9999: of every fault).
    void surfaceChanged(int faultId);

    void draw(QPainter& painter, const ZNBlocViewerEngine& engine) const override;
    double distanceTo(const QPointF& viewport, const ZNBlocViewerEngine& engine) const override;
    // The shown fault whose sticks or trace pass nearest to `viewport`, within
    // `tolerance` pixels; -9999 for none.
    int faultAt(const QPointF& viewport, double tolerance, const ZNBlocViewerEngine& engine) const;

    // What is drawn of one fault on the engine's section, in viewport coordinates (for the
    // drawing, the hit tests and the tests).
    struct FaultLines {
        int faultId = -9999;
        QColor colour;
        std::vector<QLineF> sticks;               // stick segments near the section
        std::vector<double> stickFade;            // 0..1 opacity of each stick segment
        std::vector<QPointF> points;              // stick points near the section
        std::vector<QLineF> trace;                // the surface's crossing
    };
    std::vector<FaultLines> linesOn(const ZNBlocViewerEngine& engine) const;

private:
    // A surface's vertices in block coordinates with their box, for cutting it by a
    // section of the block.
    struct BlocMesh {
        std::vector<core::vec3> vertices;
        core::vec3 low, high;
    };
    const BlocMesh* blocMeshOf(int faultId, const ZNBlocViewerEngine& engine) const;
    void addTrace(int faultId, const ZNBlocViewerEngine& engine, FaultLines& lines) const;

    const ZNFaultPatchManager* m_set;
    SurfaceOf m_surfaceOf;
    IsShown m_isShown;
    double m_band = kDefaultBand;
    int m_currentFault = -9999;
    mutable std::map<int, BlocMesh> m_blocMeshes;  // by fault id
};
