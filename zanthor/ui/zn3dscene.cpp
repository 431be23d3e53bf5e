#include "zn3dscene.h"

#include <cmath>

namespace {

bool isFinite(const core::vec3& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

// The world box of each kind of content.
struct BoxOf {
    geom::Box3 operator()(const ZN3DSurfaceItem& surface) const
    {
        geom::Box3 box;
        if (!surface.object) return box;
        for (const core::vec3& p : surface.object->getPoints())
            if (isFinite(p)) box.include(p);
        return box;
    }
    geom::Box3 operator()(const ZN3DPolylineItem& lines) const
    {
        geom::Box3 box;
        for (const core::vec3& p : lines.points)
            if (p.x != core::kNoValueReal && isFinite(p)) box.include(p);
        return box;
    }
    geom::Box3 operator()(const ZN3DSectionItem& section) const
    {
        geom::Box3 box;
        for (const core::vec3& p : section.corners)
            if (p.x != core::kNoValueReal && isFinite(p)) box.include(p);
        return box;
    }
    geom::Box3 operator()(const ZN3DBoxItem& item) const
    {
        geom::Box3 box;
        if (item.isEmpty()) return box;
        for (const core::vec3& p : item.corners)
            if (p.x != core::kNoValueReal && isFinite(p)) box.include(p);
        return box;
    }
    geom::Box3 operator()(const ZN3DReferencePointItem& point) const
    {
        geom::Box3 box;
        if (isFinite(point.position)) box.include(point.position);
        return box;
    }
};

} // namespace

ZN3DPolylineItem ZN3DPolylineItem::fromPickedPoints(const core::Array<core::PointWithBool>& picked,
                                                    const QColor& colour)
{
    ZN3DPolylineItem item;
    item.colour = colour;
    item.points.reserve(picked.size());
    for (const core::PointWithBool& p : picked)
        item.points.push_back(p.isSeparator() ? core::vec3(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal)
                                              : p.position());
    return item;
}

std::array<core::vec3, 8> ZN3DBoxItem::cornersOf(const geom::Box3& box)
{
    std::array<core::vec3, 8> corners;
    for (int k = 0; k < 8; ++k)
        corners[size_t(k)] = box.isEmpty() ? core::vec3(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal)
                                           : core::vec3((k & 1) ? box.high.x : box.low.x, (k & 2) ? box.high.y : box.low.y,
                                                        (k & 4) ? box.high.z : box.low.z);
    return corners;
}

bool ZN3DScene::Item::isDrawn() const
{
    if (!visible) return false;
    if (const auto* surface = std::get_if<ZN3DSurfaceItem>(&content))
        return surface->object && !surface->object->isHidden();
    return true;
}

bool ZN3DScene::Item::isTransparent() const
{
    if (const auto* surface = std::get_if<ZN3DSurfaceItem>(&content))
        return surface->object && surface->object->getTransparency() < 1.0f;
    if (const auto* section = std::get_if<ZN3DSectionItem>(&content)) return section->opacity < 1.0f;
    return false;
}

bool ZN3DScene::setItem(int id, Content content, bool pickable)
{
    if (id == core::kNoValue) return false;
    const auto found = m_index.find(id);
    if (found == m_index.end()) {
        m_index.emplace(id, m_items.size());
        m_items.emplace_back();
        m_items.back().id = id;
    }
    Item& item = m_items[m_index.at(id)];
    item.content = std::move(content);
    item.pickable = pickable;
    refresh(item);
    changed();
    return true;
}

ZN3DScene::Item* ZN3DScene::find(int id)
{
    const auto found = m_index.find(id);
    return found == m_index.end() ? nullptr : &m_items[found->second];
}

bool ZN3DScene::updateItem(int id)
{
    Item* item = find(id);
    if (!item) return false;
    refresh(*item);
    changed();
    return true;
}

bool ZN3DScene::displayChanged(int id)
{
    if (!find(id)) return false;
    changed();
    return true;
}

bool ZN3DScene::removeItem(int id)
{
    const auto found = m_index.find(id);
    if (found == m_index.end()) return false;
    m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(found->second));
    m_index.clear();
    for (size_t i = 0; i < m_items.size(); ++i) m_index.emplace(m_items[i].id, i);
    changed();
    return true;
}

void ZN3DScene::clear()
{
    m_items.clear();
    m_index.clear();
    changed();
}

bool ZN3DScene::setVisible(int id, bool visible)
{
    Item* item = find(id);
    if (!item) return false;
    item->visible = visible;
    changed();
    return true;
}

bool ZN3DScene::setPickable(int id, bool pickable)
{
    Item* item = find(id);
    if (!item) return false;
    item->pickable = pickable;
    changed();
    return true;
}

const ZN3DScene::Item* ZN3DScene::item(int id) const { return const_cast<ZN3DScene*>(this)->find(id); }

geom::Box3 ZN3DScene::boundingBox() const
{
    geom::Box3 box;
    for (const Item& item : m_items) {
        if (!item.isDrawn() || item.box.isEmpty()) continue;
        box.include(item.box.low);
        box.include(item.box.high);
    }
    return box;
}

void ZN3DScene::refresh(Item& item)
{
    item.revision = ++m_revision;
    item.box = std::visit(BoxOf(), item.content);
    item.origin = item.box.isEmpty() ? core::vec3() : (item.box.low + item.box.high) / 2.0;
}

void ZN3DScene::changed()
{
    ++m_revision;
    if (m_changed) m_changed();
}
