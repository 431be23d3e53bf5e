#include "znframe.h"

#include <vector>

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QUrl>

#include <znsettings.h>

namespace {
const QString kGeometryKey = QStringLiteral("geometry");
const QString kStateKey = QStringLiteral("state");
const QString kViewModeKey = QStringLiteral("viewMode");

QStringList localFilesOf(const QMimeData* mime)
{
    QStringList files;
    if (!mime || !mime->hasUrls()) return files;
    for (const QUrl& url : mime->urls())
        if (url.isLocalFile()) files << url.toLocalFile();
    return files;
}
} // namespace

ZNFrame::ZNFrame(const QString& settingsGroup, QWidget* parent)
    : QMainWindow(parent), m_settingsGroup(settingsGroup), m_mdi(new QMdiArea(this))
{
    setCentralWidget(m_mdi);
    m_mdi->setObjectName(QStringLiteral("mdiArea"));
    setAcceptDrops(true);
    setDockOptions(QMainWindow::AnimatedDocks | QMainWindow::AllowTabbedDocks);

    m_windowMenu = menuBar()->addMenu(tr("&Window"));
    m_windowMenu->setObjectName(QStringLiteral("windowMenu"));
    auto* modes = new QActionGroup(this);
    const std::pair<QString, ViewMode> entries[] = {{tr("&Tile"), ViewMode::Tiled},
                                                     {tr("&Cascade"), ViewMode::Cascaded},
                                                     {tr("Ta&bbed"), ViewMode::Tabbed}};
    for (const auto& entry : entries) {
        QAction* a = m_windowMenu->addAction(entry.first);
        a->setCheckable(true);
        a->setChecked(entry.second == m_viewMode);
        a->setActionGroup(modes);
        const ViewMode mode = entry.second;
        connect(a, &QAction::triggered, this, [this, mode] { setViewMode(mode); });
    }
    m_windowMenu->addSeparator();
    m_windowsSeparator = m_windowMenu->addSeparator();
    connect(m_windowMenu, &QMenu::aboutToShow, this, &ZNFrame::rebuildWindowList);
    addActionHandler(QStringLiteral("UPDATE_WINDOW_MANAGER"), [this](ZNObject*) {
        rebuildWindowList();
        emit windowsChanged();
    });
}

QStringList ZNFrame::subWindowTitles() const
{
    QStringList titles;
    for (const QMdiSubWindow* sub : m_mdi->subWindowList()) titles << sub->windowTitle();
    return titles;
}

void ZNFrame::rebuildWindowList()
{
    qDeleteAll(m_windowActions);
    m_windowActions.clear();
    for (QMdiSubWindow* sub : m_mdi->subWindowList()) {
        QAction* a = new QAction(sub->windowTitle(), m_windowMenu);
        a->setCheckable(true);
        a->setChecked(sub == m_mdi->activeSubWindow());
        connect(a, &QAction::triggered, this, [this, sub] { m_mdi->setActiveSubWindow(sub); });
        m_windowMenu->addAction(a);
        m_windowActions << a;
    }
}

ZNFrame::~ZNFrame() = default;

int ZNFrame::addActionHandler(const QString& action, ActionHandler handler)
{
    const int handle = m_nextHandle++;
    m_handlers.emplace(handle, Handler{action, std::move(handler)});
    return handle;
}

void ZNFrame::removeActionHandler(int handle)
{
    m_handlers.erase(handle);
}

int ZNFrame::actionHandlerCount(const QString& action) const
{
    int n = 0;
    for (const auto& h : m_handlers)
        if (h.second.action == action) ++n;
    return n;
}

int ZNFrame::routeAction(const QString& action, ZNObject* object)
{
    // The handlers are copied first: a handler may add or remove handlers.
    std::vector<ActionHandler> calls;
    for (const auto& h : m_handlers)
        if (h.second.action == action) calls.push_back(h.second.call);
    for (const ActionHandler& call : calls) call(object);
    return static_cast<int>(calls.size());
}

QMdiSubWindow* ZNFrame::addSubWindow(QWidget* widget, const QString& title)
{
    widget->setAttribute(Qt::WA_DeleteOnClose);
    QMdiSubWindow* sub = m_mdi->addSubWindow(widget);
    sub->setWindowTitle(title);
    widget->setWindowTitle(title);
    sub->show();
    if (m_viewMode == ViewMode::Tiled) m_mdi->tileSubWindows();
    return sub;
}

void ZNFrame::setViewMode(ViewMode mode)
{
    m_viewMode = mode;
    if (mode == ViewMode::Tabbed) {
        m_mdi->setViewMode(QMdiArea::TabbedView);
        return;
    }
    m_mdi->setViewMode(QMdiArea::SubWindowView);
    if (mode == ViewMode::Tiled) m_mdi->tileSubWindows();
    else m_mdi->cascadeSubWindows();
}

QDockWidget* ZNFrame::addDock(const QString& objectName, const QString& title, QWidget* content,
                              Qt::DockWidgetArea area)
{
    auto* dock = new QDockWidget(title, this);
    dock->setObjectName(objectName);  // saveState() needs it
    dock->setWidget(content);
    addDockWidget(area, dock);
    m_windowMenu->insertAction(m_windowsSeparator, dock->toggleViewAction());
    return dock;
}

void ZNFrame::saveLayout() const
{
    ZNSettings::setValue(m_settingsGroup, kGeometryKey, saveGeometry());
    ZNSettings::setValue(m_settingsGroup, kStateKey, saveState());
    ZNSettings::setValue(m_settingsGroup, kViewModeKey, static_cast<int>(m_viewMode));
}

bool ZNFrame::restoreLayout()
{
    const QByteArray geometry = ZNSettings::value(m_settingsGroup, kGeometryKey).toByteArray();
    const QByteArray state = ZNSettings::value(m_settingsGroup, kStateKey).toByteArray();
    if (geometry.isEmpty() && state.isEmpty()) return false;
    restoreGeometry(geometry);
    restoreState(state);
    bool ok = false;
    const int mode = ZNSettings::value(m_settingsGroup, kViewModeKey).toInt(&ok);
    if (ok && mode >= 0 && mode <= static_cast<int>(ViewMode::Tabbed)) {
        setViewMode(static_cast<ViewMode>(mode));
        const QList<QAction*> modes = m_windowMenu->actions();
        if (mode < modes.size()) modes[mode]->setChecked(true);
    }
    return true;
}

void ZNFrame::dragEnterEvent(QDragEnterEvent* event)
{
    if (!localFilesOf(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void ZNFrame::dropEvent(QDropEvent* event)
{
    const QStringList files = localFilesOf(event->mimeData());
    if (files.isEmpty()) return;
    event->acceptProposedAction();
    emit filesDropped(files);
}

void ZNFrame::closeEvent(QCloseEvent* event)
{
    saveLayout();
    QMainWindow::closeEvent(event);
}
