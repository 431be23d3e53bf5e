#include "stickset.h"

#include <core/conventions.h>

namespace fault::exchange {

int FaultSticks::pointCount() const
{
    int count = 0;
    for (const Stick& stick : sticks) count += static_cast<int>(stick.size());
    return count;
}

int StickSet::indexOf(const QString& name) const
{
    for (size_t i = 0; i < faults.size(); ++i)
        if (faults[i].name == name) return static_cast<int>(i);
    return core::kNoValue;
}

int StickSet::stickCount() const
{
    int count = 0;
    for (const FaultSticks& fault : faults) count += static_cast<int>(fault.sticks.size());
    return count;
}

int StickSet::pointCount() const
{
    int count = 0;
    for (const FaultSticks& fault : faults) count += fault.pointCount();
    return count;
}

} // namespace fault::exchange
