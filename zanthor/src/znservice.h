#pragma once
#include <atomic>

// The slot that holds one host service. Library code reaches the service through
// `get()`; a host or a test puts its own implementation in with `install()` and gets the
// previous one back to restore it later. With nothing installed, `get()` answers a
// process-wide instance of `Default`. The installed object is not owned.
template <class Service, class Default = Service>
class ZNServiceSlot {
public:
    static Service& get()
    {
        Service* s = slot().load(std::memory_order_acquire);
        return s ? *s : defaultInstance();
    }
    // Installs `service` (null restores the default) and returns what was installed.
    static Service* install(Service* service)
    {
        return slot().exchange(service, std::memory_order_acq_rel);
    }

private:
    static std::atomic<Service*>& slot()
    {
        static std::atomic<Service*> s{nullptr};
        return s;
    }
    static Service& defaultInstance()
    {
        static Default d;
        return d;
    }
};

// Installs a service for the lifetime of a scope and restores the previous one after.
template <class Service>
class ZNScopedService {
public:
    explicit ZNScopedService(Service& service) : m_previous(Service::install(&service)) {}
    ~ZNScopedService() { Service::install(m_previous); }
    ZNScopedService(const ZNScopedService&) = delete;
    ZNScopedService& operator=(const ZNScopedService&) = delete;

private:
    Service* m_previous;
};
