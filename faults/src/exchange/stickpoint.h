#pragma once
#include <vector>

#include <core/conventions.h>
#include <core/vec3.h>

namespace fault::exchange {

// One point of an exchanged fault stick: its world position (axes: worldaxes.h) and,
// when the file carries them, the survey inline and crossline numbers of the trace it
// was picked on. A number the file does not carry, or marks as unknown, is -9999.
struct StickPoint {
    core::vec3 world;
    int inlineNumber = core::kNoValue;
    int crosslineNumber = core::kNoValue;

    // True when both line numbers are known.
    bool hasLineNumbers() const
    {
        return inlineNumber != core::kNoValue && crosslineNumber != core::kNoValue;
    }
};

// A stick: its points in picking order, from one end to the other. Never empty once read.
using Stick = std::vector<StickPoint>;

} // namespace fault::exchange
