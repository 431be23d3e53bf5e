#include "zniconhandler.h"

#include <QCoreApplication>
#include <QHash>

namespace {
QHash<QString, QIcon>& icons()
{
    static QHash<QString, QIcon> registry;
    // Pixmaps go with the application that made them, not after it.
    static const bool cleared = [] {
        qAddPostRoutine([] { icons().clear(); });
        return true;
    }();
    Q_UNUSED(cleared);
    return registry;
}
} // namespace

QIcon ZNIconHandler::icon(const QString& name)
{
    return icons().value(name);
}

bool ZNIconHandler::hasIcon(const QString& name)
{
    return icons().contains(name);
}

void ZNIconHandler::setIcon(const QString& name, const QIcon& icon)
{
    icons().insert(name, icon);
}

bool ZNIconHandler::setDefaultIcon(const QString& name, const QIcon& icon)
{
    if (hasIcon(name)) return false;
    setIcon(name, icon);
    return true;
}
