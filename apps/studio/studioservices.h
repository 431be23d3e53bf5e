#pragma once
#include <memory>

class ZNDialogMessageBox;
class ZNFrame;
class ZNFrameProcess;
class ZNGuiEventBus;
class ZNGuiProgressBarMgr;
class ZNMessageLog;
class ZNNotificationArea;
class ZNProgressPanel;

// The host services of the studio, installed for the lifetime of this object (the main
// window's) in place of the headless defaults, and the previous ones restored after:
// actions routed to the frame, messages to the log and the notifications, progress bars
// to the panel, message boxes as real boxes. With `dialogs` false message boxes stay as
// the default's log lines (tests install recording ones).
class StudioServices {
public:
    StudioServices(ZNFrame* frame, ZNMessageLog* log, ZNNotificationArea* notifications,
                   ZNProgressPanel* progress, bool dialogs);
    ~StudioServices();
    StudioServices(const StudioServices&) = delete;
    StudioServices& operator=(const StudioServices&) = delete;

    ZNGuiProgressBarMgr* progress() const { return m_progress.get(); }

private:
    std::unique_ptr<ZNFrameProcess> m_process;
    std::unique_ptr<ZNGuiEventBus> m_bus;
    std::unique_ptr<ZNGuiProgressBarMgr> m_progress;
    std::unique_ptr<ZNDialogMessageBox> m_messageBox;
};
