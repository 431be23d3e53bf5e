#pragma once
#include <QString>

namespace fault::segmentation {

// A host progress bar open for the lifetime of the scope and closed on every way out.
// For n items the bar has n steps and moves by max(1, n / 100) steps every
// max(1, n / 100) items, so a long run redraws about a hundred times.
class ProgressScope {
public:
    ProgressScope(const QString& title, int itemCount, int parent);
    ~ProgressScope();
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

    // Counts the start of one more item (advancing the bar when a stride is complete) and
    // answers whether the user cancelled the bar.
    bool advanceAndCheckCancelled();

private:
    int m_id;          // the host's bar
    int m_stride;      // items per move of the bar
    int m_started = 0; // items started so far
};

} // namespace fault::segmentation
