#include "zn3dfaultpatchlight.h"

#include <cfloat>
#include <cmath>
#include <cstdlib>


#include <core/assertion.h>
#include <znfilename.h>
#include <znsettings.h>
#include <znxml.h>

namespace {
const QString kUnnamed = QStringLiteral("Unnamed");
const QString kPen = QStringLiteral("pen");
const QString kFaultId = QStringLiteral("faultId");
const QString kFaultName = QStringLiteral("faultName");
const QString kUtmPrecision = QStringLiteral("utmPrecision");
const QString kTimePrecision = QStringLiteral("timePrecision");
const QString kFilterSize = QStringLiteral("filterSize");
const QString kInterpolationSize = QStringLiteral("interpolationSize");
const QString kMeshingMethod = QStringLiteral("meshingMethod");
const QString kDrawPickedPoint = QStringLiteral("drawPickedPoint");
const QString kDrawPickingIntersection = QStringLiteral("drawPickingIntersection");
const QString kShowPreview = QStringLiteral("showPreview");
const QString kTransparency = QStringLiteral("transparency");
const QString kShowPickingIntersection = QStringLiteral("ShowPickingIntersection");

constexpr int kOpaqueAlpha = 255;
constexpr float kChannelScale = 256.0f;  // numerator of the channel formula

// An integer key that fits 32 bits, or `fallback`.
template <class Element>
int32_t readInt32(const Element& e, const QString& key, int32_t fallback)
{
    return ZNXml::readIntInRange(e, key, fallback, INT32_MIN, INT32_MAX);
}
} // namespace

ZN3DFaultPatchLight::ZN3DFaultPatchLight() { init(); }

ZN3DFaultPatchLight::ZN3DFaultPatchLight(const QPen& pen, int faultId, const QString& name,
                                         int utmPrecision, int timePrecision, int filterSize,
                                         bool, const geom::Rect2d&)
{
    init();
    m_pen = pen;
    m_faultId = faultId;
    m_faultName = name;
    m_utmPrecision = utmPrecision;
    m_timePrecision = timePrecision;
    m_filterSize = filterSize;
}

QString ZN3DFaultPatchLight::getZNObjectType() const { return QStringLiteral("ZN3DFaultPatchLight"); }

int ZN3DFaultPatchLight::randomChannel(int draw)
{
    return static_cast<int>(static_cast<float>(draw) * kChannelScale /
                            static_cast<float>(kRandomDrawMax));
}

void ZN3DFaultPatchLight::init()
{
    // The formula was written for a generator whose draws end at 32767; the draws are
    // reduced to that range so that colours spread the same way on every platform.
    const int red = randomChannel(std::rand() % (kRandomDrawMax + 1));
    const int green = randomChannel(std::rand() % (kRandomDrawMax + 1));
    const int blue = randomChannel(std::rand() % (kRandomDrawMax + 1));
    m_pen = QPen(QColor(red, green, blue, kOpaqueAlpha));
    m_faultId = -1;
    m_faultName = kUnnamed;
    m_utmPrecision = kDefaultUtmPrecision;
    m_timePrecision = kDefaultTimePrecision;
    m_filterSize = kDefaultFilterSize;
    m_spare = 0;
    m_interpolationSize = kDefaultInterpolationSize;
    m_meshingMethod = kDefaultMeshingMethod;
    m_drawPickedPoint = false;
    m_drawPickingIntersection = true;
    m_showPreview = true;
    m_transparency = kDefaultTransparency;
    m_link = 0;
    m_saved = false;
}

void ZN3DFaultPatchLight::copy(const ZN3DFaultPatchLight* other, bool withPatchList)
{
    if (!CORE_CHECK(other != nullptr, "ZN3DFaultPatchLight::copy", "faults/src/zn3dfaultpatchlight"))
        return;
    if (other == this) return;
    // Every field but the saved flag and, unless asked, the patch list.
    const bool saved = m_saved;
    core::Array<int> patchList;
    if (!withPatchList) patchList.swap(m_patchList);
    ZN3DFaultPatchLight::operator=(*other);
    if (!withPatchList) m_patchList.swap(patchList);
    m_saved = saved;
}

bool ZN3DFaultPatchLight::IsNamed() const
{
    return !m_faultName.isEmpty() && m_faultName != kUnnamed;
}

QDomElement ZN3DFaultPatchLight::createHeader(QDomDocument& doc) const { return writeHeader(doc); }

ZNXmlElement ZN3DFaultPatchLight::createHeader(ZNXmlTree& doc) const { return writeHeader(doc); }

template <class Document>
auto ZN3DFaultPatchLight::writeHeader(Document& doc) const -> decltype(doc.createElement(QString()))
{
    auto e = doc.createElement(getZNObjectType());
    ZNXml::appendPen(doc, e, kPen, m_pen);
    ZNXml::appendInt(doc, e, kFaultId, m_faultId);
    ZNXml::appendString(doc, e, kFaultName, ZNFileName::completeBaseName(m_faultName));
    ZNXml::appendInt(doc, e, kUtmPrecision, m_utmPrecision);
    ZNXml::appendInt(doc, e, kTimePrecision, m_timePrecision);
    ZNXml::appendInt(doc, e, kFilterSize, m_filterSize);
    ZNXml::appendInt(doc, e, kInterpolationSize, m_interpolationSize);
    ZNXml::appendInt(doc, e, kMeshingMethod, m_meshingMethod);
    ZNXml::appendBool(doc, e, kDrawPickedPoint, m_drawPickedPoint);
    ZNXml::appendBool(doc, e, kDrawPickingIntersection, m_drawPickingIntersection);
    ZNXml::appendBool(doc, e, kShowPreview, m_showPreview);
    ZNXml::appendDouble(doc, e, kTransparency, m_transparency);
    return e;
}

std::optional<bool> ZN3DFaultPatchLight::viewerPickingIntersection()
{
    QString text;
    if (!ZNSettings::xmlFileValue(ZNSettings::viewer3dParametersFileName(),
                                  kShowPickingIntersection, text))
        return std::nullopt;
    if (text == QLatin1String("1")) return true;
    if (text == QLatin1String("0")) return false;
    return std::nullopt;
}

void ZN3DFaultPatchLight::getHeader(const QDomElement* header)
{
    if (!header || header->isNull()) return;
    getHeader(header, viewerPickingIntersection());
}

void ZN3DFaultPatchLight::getHeader(const QDomElement* header,
                                    std::optional<bool> viewerPickingIntersection)
{
    if (header) readHeader(*header, viewerPickingIntersection);
}

void ZN3DFaultPatchLight::getHeader(const ZNXmlElement* header,
                                    std::optional<bool> viewerPickingIntersection)
{
    if (header) readHeader(*header, viewerPickingIntersection);
}

void ZN3DFaultPatchLight::getIdentity(const ZNXmlElement* header)
{
    if (header && !header->isNull()) readIdentity(*header);
}

template <class Element>
void ZN3DFaultPatchLight::readIdentity(const Element& e)
{
    m_faultId = readInt32(e, kFaultId, m_faultId);
    m_faultName = ZNXml::readString(e, kFaultName, m_faultName);
}

template <class Element>
void ZN3DFaultPatchLight::readHeader(const Element& e, std::optional<bool> viewerPickingIntersection)
{
    if (e.isNull()) return;
    m_pen = ZNXml::readPen(e, kPen, m_pen);
    readIdentity(e);
    m_utmPrecision = readInt32(e, kUtmPrecision, m_utmPrecision);
    m_timePrecision = readInt32(e, kTimePrecision, m_timePrecision);
    m_filterSize = readInt32(e, kFilterSize, m_filterSize);
    m_interpolationSize = readInt32(e, kInterpolationSize, m_interpolationSize);

    // Falls back to 0, not to the current value: a header without the key means method
    // 0. Kept for file compatibility.
    m_meshingMethod = readInt32(e, kMeshingMethod, 0);

    m_drawPickedPoint = ZNXml::readBool(e, kDrawPickedPoint, m_drawPickedPoint);

    // The written "drawPickingIntersection" is never read back: the user's viewer
    // defaults decide.
    if (viewerPickingIntersection) m_drawPickingIntersection = *viewerPickingIntersection;

    m_showPreview = ZNXml::readBool(e, kShowPreview, m_showPreview);
    const double transparency = ZNXml::readDouble(e, kTransparency, m_transparency);
    if (std::isfinite(transparency) && std::fabs(transparency) <= FLT_MAX)
        m_transparency = static_cast<float>(transparency);
}
