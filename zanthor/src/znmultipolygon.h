#pragma once
#include <vector>

#include <core/array.h>
#include <core/vec3.h>

// A set of closed polygons in the space of the object they outline (world coordinates
// for a fault's outline). Each polygon lists its corners once, in order; the closing edge
// from the last corner back to the first is implied. A plain value.
class ZNMultiPolygon {
public:
    int getNumberOfPolygon() const { return static_cast<int>(m_polygons.size()); }
    // Corners of polygon `i`; null for an index outside 0..getNumberOfPolygon()-1. Owned
    // by the multi-polygon, valid until the next change.
    const core::Array<core::vec3>* getPolygon(int i) const
    {
        return i >= 0 && i < getNumberOfPolygon() ? &m_polygons[static_cast<size_t>(i)] : nullptr;
    }
    void addPolygon(const core::Array<core::vec3>& corners) { m_polygons.push_back(corners); }
    void clear() { m_polygons.clear(); }

private:
    std::vector<core::Array<core::vec3>> m_polygons;
};
