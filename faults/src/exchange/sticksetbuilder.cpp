#include "sticksetbuilder.h"

#include <utility>

namespace fault::exchange {

void StickSetBuilder::addPoint(const QString& faultName, long long stickKey, const StickPoint& point)
{
    auto found = m_faultIndex.constFind(faultName);
    int fault = 0;
    if (found == m_faultIndex.constEnd()) {
        fault = static_cast<int>(m_set.faults.size());
        m_set.faults.push_back(FaultSticks{faultName, {}});
        m_faultIndex.insert(faultName, fault);
    } else {
        fault = found.value();
    }
    std::vector<Stick>& sticks = m_set.faults[fault].sticks;
    const bool sameStick = m_stickOpen && fault == m_lastFault && stickKey == m_lastKey;
    if (!sameStick) sticks.emplace_back();
    sticks.back().push_back(point);
    m_lastFault = fault;
    m_lastKey = stickKey;
    m_stickOpen = true;
}

StickSet StickSetBuilder::take()
{
    StickSet result = std::move(m_set);
    *this = StickSetBuilder();
    return result;
}

} // namespace fault::exchange
