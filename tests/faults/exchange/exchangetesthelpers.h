#pragma once
// Shared fixtures of the exchange format tests: the committed data files, a stick set
// holding what every format must carry, and comparisons with a format's precision.
#include <QByteArray>
#include <QString>

#include <exchange/stickformat.h>
#include <exchange/stickset.h>
#include <exchange/trianglemesh.h>
#include <testfiles.h>

namespace exchangetest {

// Path of a committed file under tests/data/exchange.
QString dataPath(const char* name);

// Three faults: "Main Fault" (two sticks, some points without line numbers), "F2" (one
// stick), "North Branch 3" (three sticks of two points); Z between 1200 and 1800.
fault::exchange::StickSet sampleSet(bool withLineNumbers);

// A set that a failed read must leave alone.
fault::exchange::StickSet markerSet();

// Writes `bytes` to "bad.txt" in a fresh folder and reads it as `format` into a set
// holding one marker fault. The read must fail at `line` (0: at no line) with a message
// "bad.txt: line <line>: ..." that contains `expected`, sent on the event bus as a file
// error, and must leave the set as it was.
void expectRefused(fault::exchange::StickFormat format, const QByteArray& bytes, int line,
                   const QString& expected);

// Same fault names in order, same stick and point counts, positions within `tolerance`
// in world units, and, with `compareLineNumbers`, the same line numbers (else -9999).
void expectSameSticks(const fault::exchange::StickSet& expected,
                      const fault::exchange::StickSet& actual, double tolerance,
                      bool compareLineNumbers);

void expectSameMesh(const fault::exchange::TriangleMesh& expected,
                    const fault::exchange::TriangleMesh& actual, double tolerance);

} // namespace exchangetest
