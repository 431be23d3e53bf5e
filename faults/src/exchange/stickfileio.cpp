#include "stickfileio.h"

#include <cmath>

namespace fault::exchange {

namespace {
// Why `fault` cannot be written: a point that is not a finite number, which no reader
// of these formats accepts; empty when every point is.
QString pointProblem(const FaultSticks& fault)
{
    for (size_t s = 0; s < fault.sticks.size(); ++s)
        for (size_t p = 0; p < fault.sticks[s].size(); ++p) {
            const core::vec3& w = fault.sticks[s][p].world;
            if (!std::isfinite(w.x) || !std::isfinite(w.y) || !std::isfinite(w.z))
                return QStringLiteral("point %1 of stick %2 of fault %3 is not a finite number")
                    .arg(p + 1).arg(s + 1).arg(fault.name);
        }
    return {};
}
} // namespace

ExchangeStatus writeStickFile(
    const QString& path, const StickSet& sticks, bool quotesForbidden,
    const std::function<bool(QTextStream& out, const FaultSticks& fault, QString& problem)>& writeFault)
{
    return writeTextFile(path, [&](QTextStream& out, QString& problem) {
        for (const FaultSticks& fault : sticks.faults) {
            problem = faultNameProblem(fault.name, quotesForbidden);
            if (problem.isEmpty()) problem = pointProblem(fault);
            if (!problem.isEmpty() || !writeFault(out, fault, problem)) return false;
        }
        return true;
    });
}

} // namespace fault::exchange
