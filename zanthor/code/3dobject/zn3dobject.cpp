#include "3dobject/zn3dobject.h"

#include <property/znpropertysheet.h>

namespace {
const QString kInformation = QStringLiteral("Information");
constexpr int kCorners = 3;  // point indices per facette
} // namespace

QString ZN3DObject::getZNObjectType() const { return QStringLiteral("ZN3DObject"); }

void ZN3DObject::setTopology(bool topology)
{
    m_topology = topology;
    if (topology)
        updateTopology();
    else
        m_pointFacettes.release();
}

void ZN3DObject::updateTopology()
{
    m_pointFacettes.release();
    if (!m_topology) return;
    const int nPoints = m_points.size();
    if (!m_pointFacettes.resize(nPoints)) return;
    for (int p = 0; p < nPoints; ++p) m_pointFacettes[p].reserve(kTopologyInitialCapacity);
    for (int f = 0; f < m_facettes.size(); ++f) {
        for (int c = 0; c < kCorners; ++c) {
            const uint32_t p = m_facettes[f].index[c];
            if (p >= static_cast<uint32_t>(nPoints)) continue;
            core::Array<int>& list = m_pointFacettes[static_cast<int>(p)];
            if (list.empty() || list.last() != f) list.add(f);  // a degenerate facette counts once
        }
    }
}

const core::Array<int>* ZN3DObject::getFacettesOfPoint(int point) const
{
    return m_topology ? m_pointFacettes.at(point) : nullptr;
}

void ZN3DObject::createInformationProperty(ZNPropertySheet& sheet) const
{
    const struct {
        const char* id;
        const char* label;
        QString value;
    } rows[] = {
        {"Name", "Name", getName()},
        {"Nb Point", "Nb Point", QString::number(m_points.size())},
        {"Nb Facette", "Nb Facet", QString::number(m_facettes.size())},
    };
    for (const auto& row : rows)
        sheet.addProperty(kInformation, QString::fromLatin1(row.id), QString::fromLatin1(row.label),
                          ZNProperty::String, row.value)
            .readOnly = true;
}

void ZN3DObject::geometryLoaded()
{
    if (m_topology) updateTopology();
}
