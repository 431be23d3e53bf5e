#include "tsanqtevents.h"

#if defined(__SANITIZE_THREAD__)
#include <cstddef>

#include <pthread.h>
#include <sanitizer/tsan_interface.h>

#include <QtCore/qnamespace.h>

// The sanitizers' allocation hooks (not declared by the compiler's headers).
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*malloc_hook)(const volatile void*, size_t),
                                                        void (*free_hook)(const volatile void*));

namespace {

pthread_t g_mainThread;

// Events that cross threads come from the workers to the main thread: only the workers'
// blocks are released (each release costs a synchronisation object until the block is
// freed).
void releaseAtAllocation(const volatile void* block, size_t)
{
    if (!pthread_equal(pthread_self(), g_mainThread)) __tsan_release(const_cast<void*>(block));
}

// The hooks come in pairs; nothing is done when a block is freed.
void ignoreFree(const volatile void*) {}

// Called before each event is delivered: `data` holds the receiver, the event and the
// result. The event is then delivered as usual.
bool acquireAtDelivery(void** data)
{
    __tsan_acquire(data[1]);
    return false;
}

} // namespace

void orderQtEventsForThreadSanitizer()
{
    g_mainThread = pthread_self();
    __sanitizer_install_malloc_and_free_hooks(releaseAtAllocation, ignoreFree);
    QInternal::registerCallback(QInternal::EventNotifyCallback, acquireAtDelivery);
}
#endif
