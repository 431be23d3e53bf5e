#pragma once
#include <QString>
#include <QStringList>

namespace kfaults {

// Moves the files a command wrote into its staging folder into `folder`, each replacing
// a file of the same name, and appends the moved files' absolute paths to `moved`, so
// that an earlier run's outputs are replaced only once every new one is complete. Empty
// on success; otherwise "<target>: cannot be written".
QString moveIntoPlace(const QStringList& staged, const QString& folder, QStringList& moved);

} // namespace kfaults
