#pragma once
#include <memory>

#include <QDomDocument>
#include <QDomElement>
#include <QString>

class OGRSpatialReference;

namespace georef {

// A coordinate reference system, held as GDAL/OGR's spatial reference. A value type:
// copies share one immutable reference, so copying is cheap (the fault set keeps one per
// patch). An empty Crs describes no system at all.
//
// A Crs is valid when it is not empty and is projected: a geographic (latitude,
// longitude) system cannot carry survey coordinates in metres or feet.
class Crs {
public:
    Crs() = default;

    // The system of an EPSG code; empty when the code is unknown.
    static Crs fromEpsg(int code);
    // The system described by WKT (1 or 2); empty when the text does not parse.
    static Crs fromWkt(const QString& wkt);

    bool isEmpty() const { return !m_srs; }
    bool isProjected() const;
    bool isGeographic() const;
    bool isValid() const { return !isEmpty() && isProjected(); }

    // WKT 2 text; empty for an empty Crs.
    QString toWkt() const;
    // The authority code when the system is identified by EPSG, -9999 otherwise.
    int epsgCode() const;
    // The system's own name; empty for an empty Crs.
    QString name() const;

    // Same system (OGR's equivalence test); two empty Crs are equal.
    bool operator==(const Crs& other) const;
    bool operator!=(const Crs& other) const { return !(*this == other); }

    // The "ZNCrs" element (or `tag`): attribute "value" holds the WKT, empty for no system.
    // In a DOM document or a flat XML tree (ZNXmlTree).
    template <class Document>
    auto createElement(Document& doc, const QString& tag = QStringLiteral("ZNCrs")) const
        -> decltype(doc.createElement(tag));
    // Reads an element written by createElement; empty when missing or unreadable.
    template <class Element>
    static Crs fromElement(const Element& element);

    // The spatial reference for GDAL calls; null when empty. Owned by the Crs.
    const OGRSpatialReference* spatialReference() const { return m_srs.get(); }

private:
    explicit Crs(std::shared_ptr<const OGRSpatialReference> srs) : m_srs(std::move(srs)) {}

    std::shared_ptr<const OGRSpatialReference> m_srs;
};

} // namespace georef
