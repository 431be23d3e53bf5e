#pragma once
#include <QString>

#include <core/vec3.h>

#include "strikedip.h"

namespace fault::synthetic {

// One fault planted in a synthetic likelihood volume, with its known geometry.
//
// Positions and lengths are in voxels of the volume's grid: x inline, y crossline,
// z sample (z increases downwards). Every synthetic volume maps grid to world with unit
// spacing as world x = inline, world y = sample, world z = crossline (see
// syntheticBlocSpace), so the strike and dip below, which follow the world convention
// of strikedip.h, read on the grid as: strike measured clockwise from the +crossline
// axis towards the +inline axis; the fault goes down (+sample) towards strike + 90.
//
// A plane extends across the whole volume. A disc is the ellipse of the given radii
// around the centre, in the fault's plane, its long axes along strike and along dip.
struct PlantedFault {
    enum class Shape { Plane, Disc };

    QString name;                       // shown in reports, e.g. "planar A"
    Shape shape = Shape::Plane;
    core::vec3 centre;                  // a point of the fault (disc: its centre), voxels
    StrikeDip orientation;              // degrees, see strikedip.h
    double radiusAlongStrike = 0.0;     // disc only, voxels, > 0
    double radiusAlongDip = 0.0;        // disc only, voxels, > 0
    double width = 0.7;                 // sigma of the Gaussian profile across it, voxels
    double amplitude = 1.0;             // peak likelihood on the fault, 0..1
    double amplitudeVariation = 0.0;    // 0..1: the peak varies between
                                        // amplitude * (1 - variation) and amplitude
    double variationWavelength = 48.0;  // voxels, of that variation along strike and dip
    double variationPhaseStrike = 0.0;  // radians, phases of the variation
    double variationPhaseDip = 0.0;

    // True when the numbers describe a drawable fault: positive finite width, amplitude
    // and variation in 0..1, positive wavelength, dip in 0..90, positive radii for a disc.
    bool isValid() const;
};

// A planted fault prepared for evaluation at many voxels: its orthonormal frame on the
// grid and the constants of its profile. Cheap to copy; built once per volume.
class PlantedFaultField {
public:
    explicit PlantedFaultField(const PlantedFault& fault);

    struct Value {
        double profile = 0.0;     // membership, 0..1
        double likelihood = 0.0;  // profile times the local peak amplitude
    };
    // The fault at grid point `p`. The profile is exp(-r^2 / (2 width^2)) with r the
    // distance from `p` to the fault (to its plane for a plane; to the ellipse for a
    // disc, measured radially outside its rim); below 1e-4 it is 0.
    Value evaluate(const core::vec3& p) const;
    // Signed distance from `p` to the fault's plane, voxels; positive above it (on the
    // side its upward normal points to).
    double signedDistance(const core::vec3& p) const { return (p - m_centre).dot(m_normal); }

    const core::vec3& normal() const { return m_normal; }         // grid, unit, up (z <= 0)
    const core::vec3& strikeAxis() const { return m_strikeAxis; } // grid, unit, horizontal
    const core::vec3& dipAxis() const { return m_dipAxis; }       // grid, unit, down-dip

private:
    double squaredDistance(const core::vec3& rel, double across) const;
    double peakAt(const core::vec3& rel) const;

    PlantedFault m_fault;
    core::vec3 m_centre;
    core::vec3 m_normal;
    core::vec3 m_strikeAxis;
    core::vec3 m_dipAxis;
    double m_cutoff = 0.0;          // distance beyond which the profile counts as 0
    double m_twoSigmaSquared = 1.0; // 2 width^2
    double m_waveNumber = 0.0;      // 2 pi / variation wavelength
};

} // namespace fault::synthetic
