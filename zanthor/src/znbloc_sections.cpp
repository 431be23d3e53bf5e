// Sections and traces of a block: what the section viewers read.
#include "znbloc.h"

#include <cstring>

namespace {
// Width and height of a section of `axis` in a block of nx x ny x nz; (0, 0) for an
// unknown axis.
std::pair<int, int> sectionSize(int axis, int nx, int ny, int nz)
{
    switch (axis) {
    case ZNBloc::InlineSection: return {ny, nz};
    case ZNBloc::CrosslineSection: return {nx, nz};
    case ZNBloc::TimeSlice: return {nx, ny};
    default: return {0, 0};
    }
}
} // namespace

bool ZNBloc::readSection(int axis, int index, img::Image& out)
{
    const int extent = axis == InlineSection ? nx() : axis == CrosslineSection ? ny() : nz();
    const std::pair<int, int> size = sectionSize(axis, nx(), ny(), nz());
    if (size.first == 0 || index < 0 || index >= extent || (!m_reader.isOpen() && !m_memory)) return false;
    if (axis == TimeSlice && !m_memory) return readSlice(index, out);  // one run of the file
    img::Image section(size.first, size.second);
    if (section.isNull()) return false;
    const qint64 rowStride = nx();
    const qint64 sliceStride = qint64(nx()) * ny();
    // A crossline of a file is one run of the file per slice: read by runs, not through
    // the mapping, whose faults would read ahead far beyond each run on a cold cache.
    if (m_memory || (axis == InlineSection && mapSamples())) {
        // Sample (c, r) of the section is sample first + c * along + r * down of the block.
        const qint64 along = axis == InlineSection ? rowStride : 1;
        const qint64 down = axis == TimeSlice ? rowStride : sliceStride;
        const qint64 first = axis == InlineSection ? index : axis == CrosslineSection ? index * rowStride
                                                                                      : index * sliceStride;
        // Real samples in memory or in a little-endian file on a little-endian machine are
        // copied as they are; anything else is decoded sample by sample.
        const float* reals = m_memory ? m_memory->data()
                             : (m_type == Float32 && Q_BYTE_ORDER == Q_LITTLE_ENDIAN) ? reinterpret_cast<const float*>(m_mapped)
                                                                                      : nullptr;
        for (int r = 0; r < size.second; ++r) {
            float* row = section.row(r);
            const qint64 start = first + r * down;
            if (reals && along == 1) std::memcpy(row, reals + start, static_cast<std::size_t>(size.first) * sizeof(float));
            else if (reals)
                for (int c = 0; c < size.first; ++c) row[c] = reals[start + c * along];
            else
                for (int c = 0; c < size.first; ++c) row[c] = sampleAt(start + c * along);
        }
        out = std::move(section);
        return true;
    }
    // Without a mapping: the box of the section, read row by row.
    ZN3DImage<float> box;
    const bool read = axis == InlineSection ? readBox(index, 0, 0, 1, ny(), nz(), box)
                                            : readBox(0, index, 0, nx(), 1, nz(), box);
    if (!read) return false;
    std::memcpy(section.data(), box.data(), section.sampleCount() * sizeof(float));
    out = std::move(section);
    return true;
}

bool ZNBloc::readTrace(int x, int y, float* samples)
{
    if (!samples || x < 0 || y < 0 || x >= nx() || y >= ny() || (!m_reader.isOpen() && !m_memory)) return false;
    const qint64 sliceStride = qint64(nx()) * ny();
    const qint64 first = qint64(y) * nx() + x;
    if (m_memory || mapSamples()) {
        for (int z = 0; z < nz(); ++z) samples[z] = sampleAt(first + z * sliceStride);
        return true;
    }
    ZN3DImage<float> box;
    if (!readBox(x, y, 0, 1, 1, nz(), box)) return false;
    std::memcpy(samples, box.data(), static_cast<std::size_t>(nz()) * sizeof(float));
    return true;
}
