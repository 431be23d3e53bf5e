#include "geom/symmetriceigen.h"

#include <cmath>
#include <limits>

#include <Eigen/Eigenvalues>

namespace geom {

std::array<EigenPair, 3> symmetricEigenPairs(const double m[9])
{
    for (int i = 0; i < 9; ++i)
        if (!std::isfinite(m[i])) {
            const double nan = std::numeric_limits<double>::quiet_NaN();
            const EigenPair undefined{{nan, nan, nan}, nan};
            return {undefined, undefined, undefined};
        }
    Eigen::Matrix3d a;
    a << m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8];
    // The iterative solver, not the closed form: it stays accurate for nearly planar
    // patches, whose smallest eigenvalue is the one that matters most.
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(a, Eigen::ComputeEigenvectors);
    const Eigen::Vector3d values = solver.eigenvalues();     // increasing order
    const Eigen::Matrix3d vectors = solver.eigenvectors();   // matching columns
    std::array<EigenPair, 3> pairs;
    for (int i = 0; i < 3; ++i) {
        const int column = 2 - i;
        pairs[i].vector = {vectors(0, column), vectors(1, column), vectors(2, column)};
        pairs[i].value = values(column);
    }
    return pairs;
}

} // namespace geom
