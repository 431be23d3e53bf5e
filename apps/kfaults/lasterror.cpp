#include "lasterror.h"

namespace kfaults {
namespace {
// The installed instance; only the host-service installation changes it.
LastError* g_installed = nullptr;
} // namespace

LastError::LastError()
{
    m_previous = ZNEventBus::install(this);
    g_installed = this;
}

LastError::~LastError()
{
    g_installed = nullptr;
    ZNEventBus::install(m_previous);
}

QString LastError::text()
{
    if (!g_installed) return QString();
    std::lock_guard<std::mutex> lock(g_installed->m_mutex);
    return g_installed->m_last;
}

void LastError::clear()
{
    if (!g_installed) return;
    std::lock_guard<std::mutex> lock(g_installed->m_mutex);
    g_installed->m_last.clear();
}

QString LastError::withDetail(const QString& what)
{
    const QString detail = text();
    return detail.isEmpty() ? what : QStringLiteral("%1 (%2)").arg(what, detail);
}

void LastError::message(int kind, const QString& text)
{
    if (kind != Error && kind != FileError) return;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_last = text.simplified();
}

} // namespace kfaults
