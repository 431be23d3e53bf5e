#include "gocadplinesticks.h"

#include <QHash>

#include "gocadobjectparser.h"
#include "stickfileio.h"

namespace fault::exchange {

namespace {

const QString kPLine = QStringLiteral("PLine");

bool isOneOf(const QString& name, std::initializer_list<const char*> choices)
{
    for (const char* choice : choices)
        if (name.compare(QLatin1String(choice), Qt::CaseInsensitive) == 0) return true;
    return false;
}

class PLineHandler : public GocadBodyHandler {
public:
    PLineHandler(StickSetBuilder& builder, const QString& defaultName)
        : m_builder(builder), m_defaultName(defaultName) {}

    bool bodyLine(const GocadHeader& header, const std::vector<TextField>& fields,
                  QString& problem) override
    {
        const QString& keyword = fields.front().text;
        if (keyword == QLatin1String("ILINE")) {
            ++m_part;
            m_builder.breakStick();
            return true;
        }
        if (keyword == QLatin1String("VRTX") || keyword == QLatin1String("PVRTX"))
            return vertex(header, fields, problem);
        if (keyword == QLatin1String("ATOM")) return atom(header, fields, problem);
        if (keyword == QLatin1String("SEG")) return segment(fields, problem);
        if (keyword == QLatin1String("PROPERTIES")) properties(fields);
        if (keyword == QLatin1String("NO_DATA_VALUES")) noDataValues(fields);
        return true;
    }

    bool endObject(const GocadHeader& header, QString&) override
    {
        if (header.domain != VerticalDomain::Unknown) m_builder.setDomain(header.domain);
        m_points.clear();
        m_part = 0;
        m_inlineProperty = -1;
        m_crosslineProperty = -1;
        m_noData.clear();
        return true;
    }

private:
    QString faultName(const GocadHeader& header) const
    {
        return header.name.isEmpty() ? m_defaultName : header.name;
    }

    bool add(const GocadHeader& header, int id, const StickPoint& point, QString& problem)
    {
        if (m_part == 0) {
            problem = QStringLiteral("vertex %1 stands before the first ILINE").arg(id);
            return false;
        }
        if (m_points.contains(id)) {
            problem = QStringLiteral("vertex id %1 is used twice").arg(id);
            return false;
        }
        m_points.insert(id, point);
        m_builder.addPoint(faultName(header), m_part, point);
        return true;
    }

    int lineNumber(int property) const
    {
        if (property < 0 || property >= static_cast<int>(m_values.size())) return core::kNoValue;
        const double value = m_values[property];
        const double noData = property < static_cast<int>(m_noData.size()) ? m_noData[property]
                                                                             : core::kNoValueReal;
        int number = core::kNoValue;
        if (value == noData || !integerFromReal(value, number)) return core::kNoValue;
        return number;
    }

    bool vertex(const GocadHeader& header, const std::vector<TextField>& fields, QString& problem)
    {
        int id = 0;
        StickPoint point;
        if (!parseGocadVertex(header, fields, id, point.world, m_values, problem)) return false;
        point.inlineNumber = lineNumber(m_inlineProperty);
        point.crosslineNumber = lineNumber(m_crosslineProperty);
        return add(header, id, point, problem);
    }

    bool atom(const GocadHeader& header, const std::vector<TextField>& fields, QString& problem)
    {
        int id = 0, reference = 0;
        if (fields.size() < 3 || !parseInteger(fields[1].text, id) ||
            !parseInteger(fields[2].text, reference)) {
            problem = QStringLiteral("ATOM needs a new id and the id of an earlier vertex");
            return false;
        }
        if (!m_points.contains(reference)) {
            problem = QStringLiteral("ATOM %1 refers to vertex %2, which does not exist")
                          .arg(id).arg(reference);
            return false;
        }
        return add(header, id, m_points.value(reference), problem);
    }

    bool segment(const std::vector<TextField>& fields, QString& problem) const
    {
        int a = 0, b = 0;
        if (fields.size() < 3 || !parseInteger(fields[1].text, a) || !parseInteger(fields[2].text, b)) {
            problem = QStringLiteral("SEG needs two vertex ids");
            return false;
        }
        for (int id : {a, b}) {
            if (!m_points.contains(id)) {
                problem = QStringLiteral("SEG refers to vertex %1, which does not exist").arg(id);
                return false;
            }
        }
        return true;
    }

    void properties(const std::vector<TextField>& fields)
    {
        for (size_t i = 1; i < fields.size(); ++i) {
            const int property = static_cast<int>(i) - 1;
            if (isOneOf(fields[i].text, {"Inline", "ILINE", "IL", "INL"})) m_inlineProperty = property;
            if (isOneOf(fields[i].text, {"Crossline", "XLINE", "XL", "CRL"}))
                m_crosslineProperty = property;
        }
    }

    void noDataValues(const std::vector<TextField>& fields)
    {
        m_noData.clear();
        for (size_t i = 1; i < fields.size(); ++i) {
            double value = core::kNoValueReal;
            parseReal(fields[i].text, value);
            m_noData.push_back(value);
        }
    }

    StickSetBuilder& m_builder;
    QString m_defaultName;
    QHash<int, StickPoint> m_points; // vertices of the current object by id
    int m_part = 0;                  // ILINE parts seen in the current object
    int m_inlineProperty = -1;
    int m_crosslineProperty = -1;
    std::vector<double> m_noData;
    std::vector<double> m_values;
};

// The GOCAD framing around the PLine body handler, in the shape readStickFile expects.
class PLineLineParser {
public:
    PLineLineParser(StickSetBuilder& builder, const QString& defaultName)
        : m_handler(builder, defaultName), m_parser(kPLine, m_handler) {}
    bool parse(const QString& line, QString& problem) { return m_parser.parse(line, problem); }
    bool finish(QString& problem) const { return m_parser.finish(problem); }

private:
    PLineHandler m_handler;
    GocadObjectParser m_parser;
};

bool carriesLineNumbers(const FaultSticks& fault)
{
    for (const Stick& stick : fault.sticks)
        for (const StickPoint& point : stick)
            if (point.inlineNumber != core::kNoValue || point.crosslineNumber != core::kNoValue)
                return true;
    return false;
}

void writeFault(QTextStream& out, const FaultSticks& fault, VerticalDomain domain)
{
    out << gocadObjectHeader(kPLine, fault.name, domain);
    const bool withLines = carriesLineNumbers(fault);
    if (withLines) out << "PROPERTIES Inline Crossline\nNO_DATA_VALUES -9999 -9999\n";
    int id = 0;
    for (const Stick& stick : fault.sticks) {
        out << "ILINE\n";
        const int first = id + 1;
        for (const StickPoint& point : stick) {
            out << gocadVertexLine(withLines ? "PVRTX" : "VRTX", ++id, point.world);
            if (withLines) out << ' ' << point.inlineNumber << ' ' << point.crosslineNumber;
            out << '\n';
        }
        for (int segment = first; segment < id; ++segment)
            out << "SEG " << segment << ' ' << segment + 1 << '\n';
    }
    out << "END\n";
}

} // namespace

ExchangeStatus readGocadPLineSticks(const QString& path, StickSet& result, const QString& defaultName)
{
    return readStickFile<PLineLineParser>(path, result, defaultName);
}

ExchangeStatus writeGocadPLineSticks(const QString& path, const StickSet& sticks)
{
    return writeStickFile(path, sticks, true, [&sticks](QTextStream& out, const FaultSticks& fault, QString&) {
        writeFault(out, fault, sticks.domain);
        return true;
    });
}

} // namespace fault::exchange
