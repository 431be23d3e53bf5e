#pragma once
#include <vector>

#include <QString>

#include "faultsticks.h"
#include "verticaldomain.h"

namespace fault::exchange {

// The neutral in-memory form of every fault stick exchange file: a list of named faults,
// each an ordered list of sticks, each an ordered list of world points. Faults keep the
// order in which their names first appear in the file. Two faults may share a name only
// when built by hand; readers gather every point of one name into one fault.
struct StickSet {
    std::vector<FaultSticks> faults;
    VerticalDomain domain = VerticalDomain::Unknown;

    // Index of the first fault whose name equals `name` exactly; -9999 when none does.
    int indexOf(const QString& name) const;
    int stickCount() const;
    int pointCount() const;
};

} // namespace fault::exchange
