#include "attribute/faultattributesettings.h"

#include <cmath>

#include "attribute/faultscans.h"

namespace fault::attribute {
namespace {
constexpr double kLowestDip = 20.0;     // below it the window down dip runs too flat
constexpr double kShortestLength = 1.0;
constexpr double kLongestLength = 64.0; // keeps the slab halo bounded

bool inRange(double v, double lo, double hi) { return std::isfinite(v) && v >= lo && v <= hi; }
} // namespace

QString FaultAttributeSettings::problem() const
{
    if (!(strikeStep > 0.0 && strikeStep <= 180.0) || !(dipStep > 0.0 && dipStep <= 90.0))
        return QStringLiteral("strike and dip steps must lie in (0, 180] and (0, 90] degrees");
    if (!inRange(minDip, kLowestDip, 90.0) || !inRange(maxDip, minDip, 90.0))
        return QStringLiteral("dips must lie in %1..90 degrees, the smallest first (got %2..%3)")
            .arg(kLowestDip).arg(minDip).arg(maxDip);
    for (double length : {strikeSigma, dipHalfLength, slopeSigma, referenceSigma})
        if (!inRange(length, kShortestLength, kLongestLength))
            return QStringLiteral("smoothing lengths must lie in %1..%2 samples (got %3)")
                .arg(kShortestLength).arg(kLongestLength).arg(length);
    if (!inRange(maxReflectorSlope, 0.0, 8.0))
        return QStringLiteral("the steepest reflector slope must lie in 0..8 samples per trace (got %1)")
            .arg(maxReflectorSlope);
    if (!inRange(semblancePower, 1.0, 64.0))
        return QStringLiteral("the semblance power must lie in 1..64 (got %1)").arg(semblancePower);
    if (scanCount(*this) > kMaxScans)
        return QStringLiteral("the steps give %1 orientations, more than %2").arg(scanCount(*this)).arg(kMaxScans);
    return {};
}

} // namespace fault::attribute
