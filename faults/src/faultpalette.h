#pragma once
#include <QColor>

namespace fault {

// The colour of the fault at `index` (from 0) in a qualitative palette chosen to keep
// neighbouring indices apart and to read on white and on seismic: every picture, view
// and new fault of the toolkit takes its colours from here. It cycles after its twelve
// colours, each cycle a little darker. A negative index gives grey.
QColor faultColour(int index);

} // namespace fault
