#pragma once
#include <QDomDocument>
#include <QDomElement>

#include "georef/crs.h"

namespace georef {

// The units of an object's coordinates: the spatial (horizontal) unit, the vertical unit,
// which also tells the vertical domain (time or depth), and two coordinate reference
// systems: the one the coordinates are in and the one they are displayed in.
//
// Vertical unit codes: 0 metre, 1 foot (depth); 2 millisecond, 3 second (time).
// Domain index: 1 for time, 2 for depth, so that "2 - domain index" is the vertical
// domain code of the file formats (1 time, 0 depth). Default: metres, depth.
class UnitObject {
public:
    enum SpatialUnit { SpatialMetre = 0, SpatialFoot = 1 };
    enum VerticalUnit { VerticalMetre = 0, VerticalFoot = 1, VerticalMillisecond = 2, VerticalSecond = 3 };
    static constexpr int kTimeDomainIndex = 1;
    static constexpr int kDepthDomainIndex = 2;

    UnitObject() = default;
    UnitObject(int spatialUnit, int verticalUnit);

    int getSpatialUnit() const { return m_spatialUnit; }
    void setSpatialUnit(int unit) { m_spatialUnit = unit; }
    int getVerticalUnit() const { return m_verticalUnit; }
    void setVerticalUnit(int unit) { m_verticalUnit = unit; }

    bool isTime() const;
    int getDomainIndex() const { return isTime() ? kTimeDomainIndex : kDepthDomainIndex; }

    const Crs& getCrs() const { return m_crs; }
    void setCrs(const Crs& crs) { m_crs = crs; }
    const Crs& getDisplayCrs() const { return m_displayCrs; }
    void setDisplayCrs(const Crs& crs) { m_displayCrs = crs; }
    // Sets both systems at once.
    void setBothCrs(const Crs& crs);

    bool operator==(const UnitObject& other) const;
    bool operator!=(const UnitObject& other) const { return !(*this == other); }

    // The "unitsObject" element (or `tag`): children "spatialUnit", "verticalUnit",
    // "ZNCrs" and "displayCrs".
    // In a DOM document or a flat XML tree (ZNXmlTree).
    template <class Document>
    auto createElement(Document& doc, const QString& tag = QStringLiteral("unitsObject")) const
        -> decltype(doc.createElement(tag));
    // Reads an element written by createElement; missing children keep the defaults.
    template <class Element>
    static UnitObject fromElement(const Element& element);

private:
    int m_spatialUnit = SpatialMetre;
    int m_verticalUnit = VerticalMetre;
    Crs m_crs;
    Crs m_displayCrs;
};

} // namespace georef
