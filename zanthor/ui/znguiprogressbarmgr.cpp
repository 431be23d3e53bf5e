#include "znguiprogressbarmgr.h"

#include <QTimer>

#include "znprogresspanel.h"

ZNGuiProgressBarMgr::ZNGuiProgressBarMgr(ZNProgressPanel* panel)
    : m_panel(panel), m_previous(ZNProgressBarMgr::install(this))
{
    if (panel) panel->setManager(this);
}

ZNGuiProgressBarMgr::~ZNGuiProgressBarMgr()
{
    ZNProgressBarMgr::install(m_previous);
    if (m_panel) m_panel->setManager(nullptr);
}

std::map<int, ZNProgressBarMgr::Bar> ZNGuiProgressBarMgr::openBars() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_open;
}

void ZNGuiProgressBarMgr::onCreated(int id, const Bar& bar)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_open[id] = bar;
    }
    scheduleRefresh();
}

void ZNGuiProgressBarMgr::onIncremented(int id, const Bar& bar)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_open.find(id);
        if (it == m_open.end()) return;
        it->second = bar;
    }
    scheduleRefresh();
}

void ZNGuiProgressBarMgr::onClosed(int id, const Bar&)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_open.erase(id);
    }
    scheduleRefresh();
}

void ZNGuiProgressBarMgr::scheduleRefresh()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_refreshPending) return;
        m_refreshPending = true;
    }
    // On the GUI thread: redraws at once when the last redraw is old enough, otherwise
    // once refreshMs has passed since it, taking in every change made meanwhile.
    QMetaObject::invokeMethod(
        this,
        [this] {
            const qint64 since = m_sinceRefresh.isValid() ? m_sinceRefresh.elapsed() : m_refreshMs;
            if (since >= m_refreshMs) refresh();
            else QTimer::singleShot(static_cast<int>(m_refreshMs - since), this, &ZNGuiProgressBarMgr::refresh);
        },
        Qt::QueuedConnection);
}

void ZNGuiProgressBarMgr::refresh()
{
    m_sinceRefresh.start();
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_refreshPending = false;
    }
    if (m_panel) m_panel->showBars(openBars());
}
