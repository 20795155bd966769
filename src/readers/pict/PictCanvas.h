/// Drawing a PICT picture, a row at a time.
#pragma once

#include "common/ByteSource.h"
#include "readers/pict/PictStream.h"
#include "readers/pict/PictTransfer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// The colour table of a record, or the ramp of 256 greys where it has none.
std::span<const PictColour> PictColourTable(const PictRecord& record);

/// Looks indices up.
class PictPalette {
public:
    explicit PictPalette(std::span<const PictColour> colours);

    /// Writes the high bytes of a colour's channels and alpha 255 for each index. Of an index that has no colour the
    /// four bytes of `out` stay as they are; then the answer is false.
    bool ToRgba(std::span<const unsigned char> indices, std::span<unsigned char> out) const;

private:
    std::array<std::array<unsigned char, 4>, 256> mPixels{};
    std::size_t mCount;
};

/// One row of the canvas, that moves down the picture. No pixel depends on its neighbours, so drawing all records into
/// one row after another gives what drawing one record after another into a whole canvas would, in the memory of a few
/// rows.
class PictCanvas {
public:
    /// The picture and the bytes of its file must outlive the canvas.
    PictCanvas(const PictPicture& picture, std::span<const unsigned char> file);

    /// Draws the next row, from the top: four bytes a pixel of the frame, white where nothing is drawn. An index that
    /// has no colour leaves the pixel under it alone: of an indexed picture the bytes in `out`.
    void DrawRow(std::span<unsigned char> out);

    /// Whether an index had no colour in the rows so far.
    bool LeavesPixelsOut() const { return mLeavesPixelsOut; }

private:
    /// A record that covers a part of the row, and the rows that it still has.
    struct Drawing {
        const PictRecord* record;
        Common::ByteSource rows;
    };

    void StartRecords();
    std::span<const unsigned char> NextRow(Drawing& drawing);
    void DrawColours(std::span<unsigned char> out);
    void DrawRecord(const PictRecord& record, std::span<const unsigned char> row);
    void DrawDirectRun(const PictRecord& record, std::span<const unsigned char> row, std::size_t first,
                       const PictRun& canvas);
    void DrawIndexedRun(const PictRecord& record, std::span<const unsigned char> row, std::size_t first,
                        const PictRun& canvas);
    void PutIndices(std::span<unsigned char> out);

    const PictPicture& mPicture;
    std::span<const unsigned char> mFile;
    int mY;                                   // of the next row, in the coordinates of the frame
    std::vector<const PictRecord*> mWaiting;  // for their first row; the last of them begins first
    std::vector<Drawing> mDrawings;           // in the order of the picture
    PictRowBuffer mBuffer;
    std::array<std::vector<std::uint16_t>, 3> mRow;  // red, green and blue, not of indexed pictures
    PictPalette mPalette;                            // of indexed pictures
    bool mLeavesPixelsOut = false;
};

}  // namespace Kavra::Devices
