#include "sticksmesh.h"

namespace kfaults {

fault::exchange::TriangleMesh meshFromSticks(const QString& name,
                                             const std::vector<std::vector<core::vec3>>& sticks)
{
    fault::exchange::TriangleMesh mesh;
    mesh.name = name;
    int previousStart = -1;
    int previousCount = 0;
    for (const std::vector<core::vec3>& stick : sticks) {
        if (stick.size() < 2) continue;
        const int start = static_cast<int>(mesh.vertices.size());
        const int count = static_cast<int>(stick.size());
        mesh.vertices.insert(mesh.vertices.end(), stick.begin(), stick.end());
        if (previousStart >= 0) {
            int a = 0;  // index along the previous stick
            int b = 0;  // index along this one
            while (a < previousCount - 1 || b < count - 1) {
                const core::vec3& pa = mesh.vertices[previousStart + a];
                const core::vec3& pb = mesh.vertices[start + b];
                const bool canA = a < previousCount - 1;
                const bool canB = b < count - 1;
                const double viaA = canA ? (mesh.vertices[previousStart + a + 1] - pb).length() : 1e300;
                const double viaB = canB ? (mesh.vertices[start + b + 1] - pa).length() : 1e300;
                if (viaA <= viaB) {
                    mesh.triangles.push_back({previousStart + a, previousStart + a + 1, start + b});
                    ++a;
                } else {
                    mesh.triangles.push_back({previousStart + a, start + b + 1, start + b});
                    ++b;
                }
            }
        }
        previousStart = start;
        previousCount = count;
    }
    return mesh;
}

double meshArea(const fault::exchange::TriangleMesh& mesh)
{
    const int n = static_cast<int>(mesh.vertices.size());
    double area = 0.0;
    for (const auto& t : mesh.triangles) {
        if (t[0] < 0 || t[1] < 0 || t[2] < 0 || t[0] >= n || t[1] >= n || t[2] >= n) continue;
        const core::vec3 u = mesh.vertices[t[1]] - mesh.vertices[t[0]];
        const core::vec3 v = mesh.vertices[t[2]] - mesh.vertices[t[0]];
        area += 0.5 * u.cross(v).length();
    }
    return area;
}

} // namespace kfaults
