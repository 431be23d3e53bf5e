#pragma once
#include <QString>
#include <QStringList>

// The files a user opened last, newest first, kept in the user's settings under a group
// of the caller's. Paths are stored absolute; a path opened again moves to the front;
// the list holds at most maxCount() paths.
class ZNRecentFiles {
public:
    static constexpr int kDefaultMaxCount = 10;

    explicit ZNRecentFiles(const QString& settingsGroup, int maxCount = kDefaultMaxCount);

    QStringList paths() const;
    // Puts `path` first; false when the settings could not be written.
    bool add(const QString& path);
    bool remove(const QString& path);
    bool clear();
    int maxCount() const { return m_maxCount; }

private:
    bool store(const QStringList& paths);

    QString m_group;
    int m_maxCount;
};
