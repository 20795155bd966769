/// Drawing a PICT picture in the common reading, a row at a time.
#pragma once

#include "common/ByteSource.h"
#include "readers/pict/PictCommonStream.h"
#include "readers/pict/PictModes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// Draws the rows of a picture from the top. No pixel depends on its neighbours, so drawing all records into one row
/// after another gives what drawing one record after another into a whole page would, in the memory of a few rows.
class PictCommonCanvas {
public:
    /// The picture and the bytes of its file must outlive the canvas.
    PictCommonCanvas(const PictCommonPicture& picture, std::span<const unsigned char> file);

    /// Draws the next row: four bytes a pixel of the frame, opaque white where nothing is drawn.
    void DrawRow(std::span<unsigned char> out);

private:
    /// A record that covers a part of the row.
    struct Drawing {
        const PictCommonRecord* record;
        std::vector<unsigned char> decoded;  // of a compressed picture: its rows
        Common::ByteSource rows;             // behind the row that is at hand
        PictRegionScan clip, mask;
        std::array<PictPixel, 256> palette{};  // of indices
        bool hasAlpha = false;
        int nextRow = 0;  // of the bitmap, from its top: the one behind that at hand
        std::optional<std::span<const unsigned char>> stored;  // the row at hand; nothing where it is not there
    };

    void StartRecords();
    Drawing Start(const PictCommonRecord& record) const;
    bool HasAlpha(const PictCommonRecord& record) const;
    /// Nothing where the row is not there.
    std::span<const unsigned char> RowAt(Drawing& drawing, int row);
    void Draw(Drawing& drawing, std::span<unsigned char> out);
    void DrawRun(const Drawing& drawing, std::span<const unsigned char> row, int left, int right,
                 std::span<unsigned char> out);

    const PictCommonPicture& mPicture;
    std::span<const unsigned char> mFile;
    int mY;                                         // of the next row, in the coordinates of the frame
    std::vector<const PictCommonRecord*> mWaiting;  // for their first row; the last of them begins first
    std::vector<Drawing> mDrawings;                 // in the order of the picture
    PictRowBuffer mBuffer;
    std::vector<unsigned char> mWhole;  // a row that is scaled, as pixels
};

}  // namespace Kavra::Devices
