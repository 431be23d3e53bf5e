#pragma once
#include <functional>
#include <unordered_map>
#include <variant>
#include <vector>

#include <QtGlobal>

#include <core/conventions.h>
#include <geom/box3.h>

#include "zn3dsceneitems.h"

// What a 3D view shows: items the host chooses the ids of, each a surface, polylines,
// a section plane, a box or a reference point (see zn3dsceneitems.h), with a visibility
// and a pickable flag. Items are kept in the order they were first set.
//
// Each item carries a revision that changes whenever its geometry or image may have
// changed: when it is set, and when the host says so with updateItem. A renderer builds
// an item's buffers once per revision; between two revisions only the display (colours,
// transparency, hidden flags, visibility, the camera) changes. A surface's points and
// facettes are read from its object at those two moments only.
//
// Every change reports through the changed callback (at most one call per change), so
// that a view schedules a new frame.
class ZN3DScene {
public:
    using Content = std::variant<ZN3DSurfaceItem, ZN3DPolylineItem, ZN3DSectionItem, ZN3DBoxItem,
                                 ZN3DReferencePointItem>;
    // The alternative a Content holds, in the variant's order.
    enum class Kind { Surface, Polyline, Section, Box, ReferencePoint };

    struct Item {
        int id = core::kNoValue;
        Content content;
        bool visible = true;
        bool pickable = true;
        quint64 revision = 0;  // unique in the scene's life, see the class comment
        geom::Box3 box;        // world box of the geometry at this revision; empty for none
        core::vec3 origin;     // the box's centre: the local origin of the item's buffers

        Kind kind() const { return static_cast<Kind>(content.index()); }
        // Visible, and for a surface: its object still exists and is not hidden.
        bool isDrawn() const;
        // Drawn in the transparent pass: a surface whose object's transparency is below
        // 1 or a section of opacity below 1.
        bool isTransparent() const;
    };

    ZN3DScene() = default;
    ZN3DScene(const ZN3DScene&) = delete;
    ZN3DScene& operator=(const ZN3DScene&) = delete;

    // Adds item `id`, or replaces the content of an existing one (its visibility kept,
    // its pickable flag set). False, nothing changed, for the id -9999, which means "no
    // item" in every answer.
    bool setItem(int id, Content content, bool pickable = true);
    // The geometry or image of item `id` changed (a surface's object was re-meshed):
    // a new revision and box. False for an unknown id.
    bool updateItem(int id);
    // Only the display of item `id` changed (colour, transparency, hidden flag of its
    // object): a new frame, no new revision. False for an unknown id.
    bool displayChanged(int id);
    bool removeItem(int id);
    void clear();
    bool setVisible(int id, bool visible);
    bool setPickable(int id, bool pickable);

    // Null for an unknown id; valid until the next setItem, removeItem or clear.
    const Item* item(int id) const;
    // The content of item `id` when it holds a T; null otherwise.
    template <class T>
    const T* content(int id) const
    {
        const Item* found = item(id);
        return found ? std::get_if<T>(&found->content) : nullptr;
    }
    const std::vector<Item>& items() const { return m_items; }
    int count() const { return static_cast<int>(m_items.size()); }

    // The world box of the items drawn; empty when none is.
    geom::Box3 boundingBox() const;
    // Changes with every change of the scene (items, revisions, visibility, display).
    quint64 revision() const { return m_revision; }

    void setChangedCallback(std::function<void()> callback) { m_changed = std::move(callback); }

private:
    // Gives `item` a new revision, box and origin from its content.
    void refresh(Item& item);
    // The item of `id`; null for an unknown id.
    Item* find(int id);
    void changed();

    std::vector<Item> m_items;
    std::unordered_map<int, size_t> m_index;  // id -> position in m_items
    quint64 m_revision = 0;
    std::function<void()> m_changed;
};
