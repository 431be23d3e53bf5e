#include "attribute/linesmoothing.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "attribute/vectorclones.h"

namespace fault::attribute {
namespace {

// cur[a] = gain cur[a] + sum_i c[i] prev[i][a + offset[i]], a prev row that is null or
// an index outside 0..n-1 counting as 0.
FAULT_VECTOR_CLONES
void shiftedStep(float* cur, const float* const prev[3], const int offset[3], const float c[3],
                 int n, float gain)
{
    int lo = 0, hi = n;   // indices where every existing history row can be read
    for (int i = 0; i < 3; ++i)
        if (prev[i] != nullptr) {
            lo = std::max(lo, -offset[i]);
            hi = std::min(hi, n - offset[i]);
        }
    auto edge = [&](int a) {
        float v = gain * cur[a];
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
        for (int a = lo; a < hi; ++a) cur[a] = gain * cur[a] + c[0] * p0[a] + c[1] * p1[a] + c[2] * p2[a];
    } else {
        for (int a = lo; a < hi; ++a) edge(a);
    }
    for (int a = std::max(hi, lo); a < n; ++a) edge(a);
}

// out[a] = gain in[a] + sum_i c[i] out[a + from[i]] (`in` may be `out`): the step of
// smoothAlongLines on a padded slice, whose margins give the zeros beyond its ends.
FAULT_VECTOR_CLONES
void paddedStep(const float* in, float* out, const std::ptrdiff_t from[3], const float c[3], int n, float gain)
{
    const float* p0 = out + from[0];
    const float* p1 = out + from[1];
    const float* p2 = out + from[2];
#pragma omp simd
    for (int a = 0; a < n; ++a) {
        float v = gain * in[a];
        v += c[0] * p0[a];
        v += c[1] * p1[a];
        v += c[2] * p2[a];
        out[a] = v;
    }
}

} // namespace

void smoothAlongLines(float* slice, int na, int nb, double shift, const RecursiveGaussian& gaussian)
{
    if (gaussian.isIdentity() || na <= 0 || nb <= 0) return;
    const float c[3] = {gaussian.a1(), gaussian.a2(), gaussian.a3()};
    auto row = [&](int b) { return slice + static_cast<std::ptrdiff_t>(b) * na; };
    for (int b = 0; b < nb; ++b) {
        const float* prev[3];
        int offset[3];
        for (int i = 0; i < 3; ++i) {
            prev[i] = b - 1 - i >= 0 ? row(b - 1 - i) : nullptr;
            offset[i] = lineOffset(b - 1 - i, shift) - lineOffset(b, shift);
        }
        shiftedStep(row(b), prev, offset, c, na, gaussian.gain());
    }
    for (int b = nb - 1; b >= 0; --b) {
        const float* next[3];
        int offset[3];
        for (int i = 0; i < 3; ++i) {
            next[i] = b + 1 + i < nb ? row(b + 1 + i) : nullptr;
            offset[i] = lineOffset(b + 1 + i, shift) - lineOffset(b, shift);
        }
        shiftedStep(row(b), next, offset, c, na, gaussian.gain());
    }
}

void smoothAlongLinesPadded(const float* first, const float* second, float* firstOut, float* secondOut, int na,
                            int nb, double shift, const RecursiveGaussian& gaussian)
{
    if (na <= 0 || nb <= 0) return;
    if (gaussian.isIdentity()) {
        for (int b = 0; b < nb; ++b) {
            const std::size_t row = static_cast<std::size_t>(b) * na;
            std::copy(first + row, first + row + na, PaddedSlice::row(firstOut, na, b));
            std::copy(second + row, second + row + na, PaddedSlice::row(secondOut, na, b));
        }
        return;
    }
    const float c[3] = {gaussian.a1(), gaussian.a2(), gaussian.a3()};
    const std::ptrdiff_t pitch = static_cast<std::ptrdiff_t>(PaddedSlice::pitchOf(na));
    constexpr int kRows = PaddedSlice::kRows;
    std::vector<int> lines(static_cast<std::size_t>(nb + 2 * kRows));   // lineOffset of rows -kRows..
    for (int b = -kRows; b < nb + kRows; ++b) lines[static_cast<std::size_t>(b + kRows)] = lineOffset(b, shift);
    auto line = [&](int b) { return lines[static_cast<std::size_t>(b + kRows)]; };
    // The margins' zeros stand for the history rows and samples beyond the slice.
    auto step = [&](const float* in0, const float* in1, int b, int direction) {
        float* out0 = PaddedSlice::row(firstOut, na, b);
        float* out1 = PaddedSlice::row(secondOut, na, b);
        std::ptrdiff_t from[3];
        for (int i = 0; i < 3; ++i) {
            const int k = b + direction * (1 + i);
            from[i] = (k - b) * pitch + line(k) - line(b);
        }
        paddedStep(in0, out0, from, c, na, gaussian.gain());
        paddedStep(in1, out1, from, c, na, gaussian.gain());
    };
    for (int b = 0; b < nb; ++b) {
        const std::size_t row = static_cast<std::size_t>(b) * na;
        step(first + row, second + row, b, -1);
    }
    for (int b = nb - 1; b >= 0; --b)
        step(PaddedSlice::row(firstOut, na, b), PaddedSlice::row(secondOut, na, b), b, 1);
}

} // namespace fault::attribute
