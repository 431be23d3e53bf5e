#pragma once
#include <QDomElement>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include "znprojectbrowsermodel.h"

class ZNProjectBrowserItem;

// The base of the project browser's plugins: each fills one branch of the host's project
// browser (ZNProjectBrowserModel) with the files of its kind, and may list what each file
// holds under the file's item. A plugin lives on the model's thread and touches the model
// there only.
class ZNProjectBrowserPluginAbstract : public QObject {
    Q_OBJECT
public:
    // `model` is the browser the plugin fills (not owned).
    explicit ZNProjectBrowserPluginAbstract(ZNProjectBrowserModel* model, QObject* parent = nullptr);
    ~ZNProjectBrowserPluginAbstract() override;

    // The model given at construction; null once it is gone.
    ZNProjectBrowserModel* model() const { return m_model; }

    // Called by the host when it builds the branch `branch` (emptied before): adds the
    // items of the files of `directory` whose names match `nameFilters` (wildcards;
    // every file when empty). `element` is the host's description of the directory: its
    // attribute "directoryId" holds the host's identifier of the directory (decimal).
    virtual void fillFiles(QDomElement element, QString directory, ZNProjectBrowserItem* branch,
                           QStringList nameFilters) = 0;

    // The identifier "directoryId" of a directory's description; 0 when it has none.
    static int directoryId(const QDomElement& element);
    // The absolute paths of the entries of `directory` that are files ("." and ".."
    // left out) and match `nameFilters` (case-insensitive; every file when empty), sorted
    // by name; empty for a directory that cannot be read.
    static QStringList listFiles(const QString& directory, const QStringList& nameFilters);

private:
    QPointer<ZNProjectBrowserModel> m_model;
};
