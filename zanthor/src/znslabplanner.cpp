#include "znslabplanner.h"

#include <algorithm>
#include <cmath>
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
    : m_budget(
          static_cast<long long>(kDefaultMemoryFraction * static_cast<double>(physicalMemory())))
{
}

ZNSlabPlanner::ZNSlabPlanner(long long budgetBytes) : m_budget(0) { setMemoryBudget(budgetBytes); }

core::Triplet ZNSlabPlanner::plan(int nx, int ny, int nz, int bytesPerSample,
                                  double workingSetFactor, int haloSlices) const
{
    if (nx <= 0 || ny <= 0 || nz <= 0 || bytesPerSample <= 0 || haloSlices < 0) return kNoSlab;
    if (!(workingSetFactor > 0.0) || !std::isfinite(workingSetFactor)) return kNoSlab;
    const long long rowBytes = static_cast<long long>(nx) * bytesPerSample;
    if (ny > std::numeric_limits<long long>::max() / rowBytes) return kNoSlab;
    // Held per slice, in bytes; a double, since the factor need not be whole.
    const double sliceCost = static_cast<double>(rowBytes * ny) * workingSetFactor;
    const double budget = static_cast<double>(m_budget);
    double slices = std::min(std::floor(budget / sliceCost) - haloSlices, static_cast<double>(nz));
    // The division rounds: step down until the slab and its halo really fit (whole numbers
    // up to nz are exact, and the estimate is off by one at most).
    while (slices >= 1.0 && (slices + haloSlices) * sliceCost > budget) slices -= 1.0;
    if (!(slices >= 1.0)) return kNoSlab;
    return core::Triplet(nx, ny, static_cast<int>(slices));
}

core::Triplet ZNSlabPlanner::planSlab(int nx, int ny, int nz, int bytesPerSample,
                                      double workingSetFactor, int haloSlices)
{
    return instance().plan(nx, ny, nz, bytesPerSample, workingSetFactor, haloSlices);
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
