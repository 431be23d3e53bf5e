#pragma once
#include <map>
#include <mutex>

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

#include <znprogressbarmgr.h>

class ZNProgressPanel;

// The progress bars of a host with a GUI: the bars a long operation opens (from any
// thread) appear in a progress panel, nested bars as one group under their outermost
// bar, and the panel's Cancel button cancels that outermost bar, so the operation stops
// at its next check. The operation's thread never waits for the panel: each change only
// marks the panel out of date, and the panel redraws on the GUI thread from a copy of
// the open bars, at once after a quiet spell and at most every refreshMs() milliseconds
// while changes keep coming. Installs itself for its
// lifetime and restores the previous manager after.
class ZNGuiProgressBarMgr : public QObject, public ZNProgressBarMgr {
    Q_OBJECT
public:
    static constexpr int kDefaultRefreshMs = 50;

    explicit ZNGuiProgressBarMgr(ZNProgressPanel* panel);
    ~ZNGuiProgressBarMgr() override;

    // The open bars, by id (ids increase with creation, so parents come first).
    std::map<int, Bar> openBars() const;
    int refreshMs() const { return m_refreshMs; }
    void setRefreshMs(int ms) { m_refreshMs = ms; }

protected:
    void onCreated(int id, const Bar& bar) override;
    void onIncremented(int id, const Bar& bar) override;
    void onClosed(int id, const Bar& bar) override;

private:
    void scheduleRefresh();
    void refresh();

    QPointer<ZNProgressPanel> m_panel;
    ZNProgressBarMgr* m_previous;
    mutable std::mutex m_mutex;
    std::map<int, Bar> m_open;          // copy of the open bars, for the panel
    bool m_refreshPending = false;      // a refresh is queued on the GUI thread
    int m_refreshMs = kDefaultRefreshMs;
    QElapsedTimer m_sinceRefresh;       // since the last redraw (GUI thread only)
};
