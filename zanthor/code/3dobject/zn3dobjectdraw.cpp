#include "3dobject/zn3dobjectdraw.h"

#include <property/znpropertysheet.h>
#include <property/znstyleicons.h>
#include <znxml.h>

namespace {
const QString kNumberOfPoint = QStringLiteral("numberOfPoint");
const QString kNumberOfFacette = QStringLiteral("numberOffacette");
const QString kPen = QStringLiteral("pen");
const QString kBrush = QStringLiteral("brush");
const QString kPixelSize = QStringLiteral("pixelSize");
const QString kRecordSize = QStringLiteral("recordSize");
const QString kUnitsObject = QStringLiteral("unitsObject");

const QString kSettings = QStringLiteral("ZN3DObjectDraw");
const QString kWidthPen = QStringLiteral("objectWidthPen");
const QString kStylePen = QStringLiteral("objectStylePen");
const QString kStyleBrush = QStringLiteral("objectStyleBrush");
const QString kInternal = QStringLiteral("Object3DDrawInternal");
const QString kWidgetName = QStringLiteral("WidgetName");
const QString kFileName = QStringLiteral("FileName");
const QString kIsHidden = QStringLiteral("IsHidden");
const QString kEdgeStyle = QStringLiteral("Edge_style");
const QString kFillStyle = QStringLiteral("Fill_style");
const QString kTransparency = QStringLiteral("Transparency");
const QString kUniqueObjectId = QStringLiteral("UniqueObjectId");

const QString kEdgeGroup = QStringLiteral("Edge");
const QString kFillGroup = QStringLiteral("Fill");
const QString kStyleEdge = QStringLiteral("Style Edge");
const QString kWidthEdge = QStringLiteral("Width Edge");
const QString kStyleFill = QStringLiteral("Style Fill");

constexpr int kWidthStep = 1;
constexpr int kEstimateBytesPerFacette = 4;  // of the estimate, not of the records

// A count of the header: a non-negative 32-bit integer; 0 when absent.
bool readCount(const QDomElement& e, const QString& key, int& count)
{
    const long long v = ZNXml::readInt(e, key, 0);
    if (v < 0 || v > INT32_MAX) return false;
    count = static_cast<int>(v);
    return true;
}

// The names "0", "1", ... of the enumeration values 0..last.
QStringList numberNames(int last)
{
    QStringList names;
    for (int i = 0; i <= last; ++i) names << QString::number(i);
    return names;
}
} // namespace

ZN3DObjectDraw::ZN3DObjectDraw(QObject* parent)
    : QObject(parent), m_brush(Qt::lightGray, Qt::SolidPattern)
{
}

QString ZN3DObjectDraw::getZNObjectType() const { return QStringLiteral("ZN3DObjectDraw"); }

QDomElement ZN3DObjectDraw::createHeader(QDomDocument& doc) const
{
    QDomElement e = doc.createElement(QStringLiteral("ZN3DObjectDraw"));
    ZNXml::appendInt(doc, e, kNumberOfPoint, m_points.size());
    ZNXml::appendInt(doc, e, kNumberOfFacette, m_facettes.size());
    ZNXml::appendPen(doc, e, kPen, m_pen);
    ZNXml::appendBrush(doc, e, kBrush, m_brush);
    ZNXml::appendPixelSize(doc, e, kPixelSize, getPixelSize());
    ZNXml::appendInt(doc, e, kRecordSize, m_recordSize);
    e.appendChild(m_unitsObject.createElement(doc, kUnitsObject));
    return e;
}

bool ZN3DObjectDraw::parseHeader(const QDomElement& header, HeaderValues& values) const
{
    if (header.isNull()) return false;
    if (!readCount(header, kNumberOfPoint, values.points) ||
        !readCount(header, kNumberOfFacette, values.facettes))
        return false;
    values.pen = ZNXml::readPen(header, kPen, m_pen);
    values.brush = ZNXml::readBrush(header, kBrush, m_brush);
    values.pixelSize = ZNXml::readPixelSize(header, kPixelSize, core::vec3(1.0, 1.0, 1.0));
    const long long recordSize = ZNXml::readInt(header, kRecordSize, kDefaultRecordSize);
    values.recordSize = recordSize >= INT32_MIN && recordSize <= INT32_MAX
                            ? static_cast<int>(recordSize)
                            : 0;  // out of range: invalid, as any size but 4 or 8
    const QDomElement units = header.firstChildElement(kUnitsObject);
    values.hasUnits = !units.isNull();
    if (values.hasUnits) values.units = georef::UnitObject::fromElement(units);
    return true;
}

void ZN3DObjectDraw::applyHeader(const HeaderValues& values)
{
    m_pen = values.pen;
    m_brush = values.brush;
    setPixelSize(values.pixelSize);
    m_recordSize = values.recordSize;
    if (values.hasUnits) m_unitsObject = values.units;
}

bool ZN3DObjectDraw::getHeader(const QDomElement* header)
{
    HeaderValues values;
    if (!header || !parseHeader(*header, values)) return false;
    applyHeader(values);
    m_points.release();
    m_facettes.release();
    m_headerPoints = values.points;
    m_headerFacettes = values.facettes;
    return true;
}

void ZN3DObjectDraw::createHeaderSettings(QDomDocument& doc, QDomElement& parent) const
{
    QDomElement settings = doc.createElement(kSettings);
    ZNXml::appendInt(doc, settings, kWidthPen, m_pen.width());
    ZNXml::appendInt(doc, settings, kStylePen, m_pen.style());
    if (hasFill()) ZNXml::appendInt(doc, settings, kStyleBrush, m_brush.style());
    parent.appendChild(settings);

    QDomElement internal = doc.createElement(kInternal);
    ZNXml::appendString(doc, internal, kWidgetName, m_widgetName);
    ZNXml::appendString(doc, internal, kFileName, m_fileName);
    ZNXml::appendBool(doc, internal, kIsHidden, m_hidden);
    ZNXml::appendPen(doc, internal, kEdgeStyle, m_pen);
    ZNXml::appendBrush(doc, internal, kFillStyle, m_brush);
    ZNXml::appendDouble(doc, internal, kTransparency, m_transparency);
    ZNXml::appendInt(doc, internal, kUniqueObjectId, m_uniqueObjectId);
    parent.appendChild(internal);
}

void ZN3DObjectDraw::getHeaderSettings(const QDomElement& parent)
{
    const QDomElement settings = parent.firstChildElement(kSettings);
    if (!settings.isNull()) {
        const int width =
            ZNXml::readIntInRange(settings, kWidthPen, kDefaultSettingValue, 0, kMaximumEdgeWidth);
        const int penStyle = ZNXml::readIntInRange(settings, kStylePen, kDefaultSettingValue,
                                                   Qt::NoPen, ZNStyleIcons::kLastPenStyle);
        const int brushStyle = ZNXml::readIntInRange(settings, kStyleBrush, kDefaultSettingValue,
                                                     Qt::NoBrush, ZNStyleIcons::kLastBrushStyle);
        m_pen.setWidth(width);
        m_pen.setStyle(static_cast<Qt::PenStyle>(penStyle));
        if (hasFill()) m_brush.setStyle(static_cast<Qt::BrushStyle>(brushStyle));
    }

    const QDomElement internal = parent.firstChildElement(kInternal);
    if (internal.isNull()) return;
    m_pen = ZNXml::readPen(internal, kEdgeStyle, m_pen);
    m_brush = ZNXml::readBrush(internal, kFillStyle, m_brush);
    const double transparency = ZNXml::readDouble(internal, kTransparency, m_transparency);
    if (transparency >= 0.0 && transparency <= 1.0) m_transparency = static_cast<float>(transparency);
    m_hidden = ZNXml::readBool(internal, kIsHidden, m_hidden);
    m_uniqueObjectId =
        ZNXml::readIntInRange(internal, kUniqueObjectId, m_uniqueObjectId, INT32_MIN, INT32_MAX);
}

qint64 ZN3DObjectDraw::getEstimatedFileSize() const
{
    const int recordSize = m_recordSize;
    if (!CORE_CHECK(recordSize == 8 || recordSize == 4, "ZN3DObjectDraw::getEstimatedFileSize",
                    "zanthor/code/3dobject/zn3dobjectdraw"))
        return 0;
    const qint64 facetteBytes = qint64(kEstimateBytesPerFacette) * m_facettes.size();
    const qint64 pointBytes = qint64(recordSize) * m_points.size();
    return kEstimateFactor * (facetteBytes + pointBytes + kEstimateMargin);
}

void ZN3DObjectDraw::createProperty(ZNPropertySheet& sheet) const
{
    ZNProperty& edgeStyle =
        sheet.addProperty(kEdgeGroup, kStyleEdge, kStyleEdge, ZNProperty::Enum, int(m_pen.style()));
    edgeStyle.editor = QStringLiteral("StyleSettings");
    edgeStyle.setAttribute(ZNProperty::enumNames(), numberNames(ZNStyleIcons::kLastPenStyle));
    edgeStyle.setAttribute(ZNProperty::enumIcons(), ZNStyleIcons::penStyleIcons());

    ZNProperty& width = sheet.addProperty(kEdgeGroup, kWidthEdge, kWidthEdge, ZNProperty::Int, m_pen.width());
    width.editor = QStringLiteral("WidthSettings");
    width.setRange(kMinimumEdgeWidth, kMaximumEdgeWidth, kWidthStep);

    ZNProperty& fillStyle =
        sheet.addProperty(kFillGroup, kStyleFill, kStyleFill, ZNProperty::Enum, int(m_brush.style()));
    fillStyle.editor = QStringLiteral("StyleSettingsFill");
    fillStyle.setAttribute(ZNProperty::enumNames(), numberNames(ZNStyleIcons::kLastBrushStyle));
    fillStyle.setAttribute(ZNProperty::enumIcons(), ZNStyleIcons::brushStyleIcons());
}

bool ZN3DObjectDraw::updateProperty(const QString& id, const QVariant& value)
{
    int v = 0;
    if (id == kStyleEdge && ZNProperty::intValueIn(value, Qt::NoPen, ZNStyleIcons::kLastPenStyle, v) &&
        v != m_pen.style()) {
        m_pen.setStyle(static_cast<Qt::PenStyle>(v));
        return true;
    }
    if (id == kWidthEdge && ZNProperty::intValueIn(value, kMinimumEdgeWidth, kMaximumEdgeWidth, v) &&
        v != m_pen.width()) {
        m_pen.setWidth(v);
        return true;
    }
    if (id == kStyleFill && ZNProperty::intValueIn(value, Qt::NoBrush, ZNStyleIcons::kLastBrushStyle, v) &&
        v != m_brush.style()) {
        m_brush.setStyle(static_cast<Qt::BrushStyle>(v));
        return true;
    }
    return false;
}
