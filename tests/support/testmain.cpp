// The main of every test executable: a GUI application on the offscreen platform (so
// pens, images and painting work without a display) and a private, empty user settings
// directory, so that no test reads or writes the settings of the user running it.
#include <QGuiApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

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
