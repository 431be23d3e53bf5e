#include "textfilewriter.h"

#include <cerrno>

#include <znwritefailure.h>

namespace fault::exchange {

TextFileWriter::TextFileWriter(const QString& path) : m_file(path) {}


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
        m_problem = QStringLiteral("cannot be written (%1)").arg(ZNWriteFailure::reason(m_file, systemError ? systemError : errno));
        return false;
    }
    return true;
}

} // namespace fault::exchange
