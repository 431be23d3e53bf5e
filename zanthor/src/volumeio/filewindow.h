#pragma once
#include <memory>

#include <QFile>
#include <QtGlobal>

namespace volumeio {

// The bytes `first` .. `end` - 1 of a file open for reading, for as long as the window
// lives: mapped when the system maps them, else read into memory of the window's own.
// bytes() is null when neither worked (memory, a read error or a range beyond the file).
class FileWindow {
public:
    FileWindow(QFile& file, qint64 first, qint64 end);
    ~FileWindow();
    FileWindow(const FileWindow&) = delete;
    FileWindow& operator=(const FileWindow&) = delete;

    const uchar* bytes() const { return m_mapped ? m_mapped : m_copy.get(); }

private:
    QFile& m_file;
    uchar* m_mapped = nullptr;
    std::unique_ptr<uchar[]> m_copy;
};

} // namespace volumeio
