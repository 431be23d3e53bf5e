#include "volumeio/filewindow.h"

#include <new>

namespace volumeio {

FileWindow::FileWindow(QFile& file, qint64 first, qint64 end) : m_file(file)
{
    const qint64 length = end - first;
    if (first < 0 || length <= 0 || end > file.size()) return;
    m_mapped = file.map(first, length);
    if (m_mapped) return;
    m_copy.reset(new (std::nothrow) uchar[static_cast<std::size_t>(length)]);
    if (!m_copy || !file.seek(first) || file.read(reinterpret_cast<char*>(m_copy.get()), length) != length)
        m_copy.reset();
}

FileWindow::~FileWindow()
{
    if (m_mapped) m_file.unmap(m_mapped);
}

} // namespace volumeio
