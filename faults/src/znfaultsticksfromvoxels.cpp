#include "znfaultsticksfromvoxels.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <new>

#include <core/multiarray.h>
#include <geom/symmetriceigen.h>

#include "zn3dfaultpatchlight.h"
#include "znfaultpatchmanager.h"

namespace fault {
namespace {

// A plane with a horizontal component of its normal below this share is taken as
// horizontal: its strike is then the direction of largest spread.
constexpr double kHorizontalPlaneShare = 0.05;

struct FaultFrame {
    core::vec3 centroid;
    core::vec3 strike;
    core::vec3 dip;
    core::vec3 normal;
};

FaultFrame fitFrame(const std::vector<core::vec3>& points)
{
    FaultFrame frame;
    const double n = static_cast<double>(points.size());
    for (const core::vec3& p : points) frame.centroid = frame.centroid + p / n;
    double m[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0};
    for (const core::vec3& p : points) {
        const core::vec3 d = p - frame.centroid;
        const double c[3] = {d.x, d.y, d.z};
        for (int r = 0; r < 3; ++r)
            for (int k = 0; k < 3; ++k) m[3 * r + k] += c[r] * c[k] / n;
    }
    const auto pairs = geom::symmetricEigenPairs(m);
    frame.normal = pairs[2].vector.normalized();
    const core::vec3 vertical(0, 0, 1);
    const core::vec3 horizontalStrike = vertical.cross(frame.normal);
    frame.strike = horizontalStrike.length() > kHorizontalPlaneShare ? horizontalStrike.normalized()
                                                                      : pairs[0].vector.normalized();
    frame.dip = frame.normal.cross(frame.strike).normalized();
    if (frame.dip.z < 0) frame.dip = -frame.dip;
    return frame;
}

// One stick of a section: its voxels (already in the section) sorted along dip and
// averaged over runs of `pointSpacing`.
std::vector<core::vec3> stickOfSection(std::vector<std::pair<double, core::vec3>>& voxels,
                                       double pointSpacing)
{
    std::sort(voxels.begin(), voxels.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<core::vec3> stick;
    std::size_t begin = 0;
    while (begin < voxels.size()) {
        const double runEnd = voxels[begin].first + pointSpacing;
        core::vec3 sum;
        std::size_t end = begin;
        for (; end < voxels.size() && voxels[end].first < runEnd; ++end) sum = sum + voxels[end].second;
        stick.push_back(sum / static_cast<double>(end - begin));
        begin = end;
    }
    return stick;
}

FaultSticks sticksOfPoints(int faultId, const std::vector<core::vec3>& points,
                           const georef::BlocSpace& space, const SticksFromVoxelsSettings& s)
{
    FaultSticks result;
    result.faultId = faultId;
    result.name = QStringLiteral("Fault %1").arg(faultId);
    result.voxelCount = static_cast<long long>(points.size());
    if (!s.problem().isEmpty() || result.voxelCount < std::max(s.minVoxelsPerFault, 3))
        return result;
    const FaultFrame frame = fitFrame(points);
    result.strikeAxis = frame.strike;
    result.dipAxis = frame.dip;
    result.normal = frame.normal;
    std::map<long long, std::vector<std::pair<double, core::vec3>>> sections;
    for (const core::vec3& p : points) {
        const core::vec3 rel = p - frame.centroid;
        const double along = rel.dot(frame.strike) / s.sectionSpacing;
        const double nearest = std::round(along);
        const double offset = std::abs(along - nearest) * s.sectionSpacing;
        if (offset <= s.sectionHalfWidth)
            sections[static_cast<long long>(nearest)].emplace_back(rel.dot(frame.dip), p);
    }
    for (auto& section : sections) {
        std::vector<core::vec3> stick = stickOfSection(section.second, s.pointSpacing);
        if (static_cast<int>(stick.size()) < s.minPointsPerStick) continue;
        for (core::vec3& p : stick) p = space.blocToWorld(p);
        result.sticks.push_back(std::move(stick));
    }
    return result;
}

// Grid positions of the voxels of every patch, grouped by the root of its fault.
std::map<int, std::vector<core::vec3>> voxelsByFault(const ZNFaultPatchManager& set, int onlyFault)
{
    std::map<int, std::vector<core::vec3>> faults;
    const core::MultiArray<core::ByteTriplet>& voxels = set.getPatchVoxels();
    for (int patch = 1; patch < set.getNumberOfPatch() && patch < voxels.getNumberOfArray(); ++patch) {
        const int root = set.getFather(patch);
        if (onlyFault != core::kNoValue && root != onlyFault) continue;
        const core::ByteTriplet* v = voxels.getArray(patch);
        const int count = voxels.getCount(patch);
        if (!v || count <= 0) continue;
        std::vector<core::vec3>& points = faults[root];
        for (int k = 0; k < count; ++k) points.push_back(set.getVoxelPosition(patch, v[k]));
    }
    return faults;
}

} // namespace

QString SticksFromVoxelsSettings::problem() const
{
    if (!(sectionSpacing > 0) || !std::isfinite(sectionSpacing))
        return QStringLiteral("the section spacing must be positive");
    if (!(sectionHalfWidth > 0) || !std::isfinite(sectionHalfWidth))
        return QStringLiteral("the section half width must be positive");
    if (!(pointSpacing > 0) || !std::isfinite(pointSpacing))
        return QStringLiteral("the point spacing must be positive");
    if (minPointsPerStick < 1 || minSticksPerFault < 1 || minVoxelsPerFault < 1)
        return QStringLiteral("the minimum counts must be at least 1");
    return QString();
}

FaultSticks sticksFromVoxels(const ZNFaultPatchManager& set, int faultId,
                             const SticksFromVoxelsSettings& settings)
{
    if (set.isPicked() || !set.isValidPatchId(faultId) || set.getFather(faultId) != faultId) {
        FaultSticks none;
        none.faultId = faultId;
        return none;
    }
    const auto faults = voxelsByFault(set, faultId);
    const auto it = faults.find(faultId);
    if (it == faults.end()) return sticksOfPoints(faultId, {}, set.getBlocSpace(), settings);
    return sticksOfPoints(faultId, it->second, set.getBlocSpace(), settings);
}

std::vector<FaultSticks> sticksOfAllFaults(const ZNFaultPatchManager& set,
                                           const SticksFromVoxelsSettings& settings)
{
    std::vector<FaultSticks> result;
    if (set.isPicked()) return result;
    for (const auto& fault : voxelsByFault(set, core::kNoValue)) {
        FaultSticks sticks = sticksOfPoints(fault.first, fault.second, set.getBlocSpace(), settings);
        if (static_cast<int>(sticks.sticks.size()) >= settings.minSticksPerFault)
            result.push_back(std::move(sticks));
    }
    return result;
}

ZNFaultPatchManager* createPickedFaultSet(const std::vector<FaultSticks>& faults,
                                          const ZNFaultPatchManager& set)
{
    core::MultiArray<core::vec3> rows;
    if (!rows.init(static_cast<int>(faults.size()))) return nullptr;
    const core::vec3 separator(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);
    for (std::size_t f = 0; f < faults.size(); ++f) {
        const int row = static_cast<int>(f);
        // Room for the fault's points and separators at once rather than a few at a time.
        std::size_t entries = faults[f].sticks.empty() ? 0 : faults[f].sticks.size() - 1;
        for (const auto& stick : faults[f].sticks) entries += stick.size();
        if (entries > static_cast<std::size_t>(std::numeric_limits<int>::max()) ||
            !rows.setArraySize(row, static_cast<int>(entries), false))
            return nullptr;
        for (std::size_t s = 0; s < faults[f].sticks.size(); ++s) {
            if (s > 0 && !rows.addElement(row, separator, false)) return nullptr;
            for (const core::vec3& p : faults[f].sticks[s])
                if (!rows.addElement(row, p, false)) return nullptr;
        }
    }
    std::unique_ptr<ZNFaultPatchManager> picked(
        new (std::nothrow) ZNFaultPatchManager(rows, set.getUnitObjectFromMiddlePatch()));
    if (!picked) return nullptr;
    picked->setBlocSpace(set.getBlocSpace());
    for (std::size_t f = 0; f < faults.size(); ++f)
        if (ZN3DFaultPatchLight* light = picked->findFaultLight(static_cast<int>(f) + 1))
            light->SetFaultName(faults[f].name);
    return picked.release();
}

} // namespace fault
