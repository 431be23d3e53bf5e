#include "faultmergecandidates.h"

#include <algorithm>
#include <unordered_map>

#include <core/heap.h>

#include "znfaultpatchmanager.h"

namespace fault {

bool mergeCandidatesOfExtraction(ZNFaultPatchManager& automatic, const std::vector<FaultSticks>& faults,
                                 double maxCost, int minFaultSize, core::Array<core::Duplet>& pairs,
                                 core::Array<double>& costs, int progressParent)
{
    pairs.clear();
    costs.clear();
    std::unordered_map<int, int> pickedId;  // automatic root -> picked fault id
    for (std::size_t i = 0; i < faults.size(); ++i) pickedId[faults[i].faultId] = static_cast<int>(i) + 1;

    core::Heap<core::Duplet> heap;
    const bool complete = automatic.getSortedFaultContact(heap, minFaultSize, 1, maxCost, progressParent);
    double cost = 0.0;
    core::Duplet pair;
    while (heap.pop(cost, pair)) {
        const auto a = pickedId.find(pair.a);
        const auto b = pickedId.find(pair.b);
        if (a == pickedId.end() || b == pickedId.end()) continue;
        pairs.add(core::Duplet(std::min(a->second, b->second), std::max(a->second, b->second)));
        costs.add(cost);
    }
    return complete;
}

} // namespace fault
