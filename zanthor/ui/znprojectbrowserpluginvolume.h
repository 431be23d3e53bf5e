#pragma once
#include "znprojectbrowserpluginabstract.h"

// The volumes of a project directory in the host's project browser: one item per SEG-Y
// or block file, nothing read from the files themselves.
class ZNProjectBrowserPluginVolume : public ZNProjectBrowserPluginAbstract {
    Q_OBJECT
public:
    explicit ZNProjectBrowserPluginVolume(ZNProjectBrowserModel* model, QObject* parent = nullptr);

    // The names of the volume files: "*.sgy", "*.segy", "*.bloc".
    static QStringList volumeNameFilters();

    void fillFiles(QDomElement element, QString directory, ZNProjectBrowserItem* branch,
                   QStringList nameFilters) override;
};
