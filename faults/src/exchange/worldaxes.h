#pragma once
#include <core/vec3.h>

// The one mapping between the coordinates that exchange files carry and world vectors.
//
// Every exchange file in this folder carries map X (easting), map Y (northing) and Z, the
// vertical coordinate in time or depth, positive downwards. World vectors have y vertical
// holding that same time or depth value (see core/conventions.h), so the mapping is
//
//     world.x = X        world.y = Z        world.z = Y
//
// A stick point at 2000 ms two-way time therefore has world y = 2000. Readers and
// writers go through these two functions and nothing else. A zero Z gives +0.0, never
// -0.0, so that files never show "-0.00".
namespace fault::exchange {

// A position as an exchange file carries it: map X, map Y, Z positive down.
struct FileCoordinates {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

constexpr core::vec3 worldFromFile(double mapX, double mapY, double z)
{
    return {mapX, z + 0.0, mapY};
}

constexpr FileCoordinates fileFromWorld(const core::vec3& world)
{
    return {world.x, world.z, world.y + 0.0};
}

} // namespace fault::exchange
