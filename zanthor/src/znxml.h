#pragma once
#include <QBrush>
#include <QDomDocument>
#include <QDomElement>
#include <QPen>
#include <QString>

#include <core/mat4.h>
#include <core/vec3.h>

#include "znxmltree.h"

// The key-value elements every header uses: an element whose tag is the key and whose
// attribute "value" holds the value as text (integers in decimal, reals with full
// round-trip precision, bools as "0" or "1").
//
// Writers append a new child to `parent` and return it. Readers look for the first child
// of `parent` with that tag; when it is missing, or its text does not parse, they return
// `fallback` (and set `*found` to false when given).
namespace ZNXml {

// Every key-value helper works on a DOM document (QDomDocument, QDomElement) and on a
// flat tree (ZNXmlTree, ZNXmlElement) alike: the header code of an object is written once
// and serves both.

template <class Document, class Element>
Element appendString(Document& doc, Element& parent, const QString& key, const QString& value);
template <class Document, class Element>
Element appendInt(Document& doc, Element& parent, const QString& key, long long value);
template <class Document, class Element>
Element appendDouble(Document& doc, Element& parent, const QString& key, double value);
template <class Document, class Element>
Element appendBool(Document& doc, Element& parent, const QString& key, bool value);

template <class Element>
QString readString(const Element& parent, const QString& key, const QString& fallback = {},
                   bool* found = nullptr);
template <class Element>
long long readInt(const Element& parent, const QString& key, long long fallback,
                  bool* found = nullptr);
template <class Element>
double readDouble(const Element& parent, const QString& key, double fallback,
                  bool* found = nullptr);
template <class Element>
bool readBool(const Element& parent, const QString& key, bool fallback, bool* found = nullptr);
// An integer in first..last; `fallback` (and `*found` false) when missing, not a number or
// outside the range.
template <class Element>
int readIntInRange(const Element& parent, const QString& key, int fallback, int first,
                   int last, bool* found = nullptr);

// The shortest text of a real that reads back to the same binary64 value.
QString formatDouble(double value);

// Compound elements. Each is one element `key` built from the simple elements above;
// readers take what is present and keep the fallback's value for whatever is missing or
// does not parse (a colour that is not a colour, a style outside the toolkit's plain
// styles), and set `*found` to whether the element itself exists.

// Element "pen" (or `key`) with children "color" (text "#aarrggbb", empty for an invalid
// colour), "style" (0 no line .. 5 dash-dot-dot, 6 custom dash), "width" (real),
// "capStyle" and "joinStyle" (the toolkit's values).
template <class Document, class Element>
Element appendPen(Document& doc, Element& parent, const QString& key, const QPen& pen);
template <class Element>
QPen readPen(const Element& parent, const QString& key, const QPen& fallback,
             bool* found = nullptr);

// Element "brush" (or `key`) with children "color" (as for the pen) and "style" (0 no
// brush .. 14 diagonal cross pattern; gradients and textures are not stored).
template <class Document, class Element>
Element appendBrush(Document& doc, Element& parent, const QString& key, const QBrush& brush);
template <class Element>
QBrush readBrush(const Element& parent, const QString& key, const QBrush& fallback,
                 bool* found = nullptr);

// A 4x4 matrix: one key-value element whose value is the 16 reals row by row,
// separated by spaces. A value without exactly 16 reals reads as `fallback`.
template <class Document, class Element>
Element appendMatrix(Document& doc, Element& parent, const QString& key,
                     const core::mat4& matrix);
template <class Element>
core::mat4 readMatrix(const Element& parent, const QString& key, const core::mat4& fallback,
                      bool* found = nullptr);

// The pixel size (x, y, z scale factors): one key-value element whose value is the
// three reals separated by spaces; anything else reads as `fallback`.
template <class Document, class Element>
Element appendPixelSize(Document& doc, Element& parent, const QString& key,
                        const core::vec3& size);
template <class Element>
core::vec3 readPixelSize(const Element& parent, const QString& key, const core::vec3& fallback,
                         bool* found = nullptr);

} // namespace ZNXml
