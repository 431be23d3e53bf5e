#include "znprojectbrowserpluginvolume.h"

#include "znprojectbrowsermodel.h"

ZNProjectBrowserPluginVolume::ZNProjectBrowserPluginVolume(ZNProjectBrowserModel* model, QObject* parent)
    : ZNProjectBrowserPluginAbstract(model, parent)
{
}

QStringList ZNProjectBrowserPluginVolume::volumeNameFilters()
{
    return {QStringLiteral("*.sgy"), QStringLiteral("*.segy"), QStringLiteral("*.bloc")};
}

void ZNProjectBrowserPluginVolume::fillFiles(QDomElement element, QString directory, ZNProjectBrowserItem* branch,
                                             QStringList nameFilters)
{
    if (!model()) return;
    const int id = directoryId(element);
    for (const QString& path : listFiles(directory, nameFilters)) model()->addFileItem(branch, path, id);
}
