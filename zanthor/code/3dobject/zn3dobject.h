#pragma once
#include <QString>

#include <core/array.h>
#include <core/vec3.h>
#include <georef/crsobjectabstract.h>
#include <znobject.h>
#include <znobjectserialization.h>

#include "3dobject/zn3dobjectrecords.h"

class ZNPropertySheet;

// A triangulated surface: points (x, y, z as 64-bit reals, world or block coordinates
// in the object's units) and facettes (three indices into the points each). Facettes
// read from a file are not checked against the point count; code that follows an index
// checks it first (the topology does).
//
// With the topology flag set, the object also keeps, for every point, the facettes that
// use it; it is rebuilt after every load and by updateTopology() after edits.
class ZN3DObject : public ZNObject,
                   public virtual ZNObjectSerialization,
                   public georef::CrsObjectAbstract {
public:
    static constexpr int kTopologyInitialCapacity = 10;  // facette slots per point

    ZN3DObject() = default;
    ZN3DObject(const ZN3DObject&) = default;
    ZN3DObject& operator=(const ZN3DObject&) = default;

    // "ZN3DObject".
    QString getZNObjectType() const override;

    // The object's name as shown to the user.
    virtual QString getName() const { return m_name; }
    void setName(const QString& name) { m_name = name; }

    core::Array<core::vec3>& getPoints() { return m_points; }
    const core::Array<core::vec3>& getPoints() const { return m_points; }
    core::Array<ZNFacette>& getFacettes() { return m_facettes; }
    const core::Array<ZNFacette>& getFacettes() const { return m_facettes; }
    int getNumberOfPoints() const { return m_points.size(); }
    int getNumberOfFacettes() const { return m_facettes.size(); }

    // Scale factors along x, y and z; (1, 1, 1) by default.
    const core::vec3& getPixelSize() const { return m_pixelSize; }
    void setPixelSize(const core::vec3& size) { m_pixelSize = size; }

    bool hasTopology() const { return m_topology; }
    // Sets the flag; setting it builds the lists, clearing it frees them.
    void setTopology(bool topology);
    // Rebuilds the point-to-facette lists from the current facettes (nothing when the
    // flag is clear). A facette index outside the points is skipped.
    void updateTopology();
    // Facette indices that use point `point`, in facette order; null for a bad point id
    // or when the flag is clear. Owned by the object, valid until the next rebuild.
    const core::Array<int>* getFacettesOfPoint(int point) const;

    // The read-only information rows, in the group "Information": "Name", "Nb Point"
    // (the number of points) and the row labelled "Nb Facet" whose id is "Nb Facette"
    // (the number of facettes). Label and id differ on purpose: updates address the id.
    virtual void createInformationProperty(ZNPropertySheet& sheet) const;

protected:
    // Called after new geometry was loaded: rebuilds the topology when it is kept.
    void geometryLoaded();

    core::Array<core::vec3> m_points;
    core::Array<ZNFacette> m_facettes;

private:
    QString m_name;
    core::vec3 m_pixelSize{1.0, 1.0, 1.0};
    bool m_topology = false;
    core::Array<core::Array<int>> m_pointFacettes;  // per point, when m_topology
};
