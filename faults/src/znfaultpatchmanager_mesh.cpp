// The mesh section of the fault set file: the meshes of the faults, written after the
// picked points when the fault set's "withMesh" flag is set. Every read and write of that
// section goes through these two functions.
#include "znfaultpatchmanager.h"

#include <cmath>

#include <QIODevice>
#include <QtEndian>

#include <znbytesource.h>

#include "zn3dfaultpatch.h"

namespace {

constexpr int kCountBytes = 4;
// Coordinates of a fault mesh are world coordinates: always stored in binary64.
constexpr int kMeshRecordSize = 8;

bool writeCounts(QIODevice& file, int points, int facettes)
{
    uchar counts[2 * kCountBytes];
    qToLittleEndian<qint32>(points, counts);
    qToLittleEndian<qint32>(facettes, counts + kCountBytes);
    return file.write(reinterpret_cast<const char*>(counts), sizeof counts) == sizeof counts;
}

// One mesh record; false for a record that is cut short or does not describe a mesh.
bool readRecord(ZNByteSource& file, ZNFaultPatchManager::StoredMesh& mesh)
{
    uchar counts[2 * kCountBytes];
    if (!file.read(counts, sizeof counts)) return false;
    const qint32 points = qFromLittleEndian<qint32>(counts);
    const qint32 facettes = qFromLittleEndian<qint32>(counts + kCountBytes);
    const qint64 bytes = qint64(points) * ZN3DObjectRecords::pointBytes(kMeshRecordSize) +
                         qint64(facettes) * ZN3DObjectRecords::kFacetteBytes;
    if (points < 0 || facettes < 0 || !file.mayHold(bytes) ||
        !ZN3DObjectRecords::readPoints(file, kMeshRecordSize, points, mesh.points) ||
        !ZN3DObjectRecords::readFacettes(file, facettes, mesh.facettes))
        return false;
    for (const core::vec3& p : mesh.points)
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return false;
    for (const ZNFacette& f : mesh.facettes)
        for (uint32_t index : f.index)
            if (index >= static_cast<uint32_t>(points)) return false;
    return true;
}

} // namespace

bool ZNFaultPatchManager::writeMesh(QIODevice& file, const QList<ZN3DFaultPatch*>& meshes) const
{
    for (const ZN3DFaultPatch* patch : meshes) {
        const int points = patch ? patch->getNumberOfPoints() : 0;
        const int facettes = patch ? patch->getNumberOfFacettes() : 0;
        if (!writeCounts(file, points, facettes)) return false;
        if (!patch) continue;
        if (!ZN3DObjectRecords::writePoints(file, kMeshRecordSize, patch->getPoints().data(), points) ||
            !ZN3DObjectRecords::writeFacettes(file, patch->getFacettes().data(), facettes))
            return false;
    }
    return true;
}

bool ZNFaultPatchManager::readMesh(ZNByteSource& file)
{
    QMap<int, StoredMesh> meshes;
    for (const ZN3DFaultPatchLight* light : m_faultLights) {
        StoredMesh mesh;
        if (!readRecord(file, mesh)) return false;
        if (!mesh.facettes.empty()) meshes.insert(light->getFaultId(), std::move(mesh));
    }
    m_storedMeshes.swap(meshes);
    return true;
}

const ZNFaultPatchManager::StoredMesh* ZNFaultPatchManager::getStoredMesh(int faultId) const
{
    const auto found = m_storedMeshes.constFind(faultId);
    return found == m_storedMeshes.constEnd() ? nullptr : &found.value();
}
