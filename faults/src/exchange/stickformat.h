#pragma once
#include <QString>
#include <QStringList>

#include "exchangestatus.h"
#include "stickset.h"

// One entry point for the four fault stick exchange formats, for callers that choose the
// format at run time (a command line, a file dialog).
namespace fault::exchange {

enum class StickFormat { Charisma, Iesx, OpendTect, GocadPLine };

// The names a user types: "charisma", "iesx" (also "kingdom"), "opendtect" (also "odt"),
// "gocad" (also "pline"), in any case. False, `format` unchanged, for another name.
bool stickFormatFromName(const QString& name, StickFormat& format);
// The first of the names above.
QString stickFormatName(StickFormat format);
// Every first name, in enum order.
QStringList stickFormatNames();

// Guesses the format from the first non-blank, non-comment line of the file: "GOCAD" ->
// GOCAD PLine, "INLINE" -> Charisma, "PROFILE" or a 47-column card image -> IESX, any other
// line that starts with a quote or holds three numbers -> OpendTect. False, `format`
// unchanged, for an unreadable file or a line no rule recognises.
bool guessStickFormat(const QString& path, StickFormat& format);

// Reads with the reader of `format` (see its header for the layout and the variants it
// accepts). `defaultName` names the faults the file leaves unnamed.
ExchangeStatus readSticks(const QString& path, StickFormat format, StickSet& result,
                          const QString& defaultName = QStringLiteral("Unnamed"));
ExchangeStatus writeSticks(const QString& path, StickFormat format, const StickSet& sticks);

} // namespace fault::exchange
