#pragma once
#include <core/triplet.h>

// The host's slab planner: how much of a volume to hold in memory at once. A slab is a
// stack of whole z slices (every x and every y), so the answer for a volume of
// nx x ny x nz samples is (nx, ny, cz) with 1 <= cz <= nz and
// nx * ny * (cz + haloSlices) * bytesPerSample * workingSetFactor <= the memory budget.
//
// bytesPerSample is the size of one sample of the volume; workingSetFactor says how many
// times that the task working on a slab holds per sample (its copies, results and
// masks), and haloSlices how many slices it holds beyond the slab (overlaps, padding).
// With the defaults (1, 0) the slab's samples alone fill the budget.
//
// The budget is a member of the planner: the default planner allows
// kDefaultMemoryFraction of the machine's physical memory; a host or a test installs a
// planner with its own budget (install(), or ZNScopedService<ZNSlabPlanner>).
class ZNSlabPlanner {
public:
    // Share of physical memory a slab may take by default.
    static constexpr double kDefaultMemoryFraction = 0.25;
    // Assumed physical memory when the system cannot tell it.
    static constexpr long long kFallbackPhysicalMemory = 1LL << 30;

    // Budget: kDefaultMemoryFraction of physicalMemory().
    ZNSlabPlanner();
    // Budget in bytes; negative counts as 0 (nothing fits).
    explicit ZNSlabPlanner(long long budgetBytes);
    virtual ~ZNSlabPlanner() = default;

    long long memoryBudget() const { return m_budget; }
    void setMemoryBudget(long long budgetBytes) { m_budget = budgetBytes > 0 ? budgetBytes : 0; }

    // The slab (cx, cy, cz) = (nx, ny, cz) with the most slices that fit the budget, cz at
    // most nz. (-9999, -9999, -9999) when a size or bytesPerSample is not positive, the
    // factor not positive and finite, the halo negative, or when not even one slice fits.
    core::Triplet plan(int nx, int ny, int nz, int bytesPerSample, double workingSetFactor = 1.0,
                       int haloSlices = 0) const;

    // plan() of the installed planner.
    static core::Triplet planSlab(int nx, int ny, int nz, int bytesPerSample,
                                  double workingSetFactor = 1.0, int haloSlices = 0);
    // Installs `planner` (null restores the default) and returns the previous one; not owned.
    static ZNSlabPlanner* install(ZNSlabPlanner* planner);
    static ZNSlabPlanner& instance();

    // Bytes of physical memory of the machine, or kFallbackPhysicalMemory when unknown.
    static long long physicalMemory();

private:
    long long m_budget;   // bytes a slab may take
};
