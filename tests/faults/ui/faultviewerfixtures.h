#pragma once
// A survey, a fault set with one meshed fault across it and volumes over the survey, for
// the fault viewer's tests.
#include <functional>
#include <memory>

#include <QPen>

#include <zn3dfaultpatch.h>
#include <znbloc.h>
#include <znfaultpatchmanager.h>

#include "../surfacefixtures.h"

namespace faultviewer {

// The survey: 64 x 64 x 64 cells of 10 world units, world x = 700 + 10 i (east),
// z = 1700 + 10 j (north), y = 1300 + 10 k (down), in time.
inline georef::BlocSpace survey()
{
    core::mat4 m = core::mat4::zero();
    m(0, 0) = 10.0;  // i -> x
    m(2, 1) = 10.0;  // j -> z
    m(1, 2) = 10.0;  // k -> y
    m(0, 3) = 700.0;
    m(1, 3) = 1300.0;
    m(2, 3) = 1700.0;
    m(3, 3) = 1.0;
    return georef::BlocSpace(64, 64, 64, m);
}

inline georef::UnitObject timeUnits()
{
    return georef::UnitObject(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond);
}

// The sticks of a fault striking N30 and dipping 60 through the survey: 4 sticks 80 apart
// of 6 points 50 apart down the dip, bent by `bend` (see surfacefixtures::StickGrid).
inline surfacefixtures::StickGrid sticks(double bend = 0.0)
{
    surfacefixtures::StickGrid g;
    g.sticks = 4;
    g.spacing = 80.0;
    g.bend = bend;
    return g;
}

// A fault set over the survey holding that fault (id 1, named `name`), its surface
// meshed with 10-unit gridding steps and attached, and spare empty patches.
struct Scene {
    ZNFaultPatchManager set{4};
    std::unique_ptr<ZN3DFaultPatch> surface;

    explicit Scene(const QString& name = QStringLiteral("F1"), double bend = 0.0)
    {
        set.setBlocSpace(survey());
        set.SetUnitObjectToAllPatch(timeUnits());
        for (const core::PointWithBool& p : sticks(bend).picks()) set.addPickedPoint(1, p);
        ZN3DFaultPatchLight* light = set.insertNewFaultLight(1);
        light->SetFaultName(name);
        light->setPen(QPen(QColor(230, 120, 20)));
        surface.reset(set.createPicked3DFaultPatch(light));
        surface->SetUnitObject(timeUnits());
        surface->setUtmPrecision(10);
        surface->setTimePrecision(10);
        surface->setMeshingMethod(ZN3DFaultPatch::MinimumEnvelop);
        surface->setInterpolationSize(20);
        surface->updateMeshWithPickedPoint();
    }
};

// A volume over the survey (held in memory) whose sample (i, j, k) is f(i, j, k).
inline std::shared_ptr<ZNBloc> volume(const std::function<float(int, int, int)>& f,
                                      const georef::UnitObject& units = timeUnits())
{
    auto image = std::make_shared<ZN3DImage<float>>(survey());
    for (int k = 0; k < image->nz(); ++k)
        for (int j = 0; j < image->ny(); ++j)
            for (int i = 0; i < image->nx(); ++i) (*image)(i, j, k) = f(i, j, k);
    auto bloc = std::make_shared<ZNBloc>();
    bloc->openImage(image, units);
    return bloc;
}

} // namespace faultviewer
