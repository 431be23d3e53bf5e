#pragma once
// Shared fixtures of the exchange format tests: the committed data files, a stick set
// holding what every format must carry, and comparisons with a format's precision.
#include <QByteArray>
#include <QString>

#include <exchange/stickset.h>
#include <exchange/trianglemesh.h>

namespace exchangetest {

// Path of a committed file under tests/data/exchange.
QString dataPath(const char* name);

// Three faults: "Main Fault" (two sticks, some points without line numbers), "F2" (one
// stick), "North Branch 3" (three sticks of two points); Z between 1200 and 1800.
fault::exchange::StickSet sampleSet(bool withLineNumbers);

// A set that a failed read must leave alone.
fault::exchange::StickSet markerSet();

bool writeBytes(const QString& path, const QByteArray& bytes);
QByteArray readBytes(const QString& path);

// Same fault names in order, same stick and point counts, positions within `tolerance`
// in world units, and, with `compareLineNumbers`, the same line numbers (else -9999).
void expectSameSticks(const fault::exchange::StickSet& expected,
                      const fault::exchange::StickSet& actual, double tolerance,
                      bool compareLineNumbers);

void expectSameMesh(const fault::exchange::TriangleMesh& expected,
                    const fault::exchange::TriangleMesh& actual, double tolerance);

} // namespace exchangetest
