#include "znprocess.h"

#include <QFile>

#include "znobject.h"
#include "znservice.h"

namespace {
using Slot = ZNServiceSlot<ZNProcess>;
}

void ZNProcess::sendActionToMdi(const QString& name, ZNObject* object)
{
    instance().action(name, object);
}
void ZNProcess::insertProcessObject(ZNObject* object) { instance().insertObject(object); }
void ZNProcess::removeProcessObject(ZNObject* object) { instance().removeObject(object); }
bool ZNProcess::exists(const ZNObject* object) { return instance().hasObject(object); }
QList<ZNObject*> ZNProcess::getObjectListWithType(const QString& type)
{
    return instance().objectsWithType(type);
}

QIcon ZNProcess::getIcon(const QString& name) { return instance().icon(name); }

ZNProcess* ZNProcess::install(ZNProcess* process) { return Slot::install(process); }
ZNProcess& ZNProcess::instance() { return Slot::get(); }

int ZNProcess::addActionListener(ActionListener listener)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const int handle = m_nextListener++;
    m_listeners.append(qMakePair(handle, std::move(listener)));
    return handle;
}

void ZNProcess::removeActionListener(int handle)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (int i = 0; i < m_listeners.size(); ++i)
        if (m_listeners[i].first == handle) {
            m_listeners.removeAt(i);
            return;
        }
}

void ZNProcess::action(const QString& name, ZNObject* object)
{
    QList<QPair<int, ActionListener>> listeners;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        listeners = m_listeners;  // a listener may add or remove listeners
    }
    for (const auto& l : listeners) l.second(name, object);
}

void ZNProcess::insertObject(ZNObject* object)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (object && !m_objects.contains(object)) m_objects.append(object);
}

void ZNProcess::removeObject(ZNObject* object)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_objects.removeAll(object);
}

bool ZNProcess::hasObject(const ZNObject* object) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (ZNObject* o : m_objects)
        if (o == object) return true;
    return false;
}

QList<ZNObject*> ZNProcess::objectsWithType(const QString& type) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    QList<ZNObject*> result;
    for (ZNObject* o : m_objects)
        if (o->getZNObjectType() == type) result.append(o);
    return result;
}

QIcon ZNProcess::icon(const QString& name) const
{
    const QString path = QStringLiteral(":/icons/%1.png").arg(name);
    return QFile::exists(path) ? QIcon(path) : QIcon();
}
