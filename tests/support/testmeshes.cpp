#include "testmeshes.h"

std::unique_ptr<ZN3DObjectDraw> planarMesh(const core::vec3& origin, const core::vec3& u, const core::vec3& v,
                                           int cellsU, int cellsV, const QColor& colour, float opacity)
{
    auto mesh = std::make_unique<ZN3DObjectDraw>();
    core::Array<core::vec3>& points = mesh->getPoints();
    for (int j = 0; j <= cellsV; ++j)
        for (int i = 0; i <= cellsU; ++i)
            points.add(origin + u * (double(i) / cellsU) + v * (double(j) / cellsV));
    auto at = [cellsU](int i, int j) { return uint32_t(j * (cellsU + 1) + i); };
    for (int j = 0; j < cellsV; ++j)
        for (int i = 0; i < cellsU; ++i) {
            ZNFacette a, b;
            a.index[0] = at(i, j), a.index[1] = at(i + 1, j), a.index[2] = at(i + 1, j + 1);
            b.index[0] = at(i, j), b.index[1] = at(i + 1, j + 1), b.index[2] = at(i, j + 1);
            mesh->getFacettes().add(a);
            mesh->getFacettes().add(b);
        }
    mesh->setPen(QPen(colour));
    mesh->setTransparency(opacity);
    return mesh;
}
