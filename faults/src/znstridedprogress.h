#pragma once
#include <QString>

#include <znprogressbarmgr.h>

// A host progress bar over `itemCount` items that moves once every
// max(1, itemCount / 100) items (integer division): each move advances it by one step and
// polls it for cancellation, so a long run touches the bar about a hundred times. The bar
// is open for the lifetime of the object.
class ZNStridedProgress {
public:
    static constexpr int kMoves = 100;  // moves of the bar over a whole run

    ZNStridedProgress(const QString& title, int itemCount, int parent)
        : m_stride(itemCount / kMoves > 1 ? itemCount / kMoves : 1),
          m_id(ZNProgressBarMgr::createProgressBar(
              title, itemCount > 0 ? (itemCount + m_stride - 1) / m_stride : 0, parent))
    {
    }
    ~ZNStridedProgress() { ZNProgressBarMgr::closeProgressBar(m_id); }
    ZNStridedProgress(const ZNStridedProgress&) = delete;
    ZNStridedProgress& operator=(const ZNStridedProgress&) = delete;

    int stride() const { return m_stride; }
    // Counts one item done; at the end of each stride moves the bar and polls it.
    // Returns whether the bar has been seen cancelled.
    bool next()
    {
        if (++m_done % m_stride == 0) move();
        return m_cancelled;
    }
    // Moves the bar once and polls it (for callers that work a stride at a time).
    bool move()
    {
        ZNProgressBarMgr::incrementProgressBar(m_id);
        m_cancelled = m_cancelled || ZNProgressBarMgr::isProgressBarCancelled(m_id);
        return m_cancelled;
    }
    bool isCancelled() const { return m_cancelled; }

private:
    int m_stride;            // items per move
    int m_id;                // the host's bar
    int m_done = 0;          // items counted by next()
    bool m_cancelled = false;
};
