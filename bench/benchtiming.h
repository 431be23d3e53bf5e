#pragma once
// Timing helpers of the plain benchmark programs: a run's wall time, the min and median
// of rounds, and a file dropped from the page cache for cold runs.
#include <algorithm>
#include <chrono>
#include <functional>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <QString>

namespace benchtiming {

// Milliseconds `run` took.
inline double msOf(const std::function<void()>& run)
{
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

struct Stats {
    double min = 0, median = 0;
};
// Min and median of at least one value.
inline Stats statsOf(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return {v.front(), v[v.size() / 2]};
}

// Drops the file's pages from the page cache (they are clean, so no root is needed).
inline void dropCache(const QString& path)
{
    const int fd = ::open(path.toLocal8Bit().constData(), O_RDONLY);
    if (fd < 0) return;
    ::fdatasync(fd);
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    ::close(fd);
}

} // namespace benchtiming
