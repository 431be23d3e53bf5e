#pragma once
#include <QStringList>

#include <core/multiarray.h>
#include <core/vec3.h>

#include "stickset.h"

// Conversion between a StickSet and the rows a fault set exchanges its sticks in: one row
// of a core::MultiArray<core::vec3> per fault, its sticks one after the other with a
// separator point (x == -9999.0, see core/stickrules.h) between two sticks, and the fault
// names in a QStringList in row order.
namespace fault::exchange {

// Fills `rows` (re-initialised, one row per fault) and `names`. Inline and crossline
// numbers and the vertical domain are not carried by rows and are dropped. False, with
// `rows` and `names` cleared, when memory runs out.
bool toStickRows(const StickSet& sticks, core::MultiArray<core::vec3>& rows, QStringList& names);

// The StickSet of `rows` and `names`: separators split sticks (runs of separators and
// separators at either end give no empty stick), rows without points give faults without
// sticks, and a row past the end of `names` is named "Unnamed". Line numbers are -9999.
StickSet fromStickRows(const core::MultiArray<core::vec3>& rows, const QStringList& names);

} // namespace fault::exchange
