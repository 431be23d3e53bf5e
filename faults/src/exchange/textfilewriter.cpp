#include "textfilewriter.h"

namespace fault::exchange {

TextFileWriter::TextFileWriter(const QString& path) : m_file(path) {}

bool TextFileWriter::open()
{
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
    if (m_stream.status() != QTextStream::Ok || !m_file.commit()) {
        m_problem = QStringLiteral("cannot be written (%1)").arg(m_file.errorString());
        return false;
    }
    return true;
}

} // namespace fault::exchange
