#pragma once
#include <QDomDocument>
#include <QDomElement>
#include <QString>

// The key-value elements every header uses: an element whose tag is the key and whose
// attribute "value" holds the value as text (integers in decimal, reals with full
// round-trip precision, bools as "0" or "1").
//
// Writers append a new child to `parent` and return it. Readers look for the first child
// of `parent` with that tag; when it is missing, or its text does not parse, they return
// `fallback` (and set `*found` to false when given).
namespace ZNXml {

QDomElement appendString(QDomDocument& doc, QDomElement& parent, const QString& key,
                         const QString& value);
QDomElement appendInt(QDomDocument& doc, QDomElement& parent, const QString& key, long long value);
QDomElement appendDouble(QDomDocument& doc, QDomElement& parent, const QString& key, double value);
QDomElement appendBool(QDomDocument& doc, QDomElement& parent, const QString& key, bool value);

QString readString(const QDomElement& parent, const QString& key, const QString& fallback = {},
                   bool* found = nullptr);
long long readInt(const QDomElement& parent, const QString& key, long long fallback,
                  bool* found = nullptr);
double readDouble(const QDomElement& parent, const QString& key, double fallback,
                  bool* found = nullptr);
bool readBool(const QDomElement& parent, const QString& key, bool fallback, bool* found = nullptr);

// Text of a real that reads back to the same binary64 value.
QString formatDouble(double value);

} // namespace ZNXml
