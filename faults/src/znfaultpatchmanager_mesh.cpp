// The mesh section of the fault set file: the meshes of the faults, written after the
// picked points when the fault set's "withMesh" flag is set. Every read and write of that
// section goes through these two functions.
#include "znfaultpatchmanager.h"

#include <QIODevice>

#include <znbytesource.h>

bool ZNFaultPatchManager::writeMesh(QIODevice&, const QList<ZN3DFaultPatch*>&) const
{
    // The 3D fault patch writes its stream form here, one per descriptor in order. Until
    // it exists no mesh is written; readers find the file ending after the points.
    return true;
}

bool ZNFaultPatchManager::readMesh(ZNByteSource&)
{
    // The 3D fault patch reads its stream form here. Until it exists the section is left
    // unread: meshes are derived data, rebuilt from the picked points.
    return true;
}
