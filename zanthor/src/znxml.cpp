#include "znxml.h"

#include <algorithm>
#include <initializer_list>

#include <QLocale>
#include <QStringList>

namespace {
const QString kValue = QStringLiteral("value");
const QString kColor = QStringLiteral("color");
const QString kStyle = QStringLiteral("style");
const QString kWidth = QStringLiteral("width");
const QString kCapStyle = QStringLiteral("capStyle");
const QString kJoinStyle = QStringLiteral("joinStyle");

constexpr int kLastPenStyle = Qt::CustomDashLine;
constexpr int kLastBrushStyle = Qt::DiagCrossPattern;
constexpr int kMatrixSize = 16;
constexpr int kPixelSizeCount = 3;

QString colorText(const QColor& c) { return c.isValid() ? c.name(QColor::HexArgb) : QString(); }

// The colour child of `e`: empty text is the invalid colour; text that names no colour
// keeps `fallback`.
template <class Element>
QColor readColor(const Element& e, const QColor& fallback)
{
    bool found = false;
    const QString text = ZNXml::readString(e, kColor, {}, &found);
    if (!found) return fallback;
    if (text.isEmpty()) return QColor();
    return QColor::isValidColor(text) ? QColor(text) : fallback;
}

// An integer child of `e` that must be one of `allowed`; `fallback` otherwise.
template <class Element>
int readChoice(const Element& e, const QString& key, int fallback,
               std::initializer_list<int> allowed)
{
    const long long v = ZNXml::readInt(e, key, fallback);
    for (int a : allowed)
        if (v == a) return a;
    return fallback;
}

QString joinReals(const double* values, int n)
{
    QStringList parts;
    for (int i = 0; i < n; ++i) parts << ZNXml::formatDouble(values[i]);
    return parts.join(QLatin1Char(' '));
}

// Parses exactly `n` reals separated by white space into `out`; false (out untouched)
// for any other text.
bool splitReals(const QString& text, double* out, int n)
{
    const QStringList parts = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (parts.size() != n) return false;
    double values[kMatrixSize];
    for (int i = 0; i < n; ++i) {
        bool ok = false;
        values[i] = parts[i].toDouble(&ok);
        if (!ok) return false;
    }
    std::copy(values, values + n, out);
    return true;
}

// Reads `n` reals stored under `key` into `out`; false when missing or malformed.
template <class Element>
bool readReals(const Element& parent, const QString& key, double* out, int n, bool* found)
{
    bool present = false;
    const QString text = ZNXml::readString(parent, key, {}, &present);
    const bool ok = present && splitReals(text, out, n);
    if (found) *found = ok;
    return ok;
}

// Whether the first child element named `key` carries a value, and the value: a DOM
// element gives a copy, held in `storage`; a tree element gives a view of its own text.
bool findValue(const QDomElement& parent, const QString& key, QString& storage, QStringView& text)
{
    const QDomElement e = parent.firstChildElement(key);
    if (e.isNull() || !e.hasAttribute(kValue)) return false;
    storage = e.attribute(kValue);
    text = storage;
    return true;
}

bool findValue(const ZNXmlElement& parent, const QString& key, QString&, QStringView& text)
{
    return parent.firstChildElement(key).attributeText(kValue, text);
}

template <class T, class Element, class Parse>
T readParsed(const Element& parent, const QString& key, T fallback, bool* found, Parse parse)
{
    QString storage;
    QStringView text;
    bool ok = findValue(parent, key, storage, text);
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

template <class Document, class Element>
Element appendString(Document& doc, Element& parent, const QString& key,
                         const QString& value)
{
    Element e = doc.createElement(key);
    e.setAttribute(kValue, value);
    parent.appendChild(e);
    return e;
}

template <class Document, class Element>
Element appendInt(Document& doc, Element& parent, const QString& key, long long value)
{
    return appendString(doc, parent, key, QString::number(value));
}

template <class Document, class Element>
Element appendDouble(Document& doc, Element& parent, const QString& key, double value)
{
    return appendString(doc, parent, key, formatDouble(value));
}

template <class Document, class Element>
Element appendBool(Document& doc, Element& parent, const QString& key, bool value)
{
    return appendString(doc, parent, key, value ? QStringLiteral("1") : QStringLiteral("0"));
}

template <class Element>
QString readString(const Element& parent, const QString& key, const QString& fallback,
                   bool* found)
{
    QString storage;
    QStringView text;
    const bool ok = findValue(parent, key, storage, text);
    if (found) *found = ok;
    return ok ? text.toString() : fallback;
}

template <class Element>
long long readInt(const Element& parent, const QString& key, long long fallback, bool* found)
{
    return readParsed<long long, Element>(parent, key, fallback, found,
                                 [](QStringView t, bool* ok) { return t.toLongLong(ok); });
}

template <class Element>
double readDouble(const Element& parent, const QString& key, double fallback, bool* found)
{
    return readParsed<double, Element>(parent, key, fallback, found,
                              [](QStringView t, bool* ok) { return t.toDouble(ok); });
}

template <class Element>
bool readBool(const Element& parent, const QString& key, bool fallback, bool* found)
{
    return readParsed<bool, Element>(parent, key, fallback, found, [](QStringView t, bool* ok) {
        *ok = t == QLatin1String("0") || t == QLatin1String("1");
        return t == QLatin1String("1");
    });
}

QString formatDouble(double value)
{
    // The shortest text that reads back to the same value ("0.1", not 0.1000...01).
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

template <class Element>
int readIntInRange(const Element& parent, const QString& key, int fallback, int first, int last,
                   bool* found)
{
    bool ok = false;
    const long long v = readInt(parent, key, fallback, &ok);
    ok = ok && v >= first && v <= last;
    if (found) *found = ok;
    return ok ? static_cast<int>(v) : fallback;
}

template <class Document, class Element>
Element appendPen(Document& doc, Element& parent, const QString& key, const QPen& pen)
{
    Element e = doc.createElement(key);
    appendString(doc, e, kColor, colorText(pen.color()));
    appendInt(doc, e, kStyle, pen.style());
    appendDouble(doc, e, kWidth, pen.widthF());
    appendInt(doc, e, kCapStyle, pen.capStyle());
    appendInt(doc, e, kJoinStyle, pen.joinStyle());
    parent.appendChild(e);
    return e;
}

template <class Element>
QPen readPen(const Element& parent, const QString& key, const QPen& fallback, bool* found)
{
    const Element e = parent.firstChildElement(key);
    if (found) *found = !e.isNull();
    if (e.isNull()) return fallback;
    QPen pen = fallback;
    pen.setColor(readColor(e, fallback.color()));
    pen.setStyle(static_cast<Qt::PenStyle>(readIntInRange(e, kStyle, fallback.style(), Qt::NoPen,
                                                       kLastPenStyle)));
    const double width = readDouble(e, kWidth, fallback.widthF());
    pen.setWidthF(width >= 0.0 ? width : fallback.widthF());
    pen.setCapStyle(static_cast<Qt::PenCapStyle>(
        readChoice(e, kCapStyle, fallback.capStyle(), {Qt::FlatCap, Qt::SquareCap, Qt::RoundCap})));
    pen.setJoinStyle(static_cast<Qt::PenJoinStyle>(readChoice(
        e, kJoinStyle, fallback.joinStyle(),
        {Qt::MiterJoin, Qt::BevelJoin, Qt::RoundJoin, Qt::SvgMiterJoin})));
    return pen;
}

template <class Document, class Element>
Element appendBrush(Document& doc, Element& parent, const QString& key,
                        const QBrush& brush)
{
    Element e = doc.createElement(key);
    appendString(doc, e, kColor, colorText(brush.color()));
    appendInt(doc, e, kStyle, brush.style());
    parent.appendChild(e);
    return e;
}

template <class Element>
QBrush readBrush(const Element& parent, const QString& key, const QBrush& fallback, bool* found)
{
    const Element e = parent.firstChildElement(key);
    if (found) *found = !e.isNull();
    if (e.isNull()) return fallback;
    const int fallbackStyle = fallback.style() <= kLastBrushStyle ? fallback.style() : Qt::NoBrush;
    QBrush brush(readColor(e, fallback.color()),
                 static_cast<Qt::BrushStyle>(
                     readIntInRange(e, kStyle, fallbackStyle, Qt::NoBrush, kLastBrushStyle)));
    return brush;
}

template <class Document, class Element>
Element appendMatrix(Document& doc, Element& parent, const QString& key,
                         const core::mat4& matrix)
{
    return appendString(doc, parent, key, joinReals(matrix.m, kMatrixSize));
}

template <class Element>
core::mat4 readMatrix(const Element& parent, const QString& key, const core::mat4& fallback,
                      bool* found)
{
    core::mat4 m = fallback;
    readReals(parent, key, m.m, kMatrixSize, found);
    return m;
}

template <class Document, class Element>
Element appendPixelSize(Document& doc, Element& parent, const QString& key,
                            const core::vec3& size)
{
    const double values[kPixelSizeCount] = {size.x, size.y, size.z};
    return appendString(doc, parent, key, joinReals(values, kPixelSizeCount));
}

template <class Element>
core::vec3 readPixelSize(const Element& parent, const QString& key, const core::vec3& fallback,
                         bool* found)
{
    double values[kPixelSizeCount] = {fallback.x, fallback.y, fallback.z};
    readReals(parent, key, values, kPixelSizeCount, found);
    return {values[0], values[1], values[2]};
}

// The two kinds of documents the helpers serve.
#define ZNXML_INSTANTIATE(Document, Element)                                                      \
    template Element appendString(Document&, Element&, const QString&, const QString&);           \
    template Element appendInt(Document&, Element&, const QString&, long long);                   \
    template Element appendDouble(Document&, Element&, const QString&, double);                   \
    template Element appendBool(Document&, Element&, const QString&, bool);                       \
    template Element appendPen(Document&, Element&, const QString&, const QPen&);                 \
    template Element appendBrush(Document&, Element&, const QString&, const QBrush&);             \
    template Element appendMatrix(Document&, Element&, const QString&, const core::mat4&);        \
    template Element appendPixelSize(Document&, Element&, const QString&, const core::vec3&);     \
    template QString readString(const Element&, const QString&, const QString&, bool*);           \
    template long long readInt(const Element&, const QString&, long long, bool*);                 \
    template double readDouble(const Element&, const QString&, double, bool*);                    \
    template bool readBool(const Element&, const QString&, bool, bool*);                          \
    template int readIntInRange(const Element&, const QString&, int, int, int, bool*);           \
    template QPen readPen(const Element&, const QString&, const QPen&, bool*);                    \
    template QBrush readBrush(const Element&, const QString&, const QBrush&, bool*);              \
    template core::mat4 readMatrix(const Element&, const QString&, const core::mat4&, bool*);     \
    template core::vec3 readPixelSize(const Element&, const QString&, const core::vec3&, bool*);

ZNXML_INSTANTIATE(QDomDocument, QDomElement)
ZNXML_INSTANTIATE(ZNXmlTree, ZNXmlElement)
#undef ZNXML_INSTANTIATE

} // namespace ZNXml
