/// Many small pictures on a large one.
#pragma once

#include "Canvas.h"
#include "LoadOptions.h"

namespace Kavra::App {

/// Where things are on a contact sheet: cells of one size, row after row, each with a margin of a twentieth of its
/// shorter side around what it shows, and room for a caption below it.
class SheetLayout {
public:
    /// `columns` 0: as many columns as rows, or one more. There are no more columns than cells.
    SheetLayout(std::size_t cells, vec2<int> cell, int columns, int captionHeight = 0);

    /// The whole sheet, in pixels.
    long long Width() const { return static_cast<long long>(mColumns) * mCell.x; }
    long long Height() const { return static_cast<long long>(mRows) * RowHeight(); }

    /// The room inside the margins of a cell.
    vec2<int> Room() const { return {mCell.x - 2 * mMargin, mCell.y - 2 * mMargin}; }

    int CaptionHeight() const { return mCaptionHeight; }

    /// Cells in so many rows.
    std::size_t CellsIn(int rows) const { return static_cast<std::size_t>(mColumns) * static_cast<std::size_t>(rows); }

    /// The top left corner of something centred in a cell, above its caption.
    vec2<int> Place(std::size_t cell, vec2<int> size) const;
    /// The top left corner of a caption, which is as wide as the room.
    vec2<int> CaptionPlace(std::size_t cell) const;

private:
    long long RowHeight() const { return static_cast<long long>(mCell.y) + mCaptionHeight; }
    vec2<int> Corner(std::size_t cell) const;

    vec2<int> mCell;
    int mMargin;
    int mCaptionHeight;
    long long mColumns;
    long long mRows;
};

/// Dark grey.
inline constexpr Display kSheetColour = {48 / 255.0F, 48 / 255.0F, 48 / 255.0F};

/// An empty sheet; `kR8G8B8A8`.
LoadedImage NewSheet(const SheetLayout& layout);

/// Puts a picture (`kR8G8B8A8`) over squares of two greys, which show where it is transparent.
void PutOnSquares(LoadedImage& image);

}  // namespace Kavra::App
