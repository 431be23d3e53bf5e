#include "znlabelslabreader.h"

#include <algorithm>
#include <new>

#include <core/conventions.h>
#include <znbloc.h>
#include <znslabplanner.h>

#include "znlabelrecordfile.h"

namespace {

constexpr int kBytesPerLabel = 4;
// A record file's slab remembers the samples it set for at most one in this many of its
// samples: fault patches fill far fewer, and clearing them costs far less than clearing
// the slab.
constexpr std::size_t kSetShare = 16;

} // namespace

ZNLabelSlabReader::ZNLabelSlabReader(const ZN3DImage<int>* image) : m_image(image)
{
    if (!image || image->isEmpty()) return;
    m_space = image->blocSpace();
    m_slabDepth = image->nz();
}

ZNLabelSlabReader::ZNLabelSlabReader(ZNBloc* bloc, int slabDepth) : m_bloc(bloc)
{
    if (!bloc || !bloc->isOpen() || bloc->isWritable()) return;
    m_space = bloc->blocSpace();
    if (slabDepth < 1)
        slabDepth = ZNSlabPlanner::planSlab(nx(), ny(), nz(), kBytesPerLabel).z;
    m_slabDepth = std::clamp(slabDepth, 1, std::max(1, nz()));
}

ZNLabelSlabReader::ZNLabelSlabReader(ZNLabelRecordFile* records, int slabDepth) : m_records(records)
{
    if (!records || !records->isReadable()) return;
    m_space = records->blocSpace();
    m_slabDepth = std::clamp(slabDepth, 1, std::max(1, nz()));
}

double ZNLabelSlabReader::slabBytes(int nx, int ny, int slabDepth)
{
    const double samples = static_cast<double>(nx) * ny * (std::max(1, slabDepth) + 1.0);
    return samples * kBytesPerLabel + samples / kSetShare * sizeof(std::size_t);
}

bool ZNLabelSlabReader::isUsable() const
{
    return m_slabDepth > 0 && !m_space.isEmpty() && (m_image || m_bloc || m_records);
}

bool ZNLabelSlabReader::allocateSlab()
{
    if (!m_slab.isEmpty()) return true;
    const int depth = std::min(nz(), m_slabDepth + 1);
    m_slab = m_records ? ZN3DImage<int>(georef::BlocSpace(nx(), ny(), depth), core::kNoValue)
                       : ZN3DImage<int>::unfilled(georef::BlocSpace(nx(), ny(), depth));
    if (m_slab.isNull()) return false;
    if (!m_records) return true;
    try {
        m_set.reserve(m_slab.voxelCount() / kSetShare);
    } catch (const std::bad_alloc&) {
        m_slab = ZN3DImage<int>();
        return false;
    }
    return true;
}

bool ZNLabelSlabReader::load(int z0, int count)
{
    if (!isUsable()) return false;
    const int first = std::max(0, z0);
    const int last = std::min(nz(), z0 + count);
    if (first >= last) return false;
    if (m_image) return true;
    if (last - first > m_slabDepth + 1 || !allocateSlab()) return false;
    m_loaded = 0;
    const bool read = m_bloc ? m_bloc->readSlices(first, last - first, m_slab.data()) : loadRecords(first, last);
    if (!read) return false;
    m_first = first;
    m_loaded = last - first;
    return true;
}

bool ZNLabelSlabReader::loadRecords(int first, int last)
{
    int* samples = m_slab.data();
    if (m_setOverflowed) m_slab.fill(core::kNoValue);
    else
        for (const std::size_t i : m_set) samples[i] = core::kNoValue;
    m_set.clear();
    m_setOverflowed = false;
    const std::size_t sliceSize = m_slab.sliceSize();
    const std::size_t cap = m_set.capacity();
    return m_records->readRecords(first, last - first, [&](int z, const ZNLabelRecordFile::Record* r, std::size_t n) {
        const std::size_t base = static_cast<std::size_t>(z - first) * sliceSize;
        for (std::size_t k = 0; k < n; ++k) {
            const std::size_t i = base + r[k].index;
            samples[i] = r[k].label;
            if (m_set.size() < cap) m_set.push_back(i);
            else m_setOverflowed = true;
        }
    });
}

const int* ZNLabelSlabReader::slice(int z) const
{
    if (m_image) return m_image->slice(z);
    if (z < m_first || z >= m_first + m_loaded) return nullptr;
    return m_slab.slice(z - m_first);
}
