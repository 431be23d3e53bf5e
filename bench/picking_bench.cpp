// The picking front end's latency and memory, in one run:
//  - from the release of a pick to the fault meshed again and ready to draw, for a fault
//    of 20 sticks of 20 points, with each surface method (the edit, its undo step, the
//    surface taking the points and meshing them), min and median of the picks;
//  - the bytes the undo history keeps per edit on a fault set of 1,000 such faults: an
//    edit's snapshot (the fathers of every patch and the points of the edited fault) and,
//    for comparison, a full snapshot (every descriptor) and the whole set's points.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

#include <QApplication>
#include <QTemporaryDir>

#include <core/multiarray.h>
#include <orthographicviewer.h>
#include <zn3dfaultpatch.h>
#include <znfaultpatchmanager.h>
#include <znfaultpatchmanagerconfig.h>
#include <znfaultpickingsession.h>

#include <faultsetdocument.h>

namespace {

constexpr int kSticks = 20;
constexpr int kPointsPerStick = 20;
constexpr int kPicks = 15;
constexpr int kFaults = 1000;

// Rows of `faults` faults of kSticks vertical sticks of kPointsPerStick points, 50 m
// apart along x, 10 m down, faults 1 km apart along z.
core::MultiArray<core::vec3> fakeFaults(int faults)
{
    core::MultiArray<core::vec3> rows(faults);
    for (int f = 0; f < faults; ++f)
        for (int s = 0; s < kSticks; ++s) {
            for (int p = 0; p < kPointsPerStick; ++p)
                rows.addElement(f, core::vec3(50.0 * s, 1000.0 + 10.0 * p, 1000.0 * f + 0.3 * s), false);
            rows.addElement(f, core::vec3(-9999, -9999, -9999), false);
        }
    return rows;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

void latency(int method)
{
    auto set = std::make_unique<ZNFaultPatchManager>(fakeFaults(1), georef::UnitObject());
    set->findFaultLight(1)->setMeshingMethod(method);
    set->findFaultLight(1)->setInterpolationSize(20);
    FaultSetDocument document(std::move(set), {}, QString(), "bench");
    ZNFaultPickingSession* session = document.pickingSession();
    session->setCurrentFault(1);
    OrthographicViewer viewer;  // screen = world x, y
    std::vector<double> ms;
    std::size_t triangles = 0;
    for (int k = 0; k < kPicks; ++k) {
        const double x = 50.0 * (k % kSticks) + 1.0;
        const double y = 1005.0 + 10.0 * (k % (kPointsPerStick - 1));
        session->press({x, y, 1000.0 * 0 + 0.3 * (k % kSticks)}, {x, y}, viewer);
        const auto start = std::chrono::steady_clock::now();
        session->release(viewer);  // the edit, its undo step, the surface meshed again
        ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
        triangles = static_cast<std::size_t>(document.surface(1)->getNumberOfFacettes());
    }
    std::printf("%-16s release to remeshed fault: min %6.2f ms  median %6.2f ms  (%zu triangles; goal <= 50 ms for "
                "the grid method)\n",
                method == 0 ? "Convex Envelop" : "Minimum Envelop", *std::min_element(ms.begin(), ms.end()),
                median(ms), triangles);
}

void memoryPerEdit()
{
    ZNFaultPatchManager set(fakeFaults(kFaults), georef::UnitObject());
    ZNFaultPickingSession session(&set);
    OrthographicViewer viewer;
    session.setCurrentFault(500);
    const auto bytesOf = [](const ZNFaultPatchManagerConfig& c) {
        const std::size_t points = static_cast<std::size_t>(c.getPickedPoints().getTotalCount());
        return c.getFathers().size() * sizeof(int) + c.getPatchList().size() * sizeof(int) +
               points * sizeof(core::PointWithBool) + c.getFaultLights().size() * sizeof(ZN3DFaultPatchLight);
    };
    session.press({1.0, 1005.0, 500000.0}, {1.0, 1005.0}, viewer);
    session.release(viewer);
    const ZNFaultPatchManagerConfig* edit = set.getCurrentConfiguration();
    std::unique_ptr<ZNFaultPatchManagerConfig> full(set.getConfiguration("full", nullptr));
    const double setPoints = double(set.getPickedPoints().getTotalCount()) * sizeof(core::PointWithBool);
    std::printf("undo store on %d faults of %d x %d points: an edit's snapshot %.1f KiB, a full snapshot %.1f KiB, "
                "the whole set's points %.1f KiB (edit / whole set %.4f); history holds %d snapshots\n",
                kFaults, kSticks, kPointsPerStick, bytesOf(*edit) / 1024.0, bytesOf(*full) / 1024.0, setPoints / 1024.0,
                bytesOf(*edit) / setPoints, set.getNumberOfConfiguration());
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir settings;
    qputenv("KORVALITH_SETTINGS_DIR", settings.path().toUtf8());
    QApplication app(argc, argv);
    latency(0);
    latency(1);
    memoryPerEdit();
    return 0;
}
