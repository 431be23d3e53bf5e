#pragma once
// A small triangulated object, its file, and the corrupted variants of that file that
// every reader must refuse cleanly. The committed copies in tests/data/3dobject are made
// by regenerate() from this same code.
#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <3dobject/zn3dobjectdraw.h>

namespace objectcorpus {

// Fills `object` with 5 points (coordinates not exact in 32 bits) and 3 facettes, a
// pen, a brush and a pixel size; record size as given.
void fill(ZN3DObjectDraw& object, int recordSize);

// The file of fill(object, 4), written by the object itself, as bytes.
QByteArray validFile();

// Named corrupted variants of validFile(): truncations in every region, garbage
// instead of XML, counts the data cannot hold, a negative count, a record size the
// data cannot hold, an impossible header size.
QList<QPair<QString, QByteArray>> corruptedFiles();

// Folder of the committed copies.
QString committedDirectory();
// Writes validFile() and corruptedFiles() into `directory`; false on a write failure.
bool regenerate(const QString& directory);

} // namespace objectcorpus
