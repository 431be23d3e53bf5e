#pragma once
#include <vector>

#include <core/vec3.h>

class ZNFaultPatchManager;

namespace kfaults {

// The sticks of the fault of `faultId` in a picked fault set: its patches' points in
// linked-list order, split at separators, empty sticks dropped. Empty for a bad id.
std::vector<std::vector<core::vec3>> sticksOfFault(const ZNFaultPatchManager& set, int faultId);

} // namespace kfaults
