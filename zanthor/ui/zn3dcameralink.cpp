#include "zn3dcameralink.h"

#include "zn3dviewer.h"

ZN3DCameraLink::ZN3DCameraLink(QObject* parent) : QObject(parent) {}

void ZN3DCameraLink::add(ZN3DViewer* viewer)
{
    if (!viewer || m_viewers.contains(viewer)) return;
    m_viewers.append(viewer);
    connect(viewer, &ZN3DViewer::viewChanged, this, [this, viewer] { follow(viewer); });
    for (const QPointer<ZN3DViewer>& other : m_viewers)
        if (other && other != viewer) {
            viewer->engine().setCamera(other->engine().camera());
            break;
        }
}

void ZN3DCameraLink::remove(ZN3DViewer* viewer)
{
    if (!viewer || !m_viewers.removeOne(viewer)) return;
    disconnect(viewer, nullptr, this, nullptr);
}

int ZN3DCameraLink::count() const
{
    int n = 0;
    for (const QPointer<ZN3DViewer>& viewer : m_viewers) n += viewer ? 1 : 0;
    return n;
}

bool ZN3DCameraLink::sameView(const ZN3DCamera& a, const ZN3DCamera& b)
{
    return a.centre() == b.centre() && a.distance() == b.distance() && a.azimuth() == b.azimuth() &&
           a.elevation() == b.elevation() && a.verticalExaggeration() == b.verticalExaggeration() &&
           a.projection() == b.projection() && a.fieldOfView() == b.fieldOfView();
}

void ZN3DCameraLink::follow(ZN3DViewer* source)
{
    if (m_following) return;
    m_following = true;
    const ZN3DCamera& camera = source->engine().camera();
    for (const QPointer<ZN3DViewer>& other : m_viewers)
        if (other && other != source && !sameView(other->engine().camera(), camera))
            other->engine().setCamera(camera);
    m_following = false;
}
