#pragma once
#include <memory>
#include <vector>

#include <QList>
#include <QObject>

#include <znvolume.h>

#include "faultsetdocument.h"

class ZNObject;

// What the studio has open: volumes and fault set documents, in the order they were
// opened. Owns them; views, the object tree and dialogs read them and follow the
// signals. Used on the GUI thread only.
class StudioProject : public QObject {
    Q_OBJECT
public:
    explicit StudioProject(QObject* parent = nullptr);
    ~StudioProject() override;

    ZNVolume* addVolume(std::unique_ptr<ZNVolume> volume);
    void removeVolume(ZNVolume* volume);
    QList<ZNVolume*> volumes() const;

    FaultSetDocument* addFaultSet(std::unique_ptr<FaultSetDocument> document);
    void removeFaultSet(FaultSetDocument* document);
    QList<FaultSetDocument*> faultSets() const;
    // The document of a fault set, or of one of its surfaces; null for another object.
    FaultSetDocument* documentOf(const ZNObject* object) const;
    // The document whose file is `path` (compared as absolute paths); null for none.
    FaultSetDocument* documentWithPath(const QString& path) const;

    // `base` when no volume or fault set is called so, else "base (2)", "base (3)"...
    QString uniqueName(const QString& base) const;
    // True when a fault set has unsaved changes.
    bool hasUnsavedChanges() const;

signals:
    void volumeAdded(ZNVolume* volume);
    void volumeRemoved(ZNVolume* volume);  // emitted before the volume is deleted
    void faultSetAdded(FaultSetDocument* document);
    void faultSetRemoved(FaultSetDocument* document);  // emitted before it is deleted

private:
    std::vector<std::unique_ptr<ZNVolume>> m_volumes;
    std::vector<std::unique_ptr<FaultSetDocument>> m_faultSets;
};
