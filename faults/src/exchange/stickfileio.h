#pragma once
#include <functional>
#include <utility>

#include <QString>
#include <QTextStream>

#include "exchangeio.h"
#include "stickset.h"
#include "sticksetbuilder.h"
#include "textfields.h"

// The read and write loops the four stick formats share, around their own line parser
// and fault writer.
namespace fault::exchange {

namespace detail {
template <class Parser>
auto finishParser(Parser& parser, QString& problem, int) -> decltype(parser.finish(problem))
{
    return parser.finish(problem);
}
// Line formats without a multi-line structure have nothing left open at the end.
template <class Parser> bool finishParser(Parser&, QString&, long) { return true; }
} // namespace detail

// Reads `path` line by line through a `Parser(builder, defaultName)` whose
// `parse(line, problem)` feeds the builder, then calls its `finish(problem)` when it has
// one; `result` receives the set only when everything succeeded.
template <class Parser>
ExchangeStatus readStickFile(const QString& path, StickSet& result, const QString& defaultName)
{
    StickSetBuilder builder;
    Parser parser(builder, defaultName);
    ExchangeStatus status = readTextLines(
        path, [&parser](const QString& line, QString& problem) { return parser.parse(line, problem); });
    QString problem;
    if (status && !detail::finishParser(parser, problem, 0))
        status = ExchangeStatus::failure(path, 0, problem);
    if (status) result = builder.take();
    return status;
}

// Writes `sticks` fault after fault through `writeFault(stream, fault, problem)`, after
// checking that each name can be written (no line break; no double quote either when
// `quotesForbidden`). Nothing replaces the target unless every fault was written.
ExchangeStatus writeStickFile(
    const QString& path, const StickSet& sticks, bool quotesForbidden,
    const std::function<bool(QTextStream& out, const FaultSticks& fault, QString& problem)>& writeFault);

} // namespace fault::exchange
