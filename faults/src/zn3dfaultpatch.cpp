// The 3D fault patch: state, header settings, normal and angles, and its side of the
// fault set. Properties are in _properties.cpp, meshing in _mesh.cpp, planes and
// projections in _projection.cpp.
#include "zn3dfaultpatch.h"

#include <cmath>

#include <core/conventions.h>
#include <geom/planefit.h>
#include <znxml.h>

#include "surface/meshtools.h"
#include "surface/sticklayout.h"
#include "znfaultpatchmanager.h"

namespace {
const QString k3DSettings = QStringLiteral("ZN3DFaultPatch");
const QString k2DSettings = QStringLiteral("ZN2DFaultPatch");
const QString kDrawPickedPoint = QStringLiteral("DrawPickedPoint");
const QString kShowPreview = QStringLiteral("ShowPreview");
const QString kShowPickingIntersection = QStringLiteral("ShowPickingIntersection");
const QString kMeshingMethod = QStringLiteral("MeshingMethod");
const QString kSmoothFactor = QStringLiteral("SmootFactor");  // spelt so in the files
const QString kInterpSize = QStringLiteral("InterpSize");
const QString kExtrapolation = QStringLiteral("Extrapolation");
const QString kTransparency = QStringLiteral("Transparency");

constexpr double kRadToDeg = 180.0 / M_PI;
constexpr double kHalfTurn = 180.0;
constexpr double kFullTurn = 360.0;
constexpr double kQuarterTurn = 90.0;

const core::vec3 kNoNormal(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);

int readInt32(const QDomElement& e, const QString& key, int fallback)
{
    return ZNXml::readIntInRange(e, key, fallback, INT32_MIN, INT32_MAX);
}

// The normal of the plane fitted to `points`, turned so that its y is not positive.
core::vec3 fittedNormal(const std::vector<core::vec3>& points)
{
    const geom::PlaneFit fit = geom::fitPlane(points.data(), static_cast<int>(points.size()));
    if (!fit.plane.isValid()) return kNoNormal;
    const core::vec3 n = fit.plane.normal;
    return n.y != core::kNoValueReal && n.y > 0.0 ? -n : n;
}
} // namespace

ZN3DFaultPatch::ZN3DFaultPatch(const georef::BlocSpace& blocSpace, QObject* parent,
                               const georef::UnitObject& units)
    : ZN3DObjectDraw(parent), m_blocSpace(blocSpace)
{
    SetUnitObject(units);
    init();
}

ZN3DFaultPatch::ZN3DFaultPatch(QObject* parent, const georef::UnitObject& units)
    : ZN3DObjectDraw(parent)
{
    SetUnitObject(units);
    init();
}

ZN3DFaultPatch::ZN3DFaultPatch(bool baseStyle) : m_baseStyle(baseStyle) { init(); }

ZN3DFaultPatch::~ZN3DFaultPatch() { setFaultSet(nullptr); }

void ZN3DFaultPatch::init()
{
    setTransparency(kDefaultOpacity);
    ZN3DObjectDraw::setPen(ZN3DFaultPatchLight::getPen());
    m_is2D = false;
    m_meshing = true;
    setSaved(false);
    m_selectedAsCutted = false;
    m_selectedAsMain = false;
    m_computedArea = 0.0;
    m_referencePoint = core::vec3(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);
    setDrawPickedPoint(true);
}

QString ZN3DFaultPatch::getZNObjectType() const { return QStringLiteral("ZN3DFaultPatch"); }

QDomElement ZN3DFaultPatch::createHeader(QDomDocument& doc) const
{
    return ZN3DObjectDraw::createHeader(doc);
}

bool ZN3DFaultPatch::getHeader(const QDomElement* header)
{
    return ZN3DObjectDraw::getHeader(header);
}

void ZN3DFaultPatch::setDescriptor(const ZN3DFaultPatchLight& light)
{
    copy(&light, true);
    ZN3DObjectDraw::setPen(light.getPen());
    ZN3DObjectDraw::setTransparency(light.getTransparency());
}

void ZN3DFaultPatch::setPen(const QPen& pen)
{
    ZN3DObjectDraw::setPen(pen);
    ZN3DFaultPatchLight::setPen(pen);
}

void ZN3DFaultPatch::setTransparency(float opacity)
{
    ZN3DObjectDraw::setTransparency(opacity);
    ZN3DFaultPatchLight::setTransparency(opacity);
}

// ----- header settings -----

void ZN3DFaultPatch::createHeaderSettings(QDomDocument& doc, QDomElement& parent) const
{
    ZN3DObjectDraw::createHeaderSettings(doc, parent);
    QDomElement e = doc.createElement(m_is2D ? k2DSettings : k3DSettings);
    if (!m_is2D) {
        ZNXml::appendBool(doc, e, kDrawPickedPoint, getDrawPickedPoint());
        ZNXml::appendBool(doc, e, kShowPreview, getShowPreview());
    }
    ZNXml::appendBool(doc, e, kShowPickingIntersection, getDrawPickingIntersection());
    ZNXml::appendInt(doc, e, kMeshingMethod, getMeshingMethod());
    ZNXml::appendInt(doc, e, kSmoothFactor, getFilterSize());
    ZNXml::appendInt(doc, e, kInterpSize, getInterpolationSize());
    ZNXml::appendInt(doc, e, kExtrapolation, getSpare());
    ZNXml::appendDouble(doc, e, kTransparency, getStoredOpacity());
    parent.appendChild(e);
}

void ZN3DFaultPatch::getHeaderSettings(const QDomElement& parent)
{
    ZN3DObjectDraw::getHeaderSettings(parent);
    const QDomElement e = parent.firstChildElement(m_is2D ? k2DSettings : k3DSettings);
    if (e.isNull()) return;
    if (!m_is2D) {
        setDrawPickedPoint(ZNXml::readBool(e, kDrawPickedPoint, true));
        setShowPreview(ZNXml::readBool(e, kShowPreview, false));
    }
    setDrawPickingIntersection(ZNXml::readBool(e, kShowPickingIntersection, getDrawPickingIntersection()));
    setMeshingMethod(readInt32(e, kMeshingMethod, getMeshingMethod()));
    setFilterSize(readInt32(e, kSmoothFactor, getFilterSize()));
    setInterpolationSize(readInt32(e, kInterpSize, getInterpolationSize()));
    setSpare(readInt32(e, kExtrapolation, getSpare()));
    const double opacity = ZNXml::readDouble(e, kTransparency, getStoredOpacity());
    if (opacity >= 0.0 && opacity <= 1.0) setTransparency(static_cast<float>(opacity));
}

// ----- state -----

void ZN3DFaultPatch::updateComputedArea()
{
    m_computedArea = m_facettes.empty()
                         ? core::kNoValueReal
                         : fault::surface::meshArea(m_points, m_facettes) / kAreaScale;
}

ZNFaultPatchManager* ZN3DFaultPatch::getFaultSet() const { return m_faultSet.data(); }

void ZN3DFaultPatch::setFaultSet(ZNFaultPatchManager* faultSet)
{
    if (m_faultSet) m_faultSet->detachFaultSurface(this);
    m_faultSet = faultSet;
    if (faultSet) faultSet->attachFaultSurface(this);
}

bool ZN3DFaultPatch::testValidity() const
{
    const auto sticks = fault::surface::collectSticks(m_pickedPoints.data(), m_pickedPoints.size());
    return fault::surface::countLongSticks(sticks) >= 2;
}

bool ZN3DFaultPatch::getSurfaceMesh(core::Array<core::vec3>& vertices,
                                    core::Array<core::Triplet>& triangles) const
{
    vertices.clear();
    triangles.clear();
    if (m_facettes.empty()) return false;
    vertices = m_points;
    triangles.reserve(m_facettes.size());
    for (const ZNFacette& f : m_facettes)
        triangles.add(core::Triplet(static_cast<int32_t>(f.index[0]), static_cast<int32_t>(f.index[1]),
                                    static_cast<int32_t>(f.index[2])));
    return true;
}

// ----- normal and angles -----

core::vec3 ZN3DFaultPatch::getNormal() const { return getScaledNormal(1.0); }

core::vec3 ZN3DFaultPatch::getScaledNormal(double scale) const
{
    if (m_facettes.empty()) return kNoNormal;
    std::vector<core::vec3> points = fault::surface::allPoints(
        fault::surface::collectSticks(m_pickedPoints.data(), m_pickedPoints.size()));
    for (core::vec3& p : points) p.y *= scale;
    return fittedNormal(points);
}

double ZN3DFaultPatch::getAzimuthAngle(const core::vec3& v)
{
    if (v.x == core::kNoValueReal) return core::kNoValueReal;
    const double horizontal = std::sqrt(v.x * v.x + v.z * v.z);
    double a = 0.0;
    if (horizontal >= kFlatHorizontal) {
        a = std::acos(-v.z / horizontal) * kRadToDeg;
        if (v.x > 0.0) a = kFullTurn - a;
    }
    a += kHalfTurn;
    return a > kFullTurn ? a - kFullTurn : a;
}

double ZN3DFaultPatch::getDipAngle(const core::vec3& normal)
{
    const double length = normal.length();
    if (normal.x == core::kNoValueReal || !(length > 0.0)) return core::kNoValueReal;
    return kQuarterTurn + std::asin(normal.y / length) * kRadToDeg;
}

double ZN3DFaultPatch::getFaultPlaneAzimuthAngle(const core::vec3& normal)
{
    const double azimuth = getAzimuthAngle(normal);
    if (azimuth == core::kNoValueReal) return core::kNoValueReal;
    double s = azimuth + kQuarterTurn;
    if (s > kFullTurn) s -= kFullTurn;
    return s < kHalfTurn ? s + kHalfTurn : s - kHalfTurn;
}
