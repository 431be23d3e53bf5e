#include "znsamplestorage.h"

#include <new>

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)
#include <sys/mman.h>
#define ZN_PAGED_SAMPLES 1
#else
#define ZN_PAGED_SAMPLES 0
#endif

namespace znsamplestorage {

namespace {
[[maybe_unused]] bool isPaged(std::size_t bytes) { return ZN_PAGED_SAMPLES && bytes >= kPagedBytes; }
} // namespace

void* allocate(std::size_t bytes, bool& zeroed)
{
    zeroed = false;
#if ZN_PAGED_SAMPLES
    if (isPaged(bytes)) {
        void* pages = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE,
                             -1, 0);
        if (pages == MAP_FAILED) return nullptr;
        zeroed = true;  // anonymous pages are given cleared
        return pages;
    }
#endif
    return ::operator new(bytes, std::nothrow);
}

void release(void* storage, [[maybe_unused]] std::size_t bytes)
{
    if (storage == nullptr) return;
#if ZN_PAGED_SAMPLES
    if (isPaged(bytes)) {
        ::munmap(storage, bytes);
        return;
    }
#endif
    ::operator delete(storage);
}

} // namespace znsamplestorage
