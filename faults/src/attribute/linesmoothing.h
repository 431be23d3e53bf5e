#pragma once
#include <cstddef>

#include "attribute/recursivegaussian.h"

namespace fault::attribute {

// The samples a digital line has moved along a after `step` steps, when it moves
// `shift` samples per step: round(step * shift). Lines of one direction are translates
// of each other, so a filter along them needs no interpolation, and a line's position
// at a step depends only on that step, wherever a slab starts.
inline int lineOffset(int step, double shift) { return static_cast<int>(std::lround(step * shift)); }

// Smooths one slice of na x nb samples (a fastest) by `gaussian` along digital lines
// that move `shift` samples along a for each sample along b (|shift| <= 1 keeps the
// lines' samples neighbours), with zero ends: samples beyond the slice count as 0, so
// that the ratio of two quantities smoothed alike weighs only the samples inside.
void smoothAlongLines(float* slice, int na, int nb, double shift, const RecursiveGaussian& gaussian);

// A slice laid out for smoothing without ends to mind: rows of pitchOf(na) floats whose
// sample 0 is kColumns in, between kRows rows above and below, all of whose margins
// hold zeros (and are left so).
struct PaddedSlice {
    static constexpr int kColumns = 4;   // more than the three rows of history move
    static constexpr int kRows = 3;      // the recursion's history
    static std::size_t floats(int na, int nb) { return pitchOf(na) * static_cast<std::size_t>(nb + 2 * kRows); }
    static std::size_t pitchOf(int na) { return static_cast<std::size_t>(na + 2 * kColumns); }
    // Sample (0, b) of a padded slice starting at `slice`.
    static float* row(float* slice, int na, int b)
    {
        return slice + static_cast<std::size_t>(b + kRows) * pitchOf(na) + kColumns;
    }
};

// Two slices of na x nb samples (a fastest), `first` and `second`, smoothed as
// smoothAlongLines does into the padded slices `firstOut` and `secondOut`, whose margins
// must hold zeros; the same results.
void smoothAlongLinesPadded(const float* first, const float* second, float* firstOut, float* secondOut, int na,
                            int nb, double shift, const RecursiveGaussian& gaussian);

} // namespace fault::attribute
