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

#if defined(__SANITIZE_ADDRESS__)
// Qt 5's offscreen platform plugin never frees its screen objects; those leaks are the
// toolkit's, made once per process, and are not reported. Every other leak is.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\n"
           "leak:QPlatformScreen::QPlatformScreen\n"
           "leak:QScreen::QScreen\n";
}
// Tests of allocation failure ask for more memory than exists: the allocator must answer
// null, as the system allocator does, instead of stopping the program.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir settingsDir;
    if (qEnvironmentVariableIsEmpty("KORVALITH_SETTINGS_DIR"))
        qputenv("KORVALITH_SETTINGS_DIR", settingsDir.path().toUtf8());
    TestApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
