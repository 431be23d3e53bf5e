#include "znobjectfilewriter.h"

#include <core/assertion.h>

#include "znobjectfile.h"

ZNObjectFileWriter::ZNObjectFileWriter(const QString& path)
    : m_path(path), m_file(ZNObjectFile::platformPath(path))
{
}

qint64 ZNObjectFileWriter::create(const QDomDocument& header, qint64 reserve)
{
    return create(ZNObjectFile::headerBytes(header), reserve);
}

qint64 ZNObjectFileWriter::create(const QByteArray& text, qint64 reserve)
{
    if (!CORE_CHECK(!m_file.isOpen() && m_error < 0, "ZNObjectFileWriter::create",
                    "zanthor/src/znobjectfilewriter"))
        return -1;
    if (!m_file.open(QIODevice::WriteOnly)) {
        ZNObjectFile::reportOpenError(m_path, m_file.errorString());
        m_error = ZNObjectFile::ErrorOpen;
        return -1;
    }
    const qint64 tampon = qMax<qint64>(reserve, 0);
    const qint64 length = text.size();
    const qint64 offset = ZNObjectFile::kGlobalHeaderSize + length + tampon;

    // The zero block first, then the header, then the real global header over the zero
    // block: the file never holds a global header that promises more than was written.
    const QByteArray zeros(ZNObjectFile::kGlobalHeaderSize, '\0');
    const QByteArray block = ZNObjectFile::globalHeaderBlock(length, offset);
    bool ok = m_file.write(zeros) == zeros.size() && m_file.write(text) == length &&
              m_file.seek(0) && m_file.write(block) == block.size() &&
              m_file.seek(ZNObjectFile::kGlobalHeaderSize + length) &&
              ZNObjectFile::writeZeros(m_file, tampon);
    if (!ok) {
        failWith(ZNObjectFile::ErrorWrite);
        return -1;
    }
    m_dataOffset = offset;
    return offset;
}

QIODevice* ZNObjectFileWriter::device() { return m_file.isOpen() ? &m_file : nullptr; }

bool ZNObjectFileWriter::commit()
{
    if (!m_file.isOpen()) return false;
    if (!m_file.commit()) {
        m_error = ZNObjectFile::ErrorWrite;
        m_dataOffset = -1;
        ZNObjectFile::reportWriteError(m_path);
        return false;
    }
    return true;
}

void ZNObjectFileWriter::fail()
{
    if (m_file.isOpen()) failWith(ZNObjectFile::ErrorWrite);
}

void ZNObjectFileWriter::failWith(int code)
{
    m_file.cancelWriting();
    m_file.commit();  // closes the cancelled file; the target is not touched
    m_error = code;
    m_dataOffset = -1;
    ZNObjectFile::reportWriteError(m_path);
}
