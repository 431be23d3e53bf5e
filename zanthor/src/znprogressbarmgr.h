#pragma once
#include <map>
#include <mutex>

#include <QString>

// The host's progress bars. Long operations open a bar with a title and a range,
// advance it, poll it for cancellation and close it. A bar may have a parent bar: a
// cancelled parent cancels its children. Ids are positive; -1 means "no bar" and every
// call accepts it (nothing happens, never cancelled).
//
// This class keeps the bars' state; subclasses only present it through the hooks. The
// default presentation draws a one-line bar on the error stream when it is a terminal
// and stays silent otherwise. Library code calls the statics.
class ZNProgressBarMgr {
public:
    struct Bar {
        QString title;
        int range = 0;      // number of steps to completion (0 if unknown)
        int value = 0;      // steps done so far
        int parent = -1;    // id of the parent bar, -1 for none
        bool cancelled = false;
    };

    virtual ~ZNProgressBarMgr() = default;

    // Opens a bar and returns its id.
    static int createProgressBar(const QString& title, int range, int parent = -1);
    // Advances bar `id` by `step`.
    static void incrementProgressBar(int id, int step = 1);
    // True once the user (or a parent bar) cancelled bar `id`.
    static bool isProgressBarCancelled(int id);
    // Closes bar `id`; its state is forgotten.
    static void closeProgressBar(int id);

    // Installs `manager` (null restores the default) and returns the previous one.
    static ZNProgressBarMgr* install(ZNProgressBarMgr* manager);
    static ZNProgressBarMgr& instance();

    // Marks bar `id` cancelled, as a user's click on its cancel button does.
    void cancel(int id);
    // A copy of bar `id`'s state; false when no such bar is open.
    bool bar(int id, Bar& out) const;
    int openBarCount() const;

protected:
    // Presentation hooks, called outside the state lock after each change.
    virtual void onCreated(int id, const Bar& bar);
    virtual void onIncremented(int id, const Bar& bar);
    virtual void onClosed(int id, const Bar& bar);

private:
    int create(const QString& title, int range, int parent);
    void increment(int id, int step);
    bool isCancelled(int id) const;
    void close(int id);

    mutable std::mutex m_mutex;
    std::map<int, Bar> m_bars;
    int m_nextId = 1;
    int m_lastDrawnPercent = -1;
};
