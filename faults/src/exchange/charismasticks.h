#pragma once
#include <QString>

#include "exchangestatus.h"
#include "stickset.h"

// Charisma fault sticks: one point per line,
//
//     INLINE-  <inline> <crossline> <X> <Y> <Z> <fault name> <stick number>
//
// e.g. "INLINE-        1201       3317   1011700.73566   9483470.13910      2007.76680 F 12 1".
// The fault name is everything between Z and the last field, so it may hold spaces.
// Consecutive lines of one fault with one stick number form a stick. An unknown inline or
// crossline is written 2147483647 and read back as -9999. The format carries no vertical
// domain.
namespace fault::exchange {

// Value written for an unknown inline or crossline number, kept for file compatibility.
constexpr int kCharismaUnknownLine = 2147483647;

// Reads a Charisma fault stick file into `result` (replaced; untouched on failure).
// Accepted variants: "INLINE-", "INLINE -", "INLINE:" and "INLINE :" markers, an optional
// "XLINE" marker before the crossline, a name in double quotes (the quotes are dropped),
// blank lines and lines starting with "#". A line without a name gives a fault named
// `defaultName`. Any other line is an error naming the line and what is wrong with it.
ExchangeStatus readCharismaSticks(const QString& path, StickSet& result,
                                  const QString& defaultName = QStringLiteral("Unnamed"));

// Writes every point of `sticks`, sticks numbered from 1 in each fault, coordinates with
// five decimals. Fails, writing nothing, for a fault name holding a line break.
ExchangeStatus writeCharismaSticks(const QString& path, const StickSet& sticks);

} // namespace fault::exchange
