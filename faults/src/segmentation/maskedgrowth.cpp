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
    std::unique_ptr<core::Triplet[]> fresh(new (std::nothrow)
                                               core::Triplet[static_cast<size_t>(capacity)]);
    if (!fresh) return false;
    std::copy(begin(), end(), fresh.get());
    m_data = std::move(fresh);
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
