#include "znblocviewerengine.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "znsectiondrawable.h"

namespace {
const georef::BlocSpace kNoBlocSpace;
} // namespace

ZNBlocViewerEngine::ZNBlocViewerEngine() = default;
ZNBlocViewerEngine::~ZNBlocViewerEngine() = default;

void ZNBlocViewerEngine::changed()
{
    if (m_listener) m_listener();
}

void ZNBlocViewerEngine::sectionIsNew()
{
    ++m_sectionVersion;
    sectionChanged();
    changed();
}

// ----- block and section -----

void ZNBlocViewerEngine::setBloc(std::shared_ptr<ZNBloc> bloc)
{
    m_bloc = std::move(bloc);
    const int count = sectionCount(m_kind);
    if (m_kind != SectionKind::RandomLine) m_index = count > 0 ? std::clamp(m_index, 0, count - 1) : 0;
    measureRandomLine();
    fit();
    sectionIsNew();
}

const georef::BlocSpace& ZNBlocViewerEngine::blocSpace() const
{
    return m_bloc ? m_bloc->blocSpace() : kNoBlocSpace;
}

int ZNBlocViewerEngine::sectionCount(SectionKind kind) const
{
    const georef::BlocSpace& s = blocSpace();
    if (s.isEmpty()) return 0;
    switch (kind) {
    case SectionKind::Inline: return s.nx();
    case SectionKind::Crossline: return s.ny();
    case SectionKind::Slice: return s.nz();
    case SectionKind::RandomLine: return 1;
    }
    return 0;
}

bool ZNBlocViewerEngine::setSection(SectionKind kind, int index)
{
    const int count = sectionCount(kind);
    const int clamped = kind == SectionKind::RandomLine || count == 0 ? 0 : std::clamp(index, 0, count - 1);
    if (kind == SectionKind::RandomLine && m_nodes.size() < 2) return false;
    if (kind == m_kind && clamped == m_index) return false;
    const bool newShape = kind != m_kind;
    m_kind = kind;
    m_index = clamped;
    if (newShape || m_fitted) fit();
    sectionIsNew();
    return true;
}

bool ZNBlocViewerEngine::stepSection(int steps)
{
    if (m_kind == SectionKind::RandomLine) return false;
    return setSection(m_kind, m_index + steps);
}

bool ZNBlocViewerEngine::setRandomLine(const std::vector<core::vec2>& nodes)
{
    std::vector<core::vec2> distinct;
    for (const core::vec2& n : nodes)
        if (distinct.empty() || (n - distinct.back()).length() > 0.0) distinct.push_back(n);
    if (distinct.size() < 2) return false;
    m_nodes = distinct;
    measureRandomLine();
    const bool wasRandom = m_kind == SectionKind::RandomLine;
    m_kind = SectionKind::RandomLine;
    m_index = 0;
    if (!wasRandom) fit();
    sectionIsNew();
    return true;
}

void ZNBlocViewerEngine::measureRandomLine()
{
    m_nodeArc.assign(m_nodes.size(), 0.0);
    for (std::size_t k = 1; k < m_nodes.size(); ++k)
        m_nodeArc[k] = m_nodeArc[k - 1] + (m_nodes[k] - m_nodes[k - 1]).length();
}

core::vec2 ZNBlocViewerEngine::randomLinePoint(double s) const
{
    if (m_nodes.empty()) return {};
    if (s <= 0.0) return m_nodes.front();
    for (std::size_t k = 1; k < m_nodes.size(); ++k)
        if (s <= m_nodeArc[k]) {
            const double length = m_nodeArc[k] - m_nodeArc[k - 1];
            const double t = length > 0.0 ? (s - m_nodeArc[k - 1]) / length : 0.0;
            return m_nodes[k - 1] + (m_nodes[k] - m_nodes[k - 1]) * t;
        }
    return m_nodes.back();
}

QSize ZNBlocViewerEngine::imageSize() const
{
    const georef::BlocSpace& s = blocSpace();
    if (s.isEmpty()) return QSize();
    switch (m_kind) {
    case SectionKind::Inline: return {s.ny(), s.nz()};
    case SectionKind::Crossline: return {s.nx(), s.nz()};
    case SectionKind::Slice: return {s.nx(), s.ny()};
    case SectionKind::RandomLine:
        return {m_nodeArc.empty() ? 0 : static_cast<int>(std::floor(m_nodeArc.back())) + 1, s.nz()};
    }
    return QSize();
}

// ----- image <-> block -----

core::vec3 ZNBlocViewerEngine::imageToBloc(const QPointF& image) const
{
    const double c = image.x();
    const double r = image.y();
    const double i = m_index;
    switch (m_kind) {
    case SectionKind::Inline: return {i, c, r};
    case SectionKind::Crossline: return {c, i, r};
    case SectionKind::Slice: return {c, r, i};
    case SectionKind::RandomLine: {
        const core::vec2 map = randomLinePoint(c);
        return {map.x, map.y, r};
    }
    }
    return {};
}

bool ZNBlocViewerEngine::blocToImage(const core::vec3& b, QPointF& image, double* distance) const
{
    if (blocSpace().isEmpty()) return false;
    double off = 0.0;
    switch (m_kind) {
    case SectionKind::Inline:
        image = QPointF(b.y, b.z);
        off = std::fabs(b.x - m_index);
        break;
    case SectionKind::Crossline:
        image = QPointF(b.x, b.z);
        off = std::fabs(b.y - m_index);
        break;
    case SectionKind::Slice:
        image = QPointF(b.x, b.y);
        off = std::fabs(b.z - m_index);
        break;
    case SectionKind::RandomLine: {
        if (m_nodes.size() < 2) return false;
        const core::vec2 p(b.x, b.y);
        double best = std::numeric_limits<double>::max();
        double arc = 0.0;
        for (std::size_t k = 1; k < m_nodes.size(); ++k) {
            const core::vec2 ab = m_nodes[k] - m_nodes[k - 1];
            const double lengthSquared = ab.dot(ab);
            const double t = lengthSquared > 0.0 ? std::clamp((p - m_nodes[k - 1]).dot(ab) / lengthSquared, 0.0, 1.0) : 0.0;
            const double d = (p - (m_nodes[k - 1] + ab * t)).length();
            if (d < best) {
                best = d;
                arc = m_nodeArc[k - 1] + t * std::sqrt(lengthSquared);
            }
        }
        image = QPointF(arc, b.z);
        off = best;
        break;
    }
    }
    if (distance) *distance = off;
    return true;
}

// ----- viewport -----

void ZNBlocViewerEngine::setViewportSize(const QSize& size)
{
    m_viewport = size.expandedTo(QSize(1, 1));
    if (m_fitted) fit();
    changed();
}

void ZNBlocViewerEngine::fit()
{
    const QSize image = imageSize();
    const QRect area = QRect(QPoint(0, 0), m_viewport).marginsRemoved(m_margins);
    if (image.isEmpty() || area.width() <= 0 || area.height() <= 0) return;
    m_scaleX = std::clamp(double(area.width()) / image.width(), kMinScale, kMaxScale);
    m_scaleY = std::clamp(double(area.height()) / image.height(), kMinScale, kMaxScale);
    // Pixel (0, 0) spans -0.5..0.5: its edge lands on the area's corner.
    m_offset = QPointF(area.left() + 0.5 * m_scaleX, area.top() + 0.5 * m_scaleY);
    m_fitted = true;
    changed();
}

void ZNBlocViewerEngine::zoomAt(const QPointF& anchor, double factor)
{
    if (!(factor > 0.0)) return;
    const QPointF under = viewportToImage(anchor);
    m_scaleX = std::clamp(m_scaleX * factor, kMinScale, kMaxScale);
    m_scaleY = std::clamp(m_scaleY * factor, kMinScale, kMaxScale);
    m_offset = anchor - QPointF(under.x() * m_scaleX, under.y() * m_scaleY);
    m_fitted = false;
    changed();
}

void ZNBlocViewerEngine::pan(const QPointF& delta)
{
    m_offset += delta;
    m_fitted = false;
    changed();
}

QPointF ZNBlocViewerEngine::imageToViewport(const QPointF& image) const
{
    return m_offset + QPointF(image.x() * m_scaleX, image.y() * m_scaleY);
}

QPointF ZNBlocViewerEngine::viewportToImage(const QPointF& viewport) const
{
    const QPointF d = viewport - m_offset;
    return {d.x() / m_scaleX, d.y() / m_scaleY};
}

QRectF ZNBlocViewerEngine::imageRectInViewport() const
{
    const QSize image = imageSize();
    return QRectF(imageToViewport(QPointF(-0.5, -0.5)), imageToViewport(QPointF(image.width() - 0.5, image.height() - 0.5)));
}

core::vec3 ZNBlocViewerEngine::viewportToWorld(const QPointF& viewport) const
{
    return blocToWorld(imageToBloc(viewportToImage(viewport)));
}

bool ZNBlocViewerEngine::worldToViewport(const core::vec3& world, QPointF& viewport, double* distance) const
{
    QPointF image;
    if (!blocToImage(worldToBloc(world), image, distance)) return false;
    viewport = imageToViewport(image);
    return true;
}

// ----- drawables -----

void ZNBlocViewerEngine::addDrawable(std::shared_ptr<ZNSectionDrawable> drawable)
{
    if (!drawable) return;
    m_drawables.push_back(std::move(drawable));
    changed();
}

void ZNBlocViewerEngine::removeDrawable(const ZNSectionDrawable* drawable)
{
    m_drawables.erase(std::remove_if(m_drawables.begin(), m_drawables.end(),
                                     [drawable](const auto& d) { return d.get() == drawable; }),
                      m_drawables.end());
    changed();
}

void ZNBlocViewerEngine::clearDrawables()
{
    m_drawables.clear();
    changed();
}

ZNSectionDrawable* ZNBlocViewerEngine::drawableAt(const QPointF& viewport, double tolerance) const
{
    ZNSectionDrawable* nearest = nullptr;
    double best = tolerance;
    for (const auto& d : m_drawables) {
        if (!d->isVisible()) continue;
        const double distance = d->distanceTo(viewport, *this);
        if (distance <= best) {  // later ones win ties: they are on top
            best = distance;
            nearest = d.get();
        }
    }
    return nearest;
}

// ----- reference point -----

void ZNBlocViewerEngine::setReferencePoint(const core::vec3& world)
{
    m_reference = world;
    m_hasReference = true;
    changed();
}

void ZNBlocViewerEngine::clearReferencePoint()
{
    m_hasReference = false;
    changed();
}

bool ZNBlocViewerEngine::goToWorldPoint(const core::vec3& world)
{
    if (blocSpace().isEmpty() || m_kind == SectionKind::RandomLine) return false;
    const core::vec3 b = worldToBloc(world);
    const double along = m_kind == SectionKind::Inline ? b.x : m_kind == SectionKind::Crossline ? b.y : b.z;
    return setSection(m_kind, static_cast<int>(std::lround(along)));
}

// ----- ZNPickingViewer -----

core::vec2 ZNBlocViewerEngine::projectToScreen(const core::vec3& point) const
{
    QPointF viewport;
    double distance = 0.0;
    if (!worldToViewport(point, viewport, &distance) || distance > kPickingBand) return {kOffSection, kOffSection};
    return {viewport.x(), viewport.y()};
}

double ZNBlocViewerEngine::distanceToSection(const core::vec3& point) const
{
    QPointF image;
    double distance = 0.0;
    return blocToImage(worldToBloc(point), image, &distance) ? distance : 0.0;
}

bool ZNBlocViewerEngine::isPatchShown(const ZNObject* faultSet, int patchId) const
{
    return m_patchShown && m_patchShown(faultSet, patchId);
}

bool ZNBlocViewerEngine::getShownRandomLine(geom::RandomLine& line) const
{
    const georef::BlocSpace& s = blocSpace();
    if (s.isEmpty() || m_kind == SectionKind::Slice) return false;
    std::vector<core::vec2> nodes;
    switch (m_kind) {
    case SectionKind::Inline: nodes = {{double(m_index), 0.0}, {double(m_index), double(s.ny() - 1)}}; break;
    case SectionKind::Crossline: nodes = {{0.0, double(m_index)}, {double(s.nx() - 1), double(m_index)}}; break;
    default: nodes = m_nodes;
    }
    if (nodes.size() < 2) return false;
    geom::RandomLine result;
    result.verticalAxis = geom::RandomLine::kWorldVerticalAxis;
    double low = std::numeric_limits<double>::max();
    double high = -std::numeric_limits<double>::max();
    for (const core::vec2& n : nodes) {
        const core::vec3 top = blocToWorld({n.x, n.y, 0.0});
        const core::vec3 bottom = blocToWorld({n.x, n.y, double(s.nz() - 1)});
        result.nodes.add(result.mapPosition(top));
        low = std::min({low, top.y, bottom.y});
        high = std::max({high, top.y, bottom.y});
    }
    result.verticalMin = low;
    result.verticalMax = high;
    line = result;
    return true;
}
