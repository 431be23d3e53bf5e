#include "textfields.h"

#include <cmath>
#include <limits>

namespace fault::exchange {

namespace {
bool isBlank(QChar c) { return c == QLatin1Char(' ') || c == QLatin1Char('\t'); }
} // namespace

bool splitFields(const QString& line, bool honourQuotes, std::vector<TextField>& fields,
                 QString& problem)
{
    fields.clear();
    const int length = line.size();
    int i = 0;
    while (i < length) {
        while (i < length && isBlank(line[i])) ++i;
        if (i >= length) break;
        TextField field;
        field.begin = i;
        if (honourQuotes && line[i] == QLatin1Char('"')) {
            const int close = line.indexOf(QLatin1Char('"'), i + 1);
            if (close < 0) {
                problem = QStringLiteral("a double quote opened in column %1 is never closed")
                              .arg(i + 1);
                return false;
            }
            field.text = line.mid(i + 1, close - i - 1);
            field.quoted = true;
            i = close + 1;
        } else {
            while (i < length && !isBlank(line[i])) ++i;
            field.text = line.mid(field.begin, i - field.begin);
        }
        field.end = i;
        fields.push_back(field);
    }
    return true;
}

bool parseReal(const QString& text, double& value)
{
    bool ok = false;
    const double parsed = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(parsed)) return false;
    value = parsed;
    return true;
}

bool integerFromReal(double value, int& result)
{
    const double lowest = std::numeric_limits<int>::min();
    const double highest = std::numeric_limits<int>::max();
    if (!std::isfinite(value) || value != std::floor(value) || value < lowest || value > highest)
        return false;
    result = static_cast<int>(value);
    return true;
}

bool parseInteger(const QString& text, int& value)
{
    bool ok = false;
    const QString trimmed = text.trimmed();
    const int parsed = trimmed.toInt(&ok);
    if (ok) {
        value = parsed;
        return true;
    }
    double real = 0.0;
    return parseReal(trimmed, real) && integerFromReal(real, value);
}

QString faultNameProblem(const QString& name, bool quotesForbidden)
{
    if (name.contains(QLatin1Char('\n')) || name.contains(QLatin1Char('\r')))
        return QStringLiteral("fault name \"%1\" holds a line break").arg(name.simplified());
    if (quotesForbidden && name.contains(QLatin1Char('"')))
        return QStringLiteral("fault name %1 holds a double quote, which this format cannot carry")
            .arg(name);
    return {};
}

QString unquoted(const QString& text)
{
    const QChar quote = QLatin1Char('"');
    if (text.size() >= 2 && text.startsWith(quote) && text.endsWith(quote))
        return text.mid(1, text.size() - 2);
    return text;
}

} // namespace fault::exchange
