#include "znfaultapifunctions.h"

#include <memory>

#include <QFileInfo>

#include <3dobject/zn3dobjectdraw.h>
#include <georef/unitobject.h>
#include <zneventbus.h>
#include <znobjectfile.h>

#include "zn3dfaultpatch.h"
#include "znfaultpatchmanager.h"

namespace {

const QString kFaultSetType = QStringLiteral("ZNPickedFaultPatchManager");
const QString kObjectType = QStringLiteral("ZN3DObjectDraw");

// Reads the fault stick file at `path` into `set`; false when it is not one or cannot
// be read.
bool readFaultSet(const QString& path, bool is2D, ZNFaultPatchManager& set)
{
    return ZNObjectFile::readObjectType(path) == kFaultSetType &&
           set.readPickedFault(path, is2D, ZNFaultApiFunctions::kNoProgressBar);
}

// The fault's 3D patch, meshed, owned by the caller and detached from the temporary set.
ZN3DFaultPatch* meshedPatch(ZNFaultPatchManager& set, const ZN3DFaultPatchLight* light)
{
    ZN3DFaultPatch* patch = set.findFaultPatch(light->getFaultId());
    if (!patch) patch = set.createPicked3DFaultPatch(light);
    if (!patch) return nullptr;
    patch->updateMeshWithPickedPoint();
    patch->setFaultSet(nullptr);
    return patch;
}

georef::UnitObject unitsOf(bool inTime)
{
    georef::UnitObject units;
    units.setVerticalUnit(inTime ? georef::UnitObject::VerticalMillisecond
                                 : georef::UnitObject::VerticalMetre);
    return units;
}

void applyNames(ZNFaultPatchManager& set, const QStringList& names)
{
    const QList<ZN3DFaultPatchLight*>& lights = set.getFaultLightList();
    if (names.size() != lights.size()) return;
    for (int i = 0; i < lights.size(); ++i) lights[i]->SetFaultName(names[i]);
}

} // namespace

QList<ZN3DObjectDraw*>* ZNFaultApiFunctions::readFault(const QString& path)
{
    auto* objects = new QList<ZN3DObjectDraw*>();
    if (ZNObjectFile::readObjectType(path) == kObjectType) {
        auto object = std::make_unique<ZN3DObjectDraw>();
        if (object->readObjectFile(path)) objects->append(object.release());
        return objects;
    }
    ZNFaultPatchManager set;
    if (!readFaultSet(path, false, set)) return objects;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList())
        if (ZN3DFaultPatch* patch = meshedPatch(set, light)) objects->append(patch);
    return objects;
}

core::MultiArray<ZNFaultStick>* ZNFaultApiFunctions::readFaultStick(const QString& path)
{
    auto* result = new core::MultiArray<ZNFaultStick>();
    ZNFaultPatchManager set;
    if (!readFaultSet(path, false, set)) return result;
    const QList<ZN3DFaultPatchLight*>& lights = set.getFaultLightList();
    result->init(lights.size());
    for (int row = 0; row < lights.size(); ++row) {
        const std::unique_ptr<ZN3DFaultPatch> patch(meshedPatch(set, lights[row]));
        if (!patch) continue;
        core::Array<ZNFaultStick> sticks;
        patch->getFaultStick(patch->getFaultBlocSpace(), sticks, kStickColumnStep);
        for (const ZNFaultStick& stick : sticks) result->addElement(row, stick, false);
    }
    return result;
}

QStringList ZNFaultApiFunctions::readFaultStickNames(const QString& path, bool is2D)
{
    QStringList names;
    ZNFaultPatchManager set;
    if (!readFaultSet(path, is2D, set)) return names;
    QList<ZN3DFaultPatch*> created;
    set.getFaultPatchList(created);
    qDeleteAll(created);
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList())
        names.append(QFileInfo(light->GetFaultName()).baseName());
    return names;
}

std::vector<georef::Crs*>* ZNFaultApiFunctions::readFaultStickCrs(const QString& path, bool is2D)
{
    auto* systems = new std::vector<georef::Crs*>();
    ZNFaultPatchManager set;
    if (!readFaultSet(path, is2D, set)) return systems;
    for (int id = 0; id < set.getNumberOfPatch(); ++id)
        if (set.isPatchPicked(id)) systems->push_back(new georef::Crs(set.getUnitObject(id).getCrs()));
    return systems;
}

core::MultiArray<core::vec3>* ZNFaultApiFunctions::readFaultStickPolyLine(const QString& path, bool is2D)
{
    auto* rows = new core::MultiArray<core::vec3>();
    ZNFaultPatchManager set;
    if (!readFaultSet(path, is2D, set)) return rows;
    const QList<ZN3DFaultPatchLight*>& lights = set.getFaultLightList();
    rows->init(lights.size());
    for (int row = 0; row < lights.size(); ++row) {
        core::Array<core::PointWithBool> points;
        set.getFaultPickedPointArray(set.getFather(lights[row]->getFaultId()), points);
        for (const core::PointWithBool& p : points) rows->addElement(row, p.position(), false);
    }
    return rows;
}

bool ZNFaultApiFunctions::isFaultStickDomainInTime(const QString& path, bool is2D)
{
    if (ZNObjectFile::readObjectType(path) != kFaultSetType) {
        ZNEventBus::sendMessage(ZNEventBus::Error, QStringLiteral("Unknown fault stick format"));
        return false;
    }
    ZNFaultPatchManager set;
    return set.readPickedFault(path, is2D, kNoProgressBar) && set.getUnitObjectFromMiddlePatch().isTime();
}

bool ZNFaultApiFunctions::writeFaultStick(const QString& path, const QStringList& names,
                                          const core::MultiArray<core::vec3>& sticks, bool is2D,
                                          bool inTime, const georef::Crs& crs)
{
    ZNFaultPatchManager set(sticks, kUtmPrecision, kTimePrecision);
    georef::UnitObject units = unitsOf(inTime);
    if (crs.isValid()) units.setBothCrs(crs);
    set.SetUnitObjectToAllPatch(units);
    applyNames(set, names);
    return set.writePickedFault(path, is2D, nullptr, false);
}

bool ZNFaultApiFunctions::write3DFaultStick(const QString& path, const QStringList& names,
                                            const core::MultiArray<geom::Line>& sticks, bool inTime)
{
    ZNFaultPatchManager set(sticks, kUtmPrecision, kTimePrecision, kInterpolationSize);
    set.SetUnitObjectToAllPatch(unitsOf(inTime));
    applyNames(set, names);
    return set.writePickedFault(path, false, nullptr, false);
}

// ----- the 2D and 3D variants -----

QStringList ZNFaultApiFunctions::read2DFaultStickNames(const QString& path) { return readFaultStickNames(path, true); }
QStringList ZNFaultApiFunctions::read3DFaultStickNames(const QString& path) { return readFaultStickNames(path, false); }
std::vector<georef::Crs*>* ZNFaultApiFunctions::read2DFaultStickCrs(const QString& path) { return readFaultStickCrs(path, true); }
std::vector<georef::Crs*>* ZNFaultApiFunctions::read3DFaultStickCrs(const QString& path) { return readFaultStickCrs(path, false); }
core::MultiArray<core::vec3>* ZNFaultApiFunctions::read2DFaultStickPolyLine(const QString& path) { return readFaultStickPolyLine(path, true); }
core::MultiArray<core::vec3>* ZNFaultApiFunctions::read3DFaultStickPolyLine(const QString& path) { return readFaultStickPolyLine(path, false); }
bool ZNFaultApiFunctions::is2DFaultStickDomainInTime(const QString& path) { return isFaultStickDomainInTime(path, true); }
bool ZNFaultApiFunctions::is3DFaultStickDomainInTime(const QString& path) { return isFaultStickDomainInTime(path, false); }

bool ZNFaultApiFunctions::write2DFaultStick(const QString& path, const QStringList& names,
                                            const core::MultiArray<core::vec3>& sticks, bool inTime,
                                            const georef::Crs& crs)
{
    return writeFaultStick(path, names, sticks, true, inTime, crs);
}

bool ZNFaultApiFunctions::write3DFaultStick(const QString& path, const QStringList& names,
                                            const core::MultiArray<core::vec3>& sticks, bool inTime,
                                            const georef::Crs& crs)
{
    return writeFaultStick(path, names, sticks, false, inTime, crs);
}
