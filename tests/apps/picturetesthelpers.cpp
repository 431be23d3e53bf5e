#include "picturetesthelpers.h"

#include <cmath>

#include <exchange/worldaxes.h>

using fault::exchange::worldFromFile;

namespace picturetest {

namespace {
constexpr double kDegree = M_PI / 180.0;

// Map-frame unit vectors (east, north, down) along strike and down dip.
struct PlaneAxes {
    double strikeEast, strikeNorth;
    double dipEast, dipNorth, dipDown;
};

PlaneAxes axesOf(double strike, double dip)
{
    const double s = strike * kDegree, d = dip * kDegree;
    // Down dip points 90 degrees clockwise of the strike, tilted down by the dip.
    return {std::sin(s), std::cos(s), std::cos(s) * std::cos(d), -std::sin(s) * std::cos(d), std::sin(d)};
}

kfaults::FaultMesh gridFault(const QString& name, const QColor& colour, double x, double y, double z,
                             double strike, double dip, double length, double width, int cells,
                             double discRadius)
{
    const PlaneAxes a = axesOf(strike, dip);
    kfaults::FaultMesh mesh;
    mesh.surface.name = name;
    mesh.colour = colour;
    auto at = [&](double u, double v) {
        return worldFromFile(x + u * a.strikeEast + v * a.dipEast, y + u * a.strikeNorth + v * a.dipNorth,
                             z + v * a.dipDown);
    };
    const int n = cells + 1;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            mesh.surface.vertices.push_back(at(length * (double(i) / cells - 0.5), width * (double(j) / cells - 0.5)));
    for (int j = 0; j < cells; ++j) {
        for (int i = 0; i < cells; ++i) {
            const double u = length * ((i + 0.5) / cells - 0.5), v = width * ((j + 0.5) / cells - 0.5);
            if (discRadius > 0 && std::hypot(u, v) > discRadius) continue;
            const int k = j * n + i;
            mesh.surface.triangles.push_back({k, k + 1, k + n});
            mesh.surface.triangles.push_back({k + 1, k + n + 1, k + n});
        }
    }
    return mesh;
}
} // namespace

kfaults::FaultMesh planarFault(const QString& name, const QColor& colour, double x, double y, double z,
                               double strike, double dip, double length, double width, int cells)
{
    return gridFault(name, colour, x, y, z, strike, dip, length, width, cells, 0.0);
}

kfaults::FaultMesh discFault(const QString& name, const QColor& colour, double x, double y, double z,
                             double strike, double dip, double radius, int cells)
{
    return gridFault(name, colour, x, y, z, strike, dip, 2 * radius, 2 * radius, cells, radius);
}

} // namespace picturetest
