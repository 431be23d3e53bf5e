#pragma once
#include <QImage>
#include <QString>

#include <zn3dimage.h>

namespace kfaults {

// One section through a volume, as a picture shows it: `values` holds width x height
// samples, row by row from the top (x fastest, then y).
struct Section {
    QString title;                 // e.g. "Inline 64"
    ZN3DImage<float> values;       // width = nx(), height = ny(), nz() = 1
};

// The picture `kfaults likelihood` writes: the seismic of an inline section and of a
// time slice, each beside the fault likelihood of the same section. Seismic is grey,
// black to white over -c..c with c the 99th percentile of the section's absolute
// amplitude (so that a few spikes do not wash it out); likelihood goes from white at 0
// to dark red at 1. Panels keep the sections' proportions, scaled up to at least
// `minPanelPixels` along their longer side and half that across the narrowest panel;
// each panel is centred in a cell as wide as its title at least, so that a narrow
// section (an inline of few crosslines) keeps its whole title. A null image for empty
// sections.
QImage renderAttributePicture(const Section& seismicInline, const Section& likelihoodInline,
                              const Section& seismicSlice, const Section& likelihoodSlice,
                              int minPanelPixels = 320);

// The colour of a seismic amplitude against clip level c, and of a likelihood.
QRgb seismicColour(float amplitude, float clip);
QRgb likelihoodColour(float likelihood);

} // namespace kfaults
