#pragma once
#include <vector>

#include <QString>

#include "stickpoint.h"

namespace fault::exchange {

// One named fault of an exchange file: its sticks in file order. The name is kept as the
// file gives it, spaces included; readers give a fault without a name the caller's
// default name.
struct FaultSticks {
    QString name;
    std::vector<Stick> sticks;

    // Number of points over all sticks.
    int pointCount() const;
};

} // namespace fault::exchange
