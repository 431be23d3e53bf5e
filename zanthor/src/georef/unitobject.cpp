#include "georef/unitobject.h"

#include "znxml.h"

namespace georef {

namespace {
const QString kSpatialUnit = QStringLiteral("spatialUnit");
const QString kVerticalUnit = QStringLiteral("verticalUnit");
const QString kCrs = QStringLiteral("ZNCrs");
const QString kDisplayCrs = QStringLiteral("displayCrs");
} // namespace

UnitObject::UnitObject(int spatialUnit, int verticalUnit)
    : m_spatialUnit(spatialUnit), m_verticalUnit(verticalUnit)
{
}

bool UnitObject::isTime() const
{
    return m_verticalUnit == VerticalMillisecond || m_verticalUnit == VerticalSecond;
}

void UnitObject::setBothCrs(const Crs& crs)
{
    m_crs = crs;
    m_displayCrs = crs;
}

bool UnitObject::operator==(const UnitObject& other) const
{
    return m_spatialUnit == other.m_spatialUnit && m_verticalUnit == other.m_verticalUnit &&
           m_crs == other.m_crs && m_displayCrs == other.m_displayCrs;
}

template <class Document>
auto UnitObject::createElement(Document& doc, const QString& tag) const
    -> decltype(doc.createElement(tag))
{
    auto e = doc.createElement(tag);
    ZNXml::appendInt(doc, e, kSpatialUnit, m_spatialUnit);
    ZNXml::appendInt(doc, e, kVerticalUnit, m_verticalUnit);
    e.appendChild(m_crs.createElement(doc, kCrs));
    e.appendChild(m_displayCrs.createElement(doc, kDisplayCrs));
    return e;
}

template <class Element>
UnitObject UnitObject::fromElement(const Element& element)
{
    UnitObject u;
    if (element.isNull()) return u;
    u.m_spatialUnit = static_cast<int>(ZNXml::readInt(element, kSpatialUnit, SpatialMetre));
    u.m_verticalUnit = static_cast<int>(ZNXml::readInt(element, kVerticalUnit, VerticalMetre));
    u.m_crs = Crs::fromElement(element.firstChildElement(kCrs));
    u.m_displayCrs = Crs::fromElement(element.firstChildElement(kDisplayCrs));
    return u;
}

template QDomElement UnitObject::createElement(QDomDocument&, const QString&) const;
template ZNXmlElement UnitObject::createElement(ZNXmlTree&, const QString&) const;
template UnitObject UnitObject::fromElement(const QDomElement&);
template UnitObject UnitObject::fromElement(const ZNXmlElement&);

} // namespace georef
