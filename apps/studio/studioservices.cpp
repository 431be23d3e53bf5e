#include "studioservices.h"

#include <zndialogmessagebox.h>
#include <znframe.h>
#include <znframeprocess.h>
#include <znguieventbus.h>
#include <znguiprogressbarmgr.h>

StudioServices::StudioServices(ZNFrame* frame, ZNMessageLog* log, ZNNotificationArea* notifications,
                               ZNProgressPanel* progress, bool dialogs)
    : m_process(std::make_unique<ZNFrameProcess>(frame)),
      m_bus(std::make_unique<ZNGuiEventBus>(log, notifications)),
      m_progress(std::make_unique<ZNGuiProgressBarMgr>(progress))
{
    if (dialogs) m_messageBox = std::make_unique<ZNDialogMessageBox>(frame);
}

// Uninstalled in the reverse order of installation, each restoring what it replaced.
StudioServices::~StudioServices()
{
    m_messageBox.reset();
    m_progress.reset();
    m_bus.reset();
    m_process.reset();
}
