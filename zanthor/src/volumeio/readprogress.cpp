#include "volumeio/readprogress.h"

#include <algorithm>
#include <climits>

#include <znprogressbarmgr.h>

namespace volumeio {
namespace {
constexpr std::size_t kMovesPerRead = 100;
}

ReadProgress::ReadProgress(const QString& title, std::size_t itemCount)
    : m_id(ZNProgressBarMgr::createProgressBar(
          title, static_cast<int>(std::min<std::size_t>(itemCount, INT_MAX)))),
      m_stride(std::max<std::size_t>(1, itemCount / kMovesPerRead))
{
}

ReadProgress::~ReadProgress() { ZNProgressBarMgr::closeProgressBar(m_id); }

bool ReadProgress::itemDoneAndCheckCancelled()
{
    ++m_done;
    if (m_done % m_stride == 0)
        ZNProgressBarMgr::incrementProgressBar(
            m_id, static_cast<int>(std::min<std::size_t>(m_stride, INT_MAX)));
    return ZNProgressBarMgr::isProgressBarCancelled(m_id);
}

} // namespace volumeio
