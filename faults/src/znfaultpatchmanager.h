#pragma once
#include <QList>
#include <QMap>
#include <QObject>
#include <QPair>
#include <QString>

#include <vector>

#include <3dobject/zn3dobjectrecords.h>
#include <core/array.h>
#include <core/heap.h>
#include <core/multiarray.h>
#include <core/pointwithbool.h>
#include <core/triplet.h>
#include <core/vec3.h>
#include <geom/line.h>
#include <geom/randomline.h>
#include <georef/blocspace.h>
#include <georef/crsobjectabstract.h>
#include <georef/unitobject.h>
#include <znobject.h>

#include "zn3dfaultpatchlight.h"
#include "znfaultpatch.h"
#include "znfaultstick.h"

class QIODevice;
class ZN3DFaultPatch;
class ZNByteSource;
class ZNBloc;
class ZNFaultPatchManagerConfig;
class ZNLabelRecordFile;
class ZNLabelSlabReader;
class ZNFaultSurface;
class ZNPickingViewer;
template <class T> class ZN3DImage;

// The fault set: every patch of one interpretation, the picked points of each patch,
// the grouping of patches into faults, one descriptor per fault, the picking cursors and
// the undo history.
//
// Patch ids. A patch's index in the patch array is its id. Patch 0 is reserved and never
// holds picks: every per-patch operation on picked points accepts only ids 1 to
// getNumberOfPatch() - 1 and answers with a neutral value (0, false, -9999, null, an
// unchanged list) for any other id.
//
// Faults. Each patch record's father is the patch it has been merged into; a patch not
// merged is its own father. A fault is a tree of patches; its root gives the fault its
// id, so fault ids are patch ids. The patches of each tree are also kept in a linked
// list, rebuilt from the fathers by initElementListBis(); setFather() alone does not
// update it.
//
// Picked points. Each patch holds one ordered list; a point whose x is -9999.0 separates
// two sticks (core/stickrules.h). Points flagged true were added automatically along the
// section shown in a viewer; they are removed before every hand edit and added again
// after it.
//
// Kinds. A picked fault set (picked flag true) is built point by point; an automatic one
// (flag false) comes from a label volume and keeps each patch's voxels as byte offsets
// from the patch's origin.
//
// The fault set owns its patch records, points, voxels, descriptors and snapshots. It
// registers itself with the host's object registry while it lives. It never draws.
// The implementation is split by concern: znfaultpatchmanager.cpp (model),
// _faults.cpp (descriptors and conversion constructors), _picking.cpp, _resample.cpp,
// _history.cpp, _file.cpp (the fault set file), _mesh.cpp (its mesh section),
// _autosave.cpp (auto-save, extraction and concatenation), _surfaces.cpp (3D fault
// patches).
class ZNFaultPatchManager : public QObject, public ZNObject, public georef::CrsObjectAbstract {
    Q_OBJECT
public:
    static constexpr int kPatchGrowthStep = 100;     // patch and id arrays
    static constexpr int kPointGrowthStep = 3;       // picked point and voxel sub-arrays
    static constexpr int kInitialNumberOfPatch = 2;  // the reserved patch and one to pick
    static constexpr int kDefaultHistoryLimit = 100; // snapshots kept before a new one
    // Construction parameters of the conversions when none are given.
    static constexpr int kDefaultUtmPrecision = ZN3DFaultPatchLight::kDefaultUtmPrecision;
    static constexpr int kDefaultTimePrecision = ZN3DFaultPatchLight::kDefaultTimePrecision;

    // Where getNearestPatchIdAndPointId places a new point (third member of its result).
    enum InsertionMode {
        InsertBetween = 1,  // before the entry, between it and the previous one
        AppendAfter = 2,    // after the last entry of the fault
        InsertBefore = 3,   // before the entry
    };

    // ----- construction (znfaultpatchmanager.cpp, conversions in _faults.cpp) -----

    // A picked fault set with the reserved patch 0 and one patch to pick in.
    ZNFaultPatchManager();
    // A picked fault set of `numberOfPatch` empty patches (at least 1).
    explicit ZNFaultPatchManager(int numberOfPatch);
    // One fault per row of `faults`: row r becomes patch r + 1 with the row's points in
    // order, a point whose x is -9999.0 separating two sticks. Each patch's sampling
    // vector is (utmPrecision, timePrecision, utmPrecision), and every row holding at least
    // one point gets a descriptor named "Unnamed". A fault set has at least two patches.
    explicit ZNFaultPatchManager(const core::MultiArray<core::vec3>& faults,
                                 int utmPrecision = kDefaultUtmPrecision,
                                 int timePrecision = kDefaultTimePrecision);
    // The same, every patch taking `unitObject`.
    ZNFaultPatchManager(const core::MultiArray<core::vec3>& faults,
                        const georef::UnitObject& unitObject,
                        int utmPrecision = kDefaultUtmPrecision,
                        int timePrecision = kDefaultTimePrecision);
    // One fault per row, each line of the row a two-point stick, sticks separated by
    // separators. New descriptors take the interpolation size.
    ZNFaultPatchManager(const core::MultiArray<geom::Line>& faults, int utmPrecision,
                        int timePrecision, int interpolationSize);
    // The same, the precisions and every other setting (not the colour) taken from
    // `settings`; null gives the defaults.
    ZNFaultPatchManager(const core::MultiArray<geom::Line>& faults,
                        const ZN3DFaultPatchLight* settings);
    // One fault per row, each stick a two-point stick; a fault takes the name of the
    // first named stick of its row. Every patch takes `unitObject`.
    ZNFaultPatchManager(const core::MultiArray<ZNFaultStick>& faults,
                        const georef::UnitObject& unitObject,
                        int utmPrecision = kDefaultUtmPrecision,
                        int timePrecision = kDefaultTimePrecision);
    // One fault per row of `pickedPoints` from row `firstRow` on (1 skips the reserved
    // row of another fault set's container): row r becomes patch r - firstRow + 1, its
    // entries copied as they are, flags included. A negative firstRow counts as 0.
    ZNFaultPatchManager(int firstRow, const core::MultiArray<core::PointWithBool>& pickedPoints);
    // A copy of `other`'s model: block space, kind, patches, points, voxels, descriptors,
    // templates, lock and stored id. The history is empty, no surface is attached and both
    // cursors are unset.
    ZNFaultPatchManager(const ZNFaultPatchManager& other);
    ZNFaultPatchManager& operator=(const ZNFaultPatchManager&) = delete;
    // Releases everything the fault set owns (descriptors and snapshots included) and
    // leaves the host's registry. Attached surfaces are not deleted.
    ~ZNFaultPatchManager() override;

    // Resets the model to `numberOfPatch` empty patches, each its own father (a number
    // below 1 is reported and taken as 1): registers with the host's registry, empties
    // points and voxels, makes the set picked and unlocked, unsets both cursors, sets
    // the history limit to 100, the version to kLastVersion, the mesh flag on and the four
    // auto-save counters to 0. With `resetDescriptors` every fault descriptor is deleted
    // and the two template descriptors are initialised again (new random colours);
    // without it, descriptors whose id is no longer a patch id are deleted. The history
    // is kept: its snapshots no longer match the patch count unless it is unchanged.
    void init(int numberOfPatch, bool resetDescriptors);

    // "ZNPickedFaultPatchManager" for a picked fault set, "ZNFaultPatchManager" otherwise.
    QString getZNObjectType() const override;
    // The units of the fault set: those of its middle patch (getUnitObjectFromMiddlePatch).
    georef::UnitObject GetUnitObject() const override;
    // Gives `unitObject` to every patch (SetUnitObjectToAllPatch).
    void SetUnitObject(const georef::UnitObject& unitObject) override;

    // Checks the invariants: patch 0 exists; point and voxel containers have one
    // sub-array per patch with 0 <= count <= capacity; stamps and links cover every patch;
    // every father is a patch id; every linked list ends within the patch count and lists
    // only patches of its tree; every descriptor has an id 1..n-1; the cursors are unset
    // or in range; the current snapshot is in the history, which holds at most the limit
    // plus one. On failure `why` (when given) receives the first broken rule.
    bool isValid(QString* why = nullptr) const;

    // ----- state -----
    bool isPicked() const { return m_picked; }
    void setPicked(bool picked) { m_picked = picked; }
    bool isLocked() const { return m_locked; }
    void setLock(bool locked) { m_locked = locked; }
    const georef::BlocSpace& getBlocSpace() const { return m_blocSpace; }
    void setBlocSpace(const georef::BlocSpace& blocSpace) { m_blocSpace = blocSpace; }
    // An id value that travels with the undo snapshots; -9999 until set.
    int getStoredId() const { return m_storedId; }
    void setStoredId(int id) { m_storedId = id; }

    // ----- patches -----
    int getNumberOfPatch() const { return m_patches.size(); }
    // True for a patch that may hold picks: 1 to getNumberOfPatch() - 1.
    bool isValidPatchId(int id) const { return id >= 1 && id < m_patches.size(); }
    // Appends an empty patch (its own father, with the fault set's units) and returns its
    // id; -9999 when memory ran out (nothing changed).
    int addPatch();
    // The record of patch `id` (0 included), owned by the fault set; null for a bad id.
    ZNFaultPatch* getFaultPatch(int id) { return m_patches.at(id); }
    const ZNFaultPatch* getFaultPatch(int id) const { return m_patches.at(id); }
    // The position of voxel `v` of patch `id` in the grid: (origin x + u, origin y + v,
    // origin z + w), the first two offsets read unsigned and the third signed (kept for
    // file compatibility). The origin for a bad id is (-9999, -9999, -9999).
    core::vec3 getVoxelPosition(int id, const core::ByteTriplet& v) const;
    // The voxels of every patch (automatic fault sets), one sub-array per patch.
    core::MultiArray<core::ByteTriplet>& getPatchVoxels() { return m_patchVoxels; }
    const core::MultiArray<core::ByteTriplet>& getPatchVoxels() const { return m_patchVoxels; }
    // The picked points of every patch, one sub-array per patch (read only: edits go
    // through the picking operations so that cursors stay right).
    const core::MultiArray<core::PointWithBool>& getPickedPoints() const { return m_pickedPoints; }
    // Units of patch `id`; the default units for a bad id.
    georef::UnitObject getUnitObject(int id) const;
    // Units of patch getNumberOfPatch() / 2.
    georef::UnitObject getUnitObjectFromMiddlePatch() const;
    void SetUnitObjectToAllPatch(const georef::UnitObject& unitObject);

    // ----- patch tree -----

    // Root of `id`'s tree: the first patch met from `id` through fathers that is its own
    // father. An id >= getNumberOfPatch() is returned as it is, and so is the out-of-range
    // id a broken father link leads to. A walk longer than the patch count (a father
    // cycle) is reported and stops where it is.
    int getFather(int id) const;
    // Sets the father of `id` (ignored for an id outside the array); the father is not
    // checked. Call initElementListBis() after a batch of changes.
    void setFather(int id, int father);
    // The root found by repeated walks: each walk goes through fathers until a patch that
    // is its own father or an id beyond the array, and the next walk starts where the last
    // one ended, until a walk ends where it started. Same root as getFather for a
    // well-formed tree; bounded by the patch count like getFather.
    int getInitialFather(int id) const;
    // Rebuilds the linked list of every tree from the fathers: root first, then the other
    // patches in increasing id order. Patch 0 is never linked.
    void initElementListBis();
    // Every patch of the fault that contains `id`, appended to `list` (emptied first with
    // `clearFirst`). An id outside the array adds nothing; patch 0 adds itself only, and
    // so does a patch whose root is patch 0 or lies outside the array. A linked list that does not end within the patch count sends "Loop in
    // getPatchListWithLinkedList" (kind 1) and the walk stops.
    void getPatchListWithLinkedList(int id, core::Array<int>& list, bool clearFirst) const;
    // The patches of every fault that contains one of `patches`, each fault once, in the
    // order the faults are first met; ids outside the array are skipped. `list` is
    // replaced. Uses the visit stamps.
    void getPatchListInsideFault(const core::Array<int>& patches, core::Array<int>& list);
    // Starts a traversal: the current stamp + 1, returned. A patch whose stamp equals the
    // current stamp is visited, one whose stamp equals minus the current stamp is queued.
    int incrementCurrentIndex();
    int getCurrentIndex() const { return m_currentStamp; }
    // Scratch output of the queries above and of the undo machinery.
    core::Array<int>& getWorkingPatchList() { return m_workingPatchList; }

    // ----- counts -----

    // Entries of patch `id`'s list, separators included; 0 for a bad id; -9999 when the
    // point container has no count array.
    int getNumberOfPickedPoint(int id) const;
    // Entries that are not separators; 0 for a bad id or an empty list.
    int getNumberOfValidPickedPoint(int id) const;
    // Number of patches whose list is not empty. Refreshes, as callers rely on, the point
    // count of each such patch's record to its number of entries.
    int getNumberOfValidPatch();
    // Entries of every patch of the fault that contains `faultId`; 0 for a bad id.
    int getNumberOfFaultPickedPoint(int faultId) const;

    // ----- patch parameters -----

    // Recomputes every patch record from its points. A patch that holds both picked
    // points and voxels sends "Pb with picked patch" (kind 1) and is treated as picked. An
    // automatic patch accumulates its voxel positions (getVoxelPosition), a picked one its
    // hand-picked points (updatePickedPatchParameters). Other fields are kept.
    void computePatchParameters();
    // Record of patch `id` (0 included) recomputed from its hand-picked points;
    // separators and automatic points are not counted (automatic points repeat the same
    // surface). Ignored for an id outside the array.
    void updatePickedPatchParameters(int id);

    // ----- fault descriptors (_faults.cpp) -----

    // A new descriptor, owned by the caller, with every setting of `settings` (the
    // defaults for null) but its own random pen colour, no link, not saved, id `faultId`,
    // and an empty patch list.
    ZN3DFaultPatchLight* createNewFaultLight(int faultId, const ZN3DFaultPatchLight* settings) const;
    // createNewFaultLight with the template descriptor, then inserted. Returns the
    // descriptor (owned by the fault set), null when it was refused.
    ZN3DFaultPatchLight* insertNewFaultLight(int faultId);
    // The same with the given settings.
    ZN3DFaultPatchLight* insertNewFaultLight(int faultId, const ZN3DFaultPatchLight& settings);
    // Takes ownership of `light` and appends it after filling its patch list with the
    // patches of its fault and setting its UTM precision to the integer part of the
    // smaller of the first and third components of their merged sampling vector, and its
    // time precision to that of the second. Null is ignored (false); a descriptor whose id
    // is not a patch id 1..n-1 is deleted and false returned.
    bool insertNewFaultLight(ZN3DFaultPatchLight* light);
    // The first descriptor in list order whose id is `faultId`; null when there is none
    // or the id is not 1..n-1. Owned by the fault set. Found through an index of the
    // descriptors by id, so a descriptor's id must not be changed while the fault set
    // holds it (remove it and insert a new one instead).
    ZN3DFaultPatchLight* findFaultLight(int faultId) const;
    // Deletes the descriptor found by findFaultLight(faultId), if any.
    void removeFaultLight(int faultId);
    // Removes `light` from the list and deletes it; a pointer not in the list is ignored.
    void removeFaultLight(ZN3DFaultPatchLight* light);
    // The descriptors, in insertion order, owned by the fault set.
    const QList<ZN3DFaultPatchLight*>& getFaultLightList() const { return m_faultLights; }
    // Settings given to every new fault.
    ZN3DFaultPatchLight& getTemplateFaultLight() { return m_templateFaultLight; }
    const ZN3DFaultPatchLight& getTemplateFaultLight() const { return m_templateFaultLight; }
    // A second settings descriptor, reset together with the template.
    ZN3DFaultPatchLight& getSecondFaultLight() { return m_secondFaultLight; }
    // What removePickedFault took out of the fault set, enough to put it back exactly.
    struct RemovedFault {
        int faultId = -9999;
        int descriptorIndex = -1;             // its place in the descriptor list; -1: it had none
        ZN3DFaultPatchLight descriptor;       // a copy, meaningful when descriptorIndex >= 0
        std::vector<int> patchIds;            // the patches of its tree, in linked-list order
        std::vector<std::vector<core::PointWithBool>> points;  // their entries, one list per patch
    };
    // Removes fault `faultId` (a root 1..n-1) as a user deletes a fault: its descriptor,
    // and every entry of the patches of its tree, which stay, empty and linked as they
    // were, so that patch ids elsewhere keep their meaning. The picking cursors are unset
    // when they pointed into the fault. `removed` (may be null) receives what was taken.
    // False, nothing changed, for an id that is not a root or a fault with neither points
    // nor descriptor.
    bool removePickedFault(int faultId, RemovedFault* removed);
    // Puts back what removePickedFault took: the entries of each patch and the descriptor
    // at its former place in the list (at the end when the list is shorter now). False,
    // nothing changed, when a patch is out of range or holds entries, or a descriptor of
    // that fault exists already.
    bool restorePickedFault(const RemovedFault& removed);

    // Refills each descriptor's patch list with the patches of its fault.
    void fillFaultLightListPatchList();
    // Component-wise minimum of the listed patches' sampling vectors, ids outside the
    // array skipped; a component equal to -9999 is replaced by the next patch's value.
    // (-9999, -9999, -9999) for an empty list.
    core::vec3 getMergedSamplingVect(const core::Array<int>& patchList) const;

    // ----- fault surfaces -----

    // Adds a surface (not owned) to those marked by setCurrentPickedFaultId and used by
    // resamplePatchWithRandomLine; null and repeats are ignored.
    void attachFaultSurface(ZNFaultSurface* surface);
    void detachFaultSurface(ZNFaultSurface* surface);
    // The first attached surface whose fault id is `faultId`; null when there is none.
    ZNFaultSurface* findFaultSurface(int faultId) const;

    // ----- 3D fault patches (_surfaces.cpp) -----

    // True for a patch 1..n-1 that holds at least one picked point (separators aside).
    bool isPatchPicked(int id) const;
    // The points a patch is made of, in the grid's indices: its voxels (getVoxelPosition)
    // for a patch that has voxels, otherwise its picked points separators included, each
    // taken to the grid by the fault set's block space and rounded half away from zero.
    // getNumberOfPatchPoint counts them (0 for a bad id); getPatchPointPosition gives
    // point j, or (-9999, -9999, -9999) for a bad id or index and for a separator.
    int getNumberOfPatchPoint(int id) const;
    core::Triplet getPatchPointPosition(int id, int j) const;
    // The attached 3D fault patch of fault `faultId`; null when none is attached. Not
    // owned by the fault set.
    ZN3DFaultPatch* findFaultPatch(int faultId) const;
    // A new 3D fault patch of the fault of `light`, owned by the caller and attached to
    // the fault set (so that picking uses its mesh) until it is deleted: the fault set's
    // block space, the units of the fault's patch, the descriptor's settings, the fault's
    // picked points (all its patches, in linked-list order), the patch's 2D flag, the
    // fault set's object name, and the fault's stored mesh when there is one. No mesh is
    // computed. Null for a null descriptor or a fault
    // id outside 1..n-1.
    ZN3DFaultPatch* createPicked3DFaultPatch(const ZN3DFaultPatchLight* light);
    // One 3D fault patch per descriptor, in descriptor order: the attached one, or one
    // made by createPicked3DFaultPatch, which is also appended to `created`. The caller
    // owns the patches made here; descriptors whose patch cannot be made are skipped.
    QList<ZN3DFaultPatch*> getFaultPatchList(QList<ZN3DFaultPatch*>& created);

    // ----- picking and editing (_picking.cpp) -----

    // Appends `point` to the current picked fault's list (false when it is unset).
    bool addPickedPoint(const core::PointWithBool& point);
    // Appends `point` to patch `patchId`'s list; the same position may be added twice.
    bool addPickedPoint(int patchId, const core::PointWithBool& point);
    // Inserts a hand point before entry `index`; index == count appends. False, nothing
    // changed, for any other index.
    bool insertPickedPoint(int patchId, int index, const core::vec3& position);
    // Overwrites entry `index` (0 to count - 1).
    bool setPickedPoint(int patchId, int index, const core::PointWithBool& point);
    // Entry `index` of patch `patchId`, owned by the fault set; null for a bad id or index.
    const core::PointWithBool* getPickedPoint(int patchId, int index) const;
    // Removes entry `index` (0 to count - 1). For any valid patch id the moving point
    // cursor is unset, even when the index was bad.
    bool removePickedPoint(int patchId, int index);
    // Removes the moving point from the current picked fault's list when both cursors are
    // valid, and unsets the moving point cursor.
    bool removePickedMovingPoint();
    int getCurrentMovingPointId() const { return m_currentMovingPointId; }
    void setCurrentMovingPointId(int id) { m_currentMovingPointId = id; }
    int getCurrentPickedFaultId() const { return m_currentPickedFaultId; }
    // Marks every attached surface as current exactly when its fault id is `faultId`,
    // then makes `faultId` the patch that receives picks. -9999 unsets it; other ids
    // outside 1..n-1 are ignored.
    void setCurrentPickedFaultId(int faultId);
    // True when patch `patchId`'s list is not empty and ends with a separator: the
    // current stick is closed. False for a bad id or an empty list.
    bool isLastPickedPointNo_Value(int patchId) const;

    // The picked points of every patch of the fault of `faultId` gathered into `points`,
    // patch after patch in linked-list order; returns the number gathered. `points` is
    // replaced; 0 for a bad id.
    int getFaultPickedPointArray(int faultId, core::Array<core::PointWithBool>& points) const;
    // Maps an index of that gathered list to (patch id, index in the patch): returns the
    // patch id and sets `indexInPatch`; -9999 (index untouched) when out of range.
    int getPatchIdFromPickedPointId(int faultId, int pickedPointId, int& indexInPatch) const;
    // Where a point picked at `position` joins the fault of `faultId`, as (patch id, index
    // in the patch, InsertionMode); (-9999, -9999, -9999) for a bad id, a fault without
    // points or a null viewer. See the insertion rules in _picking.cpp.
    core::Triplet getNearestPatchIdAndPointId(int faultId, const core::vec3& position,
                                              const ZNPickingViewer* viewer) const;
    // Places a dragged point at its best place in the fault of `patchId`: the patch's
    // automatic points are removed when the patch is shown, the current moving point of
    // the patch is taken out, the point is inserted where getNearestPatchIdAndPointId
    // says, the moving point cursor follows it, and automatic points are made again.
    void insertMovingPointBis(int patchId, const core::vec3& position,
                              const ZNPickingViewer* viewer);
    // When the patch is shown by `viewer`: removes its automatic points and adds new ones
    // along the viewer's section. Returns whether the patch is shown.
    bool createAdditionalPoint(int patchId, const ZNPickingViewer* viewer);
    // When the patch is shown: removes its automatic points. Returns whether it is shown.
    bool removeAdditionalPoint(int patchId, const ZNPickingViewer* viewer);
    // Keeps only the hand-picked entries of the patch; `*currentIndex` (may be null) is
    // moved to the same entry's new position, or -9999 when that entry was removed.
    // Returns the number of entries removed.
    int removeAutomaticPickedPoints(int patchId, int* currentIndex);

    // ----- erasing (_picking.cpp) -----

    // The eraser of the picking front end: removes the entries (hand-picked or automatic)
    // of patch `patchId` whose screen position in `viewer` lies inside or on the ellipse
    // of centre `centre` and half-axes radiusX, radiusY (pixels); then separators left
    // next to each other, or at the start of the list, are removed too, so that the
    // remaining points keep their sticks. The moving point cursor follows its entry, or is
    // unset when it was erased; a cursor that pointed outside the list is unset with the
    // message "pb with currentMovingPointId" (kind 4). Returns the number of entries
    // removed; 0 for a bad id, a null viewer or a half-axis that is not positive.
    int removePickedPointInsideEllipseForOnePatch(int patchId, const core::vec2& centre, double radiusX,
                                                  double radiusY, const ZNPickingViewer* viewer);
    // The same for every patch of the fault of `faultId`.
    int removePickedPointInsideEllipseForOneFault(int faultId, const core::vec2& centre, double radiusX,
                                                  double radiusY, const ZNPickingViewer* viewer);

    // ----- section resampling (_resample.cpp) -----

    // Appends to the patch, as automatic entries (flag true, separators included), the
    // lines along which its fault's surface crosses `section`: each crossing is a stick
    // of its own. The surface is the attached surface's mesh of the patch's fault when it
    // has one, otherwise a triangulation between consecutive sticks of the patch.
    // Crossings that only repeat hand-picked points of the patch are left out. Returns the
    // number of entries appended; 0 for a bad id or an invalid section.
    int resamplePatchWithRandomLine(int patchId, const geom::RandomLine& section);

    // ----- cleaning (_picking.cpp) -----

    // removeIsolatedPointForOneFault then removePickingInterruptionForOneFault.
    void cleanFaultPicking(int faultId);
    // The per-patch operations applied to every patch of the fault (patch 0 excluded);
    // return the number of entries removed.
    int removeIsolatedPointForOneFault(int faultId);
    int removePickingInterruptionForOneFault(int faultId);
    // removeIsolatedPointForOnePatch on every patch.
    int removeIsolatedPointForAllPatch();
    // Drops every isolated point (a one-point stick), keeping the order of the rest.
    // Unsets the moving point cursor when something was removed.
    int removeIsolatedPointForOnePatch(int patchId);
    // Drops every separator directly followed by another, so runs of separators collapse
    // to one. Unsets the moving point cursor when something was removed.
    int removePickingInterruptionForOnePatch(int patchId);

    // ----- undo and redo (_history.cpp) -----

    // A new snapshot (owned by the caller until inserted) filled by fillConfiguration.
    // For an edition snapshot taken while a point is being moved (current picked fault
    // valid, moving point within the snapshot's copy of it), that point is left out of
    // the copy: the snapshot shows the fault without the dragged point.
    ZNFaultPatchManagerConfig* getConfiguration(const QString& actionName,
                                                const core::Array<int>* patchList) const;
    // Fills `config`: fathers of every patch, stored id, action name; with `patchList` an
    // edition snapshot of the listed patches' points (ids outside the array skipped),
    // without it a full snapshot with deep copies of every descriptor. Null is ignored.
    void fillConfiguration(const QString& actionName, ZNFaultPatchManagerConfig* config,
                           const core::Array<int>* patchList) const;
    // An edition snapshot of the fault of `faultId` when it is a patch id 1..n-1, a full
    // snapshot otherwise; inserted, and returned (owned by the history).
    ZNFaultPatchManagerConfig* insertUndoListConfiguration(const QString& actionName, int faultId);
    // Takes ownership of `config` and makes it the current snapshot: the snapshots after
    // the current one are deleted (all of them when the current one is not in the
    // history), and when the history already holds more than the limit the oldest one is
    // deleted, so up to limit + 1 snapshots are kept. A snapshot already in the history,
    // or null, is ignored.
    void insertUndoListConfiguration(ZNFaultPatchManagerConfig* config);
    // Steps back: the snapshot before the current one is restored and becomes current.
    // False at the first snapshot, with an empty history, or when the current snapshot is
    // unknown (it is then unset). `focus` receives the point to show, or -9999s.
    bool undoWithLastConfiguration(core::vec3& focus);
    // Steps forward: the snapshot after the current one (the first one when the current
    // one is unset) is restored and becomes current. False at the last snapshot or with an
    // empty history. `focus` as for undo.
    bool redoWithLastConfiguration(core::vec3& focus);
    // Restores `config` and returns the point the view should show, (-9999, -9999, -9999)
    // when none. A snapshot of another patch count, or null, restores nothing. See the
    // restore rules in _history.cpp.
    core::vec3 setConfiguration(const ZNFaultPatchManagerConfig* config);
    // Deletes every snapshot; undo and redo answer false until new ones arrive.
    void clearUndoConfigurationList();
    // True when the current snapshot is in the history and is an edition snapshot.
    bool isCurrentConfigInEditionMode() const;
    int getNumberOfConfiguration() const { return m_history.size(); }
    // Snapshot `i` of the history, oldest first, owned by it; null for a bad index.
    const ZNFaultPatchManagerConfig* getConfigurationAt(int i) const;
    const ZNFaultPatchManagerConfig* getCurrentConfiguration() const { return m_currentConfig; }
    int getHistoryLimit() const { return m_historyLimit; }
    // A limit below 0 counts as 0.
    void setHistoryLimit(int limit) { m_historyLimit = limit < 0 ? 0 : limit; }

    // ----- fault set files (_file.cpp, mesh section in _mesh.cpp) -----
    //
    // A fault set file is an object file (ZNObjectFile): the header of createHeader,
    // then the data block, all integers little-endian two's complement, reals binary64:
    //   fathers   one int32 per patch, patch 0 first;
    //   per patch its entry count (int32, separators included), then its entries:
    //             2D form: x, y, z, flag byte (0 or 1), 7 zero bytes, then the patch
    //             rectangle (left, top, right, bottom);
    //             3D form: x, y, z (the flag is not stored);
    //   meshes    only when "withMesh" is 1 and the writer was given them.
    // The form is not marked in the file: the caller of the writer and of the reader
    // chooses it. Files of versions 1 and 2 always hold the 3D form; version 0 files hold
    // the 3D form in block indices (inline, crossline, sample), taken to world
    // coordinates by the block-to-world matrix when read.
    //
    // Readers treat the file as hostile: counts are checked against the bytes left before
    // anything is allocated; a count outside 0..1,000,000, a father that is not a patch id
    // or closes a loop, a non-finite coordinate, a descriptor whose id is not 1..n-1, an
    // unknown version or a short read make the read fail with "The fault set cannot be
    // read" (kind 1) followed by the reason (kind 4).
    //
    // The trailing `progressParent` of the readers: -1 shows a top-level "Load Data" bar,
    // a bar id nests it under that bar, kNoProgressBar shows none.

    static constexpr int kLastVersion = 3;                  // version written
    static constexpr int kMaxPickedPointsPerPatch = 1000000; // larger counts are corrupt
    static constexpr int kNoProgressBar = -2;               // readers show no bar
    // Header growth room of the files written by writePickedFault.
    static constexpr qint64 kHeaderReserve = ZNObject::kDefaultHeaderReserve;

    static int getLastVersionNumber() { return kLastVersion; }
    // Version of the file last read; kLastVersion for a fault set built in memory.
    int getVersion() const { return m_version; }
    // Whether fault meshes follow the picked points in the file; true for a new set.
    bool isWithMesh() const { return m_withMesh; }
    void setWithMesh(bool withMesh) { m_withMesh = withMesh; }

    // The header element: the type tag, then "numberOfPatch", "Version" (always
    // kLastVersion, the layout the writer uses), "dimx", "dimy", "dimz",
    // "fromBlocToWorldMatrix", "picked", "withMesh", "unitsObject" (units of the middle
    // patch), one "ZN3DFaultPatchLight" per descriptor in list order and one
    // "ZNFaultPatch" per patch, 0 first.
    QDomElement createHeader(QDomDocument& doc) const override;
    // getPickedFaultHeader without a progress bar.
    bool getHeader(const QDomElement* header) override;
    // Resets the fault set to the header's patch count (init) and reads back the kind,
    // version, block space, mesh flag, units (given to every patch, then each patch's
    // own CRS) and the descriptors, under a cancellable "Load Data" bar. "numberOfPatch"
    // must be 1 to the number of patch elements present, so that the header itself
    // bounds what is allocated. False for a missing or foreign header, an unknown
    // version, a bad count or descriptor id (with the messages of the readers), or a
    // cancel; the fault set is then consistent but holds what was read so far.
    bool getPickedFaultHeader(const QDomElement* header, int progressParent);

    // Saves the fault set at `path` in the 2D or 3D form, with the meshes when given (see
    // writePickedFaultData). Runs checkFaultNames first. The file is written beside the
    // target and renamed over it once complete: a refused, failed or cancelled save
    // leaves any previous file as it was. On success every descriptor is marked saved.
    // `showProgress` shows the "Faults saving: Emergency Save" bar.
    bool writePickedFault(const QString& path, bool twoD, QList<ZN3DFaultPatch*>* meshes,
                          bool showProgress);
    // Reads the file at `path` in the given form, replacing the model (the undo history is
    // cleared, the cursors unset; templates, lock and attached surfaces kept) and posting
    // "UPDATE_DISPLAY_CRS". A file that cannot be opened sends "Error when opening "
    // and the path (kind 2). On any failure the fault set is left exactly as it was.
    bool readPickedFault(const QString& path, bool twoD, int progressParent);
    // The same from a byte source holding a whole file.
    bool readPickedFault(ZNByteSource& file, bool twoD, int progressParent);

    // The container's data hook: the 2D form (which keeps every field), no meshes, no bar.
    bool writeData(QIODevice& file, qint64 offset) const override;
    // Writes the data block at `offset` of `file`. Sends "Writing Picked Point
    // core::Array..." (kind 3). With `showProgress` the bar "Faults saving: Emergency
    // Save" advances every max(1, n / 100) patches; cancelling it stops the write (false).
    // The meshes are written only when "withMesh" is set and `meshes` has one entry per
    // descriptor (writeMesh). A failed write, or a patch of more entries than a reader
    // accepts, sends "File write error while writing fault picked point data" (kind 1) and
    // returns false.
    bool writePickedFaultData(QIODevice& file, qint64 offset, bool twoD,
                              QList<ZN3DFaultPatch*>* meshes, bool showProgress) const;
    // Reads the data block at `offset` into the fault set, whose header has been read
    // (patch count, version, mesh flag), under a cancellable "Load Data" bar. Version 3:
    // each patch's 2D flag is set to `twoD`. On success posts "UPDATE_DISPLAY_CRS",
    // rebuilds the linked lists and the descriptors' patch lists, and marks the
    // descriptors saved. On failure (or a cancel) the patches read so far stay; the fault
    // set stays consistent (isValid).
    bool readPickedFaultData(ZNByteSource& file, qint64 offset, bool twoD, int progressParent);

    // The mesh section of the data block (_mesh.cpp): one record per descriptor, in
    // descriptor order, each the point count and the facette count (int32), then x, y, z
    // of every point (binary64) and three uint32 point indices per facette. writeMesh
    // writes the mesh of each entry of `meshes` (a null entry as an empty mesh); readMesh
    // reads the section at the source's position into the stored meshes and returns false
    // (stored meshes unchanged) for counts the source cannot hold, a facette index beyond
    // its points or a non-finite coordinate. A file whose "withMesh" is 1 may end right
    // after the picked points: readMesh is then not called.
    bool writeMesh(QIODevice& file, const QList<ZN3DFaultPatch*>& meshes) const;
    bool readMesh(ZNByteSource& file);

    // A fault's mesh as the mesh section of the last file read holds it (world
    // coordinates).
    struct StoredMesh {
        core::Array<core::vec3> points;
        core::Array<ZNFacette> facettes;
    };
    // The stored mesh of fault `faultId`; null when the last file read had none for it.
    // Stored meshes are kept until the next read or init, and are not copied with the
    // fault set; createPicked3DFaultPatch starts its patches from them.
    const StoredMesh* getStoredMesh(int faultId) const;

    // True when every descriptor's name is acceptable as a file name (ZNFileName). The
    // first that is not stops the check with a warning box titled "Error": "Fault named "
    // followed by the host's wording of the name and "<br>Operation aborted. Try again
    // after renaming the fault."; false is returned.
    bool checkFaultNames() const;

    // ----- auto-save, extraction, concatenation (_autosave.cpp) -----

    // Counts one call for the (is2dFaultPatch, isTime) combination; once the count
    // reaches the auto-save step (ZNFaultPatchTools::getNbPatchBeforeAutoSave, read on
    // every call; a step of 0 or less writes on every call) the counter is reset and the
    // patches whose 2D flag is `is2dFaultPatch` and whose vertical domain is time exactly
    // when `isTime` are written, as a fault set of their own, to
    // folder/EmergencySave_Time or folder/EmergencySave_Depth (writePickedFault with
    // `is2dFaultPatch`, progress shown). Returns true when a write was attempted (its
    // failure is reported by the writer), false when the call only counted.
    bool autoSave(const QString& folder, bool is2dFaultPatch, bool isTime);
    // The counter of a combination: calls counted since its last save; 0 after init.
    int getAutoSaveCounter(bool is2dFaultPatch, bool isTime) const;

    // A new fault set (owned by the caller) holding only the listed patches: the k-th
    // distinct id of `patchList` that is a patch id 1..n-1 becomes patch k (other ids
    // are skipped), followed by one empty spare patch. Records, points and voxels are
    // copied. The listed patches of one fault stay one fault: its root when listed, or
    // else its first listed patch, becomes the root and the others its direct children;
    // the fault's descriptor is copied with every setting (colour included) under the
    // new root id. Block space, kind, templates and mesh flag are copied.
    ZNFaultPatchManager* extractSubFaultPatchManager(const core::Array<int>& patchList) const;
    // Appends `other`'s patches 1..m-1 after this set's patches (patch q becomes n - 1 + q),
    // with their points, voxels, fathers (shifted alike; a father outside 1..m-1 makes the
    // patch its own root) and descriptors (copied with every setting, id shifted, names
    // unchanged). Keeps this set's kind and templates; takes `other`'s block space only
    // when this set's is empty. `other` may be this set. False, nothing changed, when
    // memory runs out.
    bool concatFaultPatchManager(const ZNFaultPatchManager& other);
    // ===== automatic fault sets: label volumes, contacts, merging, duplicates =====
    // (_labels.cpp, _merging.cpp, _similar.cpp)
    //
    // Voxels. Each patch keeps its voxels as offsets 0..127 from its origin along each
    // axis, so every offset reads the same whether taken signed or unsigned. A label whose
    // voxels do not fit in one 128-voxel box is cut along a grid of such boxes anchored at
    // the label's lowest corner: the box of its first voxel (scan order) is patch `label`,
    // every other occupied box becomes an additional patch of the same fault (its father is
    // the label's patch), placed after the label patches and before the spare last patch.
    // No voxel is ever dropped.
    //
    // Merge costs. getMergeCost of two records is the spread of their points across their
    // common best-fit plane, sqrt(lambda3) of the summed record: lower is better.
    static constexpr int kDefaultMinimumPatchSize = 11;  // points to enter the contact heap
    static constexpr int kDefaultAllocSize = 3;          // contact list growth, entries
    static constexpr int kVoxelBoxSize = 128;            // voxels per patch box side
    static constexpr double kMaxMergeDipDifference = 5.0;  // degrees, getDipAngleBis
    static constexpr double kMaxOverlapShare = 0.1;      // overlap test, of each fault
    static constexpr double kMaxOverlapDepth = 1.0;      // overlap test, mean depth gap

    // Points of one patch list falling on pixels another list was projected onto.
    struct OverlapCount {
        int points = 0;                     // points of the list on stamped pixels
        double meanDepthDifference = -9999.0;  // mean |stored - own| depth; -9999 for none
    };

    // An automatic fault set from a label volume (label k >= 1 is patch k; 0 and negative
    // values are no patch): (largest label + 2) patches plus the additional patches of
    // labels too large for one box, the block space copied, each patch's voxels, the
    // lateral contacts and the patch parameters. False, with a message on the event bus
    // (kind 1) and the fault set reset to an empty automatic one, for a null or empty
    // volume, a volume without positive labels, a grid position beyond 32767, or a lack
    // of memory. The first pass over the labels reads every row and notes where each one
    // holds labels (4 bytes a row); the voxel and contact passes read only those parts.
    bool init(const ZN3DImage<int>* labelImage);
    // The same from a block file of labels, read `slabDepth` slices at a time (below 1:
    // the slab planner's choice for 4-byte samples). Also false when the block is not
    // open for reading or a read fails.
    bool init(ZNBloc* labelBloc, int slabDepth);
    // The same from a finished label record file, read `slabDepth` slices at a time
    // (at least one). Also false when the file is not finished or a read fails.
    bool init(ZNLabelRecordFile* labelRecords, int slabDepth);

    // True when `point` (grid indices) is encodable in patch `patch`: the origin is
    // defined and each |point - origin| component is at most 127. False for a bad id.
    bool testPatchPointByteTriplet(int patch, const core::Triplet& point) const;
    // point - origin as bytes; meaningful only when testPatchPointByteTriplet is true
    // ((0, 0, 0) for a bad id).
    core::ByteTriplet getPatchPointByteTriplet(int patch, const core::Triplet& point) const;
    // A new label image (caller owns it) on the fault set's block space: every voxel of
    // every patch holds its fault id (the root of its patch), -9999 elsewhere. Null for an
    // empty block space or a lack of memory.
    ZN3DImage<int>* createFaultLabelImage() const;
    // Slices z0 .. z0 + slab.nz() - 1 of that label image, into `slab` (the block space's
    // nx and ny, any depth): what createFaultLabelImage holds there, so that the fault
    // volume can be written a slab at a time. With `slabIsClear`, `slab` holds -9999
    // everywhere on entry (new, or given back by clearFaultLabelSlab) and only the voxels
    // of the patches are written. False, `slab` untouched, for another width or height, an
    // empty slab or slices outside the block space.
    bool fillFaultLabelSlab(int z0, ZN3DImage<int>& slab, bool slabIsClear = false) const;
    // Writes -9999 back over the voxels fillFaultLabelSlab(z0, slab) wrote, leaving the
    // slab clear for the next slices at the cost of the patches' voxels only. False, as
    // fillFaultLabelSlab, for a slab that does not fit.
    bool clearFaultLabelSlab(int z0, ZN3DImage<int>& slab) const;

    // Contacts: per patch, the patches it touches. -9999 when the fault set holds no
    // contact lists (they are made by the label constructions and reset by init) or for
    // an id outside the lists.
    int getNumberOfContact(int patch) const;
    // Contact `k` of `patch`; 0 for a missing entry.
    int getContact(int patch, int k) const;
    // Records that patches a and b touch, in both lists, each once. False for a == b, an
    // id outside the lists (patch 0 included) or a failed allocation.
    bool addContact(int a, int b);
    // The lateral contact pass over one pair of label slices (width x height, x fastest),
    // label k being patch k: each interior pixel of `slice` with a label 1..n-1 is
    // compared with (x+1, y), (x+1, y-1), (x+1, y+1) of `slice` and (x, y), (x, y-1),
    // (x, y+1) of `nextSlice`; every other positive label met is a contact. Creates empty
    // contact lists for every patch when there are none.
    void getLateralContact(const int* slice, const int* nextSlice, int width, int height);
    // The pass over every pair of z slices of `labels`, sending "Get Lateral Contact"
    // (kind 4) and showing a bar of that title, one step per pair. False when cancelled
    // (the pairs done so far stay) or for a null image.
    bool getLateralContact(const ZN3DImage<int>* labels, int progressParent);
    // Entries a full contact list grows by (at least 1).
    int getAllocSize() const { return m_allocSize; }
    void setAllocSize(int size) { m_allocSize = size < 1 ? 1 : size; }
    // Patches with fewer points take no part in the direct-contact heap.
    int getMinimumPatchSize() const { return m_minimumPatchSize; }
    void setMinimumPatchSize(int size) { m_minimumPatchSize = size; }
    // True while fastContactMerging or fastContactMergingWithFaultContactBis runs.
    bool isMergingInProgress() const { return m_mergingInProgress; }

    // sqrt(lambda3) of a + b (a lambda3 a hair below 0 from rounding counts as 0).
    double getMergeCost(const ZNFaultPatch& a, const ZNFaultPatch& b) const;
    // A default record plus every listed record in list order (ids outside the array
    // skipped), its sampling vector replaced by getMergedSamplingVect(patchList).
    ZNFaultPatch getMergedFaultPatch(const core::Array<int>& patchList) const;
    // The merged record of the whole fault of `patch` (empty list for a bad id).
    ZNFaultPatch getMergedFaultPatch(int patch) const;
    // Joins the faults of a and b: root(a)'s father becomes root(b) and the fault's list
    // is b's patches followed by a's. Father chains met on the way may be shortened
    // (every patch keeps its root). False, nothing changed, when both have one root or
    // either id or root is not 1..n-1 (patch 0 is never linked).
    bool mergePatch(int a, int b);
    // Every (patch of fault A, patch of fault B) pair in contact, in A's list order then
    // contact order; `contacts` is replaced. Empty when the faults are one.
    void getPatchContactArrayWithFault(int faultA, int faultB,
                                       core::Array<core::Duplet>& contacts) const;
    // The mean (max false) or the largest (max true) getMergeCost of the pairs' records,
    // pairs with a bad id left out; -9999.0 when no pair remains.
    double getContactArrayPlanarMergeCost(const core::Array<core::Duplet>& contacts,
                                          bool max) const;
    double getContactArrayPlanarMergeCost(int faultA, int faultB, bool max) const;
    // Fills `heap` with (cost, (i, j)) for every contact of two patches of at least the
    // minimum size, each pair once, in different faults, cost strictly below `maxCost`;
    // patches 1..n-2 are the starting patches. Bar "Merge Fault Patches Initialization".
    // False when cancelled (the heap then holds what was found before).
    bool getSortedDirectContact(core::Heap<core::Duplet>& heap, double maxCost,
                                int progressParent);
    // Merges best-first over the direct contacts scored below maxCost / 2: a popped pair
    // of two faults is merged when the two whole faults together spread at most maxCost
    // across their plane and their getDipAngleBis differ by at most 5 degrees, the second
    // normal first turned to agree with the first (a fitted normal's sign is the
    // solver's, and one plane must not read as two opposite dips). Bar "Merge Fault
    // Patches". False when cancelled (merges made so far stay).
    bool fastContactMerging(double maxCost, int progressParent);
    // What settleCrossingLeftovers did.
    struct LeftoverOutcome {
        int joined = 0;   // leftovers joined to a fault
        int dropped = 0;  // leftovers whose voxels were dropped
    };
    // Settles the faults left over where faults meet: a fault of at most `maxVoxels` voxels
    // in contact with two or more other faults, typically one patch grown across a crossing
    // of two faults, whose fitted plane lies between theirs so that the best-first merging
    // joins it to neither. In increasing root order, each joins the fault it touches with
    // the lowest merge cost (getMergeCost of the two whole faults) when that cost is at
    // most `maxCost`; otherwise its voxels and records are emptied, as those of the patches
    // the segmentation rejects. Faults that touch one fault or none are kept as they are.
    LeftoverOutcome settleCrossingLeftovers(int maxVoxels, double maxCost);
    // Fills `heap` with (mean contact cost, (a, b)) for every pair of touching faults
    // a < b, each of at least `minFaultSize` points, touching through at least
    // `minContactCount` patch pairs, cost at most `maxCost`. False when cancelled.
    bool getSortedFaultContact(core::Heap<core::Duplet>& heap, int minFaultSize,
                               int minContactCount, double maxCost, int progressParent);
    // The faults (root ids) touching the fault of `fault`, in order of first contact;
    // `faults` is replaced.
    void getConnexFault(int fault, core::Array<int>& faults) const;
    // Merges best-first over fault contacts: a popped pair is re-scored, merged when the
    // mean cost is at most maxCost and testFaultPatchMerge accepts it, and the grown
    // fault's contacts are queued again. `mergeLog` (may be null) receives (root a, root b)
    // of every merge in order. Sends "Nb Merge :" and the count (kind 4). False when
    // cancelled.
    bool fastContactMergingWithFaultContactBis(int minFaultSize, int minContactCount,
                                               double maxCost,
                                               core::Array<core::Duplet>* mergeLog,
                                               int progressParent);
    // Overlap test of the faults of a and b; false when they are one.
    bool testFaultPatchMerge(int a, int b);
    // True when the merged records' dips differ by at most 5 degrees (normals turned to
    // agree, as in fastContactMerging), both hold points,
    // and, projected along the normal of both together, fewer than a tenth of either
    // list's points overlap the other and the overlapping points lie within a mean depth
    // of 1 of each other.
    bool testFaultPatchMerge(const core::Array<int>& listA, const core::Array<int>& listB);
    // Projection image of the overlap test: the axis points are projected along (any
    // non-zero vector; unit length is taken).
    void setProjectionAxe(const core::vec3& axis);
    // Projects the points of the listed patches (voxel positions, or hand-picked points)
    // onto the image, which is reframed to them, stamping their pixels with `index` (take
    // a fresh one from incrementCurrentIndex for each projection); the first point on a
    // pixel keeps its depth. Pixels are one coordinate unit, larger for very wide lists.
    void projectFaultPatchPoint(const core::Array<int>& patchList, int index);
    OverlapCount getNumberOfOverlapPoint(int index, const core::Array<int>& patchList) const;

    // Duplicates. Two faults are the same when their patches share one vertical domain,
    // they hold as many picked points, their block-space boxes are exactly equal and their
    // sticks carry the same points rounded to whole grid positions.
    bool testSameFault(int faultA, int faultB) const;
    // Every duplicate pair (i, j), i < j, of faults grouped by the rounded inline of their
    // box; each group in increasing id order. Faults without picked points or whose box
    // is a single point are left out. Bar "Similar Fault Detection". False when cancelled
    // (pairs found so far stay).
    bool getSameFaultArray(core::Array<core::Duplet>& pairs, int progressParent);
    // getSameFaultArray, and `names` (may be null) receives the fault names of each pair.
    bool getRemovedSameFaultArray(core::Array<core::Duplet>& pairs, int progressParent,
                                  QList<QPair<QString, QString>>* names = nullptr);
    // True when every patch of both faults (of the fault, of the list, of the surfaces'
    // faults) is in time, or every one in depth. True for nothing to compare.
    bool isSameVerticalDomain(int faultA, int faultB) const;
    bool isSameVerticalDomain(int fault) const;
    bool isSameVerticalDomain(const core::Array<int>& patchList) const;
    bool isSameVerticalDomain(const QList<ZNFaultSurface*>& faults) const;
    bool isSameVerticalDomain(const QList<ZN3DFaultPatch*>& faults) const;
    // True when the listed patches share one 2D flag, returned in `is2d` (unchanged for
    // an empty list).
    bool isSameFaultType(const core::Array<int>& patchList, bool& is2d) const;
    // One line counting the listed faults with a degenerate patch, e.g. "2 with a patch
    // without picked points, 1 with a one stick patch"; empty when there is none.
    QString getFaultsEdgeCasesAnalysis(const core::Array<int>& faults) const;
    // Box of the listed patches' picked points in block space: min x, y, z then max x,
    // y, z. False (box untouched) when they hold no point.
    bool getPatchListBlocRect(const core::Array<int>& patchList, double box[6]) const;
    // Sticks of patch `patch`; 0 for a bad id.
    int getNumberOfSticks(int patch) const;
    // Points of patch `patch` forming a stick of their own; 0 for a bad id.
    int getNumberOfIsolatedPickedPoints(int patch) const;
    // ===== end of automatic fault sets =====

private:
    void initMembers();
    void copyModelFrom(const ZNFaultPatchManager& other);
    // Patches of the fault of `faultId`, into the working list; false for a bad id.
    bool collectFault(int faultId, core::Array<int>& list) const;
    // Resets to one patch per row (at least two patches) and gives every row patch the
    // sampling vector (utm, time, utm).
    void initForRows(int numberOfRows, int utmPrecision, int timePrecision);
    // Appends a two-point stick to patch `patchId`, after a separator when the list is
    // not empty.
    void appendStick(int patchId, const core::vec3& start, const core::vec3& end);
    // Inserts a descriptor for every patch 1..n-1 that holds a point.
    void insertFaultLightsForPickedPatches();
    // Applies a per-patch cleaning to every patch of the fault of `faultId`; returns the
    // total it reports (entries removed), 0 for a bad id.
    int forEachPatchOfFault(int faultId, int (ZNFaultPatchManager::*perPatch)(int));
    // Removes from patch `patchId` the entries for which `drop(points, count, index)` is
    // true, in one pass that keeps the order; returns how many were removed and moves
    // `*currentIndex` (may be null) along.
    template <class Drop>
    int removeEntries(int patchId, int* currentIndex, Drop drop);
    // Index of `config` in the history, -1 when absent.
    int historyIndexOf(const ZNFaultPatchManagerConfig* config) const;
    // The focus rule of a "Pick Point" restore for one patch.
    bool findPickFocus(int patchId, const ZNFaultPatchManagerConfig& config,
                       core::vec3& focus) const;
    // The per-descriptor and per-patch parts of a header, however it was parsed.
    struct HeaderParts;
    // getPickedFaultHeader once the repeated elements are parsed into `parts` (whose
    // descriptors are taken).
    template <class Element>
    bool applyHeader(const Element& header, HeaderParts& parts, int progressParent);
    // The header element of createHeader, in a DOM document or a flat XML tree.
    template <class Document>
    auto writeHeader(Document& doc) const -> decltype(doc.createElement(QString()));
    // The data block reader without the action: fathers, then each patch's entries.
    bool readPatchData(ZNByteSource& file, qint64 offset, bool twoD, int progressParent);
    // Reads and checks the fathers; false, nothing changed, when they are not a forest.
    bool readFathers(ZNByteSource& file);
    // Reads one patch's count and entries in the layout of the file's version.
    bool readPatchEntries(ZNByteSource& file, int id, bool twoD);
    // Takes the file-borne model of `other` (a fault set just read) by swapping.
    void takeModelFrom(ZNFaultPatchManager& other);

    georef::BlocSpace m_blocSpace;                        // survey grid of the fault set
    bool m_picked = true;                                 // picked (true) or automatic
    ZN3DFaultPatchLight m_templateFaultLight;             // settings of new faults
    ZN3DFaultPatchLight m_secondFaultLight;               // reset with the template
    core::Array<ZNFaultPatch> m_patches{kPatchGrowthStep};  // one record per patch id
    core::Array<int> m_workingPatchList{kPatchGrowthStep};  // scratch patch list
    core::Array<int> m_visitStamps{kPatchGrowthStep};       // one stamp per patch
    int m_currentStamp = 0;                               // "visited now" stamp value
    core::Array<int> m_nextInFault{kPatchGrowthStep};       // linked lists: next patch, -1 at end
    core::MultiArray<core::ByteTriplet> m_patchVoxels;    // voxels of each patch
    core::MultiArray<core::PointWithBool> m_pickedPoints; // picked points of each patch
    QList<ZN3DFaultPatchLight*> m_faultLights;            // owned, one per fault
    // Position in m_faultLights of the first descriptor of each fault id (-1: none), so
    // that finding a descriptor costs no walk through the list; valid while current.
    mutable std::vector<int> m_lightPosition;
    mutable bool m_lightIndexCurrent = false;
    bool m_locked = false;                                // must not be edited
    int m_currentPickedFaultId = -9999;                   // patch receiving picks
    int m_currentMovingPointId = -9999;                   // entry being dragged
    int m_storedId = -9999;                               // travels with snapshots
    QList<ZNFaultPatchManagerConfig*> m_history;          // owned, oldest first
    ZNFaultPatchManagerConfig* m_currentConfig = nullptr; // snapshot matching the state
    int m_historyLimit = kDefaultHistoryLimit;
    QList<ZNFaultSurface*> m_faultSurfaces;               // attached, not owned
    int m_version = kLastVersion;                         // of the file last read
    bool m_withMesh = true;                               // meshes follow the points
    QMap<int, StoredMesh> m_storedMeshes;                 // by fault id, from the last read
    int m_autoSaveCounters[2][2] = {};                    // [is 2D][is time]

    // ===== automatic fault sets (_labels.cpp, _merging.cpp, _similar.cpp) =====
    // The image of the overlap test: one stamp and one depth per pixel.
    struct ProjectionImage {
        core::vec3 axis{0.0, 0.0, 1.0};  // unit projection axis
        core::vec3 u{1.0, 0.0, 0.0};     // unit image axes, orthogonal to it
        core::vec3 v{0.0, 1.0, 0.0};
        double pixelSize = 1.0;          // coordinate units per pixel
        int u0 = 0, v0 = 0;              // pixel of the image's first sample
        int width = 0, height = 0;
        core::Array<int> stamps{1024};
        core::Array<float> depths{1024};
    };
    // The touching pairs of one fault with each other fault, in order of first contact.
    struct FaultContacts {
        int fault = 0;                           // root of the other fault
        core::Array<core::Duplet> pairs{16};     // (own patch, other patch)
    };
    bool initFromLabels(ZNLabelSlabReader& labels);
    // Empty contact lists for every patch unless the lists already cover them.
    bool ensureContactLists();
    // Appends `light` (owned from now on) to the descriptors, keeping the index current.
    void appendFaultLight(ZN3DFaultPatchLight* light);
    // Deletes every descriptor.
    void deleteFaultLights();
    // Rebuilds the index of the descriptors by fault id.
    void indexFaultLights() const;
    // Root of `id`, pointing every patch met on the way straight at it.
    int findRootCompressing(int id);
    // Joins two roots (b's list then a's); `tails` (may be null) holds the last patch of
    // each root's list and is kept up to date.
    void mergeRoots(int rootA, int rootB, core::Array<int>* tails);
    // The points the records of the listed patches are made of.
    void collectPatchPoints(const core::Array<int>& patchList,
                            core::Array<core::vec3>& points) const;
    // The contacts of fault `root` grouped by the other fault; no shared state touched.
    void groupContactsByFault(int root, std::vector<FaultContacts>& groups) const;
    bool sameFaultWithBoxes(int faultA, int faultB, const double boxA[6],
                            const double boxB[6]) const;

    core::MultiArray<int> m_contacts;                     // touching patches of each patch
    int m_allocSize = kDefaultAllocSize;                  // contact list growth
    int m_minimumPatchSize = kDefaultMinimumPatchSize;    // of the direct-contact heap
    bool m_mergingInProgress = false;                     // a merge driver runs
    ProjectionImage m_projection;                         // of the overlap test
    // ===== end of automatic fault sets =====
};
