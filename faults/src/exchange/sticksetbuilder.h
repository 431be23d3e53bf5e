#pragma once
#include <QHash>
#include <QString>

#include "stickset.h"

namespace fault::exchange {

// Gathers the points of a stick file, line after line, into a StickSet. A point joins
// the fault of its name (created, at the end of the list, the first time the name is
// seen) and the stick its predecessor went into, unless the fault or the stick key
// changed or breakStick() was called since: then it starts a new stick of its fault.
// Sticks therefore keep file order, and a fault whose lines are interleaved with another
// one's still gathers all its sticks.
class StickSetBuilder {
public:
    void addPoint(const QString& faultName, long long stickKey, const StickPoint& point);
    // The next point starts a new stick whatever its key.
    void breakStick() { m_stickOpen = false; }
    void setDomain(VerticalDomain domain) { m_set.domain = domain; }
    // The set built so far; the builder is empty afterwards.
    StickSet take();

private:
    StickSet m_set;
    QHash<QString, int> m_faultIndex;
    int m_lastFault = -1;
    long long m_lastKey = 0;
    bool m_stickOpen = false;
};

} // namespace fault::exchange
