#include "georef/crs.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <ogr_spatialref.h>

#include "znxmltree.h"

namespace georef {

namespace {

std::shared_ptr<OGRSpatialReference> newReference()
{
    auto srs = std::make_shared<OGRSpatialReference>();
    srs->SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    return srs;
}

// Silences GDAL's own error printing for the duration of one call: failures are
// reported by returning an empty Crs, not on the console.
struct QuietGdalErrors {
    QuietGdalErrors() { CPLPushErrorHandler(CPLQuietErrorHandler); }
    ~QuietGdalErrors() { CPLPopErrorHandler(); }
};

} // namespace

Crs Crs::fromEpsg(int code)
{
    QuietGdalErrors quiet;
    auto srs = newReference();
    if (code <= 0 || srs->importFromEPSG(code) != OGRERR_NONE) return Crs();
    return Crs(std::move(srs));
}

Crs Crs::fromWkt(const QString& wkt)
{
    if (wkt.trimmed().isEmpty()) return Crs();
    QuietGdalErrors quiet;
    auto srs = newReference();
    const QByteArray text = wkt.toUtf8();
    if (srs->importFromWkt(text.constData()) != OGRERR_NONE || srs->IsEmpty()) return Crs();
    return Crs(std::move(srs));
}

bool Crs::isProjected() const { return m_srs && m_srs->IsProjected(); }

bool Crs::isGeographic() const { return m_srs && m_srs->IsGeographic(); }

QString Crs::toWkt() const
{
    if (!m_srs) return QString();
    char* text = nullptr;
    const char* const options[] = {"FORMAT=WKT2_2018", nullptr};
    QString result;
    if (m_srs->exportToWkt(&text, options) == OGRERR_NONE && text) result = QString::fromUtf8(text);
    CPLFree(text);
    return result;
}

int Crs::epsgCode() const
{
    if (!m_srs) return -9999;
    const char* authority = m_srs->GetAuthorityName(nullptr);
    const char* code = m_srs->GetAuthorityCode(nullptr);
    if (!authority || !code || QString::fromLatin1(authority).compare("EPSG", Qt::CaseInsensitive))
        return -9999;
    bool ok = false;
    const int value = QString::fromLatin1(code).toInt(&ok);
    return ok ? value : -9999;
}

QString Crs::name() const
{
    return m_srs && m_srs->GetName() ? QString::fromUtf8(m_srs->GetName()) : QString();
}

bool Crs::operator==(const Crs& other) const
{
    if (!m_srs || !other.m_srs) return !m_srs && !other.m_srs;
    return m_srs == other.m_srs || m_srs->IsSame(other.m_srs.get());
}

template <class Document>
auto Crs::createElement(Document& doc, const QString& tag) const -> decltype(doc.createElement(tag))
{
    auto e = doc.createElement(tag);
    e.setAttribute(QStringLiteral("value"), toWkt());
    return e;
}

template <class Element>
Crs Crs::fromElement(const Element& element)
{
    if (element.isNull()) return Crs();
    return fromWkt(element.attribute(QStringLiteral("value")));
}

template QDomElement Crs::createElement(QDomDocument&, const QString&) const;
template ZNXmlElement Crs::createElement(ZNXmlTree&, const QString&) const;
template Crs Crs::fromElement(const QDomElement&);
template Crs Crs::fromElement(const ZNXmlElement&);

} // namespace georef
