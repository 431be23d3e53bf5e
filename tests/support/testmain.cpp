// The main of every test executable: a GUI application on the offscreen platform (so
// pens, images and painting work without a display) and a private, empty user settings
// directory, so that no test reads or writes the settings of the user running it.
#include <QGuiApplication>
#include <QTemporaryDir>

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
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir settingsDir;
    if (qEnvironmentVariableIsEmpty("KORVALITH_SETTINGS_DIR"))
        qputenv("KORVALITH_SETTINGS_DIR", settingsDir.path().toUtf8());
    QGuiApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
