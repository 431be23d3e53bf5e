#include "segmentation/maskedgrowth.h"

#include <algorithm>
#include <new>

namespace fault::segmentation::detail {

namespace {

// The largest buffer: int indices.
constexpr int kMaxCapacity = 0x7fffffff;
// The first storage of an empty buffer that grows on its own.
constexpr int kFirstCapacity = 1024;

} // namespace

bool PatchBuffer::reserve(int capacity)
{
    if (capacity <= m_capacity) return true;
    const std::size_t n = static_cast<std::size_t>(capacity);
    std::unique_ptr<core::Triplet[]> voxels(new (std::nothrow) core::Triplet[n]);
    std::unique_ptr<std::size_t[]> bits(new (std::nothrow) std::size_t[n]);
    if (!voxels || !bits) return false;
    std::copy(m_voxels.get(), m_voxels.get() + m_size, voxels.get());
    std::copy(m_bits.get(), m_bits.get() + m_size, bits.get());
    m_voxels = std::move(voxels);
    m_bits = std::move(bits);
    m_capacity = capacity;
    return true;
}

bool PatchBuffer::grow()
{
    if (m_capacity == kMaxCapacity) return false;
    if (m_capacity == 0) return reserve(kFirstCapacity);
    return reserve(m_capacity > kMaxCapacity / 2 ? kMaxCapacity : 2 * m_capacity);
}

} // namespace fault::segmentation::detail
