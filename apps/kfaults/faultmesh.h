#pragma once
#include <vector>

#include <QColor>

#include <exchange/trianglemesh.h>

// Inputs of the report pictures: plain triangulated fault surfaces with a colour.
namespace kfaults {

// One fault to draw: its surface (name, world vertices with y the time or depth, triangles; see
// exchange/worldaxes.h for the axes) and the colour that stands for it in every picture
// and legend.
struct FaultMesh {
    fault::exchange::TriangleMesh surface;
    QColor colour;
};

// The colour of the fault at `index` (from 0) in a qualitative palette chosen to keep
// neighbouring indices apart and to read on white; it cycles after its twelve colours,
// each cycle a little darker. A negative index gives grey.
QColor faultColour(int index);

// World bounding box of every vertex used by a valid triangle of `faults`.
struct MeshBounds {
    core::vec3 low;
    core::vec3 high;
    bool empty = true;

    void include(const core::vec3& p);
    core::vec3 centre() const { return (low + high) * 0.5; }
    core::vec3 size() const { return high - low; }
};
MeshBounds boundsOf(const std::vector<FaultMesh>& faults);

// True when every index of `triangle` lies in 0..vertexCount-1.
bool isValidTriangle(const std::array<int, 3>& triangle, int vertexCount);

} // namespace kfaults
