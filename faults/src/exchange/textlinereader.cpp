#include "textlinereader.h"

#include <QByteArray>

namespace fault::exchange {

TextLineReader::TextLineReader(const QString& path) : m_file(path) {}

bool TextLineReader::open()
{
    if (m_file.open(QIODevice::ReadOnly)) return true;
    m_problem = QStringLiteral("cannot be opened for reading (%1)").arg(m_file.errorString());
    return false;
}

bool TextLineReader::next(QString& line)
{
    if (failed() || !m_file.isOpen() || m_file.atEnd()) return false;
    // One byte more than the limit tells an over-long line from one that just fits.
    const QByteArray bytes = m_file.readLine(kMaxLineBytes + 2);
    ++m_lineNumber;
    if (bytes.isEmpty() && !m_file.atEnd()) {
        m_problem = QStringLiteral("read error (%1)").arg(m_file.errorString());
        return false;
    }
    int length = bytes.size();
    const bool ended = length > 0 && bytes[length - 1] == '\n';
    if (ended) --length;
    if (length > 0 && bytes[length - 1] == '\r') --length;
    if (length > kMaxLineBytes || (!ended && !m_file.atEnd())) {
        m_problem = QStringLiteral("line longer than %1 bytes").arg(kMaxLineBytes);
        return false;
    }
    if (bytes.indexOf('\0') >= 0) {
        m_problem = QStringLiteral("not a text file (NUL byte)");
        return false;
    }
    line = QString::fromUtf8(bytes.constData(), length);
    // Some Windows tools start their text files with a byte order mark.
    if (m_lineNumber == 1 && line.startsWith(QChar(0xFEFF))) line.remove(0, 1);
    return true;
}

} // namespace fault::exchange
