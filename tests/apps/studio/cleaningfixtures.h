#pragma once
// Fault sets with planted duplicates, for the tests of the cleaning assistant.
#include <memory>
#include <vector>

#include <core/multiarray.h>
#include <core/stickrules.h>
#include <znfaultpatchmanager.h>

#include "faultsetdocument.h"

namespace cleaning {

constexpr int kOriginals = 6;   // faults 1..6
constexpr int kSticks = 5;      // per fault
constexpr int kPoints = 6;      // per stick

// The points of original fault `f` (0-based): kSticks sticks 10 apart along z, each of
// kPoints points 20 apart down y, on a plane dipping along x; faults 60 apart along x.
inline std::vector<std::vector<core::vec3>> originalSticks(int f)
{
    std::vector<std::vector<core::vec3>> sticks(kSticks);
    for (int s = 0; s < kSticks; ++s)
        for (int k = 0; k < kPoints; ++k) sticks[s].push_back({60.0 * f + 5.0 * k + s, 20.0 * k, 10.0 * s});
    return sticks;
}

// A copy of `sticks` as an interpreter's second pick of the same fault: each stick's
// points in reverse order, every coordinate that is not one of the fault's extremes moved
// by up to 0.3 (less than half a grid step, so the copy rounds to the original and keeps
// its box).
inline std::vector<std::vector<core::vec3>> jitteredCopy(std::vector<std::vector<core::vec3>> sticks)
{
    core::vec3 low = sticks[0][0], high = sticks[0][0];
    for (const auto& stick : sticks)
        for (const core::vec3& p : stick)
            for (int c = 0; c < 3; ++c) {
                low[c] = std::min(low[c], p[c]);
                high[c] = std::max(high[c], p[c]);
            }
    int n = 0;
    for (auto& stick : sticks) {
        std::reverse(stick.begin(), stick.end());
        for (core::vec3& p : stick)
            for (int c = 0; c < 3; ++c, ++n)
                if (p[c] != low[c] && p[c] != high[c]) p[c] += 0.3 * ((n * 7) % 5 - 2) / 2.0;
    }
    return sticks;
}

// Originals 1..6 named "F1".."F6", then the planted copies of faults 2, 4 and 5 (ids 7, 8,
// 9, named "F2 copy", ...), then fault 10, "F3 shifted", a copy of fault 3 moved by one
// grid step along x: not a duplicate.
inline std::unique_ptr<ZNFaultPatchManager> plantedDuplicates()
{
    std::vector<std::vector<std::vector<core::vec3>>> faults;
    QStringList names;
    for (int f = 0; f < kOriginals; ++f) {
        faults.push_back(originalSticks(f));
        names << QStringLiteral("F%1").arg(f + 1);
    }
    for (int f : {2, 4, 5}) {
        faults.push_back(jitteredCopy(originalSticks(f - 1)));
        names << QStringLiteral("F%1 copy").arg(f);
    }
    auto shifted = originalSticks(2);
    for (auto& stick : shifted)
        for (core::vec3& p : stick) p.x += 1.0;
    faults.push_back(shifted);
    names << QStringLiteral("F3 shifted");

    core::MultiArray<core::vec3> rows(static_cast<int>(faults.size()));
    for (int f = 0; f < int(faults.size()); ++f)
        for (std::size_t s = 0; s < faults[f].size(); ++s) {
            if (s > 0) rows.addElement(f, core::PointWithBool::separator().position(), false);
            for (const core::vec3& p : faults[f][s]) rows.addElement(f, p, false);
        }
    auto set = std::make_unique<ZNFaultPatchManager>(rows, georef::UnitObject());
    for (int f = 0; f < names.size(); ++f) set->findFaultLight(f + 1)->SetFaultName(names[f]);
    return set;
}

inline std::unique_ptr<FaultSetDocument> plantedDocument()
{
    return std::make_unique<FaultSetDocument>(plantedDuplicates(), std::map<int, std::unique_ptr<ZN3DFaultPatch>>(),
                                              QString(), QStringLiteral("Planted"));
}

// The sticks of fault `faultId`, each as its points.
inline std::vector<std::vector<core::vec3>> sticksOf(const ZNFaultPatchManager& set, int faultId)
{
    core::Array<core::PointWithBool> points;
    set.getFaultPickedPointArray(faultId, points);
    std::vector<std::vector<core::vec3>> sticks;
    for (auto r = core::sticks::nextStick(points.data(), points.size(), 0); r.isValid();
         r = core::sticks::nextStick(points.data(), points.size(), r.last + 1)) {
        sticks.emplace_back();
        for (int k = r.first; k <= r.last; ++k) sticks.back().push_back(points[k].position());
    }
    return sticks;
}

// Name and stick count of every fault, in descriptor order.
inline QStringList faultSummary(const ZNFaultPatchManager& set)
{
    QStringList summary;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList())
        summary << QStringLiteral("%1:%2").arg(light->GetFaultName()).arg(sticksOf(set, light->getFaultId()).size());
    return summary;
}

} // namespace cleaning
