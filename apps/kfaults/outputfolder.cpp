#include "outputfolder.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include "extractoutputs.h"

namespace kfaults {
namespace {

// True for a file an extraction writes into its output folder.
bool isOutputName(const QString& name)
{
    static const char* const kNames[] = {OutputNames::faultSet,  OutputNames::surfaces,
                                         OutputNames::volumeRaw, OutputNames::volumeHeader,
                                         OutputNames::volumeBloc, OutputNames::mapView,
                                         OutputNames::perspective, OutputNames::report};
    for (const char* n : kNames)
        if (name == QLatin1String(n)) return true;
    return name.startsWith(QLatin1String("unfolded_fault_")) && name.endsWith(QLatin1String(".png"));
}

QString reasonOf(int error) { return qt_error_string(error); }

} // namespace

OutputFolder::OutputFolder(const QString& path) : m_path(path) {}

OutputFolder::~OutputFolder()
{
    if (m_lock >= 0) ::close(m_lock);
    delete m_staging;  // removes the staging folder and what is left in it
    if (m_created && !m_committed) QDir().rmdir(m_path);  // only when left empty
}

bool OutputFolder::isWritable()
{
    // The nearest folder that exists decides: the output folder or where it would be made.
    QFileInfo existing(QDir(m_path).absolutePath());
    while (!existing.exists() && !existing.isRoot()) existing = QFileInfo(existing.absolutePath());
    if (existing.isDir() && existing.isWritable()) return true;
    m_problem = existing.absoluteFilePath() == QDir(m_path).absolutePath() && !existing.isDir()
                    ? QStringLiteral("%1: not a folder").arg(m_path)
                    : QStringLiteral("%1: cannot create the output folder (%2 is not writable)")
                          .arg(m_path, existing.absoluteFilePath());
    return false;
}

bool OutputFolder::prepare()
{
    m_created = !QFileInfo::exists(m_path);
    if (!QDir().mkpath(m_path)) {
        m_created = false;
        m_problem = QStringLiteral("%1: cannot create the output folder").arg(m_path);
        return false;
    }
    removeAbandonedStaging();
    m_staging = new QTemporaryDir(QDir(m_path).filePath(QLatin1String(kStagingPrefix) + QStringLiteral("XXXXXX")));
    const QString lock = QDir(m_staging->path()).filePath(QLatin1String(kLockFile));
    if (m_staging->isValid())
        m_lock = ::open(QFile::encodeName(lock).constData(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    if (!m_staging->isValid() || m_lock < 0 || ::flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
        m_problem = QStringLiteral("%1: cannot write in the output folder (%2)").arg(m_path, reasonOf(errno));
        return false;
    }
    return true;
}

void OutputFolder::removeAbandonedStaging() const
{
    const QDir dir(m_path);
    const QStringList folders = dir.entryList({QLatin1String(kStagingPrefix) + QLatin1Char('*')},
                                              QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString& name : folders) {
        QDir staging(dir.filePath(name));
        const QByteArray lock = QFile::encodeName(staging.filePath(QLatin1String(kLockFile)));
        const int fd = ::open(lock.constData(), O_RDWR | O_CLOEXEC);
        // No lock file: a run killed before it made one, or a run that makes it right
        // now; left alone until it has aged.
        if (fd < 0) {
            constexpr int kYoungSeconds = 60;
            if (QFileInfo(staging.path()).lastModified().secsTo(QDateTime::currentDateTime()) > kYoungSeconds)
                staging.removeRecursively();
            continue;
        }
        if (::flock(fd, LOCK_EX | LOCK_NB) == 0) staging.removeRecursively();  // its run is gone
        ::close(fd);
    }
}

QString OutputFolder::finalPath(const QString& staged) const
{
    return QDir(m_path).absoluteFilePath(QFileInfo(staged).fileName());
}

void OutputFolder::abandonStaging()
{
    if (m_staging) m_staging->setAutoRemove(false);
    if (m_lock >= 0) ::close(m_lock);
    m_lock = -1;
}

bool OutputFolder::commit(const QStringList& staged, QStringList& moved, int stopAfterMoves)
{
    moved.clear();
    int steps = 0;
    const auto stopHere = [&]() {
        if (stopAfterMoves < 0 || steps++ < stopAfterMoves) return false;
        abandonStaging();
        m_problem = QStringLiteral("stopped after %1 steps of the final move").arg(stopAfterMoves);
        return true;
    };
    const auto fail = [&](const QString& path, int error) {
        m_problem = QStringLiteral("%1: cannot be written (%2)").arg(path, reasonOf(error));
        return false;
    };
    const QString report = QDir(m_path).absoluteFilePath(QLatin1String(OutputNames::report));
    if (stopHere()) return false;
    if (QFileInfo::exists(report) && !QFile::remove(report)) return fail(report, errno);

    QSet<QString> written;
    for (const QString& file : staged) {
        const QString target = finalPath(file);
        written.insert(QFileInfo(target).fileName());
        if (target == report) continue;  // last
        if (stopHere()) return false;
        // rename() replaces the target in one step; QFile::rename would refuse it.
        if (std::rename(QFile::encodeName(file).constData(), QFile::encodeName(target).constData()) != 0)
            return fail(target, errno);
        moved << target;
    }

    if (stopHere()) return false;
    const QDir dir(m_path);
    for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden))
        if (isOutputName(name) && !written.contains(name) && name != QLatin1String(OutputNames::report) &&
            !QFile::remove(dir.filePath(name)))
            return fail(dir.filePath(name), errno);

    for (const QString& file : staged) {
        if (finalPath(file) != report) continue;
        if (stopHere()) return false;
        if (std::rename(QFile::encodeName(file).constData(), QFile::encodeName(report).constData()) != 0)
            return fail(report, errno);
        moved << report;
    }
    m_committed = true;
    return true;
}

} // namespace kfaults
