#pragma once
// The seed scan behind getFaultPatchLabelImage, with the knobs that spread its work over
// threads, so that tests can exercise every way of spreading it on small volumes.
// Internal to the segmentation.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <zn3dimage.h>

#include "segmentation/faultpatchlabelimage.h"
#include "segmentation/patchgrower.h"
#include "segmentation/patchgrowth.h"
#include "segmentation/takeablemask.h"

namespace fault::segmentation::detail {

// How the scan spreads its work. No value changes the labels.
struct ScanTuning {
    // Threads growing seeds at once; 0 means one per OpenMP thread. At most kMaxThreads.
    int threads = 0;
    // Seeds grown ahead per thread in one go.
    int seedsPerThread = 4;
    // Later seeds are grown ahead of the scan only after a growth of at least this many
    // voxels: smaller growths cost less than handing work to other threads.
    int speculationMinVoxels = 512;
    // Whether growing ahead backs off when it does not pay; false grows ahead at every
    // chance.
    bool pace = true;
};

// The settings of one in-memory segmentation, as getFaultPatchLabelImage takes them.
struct ScanSettings {
    int maxLabelCount = 0;
    int maxPatchSize = 0;
    double maxPlaneDeviation = 0.0;
    int growthIterations = 0;
    double threshold = 0.0;
    // Largest side of the whole volume when the scan sees only a window of it (slab by
    // slab); 0: the view's own. Growth bounds that depend on it then stay those of the
    // whole volume.
    int extent = 0;
};

// What a segmentation of a volume nx x ny x d holds in memory at most: the likelihood and
// label images, every thread's mask and patch buffer: d * perSlice + fixed bytes.
struct ScanMemory {
    double perSlice = 0.0;
    double fixed = 0.0;
};
ScanMemory scanMemory(int nx, int ny, int maxPatchSize, const ScanTuning& tuning);

// getFaultPatchLabelImage with its work spread as `tuning` says.
ZN3DImage<int>* segmentInMemory(ZN3DImage<float>* likelihood, const ScanSettings& settings,
                                int& sliceCount, int& labelCounter, int progressParent,
                                const ScanTuning& tuning);

// The state of one scan over a volume: seeds are taken in scan order and each patch is
// judged in that order, exactly as one grower would. When a growth was large, the next
// seeds of the slice are grown at the same time by other growers on the same label state:
// a rejected patch leaves the state unchanged, so their patches are the ones they would
// grow later, until a patch is kept; results grown before the last kept patch are thrown
// away and grown again.
class LabelScan {
public:
    static constexpr int kMaxThreads = 8;
    static constexpr int kMaxGrowers = 32;

    LabelScan(const VolumeView& volume, const ScanSettings& settings, int firstLabel,
              const ScanTuning& tuning);

    // False when memory ran out for the scan's own state.
    bool isUsable() const { return m_threadCount > 0 && m_atThreshold; }
    int label() const { return m_label; }
    int sliceCount() const { return m_sliceCount; }

    // Seeds and judges every patch of slice z, in scan order.
    void scanSlice(int z);
    // Clears the marks left in the slices from z on, which the scan did not reach.
    void clearMarksFrom(int z);

private:
    // A seed grown ahead, with the label state it was grown on.
    struct Grown {
        std::size_t seed = 0;
        long long generation = -1;  // -1: nothing usable
        Verdict verdict;
        int grower = 0;             // holds its patch
    };

    // When to grow ahead: a go that took longer than growing its seeds one after the other
    // would have (threads busy elsewhere, a loaded machine) makes the scan skip the next
    // chances to go: as many as the go took times the work it did, times two more after
    // each such go in a row. Only speed depends on it.
    class Pacing {
    public:
        // Whether this chance to grow ahead is taken.
        bool allows();
        // A go took `wall` while its growths took `work` together.
        void record(std::chrono::steady_clock::duration wall,
                    std::chrono::steady_clock::duration work);

    private:
        static constexpr long long kMaxSkip = 1LL << 24;
        long long m_backOff = 1;  // grows twice after each go that does not pay
        long long m_skip = 0;     // chances still to skip
    };

    bool isSeed(std::size_t i) const
    {
        return m_volume.labels[i] == kUnlabelled &&
               static_cast<double>(m_volume.likelihood[i]) >= m_settings.threshold;
    }
    // Sets the rows of m_atThreshold to the seeds at the threshold of slice z.
    void selectAtThreshold(int z, std::size_t wordsPerRow);
    // Judges voxel i of slice z, a voxel of the slice that may seed or be marked.
    void visit(std::size_t i, std::size_t sliceEnd, int z);
    core::Triplet voxelAt(std::size_t i) const;
    // Grows seed i, and later seeds of the slice (before sliceEnd) when it pays.
    void growFrom(std::size_t i, std::size_t sliceEnd);
    // Grows m_grown[0 .. count) on every thread.
    void growInParallel(int count);
    void commit(const Grown& grown, int z);
    void accept(const PatchBuffer& patch, int z);
    void markLaterSeeds(const PatchBuffer& patch, std::size_t seed);

    VolumeView m_volume;
    ScanSettings m_settings;
    // The seeds that growth never takes (likelihood at the threshold), in scan order, and
    // those of the slice being scanned as rows laid out as the takeable mask's.
    std::vector<std::size_t> m_atThresholdSeeds;
    std::unique_ptr<uint64_t[]> m_atThreshold;
    bool m_atThresholdRowsClear = false;
    ScanTuning m_tuning;
    std::unique_ptr<PatchGrower> m_growers[kMaxThreads];  // one per thread
    Grown m_grown[kMaxGrowers];  // the seeds grown in the last go, in scan order
    int m_grownCount = 0;
    int m_next = 0;              // first of m_grown not judged yet
    int m_threadCount = 0;
    int m_seedsPerGo = 1;        // seeds grown ahead at most, the first one included
    long long m_generation = 0;  // patches kept so far: the label state's version
    bool m_speculate = false;    // whether the last seed judged asks for growing ahead
    Pacing m_pacing;
    int m_label;                 // label of the next kept patch
    int m_sliceCount;            // slices to scan; lowered once the label budget is spent
    bool m_budgetSpent = false;
};

} // namespace fault::segmentation::detail
