// The fault viewer engine: the fault shown, its images and displayed block, coordinates
// and caption. Picking and drawing are in _picking.cpp, settings in _settings.cpp, the
// data mapping in _mapping.cpp.
#include "znfaultviewerengine.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QPainter>

#include <zn3dfaultpatch.h>
#include <zneventbus.h>
#include <znfaultpatchmanager.h>
#include <znmultipolygondraw.h>
#include <znprocess.h>

namespace {
constexpr float kNoPixel = -9999.0f;
constexpr double kParallel = 1e-12;  // |normal . edge| below this: the line misses a triangle

QString action(const char* name) { return QString::fromLatin1(name); }
} // namespace

ZNFaultViewerEngine::ZNFaultViewerEngine()
{
    setSection(SectionKind::Slice, 0);  // the displayed block's only slice
}

ZNFaultViewerEngine::~ZNFaultViewerEngine() = default;

void ZNFaultViewerEngine::send(const QString& name) const
{
    if (m_actions) m_actions(name);
}

void ZNFaultViewerEngine::refresh()
{
    send(action("REFRESH_FAULT_VIEWER"));
}

void ZNFaultViewerEngine::setFaultPatchManager(ZNFaultPatchManager* manager)
{
    m_manager = manager;
}

ZNFaultPatchManager* ZNFaultViewerEngine::getFaultPatchManager() const
{
    ZNFaultPatchManager* manager = m_manager.data();
    return manager && ZNProcess::exists(manager) ? manager : nullptr;
}

void ZNFaultViewerEngine::setCurrentMappedFault(ZN3DFaultPatch* fault)
{
    if (m_marker) m_marker(fault, QPen(QColor(Qt::green), kMarkWidth));
}

// ----- images -----

void ZNFaultViewerEngine::setImageSize(int width, int height)
{
    m_index = img::IndexImage(width, height, core::kNoValue);
    m_projection = img::Image(width, height, kNoPixel);
    m_mapped = img::Image(width, height, kNoPixel);
    m_relief = img::Image(width, height, kNoPixel);
    m_hasMapped = false;
    m_mappedName.clear();
}

void ZNFaultViewerEngine::adjustImageSizeWithBlocSpace(const georef::BlocSpace& blocSpace)
{
    const double nx = blocSpace.nx(), ny = blocSpace.ny(), nz = blocSpace.nz();
    const double diagonal = std::sqrt(nx * nx + ny * ny + nz * nz) * m_scaleFactor;
    const int size = static_cast<int>(std::lround(diagonal));
    if (m_index.width() == size && m_index.height() == size) return;
    setImageSize(size, size);
}

void ZNFaultViewerEngine::initWithBloc(const georef::BlocSpace& blocSpace)
{
    auto samples = std::make_shared<ZN3DImage<float>>(blocSpace, kNoPixel);
    auto bloc = std::make_shared<ZNBloc>();
    if (samples->isNull() || !bloc->openImage(samples)) bloc.reset();
    m_displayed = bloc ? samples : nullptr;
    setBloc(bloc);
    adjustImageSizeWithBlocSpace(blocSpace);
    fit();
}

int ZNFaultViewerEngine::getBlocSpaceMaxSize() const
{
    const georef::BlocSpace& s = blocSpace();
    return std::max({s.nx(), s.ny(), s.nz()});
}

void ZNFaultViewerEngine::setScaleFactor(double factor)
{
    if (factor > 0.0 && std::isfinite(factor)) m_scaleFactor = factor;
}

core::mat4 ZNFaultViewerEngine::worldToImageMatrix() const
{
    return blocSpace().getFromWorldToBlocMatrix();
}

void ZNFaultViewerEngine::fillIndexImage(const ZNFaultPatchManager* manager, int faultIndex, img::IndexImage& image) const
{
    image.fill(core::kNoValue);
    if (!manager || faultIndex < 1 || faultIndex >= manager->getNumberOfPatch()) return;
    const core::mat4 m = worldToImageMatrix() * manager->getBlocSpace().getFromBlocToWorldMatrix();
    core::Array<int> patches;
    manager->getPatchListWithLinkedList(manager->getFather(faultIndex), patches, true);
    for (int patch : patches)
        for (int j = 0; j < manager->getNumberOfPatchPoint(patch); ++j) {
            const core::Triplet t = manager->getPatchPointPosition(patch, j);
            if (t.x == core::kNoValue) continue;
            const double x = t.x, y = t.y, z = t.z;
            const double w = m(3, 0) * x + m(3, 1) * y + m(3, 2) * z + m(3, 3);
            const long column = std::lround((m(0, 0) * x + m(0, 1) * y + m(0, 2) * z + m(0, 3)) / w);
            const long row = std::lround((m(1, 0) * x + m(1, 1) * y + m(1, 2) * z + m(1, 3)) / w);
            if (column >= 0 && row >= 0 && column < image.width() && row < image.height())
                image(static_cast<int>(column), static_cast<int>(row)) = patch;
        }
}

void ZNFaultViewerEngine::fillIndexImage(const ZNFaultPatchManager* manager, int faultIndex)
{
    fillIndexImage(manager, faultIndex, m_index);
    displayTimeImage();
}

void ZNFaultViewerEngine::displayTimeImage()
{
    const georef::BlocSpace& space = blocSpace();
    if (!m_displayed || space.nx() != m_index.width() || space.ny() != m_index.height()) return;
    float* samples = m_displayed->data();
    const img::Image& shown = m_hasMapped ? m_mapped : m_relief;
    for (std::size_t p = 0; p < shown.sampleCount(); ++p) samples[p] = shown.data()[p];
    // A new block over the same samples, so that the section's cache is read again.
    auto bloc = std::make_shared<ZNBloc>();
    if (!bloc->openImage(m_displayed, getBloc() ? getBloc()->unitObject() : georef::UnitObject())) return;
    const View kept = view();
    setBloc(bloc);
    setView(kept);
    if (rangeMode() == RangeMode::FromData) setRangeFromData();
}

// ----- showing a fault -----

ZN3DFaultPatch* ZNFaultViewerEngine::faultToShow(ZNFaultPatchManager* manager, int faultIndex, int& father) const
{
    if (!manager || faultIndex < 1 || faultIndex >= manager->getNumberOfPatch()) return nullptr;
    father = manager->getFather(faultIndex);
    ZN3DFaultPatch* fault = manager->findFaultPatch(father);
    if (!fault || (m_faultShown && !m_faultShown(manager, father))) return nullptr;
    return fault;
}

core::vec3 ZNFaultViewerEngine::projectionSampling() const
{
    const ZN3DFaultPatch* fault = m_fault.data();
    if (!fault) return {};
    const double lateral = fault->getUtmPrecision(), down = fault->getTimePrecision();
    const core::vec3 gridding(lateral, down, lateral);
    switch (m_scaleType) {
    case ScaleType::FaultGridding: return gridding;
    case ScaleType::Custom: return gridding * m_spatialScale;
    case ScaleType::SurveyGrid: break;
    }
    const ZNFaultPatchManager* manager = getFaultPatchManager();
    if (!manager || manager->getBlocSpace().isEmpty()) return gridding;
    const core::mat4& m = manager->getBlocSpace().getFromBlocToWorldMatrix();
    const auto length = [&m](int c) { return core::vec3(m(0, c), m(1, c), m(2, c)).length(); };
    const double bin = std::min(length(0), length(1));
    const double sample = length(2);
    if (!(bin > 0.0) || !(sample > 0.0)) return gridding;
    return {bin, sample, bin};
}

bool ZNFaultViewerEngine::projectFault(ZNFaultPatchManager* manager, int faultIndex, bool forPicking)
{
    ZNFaultPatchManager* known = manager && ZNProcess::exists(manager) ? manager : nullptr;
    int father = kNoFault;
    ZN3DFaultPatch* fault = faultToShow(known, faultIndex, father);
    if (!fault) return false;
    // The grid steps depend on the fault (its gridding parameters): taken with it in place.
    const QPointer<ZN3DFaultPatch> previous = m_fault;
    const QPointer<ZNFaultPatchManager> previousManager = m_manager;
    m_fault = fault;
    m_manager = known;
    // "Fault Gridding" is the projection at scale 1.
    const core::vec3 sampling = projectionSampling();
    georef::BlocSpace space;
    core::mat4 matrix;
    std::unique_ptr<img::Image> image(
        forPicking ? fault->getProjectionImageForPicking(space, matrix, sampling)
        : m_scaleType == ScaleType::FaultGridding ? fault->getProjectionImage(space, matrix, 1.0)
                                                  : fault->getProjectionImage(space, matrix, sampling));
    if (!image) {
        m_fault = previous;
        m_manager = previousManager;
        ZNEventBus::sendMessage(1, QStringLiteral("Could not load image for fault ") + fault->GetFaultName());
        return false;
    }
    const bool sameFault = m_projected && m_mappedFaultId == father;
    m_mappedFaultId = father;
    m_projectedId = fault->getFaultId();
    m_projected = true;
    m_forPicking = forPicking;
    setCurrentMappedFault(fault);
    insertEdgePolyline(fault);
    showProjection(std::move(image), space, sameFault);
    indexFacettes();
    computeRelief();
    displayTimeImage();
    m_viewerMode = faultPickingModeName();
    updatePickedPoint(fault);
    send(action("UPDATE_CAPTION"));
    send(action("FRAME_CHANGED"));
    send(action("UPDATE_VIEWER_OBJECT"));
    send(action("UPDATE_PALETTE_MANAGER"));
    return true;
}

bool ZNFaultViewerEngine::showProjection(std::unique_ptr<img::Image> projection, const georef::BlocSpace& space,
                                         bool keepView)
{
    // The world point at the middle of the view stays there when the same fault is shown
    // again (after an edit), at the same scale.
    const View before = view();
    const QRect area = QRect(QPoint(0, 0), viewportSize()).marginsRemoved(margins());
    const core::vec3 centre = ZNBlocViewerEngine::viewportToWorld(QPointF(area.center()));
    const bool hadBlock = getBloc() != nullptr;

    const georef::BlocSpace displayed(projection->width(), projection->height(), 1, space.getFromBlocToWorldMatrix());
    setImageSize(projection->width(), projection->height());
    for (std::size_t p = 0; p < m_projection.sampleCount(); ++p) {
        const float v = projection->data()[p];
        m_projection.data()[p] = v;
        m_index.data()[p] = v == kNoPixel ? core::kNoValue : static_cast<int32_t>(v);
    }
    m_displayed = std::make_shared<ZN3DImage<float>>(displayed, kNoPixel);
    auto bloc = std::make_shared<ZNBloc>();
    const georef::UnitObject units = m_fault ? m_fault->GetUnitObject() : georef::UnitObject();
    if (m_displayed->isNull() || !bloc->openImage(m_displayed, units)) {
        m_displayed.reset();
        bloc.reset();
    }
    setBloc(bloc);
    if (keepView && hadBlock && !before.fitted && bloc) {
        View kept = before;
        const core::vec3 image = worldToBloc(centre);
        kept.offset = QPointF(area.center()) - QPointF(image.x * kept.scaleX, image.y * kept.scaleY);
        setView(kept);
    }
    return bloc != nullptr;
}

bool ZNFaultViewerEngine::project3DFaultPatch(ZNFaultPatchManager* manager, int faultIndex)
{
    return projectFault(manager, faultIndex, false);
}

bool ZNFaultViewerEngine::project3DFaultPatchForPicking(ZNFaultPatchManager* manager, int faultIndex,
                                                        const QPointF& mouse)
{
    if (!projectFault(manager, faultIndex, true)) return false;
    if (getMouseModeName() == eraseModeName() && m_fault) {
        for (const core::PointWithBool& p : m_fault->getPickedPoints()) {
            if (p.isSeparator()) continue;
            QPointF at;
            if (worldToViewport(p.position(), at)) pan(mouse - at);
            break;
        }
    }
    return true;
}

bool ZNFaultViewerEngine::project3DFaultPatchForPicking()
{
    ZNFaultPatchManager* manager = getFaultPatchManager();
    if (!m_projected || !manager || !m_fault) return false;
    const int mapped = m_mappedFaultId;
    const bool forPicking = m_forPicking;
    // The projection may fail while the fault has too few points to be meshed: the last
    // image stays, the points follow.
    const bool made = projectFault(manager, mapped, forPicking);
    if (!made) updatePickedPoint(m_fault.data());
    send(action("UPDATE_VIEWER_OBJECT"));
    return made;
}

void ZNFaultViewerEngine::clearFaultViewer()
{
    m_fault = nullptr;
    m_projected = false;
    m_mappedFaultId = kNoFault;
    m_projectedId = core::kNoValue;
    m_viewerMode.clear();
    setCurrentMappedFault(nullptr);
    setImageSize(0, 0);
    m_displayed.reset();
    m_tiles = FacetteTiles();
    setBloc(nullptr);
    removeEdgePolyline();
    clearPickingPoint();
    send(action("UPDATE_CAPTION"));
    send(action("FRAME_CHANGED"));
    send(action("UPDATE_VIEWER_OBJECT"));
    send(action("UPDATE_PALETTE_MANAGER"));
}

// ----- coordinates -----

core::vec3 ZNFaultViewerEngine::from3dWorldToImage(const core::vec3& world) const
{
    if (blocSpace().isEmpty()) return {core::kNoValueReal, core::kNoValueReal, core::kNoValueReal};
    return worldToImageMatrix().transformPoint(world);
}

core::vec3 ZNFaultViewerEngine::getWorldMouseAxe() const
{
    if (!m_projected || blocSpace().isEmpty()) return {};
    const core::mat4& m = blocSpace().getFromBlocToWorldMatrix();
    return core::vec3(m(0, 2), m(1, 2), m(2, 2)).normalized();
}

void ZNFaultViewerEngine::indexFacettes()
{
    m_tiles = FacetteTiles();
    const ZN3DFaultPatch* fault = m_fault.data();
    const QSize size = imageSize();
    if (!fault || size.isEmpty()) return;
    const int tile = FacetteTiles::kTile;
    m_tiles.columns = (size.width() + tile - 1) / tile;
    m_tiles.rows = (size.height() + tile - 1) / tile;
    m_tiles.lists.assign(static_cast<std::size_t>(m_tiles.columns) * m_tiles.rows, {});
    const core::Array<core::vec3>& points = fault->getPoints();
    const core::mat4 toImage = worldToImageMatrix();
    const core::Array<ZNFacette>& facettes = fault->getFacettes();
    for (int f = 0; f < facettes.size(); ++f) {
        double c0 = std::numeric_limits<double>::max(), c1 = -c0, r0 = c0, r1 = -c0;
        bool valid = true;
        for (int v = 0; v < 3 && valid; ++v) {
            const quint32 index = facettes[f].index[v];
            valid = index < quint32(points.size());
            if (!valid) break;
            const core::vec3 p = toImage.transformPoint(points[int(index)]);
            c0 = std::min(c0, p.x), c1 = std::max(c1, p.x), r0 = std::min(r0, p.y), r1 = std::max(r1, p.y);
        }
        if (!valid) continue;
        // Pixels are tested at their centres: a facette covers the tiles of the pixels
        // whose centre may lie inside it.
        const int tc0 = std::clamp(static_cast<int>(std::floor(c0)) / tile, 0, m_tiles.columns - 1);
        const int tc1 = std::clamp(static_cast<int>(std::ceil(c1)) / tile, 0, m_tiles.columns - 1);
        const int tr0 = std::clamp(static_cast<int>(std::floor(r0)) / tile, 0, m_tiles.rows - 1);
        const int tr1 = std::clamp(static_cast<int>(std::ceil(r1)) / tile, 0, m_tiles.rows - 1);
        for (int tr = tr0; tr <= tr1; ++tr)
            for (int tc = tc0; tc <= tc1; ++tc)
                m_tiles.lists[static_cast<std::size_t>(tc + m_tiles.columns * tr)].push_back(f);
    }
    m_tiles.facettes = facettes.size();
}

bool ZNFaultViewerEngine::surfaceAlong(const core::vec3& origin, const core::vec3& axis, core::vec3& hit) const
{
    const ZN3DFaultPatch* fault = m_fault.data();
    if (!fault) return false;
    const core::Array<core::vec3>& points = fault->getPoints();
    const core::Array<ZNFacette>& facettes = fault->getFacettes();
    // The facettes under the pixel, or all of them when the mesh changed since it was
    // indexed.
    const std::vector<int>* candidates = nullptr;
    if (m_tiles.facettes == facettes.size() && m_tiles.columns > 0) {
        const core::vec3 image = worldToImageMatrix().transformPoint(origin);
        const int tc = static_cast<int>(std::floor(image.x + 0.5)) / FacetteTiles::kTile;
        const int tr = static_cast<int>(std::floor(image.y + 0.5)) / FacetteTiles::kTile;
        if (tc < 0 || tr < 0 || tc >= m_tiles.columns || tr >= m_tiles.rows) return false;
        candidates = &m_tiles.lists[static_cast<std::size_t>(tc + m_tiles.columns * tr)];
    }
    const int count = candidates ? static_cast<int>(candidates->size()) : facettes.size();
    double best = std::numeric_limits<double>::infinity();
    for (int k = 0; k < count; ++k) {
        const ZNFacette& f = facettes[candidates ? (*candidates)[static_cast<std::size_t>(k)] : k];
        if (f.index[0] >= quint32(points.size()) || f.index[1] >= quint32(points.size()) ||
            f.index[2] >= quint32(points.size()))
            continue;
        // Moller-Trumbore, the line taken both ways.
        const core::vec3& a = points[int(f.index[0])];
        const core::vec3 e1 = points[int(f.index[1])] - a, e2 = points[int(f.index[2])] - a;
        const core::vec3 p = axis.cross(e2);
        const double det = e1.dot(p);
        if (std::fabs(det) < kParallel) continue;
        const core::vec3 s = origin - a;
        const double u = s.dot(p) / det;
        if (u < 0.0 || u > 1.0) continue;
        const core::vec3 q = s.cross(e1);
        const double v = axis.dot(q) / det;
        if (v < 0.0 || u + v > 1.0) continue;
        const double t = e2.dot(q) / det;
        if (std::fabs(t) < std::fabs(best)) best = t;
    }
    if (!std::isfinite(best)) return false;
    hit = origin + axis * best;
    return true;
}

void ZNFaultViewerEngine::computeRelief()
{
    const core::vec3 normal = getWorldMouseAxe();
    for (int r = 0; r < m_relief.height(); ++r)
        for (int c = 0; c < m_relief.width(); ++c) {
            if (m_index(c, r) == core::kNoValue) continue;
            const core::vec3 onPlane = blocToWorld({double(c), double(r), 0.0});
            core::vec3 hit;
            if (surfaceAlong(onPlane, normal, hit)) m_relief(c, r) = static_cast<float>((hit - onPlane).dot(normal));
        }
}

core::vec3 ZNFaultViewerEngine::fromViewportTo3dWorld(const QPointF& viewport) const
{
    const core::vec3 onPlane = ZNBlocViewerEngine::viewportToWorld(viewport);
    if (!m_projected) return onPlane;
    const QPointF image = viewportToImage(viewport);
    const int c = static_cast<int>(std::lround(image.x())), r = static_cast<int>(std::lround(image.y()));
    if (m_index.value(c, r, core::kNoValue) == core::kNoValue) return onPlane;
    core::vec3 hit;
    return surfaceAlong(onPlane, getWorldMouseAxe(), hit) ? hit : onPlane;
}

bool ZNFaultViewerEngine::isWorldPointOnCurrentFrame(const core::vec3& world) const
{
    if (blocSpace().isEmpty()) return false;
    const core::vec3 image = from3dWorldToImage(world);
    const long c = std::lround(image.x), r = std::lround(image.y);
    return c >= 0 && r >= 0 && c < imageSize().width() && r < imageSize().height();
}

QRectF ZNFaultViewerEngine::getWorkingAreaInsideViewport() const
{
    const img::Image& data = m_hasMapped ? m_mapped : m_projection;
    int left = data.width(), top = data.height(), right = -1, bottom = -1;
    for (int r = 0; r < data.height(); ++r)
        for (int c = 0; c < data.width(); ++c)
            if (data(c, r) != kNoPixel) {
                left = std::min(left, c);
                right = std::max(right, c);
                top = std::min(top, r);
                bottom = std::max(bottom, r);
            }
    if (right < 0 || blocSpace().isEmpty()) return QRectF();
    return QRectF(imageToViewport(QPointF(left - 0.5, top - 0.5)), imageToViewport(QPointF(right + 0.5, bottom + 0.5)));
}

void ZNFaultViewerEngine::drawWorkingArea(QPainter& painter) const
{
    const QRectF area = getWorkingAreaInsideViewport();
    if (area.isEmpty()) return;
    painter.setPen(QPen(QColor(90, 90, 90), 1, Qt::DotLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(area);
}

// ----- caption -----

QString ZNFaultViewerEngine::getCaption()
{
    const bool viewer = m_viewerCaption;
    m_viewerCaption = false;
    if (m_allanDiagram) return QStringLiteral("Allan Diagram");
    const QString start = viewer ? QStringLiteral("Fault Viewer: ") : QStringLiteral("Fault Editing: ");
    const ZNFaultPatchManager* manager = getFaultPatchManager();
    const ZN3DFaultPatchLight* light =
        m_mappedFaultId != kNoFault && manager ? manager->findFaultLight(m_mappedFaultId) : nullptr;
    if (!light) return start + QStringLiteral("Empty");
    const QString name = light->GetFaultName();
    return start + (name.isEmpty() ? QStringLiteral("Unnamed") : name);
}

QString ZNFaultViewerEngine::sectionTitle() const
{
    const ZNFaultPatchManager* manager = getFaultPatchManager();
    const ZN3DFaultPatchLight* light =
        m_projected && manager ? manager->findFaultLight(m_mappedFaultId) : nullptr;
    if (!light) return QStringLiteral("No fault");
    const QString name = light->GetFaultName().isEmpty() ? QStringLiteral("Unnamed") : light->GetFaultName();
    const QString shown = m_hasMapped ? m_mappedName : QStringLiteral("relief");
    return shown.isEmpty() ? name : name + QStringLiteral(" \u2014 ") + shown;
}

QString ZNFaultViewerEngine::acrossTitle() const
{
    const ZNBloc* bloc = getBloc();
    const bool feet = bloc && bloc->unitObject().getSpatialUnit() == georef::UnitObject::SpatialFoot;
    return QStringLiteral("Along strike (%1)").arg(feet ? QStringLiteral("ft") : QStringLiteral("m"));
}

std::vector<ZNSeismicViewerAbstractEngine::Tick> ZNFaultViewerEngine::acrossTicks(double minimumSpacing) const
{
    const core::mat4& m = blocSpace().getFromBlocToWorldMatrix();
    const double step = core::vec3(m(0, 0), m(1, 0), m(2, 0)).length();
    return continuousTicks(0.0, step, imageSize().width(), scaleAcross(), minimumSpacing);
}

QString ZNFaultViewerEngine::downTitle() const
{
    return QStringLiteral("%1 (%2)").arg(isTime() ? QStringLiteral("Time") : QStringLiteral("Depth"), verticalUnit());
}

std::vector<ZNSeismicViewerAbstractEngine::Tick> ZNFaultViewerEngine::downTicks(double minimumSpacing) const
{
    const QSize size = imageSize();
    const double top = blocToWorld({size.width() / 2.0, 0.0, 0.0}).y;
    const double next = blocToWorld({size.width() / 2.0, 1.0, 0.0}).y;
    return continuousTicks(top, next - top, size.height(), scaleDown(), minimumSpacing);
}

// ----- ZNPickingViewer -----

core::vec2 ZNFaultViewerEngine::projectToScreen(const core::vec3& point) const
{
    QPointF viewport;
    if (!worldToViewport(point, viewport)) return {kOffSection, kOffSection};
    return {viewport.x(), viewport.y()};
}

double ZNFaultViewerEngine::distanceToSection(const core::vec3&) const
{
    return 0.0;
}

bool ZNFaultViewerEngine::getShownRandomLine(geom::RandomLine&) const
{
    return false;
}
