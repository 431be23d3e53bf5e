// The studio window's fault viewers: "Show on fault plane" in the menu of a fault
// wherever it is right-clicked, and the viewers following the current fault.
#include "studiowindow.h"

#include <QMenu>

#include "faultsetdocument.h"

#include "studio3dviews.h"
#include "studiofaultviewers.h"
#include "studiotree.h"
#include "studioviews.h"

void StudioWindow::buildFaultViewers()
{
    m_faultViewers = new StudioFaultViewers(this, m_project, m_views, m_views3D, this);
    const auto addEntry = [this](FaultSetDocument* document, int faultId, QMenu* menu) {
        m_faultViewers->addMenuEntry(document, faultId, menu);
    };
    connect(m_studioTree, &StudioTree::faultMenuRequested, this, addEntry);
    connect(m_views, &StudioViews::faultMenuRequested, this, addEntry);
    connect(m_views3D, &Studio3DViews::faultMenuRequested, this, addEntry);
    connect(this, &StudioWindow::currentFaultChanged, m_faultViewers, &StudioFaultViewers::setCurrentFault);
}
