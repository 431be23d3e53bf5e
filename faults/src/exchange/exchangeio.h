#pragma once
#include <functional>

#include <QString>
#include <QTextStream>

#include "exchangestatus.h"

// The frame every exchange reader and writer runs in: opening, the line loop, errors
// turned into an ExchangeStatus with the line number, and memory exhaustion caught so
// that nothing throws out of the library.
namespace fault::exchange {

// Calls `perLine(line, problem)` for every line of the file at `path`, in order, until
// it returns false (a failure at that line, with its problem) or the file ends.
ExchangeStatus readTextLines(const QString& path,
                             const std::function<bool(const QString& line, QString& problem)>& perLine);

// Writes the file at `path` through `body(stream, problem)` into a temporary file that
// replaces the target only when `body` returns true and every byte was written.
ExchangeStatus writeTextFile(const QString& path,
                             const std::function<bool(QTextStream& stream, QString& problem)>& body);

} // namespace fault::exchange
