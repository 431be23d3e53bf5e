#include "znprojectbrowserpluginabstract.h"

#include <QDir>

#include "znprojectbrowsermodel.h"

ZNProjectBrowserPluginAbstract::ZNProjectBrowserPluginAbstract(ZNProjectBrowserModel* model, QObject* parent)
    : QObject(parent), m_model(model)
{
}

ZNProjectBrowserPluginAbstract::~ZNProjectBrowserPluginAbstract() = default;

int ZNProjectBrowserPluginAbstract::directoryId(const QDomElement& element)
{
    return element.attribute(QStringLiteral("directoryId")).toInt(nullptr, 10);
}

QStringList ZNProjectBrowserPluginAbstract::listFiles(const QString& directory, const QStringList& nameFilters)
{
    QStringList paths;
    if (directory.isEmpty()) return paths;
    const QDir dir(directory);
    for (const QFileInfo& entry : dir.entryInfoList(nameFilters, QDir::Files | QDir::NoDotAndDotDot, QDir::Name))
        paths << entry.absoluteFilePath();
    return paths;
}
