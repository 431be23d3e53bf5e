#pragma once
#include "stickset.h"

class ZNFaultPatchManager;

// Fault sets to and from the neutral stick form of the exchange files: what an import of
// a stick file makes and what an export writes, for every program of the toolkit.
namespace fault::exchange {

// A new picked fault set (caller owns it) with one fault per fault of `sticks`, in
// order, named as in the file, its sticks separated by separators, in metres and, for a
// time domain, milliseconds. Null when memory runs out.
ZNFaultPatchManager* faultSetFromSticks(const StickSet& sticks);

// The sticks of every fault of `set`, one per descriptor in list order, named after it,
// with the set's vertical domain (time or depth from its units).
StickSet sticksOfFaultSet(const ZNFaultPatchManager& set);

} // namespace fault::exchange
