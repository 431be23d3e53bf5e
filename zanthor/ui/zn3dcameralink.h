#pragma once
#include <QList>
#include <QObject>
#include <QPointer>

class ZN3DCamera;
class ZN3DViewer;

// Keeps the cameras of several 3D views the same, so that they show their scenes from
// one point of view side by side: whatever moves the camera of one view (a gesture, a
// key, a fit, a call on its engine) moves the others alike. Each view keeps its own
// viewport and scene box. Views are not owned; a deleted view leaves the link.
class ZN3DCameraLink : public QObject {
    Q_OBJECT
public:
    explicit ZN3DCameraLink(QObject* parent = nullptr);

    // Links `viewer` (ignored when null or linked already); it takes the camera of the
    // views linked before it.
    void add(ZN3DViewer* viewer);
    void remove(ZN3DViewer* viewer);
    int count() const;

    // Whether two cameras show the same view: centre, distance, orientation, vertical
    // exaggeration, projection and field of view all equal.
    static bool sameView(const ZN3DCamera& a, const ZN3DCamera& b);

private:
    // Gives the camera of `source` to every other view whose view differs.
    void follow(ZN3DViewer* source);

    QList<QPointer<ZN3DViewer>> m_viewers;
    bool m_following = false;  // a view being given the camera reports back: ignored
};
