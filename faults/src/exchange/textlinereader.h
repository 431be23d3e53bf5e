#pragma once
#include <QFile>
#include <QString>

namespace fault::exchange {

// Reads a text file line by line for the exchange readers, treating it as hostile: a
// line longer than kMaxLineBytes, a NUL byte (a binary file) or a read error stops the
// reading with a problem text instead of growing without bound. Lines are decoded as
// UTF-8 and handed over without their end of line ("\n" or "\r\n") and, on the first
// line, without a byte order mark.
class TextLineReader {
public:
    static constexpr qint64 kMaxLineBytes = 1 << 16;

    explicit TextLineReader(const QString& path);

    // False, with problem(), when the file cannot be opened for reading.
    bool open();
    // The next line; false at the end of the file or on a failure (see failed()).
    bool next(QString& line);

    // Number of the line last handed out, from 1; 0 before the first.
    int lineNumber() const { return m_lineNumber; }
    bool failed() const { return !m_problem.isEmpty(); }
    const QString& problem() const { return m_problem; }

private:
    QFile m_file;
    int m_lineNumber = 0;
    QString m_problem;
};

} // namespace fault::exchange
