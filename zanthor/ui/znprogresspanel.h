#pragma once
#include <map>

#include <QWidget>

#include <znprogressbarmgr.h>

class QVBoxLayout;

// The panel that shows the open progress bars: one group per outermost bar (a task),
// holding its title, its percentage and a Cancel button, and one line per nested bar
// under it, indented by depth. A bar without a range shows a busy indicator. The panel
// hides itself when no bar is open. Cancel asks the manager to cancel the task's
// outermost bar; the group stays until the operation closes its bars.
class ZNProgressPanel : public QWidget {
    Q_OBJECT
public:
    explicit ZNProgressPanel(QWidget* parent = nullptr);

    // The manager whose bars Cancel acts on (set by ZNGuiProgressBarMgr); not owned.
    void setManager(ZNProgressBarMgr* manager) { m_manager = manager; }
    // Shows `bars` (open bars by id) in place of what was shown.
    void showBars(const std::map<int, ZNProgressBarMgr::Bar>& bars);

    // For tests and status: the texts of the lines shown ("title  NN%"), in order, and
    // the number of task groups.
    QStringList lineTexts() const;
    int taskCount() const { return m_taskCount; }

signals:
    // Emitted after the user asked to cancel task `rootId`.
    void cancelRequested(int rootId);
    // Bars appeared (true) or the last one went (false): a host shows the panel's dock.
    void activityChanged(bool active);

private:
    void clearLines();

    ZNProgressBarMgr* m_manager = nullptr;
    QVBoxLayout* m_layout;
    QWidget* m_content = nullptr;
    int m_taskCount = 0;
};
