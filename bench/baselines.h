#pragma once
// The baselines the benchmarks hold the library's steps against: the plainest fast code
// for the same work, a few dozen lines each, on one thread, so that a ratio means what
// it says. And the clock that compares: a step and its baseline run alternately, so that
// a change of load on the machine falls on both, and each is reported by its minimum
// (its cost on an idle machine) and its median over the rounds.
//
// - stencil26: one pass of a 26-neighbour stencil (the mean of the 26 neighbours of each
//   interior voxel), row by row, the nine neighbouring rows read through plain pointers.
// - labelBreadthFirst26: 26-connected labelling of the voxels strictly above a
//   threshold, breadth-first from each unlabelled voxel in scan order through one flat
//   queue of voxel indices.
// - plainRead: read() of a whole file into freshly allocated memory, as a reader that
//   returns a new volume must.
// - plainSyncedWrite: write() of bytes already in memory into a new file, then one
//   fdatasync(), as an output that must be on disk when the program ends.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace baselines {

// Minimum and median of a series of timings, seconds.
struct Spread {
    double min = 0.0;
    double median = 0.0;
};

inline Spread spreadOf(std::vector<double> seconds)
{
    if (seconds.empty()) return {};
    std::sort(seconds.begin(), seconds.end());
    return {seconds.front(), seconds[seconds.size() / 2]};
}

inline double secondsOf(const std::function<void()>& run)
{
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A step and its baseline timed over `rounds` rounds, the step first in even rounds and
// the baseline first in odd ones.
struct Comparison {
    Spread step;
    Spread baseline;
    double minRatio() const { return baseline.min > 0.0 ? step.min / baseline.min : 0.0; }
    double medianRatio() const { return baseline.median > 0.0 ? step.median / baseline.median : 0.0; }
};

inline Comparison alternate(int rounds, const std::function<void()>& step,
                            const std::function<void()>& baseline)
{
    std::vector<double> a, b;
    for (int r = 0; r < rounds; ++r) {
        if (r % 2 == 0) {
            a.push_back(secondsOf(step));
            b.push_back(secondsOf(baseline));
        } else {
            b.push_back(secondsOf(baseline));
            a.push_back(secondsOf(step));
        }
    }
    return {spreadOf(a), spreadOf(b)};
}

// out = mean of the 26 neighbours of each interior voxel of `in` (nx x ny x nz, x
// fastest); the border of `out` is left as it was.
inline void stencil26(const float* in, float* out, int nx, int ny, int nz)
{
    const std::size_t row = static_cast<std::size_t>(nx);
    const std::size_t slice = row * static_cast<std::size_t>(ny);
    constexpr float kNeighbours = 26.0f;
    for (int z = 1; z < nz - 1; ++z)
        for (int y = 1; y < ny - 1; ++y) {
            const float* rows[9];
            for (int k = 0; k < 9; ++k)
                rows[k] = in + (z + k / 3 - 1) * slice + (y + k % 3 - 1) * row;
            const float* centre = rows[4];
            float* target = out + z * slice + y * row;
            for (int x = 1; x < nx - 1; ++x) {
                float sum = -centre[x];
                for (const float* r : rows) sum += r[x - 1] + r[x] + r[x + 1];
                target[x] = sum / kNeighbours;
            }
        }
}

// Labels 1, 2, ... in `labels` (nx x ny x nz, zero on entry) the 26-connected components
// of the voxels of `v` strictly above `threshold`. Returns the number of components.
inline int labelBreadthFirst26(const float* v, int nx, int ny, int nz, float threshold, int* labels,
                               std::vector<std::uint32_t>& queue)
{
    const std::ptrdiff_t sy = nx, sz = static_cast<std::ptrdiff_t>(nx) * ny;
    const std::size_t count = static_cast<std::size_t>(sz) * nz;
    std::ptrdiff_t offsets[26];
    int steps[26][3];
    int n = 0;
    for (int dz = -1; dz <= 1; ++dz)
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (dx || dy || dz) {
                    offsets[n] = dx + dy * sy + dz * sz;
                    steps[n][0] = dx, steps[n][1] = dy, steps[n][2] = dz;
                    ++n;
                }
    int label = 0;
    for (std::size_t seed = 0; seed < count; ++seed) {
        if (!(v[seed] > threshold) || labels[seed] != 0) continue;
        labels[seed] = ++label;
        queue.assign(1, static_cast<std::uint32_t>(seed));
        for (std::size_t head = 0; head < queue.size(); ++head) {
            const std::size_t i = queue[head];
            const int x = static_cast<int>(i % nx), y = static_cast<int>(i / nx % ny),
                      z = static_cast<int>(i / sz);
            const bool interior = x > 0 && y > 0 && z > 0 && x < nx - 1 && y < ny - 1 && z < nz - 1;
            for (int k = 0; k < 26; ++k) {
                const std::ptrdiff_t j = static_cast<std::ptrdiff_t>(i) + offsets[k];
                if (!interior) {
                    const int jx = x + steps[k][0], jy = y + steps[k][1], jz = z + steps[k][2];
                    if (jx < 0 || jy < 0 || jz < 0 || jx >= nx || jy >= ny || jz >= nz) continue;
                }
                if (v[j] > threshold && labels[j] == 0) {
                    labels[j] = label;
                    queue.push_back(static_cast<std::uint32_t>(j));
                }
            }
        }
    }
    return label;
}

// Reads the whole file at `path` into new memory; the byte count read (-1 on failure).
inline long long plainRead(const std::string& path)
{
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) return -1;
    const off_t size = ::lseek(fd, 0, SEEK_END);
    std::unique_ptr<char[]> bytes(new char[static_cast<std::size_t>(size)]);
    long long done = 0;
    while (done < size) {
        const ssize_t got = ::pread(fd, bytes.get() + done, static_cast<std::size_t>(size - done), done);
        if (got <= 0) break;
        done += got;
    }
    ::close(fd);
    volatile char keep = bytes[static_cast<std::size_t>(size / 2)];
    (void)keep;
    return done == size ? done : -1;
}

// Writes `size` bytes into a new file at `path` and syncs it once; false on failure.
inline bool plainSyncedWrite(const std::string& path, const char* bytes, std::size_t size)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) return false;
    std::size_t done = 0;
    while (done < size) {
        const ssize_t put = ::write(fd, bytes + done, size - done);
        if (put <= 0) break;
        done += static_cast<std::size_t>(put);
    }
    const bool ok = done == size && ::fdatasync(fd) == 0;
    return ::close(fd) == 0 && ok;
}

} // namespace baselines
