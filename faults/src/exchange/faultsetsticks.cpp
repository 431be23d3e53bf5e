#include "exchange/faultsetsticks.h"

#include <memory>
#include <new>

#include <core/multiarray.h>

#include "exchange/stickrows.h"
#include "znfaultpatchmanager.h"

namespace fault::exchange {

ZNFaultPatchManager* faultSetFromSticks(const StickSet& sticks)
{
    core::MultiArray<core::vec3> rows;
    QStringList names;
    if (!toStickRows(sticks, rows, names)) return nullptr;
    const bool time = sticks.domain == VerticalDomain::Time;
    const georef::UnitObject units(georef::UnitObject::SpatialMetre,
                                   time ? georef::UnitObject::VerticalMillisecond
                                        : georef::UnitObject::VerticalMetre);
    std::unique_ptr<ZNFaultPatchManager> set(new (std::nothrow) ZNFaultPatchManager(rows, units));
    if (!set) return nullptr;
    for (int r = 0; r < names.size(); ++r)
        if (ZN3DFaultPatchLight* light = set->findFaultLight(r + 1)) light->SetFaultName(names[r]);
    return set.release();
}

StickSet sticksOfFaultSet(const ZNFaultPatchManager& set)
{
    const QList<ZN3DFaultPatchLight*>& lights = set.getFaultLightList();
    core::MultiArray<core::vec3> rows;
    QStringList names;
    if (!rows.init(lights.size())) return StickSet();
    for (int f = 0; f < lights.size(); ++f) {
        core::Array<core::PointWithBool> points;
        set.getFaultPickedPointArray(lights[f]->getFaultId(), points);
        for (int k = 0; k < points.size(); ++k)
            rows.addElement(f, core::vec3(points[k].x, points[k].y, points[k].z), false);
        names << lights[f]->GetFaultName();
    }
    StickSet sticks = fromStickRows(rows, names);
    sticks.domain = set.GetUnitObject().isTime() ? VerticalDomain::Time : VerticalDomain::Depth;
    return sticks;
}

} // namespace fault::exchange
