#include "znxml.h"

namespace {
const QString kValue = QStringLiteral("value");

// The first child element named `key`, and whether it carries a value.
bool findValue(const QDomElement& parent, const QString& key, QString& text)
{
    const QDomElement e = parent.firstChildElement(key);
    if (e.isNull() || !e.hasAttribute(kValue)) return false;
    text = e.attribute(kValue);
    return true;
}

template <class T, class Parse>
T readParsed(const QDomElement& parent, const QString& key, T fallback, bool* found, Parse parse)
{
    QString text;
    bool ok = findValue(parent, key, text);
    T value = fallback;
    if (ok) {
        value = parse(text, &ok);
        if (!ok) value = fallback;
    }
    if (found) *found = ok;
    return value;
}
} // namespace

namespace ZNXml {

QDomElement appendString(QDomDocument& doc, QDomElement& parent, const QString& key,
                         const QString& value)
{
    QDomElement e = doc.createElement(key);
    e.setAttribute(kValue, value);
    parent.appendChild(e);
    return e;
}

QDomElement appendInt(QDomDocument& doc, QDomElement& parent, const QString& key, long long value)
{
    return appendString(doc, parent, key, QString::number(value));
}

QDomElement appendDouble(QDomDocument& doc, QDomElement& parent, const QString& key, double value)
{
    return appendString(doc, parent, key, formatDouble(value));
}

QDomElement appendBool(QDomDocument& doc, QDomElement& parent, const QString& key, bool value)
{
    return appendString(doc, parent, key, value ? QStringLiteral("1") : QStringLiteral("0"));
}

QString readString(const QDomElement& parent, const QString& key, const QString& fallback,
                   bool* found)
{
    QString text;
    const bool ok = findValue(parent, key, text);
    if (found) *found = ok;
    return ok ? text : fallback;
}

long long readInt(const QDomElement& parent, const QString& key, long long fallback, bool* found)
{
    return readParsed<long long>(parent, key, fallback, found,
                                 [](const QString& t, bool* ok) { return t.toLongLong(ok); });
}

double readDouble(const QDomElement& parent, const QString& key, double fallback, bool* found)
{
    return readParsed<double>(parent, key, fallback, found,
                              [](const QString& t, bool* ok) { return t.toDouble(ok); });
}

bool readBool(const QDomElement& parent, const QString& key, bool fallback, bool* found)
{
    return readParsed<bool>(parent, key, fallback, found, [](const QString& t, bool* ok) {
        *ok = t == QLatin1String("0") || t == QLatin1String("1");
        return t == QLatin1String("1");
    });
}

QString formatDouble(double value) { return QString::number(value, 'g', 17); }

} // namespace ZNXml
