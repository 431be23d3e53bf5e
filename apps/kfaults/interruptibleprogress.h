#pragma once
#include <atomic>
#include <mutex>
#include <set>

#include <znprogressbarmgr.h>

namespace kfaults {

// The tool's progress service: bars drawn on the error stream as the host's default
// does (only on a terminal), plus cancellation by Ctrl-C. The SIGINT handler only sets a
// flag (all a signal handler may safely do); every bar opened or advanced afterwards
// is cancelled, so the library's long operations stop at their next step.
class InterruptibleProgress : public ZNProgressBarMgr {
public:
    // Installs this service and the SIGINT handler; the destructor restores both.
    InterruptibleProgress();
    ~InterruptibleProgress() override;
    InterruptibleProgress(const InterruptibleProgress&) = delete;
    InterruptibleProgress& operator=(const InterruptibleProgress&) = delete;

    // True once Ctrl-C was pressed (or requestInterrupt called); the destructor resets it.
    static bool interrupted();
    // What the SIGINT handler does; also for tests.
    static void requestInterrupt();

protected:
    void onCreated(int id, const Bar& bar) override;
    void onIncremented(int id, const Bar& bar) override;
    void onClosed(int id, const Bar& bar) override;

private:
    void cancelOpenBarsWhenInterrupted();

    ZNProgressBarMgr* m_previous = nullptr;
    void (*m_previousHandler)(int) = nullptr;
    std::mutex m_openMutex;   // hooks may run on the library's worker threads
    std::set<int> m_open;
};

} // namespace kfaults
