#include "znprogressbarmgr.h"

#include <cstdio>
#include <unistd.h>

#include "znservice.h"

namespace {
using Slot = ZNServiceSlot<ZNProgressBarMgr>;

constexpr int kBarWidth = 30;     // characters of the terminal bar
constexpr int kMaxParentDepth = 64;  // guards a corrupt parent chain

bool stderrIsTerminal() { return isatty(fileno(stderr)) == 1; }

int percentOf(const ZNProgressBarMgr::Bar& bar)
{
    if (bar.range <= 0) return 0;
    const long long p = 100LL * bar.value / bar.range;
    return p < 0 ? 0 : (p > 100 ? 100 : static_cast<int>(p));
}
} // namespace

int ZNProgressBarMgr::createProgressBar(const QString& title, int range, int parent)
{
    return instance().create(title, range, parent);
}
void ZNProgressBarMgr::incrementProgressBar(int id, int step) { instance().increment(id, step); }
bool ZNProgressBarMgr::isProgressBarCancelled(int id) { return instance().isCancelled(id); }
void ZNProgressBarMgr::closeProgressBar(int id) { instance().close(id); }

ZNProgressBarMgr* ZNProgressBarMgr::install(ZNProgressBarMgr* manager)
{
    return Slot::install(manager);
}
ZNProgressBarMgr& ZNProgressBarMgr::instance() { return Slot::get(); }

int ZNProgressBarMgr::create(const QString& title, int range, int parent)
{
    Bar bar;
    int id;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        id = m_nextId++;
        bar.title = title;
        bar.range = range < 0 ? 0 : range;
        bar.parent = m_bars.count(parent) ? parent : -1;
        m_bars[id] = bar;
    }
    onCreated(id, bar);
    return id;
}

void ZNProgressBarMgr::increment(int id, int step)
{
    Bar copy;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_bars.find(id);
        if (it == m_bars.end()) return;
        it->second.value += step;
        copy = it->second;
    }
    onIncremented(id, copy);
}

bool ZNProgressBarMgr::isCancelled(int id) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (int depth = 0; depth < kMaxParentDepth; ++depth) {
        auto it = m_bars.find(id);
        if (it == m_bars.end()) return false;
        if (it->second.cancelled) return true;
        id = it->second.parent;
    }
    return false;
}

void ZNProgressBarMgr::close(int id)
{
    Bar copy;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto it = m_bars.find(id);
        if (it == m_bars.end()) return;
        copy = it->second;
        m_bars.erase(it);
    }
    onClosed(id, copy);
}

void ZNProgressBarMgr::cancel(int id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_bars.find(id);
    if (it != m_bars.end()) it->second.cancelled = true;
}

bool ZNProgressBarMgr::bar(int id, Bar& out) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_bars.find(id);
    if (it == m_bars.end()) return false;
    out = it->second;
    return true;
}

int ZNProgressBarMgr::openBarCount() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(m_bars.size());
}

void ZNProgressBarMgr::onCreated(int, const Bar&) { m_lastDrawnPercent = -1; }

void ZNProgressBarMgr::onIncremented(int, const Bar& bar)
{
    if (!stderrIsTerminal()) return;
    const int percent = percentOf(bar);
    if (percent == m_lastDrawnPercent) return;  // redraw only when the figure changes
    m_lastDrawnPercent = percent;
    const int filled = percent * kBarWidth / 100;
    char line[kBarWidth + 1];
    for (int i = 0; i < kBarWidth; ++i) line[i] = i < filled ? '#' : '.';
    line[kBarWidth] = '\0';
    std::fprintf(stderr, "\r%s [%s] %3d%%", bar.title.toUtf8().constData(), line, percent);
    std::fflush(stderr);
}

void ZNProgressBarMgr::onClosed(int, const Bar&)
{
    if (m_lastDrawnPercent >= 0 && stderrIsTerminal()) std::fputc('\n', stderr);
    m_lastDrawnPercent = -1;
}
