#pragma once
// Whole-file helpers for tests of file formats.
#include <QByteArray>
#include <QString>

// The bytes of the file at `path`; empty when it cannot be read.
QByteArray readFileBytes(const QString& path);
// Replaces the file at `path` with `bytes`; false when it cannot be written.
bool writeFileBytes(const QString& path, const QByteArray& bytes);
