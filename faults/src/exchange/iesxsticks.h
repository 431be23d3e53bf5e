#pragma once
#include <QString>

#include "exchangestatus.h"
#include "stickset.h"

// IESX (also written by Kingdom) fault sticks: fixed-column card images. Each fault
// starts with a header line
//
//     PROFILE <name, columns 9-25>TYPE 1  4 <comment>fault_gf.ifdf     m  ms
//
// optionally followed by "SNAPPING PARAMETERS ..." and ends with "EOD". Each point is one
// data line, columns counted from 1:
//
//     1-16 X (%16.8E)   17-32 Y (%16.8E)   33-35 stick index   36-38 type code
//     39-47 Z (%9.2f)
//
// and, in the 3D card image, 48-57 and 58-67 the crossline as a real, 68-72 the
// crossline, 73-86 an attribute value, 87-88 " I" and 89-95 the inline. A new stick starts
// where the stick index changes or a new PROFILE begins. The header's last unit says the
// vertical domain ("ms" or "s": time; "m" or "ft": depth).
//
// Format limits: X and Y keep nine significant digits and Z two decimals; a name is 17
// characters wide (a longer one overflows the field, as readers that look for the TYPE
// keyword accept) and loses leading and trailing spaces; line numbers that do not fit
// their columns are left out.
namespace fault::exchange {

// Z the card image uses for "undefined", kept for file compatibility.
constexpr double kIesxUndefined = 3.4028235e+38;

// Reads an IESX fault stick file into `result` (replaced; untouched on failure). Data
// lines shorter than the card image, or whose columns do not hold numbers (e.g. tab
// separated), are read as fields: X, Y, stick index, type code, Z. Points whose Z is the
// undefined value are dropped. Points before the first PROFILE go to a fault named
// `defaultName`, as do faults whose header has no name.
ExchangeStatus readIesxSticks(const QString& path, StickSet& result,
                              const QString& defaultName = QStringLiteral("Unnamed"));

// Writes one PROFILE block per fault; sticks are indexed from 1, modulo 1000 so that
// neighbouring sticks always differ. Points with both line numbers get the 3D card image
// tail. Fails, writing nothing, for a Z outside the Z column (|Z| >= 100000) or a fault
// name holding a line break.
ExchangeStatus writeIesxSticks(const QString& path, const StickSet& sticks);

} // namespace fault::exchange
