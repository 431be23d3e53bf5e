#pragma once
#include <cstddef>

#include <QString>

namespace volumeio {

// A host progress bar open for the lifetime of a read and closed on every way out. For
// n items the bar moves every max(1, n / 100) items, so a long read redraws about a
// hundred times.
class ReadProgress {
public:
    ReadProgress(const QString& title, std::size_t itemCount);
    ~ReadProgress();
    ReadProgress(const ReadProgress&) = delete;
    ReadProgress& operator=(const ReadProgress&) = delete;

    // Counts one more item done and answers whether the user cancelled the bar.
    bool itemDoneAndCheckCancelled();

private:
    int m_id;                  // the host's bar
    std::size_t m_stride;      // items per move of the bar
    std::size_t m_done = 0;    // items done so far
};

} // namespace volumeio
