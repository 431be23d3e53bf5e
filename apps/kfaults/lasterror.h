#pragma once
#include <mutex>

#include <zneventbus.h>

namespace kfaults {

// The tool's event bus: keeps the last error (kinds 1 and 2) the library sent, so a
// command can print one line that says what went wrong, and prints nothing itself.
// Installed by the constructor, the previous bus restored by the destructor.
class LastError : public ZNEventBus {
public:
    LastError();
    ~LastError() override;
    LastError(const LastError&) = delete;
    LastError& operator=(const LastError&) = delete;

    // The last error sent while a LastError is installed; empty otherwise.
    static QString text();
    static void clear();
    // `what`, followed by " (<last error>)" when there is one.
    static QString withDetail(const QString& what);

protected:
    void message(int kind, const QString& text) override;

private:
    ZNEventBus* m_previous = nullptr;
    std::mutex m_mutex;
    QString m_last;
};

} // namespace kfaults
