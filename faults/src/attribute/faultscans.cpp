#include "attribute/faultscans.h"

#include <algorithm>
#include <cmath>

namespace fault::attribute {
namespace {
constexpr double kDegToRad = M_PI / 180.0;

double strikeCount(const FaultAttributeSettings& s) { return std::max(1.0, std::round(360.0 / s.strikeStep)); }
double dipCount(const FaultAttributeSettings& s)
{
    return s.maxDip > s.minDip ? std::round((s.maxDip - s.minDip) / s.dipStep) + 1.0 : 1.0;
}

// The vertical plane of strike index i repeats one already scanned.
bool repeatsVertical(int strikeIndex, int strikes, double dip)
{
    return dip >= 90.0 && strikes % 2 == 0 && strikeIndex >= strikes / 2;
}

FaultScan scanOf(double strike, double dip)
{
    const double s = strike * kDegToRad;
    const double d = dip * kDegToRad;
    return {strike, dip, core::vec3(std::sin(d) * std::cos(s), -std::sin(d) * std::sin(s), -std::cos(d))};
}
} // namespace

double scanCount(const FaultAttributeSettings& s)
{
    const double strikes = strikeCount(s);
    const double dips = dipCount(s);
    const bool vertical = s.maxDip >= 90.0 && std::fmod(strikes, 2.0) == 0.0;
    return strikes * dips - (vertical ? strikes / 2.0 : 0.0);
}

ScanPlan planScans(const FaultAttributeSettings& settings)
{
    ScanPlan plan;
    if (!settings.problem().isEmpty()) return plan;
    const int strikes = static_cast<int>(strikeCount(settings));
    const int dips = static_cast<int>(dipCount(settings));
    const double dipSpacing = dips > 1 ? (settings.maxDip - settings.minDip) / (dips - 1) : 0.0;
    for (int pass = 0; pass < 2; ++pass) {
        const bool transposed = pass == 1;
        for (int i = 0; i < strikes; ++i) {
            const double strike = 360.0 * i / strikes;
            const double c = std::cos(strike * kDegToRad);
            const double sn = std::sin(strike * kDegToRad);
            if ((std::fabs(c) < std::fabs(sn)) != transposed) continue;
            StrikeGroup group;
            group.transposed = transposed;
            for (int j = 0; j < dips; ++j) {
                const double dip = settings.minDip + j * dipSpacing;
                if (repeatsVertical(i, strikes, dip)) continue;
                const FaultScan scan = scanOf(strike, dip);
                // Normal components along the slab's axes a (fastest) and b.
                const double na = transposed ? scan.normal.y : scan.normal.x;
                const double nb = transposed ? scan.normal.x : scan.normal.y;
                group.shift = -nb / na;
                DipWindow window;
                window.scan = static_cast<int>(plan.scans.size());
                window.shift = -scan.normal.z / na;
                const double stepLength = std::sqrt(1.0 + window.shift * window.shift);
                window.halfSteps = std::max(1, static_cast<int>(std::lround(settings.dipHalfLength / stepLength)));
                plan.maxHalfSteps = std::max(plan.maxHalfSteps, window.halfSteps);
                group.dips.push_back(window);
                plan.scans.push_back(scan);
            }
            if (group.dips.empty()) continue;
            group.sigmaSteps = settings.strikeSigma / std::sqrt(1.0 + group.shift * group.shift);
            plan.groups.push_back(group);
        }
    }
    return plan;
}

} // namespace fault::attribute
