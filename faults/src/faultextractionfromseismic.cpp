#include "faultextractionfromseismic.h"

#include <attribute/faultattribute.h>

namespace fault {

FaultExtraction extractFaultsFromSeismic(ZN3DImage<float>& seismic, const georef::UnitObject& units,
                                         const attribute::FaultAttributeSettings& attributeSettings,
                                         const FaultExtractionSettings& settings, int progressParent,
                                         const ExtractionStepObserver& observer, ZN3DImage<float>* likelihoodOut)
{
    attribute::FaultAttributeVolumes attribute =
        attribute::computeFaultAttribute(seismic, attributeSettings, false, progressParent);
    if (!attribute.ok()) {
        FaultExtraction failed;
        failed.error = attribute.error;
        failed.cancelled = attribute.error == QStringLiteral("cancelled");
        return failed;
    }
    if (settings.releaseLikelihood) seismic = ZN3DImage<float>();
    if (observer) observer("likelihood");
    FaultExtractionSettings computed = settings;
    computed.likelihoodGiven = false;
    if (likelihoodOut == nullptr) return extractFaults(attribute.likelihood, units, computed, progressParent, observer);
    *likelihoodOut = std::move(attribute.likelihood);
    return extractFaults(static_cast<const ZN3DImage<float>&>(*likelihoodOut), units, computed, progressParent,
                         observer);
}

} // namespace fault
