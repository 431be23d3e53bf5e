#include "interruptibleprogress.h"

#include <csignal>

namespace kfaults {
namespace {
volatile std::sig_atomic_t g_interrupted = 0;

extern "C" void onSigint(int)
{
    g_interrupted = 1;
}
} // namespace

InterruptibleProgress::InterruptibleProgress()
{
    m_previous = ZNProgressBarMgr::install(this);
    m_previousHandler = std::signal(SIGINT, onSigint);
}

InterruptibleProgress::~InterruptibleProgress()
{
    std::signal(SIGINT, m_previousHandler == SIG_ERR ? SIG_DFL : m_previousHandler);
    ZNProgressBarMgr::install(m_previous);
    g_interrupted = 0;
}

bool InterruptibleProgress::interrupted()
{
    return g_interrupted != 0;
}

void InterruptibleProgress::requestInterrupt()
{
    g_interrupted = 1;
}

void InterruptibleProgress::cancelOpenBarsWhenInterrupted()
{
    if (!interrupted()) return;
    std::set<int> open;
    {
        std::lock_guard<std::mutex> lock(m_openMutex);
        open = m_open;
    }
    for (int id : open) cancel(id);
}

void InterruptibleProgress::onCreated(int id, const Bar& bar)
{
    {
        std::lock_guard<std::mutex> lock(m_openMutex);
        m_open.insert(id);
    }
    ZNProgressBarMgr::onCreated(id, bar);
    cancelOpenBarsWhenInterrupted();
}

void InterruptibleProgress::onIncremented(int id, const Bar& bar)
{
    ZNProgressBarMgr::onIncremented(id, bar);
    cancelOpenBarsWhenInterrupted();
}

void InterruptibleProgress::onClosed(int id, const Bar& bar)
{
    {
        std::lock_guard<std::mutex> lock(m_openMutex);
        m_open.erase(id);
    }
    ZNProgressBarMgr::onClosed(id, bar);
}

} // namespace kfaults
