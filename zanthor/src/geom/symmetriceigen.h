#pragma once
#include <array>

#include <core/vec3.h>

namespace geom {

// One eigen-pair of a symmetric 3x3 matrix: a unit eigenvector and its eigenvalue.
struct EigenPair {
    core::vec3 vector;
    double value = 0.0;
};

// The eigen-pairs of the symmetric matrix `m` (nine entries, row-major; only the
// symmetric part matters), ordered by decreasing eigenvalue: the first pair is the
// direction of greatest spread, the third of least spread. Eigenvectors have unit length;
// their sign is the solver's, deterministic for a given matrix. A matrix with non-finite
// entries yields non-finite pairs.
std::array<EigenPair, 3> symmetricEigenPairs(const double m[9]);

} // namespace geom
