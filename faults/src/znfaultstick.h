#pragma once
#include <QString>

#include <core/mat4.h>
#include <core/vec3.h>

// A self-contained fault stick: two end points, two opaque integers given by whoever built
// the stick (the stick builder's loop indices; 0 and 0 for synthetic faults) and the name
// of the fault it belongs to. A plain value, copied field by field.
class ZNFaultStick {
public:
    // Both ends at (-9999, -9999, -9999), both integers 0, no name.
    ZNFaultStick();
    // The two ends and the two integers; no name.
    ZNFaultStick(const core::vec3& start, const core::vec3& end, int firstIndex, int secondIndex);
    ZNFaultStick(const ZNFaultStick&) = default;
    ZNFaultStick& operator=(const ZNFaultStick&) = default;

    // Same six coordinates (exact comparison) and same two integers. The name is left
    // out on purpose: two sticks of the same geometry are equal whatever their names.
    bool operator==(const ZNFaultStick& other) const;
    bool operator!=(const ZNFaultStick& other) const { return !(*this == other); }

    QString GetFaultName() const { return m_faultName; }
    void SetFaultName(const QString& name) { m_faultName = name; }
    // True when the name is neither empty nor "Unnamed".
    bool IsNamed() const;

    // Maps both ends through `m` as a projective transform, each end divided by its own
    // w (see core::mat4). No test for w = 0.
    void applyMatrixTransformation(const core::mat4& m);

    const core::vec3& start() const { return m_start; }
    const core::vec3& end() const { return m_end; }
    void setStart(const core::vec3& p) { m_start = p; }
    void setEnd(const core::vec3& p) { m_end = p; }
    int firstIndex() const { return m_firstIndex; }
    int secondIndex() const { return m_secondIndex; }

private:
    core::vec3 m_start;
    core::vec3 m_end;
    int m_firstIndex = 0;
    int m_secondIndex = 0;
    QString m_faultName;
};
