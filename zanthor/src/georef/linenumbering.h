#pragma once

namespace georef {

// The survey's numbers of the inlines and crosslines of a block: block index i along x
// is inline firstInline + i * inlineStep, index j along y crossline firstCrossline +
// j * crosslineStep. What the viewers write on their axes. Default: the indices
// themselves.
struct LineNumbering {
    int firstInline = 0;
    int inlineStep = 1;
    int firstCrossline = 0;
    int crosslineStep = 1;

    int inlineNumber(int i) const { return firstInline + i * inlineStep; }
    int crosslineNumber(int j) const { return firstCrossline + j * crosslineStep; }
    bool operator==(const LineNumbering& o) const
    {
        return firstInline == o.firstInline && inlineStep == o.inlineStep &&
               firstCrossline == o.firstCrossline && crosslineStep == o.crosslineStep;
    }
};

} // namespace georef
