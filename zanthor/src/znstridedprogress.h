#pragma once
#include <algorithm>

#include <QString>
#include <QtGlobal>

#include "znprogressbarmgr.h"

// A host progress bar over `itemCount` items, open for the lifetime of the object and
// closed on every way out. It moves once every max(1, itemCount / 100) items (integer
// division): each move advances it by one step and polls it for cancellation, so a long
// run touches the bar about a hundred times however many items it has. Made with parent
// kNoBar there is no bar: nothing is shown and nothing cancels.
class ZNStridedProgress {
public:
    static constexpr int kMoves = 100;   // moves of the bar over a whole run
    static constexpr int kNoBar = -2;    // parent value for "no bar"

    ZNStridedProgress(const QString& title, qint64 itemCount, int parent = -1)
        : m_stride(itemCount / kMoves > 1 ? itemCount / kMoves : 1),
          m_id(parent == kNoBar ? -1
                                : ZNProgressBarMgr::createProgressBar(
                                      title, itemCount > 0 ? int((itemCount + m_stride - 1) / m_stride) : 0,
                                      parent))
    {
    }
    ~ZNStridedProgress()
    {
        if (m_id != -1) ZNProgressBarMgr::closeProgressBar(m_id);
    }
    ZNStridedProgress(const ZNStridedProgress&) = delete;
    ZNStridedProgress& operator=(const ZNStridedProgress&) = delete;

    qint64 stride() const { return m_stride; }
    // Counts one item done; at the end of each stride moves the bar and polls it.
    // Returns whether the bar has been seen cancelled.
    bool next()
    {
        if (++m_done % m_stride == 0) move();
        return m_cancelled;
    }
    // Moves the bar once and polls it (for callers that work a stride at a time).
    // Returns whether the bar has been seen cancelled.
    bool move()
    {
        if (m_id == -1) return false;
        ZNProgressBarMgr::incrementProgressBar(m_id);
        m_cancelled = m_cancelled || ZNProgressBarMgr::isProgressBarCancelled(m_id);
        return m_cancelled;
    }
    // Counts items up to `items` done in all (nothing when that many are done already),
    // moving the bar once per stride completed on the way. Returns whether the bar has
    // been seen cancelled.
    bool reach(qint64 items)
    {
        for (qint64 strides = items / m_stride - m_done / m_stride; strides > 0 && !m_cancelled; --strides) move();
        m_done = std::max(m_done, items);
        return m_cancelled;
    }
    // Items counted so far.
    qint64 done() const { return m_done; }
    bool isCancelled() const { return m_cancelled; }

private:
    qint64 m_stride;         // items per move
    int m_id;                // the host's bar; -1 without one
    qint64 m_done = 0;       // items counted by next()
    bool m_cancelled = false;
};
