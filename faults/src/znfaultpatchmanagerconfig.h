#pragma once
#include <QList>
#include <QString>

#include <core/array.h>
#include <core/multiarray.h>
#include <core/pointwithbool.h>

class ZN3DFaultPatchLight;

// One snapshot of a fault set's undo history: just enough of the fault set to put it
// back. Two kinds exist:
// - an edition snapshot (edition mode true), taken while picking on one fault: the
//   father of every patch and the picked points of the listed patches only;
// - a full snapshot (edition mode false), taken for grouping changes: the father of
//   every patch and a deep copy of every fault descriptor, no picked points.
// The length of the fathers array is the number of patches of the fault set when the
// snapshot was taken; a snapshot restores nothing into a fault set of another size.
//
// The snapshot owns its descriptor copies; copies of a snapshot are deep.
class ZNFaultPatchManagerConfig {
public:
    ZNFaultPatchManagerConfig();
    ZNFaultPatchManagerConfig(const ZNFaultPatchManagerConfig& other);
    ZNFaultPatchManagerConfig& operator=(const ZNFaultPatchManagerConfig& other);
    ~ZNFaultPatchManagerConfig();

    // Fathers sized to `numberOfPatch` (-9999 each), an empty picked-point sub-array per
    // patch, empty patch list, no descriptor, stored id -9999, edition mode false. The
    // action name is kept. A negative number counts as 0.
    void init(int numberOfPatch);

    // Number of patches of the fault set the snapshot was taken from.
    int getNumberOfPatch() const { return m_fathers.size(); }

    // Deletes the descriptor copies and empties the list.
    void clearFaultLights();
    // Appends a deep copy (patch list included) of `light`; null is ignored.
    void appendFaultLightCopy(const ZN3DFaultPatchLight* light);

    const QList<ZN3DFaultPatchLight*>& getFaultLights() const { return m_faultLights; }
    core::Array<int>& getPatchList() { return m_patchList; }
    const core::Array<int>& getPatchList() const { return m_patchList; }
    core::MultiArray<core::PointWithBool>& getPickedPoints() { return m_pickedPoints; }
    const core::MultiArray<core::PointWithBool>& getPickedPoints() const { return m_pickedPoints; }
    core::Array<int>& getFathers() { return m_fathers; }
    const core::Array<int>& getFathers() const { return m_fathers; }
    const QString& getActionName() const { return m_actionName; }
    void setActionName(const QString& name) { m_actionName = name; }
    int getStoredId() const { return m_storedId; }
    void setStoredId(int id) { m_storedId = id; }
    bool isEditionMode() const { return m_editionMode; }
    void setEditionMode(bool edition) { m_editionMode = edition; }

private:
    QList<ZN3DFaultPatchLight*> m_faultLights;        // full snapshots: owned deep copies
    core::Array<int> m_patchList;                     // edition snapshots: patches stored
    core::MultiArray<core::PointWithBool> m_pickedPoints;  // one sub-array per patch
    core::Array<int> m_fathers;                       // father of every patch
    QString m_actionName;                             // the action the snapshot belongs to
    int m_storedId = -9999;                           // the fault set's stored id
    bool m_editionMode = false;
};
