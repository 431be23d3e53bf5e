// The cleaning assistant on a fault set of 2,000 faults holding 1,000 duplicate pairs
// (each fault 10 sticks x 10 points; each copy jittered under half a grid step, its
// sticks reversed), in one run:
//  - on the worker: the duplicate detection alone, then the whole search the assistant
//    runs (detection and one preview picture per pair);
//  - on the GUI thread: the assistant's window filled with the 1,000 pairs (pictures made
//    pixmaps, the dialog's arrays and list, an icon per row, the first pair shown in the
//    viewers), against a baseline: a plain list widget given the same 1,000 texts and icons.
// Each figure is the best of kRounds rounds. Goal: pictures and filling together <= 1 s.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include <QApplication>
#include <QListWidget>
#include <QTemporaryDir>

#include <core/multiarray.h>
#include <zn3dfaultpatch.h>
#include <znfaultpatchmanager.h>
#include <znframe.h>
#include <znframeprocess.h>

#include <faultcleaningpairs.h>
#include <faultcleaningsession.h>
#include <faultcleaningwindow.h>
#include <faultsetdocument.h>

namespace {

constexpr int kOriginals = 1000;
constexpr int kSticks = 10;
constexpr int kPoints = 10;
constexpr int kRounds = 3;

using Sticks = std::vector<std::vector<core::vec3>>;

Sticks original(int f)
{
    const double x0 = 200.0 * (f % 40), z0 = 200.0 * (f / 40);
    Sticks sticks(kSticks);
    for (int s = 0; s < kSticks; ++s)
        for (int k = 0; k < kPoints; ++k) sticks[s].push_back({x0 + 4.0 * k + s, 10.0 * k, z0 + 12.0 * s});
    return sticks;
}

// The copy: sticks reversed, inner points (not on the box's faces) moved by 0.25 or less.
Sticks copyOf(Sticks sticks)
{
    int n = 0;
    for (std::size_t s = 0; s < sticks.size(); ++s) {
        std::reverse(sticks[s].begin(), sticks[s].end());
        if (s == 0 || s + 1 == sticks.size()) continue;
        for (std::size_t k = 1; k + 1 < sticks[s].size(); ++k, ++n) sticks[s][k].x += 0.25 * ((n % 3) - 1);
    }
    return sticks;
}

std::unique_ptr<ZNFaultPatchManager> plantedSet()
{
    core::MultiArray<core::vec3> rows(2 * kOriginals);
    for (int f = 0; f < 2 * kOriginals; ++f) {
        const Sticks sticks = f < kOriginals ? original(f) : copyOf(original(f - kOriginals));
        for (std::size_t s = 0; s < sticks.size(); ++s) {
            if (s > 0) rows.addElement(f, core::vec3(-9999, -9999, -9999), false);
            for (const core::vec3& p : sticks[s]) rows.addElement(f, p, false);
        }
    }
    return std::make_unique<ZNFaultPatchManager>(rows, georef::UnitObject());
}

double bestMs(const std::function<void()>& run)
{
    double best = 1e300;
    for (int r = 0; r < kRounds; ++r) {
        const auto start = std::chrono::steady_clock::now();
        run();
        best = std::min(best, std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir settings;
    qputenv("KORVALITH_SETTINGS_DIR", settings.path().toUtf8());
    QApplication app(argc, argv);

    FaultSetDocument document(plantedSet(), {}, QString(), "bench");
    const core::Array<core::Duplet> noCandidates;
    const core::Array<double> noCosts;
    int pairCount = 0;
    const double detection = bestMs([&] {
        ZNFaultPatchManager copy(*document.faultSet());
        core::Array<core::Duplet> pairs;
        copy.getSameFaultArray(pairs, -1);
        pairCount = pairs.size();
    });
    FaultCleaningPairs found;
    const double search = bestMs([&] {
        ZNFaultPatchManager copy(*document.faultSet());
        found = findCleaningPairs(copy, noCandidates, noCosts, -1);
    });

    ZNFrame frame(QStringLiteral("CleaningBench"));
    ZNFrameProcess process(&frame);
    frame.resize(1400, 900);
    frame.show();  // the window is laid out and painted as the user would see it
    QCoreApplication::processEvents();
    const double fill = bestMs([&] {
        FaultCleaningWindow window(&frame, &document, found);
        QCoreApplication::processEvents();
    });
    const double baseline = bestMs([&] {
        QListWidget list;
        FaultCleaningSession session(&document, found);
        for (int row = 0; row < session.rowCount(); ++row) {
            auto* item = new QListWidgetItem(QStringLiteral("%1 <-> %2").arg(session.pairs()[row].a).arg(session.pairs()[row].b), &list);
            item->setIcon(QIcon(session.pixmap(row)));
        }
        QCoreApplication::processEvents();
    });

    const double pictures = search - detection;
    std::printf("fault set of %d faults, %d duplicate pairs found (%d proposed with pictures)\n", 2 * kOriginals,
                pairCount, found.pairs.size());
    std::printf("worker: duplicate detection %8.1f ms; detection and pictures %8.1f ms (pictures %.1f ms, %.3f ms a pair)\n",
                detection, search, pictures, pictures / std::max(1, found.pairs.size()));
    std::printf("GUI:    window filled with %d pairs %8.1f ms; plain list of the same rows and icons %.1f ms (ratio %.2f)\n",
                found.pairs.size(), fill, baseline, fill / baseline);
    std::printf("pictures and filling together %.1f ms (goal <= 1000 ms: %s)\n", pictures + fill,
                pictures + fill <= 1000.0 ? "met" : "NOT met");
    return 0;
}
