#pragma once
#include <attribute/faultattributesettings.h>

#include "faultextractionpipeline.h"

// The automatic extraction from seismic amplitude: the fault-likelihood attribute
// (attribute/faultattribute.h) of the seismic, then the extraction sequence of
// faultextractionpipeline.h on that likelihood. Observers see the stage "likelihood"
// before the others.
namespace fault {

// Extracts the faults of `seismic` (x inline, y crossline, z sample, with its block
// space; world coordinates in `units`). With settings.releaseLikelihood the seismic is
// emptied as soon as its likelihood is computed, and the likelihood once segmented, so
// that the run holds at most the seismic and the likelihood, then the likelihood and its
// labels. `likelihoodOut`, when given, receives the likelihood (which is then kept
// through the run). Errors as extractFaults, or the attribute's one-line reason.
FaultExtraction extractFaultsFromSeismic(ZN3DImage<float>& seismic, const georef::UnitObject& units,
                                         const attribute::FaultAttributeSettings& attributeSettings,
                                         const FaultExtractionSettings& settings, int progressParent = -1,
                                         const ExtractionStepObserver& observer = {},
                                         ZN3DImage<float>* likelihoodOut = nullptr);

} // namespace fault
