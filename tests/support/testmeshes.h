#pragma once
// Triangulated surfaces of known shape for the tests of the 3D view.
#include <memory>

#include <QColor>

#include <3dobject/zn3dobjectdraw.h>
#include <core/vec3.h>

// A planar parallelogram mesh: corner `origin`, sides `u` and `v` (world), cut into
// cellsU x cellsV cells of two triangles each; drawn in `colour` at `opacity`.
std::unique_ptr<ZN3DObjectDraw> planarMesh(const core::vec3& origin, const core::vec3& u, const core::vec3& v,
                                           int cellsU, int cellsV, const QColor& colour, float opacity = 1.0f);
