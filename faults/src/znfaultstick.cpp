#include "znfaultstick.h"

#include <core/conventions.h>

ZNFaultStick::ZNFaultStick()
    : m_start(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal),
      m_end(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal)
{
}

ZNFaultStick::ZNFaultStick(const core::vec3& start, const core::vec3& end, int firstIndex,
                           int secondIndex)
    : m_start(start), m_end(end), m_firstIndex(firstIndex), m_secondIndex(secondIndex)
{
}

bool ZNFaultStick::operator==(const ZNFaultStick& other) const
{
    return m_start.x == other.m_start.x && m_start.y == other.m_start.y &&
           m_start.z == other.m_start.z && m_end.x == other.m_end.x &&
           m_end.y == other.m_end.y && m_end.z == other.m_end.z &&
           m_secondIndex == other.m_secondIndex && m_firstIndex == other.m_firstIndex;
}

bool ZNFaultStick::IsNamed() const
{
    return !m_faultName.isEmpty() && m_faultName != QLatin1String("Unnamed");
}

void ZNFaultStick::applyMatrixTransformation(const core::mat4& m)
{
    m_start = m.transformPoint(m_start);
    m_end = m.transformPoint(m_end);
}
