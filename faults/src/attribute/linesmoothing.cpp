#include "attribute/linesmoothing.h"

#include <algorithm>
#include <cmath>

#include "attribute/vectorclones.h"

namespace fault::attribute {
namespace {

// cur[a] = gain in[a] + sum_i c[i] prev[i][a + offset[i]], a prev row that is null or
// an index outside 0..n-1 counting as 0 (`in` may be `cur`).
FAULT_VECTOR_CLONES
void shiftedStep(const float* in, float* cur, const float* const prev[3], const int offset[3], const float c[3],
                 int n, float gain)
{
    int lo = 0, hi = n;   // indices where every existing history row can be read
    for (int i = 0; i < 3; ++i)
        if (prev[i] != nullptr) {
            lo = std::max(lo, -offset[i]);
            hi = std::min(hi, n - offset[i]);
        }
    auto edge = [&](int a) {
        float v = gain * in[a];
        for (int i = 0; i < 3; ++i) {
            const int k = a + offset[i];
            if (prev[i] != nullptr && k >= 0 && k < n) v += c[i] * prev[i][k];
        }
        cur[a] = v;
    };
    for (int a = 0; a < std::min(lo, n); ++a) edge(a);
    const float* p0 = prev[0] != nullptr ? prev[0] + offset[0] : nullptr;
    const float* p1 = prev[1] != nullptr ? prev[1] + offset[1] : nullptr;
    const float* p2 = prev[2] != nullptr ? prev[2] + offset[2] : nullptr;
    if (p0 != nullptr && p1 != nullptr && p2 != nullptr) {
#pragma omp simd
        for (int a = lo; a < hi; ++a) cur[a] = gain * in[a] + c[0] * p0[a] + c[1] * p1[a] + c[2] * p2[a];
    } else {
        for (int a = lo; a < hi; ++a) edge(a);
    }
    for (int a = std::max(hi, lo); a < n; ++a) edge(a);
}

} // namespace

std::vector<int> lineOffsets(int count, double shift)
{
    std::vector<int> offsets(static_cast<std::size_t>(std::max(0, count)));
    for (int b = 0; b < count; ++b) offsets[static_cast<std::size_t>(b)] = lineOffset(b, shift);
    return offsets;
}

void smoothAlongLines(float* slice, int na, int nb, double shift, const RecursiveGaussian& gaussian)
{
    smoothAlongLines(slice, slice, na, nb, lineOffsets(nb, shift).data(), gaussian);
}

void smoothAlongLines(const float* source, float* target, int na, int nb, const int* offsets,
                      const RecursiveGaussian& gaussian)
{
    if (na <= 0 || nb <= 0) return;
    const std::size_t size = static_cast<std::size_t>(na) * nb;
    if (gaussian.isIdentity()) {
        if (source != target) std::copy(source, source + size, target);
        return;
    }
    const float c[3] = {gaussian.a1(), gaussian.a2(), gaussian.a3()};
    auto row = [&](int b) { return target + static_cast<std::ptrdiff_t>(b) * na; };
    for (int b = 0; b < nb; ++b) {
        const float* prev[3];
        int offset[3];
        for (int i = 0; i < 3; ++i) {
            const bool inside = b - 1 - i >= 0;
            prev[i] = inside ? row(b - 1 - i) : nullptr;
            offset[i] = inside ? offsets[b - 1 - i] - offsets[b] : 0;
        }
        shiftedStep(source + static_cast<std::ptrdiff_t>(b) * na, row(b), prev, offset, c, na, gaussian.gain());
    }
    for (int b = nb - 1; b >= 0; --b) {
        const float* next[3];
        int offset[3];
        for (int i = 0; i < 3; ++i) {
            const bool inside = b + 1 + i < nb;
            next[i] = inside ? row(b + 1 + i) : nullptr;
            offset[i] = inside ? offsets[b + 1 + i] - offsets[b] : 0;
        }
        shiftedStep(row(b), row(b), next, offset, c, na, gaussian.gain());
    }
}

} // namespace fault::attribute
