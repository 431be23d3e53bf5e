#pragma once
#include "znseismicviewerabstractengine.h"

// The section viewer engine of a volume: the samples of the section shown are read from
// the displayed block (ZNBloc, a block file read by section or samples in memory); a
// random line takes the trace nearest to each of its points.
class ZNSeismicBlocViewerEngine : public ZNSeismicViewerAbstractEngine {
protected:
    bool readSectionSamples(img::Image& out) override;
};
