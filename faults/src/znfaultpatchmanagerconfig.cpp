#include "znfaultpatchmanagerconfig.h"

#include <core/conventions.h>

#include "zn3dfaultpatchlight.h"

namespace {
// Points of a patch rarely change by more than a few at a time between snapshots.
constexpr int kSnapshotPointGrowthStep = 3;
} // namespace

ZNFaultPatchManagerConfig::ZNFaultPatchManagerConfig()
    : m_patchList(core::Array<int>::kDefaultGrowthStep),
      m_pickedPoints(0, kSnapshotPointGrowthStep)
{
}

ZNFaultPatchManagerConfig::ZNFaultPatchManagerConfig(const ZNFaultPatchManagerConfig& other)
    : m_patchList(other.m_patchList),
      m_pickedPoints(other.m_pickedPoints),
      m_fathers(other.m_fathers),
      m_actionName(other.m_actionName),
      m_storedId(other.m_storedId),
      m_editionMode(other.m_editionMode)
{
    for (const ZN3DFaultPatchLight* light : other.m_faultLights) appendFaultLightCopy(light);
}

ZNFaultPatchManagerConfig& ZNFaultPatchManagerConfig::operator=(
    const ZNFaultPatchManagerConfig& other)
{
    if (this == &other) return *this;
    clearFaultLights();
    for (const ZN3DFaultPatchLight* light : other.m_faultLights) appendFaultLightCopy(light);
    m_patchList = other.m_patchList;
    m_pickedPoints = other.m_pickedPoints;
    m_fathers = other.m_fathers;
    m_actionName = other.m_actionName;
    m_storedId = other.m_storedId;
    m_editionMode = other.m_editionMode;
    return *this;
}

ZNFaultPatchManagerConfig::~ZNFaultPatchManagerConfig() { clearFaultLights(); }

void ZNFaultPatchManagerConfig::init(int numberOfPatch)
{
    const int n = numberOfPatch < 0 ? 0 : numberOfPatch;
    m_fathers.fill(n, core::kNoValue);
    m_pickedPoints.init(n, kSnapshotPointGrowthStep);
    m_patchList.clear();
    clearFaultLights();
    m_storedId = core::kNoValue;
    m_editionMode = false;
}

void ZNFaultPatchManagerConfig::clearFaultLights()
{
    qDeleteAll(m_faultLights);
    m_faultLights.clear();
}

void ZNFaultPatchManagerConfig::appendFaultLightCopy(const ZN3DFaultPatchLight* light)
{
    if (!light) return;
    auto* copy = new ZN3DFaultPatchLight();
    copy->copy(light, true);
    m_faultLights.append(copy);
}
