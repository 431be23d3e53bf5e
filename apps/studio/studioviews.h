#pragma once
#include <map>
#include <memory>

#include <QList>
#include <QObject>
#include <QPointer>

#include <core/vec3.h>
#include <znblocviewerengine.h>

class FaultSetDocument;
class StudioProject;
class ZNFaultEraser;
class ZNFaultPickingSession;
class ZNFaultPickingTool;
class ZNFaultSectionDrawable;
class ZNFrame;
class ZNSectionView;
class ZNVolume;

// The views of the studio's volumes and faults: section views (inline, crossline, time
// slice of a volume, with the faults of every open fault set drawn over them) in the
// frame's sub-windows, kept in step with the project and with each other:
// - a fault set opened or closed appears in or leaves every view; a fault shown, hidden,
//   recoloured or meshed again is redrawn; the current fault is drawn as current;
// - the reference point picked in one view (Ctrl+click) is posted as "UPDATE_REF_POINT":
//   every view shows it, and the other section views go to their section through it.
class StudioViews : public QObject {
    Q_OBJECT
public:
    StudioViews(ZNFrame* frame, StudioProject* project, QObject* parent = nullptr);
    ~StudioViews() override;

    // Opens a section view of `volume` showing the middle section of `kind`.
    ZNSectionView* openSectionView(ZNVolume* volume, ZNBlocViewerEngine::SectionKind kind);
    QList<ZNSectionView*> sectionViews() const;
    // The volume a section view shows; null for none.
    ZNVolume* volumeOf(const ZNSectionView* view) const;

    bool hasReferencePoint() const { return m_hasReference; }
    const core::vec3& referencePoint() const { return m_reference; }
    // Sets the shared reference point and posts "UPDATE_REF_POINT".
    void setReferencePoint(const core::vec3& world);
    // The fault drawn as current in every view.
    void setCurrentFault(FaultSetDocument* document, int faultId);
    // Makes `world` the reference point and shows it in every view (each section view
    // goes to its section through it).
    void centreOn(const core::vec3& world);

    // What the mouse does in every section view: navigate (an empty name), pick faults
    // (ZNFaultPickingTool::modeName()) or erase their points (ZNFaultEraser::modeName()),
    // for the fault set of `session` (the picking session of the document being picked).
    void setInteraction(const QString& mode, ZNFaultPickingSession* session);
    const QString& interactionMode() const { return m_mode; }

signals:
    // A fault's sticks or trace clicked in a view.
    void faultClicked(FaultSetDocument* document, int faultId);
    // A section view was opened or shows another section.
    void sectionShown(ZNSectionView* view);
    // A section view is being destroyed (`view` is no longer a section view).
    void sectionViewClosed(const QObject* view);

private:
    struct SectionEntry {
        QPointer<ZNSectionView> view;
        const QObject* identity = nullptr;  // the view, for comparisons while it is destroyed
        ZNVolume* volume = nullptr;
        std::map<const FaultSetDocument*, std::shared_ptr<ZNFaultSectionDrawable>> faults;
        ZNFaultPickingTool* picking = nullptr;  // owned by the view's viewer
        ZNFaultEraser* eraser = nullptr;
    };
    void applyInteraction(SectionEntry& entry);
    void addFaultSet(FaultSetDocument* document);
    void addFaultSetTo(SectionEntry& entry, FaultSetDocument* document);
    // Calls `f(drawable)` for the drawable of `document` in every view.
    template <class F>
    void forEachFaults(const FaultSetDocument* document, F f);
    void removeFaultSet(FaultSetDocument* document);
    void removeVolume(ZNVolume* volume);
    void showReferencePoint(const ZNSectionView* origin);
    void redrawAll();

    ZNFrame* m_frame;
    StudioProject* m_project;
    QList<SectionEntry> m_sections;
    bool m_hasReference = false;
    core::vec3 m_reference;
    const ZNSectionView* m_referenceOrigin = nullptr;  // the view the point was picked in
    FaultSetDocument* m_currentDocument = nullptr;
    int m_currentFault = -9999;
    int m_referenceHandler = 0;
    QString m_mode;
    QPointer<ZNFaultPickingSession> m_session;
};
