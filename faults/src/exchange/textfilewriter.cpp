#include "textfilewriter.h"

#include <cerrno>

namespace fault::exchange {

TextFileWriter::TextFileWriter(const QString& path) : m_file(path) {}

namespace {
// Why writing `file` failed: the device's own reason, else the system's for the last
// failed call (the buffered writes of a text stream leave the device's reason unset:
// "Unknown error" where the disk was full).
QString writeFailure(const QFileDevice& file, int systemError)
{
    if (file.error() != QFileDevice::NoError) return file.errorString();
    return systemError != 0 ? qt_error_string(systemError) : QStringLiteral("write error");
}
} // namespace

bool TextFileWriter::open()
{
    errno = 0;  // a failure later names the call that failed after this point
    if (!m_file.open(QIODevice::WriteOnly)) {
        m_problem = QStringLiteral("cannot be written (%1)").arg(m_file.errorString());
        return false;
    }
    m_stream.setDevice(&m_file);
    m_stream.setCodec("UTF-8");
    return true;
}

bool TextFileWriter::commit()
{
    m_stream.flush();
    const int systemError = errno;
    if (m_stream.status() != QTextStream::Ok || !m_file.commit()) {
        m_problem = QStringLiteral("cannot be written (%1)").arg(writeFailure(m_file, systemError ? systemError : errno));
        return false;
    }
    return true;
}

} // namespace fault::exchange
