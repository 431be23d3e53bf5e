#include "znseismicblocviewerengine.h"

#include <cmath>
#include <vector>

bool ZNSeismicBlocViewerEngine::readSectionSamples(img::Image& out)
{
    ZNBloc* bloc = getBloc();
    if (!bloc) return false;
    switch (sectionKind()) {
    case SectionKind::Inline: return bloc->readSection(ZNBloc::InlineSection, sectionIndex(), out);
    case SectionKind::Crossline: return bloc->readSection(ZNBloc::CrosslineSection, sectionIndex(), out);
    case SectionKind::Slice: return bloc->readSection(ZNBloc::TimeSlice, sectionIndex(), out);
    case SectionKind::RandomLine: break;
    }
    const QSize size = imageSize();
    img::Image section(size.width(), size.height());
    if (section.isNull() || size.isEmpty()) return false;
    std::vector<float> trace(static_cast<std::size_t>(size.height()));
    for (int c = 0; c < size.width(); ++c) {
        const core::vec3 at = imageToBloc(QPointF(c, 0.0));
        const int x = static_cast<int>(std::lround(at.x));
        const int y = static_cast<int>(std::lround(at.y));
        if (!bloc->readTrace(x, y, trace.data())) return false;
        for (int r = 0; r < size.height(); ++r) section(c, r) = trace[static_cast<std::size_t>(r)];
    }
    out = std::move(section);
    return true;
}
