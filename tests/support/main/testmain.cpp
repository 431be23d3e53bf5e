// The main of every test executable: a GUI application (a widget application for the
// tests of widgets, built with KORVALITH_TEST_WIDGETS) on the offscreen platform, so
// that pens, images, painting and widgets work without a display, unless the test's
// environment names another platform (the OpenGL tests run on xcb under Xvfb); and a
// private, empty user settings directory, so that no test reads or writes the settings
// of the user running it.
#include <QTemporaryDir>
#ifdef KORVALITH_TEST_WIDGETS
#include <QApplication>
using TestApplication = QApplication;
#else
#include <QGuiApplication>
using TestApplication = QGuiApplication;
#endif

#include <gtest/gtest.h>

#include "tsanqtevents.h"

#if defined(__SANITIZE_ADDRESS__)
// Qt 5's offscreen platform plugin never frees its screen objects, and its xcb platform
// (the OpenGL tests, under Xvfb) keeps the D-Bus connection it opens; those leaks are the
// toolkit's, made once per process, and are not reported. Every other leak is.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\n"
           "leak:QPlatformScreen::QPlatformScreen\n"
           "leak:QScreen::QScreen\n"
           "leak:libdbus-1.so\n";
}
// Tests of allocation failure ask for more memory than exists: the allocator must answer
// null, as the system allocator does, instead of stopping the program.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif

#ifdef KORVALITH_TEST_WIDGETS
namespace {
// The offscreen platform warns, for every dock widget shown, that it cannot propagate
// size hints, and for every 3D view shown, that it has no OpenGL context (the view says
// so in its area); that noise hides the messages that matter and is dropped.
QtMessageHandler g_defaultHandler = nullptr;
void filterPlatformNoise(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (text.contains(QLatin1String("does not support propagateSizeHints")) ||
        text.contains(QLatin1String("QOpenGLWidget: Failed to create context")))
        return;
    g_defaultHandler(type, context, text);
}
} // namespace
#endif

int main(int argc, char** argv)
{
#if defined(__SANITIZE_THREAD__)
    orderQtEventsForThreadSanitizer();  // before any thread starts
#endif
#ifdef KORVALITH_TEST_WIDGETS
    g_defaultHandler = qInstallMessageHandler(filterPlatformNoise);
#endif
    testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir settingsDir;
    if (qEnvironmentVariableIsEmpty("KORVALITH_SETTINGS_DIR"))
        qputenv("KORVALITH_SETTINGS_DIR", settingsDir.path().toUtf8());
    TestApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
