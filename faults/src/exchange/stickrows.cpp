#include "stickrows.h"

namespace fault::exchange {

namespace {
const core::vec3 kSeparator(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);
bool isSeparator(const core::vec3& p) { return p.x == core::kNoValueReal; }
} // namespace

bool toStickRows(const StickSet& sticks, core::MultiArray<core::vec3>& rows, QStringList& names)
{
    names.clear();
    const int faultCount = static_cast<int>(sticks.faults.size());
    bool ok = rows.init(faultCount);
    for (int f = 0; ok && f < faultCount; ++f) {
        const FaultSticks& fault = sticks.faults[f];
        names << fault.name;
        const int separators = fault.sticks.empty() ? 0 : static_cast<int>(fault.sticks.size()) - 1;
        ok = rows.setArraySize(f, fault.pointCount() + separators, false);
        for (size_t s = 0; ok && s < fault.sticks.size(); ++s) {
            if (s > 0) ok = rows.addElement(f, kSeparator, false);
            for (const StickPoint& point : fault.sticks[s])
                ok = ok && rows.addElement(f, point.world, false);
        }
    }
    if (!ok) {
        rows.init(0);
        names.clear();
    }
    return ok;
}

StickSet fromStickRows(const core::MultiArray<core::vec3>& rows, const QStringList& names)
{
    StickSet result;
    for (int f = 0; f < rows.getNumberOfArray(); ++f) {
        FaultSticks fault;
        fault.name = f < names.size() ? names[f] : QStringLiteral("Unnamed");
        const core::vec3* points = rows.getArray(f);
        const int count = rows.getCount(f);
        bool stickOpen = false;
        for (int i = 0; points && i < count; ++i) {
            if (isSeparator(points[i])) {
                stickOpen = false;
                continue;
            }
            if (!stickOpen) fault.sticks.emplace_back();
            stickOpen = true;
            StickPoint point;
            point.world = points[i];
            fault.sticks.back().push_back(point);
        }
        result.faults.push_back(std::move(fault));
    }
    return result;
}

} // namespace fault::exchange
