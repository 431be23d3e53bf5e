#pragma once
#include <QSaveFile>
#include <QString>
#include <QTextStream>

namespace fault::exchange {

// Writes an exchange file as UTF-8 text into a temporary file beside the target and
// renames it over the target only when everything was written: a failed or abandoned
// write leaves the previous file as it was.
class TextFileWriter {
public:
    explicit TextFileWriter(const QString& path);

    // False, with problem(), when the temporary file cannot be created.
    bool open();
    QTextStream& stream() { return m_stream; }
    // Flushes and renames over the target; false, with problem(), on any write error.
    bool commit();
    const QString& problem() const { return m_problem; }

private:
    QSaveFile m_file;
    QTextStream m_stream;
    QString m_problem;
};

} // namespace fault::exchange
