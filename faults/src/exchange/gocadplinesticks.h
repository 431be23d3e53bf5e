#pragma once
#include <QString>

#include "exchangestatus.h"
#include "stickset.h"

// GOCAD PLine fault sticks: one PLine object per fault (named in its HEADER), one ILINE
// part per stick, its vertices in stick order:
//
//     GOCAD PLine 1
//     HEADER {
//     name:"Fault A"
//     }
//     GOCAD_ORIGINAL_COORDINATE_SYSTEM ... ZPOSITIVE Depth ... END_ORIGINAL_COORDINATE_SYSTEM
//     PROPERTIES Inline Crossline          (only when some point carries line numbers)
//     NO_DATA_VALUES -9999 -9999
//     ILINE
//     PVRTX 1 <X> <Y> <Z> <inline> <crossline>     (VRTX 1 <X> <Y> <Z> without properties)
//     PVRTX 2 ...
//     SEG 1 2
//     ILINE
//     ...
//     END
namespace fault::exchange {

// Reads every PLine object of the file into one fault each (objects of one name gather
// into one fault) and `result` (replaced; untouched on failure). ATOM lines repeat an
// earlier vertex; SEG lines must name vertices of their object; inline and crossline
// come from properties named Inline/ILINE/IL and Crossline/XLINE/XL, a no-data or
// non-integer value giving -9999. An object without a name is named `defaultName`. The
// vertical domain is that of the last object whose Z unit names one.
ExchangeStatus readGocadPLineSticks(const QString& path, StickSet& result,
                                    const QString& defaultName = QStringLiteral("Unnamed"));

// Writes one PLine object per fault, coordinates with six decimals. Fails, writing
// nothing, for a name holding a double quote or a line break.
ExchangeStatus writeGocadPLineSticks(const QString& path, const StickSet& sticks);

} // namespace fault::exchange
