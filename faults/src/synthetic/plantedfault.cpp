#include "plantedfault.h"

#include <cmath>

namespace fault::synthetic {
namespace {
constexpr double kDegToRad = M_PI / 180.0;
constexpr double kNegligibleProfile = 1e-4;   // profiles below it are taken as 0

bool inUnitRange(double v) { return v >= 0.0 && v <= 1.0; }
bool positive(double v) { return std::isfinite(v) && v > 0.0; }
} // namespace

bool PlantedFault::isValid() const
{
    const bool discOk = shape == Shape::Plane ||
                        (positive(radiusAlongStrike) && positive(radiusAlongDip));
    const bool centreOk = std::isfinite(centre.x) && std::isfinite(centre.y) &&
                          std::isfinite(centre.z);
    return discOk && centreOk && positive(width) && inUnitRange(amplitude) &&
           inUnitRange(amplitudeVariation) && positive(variationWavelength) &&
           std::isfinite(orientation.strike) && orientation.dip >= 0.0 &&
           orientation.dip <= 90.0;
}

PlantedFaultField::PlantedFaultField(const PlantedFault& fault)
    : m_fault(fault), m_centre(fault.centre)
{
    // Grid axes: x inline (east), y crossline (north), z sample (down).
    const double strike = fault.orientation.strike * kDegToRad;
    const double dipDirection = strike + M_PI / 2.0;
    const double dip = fault.orientation.dip * kDegToRad;
    m_strikeAxis = {std::sin(strike), std::cos(strike), 0.0};
    m_dipAxis = {std::cos(dip) * std::sin(dipDirection), std::cos(dip) * std::cos(dipDirection),
                 std::sin(dip)};
    m_normal = {std::sin(dip) * std::sin(dipDirection), std::sin(dip) * std::cos(dipDirection),
                -std::cos(dip)};
    m_twoSigmaSquared = 2.0 * fault.width * fault.width;
    m_cutoff = std::sqrt(-m_twoSigmaSquared * std::log(kNegligibleProfile));
    m_waveNumber = 2.0 * M_PI / fault.variationWavelength;
}

double PlantedFaultField::squaredDistance(const core::vec3& rel, double across) const
{
    if (m_fault.shape == PlantedFault::Shape::Plane) return across * across;
    const double u = rel.dot(m_strikeAxis);                  // along strike
    const double v = rel.dot(m_dipAxis);                     // down dip
    const double su = u / m_fault.radiusAlongStrike;
    const double sv = v / m_fault.radiusAlongDip;
    const double ellipseRadius = std::sqrt(su * su + sv * sv);  // 1 on the rim
    if (ellipseRadius <= 1.0) return across * across;
    const double outside = std::hypot(u, v) * (1.0 - 1.0 / ellipseRadius);
    return across * across + outside * outside;
}

double PlantedFaultField::peakAt(const core::vec3& rel) const
{
    if (m_fault.amplitudeVariation == 0.0) return m_fault.amplitude;
    const double u = rel.dot(m_strikeAxis);
    const double v = rel.dot(m_dipAxis);
    const double wave = std::sin(m_waveNumber * u + m_fault.variationPhaseStrike) *
                        std::sin(m_waveNumber * v + m_fault.variationPhaseDip);  // -1..1
    return m_fault.amplitude * (1.0 - m_fault.amplitudeVariation * 0.5 * (1.0 + wave));
}

PlantedFaultField::Value PlantedFaultField::evaluate(const core::vec3& p) const
{
    const core::vec3 rel = p - m_centre;
    const double across = rel.dot(m_normal);
    if (std::fabs(across) > m_cutoff) return {};
    const double r2 = squaredDistance(rel, across);
    if (r2 > m_cutoff * m_cutoff) return {};
    const double shape = std::exp(-r2 / m_twoSigmaSquared);
    return {shape, shape * peakAt(rel)};
}

} // namespace fault::synthetic
