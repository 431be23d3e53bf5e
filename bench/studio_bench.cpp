// The desktop application's responsiveness, in one run:
//  - start to first painted window with `kfaults-studio --demo` (the built-in 128^3
//    volume generated and its faults extracted, the window painted with them), against
//    `kfaults extract` of the same volume, with and without its pictures; each the wall
//    time from spawning the process, min and median of the rounds, run alternately;
//  - the longest time the GUI thread goes without handling a 5 ms timer while the studio
//    extracts the faults of a 256^3 volume on its worker (goal: under 50 ms).
// Both programs run on Qt's offscreen platform, so no display is needed.
#include <algorithm>
#include <cstdio>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <studioloading.h>
#include <studioproject.h>
#include <studiowindow.h>

namespace {

constexpr int kRounds = 5;
constexpr int kGapVolumeSize = 256;
constexpr int kTickMs = 5;

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

// Milliseconds from spawning `program` until it printed `marker` (or exited when the
// marker is empty); -1 on failure.
double spawnMs(const QString& program, const QStringList& arguments, const QByteArray& marker)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    process.setProcessEnvironment(env);
    QElapsedTimer timer;
    timer.start();
    process.start(program, arguments);
    if (!process.waitForStarted()) return -1.0;
    QByteArray out;
    double at = -1.0;
    while (process.state() != QProcess::NotRunning || process.bytesAvailable() > 0) {
        process.waitForReadyRead(100);
        out += process.readAllStandardOutput();
        if (!marker.isEmpty() && at < 0 && out.contains(marker)) at = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }
    process.waitForFinished();
    if (marker.isEmpty() && process.exitCode() == 0) at = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    return process.exitCode() == 0 ? at : -1.0;
}

void startupRounds()
{
    QTemporaryDir dir;
    std::vector<double> studio, extract, extractNoPictures;
    for (int round = 0; round < kRounds; ++round) {
        studio.push_back(spawnMs(KFAULTS_STUDIO_EXE, {"--demo", "--screenshot", ""}, "first painted window"));
        extract.push_back(spawnMs(KFAULTS_EXE, {"extract", "-o", dir.filePath("out")}, QByteArray()));
        extractNoPictures.push_back(
            spawnMs(KFAULTS_EXE, {"extract", "--no-pictures", "-o", dir.filePath("out")}, QByteArray()));
    }
    const auto print = [](const char* what, const std::vector<double>& v) {
        std::printf("%-52s min %7.0f ms  median %7.0f ms\n", what, *std::min_element(v.begin(), v.end()), median(v));
    };
    print("kfaults-studio --demo, start to painted window", studio);
    print("kfaults extract (built-in 128^3, with pictures)", extract);
    print("kfaults extract --no-pictures", extractNoPictures);
    std::printf("ratio studio / extract: min %.2f  median %.2f  (goal <= 1.5)\n",
                *std::min_element(studio.begin(), studio.end()) / *std::min_element(extract.begin(), extract.end()),
                median(studio) / median(extract));
    std::printf("ratio studio / extract --no-pictures: min %.2f  median %.2f\n",
                *std::min_element(studio.begin(), studio.end()) /
                    *std::min_element(extractNoPictures.begin(), extractNoPictures.end()),
                median(studio) / median(extractNoPictures));
}

void guiGapRound(StudioWindow& window, ZNVolume* volume, double& longestGapMs, double& extractionMs, int& ticks)
{
    QElapsedTimer sinceTick;
    QElapsedTimer total;
    longestGapMs = 0.0;
    ticks = 0;
    QTimer tick;
    tick.setInterval(kTickMs);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        longestGapMs = std::max(longestGapMs, static_cast<double>(sinceTick.nsecsElapsed()) / 1e6);
        sinceTick.start();
        ++ticks;
    });
    bool done = false;
    QObject::connect(&window, &StudioWindow::taskFinished, &tick, [&] { done = true; });
    total.start();
    sinceTick.start();
    tick.start();
    window.extractFaults(volume, fault::FaultExtractionSettings());
    while (!done) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    extractionMs = static_cast<double>(total.nsecsElapsed()) / 1e6;
}

void guiGaps()
{
    StudioWindow window(StudioWindow::Options{false});
    window.show();
    LoadedVolume loaded = syntheticVolume(kGapVolumeSize, 1);
    if (!loaded.ok()) {
        std::printf("GUI gaps: cannot make the volume: %s\n", qPrintable(loaded.error));
        return;
    }
    ZNVolume* volume = window.project()->addVolume(std::move(loaded.volume));
    std::vector<double> gaps, times;
    for (int round = 0; round < kRounds; ++round) {
        double gap = 0.0, ms = 0.0;
        int ticks = 0;
        guiGapRound(window, volume, gap, ms, ticks);
        gaps.push_back(gap);
        times.push_back(ms);
        for (FaultSetDocument* d : window.project()->faultSets()) window.project()->removeFaultSet(d);
    }
    std::printf("extraction of a %d^3 volume in the studio: median %.0f ms; longest GUI-thread gap between %d ms "
                "ticks: max %.1f ms, median %.1f ms (goal < 50 ms)\n",
                kGapVolumeSize, median(times), kTickMs, *std::max_element(gaps.begin(), gaps.end()), median(gaps));
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir settings;
    qputenv("KORVALITH_SETTINGS_DIR", settings.path().toUtf8());
    QApplication app(argc, argv);
    startupRounds();
    guiGaps();
    return 0;
}
