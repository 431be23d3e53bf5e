// Duplicated faults of a fault set, and the summary of faults with degenerate patches.
#include "znfaultpatchmanager.h"

#include "zn3dfaultpatch.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <QStringList>

#include <core/conventions.h>
#include <core/stickrules.h>

#include "znfaultsurface.h"
#include <znstridedprogress.h>

namespace {

using Box = std::array<double, 6>;   // min x, y, z then max x, y, z, block space

const QString kSimilarTitle = QStringLiteral("Similar Fault Detection");

// Half away from zero, as every rounding of this comparison.
double roundHalfAway(double v) { return v > 0.0 ? std::floor(v + 0.5) : std::ceil(v - 0.5); }

bool isDefined(const core::vec3& p)
{
    return p.x != core::kNoValueReal && p.y != core::kNoValueReal && p.z != core::kNoValueReal;
}

bool isSinglePoint(const Box& b) { return b[0] == b[3] && b[1] == b[4] && b[2] == b[5]; }

// The block-space coordinates of one stick's defined points, in increasing order through
// a min-heap, each rounded to a whole grid position.
core::Array<double> canonicalStick(const core::PointWithBool* points, core::sticks::StickRange r,
                                   const georef::BlocSpace& space)
{
    core::Heap<int> heap(64);
    for (int k = r.first; k <= r.last; ++k) {
        if (!isDefined(points[k].position())) continue;
        const core::vec3 p = space.worldToBloc(points[k].position());
        for (int c = 0; c < 3; ++c) heap.push(p[c], 0);
    }
    core::Array<double> values(heap.size() + 1);
    double value = 0.0;
    int unused = 0;
    while (heap.pop(value, unused)) values.add(roundHalfAway(value));
    return values;
}

QString faultName(const ZNFaultPatchManager& set, int faultId)
{
    const ZN3DFaultPatchLight* light = set.findFaultLight(faultId);
    return light ? light->GetFaultName() : QString();
}

} // namespace

// ----- per-patch stick counts -----

int ZNFaultPatchManager::getNumberOfSticks(int patch) const
{
    if (!isValidPatchId(patch)) return 0;
    return core::sticks::countSticks(m_pickedPoints.getArray(patch),
                                     m_pickedPoints.getCount(patch));
}

int ZNFaultPatchManager::getNumberOfIsolatedPickedPoints(int patch) const
{
    if (!isValidPatchId(patch)) return 0;
    const core::PointWithBool* points = m_pickedPoints.getArray(patch);
    const int count = m_pickedPoints.getCount(patch);
    int isolated = 0;
    for (int k = 0; k < count; ++k) isolated += core::sticks::isPointIsolated(points, count, k);
    return isolated;
}

// ----- domains and types -----

bool ZNFaultPatchManager::isSameVerticalDomain(const core::Array<int>& patchList) const
{
    int firstDomain = core::kNoValue;
    for (int id : patchList) {
        const ZNFaultPatch* patch = getFaultPatch(id);
        if (!patch) continue;
        const int domain = patch->unitObject().getDomainIndex();
        if (firstDomain == core::kNoValue) firstDomain = domain;
        if (domain != firstDomain) return false;
    }
    return true;
}

bool ZNFaultPatchManager::isSameVerticalDomain(int fault) const
{
    core::Array<int> list(64);
    getPatchListWithLinkedList(fault, list, true);
    return isSameVerticalDomain(list);
}

bool ZNFaultPatchManager::isSameVerticalDomain(int faultA, int faultB) const
{
    core::Array<int> list(64);
    getPatchListWithLinkedList(faultA, list, true);
    getPatchListWithLinkedList(faultB, list, false);
    return isSameVerticalDomain(list);
}

bool ZNFaultPatchManager::isSameVerticalDomain(const QList<ZNFaultSurface*>& faults) const
{
    core::Array<int> list(64);
    for (const ZNFaultSurface* surface : faults)
        if (surface) getPatchListWithLinkedList(surface->getFaultSurfaceId(), list, false);
    return isSameVerticalDomain(list);
}

bool ZNFaultPatchManager::isSameVerticalDomain(const QList<ZN3DFaultPatch*>& faults) const
{
    QList<ZNFaultSurface*> surfaces;
    for (ZN3DFaultPatch* patch : faults) surfaces.append(patch);
    return isSameVerticalDomain(surfaces);
}

bool ZNFaultPatchManager::isSameFaultType(const core::Array<int>& patchList, bool& is2d) const
{
    bool seen = false;
    bool first = false;
    for (int id : patchList) {
        const ZNFaultPatch* patch = getFaultPatch(id);
        if (!patch) continue;
        if (!seen) {
            first = patch->is2dFaultPatch();
            seen = true;
        } else if (patch->is2dFaultPatch() != first) {
            return false;
        }
    }
    if (seen) is2d = first;
    return true;
}

// ----- boxes -----

bool ZNFaultPatchManager::getPatchListBlocRect(const core::Array<int>& patchList,
                                               double box[6]) const
{
    Box b{};
    bool any = false;
    for (int id : patchList) {
        const int count = getNumberOfPickedPoint(id);
        const core::PointWithBool* points = m_pickedPoints.getArray(id);
        for (int k = 0; points && k < count; ++k) {
            if (points[k].isSeparator() || !isDefined(points[k].position())) continue;
            const core::vec3 p = m_blocSpace.worldToBloc(points[k].position());
            for (int c = 0; c < 3; ++c) {
                b[c] = any ? std::min(b[c], p[c]) : p[c];
                b[c + 3] = any ? std::max(b[c + 3], p[c]) : p[c];
            }
            any = true;
        }
    }
    if (any) std::copy(b.begin(), b.end(), box);
    return any;
}

// ----- the duplicate test -----

bool ZNFaultPatchManager::testSameFault(int faultA, int faultB) const
{
    core::Array<int> listA(64);
    core::Array<int> listB(64);
    if (!collectFault(faultA, listA) || !collectFault(faultB, listB)) return false;
    Box boxA, boxB;
    if (!getPatchListBlocRect(listA, boxA.data()) || !getPatchListBlocRect(listB, boxB.data()))
        return false;
    return sameFaultWithBoxes(faultA, faultB, boxA.data(), boxB.data());
}

bool ZNFaultPatchManager::sameFaultWithBoxes(int faultA, int faultB, const double boxA[6],
                                             const double boxB[6]) const
{
    if (!isSameVerticalDomain(faultA, faultB)) return false;
    if (getNumberOfFaultPickedPoint(faultA) != getNumberOfFaultPickedPoint(faultB)) return false;
    for (int k = 0; k < 6; ++k)
        if (!(boxA[k] == boxB[k])) return false;   // exact: no tolerance, NaN differs

    core::Array<core::PointWithBool> pointsA(256);
    core::Array<core::PointWithBool> pointsB(256);
    getFaultPickedPointArray(faultA, pointsA);
    getFaultPickedPointArray(faultB, pointsB);
    const int countA = pointsA.size();
    const int countB = pointsB.size();
    if (core::sticks::countSticks(pointsA.data(), countA) !=
        core::sticks::countSticks(pointsB.data(), countB))
        return false;
    using core::sticks::nextStick;
    for (auto a = nextStick(pointsA.data(), countA, 0), b = nextStick(pointsB.data(), countB, 0);
         a.isValid() && b.isValid();
         a = nextStick(pointsA.data(), countA, a.last + 1),
              b = nextStick(pointsB.data(), countB, b.last + 1)) {
        const core::Array<double> valuesA = canonicalStick(pointsA.data(), a, m_blocSpace);
        const core::Array<double> valuesB = canonicalStick(pointsB.data(), b, m_blocSpace);
        if (valuesA.size() != valuesB.size() ||
            !std::equal(valuesA.begin(), valuesA.end(), valuesB.begin()))
            return false;
    }
    return true;
}

// ----- detection -----

bool ZNFaultPatchManager::getSameFaultArray(core::Array<core::Duplet>& pairs, int progressParent)
{
    incrementCurrentIndex();
    const int n = getNumberOfPatch();
    std::vector<core::Array<int>> lists(std::max(0, n));   // of each fault, at its root
    for (int id = 1; id < n; ++id)
        if (getFather(id) == id) getPatchListWithLinkedList(id, lists[id], true);
    std::vector<Box> boxes(lists.size());
    std::vector<char> hasBox(lists.size(), 0);
    // Boxes are independent of each other: computed in parallel, the same on any thread count.
#pragma omp parallel for schedule(dynamic, 64)
    for (int id = 1; id < n; ++id)
        hasBox[id] = !lists[id].empty() && getPatchListBlocRect(lists[id], boxes[id].data()) &&
                     !isSinglePoint(boxes[id]);
    core::Heap<int> heap(1024);
    for (int id = 1; id < n; ++id)
        if (hasBox[id]) heap.push(roundHalfAway(boxes[id][0]), id);

    ZNStridedProgress bar(kSimilarTitle, heap.size(), progressParent);
    core::Array<int> run(16);
    double key = 0.0;
    int fault = 0;
    while (!bar.isCancelled() && heap.pop(key, fault)) {
        run.clear();
        run.add(fault);
        bar.next();
        while (!bar.isCancelled() && heap.top() && heap.top()->cost == key) {
            heap.pop(key, fault);
            run.add(fault);
            bar.next();
        }
        std::sort(run.begin(), run.end());
        for (int i = 0; i < run.size(); ++i)
            for (int j = i + 1; j < run.size(); ++j)
                if (sameFaultWithBoxes(run[i], run[j], boxes[run[i]].data(), boxes[run[j]].data()))
                    pairs.add(core::Duplet(run[i], run[j]));
    }
    return !bar.isCancelled();
}

bool ZNFaultPatchManager::getRemovedSameFaultArray(core::Array<core::Duplet>& pairs,
                                                   int progressParent,
                                                   QList<QPair<QString, QString>>* names)
{
    const bool complete = getSameFaultArray(pairs, progressParent);
    if (names) {
        names->clear();
        for (const core::Duplet& pair : pairs)
            names->append({faultName(*this, pair.a), faultName(*this, pair.b)});
    }
    return complete;
}

// ----- edge cases -----

QString ZNFaultPatchManager::getFaultsEdgeCasesAnalysis(const core::Array<int>& faults) const
{
    enum Case { NoPickedPoints, OnlyIsolated, NoSurface, OneStick, CaseCount };
    static const char* const kMessages[CaseCount] = {
        "%1 with a patch without picked points", "%1 with a patch with only isolated picked points",
        "%1 with a no surface patch", "%1 with a one stick patch"};
    int counters[CaseCount] = {};
    core::Array<int> list(64);
    core::Array<core::vec3> vertices(16);
    core::Array<core::Triplet> triangles(16);
    for (int fault : faults) {
        getPatchListWithLinkedList(fault, list, true);
        for (int patch : list) {
            const int valid = getNumberOfValidPickedPoint(patch);
            const int sticks = getNumberOfSticks(patch);
            int found = CaseCount;
            if (valid == 0) {
                found = NoPickedPoints;
            } else if (getNumberOfIsolatedPickedPoints(patch) == valid) {
                found = OnlyIsolated;
            } else if (sticks > 1) {
                const ZNFaultSurface* surface = findFaultSurface(getFather(fault));
                if (!surface || !surface->getSurfaceMesh(vertices, triangles) || triangles.empty())
                    found = NoSurface;
            } else if (sticks == 1) {
                found = OneStick;
            }
            if (found == CaseCount) continue;
            ++counters[found];
            break;
        }
    }
    QStringList parts;
    for (int c = 0; c < CaseCount; ++c)
        if (counters[c] > 0) parts << QString::fromLatin1(kMessages[c]).arg(counters[c]);
    return parts.join(QStringLiteral(", "));
}
