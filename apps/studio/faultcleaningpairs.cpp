#include "faultcleaningpairs.h"

#include <cstdlib>
#include <set>
#include <utility>

#include <QCoreApplication>

#include <core/conventions.h>
#include <znfaultpatchmanager.h>
#include <znstridedprogress.h>

#include "faultpairpicture.h"

int presentFault(const ZNFaultPatchManager& set, int id)
{
    if (!set.isValidPatchId(id)) return core::kNoValue;
    const int root = set.getFather(id);
    return set.findFaultLight(root) ? root : core::kNoValue;
}

FaultCleaningPairs findCleaningPairs(ZNFaultPatchManager& set, const core::Array<core::Duplet>& candidates,
                                     const core::Array<double>& candidateCosts, int progressParent)
{
    FaultCleaningPairs found;
    core::Array<core::Duplet> duplicates(256);
    found.cancelled = !set.getSameFaultArray(duplicates, progressParent);
    std::set<std::pair<int, int>> listed;
    for (const core::Duplet& pair : duplicates) {
        if (presentFault(set, pair.a) != pair.a || presentFault(set, pair.b) != pair.b) continue;  // no descriptor
        found.pairs.add(pair);
        found.scores.add(0.0);
        listed.insert({pair.a, pair.b});
    }
    for (int k = 0; k < candidates.size() && k < candidateCosts.size(); ++k) {
        const int a = presentFault(set, candidates[k].a);
        const int b = presentFault(set, candidates[k].b);
        if (a == core::kNoValue || b == core::kNoValue || a == b) continue;
        if (!listed.insert({std::min(a, b), std::max(a, b)}).second) continue;
        found.pairs.add(core::Duplet(-std::min(a, b), std::max(a, b)));
        found.scores.add(candidateCosts[k]);
    }

    const QString title = QCoreApplication::translate("FaultCleaning", "Fault Pair Pictures");
    ZNStridedProgress bar(title, found.pairs.size(), progressParent);
    core::Array<core::PointWithBool> first(1024), second(1024);
    found.pictures.reserve(static_cast<std::size_t>(found.pairs.size()));
    for (const core::Duplet& pair : found.pairs) {
        if (bar.isCancelled()) break;
        set.getFaultPickedPointArray(std::abs(pair.a), first);
        set.getFaultPickedPointArray(std::abs(pair.b), second);
        found.pictures.push_back(faultPairPicture(first, second, FaultCleaningPairs::kPictureSize));
        bar.next();
    }
    // A cancel while drawing keeps the pairs drawn so far, with their scores.
    found.cancelled = found.cancelled || bar.isCancelled();
    const int drawn = static_cast<int>(found.pictures.size());
    found.pairs.resize(drawn);
    found.scores.resize(drawn);
    return found;
}
