#include <iostream>

#include <QGuiApplication>

#include "commandline.h"

namespace {
// Qt's own warnings (a missing runtime folder, fonts) are not the user's business:
// stderr keeps one line per problem of the tool.
void keepOnlyCriticalQtMessages(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtCriticalMsg || type == QtFatalMsg) std::cerr << text.toStdString() << '\n';
}
} // namespace

// kfaults: see `kfaults --help`. Pictures are drawn without a display.
int main(int argc, char** argv)
{
    qInstallMessageHandler(keepOnlyCriticalQtMessages);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    std::vector<std::string> args(argv, argv + argc);
    return kfaults::runKfaults(args, std::cout, std::cerr);
}
