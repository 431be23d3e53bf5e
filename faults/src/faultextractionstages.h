#pragma once
// The parts of the extraction sequence shared by its in-memory and slab-by-slab entry
// points. Internal to the library.
#include <memory>

#include <QString>

#include <georef/blocspace.h>
#include <georef/unitobject.h>

#include "faultextractionpipeline.h"

namespace fault::detail {

// One run of the sequence: its progress bar ("Extracting faults", one step per stage),
// closed when the run goes out of scope, and the caller's observer.
class ExtractionRun {
public:
    static constexpr int kStageCount = 6;

    ExtractionRun(int progressParent, const ExtractionStepObserver& observer);
    ~ExtractionRun();
    ExtractionRun(const ExtractionRun&) = delete;
    ExtractionRun& operator=(const ExtractionRun&) = delete;

    int barId() const { return m_bar; }
    bool cancelled() const;
    // Ends stage `step`: the bar moves, the observer is told. False when the bar was
    // cancelled meanwhile.
    bool stageDone(const char* step);
    // A failed run: "cancelled" when the bar was cancelled, else `error`.
    FaultExtraction stop(const QString& error) const;

    // The stages after the fault set: `result.automatic` holds the fault set built from
    // the labels (with its units); merging, sticks, duplicates and surfaces follow.
    FaultExtraction finish(FaultExtraction result, const FaultExtractionSettings& settings);
    // The run of a segmentation without patches: two empty fault sets over `space`, every
    // later stage passed, `note` said.
    FaultExtraction finishEmpty(const georef::BlocSpace& space, const georef::UnitObject& units,
                                const FaultExtractionSettings& settings, const QString& note);

private:
    int m_bar;
    const ExtractionStepObserver& m_observer;
};

// A failed extraction with `error` ("cancelled" when `cancelled`).
FaultExtraction failedExtraction(const QString& error, bool cancelled);

// What a segmentation found when it gave no patch: `seeds` samples at or above the
// threshold, the volume's values from `lowest` to `highest`. "no fault found: " and why.
QString noPatchNote(long long seeds, float lowest, float highest, const FaultExtractionSettings& settings);

// The samples of v[0 .. count) at or above `threshold`; the smallest and largest samples
// of v that are not NaN widen `lowest` and `highest` (NaN: nothing seen yet).
long long countSeedsAndRange(const float* v, std::size_t count, double threshold, float& lowest,
                             float& highest);

} // namespace fault::detail
