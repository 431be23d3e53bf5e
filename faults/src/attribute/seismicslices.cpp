#include "attribute/seismicslices.h"

#include <algorithm>

#include <znbloc.h>

namespace fault::attribute {

bool ImageSeismicSlices::read(int z, int count, ZN3DImage<float>& out)
{
    if (z < 0 || count <= 0 || z + count > m_image.nz()) return false;
    ZN3DImage<float> slab(georef::BlocSpace(m_image.nx(), m_image.ny(), count));
    if (slab.isNull()) return false;
    std::copy(m_image.slice(z), m_image.slice(z) + m_image.sliceSize() * static_cast<std::size_t>(count), slab.data());
    out = std::move(slab);
    return true;
}

BlocSeismicSlices::BlocSeismicSlices(ZNBloc& bloc) : m_bloc(bloc) {}

const georef::BlocSpace& BlocSeismicSlices::blocSpace() const { return m_bloc.blocSpace(); }

bool BlocSeismicSlices::read(int z, int count, ZN3DImage<float>& out)
{
    return m_bloc.readBox(0, 0, z, m_bloc.nx(), m_bloc.ny(), count, out);
}

} // namespace fault::attribute
