#pragma once
// XML helpers of the tests of headers and settings elements.
#include <QDomDocument>
#include <QDomElement>
#include <QStringList>

// Tag names of the child elements of `e`, in document order.
QStringList childTags(const QDomElement& e);
// Parses `xml` into `holder` (a failed parse fails the test) and returns its root element.
QDomElement parseXml(QDomDocument& holder, const QString& xml);
