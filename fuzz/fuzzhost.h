#pragma once
// What the fuzz targets share: the host they run in (messages of refused files dropped,
// the user's viewer settings in an empty folder, a scratch folder for what a target
// writes) and the shape a written fault set must read back with.
#include <QStringList>
#include <QTemporaryDir>

#include <zn3dfaultpatchlight.h>
#include <zneventbus.h>
#include <znfaultpatchmanager.h>
#include <znfilename.h>

namespace fuzzhost {

// Messages of refused files are expected by the thousand: they are dropped.
class SilentBus : public ZNEventBus {
protected:
    void message(int, const QString&) override {}
};

// Installs the host (once) and returns the scratch folder.
inline QTemporaryDir& install()
{
    static SilentBus bus;
    ZNEventBus::install(&bus);
    // Descriptors read the user's viewer settings: keep them in an empty folder.
    static QTemporaryDir settings;
    qputenv("KORVALITH_SETTINGS_DIR", settings.path().toUtf8());
    static QTemporaryDir scratch;
    return scratch;
}

// Patches with their fathers and point counts, and faults with their ids and names, as
// a fault set file stores them when `asStored`.
inline QStringList faultSetShape(const ZNFaultPatchManager& set, bool asStored)
{
    QStringList shape;
    for (int i = 0; i < set.getNumberOfPatch(); ++i)
        shape << QStringLiteral("%1:%2").arg(set.getFaultPatch(i)->getFather()).arg(set.getPickedPoints().getCount(i));
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList())
        shape << QStringLiteral("%1 %2")
                     .arg(light->getFaultId())
                     .arg(asStored ? ZNFileName::completeBaseName(light->GetFaultName()) : light->GetFaultName());
    return shape;
}

// Writes `set` into the scratch folder in the given form and, when the writer accepts
// it, aborts unless its reader reads the file back valid and of the same shape.
inline void writeBackAndReadAgain(ZNFaultPatchManager& set, bool twoD, QTemporaryDir& scratch)
{
    const QString path = scratch.filePath(QStringLiteral("again.faultset"));
    if (!set.writePickedFault(path, twoD, nullptr, false)) return;  // refused, nothing written
    ZNFaultPatchManager again;
    if (!again.readPickedFault(path, twoD, ZNFaultPatchManager::kNoProgressBar) || !again.isValid() ||
        faultSetShape(again, false) != faultSetShape(set, true))
        std::abort();
}

} // namespace fuzzhost
