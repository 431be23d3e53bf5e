#include "exchangeio.h"

#include <new>

#include "textfilewriter.h"
#include "textlinereader.h"

namespace fault::exchange {

namespace {
const QString kNoMemory = QStringLiteral("not enough memory");
} // namespace

ExchangeStatus readTextLines(const QString& path,
                             const std::function<bool(const QString& line, QString& problem)>& perLine)
{
    try {
        TextLineReader reader(path);
        if (!reader.open()) return ExchangeStatus::failure(path, 0, reader.problem());
        QString line;
        QString problem;
        while (reader.next(line))
            if (!perLine(line, problem))
                return ExchangeStatus::failure(path, reader.lineNumber(), problem);
        if (reader.failed())
            return ExchangeStatus::failure(path, reader.lineNumber(), reader.problem());
        return ExchangeStatus::success();
    } catch (const std::bad_alloc&) {
        return ExchangeStatus::failure(path, 0, kNoMemory);
    }
}

ExchangeStatus writeTextFile(const QString& path,
                             const std::function<bool(QTextStream& stream, QString& problem)>& body)
{
    try {
        TextFileWriter writer(path);
        if (!writer.open()) return ExchangeStatus::failure(path, 0, writer.problem());
        QString problem;
        if (!body(writer.stream(), problem)) return ExchangeStatus::failure(path, 0, problem);
        if (!writer.commit()) return ExchangeStatus::failure(path, 0, writer.problem());
        return ExchangeStatus::success();
    } catch (const std::bad_alloc&) {
        return ExchangeStatus::failure(path, 0, kNoMemory);
    }
}

} // namespace fault::exchange
