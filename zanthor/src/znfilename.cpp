#include "znfilename.h"

#include <QRegularExpression>

namespace {

const QString kForbiddenCharacters = QStringLiteral("<>:\"|?*");

// Why `name` cannot be carried by a text file at all; empty when it can. Control
// characters would also reach a terminal that shows the name.
QString unwritableCharacterIn(const QString& name)
{
    for (int k = 0; k < name.size(); ++k) {
        const QChar c = name[k];
        if (c.category() == QChar::Other_Control)
            return QStringLiteral("a file name cannot contain control characters");
        const bool paired = k + 1 < name.size() && c.isHighSurrogate() && name[k + 1].isLowSurrogate();
        if (paired) {
            ++k;
        } else if (c.isSurrogate() || c.unicode() == 0xfffe || c.unicode() == 0xffff) {
            return QStringLiteral("a file name cannot contain characters that are not text");
        }
    }
    return {};
}

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

QString completeBaseName(const QString& name)
{
    const QString part = fileNamePart(name);
    const int dot = part.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? part : part.left(dot);
}

bool isAcceptable(const QString& name) { return describeProblem(name).isEmpty(); }

QString describeProblem(const QString& name)
{
    QString problem = unwritableCharacterIn(name);
    if (!problem.isEmpty()) return QStringLiteral("\"%1\" (%2)").arg(name, problem);
    const QString part = fileNamePart(name);
    problem = problemOf(part);
    if (problem.isEmpty()) return {};
    return QStringLiteral("\"%1\" (%2)").arg(part, problem);
}

} // namespace ZNFileName
