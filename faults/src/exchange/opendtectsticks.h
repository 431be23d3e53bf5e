#pragma once
#include <QString>

#include "exchangestatus.h"
#include "stickset.h"

// OpendTect ASCII fault sticks, as its fault and fault stick set export writes them with
// the fault name, stick index and node index switched on: one point per line, fields
// separated by tabs,
//
//     "<fault name>"  <X>  <Y>  <Z>  <stick index>  <node index>  [2D line name]
//
// Stick and node indices count from 0. Consecutive lines of one fault with one stick
// index form a stick; the node index is not used to reorder points (file order is kept).
// The format carries neither inline and crossline numbers next to X and Y nor a vertical
// domain.
namespace fault::exchange {

// Reads an OpendTect fault stick file into `result` (replaced; untouched on failure).
// Also accepted: an unquoted name (every field before the first number, so spaces are
// kept), no name at all (the fault is named `defaultName`), no stick index (one stick
// per fault), no node index, blank lines and lines starting with "#".
ExchangeStatus readOpendTectSticks(const QString& path, StickSet& result,
                                   const QString& defaultName = QStringLiteral("Unnamed"));

// Writes every point with its quoted fault name, X, Y and Z with six decimals, stick and
// node index. Fails, writing nothing, for a name holding a double quote or a line break.
ExchangeStatus writeOpendTectSticks(const QString& path, const StickSet& sticks);

} // namespace fault::exchange
