#pragma once
#include <cstddef>

// Storage for the samples of images: plain heap memory for small images, and for large
// ones whole pages from the system, zero-filled and made resident in one request. A large
// image therefore costs neither a first pass that writes its initial zeros nor one page
// fault per page when it is first written: its memory is had at the speed the system can
// clear pages. Under AddressSanitizer every image takes heap memory, so that its bounds
// stay checked.
namespace znsamplestorage {

// Images of at least this many bytes take whole pages.
constexpr std::size_t kPagedBytes = std::size_t(4) << 20;

// `bytes` of storage aligned for any sample type, or null when it cannot be had.
// `zeroed` tells whether every byte is 0 on return; heap memory is left as it comes.
void* allocate(std::size_t bytes, bool& zeroed);
// Gives back storage of `bytes` bytes obtained from allocate; null does nothing.
void release(void* storage, std::size_t bytes);

} // namespace znsamplestorage
