#include "strikedip.h"

#include <algorithm>
#include <cmath>

#include <core/conventions.h>

namespace fault::synthetic {
namespace {
constexpr double kRadToDeg = 180.0 / M_PI;
constexpr double kDegToRad = M_PI / 180.0;
constexpr double kHorizontalEpsilon = 0.001;  // relative horizontal length of a flat normal
constexpr double kFullTurn = 360.0;
constexpr double kStrikeFromDipDirection = 270.0;  // strike = dip direction - 90
constexpr double kFlatDipDirection = 180.0;        // of a flat plane, as the fault sheet shows it

// `angle` folded into [0, 360).
double wrapDegrees(double angle)
{
    const double wrapped = std::fmod(angle, kFullTurn);
    return wrapped < 0.0 ? wrapped + kFullTurn : wrapped;
}

// Distance between two azimuths on the circle, 0 to 180.
double azimuthDistance(double a, double b)
{
    const double d = wrapDegrees(a - b);
    return std::min(d, kFullTurn - d);
}
} // namespace

StrikeDip strikeDipOfWorldNormal(const core::vec3& normal)
{
    const double length = normal.length();
    if (!(length > 0.0) || !std::isfinite(length))
        return {core::kNoValueReal, core::kNoValueReal};
    const core::vec3 up = (normal.y > 0.0 ? -normal : normal) / length;
    const double horizontal = std::hypot(up.x, up.z);   // sine of the dip
    const double dip = 90.0 + std::asin(std::max(-1.0, up.y)) * kRadToDeg;
    const double dipDirection = horizontal < kHorizontalEpsilon
                                    ? kFlatDipDirection
                                    : wrapDegrees(std::atan2(up.x, up.z) * kRadToDeg);
    return {wrapDegrees(dipDirection + kStrikeFromDipDirection), dip};
}

core::vec3 worldNormalOfStrikeDip(const StrikeDip& orientation)
{
    const double dipDirection = (orientation.strike + 90.0) * kDegToRad;
    const double dip = orientation.dip * kDegToRad;
    return {std::sin(dip) * std::sin(dipDirection), -std::cos(dip),
            std::sin(dip) * std::cos(dipDirection)};
}

core::vec3 gridNormalToWorld(const core::vec3& gridNormal, const georef::BlocSpace& space)
{
    return space.getFromWorldToBlocMatrix().transposed().transformVector(gridNormal);
}

core::vec3 worldNormalToGrid(const core::vec3& worldNormal, const georef::BlocSpace& space)
{
    return space.getFromBlocToWorldMatrix().transposed().transformVector(worldNormal);
}

OrientationError orientationError(const StrikeDip& reference, const StrikeDip& measured)
{
    const bool unset = reference.strike == core::kNoValueReal ||
                       measured.strike == core::kNoValueReal;
    if (unset) return {core::kNoValueReal, core::kNoValueReal};
    const bool opposed =
        worldNormalOfStrikeDip(reference).dot(worldNormalOfStrikeDip(measured)) < 0.0;
    if (!opposed)
        return {azimuthDistance(reference.strike, measured.strike),
                std::fabs(reference.dip - measured.dip)};
    return {azimuthDistance(reference.strike, measured.strike + 180.0),
            std::fabs(reference.dip - (180.0 - measured.dip))};
}

} // namespace fault::synthetic
