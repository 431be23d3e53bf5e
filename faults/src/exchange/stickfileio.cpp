#include "stickfileio.h"

namespace fault::exchange {

ExchangeStatus writeStickFile(
    const QString& path, const StickSet& sticks, bool quotesForbidden,
    const std::function<bool(QTextStream& out, const FaultSticks& fault, QString& problem)>& writeFault)
{
    return writeTextFile(path, [&](QTextStream& out, QString& problem) {
        for (const FaultSticks& fault : sticks.faults) {
            problem = faultNameProblem(fault.name, quotesForbidden);
            if (!problem.isEmpty() || !writeFault(out, fault, problem)) return false;
        }
        return true;
    });
}

} // namespace fault::exchange
