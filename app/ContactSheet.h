/// Many small pictures on a large one.
#pragma once

#include "ImageObject.h"
#include "LoadOptions.h"

namespace Kavra::App {

/// Where things are on a contact sheet: cells of one size, row after row, each with a margin of a twentieth of its
/// shorter side around what it shows.
class SheetLayout {
public:
    /// `columns` 0: as many columns as rows, or one more. There are no more columns than cells.
    SheetLayout(std::size_t cells, vec2<int> cell, int columns);

    /// The whole sheet, in pixels.
    long long Width() const { return static_cast<long long>(mColumns) * mCell.x; }
    long long Height() const { return static_cast<long long>(mRows) * mCell.y; }

    /// The room inside the margins of a cell.
    vec2<int> Room() const { return {mCell.x - 2 * mMargin, mCell.y - 2 * mMargin}; }

    /// The top left corner of something centred in a cell.
    vec2<int> Place(std::size_t cell, vec2<int> size) const;

private:
    vec2<int> mCell;
    int mMargin;
    long long mColumns;
    long long mRows;
};

/// An empty sheet, dark grey; `kR8G8B8A8`.
LoadedImage NewSheet(const SheetLayout& layout);

/// Puts a picture (`kR8G8B8A8`) over squares of two greys, which show where it is transparent.
void PutOnSquares(LoadedImage& image);

/// What stands for a picture that cannot be shown: a red box with a cross in it.
LoadedImage CrossedBox(vec2<int> size);

}  // namespace Kavra::App
