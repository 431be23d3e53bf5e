#pragma once
#include <vector>

#include <QImage>

#include <georef/linenumbering.h>
#include <img/colourscale.h>
#include <img/image.h>

#include "znblocviewerengine.h"

// A block viewer engine that shows samples through a colour scale: the section's samples
// (read by the derived engine), the picture made of them (no-value samples transparent),
// the colour scale and its range, and the annotations of the axes (line numbers across,
// time or depth down, or inline and crossline numbers for a time slice).
//
// The range comes from the data or is typed in. From the data, it is taken from the
// section shown when the mode or the map is chosen (or the block replaced), and kept
// while the user steps through sections, so that the same amplitude keeps its colour:
// a symmetric clip of the amplitudes at ColourScale::kDefaultClipPercentile for the
// seismic map, the smallest and largest sample for the others.
class ZNSeismicViewerAbstractEngine : public ZNBlocViewerEngine {
public:
    enum class RangeMode { FromData, Manual };
    // One annotation of an axis: where it stands (an image position along the axis) and
    // what it says.
    struct Tick {
        double position;
        QString label;
    };

    const img::ColourScale& colourScale() const { return m_scale; }
    RangeMode rangeMode() const { return m_rangeMode; }
    // Chooses the map; with the range from the data the range is taken again.
    void setColourMap(img::ColourScale::Map map);
    void setManualRange(float minimum, float maximum);
    // Takes the range from the section shown now, and again whenever the map or the block
    // changes.
    void setRangeFromData();

    // The samples of the section shown, cached until it changes; null without block or
    // when they cannot be read.
    const img::Image* sectionSamples();
    // The section as a picture, one pixel per sample, cached until the section or the
    // colour scale changes; a null image without samples.
    const QImage& sectionImage();
    // The sample under a viewport point; -9999 outside the section.
    float sampleAtViewport(const QPointF& viewport);

    const georef::LineNumbering& lineNumbering() const { return m_lines; }
    void setLineNumbering(const georef::LineNumbering& lines);
    // "Inline 1200", "Crossline 35", "Time 1204 ms" (or "Depth 850 m"), "Random line".
    virtual QString sectionTitle() const;
    // The titles and the annotations of the horizontal and vertical axes, at round values
    // at least `minimumSpacing` viewport pixels apart. Derived engines that show another
    // kind of image say what its axes are.
    virtual QString acrossTitle() const;
    virtual QString downTitle() const;
    virtual std::vector<Tick> acrossTicks(double minimumSpacing) const;
    virtual std::vector<Tick> downTicks(double minimumSpacing) const;

protected:
    // Reads the samples of the section shown; false when they cannot be read.
    virtual bool readSectionSamples(img::Image& out) = 0;
    void sectionChanged() override;
    // Ticks at round values of an axis whose value at image position p is first + step * p,
    // over positions 0..count-1, `pixelsPerPosition` viewport pixels apart: values every
    // 1, 2 or 5 times a power of ten, at least `spacing` pixels apart.
    static std::vector<Tick> continuousTicks(double first, double step, int count, double pixelsPerPosition,
                                             double spacing);
    // The unit of world y ("ms", "s", "m", "ft") and whether it is time, from the block's
    // units.
    QString verticalUnit() const;
    bool isTime() const;

private:
    // value = first + step * image position, along the horizontal or vertical axis.
    struct AxisLine {
        double first = 0.0;
        double step = 1.0;
    };
    AxisLine acrossLine() const;
    AxisLine downLine() const;
    void takeRangeFromData();
    void dropPicture();

    img::ColourScale m_scale;
    RangeMode m_rangeMode = RangeMode::FromData;
    bool m_rangePending = true;   // the range is to be taken from the next samples read
    georef::LineNumbering m_lines;
    img::Image m_samples;
    bool m_samplesRead = false;   // m_samples is the current section's (or could not be read)
    QImage m_picture;
    bool m_pictureMade = false;
};
