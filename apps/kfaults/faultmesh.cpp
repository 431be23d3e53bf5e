#include "faultmesh.h"

#include <algorithm>

namespace kfaults {

namespace {
// A qualitative palette (ColorBrewer "Paired"/"Set1" family, reordered so that
// neighbours differ in hue and lightness).
const QRgb kPalette[] = {0x1f78b4, 0xe31a1c, 0x33a02c, 0xff7f00, 0x6a3d9a, 0xb15928,
                         0xa6cee3, 0xfb9a99, 0xb2df8a, 0xfdbf6f, 0xcab2d6, 0x8dd3c7};
constexpr int kPaletteSize = sizeof(kPalette) / sizeof(kPalette[0]);
constexpr int kDarkerPerCycle = 115; // QColor::darker factor applied once per cycle
constexpr int kMaxDarkening = 3;
} // namespace

QColor faultColour(int index)
{
    if (index < 0) return QColor(Qt::gray);
    QColor colour(kPalette[index % kPaletteSize]);
    const int cycles = std::min(index / kPaletteSize, kMaxDarkening);
    for (int i = 0; i < cycles; ++i) colour = colour.darker(kDarkerPerCycle);
    return colour;
}

void MeshBounds::include(const core::vec3& p)
{
    if (empty) {
        low = high = p;
        empty = false;
        return;
    }
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
}

bool isValidTriangle(const std::array<int, 3>& triangle, int vertexCount)
{
    for (int index : triangle)
        if (index < 0 || index >= vertexCount) return false;
    return true;
}

MeshBounds boundsOf(const std::vector<FaultMesh>& faults)
{
    MeshBounds bounds;
    for (const FaultMesh& fault : faults) {
        const auto& vertices = fault.surface.vertices;
        const int count = static_cast<int>(vertices.size());
        for (const auto& triangle : fault.surface.triangles)
            if (isValidTriangle(triangle, count))
                for (int index : triangle) bounds.include(vertices[index]);
    }
    return bounds;
}

} // namespace kfaults
