#pragma once
// Picked faults of random strike, dip and bend, for the benchmarks that mesh or draw
// many faults.
#include <cmath>
#include <random>

#include <core/array.h>
#include <core/pointwithbool.h>
#include <core/vec3.h>

namespace benchfaults {

struct FaultShape {
    int sticks = 20;
    int pointsPerStick = 20;
    double stickSpacing = 50.0;  // metres along the strike
    double pointStep = 10.0;     // along the dip
    double bendLength = 1000.0;  // the bend's offset is bend x a^2 / this
    double spread = 5000.0;      // origins fall in a square of this side
};

// A fault of random strike (0..360), dip (40..85) and bend, picked down its dip: the
// sticks with separators between them, as a fault patch holds them.
inline core::Array<core::PointWithBool> randomFault(std::mt19937& rng, const FaultShape& shape = FaultShape())
{
    constexpr double kDegToRad = M_PI / 180.0;
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double strike = 360.0 * unit(rng) * kDegToRad, dip = (40.0 + 45.0 * unit(rng)) * kDegToRad;
    const double dipDirection = strike + M_PI / 2;
    const core::vec3 along(std::sin(strike), 0.0, std::cos(strike));
    const core::vec3 down = core::vec3(std::sin(dipDirection), 0.0, std::cos(dipDirection)) * std::cos(dip) +
                            core::vec3(0.0, std::sin(dip), 0.0);
    const core::vec3 normal = along.cross(down);
    const core::vec3 origin(shape.spread * unit(rng), 1000.0 + 500.0 * unit(rng), shape.spread * unit(rng));
    const double bend = 0.05 * unit(rng);
    core::Array<core::PointWithBool> points;
    for (int s = 0; s < shape.sticks; ++s) {
        if (s > 0) points.add(core::PointWithBool::separator());
        const double a = s * shape.stickSpacing + 10.0 * unit(rng);
        for (int k = 0; k < shape.pointsPerStick; ++k) {
            const double b = k * shape.pointStep + 2.0 * unit(rng);
            const double offset = bend * a * a / shape.bendLength;  // along the normal
            points.add(core::PointWithBool(origin + along * a + down * b + normal * offset));
        }
    }
    return points;
}

} // namespace benchfaults
