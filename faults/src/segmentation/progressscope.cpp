#include "segmentation/progressscope.h"

#include <znprogressbarmgr.h>

namespace fault::segmentation {

namespace {
constexpr int kMovesPerRun = 100;  // the bar moves about this many times over a run
}

ProgressScope::ProgressScope(const QString& title, int itemCount, int parent)
    : m_id(ZNProgressBarMgr::createProgressBar(title, itemCount, parent)),
      m_stride(itemCount / kMovesPerRun > 1 ? itemCount / kMovesPerRun : 1)
{
}

ProgressScope::~ProgressScope() { ZNProgressBarMgr::closeProgressBar(m_id); }

bool ProgressScope::advanceAndCheckCancelled()
{
    ++m_started;
    if (m_started % m_stride == 0) ZNProgressBarMgr::incrementProgressBar(m_id, m_stride);
    return ZNProgressBarMgr::isProgressBarCancelled(m_id);
}

} // namespace fault::segmentation
