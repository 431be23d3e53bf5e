#pragma once
#include "pointwithbool.h"

// The stick structure of one patch's picked-point list. Every picking, editing and file
// operation relies on these rules in exactly this form:
// - a stick is a maximal run of consecutive non-separator points;
// - a separator (x == -9999.0) stands between two sticks and belongs to none.
// Each function takes the list as (points, count) and an index into it; an index outside
// 0..count-1 answers false.
namespace core::sticks {

inline bool isInside(int count, int index) { return index >= 0 && index < count; }

// True when the point at `index` exists and is a separator.
inline bool isSeparator(const PointWithBool* points, int count, int index)
{
    return points && isInside(count, index) && points[index].isSeparator();
}

// A non-separator point that is first or last in the list, or is next to a separator.
inline bool isPickedPointStickBoundaries(const PointWithBool* points, int count, int index)
{
    if (!points || !isInside(count, index) || points[index].isSeparator()) return false;
    return index == 0 || index == count - 1 || points[index + 1].isSeparator() ||
           points[index - 1].isSeparator();
}

// A non-separator point that ends its stick: the list holds only it, it is the last
// point, or the next point is a separator.
inline bool isPickedPointStopStick(const PointWithBool* points, int count, int index)
{
    if (!points || !isInside(count, index) || points[index].isSeparator()) return false;
    return count == 1 || index == count - 1 || points[index + 1].isSeparator();
}

// A non-separator point whose neighbours are separators or absent: a stick of one point.
inline bool isPointIsolated(const PointWithBool* points, int count, int index)
{
    if (!points || !isInside(count, index) || points[index].isSeparator()) return false;
    const bool leftOpen = index == 0 || points[index - 1].isSeparator();
    const bool rightOpen = index == count - 1 || points[index + 1].isSeparator();
    return leftOpen && rightOpen;
}

// True when the list is non-empty and ends with a separator: the current stick is
// closed and the next pick starts a new one.
inline bool isLastPickedPointNo_Value(const PointWithBool* points, int count)
{
    return points && count > 0 && points[count - 1].isSeparator();
}

// First and last index of one stick; {-1, -1} means no stick.
struct StickRange {
    int first = -1;
    int last = -1;
    bool isValid() const { return first >= 0; }
    int size() const { return isValid() ? last - first + 1 : 0; }
};

// The stick that holds the point at `index`; no stick for a separator or a bad index.
inline StickRange stickAt(const PointWithBool* points, int count, int index)
{
    if (!points || !isInside(count, index) || points[index].isSeparator()) return {};
    StickRange r{index, index};
    while (r.first > 0 && !points[r.first - 1].isSeparator()) --r.first;
    while (r.last + 1 < count && !points[r.last + 1].isSeparator()) ++r.last;
    return r;
}

// The first stick that starts at or after `from`; no stick when none is left. Walking
// the list: for (r = nextStick(p, n, 0); r.isValid(); r = nextStick(p, n, r.last + 1)).
inline StickRange nextStick(const PointWithBool* points, int count, int from)
{
    if (!points) return {};
    int i = from < 0 ? 0 : from;
    while (i < count && points[i].isSeparator()) ++i;
    return i < count ? stickAt(points, count, i) : StickRange{};
}

// Number of sticks in the list.
inline int countSticks(const PointWithBool* points, int count)
{
    int n = 0;
    for (StickRange r = nextStick(points, count, 0); r.isValid();
         r = nextStick(points, count, r.last + 1))
        ++n;
    return n;
}

} // namespace core::sticks
