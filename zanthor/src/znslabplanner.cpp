#include "znslabplanner.h"

#include <limits>

#if defined(_WIN32)
#include <windows.h>
#else
#include <unistd.h>
#endif

#include <core/conventions.h>

#include "znservice.h"

namespace {
using Slot = ZNServiceSlot<ZNSlabPlanner>;

const core::Triplet kNoSlab(core::kNoValue, core::kNoValue, core::kNoValue);
} // namespace

ZNSlabPlanner::ZNSlabPlanner()
    : m_budget(static_cast<long long>(kDefaultMemoryFraction * static_cast<double>(physicalMemory())))
{
}

ZNSlabPlanner::ZNSlabPlanner(long long budgetBytes) : m_budget(0) { setMemoryBudget(budgetBytes); }

core::Triplet ZNSlabPlanner::plan(int nx, int ny, int nz, int bytesPerSample) const
{
    if (nx <= 0 || ny <= 0 || nz <= 0 || bytesPerSample <= 0) return kNoSlab;
    const long long rowBytes = static_cast<long long>(nx) * bytesPerSample;
    if (ny > std::numeric_limits<long long>::max() / rowBytes) return kNoSlab;
    const long long sliceBytes = rowBytes * ny;
    const long long slices = m_budget / sliceBytes;
    if (slices < 1) return kNoSlab;
    const int cz = slices < nz ? static_cast<int>(slices) : nz;
    return core::Triplet(nx, ny, cz);
}

core::Triplet ZNSlabPlanner::planSlab(int nx, int ny, int nz, int bytesPerSample)
{
    return instance().plan(nx, ny, nz, bytesPerSample);
}

ZNSlabPlanner* ZNSlabPlanner::install(ZNSlabPlanner* planner) { return Slot::install(planner); }

ZNSlabPlanner& ZNSlabPlanner::instance() { return Slot::get(); }

long long ZNSlabPlanner::physicalMemory()
{
#if defined(_WIN32)
    MEMORYSTATUSEX status;
    status.dwLength = sizeof(status);
    if (GlobalMemoryStatusEx(&status)) return static_cast<long long>(status.ullTotalPhys);
    return kFallbackPhysicalMemory;
#else
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0) return kFallbackPhysicalMemory;
    return static_cast<long long>(pages) * pageSize;
#endif
}
