#pragma once

namespace kfaults {

// The largest resident set of this process so far, in bytes, as the kernel counts it
// for the process's own address space ("VmHWM" of /proc/self/status, which starts again
// at exec; unlike the resource usage's maxrss, it never includes the pages of a parent
// that spawned the process). -9999 where that file is missing or unreadable.
long long peakResidentBytes();

// The resident set of this process now, in bytes ("VmRSS"); -9999 as above.
long long residentBytes();

// The memory the machine can give new work without swapping, in bytes ("MemAvailable"
// of /proc/meminfo); -9999 where it cannot be read.
long long availableMemoryBytes();

} // namespace kfaults
