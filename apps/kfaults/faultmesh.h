#pragma once
#include <vector>

#include <QColor>

#include <exchange/trianglemesh.h>
#include <faultpalette.h>

// Inputs of the report pictures: plain triangulated fault surfaces with a colour.
namespace kfaults {

// One fault to draw: its surface (name, world vertices with y the time or depth, triangles; see
// exchange/worldaxes.h for the axes) and the colour that stands for it in every picture
// and legend.
struct FaultMesh {
    fault::exchange::TriangleMesh surface;
    QColor colour;
};

// The pictures colour faults as every view of the toolkit does.
using fault::faultColour;

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
