#pragma once
#include <map>
#include <tuple>

#include <QList>
#include <QObject>
#include <QPointer>

#include <core/vec3.h>

class FaultSetDocument;
class StudioProject;
class StudioViews;
class ZN3DScene;
class ZN3DViewer;
class ZNFrame;
class ZNSectionView;
class ZNVolume;

// The studio's 3D views, each in a sub-window of the frame, all showing the same scene:
// - the outline of every open volume with its inline, crossline and time (or depth) axes;
// - the section each section view shows, as an image on its plane, following the view
//   as it steps;
// - the surface and the sticks of every fault of every open fault set, in the fault's
//   colour, hidden with the fault; the current fault's sticks drawn wider;
// - the shared reference point ("UPDATE_REF_POINT"), as a cross.
// A fault re-meshed, recoloured, added or removed (by picking, undo, a property edit) is
// redrawn in every 3D view. A click on a fault's surface or sticks reports the fault
// (faultClicked); a Ctrl+click anywhere on the scene moves the reference point there,
// which moves every section view to its section through it.
class Studio3DViews : public QObject {
    Q_OBJECT
public:
    Studio3DViews(ZNFrame* frame, StudioProject* project, StudioViews* sections, QObject* parent = nullptr);
    ~Studio3DViews() override;

    // Opens a 3D view of everything open, fitted.
    ZN3DViewer* open3DView();
    QList<ZN3DViewer*> views() const;

    // The fault an item of the scene shows; false for an item that shows no fault.
    bool faultOfItem(int itemId, FaultSetDocument*& document, int& faultId) const;
    // The scene item of a fault's surface, and of its sticks; -9999 for a fault not shown.
    int surfaceItemOf(const FaultSetDocument* document, int faultId) const;
    int sticksItemOf(const FaultSetDocument* document, int faultId) const;

    // The fault whose sticks are drawn as current.
    void setCurrentFault(FaultSetDocument* document, int faultId);

    static constexpr float kSticksWidth = 2.0f;         // pixels
    static constexpr float kCurrentSticksWidth = 4.0f;  // pixels

signals:
    void faultClicked(FaultSetDocument* document, int faultId);

private:
    enum class ItemKind { Outline, Section, Surface, Sticks, ReferencePoint };
    using ItemKey = std::tuple<ItemKind, const void*, int>;

    // The id of the item of `key`, made on first use; the same in every view.
    int idOf(ItemKind kind, const void* owner, int index = 0);
    // -9999 when the key has no id yet.
    int existingId(ItemKind kind, const void* owner, int index = 0) const;
    void forgetId(ItemKind kind, const void* owner, int index = 0);
    template <class F>
    void forEachScene(F f);

    // Puts everything open into `scene` (a new view's).
    void populate(ZN3DScene& scene);
    void setVolumeItem(ZN3DScene& scene, ZNVolume* volume);
    void setSectionItem(ZN3DScene& scene, ZNSectionView* view);
    void setFaultItems(ZN3DScene& scene, FaultSetDocument* document, int faultId);
    void setSticksItem(ZN3DScene& scene, FaultSetDocument* document, int faultId);
    void setReferenceItem(ZN3DScene& scene);
    // Brings the items of `document` in step with its faults (added, removed).
    void syncFaultSet(FaultSetDocument* document);
    void followFaultSet(FaultSetDocument* document);
    void removeFaultSet(FaultSetDocument* document);
    void removeVolume(ZNVolume* volume);
    void removeSection(const QObject* view);

    ZNFrame* m_frame;
    StudioProject* m_project;
    StudioViews* m_sections;
    QList<QPointer<ZN3DViewer>> m_views;
    std::map<ItemKey, int> m_ids;
    std::map<int, ItemKey> m_keys;
    int m_nextId = 1;
    std::map<const FaultSetDocument*, QList<int>> m_faultsShown;  // fault ids with items
    FaultSetDocument* m_currentDocument = nullptr;
    int m_currentFault = -9999;
    int m_referenceHandler = 0;
};
