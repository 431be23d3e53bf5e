#pragma once
// A small fault set, its files in both forms, and the broken variants of those files
// that every reader must refuse cleanly. The committed copies in tests/data/faultset are
// made by regenerate() from this same code; the fuzz target starts from them.
#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <znfaultpatchmanager.h>

namespace faultsetcorpus {

// Makes `set` a picked fault set of 5 patches: patches 1 and 2 form fault 1 (2's father
// is 1), patch 3 is fault 3, patch 4 is empty. Sticks hold separators and automatic
// points; every patch has a rectangle and the 2D flag `twoD`; time units in feet (no CRS, to keep the files small); a
// block space with a scaled, shifted matrix; descriptors of fixed colours and settings.
void fill(ZNFaultPatchManager& set, bool twoD);

// The bytes of `set`'s file in the given form, with a header reserve of 64 bytes.
QByteArray fileOf(const ZNFaultPatchManager& set, bool twoD);
// fileOf(fill(twoD), twoD).
QByteArray validFile(bool twoD);

// `bytes` (an object file with a header reserve) with the object header's key-value
// element `key` set to `value`, the data unchanged; empty when the header cannot be
// rewritten.
QByteArray withHeaderValue(const QByteArray& bytes, const QString& key, const QString& value);

// Named broken variants: truncations in every region of both forms, garbage and bad XML
// headers, foreign and unknown versions, patch counts the header or the data cannot hold,
// entry counts out of range or beyond the file, fathers out of range or in a loop,
// descriptor ids that are not patch ids, a non-finite coordinate. A name starting with
// "3d_" holds the 3D form, every other one the 2D form.
QList<QPair<QString, QByteArray>> brokenFiles();

// Folder of the committed copies: valid_2d.faultset, valid_3d.faultset, corrupt/.
QString committedDirectory();
// Writes the valid files and brokenFiles() into `directory`; false on a write failure.
bool regenerate(const QString& directory);

} // namespace faultsetcorpus
