#include "iesxsticks.h"

#include <cmath>

#include <QRegularExpression>

#include "stickfileio.h"
#include "textfields.h"
#include "worldaxes.h"

namespace fault::exchange {

namespace {

// Columns of the card image, 0-based start and width.
struct Column {
    int start;
    int width;
    QString of(const QString& line) const { return line.mid(start, width); }
};
constexpr Column kX{0, 16};
constexpr Column kY{16, 16};
constexpr Column kStick{32, 3};
constexpr Column kZ{38, 9};
constexpr Column kCrossline{67, 5};
constexpr Column kInlineMarker{86, 2};
constexpr Column kInline{88, 7};
constexpr int kShortLineLength = 47;   // a card image without the 3D tail
constexpr int kFullLineLength = 95;    // up to the end of the inline column
constexpr int kFieldFallbackCount = 5; // X, Y, stick index, type code, Z
constexpr int kFieldZ = 4;
constexpr int kNameWidth = 17;
constexpr int kCommentWidth = 45;
constexpr int kTypeCode = 14;          // the code the 3D card image carries
constexpr int kStickModulo = 1000;     // the stick column holds three digits
constexpr double kZLimit = 99999.995;  // beyond it %9.2f no longer fits nine columns
constexpr int kMaxCrossline = 99999;
constexpr int kMaxInline = 9999999;
constexpr double kUndefinedThreshold = 1.0e30;

const QRegularExpression& profileHeader()
{
    static const QRegularExpression re(QStringLiteral("^PROFILE (.*)TYPE\\s+\\d+\\s+\\d+(.*)$"));
    return re;
}

VerticalDomain domainFromHeaderTail(const QString& tail)
{
    const QStringList words = tail.split(QRegularExpression(QStringLiteral("\\s+")),
                                         Qt::SkipEmptyParts);
    int ifdf = -1;
    for (int i = 0; i < words.size(); ++i)
        if (words[i].endsWith(QLatin1String(".ifdf"), Qt::CaseInsensitive)) ifdf = i;
    if (ifdf < 0 || ifdf + 2 >= words.size()) return VerticalDomain::Unknown;
    const QString unit = words[ifdf + 2].toLower();
    if (unit == QLatin1String("ms") || unit == QLatin1String("s")) return VerticalDomain::Time;
    if (unit == QLatin1String("m") || unit == QLatin1String("ft")) return VerticalDomain::Depth;
    return VerticalDomain::Unknown;
}

class IesxLineParser {
public:
    IesxLineParser(StickSetBuilder& builder, const QString& defaultName)
        : m_builder(builder), m_defaultName(defaultName), m_faultName(defaultName) {}

    bool parse(const QString& line, QString& problem)
    {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#')) ||
            trimmed.startsWith(QLatin1String("SNAPPING"))) return true;
        if (trimmed.startsWith(QLatin1String("PROFILE"))) return beginProfile(trimmed);
        if (trimmed.startsWith(QLatin1String("EOD"))) {
            // Some writers put the next data line right after the block's "EOD".
            m_builder.breakStick();
            const QString rest = line.mid(line.indexOf(QLatin1String("EOD")) + 3);
            return rest.trimmed().isEmpty() || parseData(rest, problem);
        }
        return parseData(line, problem);
    }

private:
    bool beginProfile(const QString& line)
    {
        const QRegularExpressionMatch m = profileHeader().match(line);
        const QString name = m.hasMatch() ? m.captured(1).trimmed() : line.mid(8).trimmed();
        m_faultName = name.isEmpty() ? m_defaultName : name;
        if (m.hasMatch()) {
            const VerticalDomain domain = domainFromHeaderTail(m.captured(2));
            if (domain != VerticalDomain::Unknown) m_builder.setDomain(domain);
        }
        m_builder.breakStick();
        return true;
    }

    // X, Y, stick index and Z from the card-image columns; false when they do not parse.
    // A Z too wide for its nine columns (the undefined value written with %9.2f) runs on
    // to the next blank, and `overflow` then tells that the later columns are shifted.
    static bool fromColumns(const QString& line, double& x, double& y, int& stick, double& z,
                            bool& overflow)
    {
        if (line.size() < kShortLineLength) return false;
        int zEnd = kZ.start + kZ.width;
        while (zEnd < line.size() && !line[zEnd].isSpace()) ++zEnd;
        overflow = zEnd != kZ.start + kZ.width;
        return parseReal(kX.of(line), x) && parseReal(kY.of(line), y) &&
               parseInteger(kStick.of(line), stick) &&
               parseReal(line.mid(kZ.start, zEnd - kZ.start), z);
    }

    bool fromFields(const QString& line, double& x, double& y, int& stick, double& z,
                    QString& problem)
    {
        if (!splitFields(line, false, m_fields, problem)) return false;
        if (static_cast<int>(m_fields.size()) >= kFieldFallbackCount &&
            parseReal(m_fields[0].text, x) && parseReal(m_fields[1].text, y) &&
            parseInteger(m_fields[2].text, stick) && parseReal(m_fields[kFieldZ].text, z))
            return true;
        problem = QStringLiteral("not an IESX data line (X in columns 1-16, Y 17-32, stick "
                                 "index 33-35, Z 39-47): \"%1\"").arg(line.trimmed().left(60));
        return false;
    }

    bool parseData(const QString& line, QString& problem)
    {
        double x = 0.0, y = 0.0, z = 0.0;
        int stick = 0;
        bool overflow = false;
        const bool columns = fromColumns(line, x, y, stick, z, overflow);
        if (!columns && !fromFields(line, x, y, stick, z, problem)) return false;
        if (std::fabs(z) >= kUndefinedThreshold) return true;
        StickPoint point;
        point.world = worldFromFile(x, y, z);
        int inlineNumber = 0, crosslineNumber = 0;
        if (columns && !overflow && line.size() >= kFullLineLength &&
            kInlineMarker.of(line) == QLatin1String(" I") &&
            parseInteger(kInline.of(line), inlineNumber) &&
            parseInteger(kCrossline.of(line), crosslineNumber)) {
            point.inlineNumber = inlineNumber;
            point.crosslineNumber = crosslineNumber;
        }
        m_builder.addPoint(m_faultName, stick, point);
        return true;
    }

    StickSetBuilder& m_builder;
    QString m_defaultName;
    QString m_faultName;
    std::vector<TextField> m_fields;
};

QString zUnit(VerticalDomain domain)
{
    switch (domain) {
    case VerticalDomain::Time: return QStringLiteral("ms");
    case VerticalDomain::Depth: return QStringLiteral("m");
    case VerticalDomain::Unknown: break;
    }
    return {};
}

QString headerLine(const QString& name, VerticalDomain domain)
{
    const QString field = name.size() <= kNameWidth ? name.leftJustified(kNameWidth) : name + ' ';
    return QStringLiteral("PROFILE %1TYPE 1  4 %2fault_gf.ifdf     m  %3")
        .arg(field, QString(kCommentWidth, QLatin1Char(' ')), zUnit(domain))
        .trimmed();
}

bool lineNumbersFit(const StickPoint& point)
{
    return point.hasLineNumbers() && point.inlineNumber >= 0 &&
           point.inlineNumber <= kMaxInline && point.crosslineNumber >= 0 &&
           point.crosslineNumber <= kMaxCrossline;
}

QString dataLine(const StickPoint& point, int stickIndex)
{
    const FileCoordinates file = fileFromWorld(point.world);
    QString line = QString::asprintf("%16.8E%16.8E%3d%3d%9.2f", file.x, file.y,
                                     stickIndex % kStickModulo, kTypeCode, file.z);
    if (lineNumbersFit(point)) {
        const double crossline = point.crosslineNumber;
        line += QString::asprintf("%10.2f%10.2f%5d%14.7E I%7d", crossline, crossline,
                                  point.crosslineNumber, kIesxUndefined, point.inlineNumber);
    }
    return line;
}

} // namespace

ExchangeStatus readIesxSticks(const QString& path, StickSet& result, const QString& defaultName)
{
    return readStickFile<IesxLineParser>(path, result, defaultName);
}

ExchangeStatus writeIesxSticks(const QString& path, const StickSet& sticks)
{
    return writeStickFile(path, sticks, false, [&sticks](QTextStream& out, const FaultSticks& fault, QString& problem) {
        out << headerLine(fault.name, sticks.domain) << '\n' << "SNAPPING PARAMETERS 5     0 1\n";
        for (size_t s = 0; s < fault.sticks.size(); ++s) {
            for (const StickPoint& point : fault.sticks[s]) {
                const double z = fileFromWorld(point.world).z;
                if (!(std::fabs(z) < kZLimit)) {
                    problem = QStringLiteral("Z %1 of fault %2 does not fit the IESX Z column").arg(z).arg(fault.name);
                    return false;
                }
                out << dataLine(point, static_cast<int>(s) + 1) << '\n';
            }
        }
        out << "EOD\n";
        return true;
    });
}

} // namespace fault::exchange
