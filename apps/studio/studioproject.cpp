#include "studioproject.h"

#include <algorithm>

#include <QFileInfo>

StudioProject::StudioProject(QObject* parent) : QObject(parent) {}

StudioProject::~StudioProject()
{
    // Documents first: their surfaces refer to nothing else, and views go with the window.
    m_faultSets.clear();
    m_volumes.clear();
}

ZNVolume* StudioProject::addVolume(std::unique_ptr<ZNVolume> volume)
{
    if (!volume) return nullptr;
    ZNVolume* added = volume.get();
    m_volumes.push_back(std::move(volume));
    emit volumeAdded(added);
    return added;
}

void StudioProject::removeVolume(ZNVolume* volume)
{
    const auto it = std::find_if(m_volumes.begin(), m_volumes.end(),
                                 [volume](const auto& v) { return v.get() == volume; });
    if (it == m_volumes.end()) return;
    emit volumeRemoved(volume);
    m_volumes.erase(it);
}

QList<ZNVolume*> StudioProject::volumes() const
{
    QList<ZNVolume*> list;
    for (const auto& v : m_volumes) list << v.get();
    return list;
}

FaultSetDocument* StudioProject::addFaultSet(std::unique_ptr<FaultSetDocument> document)
{
    if (!document) return nullptr;
    FaultSetDocument* added = document.get();
    added->setParent(nullptr);  // owned here, not by a QObject parent
    m_faultSets.push_back(std::move(document));
    emit faultSetAdded(added);
    return added;
}

void StudioProject::removeFaultSet(FaultSetDocument* document)
{
    const auto it = std::find_if(m_faultSets.begin(), m_faultSets.end(),
                                 [document](const auto& d) { return d.get() == document; });
    if (it == m_faultSets.end()) return;
    emit faultSetRemoved(document);
    m_faultSets.erase(it);
}

QList<FaultSetDocument*> StudioProject::faultSets() const
{
    QList<FaultSetDocument*> list;
    for (const auto& d : m_faultSets) list << d.get();
    return list;
}

FaultSetDocument* StudioProject::documentOf(const ZNObject* object) const
{
    if (!object) return nullptr;
    for (const auto& d : m_faultSets)
        if (static_cast<const ZNObject*>(d->faultSet()) == object || d->faultIdOfSurface(object) != -9999)
            return d.get();
    return nullptr;
}

FaultSetDocument* StudioProject::documentWithPath(const QString& path) const
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (const auto& d : m_faultSets)
        if (!d->path().isEmpty() && QFileInfo(d->path()).absoluteFilePath() == absolute) return d.get();
    return nullptr;
}

QString StudioProject::uniqueName(const QString& base) const
{
    const auto taken = [this](const QString& name) {
        for (const auto& v : m_volumes)
            if (v->name() == name) return true;
        for (const auto& d : m_faultSets)
            if (d->name() == name) return true;
        return false;
    };
    if (!taken(base)) return base;
    for (int n = 2;; ++n) {
        const QString candidate = QStringLiteral("%1 (%2)").arg(base).arg(n);
        if (!taken(candidate)) return candidate;
    }
}

bool StudioProject::hasUnsavedChanges() const
{
    return std::any_of(m_faultSets.begin(), m_faultSets.end(),
                       [](const auto& d) { return d->isModified(); });
}
