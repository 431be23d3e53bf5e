#pragma once
#include <QString>

// The host's rules for names that become file names (a fault's name names the files
// exported for it). A name is refused anywhere when it holds a character no text file can
// carry: a control character (below 32, 127 and 128..159), an unpaired surrogate, U+FFFE
// or U+FFFF. Otherwise only its file-name part counts, the part after the last '/' or
// '\': "dir/F1.v2" is judged as "F1.v2". That part is acceptable when it
//   - is not empty, "." or "..";
//   - holds none of the characters < > : " | ? *;
//   - does not end with a space or a dot;
//   - is not a device name reserved on Windows (CON, PRN, AUX, NUL, COM1..COM9,
//     LPT1..LPT9), in any case and with or without an extension.
// The rules are those of the strictest platform, so that a project moves between
// platforms without renaming.
namespace ZNFileName {

// The part of `name` after its last '/' or '\' (the whole name when there is none).
QString fileNamePart(const QString& name);

// The file-name part without its last dot and what follows: "dir\F1.v2" gives "F1",
// "a.b.c" gives "a.b", "F1" stays "F1". What a name becomes where it names a file.
QString completeBaseName(const QString& name);

// True when `name` is acceptable (see above).
bool isAcceptable(const QString& name);

// The host's wording of an unacceptable name for messages: its file-name part (the
// whole name when the problem lies before it) in double quotes, then why it is refused
// in parentheses, e.g. "A:B" (a file name cannot contain ':'). Empty for an acceptable
// name.
QString describeProblem(const QString& name);

} // namespace ZNFileName
