#include "gocadobjectparser.h"

#include <limits>

#include <QStringList>

#include "worldaxes.h"

namespace fault::exchange {

namespace {

constexpr int kFileDecimals = 6;
constexpr int kVertexCoordinateField = 2; // "VRTX id x y z"
constexpr int kVertexFieldCount = 5;
constexpr int kZAxisUnitField = 3;        // AXIS_UNIT "X unit" "Y unit" "Z unit"

VerticalDomain domainFromUnit(const QString& unit)
{
    const QString u = unit.toLower();
    if (u == QLatin1String("ms") || u == QLatin1String("s")) return VerticalDomain::Time;
    if (u == QLatin1String("m") || u == QLatin1String("ft") || u == QLatin1String("km") ||
        u == QLatin1String("feet"))
        return VerticalDomain::Depth;
    return VerticalDomain::Unknown;
}

} // namespace

bool GocadObjectParser::parse(const QString& line, QString& problem)
{
    const QString trimmed = line.trimmed();
    if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#'))) return true;
    switch (m_state) {
    case State::Outside:
        return parseOutside(trimmed, problem);
    case State::Header:
        parseHeaderLine(trimmed);
        return true;
    case State::CoordinateSystem:
        parseCoordinateSystemLine(trimmed);
        return true;
    case State::Body:
        break;
    }
    if (!splitFields(trimmed, true, m_fields, problem)) return false;
    const QString& keyword = m_fields.front().text;
    if (keyword == QLatin1String("END")) {
        m_state = State::Outside;
        return m_handler.endObject(m_header, problem);
    }
    if (keyword.startsWith(QLatin1String("HEADER"))) {
        m_state = State::Header;
        const int brace = trimmed.indexOf(QLatin1Char('{'));
        if (brace >= 0) parseHeaderLine(trimmed.mid(brace + 1).trimmed());
        return true;
    }
    if (keyword == QLatin1String("GOCAD_ORIGINAL_COORDINATE_SYSTEM")) {
        m_state = State::CoordinateSystem;
        return true;
    }
    return m_handler.bodyLine(m_header, m_fields, problem);
}

bool GocadObjectParser::parseOutside(const QString& trimmed, QString& problem)
{
    const QStringList words = trimmed.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.size() < 2 || words[0] != QLatin1String("GOCAD")) {
        problem = QStringLiteral("expected \"GOCAD %1\", found \"%2\"")
                      .arg(m_expectedType, trimmed.left(40));
        return false;
    }
    if (words[1] != m_expectedType) {
        problem = QStringLiteral("a GOCAD %1 object where a %2 was expected")
                      .arg(words[1], m_expectedType);
        return false;
    }
    m_header = GocadHeader();
    m_header.type = words[1];
    m_state = State::Body;
    return true;
}

void GocadObjectParser::parseHeaderLine(const QString& trimmed)
{
    const int close = trimmed.indexOf(QLatin1Char('}'));
    const QString content = close >= 0 ? trimmed.left(close).trimmed() : trimmed;
    if (close >= 0) m_state = State::Body;
    const int colon = content.indexOf(QLatin1Char(':'));
    if (colon > 0 && content.left(colon).trimmed().compare(QLatin1String("name"),
                                                           Qt::CaseInsensitive) == 0)
        m_header.name = unquoted(content.mid(colon + 1).trimmed());
}

void GocadObjectParser::parseCoordinateSystemLine(const QString& trimmed)
{
    QString ignored;
    std::vector<TextField> fields;
    if (!splitFields(trimmed, true, fields, ignored) || fields.empty()) return;
    const QString& keyword = fields.front().text;
    if (keyword == QLatin1String("END_ORIGINAL_COORDINATE_SYSTEM"))
        m_state = State::Body;
    else if (keyword == QLatin1String("ZPOSITIVE") && fields.size() > 1)
        m_header.elevationPositive =
            fields[1].text.compare(QLatin1String("Elevation"), Qt::CaseInsensitive) == 0;
    else if (keyword == QLatin1String("AXIS_UNIT") && static_cast<int>(fields.size()) > kZAxisUnitField)
        m_header.domain = domainFromUnit(fields[kZAxisUnitField].text);
}

bool GocadObjectParser::finish(QString& problem) const
{
    if (m_state == State::Outside) return true;
    problem = QStringLiteral("the file ends inside GOCAD object \"%1\" (no END)").arg(m_header.name);
    return false;
}

bool parseGocadVertex(const GocadHeader& header, const std::vector<TextField>& fields, int& id,
                      core::vec3& world, std::vector<double>& properties, QString& problem)
{
    const QString& keyword = fields.front().text;
    if (static_cast<int>(fields.size()) < kVertexFieldCount) {
        problem = QStringLiteral("%1 needs an id and three coordinates").arg(keyword);
        return false;
    }
    if (!parseInteger(fields[1].text, id)) {
        problem = QStringLiteral("%1 id is not an integer: \"%2\"").arg(keyword, fields[1].text);
        return false;
    }
    double xyz[3] = {0.0, 0.0, 0.0};
    for (int axis = 0; axis < 3; ++axis) {
        const QString& text = fields[kVertexCoordinateField + axis].text;
        if (!parseReal(text, xyz[axis])) {
            problem = QStringLiteral("%1 %2 has a coordinate that is not a number: \"%3\"")
                          .arg(keyword).arg(id).arg(text);
            return false;
        }
    }
    const double zDown = header.elevationPositive ? -xyz[2] : xyz[2];
    world = worldFromFile(xyz[0], xyz[1], zDown);
    properties.clear();
    for (size_t i = kVertexFieldCount; i < fields.size(); ++i) {
        double value = std::numeric_limits<double>::quiet_NaN();
        parseReal(fields[i].text, value);
        properties.push_back(value);
    }
    return true;
}

QString gocadObjectHeader(const QString& type, const QString& name, VerticalDomain domain)
{
    const bool needsQuotes = name.contains(QLatin1Char(' ')) || name.contains(QLatin1Char('\t'));
    const QString written = needsQuotes ? QLatin1Char('"') + name + QLatin1Char('"') : name;
    const QString zUnit = domain == VerticalDomain::Time ? QStringLiteral("ms") : QStringLiteral("m");
    return QStringLiteral("GOCAD %1 1\n"
                          "HEADER {\n"
                          "name:%2\n"
                          "}\n"
                          "GOCAD_ORIGINAL_COORDINATE_SYSTEM\n"
                          "NAME Default\n"
                          "AXIS_NAME \"X\" \"Y\" \"Z\"\n"
                          "AXIS_UNIT \"m\" \"m\" \"%3\"\n"
                          "ZPOSITIVE Depth\n"
                          "END_ORIGINAL_COORDINATE_SYSTEM\n")
        .arg(type, written, zUnit);
}

QString gocadVertexLine(const char* keyword, int id, const core::vec3& world)
{
    const FileCoordinates file = fileFromWorld(world);
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(QLatin1String(keyword))
        .arg(id)
        .arg(file.x, 0, 'f', kFileDecimals)
        .arg(file.y, 0, 'f', kFileDecimals)
        .arg(file.z, 0, 'f', kFileDecimals);
}

} // namespace fault::exchange
