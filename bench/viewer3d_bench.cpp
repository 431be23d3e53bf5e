// Frame time of the 3D view with the platform's OpenGL (run under `xvfb-run -a` it is
// Mesa's software renderer), on two scenes:
//   demo:   5 meshed faults with their sticks, three textured 128 x 128 sections, the
//           volume's box and the reference point;
//   large:  1,000 meshed faults of 20 sticks.
// For each: the first frame (every buffer uploaded), steady frames (the camera turns, no
// buffer changes: nothing uploaded), a frame after one fault was re-meshed (its buffers
// only), and, as the baseline measured in the same run, frames that upload every item
// again, as a viewer that sent its geometry every frame would. Frames are drawn by the
// view's renderer into a framebuffer of the view's size and finished (glFinish) before
// the clock stops; a pick (item buffer and depth read back) is timed too.
//
// Usage: viewer3d_bench [--width W] [--height H] [--frames N]
// Set KORVALITH_KEEP_PICTURES=<folder> to keep a picture of each scene.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <random>
#include <vector>

#include <QApplication>
#include <QDir>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>

#include <zn3dfaultpatch.h>
#include <zn3drenderer.h>
#include <zn3dviewer.h>

#include "randomfaults.h"

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

struct Settings {
    int width = 1024;
    int height = 768;
    int frames = 20;
};

// A view's renderer drawing into a framebuffer of its own.
class Bench {
public:
    Bench(QOpenGLContext& context, const Settings& settings) : m_context(context), m_settings(settings) {}

    // Draws one frame and waits for it; milliseconds.
    double frame(ZN3DRenderer& renderer, const ZN3DViewerEngine& engine, QOpenGLFramebufferObject& target)
    {
        const Clock::time_point start = Clock::now();
        target.bind();
        renderer.render(engine);
        m_context.functions()->glFinish();
        return millisecondsSince(start);
    }

    void run(const char* name, ZN3DViewerEngine& engine, const std::vector<int>& meshIds)
    {
        QOpenGLFramebufferObject target(m_settings.width, m_settings.height, QOpenGLFramebufferObject::Depth);
        ZN3DRenderer renderer;
        if (!renderer.initialize()) {
            std::printf("%s: %s\n", name, qPrintable(renderer.errorText()));
            return;
        }
        engine.setViewport(m_settings.width, m_settings.height);
        engine.fitAll();
        const ZN3DRenderer::Statistics& stats = renderer.statistics();

        const double first = frame(renderer, engine, target);
        const int firstUploads = stats.uploadsLastFrame;
        const qint64 triangles = stats.trianglesLastFrame;
        keep(target, name);

        std::vector<double> steady;
        int steadyUploads = 0;
        for (int i = 0; i < m_settings.frames; ++i) {
            engine.orbit(2.0, 0.0);
            steady.push_back(frame(renderer, engine, target));
            steadyUploads += stats.uploadsLastFrame;
        }

        engine.scene().updateItem(meshIds.front());
        const double remeshed = frame(renderer, engine, target);
        const int remeshedUploads = stats.uploadsLastFrame;

        // Baseline: every item's buffers sent again before each frame.
        std::vector<double> everyFrame;
        int everyFrameUploads = 0;
        const int baselineFrames = std::max(3, m_settings.frames / 4);
        for (int i = 0; i < baselineFrames; ++i) {
            for (const ZN3DScene::Item& item : engine.scene().items()) engine.scene().updateItem(item.id);
            engine.orbit(2.0, 0.0);
            everyFrame.push_back(frame(renderer, engine, target));
            everyFrameUploads = stats.uploadsLastFrame;
        }

        // A pick where the first fault's first vertex shows.
        const auto* surface = engine.scene().content<ZN3DSurfaceItem>(meshIds.front());
        const core::vec2 onFault = engine.camera().worldToScreen(surface->object->getPoints()[0]);
        target.bind();
        const Clock::time_point pickStart = Clock::now();
        const ZN3DViewerEngine::Hit hit = renderer.pick(engine, onFault, true);
        const double pick = millisecondsSince(pickStart);
        renderer.release();

        const double steadyMs = median(steady), baselineMs = median(everyFrame);
        std::printf("%s (%dx%d): %lld triangles, %d items\n", name, m_settings.width, m_settings.height,
                    static_cast<long long>(triangles), engine.scene().count());
        std::printf("  first frame          %9.1f ms  %6d uploads\n", first, firstUploads);
        std::printf("  steady frame median  %9.1f ms  %6.1f uploads/frame  %7.2f fps  %8.2f Mtriangles/s\n",
                    steadyMs, double(steadyUploads) / m_settings.frames, 1000.0 / steadyMs,
                    triangles / steadyMs / 1000.0);
        std::printf("  one fault re-meshed  %9.1f ms  %6d uploads\n", remeshed, remeshedUploads);
        std::printf("  uploading every item %9.1f ms  %6d uploads/frame  (steady / this = %.2f)\n", baselineMs,
                    everyFrameUploads, steadyMs / baselineMs);
        std::printf("  pick                 %9.1f ms  (item %d, fault %d aimed at)\n", pick, hit.id, meshIds.front());
    }

private:
    void keep(QOpenGLFramebufferObject& target, const char* name)
    {
        const QString folder = qEnvironmentVariable("KORVALITH_KEEP_PICTURES");
        if (folder.isEmpty()) return;
        QDir().mkpath(folder);
        target.toImage().save(QDir(folder).filePath(QStringLiteral("viewer3d_bench_%1.png").arg(name)));
    }

    QOpenGLContext& m_context;
    Settings m_settings;
};

// Meshed faults of `shape`, in the fault palette's colours, at half opacity as the
// studio shows them.
std::vector<std::unique_ptr<ZN3DFaultPatch>> meshedFaults(int count, const benchfaults::FaultShape& shape,
                                                          unsigned seed)
{
    std::mt19937 rng(seed);
    std::vector<std::unique_ptr<ZN3DFaultPatch>> faults;
    for (int f = 0; f < count; ++f) {
        faults.push_back(std::make_unique<ZN3DFaultPatch>());
        faults.back()->setPickedPoints(benchfaults::randomFault(rng, shape));
        faults.back()->setMeshingMethod(ZN3DFaultPatch::MinimumEnvelop);
    }
#pragma omp parallel for schedule(dynamic)
    for (int f = 0; f < count; ++f) faults[size_t(f)]->updateMeshWithPickedPoint();
    return faults;
}

QImage sectionImage(int size, int seed)
{
    QImage image(size, size, QImage::Format_RGB32);
    for (int row = 0; row < size; ++row)
        for (int column = 0; column < size; ++column) {
            const int v = 128 + int(100 * std::sin(row * 0.3 + seed) * std::cos(column * 0.05));
            image.setPixel(column, row, qRgb(v, v, std::min(255, v + 30)));
        }
    return image;
}

std::vector<int> demoScene(ZN3DViewerEngine& engine, std::vector<std::unique_ptr<ZN3DFaultPatch>>& faults)
{
    benchfaults::FaultShape shape;
    shape.sticks = 12;
    shape.pointsPerStick = 12;
    shape.spread = 1000.0;
    faults = meshedFaults(5, shape, 7);
    std::vector<int> ids;
    for (size_t f = 0; f < faults.size(); ++f) {
        const int id = int(f) + 1;
        engine.scene().setItem(id, ZN3DSurfaceItem{faults[f].get()});
        engine.scene().setItem(100 + id, ZN3DPolylineItem::fromPickedPoints(faults[f]->getPickedPoints(),
                                                                           faults[f]->getPen().color()));
        ids.push_back(id);
    }
    const geom::Box3 box = engine.scene().boundingBox();
    const core::vec3 low = box.low, high = box.high, middle = (low + high) / 2.0;
    const std::array<core::vec3, 4> sections[3] = {
        {core::vec3{middle.x, low.y, low.z}, {middle.x, low.y, high.z}, {middle.x, high.y, high.z}, {middle.x, high.y, low.z}},
        {core::vec3{low.x, low.y, middle.z}, {high.x, low.y, middle.z}, {high.x, high.y, middle.z}, {low.x, high.y, middle.z}},
        {core::vec3{low.x, middle.y, high.z}, {high.x, middle.y, high.z}, {high.x, middle.y, low.z}, {low.x, middle.y, low.z}},
    };
    for (int s = 0; s < 3; ++s) {
        ZN3DSectionItem section;
        section.image = sectionImage(128, s);
        section.corners = sections[s];
        engine.scene().setItem(200 + s, section, false);
    }
    ZN3DBoxItem volume;
    volume.setBox(box);
    volume.axes = {ZN3DBoxItem::Axis{"Inline", 1, 128}, {"Time", 0, 2000}, {"Crossline", 1, 128}};
    engine.scene().setItem(300, volume, false);
    engine.scene().setItem(301, ZN3DReferencePointItem{middle}, false);
    return ids;
}

std::vector<int> largeScene(ZN3DViewerEngine& engine, std::vector<std::unique_ptr<ZN3DFaultPatch>>& faults)
{
    faults = meshedFaults(1000, benchfaults::FaultShape(), 12345);
    std::vector<int> ids;
    for (size_t f = 0; f < faults.size(); ++f) {
        engine.scene().setItem(int(f) + 1, ZN3DSurfaceItem{faults[f].get()});
        ids.push_back(int(f) + 1);
    }
    return ids;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    Settings settings;
    const QStringList args = app.arguments();
    for (int i = 1; i + 1 < args.size(); i += 2) {
        const int value = args[i + 1].toInt();
        if (value <= 0) continue;
        if (args[i] == "--width") settings.width = value;
        if (args[i] == "--height") settings.height = value;
        if (args[i] == "--frames") settings.frames = value;
    }

    QOpenGLContext context;
    context.setFormat(ZN3DViewer::requiredFormat());
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!context.create() || !context.makeCurrent(&surface)) {
        std::fprintf(stderr, "viewer3d_bench: no OpenGL context (run it under xvfb-run -a with QT_QPA_PLATFORM=xcb)\n");
        return 1;
    }
    std::printf("%s %s\n", reinterpret_cast<const char*>(context.functions()->glGetString(GL_VERSION)),
                reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER)));
    Bench bench(context, settings);
    {
        ZN3DViewerEngine engine;
        std::vector<std::unique_ptr<ZN3DFaultPatch>> faults;
        const std::vector<int> ids = demoScene(engine, faults);
        bench.run("demo", engine, ids);
    }
    {
        ZN3DViewerEngine engine;
        std::vector<std::unique_ptr<ZN3DFaultPatch>> faults;
        const Clock::time_point start = Clock::now();
        const std::vector<int> ids = largeScene(engine, faults);
        std::printf("(1,000 faults meshed in %.1f s)\n", millisecondsSince(start) / 1000.0);
        Settings fewer = settings;
        fewer.frames = std::max(4, settings.frames / 4);
        Bench(context, fewer).run("large", engine, ids);
    }
    context.doneCurrent();
    return 0;
}
