#pragma once
#include <vector>

#include <QString>

// Field splitting and number parsing shared by the exchange readers. Numbers are read in
// the C locale whatever the user's locale is, and only finite values are accepted.
namespace fault::exchange {

// One whitespace-separated field of a line: its text and where it stands in the line
// (begin inclusive, end exclusive, quotes included for a quoted field).
struct TextField {
    QString text;
    int begin = 0;
    int end = 0;
    bool quoted = false;
};

// Splits `line` at spaces and tabs. With `honourQuotes`, a field that starts with a
// double quote runs to the next double quote and its text is what lies between them.
// False, with `problem`, for a quote that is never closed; `fields` is then unspecified.
bool splitFields(const QString& line, bool honourQuotes, std::vector<TextField>& fields,
                 QString& problem);

// A finite real; false (value unchanged) for anything else, "nan" and "inf" included.
bool parseReal(const QString& text, double& value);
// `value` as a 32-bit integer when it is finite, whole and in range; false otherwise.
bool integerFromReal(double value, int& result);
// A 32-bit integer, also written as a real with no fraction ("1001.0"); false otherwise.
bool parseInteger(const QString& text, int& value);

// Why `name` cannot be written as a fault name (it holds a line break, or a double quote
// when `quotesForbidden`); empty when it can.
QString faultNameProblem(const QString& name, bool quotesForbidden);

// `text` without one pair of enclosing double quotes, when it has them.
QString unquoted(const QString& text);

} // namespace fault::exchange
