#include "charismasticks.h"

#include <QRegularExpression>

#include "stickfileio.h"
#include "textfields.h"
#include "worldaxes.h"

namespace fault::exchange {

namespace {

// Fields of a point line once its markers are gone: inline, crossline, X, Y, Z, then the
// name (zero or more fields) and the stick number.
constexpr int kInlineField = 0;
constexpr int kCrosslineField = 1;
constexpr int kXField = 2;
constexpr int kZField = 4;
constexpr int kFieldsWithoutName = 6;
constexpr int kFileDecimals = 5;

// The "INLINE" marker with its optional "-" or ":".
const QRegularExpression& inlineMarker()
{
    static const QRegularExpression re(QStringLiteral("^\\s*INLINE\\s*[-:]?"),
                                       QRegularExpression::CaseInsensitiveOption);
    return re;
}

// An "XLINE" marker right after the inline number.
const QRegularExpression& crosslineMarker()
{
    static const QRegularExpression re(QStringLiteral("^(\\s*\\S+\\s+)XLINE\\s*[-:]?"),
                                       QRegularExpression::CaseInsensitiveOption);
    return re;
}

bool readLineNumber(const TextField& field, const char* what, int& value, QString& problem)
{
    if (!parseInteger(field.text, value)) {
        problem = QStringLiteral("%1 is not an integer: \"%2\"").arg(QLatin1String(what), field.text);
        return false;
    }
    if (value == kCharismaUnknownLine) value = core::kNoValue;
    return true;
}

class CharismaLineParser {
public:
    CharismaLineParser(StickSetBuilder& builder, const QString& defaultName)
        : m_builder(builder), m_defaultName(defaultName) {}

    bool parse(const QString& line, QString& problem)
    {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#'))) return true;
        const QRegularExpressionMatch marker = inlineMarker().match(line);
        if (!marker.hasMatch()) {
            problem = QStringLiteral("expected a point line starting with INLINE, found \"%1\"")
                          .arg(trimmed.left(40));
            return false;
        }
        QString body = line.mid(marker.capturedEnd());
        body.replace(crosslineMarker(), QStringLiteral("\\1"));
        if (!splitFields(body, false, m_fields, problem)) return false;
        if (static_cast<int>(m_fields.size()) < kFieldsWithoutName) {
            problem = QStringLiteral("expected inline, crossline, X, Y, Z, fault name and stick "
                                     "number, found %1 fields").arg(m_fields.size());
            return false;
        }
        StickPoint point;
        if (!readLineNumber(m_fields[kInlineField], "inline", point.inlineNumber, problem) ||
            !readLineNumber(m_fields[kCrosslineField], "crossline", point.crosslineNumber, problem))
            return false;
        double xyz[3] = {0.0, 0.0, 0.0};
        static const char* const axes[3] = {"X", "Y", "Z"};
        for (int axis = 0; axis < 3; ++axis) {
            if (!parseReal(m_fields[kXField + axis].text, xyz[axis])) {
                problem = QStringLiteral("%1 is not a number: \"%2\"")
                              .arg(QLatin1String(axes[axis]), m_fields[kXField + axis].text);
                return false;
            }
        }
        point.world = worldFromFile(xyz[0], xyz[1], xyz[2]);
        const TextField& stickField = m_fields.back();
        int stick = 0;
        if (!parseInteger(stickField.text, stick)) {
            problem = QStringLiteral("the stick number is not an integer: \"%1\"").arg(stickField.text);
            return false;
        }
        const int nameBegin = m_fields[kZField].end;
        QString name = unquoted(body.mid(nameBegin, stickField.begin - nameBegin).trimmed());
        if (name.isEmpty()) name = m_defaultName;
        m_builder.addPoint(name, stick, point);
        return true;
    }

private:
    StickSetBuilder& m_builder;
    QString m_defaultName;
    std::vector<TextField> m_fields;
};

QString formatPoint(const StickPoint& point)
{
    const FileCoordinates file = fileFromWorld(point.world);
    const int inlineNumber =
        point.inlineNumber == core::kNoValue ? kCharismaUnknownLine : point.inlineNumber;
    const int crosslineNumber =
        point.crosslineNumber == core::kNoValue ? kCharismaUnknownLine : point.crosslineNumber;
    // Columns of 12, 11 and 16 characters, each opening with a space whatever the
    // value's length (a coordinate of 1e10 fills 16 characters): the reader splits on
    // spaces.
    return QStringLiteral("INLINE-%1 %2 %3 %4 %5")
        .arg(inlineNumber, 12)
        .arg(crosslineNumber, 10)
        .arg(file.x, 15, 'f', kFileDecimals)
        .arg(file.y, 15, 'f', kFileDecimals)
        .arg(file.z, 15, 'f', kFileDecimals);
}

} // namespace

ExchangeStatus readCharismaSticks(const QString& path, StickSet& result, const QString& defaultName)
{
    return readStickFile<CharismaLineParser>(path, result, defaultName);
}

ExchangeStatus writeCharismaSticks(const QString& path, const StickSet& sticks)
{
    return writeStickFile(path, sticks, false, [](QTextStream& out, const FaultSticks& fault, QString&) {
        for (size_t s = 0; s < fault.sticks.size(); ++s) {
            const int stickNumber = static_cast<int>(s) + 1;
            for (const StickPoint& point : fault.sticks[s])
                out << formatPoint(point) << ' ' << fault.name << ' ' << stickNumber << '\n';
        }
        return true;
    });
}

} // namespace fault::exchange
