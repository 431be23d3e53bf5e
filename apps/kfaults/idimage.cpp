#include "idimage.h"

#include <algorithm>

namespace kfaults {

IdImage::IdImage(int w, int h, int value)
    : width(std::max(0, w)), height(std::max(0, h)), ids(size_t(width) * size_t(height), value)
{
}

bool IdImage::isConsistent() const
{
    return width >= 0 && height >= 0 && ids.size() == size_t(width) * size_t(height);
}

int IdImage::at(int column, int row) const
{
    if (!isConsistent() || column < 0 || row < 0 || column >= width || row >= height)
        return core::kNoValue;
    return ids[size_t(row) * size_t(width) + size_t(column)];
}

bool IdImage::set(int column, int row, int id)
{
    if (!isConsistent() || column < 0 || row < 0 || column >= width || row >= height) return false;
    ids[size_t(row) * size_t(width) + size_t(column)] = id;
    return true;
}

} // namespace kfaults
