#pragma once
#include <vector>

#include <core/conventions.h>

namespace kfaults {

// An image of patch ids, as a fault unfolded on its own plane gives: `width` columns by
// `height` rows, row-major with row 0 on top; -9999 marks a pixel where no patch is.
struct IdImage {
    int width = 0;
    int height = 0;
    std::vector<int> ids;

    IdImage() = default;
    // A width x height image filled with `value`; sizes below 0 count as 0.
    IdImage(int width, int height, int value = core::kNoValue);

    // True when ids holds exactly width * height values.
    bool isConsistent() const;
    // The id at (column, row); -9999 outside the image or for an inconsistent image.
    int at(int column, int row) const;
    // Sets the id at (column, row); false, nothing changed, outside the image.
    bool set(int column, int row, int id);
};

} // namespace kfaults
