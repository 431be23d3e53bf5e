// kfaults-studio: the desktop application of the fault toolkit.
//   kfaults-studio [FILES...]   opens the given volumes, fault sets and stick files
//   kfaults-studio --demo       opens the built-in synthetic volume and its extracted faults
//   kfaults-studio --project D  shows the folder D in the project dock
#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QOpenGLWidget>
#include <QPainter>
#include <QTimer>

#include <cstdio>
#include <memory>

#include <zn3dviewer.h>
#include <znguiprogressbarmgr.h>
#include <znprojectbrowserpluginfault.h>

#include "studio3dviews.h"
#include "studioprojectdock.h"
#include "studiowindow.h"

namespace {

// The window as shown. The 3D views are drawn again over it from their own grabs: a grab
// of the window leaves out the text they write over their picture (axis labels).
QPixmap pictureOf(StudioWindow& window)
{
    QPixmap picture = window.grab();
    QPainter painter(&picture);
    for (QOpenGLWidget* view : window.findChildren<QOpenGLWidget*>())
        if (view->isVisible())
            painter.drawImage(QRect(view->mapTo(&window, QPoint(0, 0)), view->size()), view->grabFramebuffer());
    return picture;
}

// Once every file given has been opened and the project folder's fault sets list their
// faults: saves a picture of the window to `path` and quits (0, or 1 when the picture
// could not be written). Also prints on stdout the milliseconds from the start of the
// program to the first paint of the window holding everything it was asked to open.
void screenshotWhenReady(StudioWindow& window, const QString& path, const QElapsedTimer& sinceStart)
{
    const ZNProjectBrowserPluginFault* faultNames = window.projectDock()->faultPlugin();
    auto taken = std::make_shared<bool>(false);
    const auto whenReady = [&window, faultNames, path, &sinceStart, taken] {
        if (*taken || window.runningTaskCount() > 0 || faultNames->readerCount() > 0) return;
        *taken = true;
        // Painted now, with everything open: that is the time reported. The picture is
        // taken once the progress panel has caught up with the end of the work.
        window.repaint();
        std::printf("first painted window with everything open: %lld ms\n",
                    static_cast<long long>(sinceStart.elapsed()));
        std::fflush(stdout);
        QTimer::singleShot(2 * ZNGuiProgressBarMgr::kDefaultRefreshMs, &window, [&window, path] {
            const bool saved = path.isEmpty() || pictureOf(window).save(path);
            QApplication::exit(saved ? 0 : 1);
        });
    };
    QObject::connect(&window, &StudioWindow::taskFinished, &window, whenReady);
    QObject::connect(faultNames, &ZNProjectBrowserPluginFault::readersFinished, &window, whenReady);
}

} // namespace

int main(int argc, char** argv)
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("kfaults-studio"));
    QApplication::setOrganizationName(QStringLiteral("Korvalith"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Korvalith Faults Studio: pick, extract, mesh and clean faults."));
    parser.addHelpOption();
    const QCommandLineOption demo(QStringLiteral("demo"),
                                  QStringLiteral("Open the built-in synthetic volume and its extracted faults."));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QStringLiteral("Once everything asked for is open, save a picture of the window to <file>, print "
                       "the time it took and quit (an empty <file> only times)."),
        QStringLiteral("file"));
    const QCommandLineOption project(
        QStringLiteral("project"),
        QStringLiteral("Show the volumes and fault sets of <folder> in the project dock (File > Open Project Folder)."),
        QStringLiteral("folder"));
    parser.addOption(demo);
    parser.addOption(screenshot);
    parser.addOption(project);
    parser.addPositionalArgument(QStringLiteral("files"), QStringLiteral("Volumes, fault sets or stick files to open."),
                                 QStringLiteral("[FILES...]"));
    parser.process(app);

    StudioWindow window(StudioWindow::Options{});
    if (parser.isSet(screenshot)) screenshotWhenReady(window, parser.value(screenshot), sinceStart);
    if (parser.isSet(project)) window.projectDock()->setFolder(parser.value(project));
    window.show();
    window.offerEmergencyRestore([&window](const QStringList& files) {
        return QMessageBox::question(&window, QObject::tr("Restore picking"),
                                     QObject::tr("The last session ended without saving its picks. Restore them from "
                                                 "its emergency saves?\n%1")
                                         .arg(files.join(QLatin1Char('\n')))) == QMessageBox::Yes;
    });
    if (parser.isSet(demo)) {
        // The demo's 3D view, beside the inline, looks from the south-west: from the default
        // side two of its faults are seen edge-on.
        QObject::connect(&window, &StudioWindow::demoOpened, &window, [&window] {
            for (ZN3DViewer* view : window.views3D()->views()) view->engine().setOrientation(200.0, 30.0);
        });
        window.openDemo();
    }
    window.openFiles(parser.positionalArguments());
    return app.exec();
}
