#pragma once
// Generated fault sticks and geometric checks of fault surfaces.
#include <algorithm>
#include <cmath>

#include <core/array.h>
#include <core/pointwithbool.h>
#include <zn3dfaultpatch.h>

namespace surfacefixtures {

constexpr double kDegToRad = M_PI / 180.0;

// The unit normal, pointing up (y <= 0), of the plane of strike `strike` (clockwise from
// north +z towards east +x) dipping `dip` towards strike + 90, degrees.
inline core::vec3 normalOf(double strike, double dip)
{
    const double dd = (strike + 90.0) * kDegToRad, d = dip * kDegToRad;
    return {std::sin(d) * std::sin(dd), -std::cos(d), std::sin(d) * std::cos(dd)};
}
inline core::vec3 strikeOf(double strike)
{
    return {std::sin(strike * kDegToRad), 0.0, std::cos(strike * kDegToRad)};
}
inline core::vec3 downDipOf(double strike, double dip)
{
    const double dd = (strike + 90.0) * kDegToRad, d = dip * kDegToRad;
    return core::vec3(std::sin(dd), 0.0, std::cos(dd)) * std::cos(d) + core::vec3(0, 1, 0) * std::sin(d);
}

// Sticks running down the dip of a plane, at regular steps along its strike. `bend`
// bends the plane into a cylinder: the point at strike position a moves bend * a^2 / L
// along the normal (L the fault's length).
struct StickGrid {
    core::vec3 origin{1000.0, 1500.0, 2000.0};
    double strike = 30.0, dip = 60.0;
    int sticks = 5, points = 6;
    double spacing = 100.0, step = 50.0;
    double bend = 0.0;
    // Odd sticks start `stagger` steps lower and stop as much higher: staggered ends.
    int stagger = 0;

    core::vec3 at(double a, double b) const
    {
        const double length = spacing * std::max(1, sticks - 1);
        return origin + strikeOf(strike) * a + downDipOf(strike, dip) * b +
               normalOf(strike, dip) * (bend * a * a / length);
    }
    int shift(int k) const { return stagger * (k % 2); }
    core::Array<core::PointWithBool> picks() const
    {
        core::Array<core::PointWithBool> out;
        for (int k = 0; k < sticks; ++k) {
            if (k > 0) out.add(core::PointWithBool::separator());
            for (int j = shift(k); j < points - shift(k); ++j)
                out.add(core::PointWithBool(at(k * spacing, j * step)));
        }
        return out;
    }
};

// A patch holding `points`, meshed by `method`.
inline void mesh(ZN3DFaultPatch& patch, const core::Array<core::PointWithBool>& points, int method)
{
    patch.setPickedPoints(points);
    patch.setMeshingMethod(method);
    patch.updateMeshWithPickedPoint();
}

// Distance from `p` to triangle (a, b, c) (closest point by regions, after Ericson).
inline double distanceToTriangle(const core::vec3& p, const core::vec3& a, const core::vec3& b,
                                 const core::vec3& c)
{
    const core::vec3 ab = b - a, ac = c - a, ap = p - a;
    const double d1 = ab.dot(ap), d2 = ac.dot(ap);
    if (d1 <= 0 && d2 <= 0) return ap.length();
    const core::vec3 bp = p - b;
    const double d3 = ab.dot(bp), d4 = ac.dot(bp);
    if (d3 >= 0 && d4 <= d3) return bp.length();
    const double vc = d1 * d4 - d3 * d2;
    if (vc <= 0 && d1 >= 0 && d3 <= 0) return (p - (a + ab * (d1 / (d1 - d3)))).length();
    const core::vec3 cp = p - c;
    const double d5 = ab.dot(cp), d6 = ac.dot(cp);
    if (d6 >= 0 && d5 <= d6) return cp.length();
    const double vb = d5 * d2 - d1 * d6;
    if (vb <= 0 && d2 >= 0 && d6 <= 0) return (p - (a + ac * (d2 / (d2 - d6)))).length();
    const double va = d3 * d6 - d5 * d4;
    if (va <= 0 && (d4 - d3) >= 0 && (d5 - d6) >= 0)
        return (p - (b + (c - b) * ((d4 - d3) / ((d4 - d3) + (d5 - d6))))).length();
    const double denom = 1.0 / (va + vb + vc);
    return (p - (a + ab * (vb * denom) + ac * (vc * denom))).length();
}

// Distance from `p` to the nearest facette of the patch's mesh; infinity without one.
inline double distanceToMesh(const ZN3DFaultPatch& patch, const core::vec3& p)
{
    double best = INFINITY;
    const auto& v = patch.getPoints();
    for (const ZNFacette& f : patch.getFacettes())
        best = std::min(best, distanceToTriangle(p, v[int(f.index[0])], v[int(f.index[1])],
                                                 v[int(f.index[2])]));
    return best;
}

// Largest distance from a non-separator point of `points` to the mesh.
inline double farthestPoint(const ZN3DFaultPatch& patch, const core::Array<core::PointWithBool>& points)
{
    double worst = 0.0;
    for (const core::PointWithBool& p : points)
        if (!p.isSeparator()) worst = std::max(worst, distanceToMesh(patch, p.position()));
    return worst;
}

} // namespace surfacefixtures
