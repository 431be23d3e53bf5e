// The fault viewer engine's data mapping: data blocks mapped along the fault shown.
#include "znfaultviewerengine.h"

#include <QFileInfo>

#include <zn3dfaultpatch.h>
#include <znmessagebox.h>

bool ZNFaultViewerEngine::checkDomain(const georef::UnitObject& units) const
{
    const ZN3DFaultPatch* fault = m_fault.data();
    if (!fault || fault->GetUnitObject().isTime() == units.isTime()) return true;
    ZNMessageBox::showMessage(ZNMessageBox::Warning, QStringLiteral("Extract Data along Fault"),
                              QStringLiteral("Vertical domains not compatible"));
    return false;
}

bool ZNFaultViewerEngine::mappingInputs(img::Image& projection, core::mat4& imageToWorld) const
{
    if (!m_projected || m_projection.isEmpty() || blocSpace().isEmpty()) return false;
    std::unique_ptr<img::Image> copy = m_projection.clone();
    if (!copy) return false;
    projection = std::move(*copy);
    imageToWorld = blocSpace().getFromBlocToWorldMatrix();
    return true;
}

bool ZNFaultViewerEngine::extractData(ZNBloc* dataBlock, int progressParent)
{
    img::Image projection;
    core::mat4 imageToWorld;
    if (!dataBlock || !checkDomain(dataBlock->unitObject()) || !mappingInputs(projection, imageToWorld)) return false;
    img::Image mapped;
    if (fault::mapDataOnFaultPlane(projection, imageToWorld, *dataBlock, m_mapping, mapped, progressParent) !=
        fault::FaultPlaneMappingResult::Done)
        return false;
    const QString name = QFileInfo(dataBlock->path()).completeBaseName();
    return setMappedImage(std::move(mapped), name);
}

bool ZNFaultViewerEngine::setMappedImage(img::Image&& mapped, const QString& name)
{
    if (mapped.width() != m_mapped.width() || mapped.height() != m_mapped.height() || m_mapped.isEmpty()) return false;
    m_mapped = std::move(mapped);
    m_hasMapped = true;
    m_mappedName = name;
    displayTimeImage();
    send(QStringLiteral("UPDATE_PALETTE_MANAGER"));
    return true;
}
