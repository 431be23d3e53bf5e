#include "opendtectsticks.h"

#include "stickfileio.h"
#include "textfields.h"
#include "worldaxes.h"

namespace fault::exchange {

namespace {

constexpr int kCoordinateCount = 3;
constexpr int kFileDecimals = 6;

class OpendTectLineParser {
public:
    OpendTectLineParser(StickSetBuilder& builder, const QString& defaultName)
        : m_builder(builder), m_defaultName(defaultName) {}

    bool parse(const QString& line, QString& problem)
    {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#'))) return true;
        if (!splitFields(line, true, m_fields, problem)) return false;
        const int count = static_cast<int>(m_fields.size());
        const int first = firstCoordinateField();
        const QString name = nameBefore(line, first);
        if (count - first < kCoordinateCount) {
            problem = QStringLiteral("expected X, Y and Z after the fault name, found %1 fields")
                          .arg(count - first);
            return false;
        }
        double xyz[kCoordinateCount] = {0.0, 0.0, 0.0};
        static const char* const axes[kCoordinateCount] = {"X", "Y", "Z"};
        for (int axis = 0; axis < kCoordinateCount; ++axis) {
            if (!parseReal(m_fields[first + axis].text, xyz[axis])) {
                problem = QStringLiteral("%1 is not a number: \"%2\"")
                              .arg(QLatin1String(axes[axis]), m_fields[first + axis].text);
                return false;
            }
        }
        int stick = 0;
        const int stickField = first + kCoordinateCount;
        if (stickField < count && !parseInteger(m_fields[stickField].text, stick)) {
            problem = QStringLiteral("the stick index is not an integer: \"%1\"")
                          .arg(m_fields[stickField].text);
            return false;
        }
        StickPoint point;
        point.world = worldFromFile(xyz[0], xyz[1], xyz[2]);
        m_builder.addPoint(name, stick, point);
        return true;
    }

private:
    // Index of the field where X stands: after a quoted name, or after every leading
    // field that is not a number.
    int firstCoordinateField() const
    {
        const int count = static_cast<int>(m_fields.size());
        if (count > 0 && m_fields[0].quoted) return 1;
        int first = 0;
        double ignored = 0.0;
        while (first < count && !parseReal(m_fields[first].text, ignored)) ++first;
        return first;
    }

    QString nameBefore(const QString& line, int first) const
    {
        if (first == 0) return m_defaultName;
        if (m_fields[0].quoted)
            return m_fields[0].text.isEmpty() ? m_defaultName : m_fields[0].text;
        const int end = m_fields[first - 1].end;
        return line.mid(m_fields[0].begin, end - m_fields[0].begin);
    }

    StickSetBuilder& m_builder;
    QString m_defaultName;
    std::vector<TextField> m_fields;
};

} // namespace

ExchangeStatus readOpendTectSticks(const QString& path, StickSet& result, const QString& defaultName)
{
    return readStickFile<OpendTectLineParser>(path, result, defaultName);
}

ExchangeStatus writeOpendTectSticks(const QString& path, const StickSet& sticks)
{
    return writeStickFile(path, sticks, true, [](QTextStream& out, const FaultSticks& fault, QString&) {
        const QString quotedName = QLatin1Char('"') + fault.name + QLatin1Char('"');
        for (size_t s = 0; s < fault.sticks.size(); ++s) {
            const Stick& stick = fault.sticks[s];
            for (size_t node = 0; node < stick.size(); ++node) {
                const FileCoordinates file = fileFromWorld(stick[node].world);
                out << quotedName << '\t' << QString::number(file.x, 'f', kFileDecimals) << '\t'
                    << QString::number(file.y, 'f', kFileDecimals) << '\t'
                    << QString::number(file.z, 'f', kFileDecimals) << '\t' << s << '\t' << node << '\n';
            }
        }
        return true;
    });
}

} // namespace fault::exchange
