#pragma once
#include <functional>
#include <map>

#include <QMainWindow>
#include <QString>
#include <QStringList>

class QDockWidget;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class ZNObject;

// The multiple-document frame of a host application: sub-windows in an MDI area (tiled,
// cascaded or tabbed), docks around it, and the routing of the named actions that the
// library posts to the frame ("UPDATE_FAULT_MESH", "UPDATE_FAULT_LIGHT",
// "UPDATE_WINDOW_MANAGER", ...) to whoever handles them.
//
// Routing: each action name has any number of handlers, called in the order they were
// added, on the frame's thread only (ZNFrameProcess brings actions posted from other
// threads there). An action nobody handles is dropped. Handlers may add or remove
// handlers while an action is routed; the change applies to the next action.
//
// The frame handles "UPDATE_WINDOW_MANAGER" itself: the Window menu's list of
// sub-windows (activated by a click) is rebuilt and windowsChanged() emitted.
//
// The window's geometry, dock layout and sub-window view mode are kept in the user's
// settings under the group given at construction, saved when the frame closes and
// restored by restoreLayout(). Files dropped on the window are announced by
// filesDropped().
class ZNFrame : public QMainWindow {
    Q_OBJECT
public:
    using ActionHandler = std::function<void(ZNObject* object)>;
    enum class ViewMode { Tiled, Cascaded, Tabbed };

    explicit ZNFrame(const QString& settingsGroup, QWidget* parent = nullptr);
    ~ZNFrame() override;

    // Adds a handler of `action`; returns its handle (> 0) for removeActionHandler.
    int addActionHandler(const QString& action, ActionHandler handler);
    void removeActionHandler(int handle);
    // Number of handlers of `action`.
    int actionHandlerCount(const QString& action) const;
    // Calls the handlers of `action` with `object`; returns how many were called. On the
    // frame's thread only.
    int routeAction(const QString& action, ZNObject* object);

    QMdiArea* mdiArea() const { return m_mdi; }
    // Shows `widget` in a new sub-window titled `title`; the sub-window owns it.
    QMdiSubWindow* addSubWindow(QWidget* widget, const QString& title);
    ViewMode viewMode() const { return m_viewMode; }
    void setViewMode(ViewMode mode);
    // A dock of `content` (owned by the dock) on `area`, listed in the Window menu.
    QDockWidget* addDock(const QString& objectName, const QString& title, QWidget* content,
                         Qt::DockWidgetArea area);
    // The "Window" menu: the view modes, one toggle per dock, then the sub-windows.
    QMenu* windowMenu() const { return m_windowMenu; }
    // Titles of the sub-windows as the Window menu lists them, in the MDI area's order.
    QStringList subWindowTitles() const;

    const QString& settingsGroup() const { return m_settingsGroup; }
    // Writes the window geometry, dock layout and view mode to the settings.
    void saveLayout() const;
    // Restores what saveLayout wrote; false (nothing changed) when nothing was saved.
    bool restoreLayout();

signals:
    // Local files dropped on the window, in the order of the drop.
    void filesDropped(const QStringList& paths);
    // The list of sub-windows was rebuilt ("UPDATE_WINDOW_MANAGER").
    void windowsChanged();

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void rebuildWindowList();

    struct Handler {
        QString action;
        ActionHandler call;
    };

    QString m_settingsGroup;
    QMdiArea* m_mdi = nullptr;
    QMenu* m_windowMenu = nullptr;
    QAction* m_windowsSeparator = nullptr;  // the sub-windows are listed after it
    QList<QAction*> m_windowActions;
    ViewMode m_viewMode = ViewMode::Tiled;
    std::map<int, Handler> m_handlers;  // by handle, so by order of addition
    int m_nextHandle = 1;
};
