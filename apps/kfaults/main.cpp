#include <iostream>

#include <QGuiApplication>

#include "commandline.h"

// kfaults: see `kfaults --help`. Pictures are drawn without a display.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    std::vector<std::string> args(argv, argv + argc);
    return kfaults::runKfaults(args, std::cout, std::cerr);
}
