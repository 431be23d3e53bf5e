#include "znlabelslabreader.h"

#include <algorithm>

#include <znbloc.h>
#include <znslabplanner.h>

namespace {
constexpr int kBytesPerLabel = 4;
}

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

bool ZNLabelSlabReader::isUsable() const
{
    return m_slabDepth > 0 && !m_space.isEmpty() && (m_image || m_bloc);
}

bool ZNLabelSlabReader::load(int z0, int count)
{
    if (!isUsable()) return false;
    const int first = std::max(0, z0);
    const int last = std::min(nz(), z0 + count);
    if (first >= last) return false;
    if (m_image) return true;
    if (!m_bloc->readBox(0, 0, first, nx(), ny(), last - first, m_slab)) return false;
    m_first = first;
    return true;
}

const int* ZNLabelSlabReader::slice(int z) const
{
    if (m_image) return m_image->slice(z);
    return m_slab.slice(z - m_first);
}
