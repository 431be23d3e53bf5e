#include "znfilename.h"

#include <QRegularExpression>

namespace {

const QString kForbiddenCharacters = QStringLiteral("<>:\"|?*");
constexpr ushort kFirstPrintable = 32;  // characters below it are control characters

bool isReservedDeviceName(const QString& part)
{
    static const QRegularExpression reserved(
        QStringLiteral("^(CON|PRN|AUX|NUL|COM[1-9]|LPT[1-9])(\\..*)?$"),
        QRegularExpression::CaseInsensitiveOption);
    return reserved.match(part).hasMatch();
}

// Why `part` cannot be a file name; empty when it can.
QString problemOf(const QString& part)
{
    if (part.isEmpty()) return QStringLiteral("a file name cannot be empty");
    if (part == QLatin1String(".") || part == QLatin1String(".."))
        return QStringLiteral("a file name cannot be a directory reference");
    for (const QChar c : part) {
        if (c.unicode() < kFirstPrintable)
            return QStringLiteral("a file name cannot contain control characters");
        if (kForbiddenCharacters.contains(c))
            return QStringLiteral("a file name cannot contain '%1'").arg(c);
    }
    if (part.endsWith(QLatin1Char(' ')) || part.endsWith(QLatin1Char('.')))
        return QStringLiteral("a file name cannot end with a space or a dot");
    if (isReservedDeviceName(part)) return QStringLiteral("the name is reserved for a device");
    return {};
}

} // namespace

namespace ZNFileName {

QString fileNamePart(const QString& name)
{
    const int slash = qMax(name.lastIndexOf(QLatin1Char('/')), name.lastIndexOf(QLatin1Char('\\')));
    return name.mid(slash + 1);
}

bool isAcceptable(const QString& name) { return problemOf(fileNamePart(name)).isEmpty(); }

QString describeProblem(const QString& name)
{
    const QString part = fileNamePart(name);
    const QString problem = problemOf(part);
    if (problem.isEmpty()) return {};
    return QStringLiteral("\"%1\" (%2)").arg(part, problem);
}

} // namespace ZNFileName
