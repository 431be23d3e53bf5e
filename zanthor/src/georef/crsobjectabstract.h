#pragma once
#include "georef/unitobject.h"

namespace georef {

// An object whose coordinates carry units and a coordinate reference system.
class CrsObjectAbstract {
public:
    virtual ~CrsObjectAbstract() = default;

    virtual UnitObject GetUnitObject() const = 0;
    virtual void SetUnitObject(const UnitObject& unitObject) = 0;
};

} // namespace georef
