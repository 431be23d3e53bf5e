#pragma once
#include <vector>

#include <QString>

namespace volumeio {

// Order of the traces of a post-stack file. Inline: the traces of one inline are
// consecutive (crossline numbers vary fastest); Crossline: the other way round;
// Unknown: neither holds for the first two traces.
enum class SegySorting { Inline, Crossline, Unknown };

// The regular grid of inlines and crosslines that a file's traces fill, one trace per
// cell. Inline index i stands for inlineNumbers[i], crossline index j for
// crosslineNumbers[j]; both lists increase by a constant step.
struct SegyGrid {
    std::vector<int> inlineNumbers;
    std::vector<int> crosslineNumbers;
    SegySorting sorting = SegySorting::Inline;
    std::vector<int> inlineIndexOfTrace;      // per trace, in file order
    std::vector<int> crosslineIndexOfTrace;   // per trace, in file order

    int inlineCount() const { return static_cast<int>(inlineNumbers.size()); }
    int crosslineCount() const { return static_cast<int>(crosslineNumbers.size()); }
};

// Infers the grid from the inline and crossline number of every trace, in file order
// (two lists of equal length). Empty on success, with `grid` filled; otherwise a
// one-line reason and `grid` untouched: no traces, lists of different lengths, numbers
// not evenly spaced, an (inline, crossline) pair given twice, or a grid cell without a
// trace. Needs memory proportional to the trace count only.
QString inferSegyGrid(const std::vector<int>& inlines, const std::vector<int>& crosslines,
                      SegyGrid& grid);

// "inline", "crossline" or "unknown".
QString segySortingName(SegySorting sorting);

} // namespace volumeio
