#pragma once
#include <core/mat4.h>
#include <core/vec3.h>

namespace volumeio {

// The block-to-world matrix of a grid whose axes are the world's: block (inline x,
// crossline y, sample z) maps to world x = origin.x + inline * step.x,
// world y = origin.y + sample * step.z (vertical, increasing downwards),
// world z = origin.z + crossline * step.y. `step` is given in grid order (inline,
// crossline, sample), `origin` in world order. A zero step makes the matrix singular.
inline core::mat4 axisAlignedBlocToWorld(const core::vec3& step,
                                         const core::vec3& origin = core::vec3())
{
    core::mat4 m = core::mat4::zero();
    m(0, 0) = step.x;   m(0, 3) = origin.x;
    m(1, 2) = step.z;   m(1, 3) = origin.y;
    m(2, 1) = step.y;   m(2, 3) = origin.z;
    m(3, 3) = 1.0;
    return m;
}

} // namespace volumeio
