#pragma once
#include "georef/crs.h"

namespace georef {

// An object whose coordinates are given in a coordinate reference system. The host's
// conversion tools ask it for its system and hand it a new one after a conversion; how
// the object stores the system is its own business.
class CrsObjectAbstract {
public:
    virtual ~CrsObjectAbstract() = default;

    // The system the object's coordinates are in; empty when it has none.
    virtual Crs getCrs() const = 0;
    // Declares the system of the coordinates (it converts nothing).
    virtual void setCrs(const Crs& crs) = 0;
};

} // namespace georef
