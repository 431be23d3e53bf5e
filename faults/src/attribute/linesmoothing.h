#pragma once
#include <vector>

#include "attribute/recursivegaussian.h"

namespace fault::attribute {

// The samples a digital line has moved along a after `step` steps, when it moves
// `shift` samples per step: round(step * shift). Lines of one direction are translates
// of each other, so a filter along them needs no interpolation, and a line's position
// at a step depends only on that step, wherever a slab starts.
inline int lineOffset(int step, double shift) { return static_cast<int>(std::lround(step * shift)); }

// lineOffset(b, shift) for b in 0..count-1.
std::vector<int> lineOffsets(int count, double shift);

// Smooths one slice of na x nb samples (a fastest) by `gaussian` along digital lines
// that move `shift` samples along a for each sample along b (|shift| <= 1 keeps the
// lines' samples neighbours), with zero ends: samples beyond the slice count as 0, so
// that the ratio of two quantities smoothed alike weighs only the samples inside.
void smoothAlongLines(float* slice, int na, int nb, double shift, const RecursiveGaussian& gaussian);

// The same, reading the slice from `source` and writing the smoothed slice to `target`
// (which may be `source`); `offsets` holds lineOffsets(nb, shift).
void smoothAlongLines(const float* source, float* target, int na, int nb, const int* offsets,
                      const RecursiveGaussian& gaussian);

} // namespace fault::attribute
