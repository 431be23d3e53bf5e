#pragma once
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace kfaults {

// The output folder of an extraction and the staging folder its outputs are written
// into before they take their place.
//
// A complete run is marked by its report.json, moved in last. The final move withdraws
// the previous report first, then renames each staged file over the output of the same
// name (rename replaces a file in one step: at every moment either the previous or the
// new file is there), removes the outputs of earlier runs this run did not write again
// (unfolded_fault_<id>.png of other faults, pictures after a run without pictures), and
// moves the report in. A run stopped anywhere in that sequence leaves no report.json, so
// a folder with a report holds exactly that report's outputs.
//
// Staging folders (".kfaults-partial-XXXXXX") hold a lock file that their run keeps
// locked while it lives; a run removes the staging folders of earlier runs whose lock it
// can take (runs that were killed), never those of a run still going.
class OutputFolder {
public:
    explicit OutputFolder(const QString& path);
    ~OutputFolder();
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    // True when the output folder exists and is writable, or can be created: checked
    // before a long run, which creates nothing until its outputs are ready. False, with
    // problem(), otherwise.
    bool isWritable();
    // Creates the output folder when missing, removes abandoned staging folders and makes
    // this run's one. False, with problem(), when any of it fails. A folder created here
    // is removed again when the run ends without committing and it is left empty.
    bool prepare();
    // Where the outputs are written before they take their place.
    QString stagingPath() const { return m_staging ? m_staging->path() : QString(); }
    // The path `staged` (a file of the staging folder) takes in the output folder.
    QString finalPath(const QString& staged) const;

    // Moves `staged` (files of the staging folder, report.json last) into the output
    // folder as described above; `moved` receives their final paths in that order. False,
    // with problem(), when a step fails: what was moved stays, no report is left.
    // `stopAfterMoves` >= 0 stops the sequence after that many steps (the withdrawal of
    // the previous report, each rename, the removal of earlier outputs, the report), as a
    // killed run would, and leaves the staging folder behind unlocked: for tests.
    bool commit(const QStringList& staged, QStringList& moved, int stopAfterMoves = -1);

    const QString& problem() const { return m_problem; }

    static constexpr const char* kStagingPrefix = ".kfaults-partial-";
    static constexpr const char* kLockFile = ".lock";

private:
    void removeAbandonedStaging() const;
    void abandonStaging();

    QString m_path;
    bool m_created = false;              // the output folder was made by prepare()
    bool m_committed = false;
    QTemporaryDir* m_staging = nullptr;  // owned
    int m_lock = -1;                     // open, locked descriptor of the lock file
    QString m_problem;
};

} // namespace kfaults
