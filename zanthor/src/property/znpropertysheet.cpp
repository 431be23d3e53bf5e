#include "property/znpropertysheet.h"

int ZNPropertySheet::addGroup(const QString& name)
{
    for (int i = 0; i < m_groups.size(); ++i)
        if (m_groups[i].name == name) return i;
    m_groups.append(Group{name, {}});
    return m_groups.size() - 1;
}

ZNProperty& ZNPropertySheet::addProperty(const QString& group, const QString& id,
                                         const QString& label, ZNProperty::Kind kind,
                                         const QVariant& value)
{
    ZNProperty p;
    p.id = id;
    p.label = label;
    p.kind = kind;
    p.value = value;
    QList<ZNProperty>& rows = m_groups[addGroup(group)].properties;
    rows.append(p);
    return rows.last();
}

const ZNPropertySheet::Group* ZNPropertySheet::group(const QString& name) const
{
    for (const Group& g : m_groups)
        if (g.name == name) return &g;
    return nullptr;
}

ZNProperty* ZNPropertySheet::property(const QString& id)
{
    for (Group& g : m_groups)
        for (ZNProperty& p : g.properties)
            if (p.id == id) return &p;
    return nullptr;
}

const ZNProperty* ZNPropertySheet::property(const QString& id) const
{
    return const_cast<ZNPropertySheet*>(this)->property(id);
}

bool ZNPropertySheet::setValue(const QString& id, const QVariant& value)
{
    ZNProperty* p = property(id);
    if (p) p->value = value;
    return p != nullptr;
}

int ZNPropertySheet::count() const
{
    int n = 0;
    for (const Group& g : m_groups) n += g.properties.size();
    return n;
}
