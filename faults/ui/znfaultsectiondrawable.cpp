#include "znfaultsectiondrawable.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QPainter>

#include <3dobject/zn3dobject.h>
#include <core/array.h>
#include <core/multiarray.h>
#include <core/triplet.h>
#include <znblocviewerengine.h>
#include <znfaultpatchmanager.h>
#include <znsectioncrossing.h>

namespace {

using Kind = ZNBlocViewerEngine::SectionKind;
constexpr int kMinimumAlpha = 40;  // of the farthest sticks still drawn

// The coordinate a section of `kind` holds fixed (block x, y or z).
int fixedAxis(Kind kind)
{
    return kind == Kind::Inline ? 0 : kind == Kind::Crossline ? 1 : 2;
}

// The point where the edge (a, b) crosses `level` on `axis`, when it does.
bool crossing(const core::vec3& a, const core::vec3& b, int axis, double level, core::vec3& at)
{
    const double da = a[axis] - level;
    const double db = b[axis] - level;
    if ((da < 0.0) == (db < 0.0) || da == db) return false;
    const double t = da / (da - db);
    at = a + (b - a) * t;
    return true;
}

} // namespace

ZNFaultSectionDrawable::ZNFaultSectionDrawable(const ZNFaultPatchManager* set, SurfaceOf surfaceOf, IsShown isShown)
    : m_set(set), m_surfaceOf(std::move(surfaceOf)), m_isShown(std::move(isShown))
{
}

void ZNFaultSectionDrawable::surfaceChanged(int faultId)
{
    if (faultId == -9999) m_blocMeshes.clear();
    else m_blocMeshes.erase(faultId);
}

const ZNFaultSectionDrawable::BlocMesh* ZNFaultSectionDrawable::blocMeshOf(int faultId,
                                                                           const ZNBlocViewerEngine& engine) const
{
    const auto kept = m_blocMeshes.find(faultId);
    if (kept != m_blocMeshes.end()) return &kept->second;
    const ZN3DObject* surface = m_surfaceOf ? m_surfaceOf(faultId) : nullptr;
    if (!surface || surface->getNumberOfFacettes() == 0) return nullptr;
    BlocMesh mesh;
    const core::Array<core::vec3>& points = surface->getPoints();
    mesh.vertices.reserve(static_cast<std::size_t>(points.size()));
    for (const core::vec3& p : points) mesh.vertices.push_back(engine.worldToBloc(p));
    mesh.low = mesh.high = mesh.vertices.empty() ? core::vec3() : mesh.vertices.front();
    for (const core::vec3& v : mesh.vertices)
        for (int k = 0; k < 3; ++k) {
            mesh.low[k] = std::min(mesh.low[k], v[k]);
            mesh.high[k] = std::max(mesh.high[k], v[k]);
        }
    return &(m_blocMeshes[faultId] = std::move(mesh));
}

void ZNFaultSectionDrawable::addTrace(int faultId, const ZNBlocViewerEngine& engine, FaultLines& lines) const
{
    const Kind kind = engine.sectionKind();
    const ZN3DObject* surface = m_surfaceOf ? m_surfaceOf(faultId) : nullptr;
    if (!surface || surface->getNumberOfFacettes() == 0) return;
    if (kind == Kind::RandomLine) {
        geom::RandomLine line;
        if (!engine.getShownRandomLine(line)) return;
        core::Array<core::Triplet> triangles;
        triangles.resize(surface->getNumberOfFacettes());
        for (int t = 0; t < surface->getNumberOfFacettes(); ++t) {
            const ZNFacette& f = surface->getFacettes()[t];
            triangles[t] = core::Triplet(int(f.index[0]), int(f.index[1]), int(f.index[2]));
        }
        core::MultiArray<core::vec3> pieces;
        ZNSectionCrossing::crossSection(surface->getPoints(), triangles, line, pieces);
        for (int p = 0; p < pieces.getNumberOfArray(); ++p)
            for (int k = 1; k < pieces.getCount(p); ++k) {
                QPointF a, b;
                if (engine.worldToViewport(pieces(p, k - 1), a) && engine.worldToViewport(pieces(p, k), b))
                    lines.trace.emplace_back(a, b);
            }
        return;
    }
    const BlocMesh* mesh = blocMeshOf(faultId, engine);
    const int axis = fixedAxis(kind);
    const double level = engine.sectionIndex();
    if (!mesh || level < mesh->low[axis] || level > mesh->high[axis]) return;
    const int count = static_cast<int>(mesh->vertices.size());
    for (const ZNFacette& f : surface->getFacettes()) {
        core::vec3 corner[3];
        bool valid = true;
        for (int c = 0; c < 3; ++c) {
            valid = valid && f.index[c] < static_cast<quint32>(count);
            if (valid) corner[c] = mesh->vertices[f.index[c]];
        }
        if (!valid) continue;
        core::vec3 cut[3];
        int n = 0;
        for (int e = 0; e < 3 && n < 2; ++e)
            if (crossing(corner[e], corner[(e + 1) % 3], axis, level, cut[n])) ++n;
        if (n < 2) continue;
        QPointF a, b;
        if (engine.blocToImage(cut[0], a) && engine.blocToImage(cut[1], b))
            lines.trace.emplace_back(engine.imageToViewport(a), engine.imageToViewport(b));
    }
}

std::vector<ZNFaultSectionDrawable::FaultLines> ZNFaultSectionDrawable::linesOn(const ZNBlocViewerEngine& engine) const
{
    std::vector<FaultLines> all;
    if (!m_set || engine.blocSpace().isEmpty()) return all;
    for (const ZN3DFaultPatchLight* light : m_set->getFaultLightList()) {
        const int faultId = light->getFaultId();
        if (m_isShown && !m_isShown(faultId)) continue;
        FaultLines lines;
        lines.faultId = faultId;
        lines.colour = light->getPen().color();
        core::Array<core::PointWithBool> points;
        m_set->getFaultPickedPointArray(faultId, points);
        QPointF previous;
        double previousDistance = std::numeric_limits<double>::infinity();
        for (const core::PointWithBool& p : points) {
            if (p.isSeparator()) {
                previousDistance = std::numeric_limits<double>::infinity();
                continue;
            }
            QPointF at;
            double distance = 0.0;
            if (!engine.worldToViewport(p.position(), at, &distance)) continue;
            if (distance <= m_band) lines.points.push_back(at);
            if (distance <= m_band && previousDistance <= m_band) {
                lines.sticks.emplace_back(previous, at);
                lines.stickFade.push_back(1.0 - std::max(distance, previousDistance) / std::max(m_band, 1e-9));
            }
            previous = at;
            previousDistance = distance;
        }
        addTrace(faultId, engine, lines);
        if (!lines.points.empty() || !lines.trace.empty()) all.push_back(std::move(lines));
    }
    return all;
}

void ZNFaultSectionDrawable::draw(QPainter& painter, const ZNBlocViewerEngine& engine) const
{
    for (const FaultLines& f : linesOn(engine)) {
        painter.setPen(QPen(f.colour, kTraceWidth));
        for (const QLineF& l : f.trace) painter.drawLine(l);
        for (std::size_t k = 0; k < f.sticks.size(); ++k) {
            QColor c = f.colour;
            c.setAlpha(std::max(kMinimumAlpha, static_cast<int>(255 * f.stickFade[k])));
            painter.setPen(QPen(c, kStickWidth));
            painter.drawLine(f.sticks[k]);
        }
        const bool current = f.faultId == m_currentFault;
        painter.setPen(current ? QPen(Qt::black, 1) : Qt::NoPen);
        painter.setBrush(f.colour);
        for (const QPointF& p : f.points) {
            if (current)
                painter.drawRect(QRectF(p.x() - kHandleSize / 2, p.y() - kHandleSize / 2, kHandleSize, kHandleSize));
            else
                painter.drawEllipse(p, kPointRadius, kPointRadius);
        }
    }
}

namespace {
// Distance in pixels from `viewport` to what is drawn of one fault.
double distanceOf(const ZNFaultSectionDrawable::FaultLines& f, const QPointF& viewport)
{
    double d = std::numeric_limits<double>::infinity();
    for (const QPointF& p : f.points) d = std::min(d, std::hypot(p.x() - viewport.x(), p.y() - viewport.y()));
    for (const QLineF& l : f.sticks) d = std::min(d, ZNSectionDrawable::distanceToSegment(viewport, l.p1(), l.p2()));
    for (const QLineF& l : f.trace) d = std::min(d, ZNSectionDrawable::distanceToSegment(viewport, l.p1(), l.p2()));
    return d;
}
} // namespace

int ZNFaultSectionDrawable::faultAt(const QPointF& viewport, double tolerance, const ZNBlocViewerEngine& engine) const
{
    int nearest = -9999;
    double best = tolerance;
    for (const FaultLines& f : linesOn(engine)) {
        const double d = distanceOf(f, viewport);
        if (d <= best) {
            best = d;
            nearest = f.faultId;
        }
    }
    return nearest;
}

double ZNFaultSectionDrawable::distanceTo(const QPointF& viewport, const ZNBlocViewerEngine& engine) const
{
    double best = std::numeric_limits<double>::infinity();
    for (const FaultLines& f : linesOn(engine)) best = std::min(best, distanceOf(f, viewport));
    return best;
}
