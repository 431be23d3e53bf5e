#pragma once
// Shared helpers of the fault set tests: point lists written inline and read back.
#include <initializer_list>
#include <ostream>
#include <vector>

#include <core/pointwithbool.h>
#include <znfaultpatchmanager.h>
#include <znfaultsurface.h>

namespace fixtures {

using Points = std::vector<core::PointWithBool>;

// A hand-picked point; `automatic` flags it as added by the system.
inline core::PointWithBool P(double x, double y, double z = 0.0, bool automatic = false)
{
    return core::PointWithBool(x, y, z, automatic);
}
inline const core::PointWithBool S = core::PointWithBool::separator();

// Appends `points` to patch `patch`.
inline void append(ZNFaultPatchManager& set, int patch, const Points& points)
{
    for (const core::PointWithBool& p : points) set.addPickedPoint(patch, p);
}

// Makes `father` the father of each of `children` and rebuilds the fault lists.
inline void linkPatches(ZNFaultPatchManager& set, int father, std::initializer_list<int> children)
{
    for (int child : children) set.setFather(child, father);
    set.initElementListBis();
}

// Patch `patch`'s list as it stands.
inline Points pointsOf(const ZNFaultPatchManager& set, int patch)
{
    Points out;
    const core::MultiArray<core::PointWithBool>& all = set.getPickedPoints();
    for (int k = 0; k < all.getCount(patch); ++k) out.push_back(all(patch, k));
    return out;
}

// The parts of a fault set that the history restores: fathers, points, descriptors.
struct State {
    std::vector<int> fathers;
    std::vector<Points> points;
    std::vector<int> faultIds;
    std::vector<QString> faultNames;

    static State of(const ZNFaultPatchManager& set)
    {
        State s;
        for (int i = 0; i < set.getNumberOfPatch(); ++i) {
            s.fathers.push_back(set.getFaultPatch(i)->getFather());
            s.points.push_back(pointsOf(set, i));
        }
        for (const ZN3DFaultPatchLight* light : set.getFaultLightList()) {
            s.faultIds.push_back(light->getFaultId());
            s.faultNames.push_back(light->GetFaultName());
        }
        return s;
    }
    bool operator==(const State& o) const
    {
        return fathers == o.fathers && points == o.points && faultIds == o.faultIds &&
               faultNames == o.faultNames;
    }
};

// A fault surface standing in for the 3D fault patch: a fixed mesh (possibly none) and
// the current-fault mark.
class MeshSurface : public ZNFaultSurface {
public:
    explicit MeshSurface(int faultId) : m_faultId(faultId) {}
    int getFaultSurfaceId() const override { return m_faultId; }
    void setCurrentFault(bool current) override { m_current = current; }
    bool isCurrentFault() const override { return m_current; }
    bool getSurfaceMesh(core::Array<core::vec3>& vertices,
                        core::Array<core::Triplet>& triangles) const override
    {
        if (this->triangles.empty()) {
            vertices.clear();
            triangles.clear();
            return false;
        }
        vertices = this->vertices;
        triangles = this->triangles;
        return true;
    }

    core::Array<core::vec3> vertices;
    core::Array<core::Triplet> triangles;

private:
    int m_faultId;
    bool m_current = false;
};

} // namespace fixtures

namespace core {
inline std::ostream& operator<<(std::ostream& os, const PointWithBool& p)
{
    if (p.isSeparator()) return os << (p.flag ? "S*" : "S");
    return os << "(" << p.x << "," << p.y << "," << p.z << (p.flag ? ",auto)" : ")");
}
} // namespace core
