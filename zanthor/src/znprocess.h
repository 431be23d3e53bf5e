#pragma once
#include <functional>
#include <mutex>

#include <QIcon>
#include <QList>
#include <QString>

class ZNObject;

// The host's process services: named actions posted to the multiple-document frame, and
// the registry of open objects. The default implementation keeps the registry in memory
// and hands each action to the listeners a host added (a program without a frame simply
// adds none). Library code calls the statics; tests install a recording subclass.
class ZNProcess {
public:
    using ActionListener = std::function<void(const QString& action, ZNObject* object)>;

    virtual ~ZNProcess() = default;

    // Posts a named action ("UPDATE_FAULT_MESH", ...) about `object` (may be null).
    static void sendActionToMdi(const QString& action, ZNObject* object);

    // The registry of open objects. Inserting an object twice keeps one entry; removing
    // an unknown object does nothing. Objects are not owned.
    static void insertProcessObject(ZNObject* object);
    static void removeProcessObject(ZNObject* object);
    static bool exists(const ZNObject* object);
    // Registered objects whose getZNObjectType() equals `type`, in registration order.
    static QList<ZNObject*> getObjectListWithType(const QString& type);

    // The host's icon named `name` ("faultmergeassistant", "faultundo24", ...): by default
    // the image ":/icons/<name>.png" of the application's resources; an empty icon when
    // there is none. Needs a GUI application to be drawn.
    static QIcon getIcon(const QString& name);

    // Installs `process` (null restores the default) and returns the previous one.
    static ZNProcess* install(ZNProcess* process);
    static ZNProcess& instance();

    // Adds a receiver of actions to this instance; returns its handle for removal.
    int addActionListener(ActionListener listener);
    void removeActionListener(int handle);

protected:
    virtual void action(const QString& action, ZNObject* object);
    virtual void insertObject(ZNObject* object);
    virtual void removeObject(ZNObject* object);
    virtual bool hasObject(const ZNObject* object) const;
    virtual QList<ZNObject*> objectsWithType(const QString& type) const;
    virtual QIcon icon(const QString& name) const;

private:
    mutable std::mutex m_mutex;
    QList<ZNObject*> m_objects;
    QList<QPair<int, ActionListener>> m_listeners;
    int m_nextListener = 0;
};
