/// Bitmaps of a PICT picture in the common reading: how they are stored, and where and how they are drawn.
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"
#include "readers/pict/PictBitmap.h"
#include "readers/pict/PictModes.h"
#include "readers/pict/PictRegion.h"

#include <cstdint>
#include <optional>

namespace Kavra::Devices {

/// Columns or rows of the page over those of a bitmap: the nearest ones.
struct PictAxis {
    int page = 0, pageLength = 1;      ///< the first that is drawn on, and how many
    int bitmap = 0, bitmapLength = 1;  ///< the first that is drawn, and how many

    bool IsScaled() const { return pageLength != bitmapLength; }
    /// What of the bitmap a place of the page shows.
    int At(int place) const {
        const std::int64_t middle = 2 * std::int64_t{place - page} + 1;
        return bitmap + static_cast<int>(middle * bitmapLength / (2 * std::int64_t{pageLength}));
    }
};

/// What the opcodes before a bitmap have set.
struct PictState {
    PictRect frame;
    PictRegion clip;
    PictColours colours;
    PictColour highlight = kPictBlack;
};

/// A picture that lies in the file in another format.
struct PictCompressed {
    std::uint64_t offset = 0, bytes = 0;
    const char* format = nullptr;  ///< as the image library calls it; null: it is none such
};

/// A bitmap with all that it is drawn by. `bitmap.covered` is what it may draw on: its destination inside the frame, the
/// boxes of both regions, and where there is something of it. `bitmap.rows` is the offset of its first row.
struct PictCommonRecord {
    PictRecord bitmap;
    int storedRows = 0;  ///< from the top; fewer than the bounds have where the file ends before
    PictRegion clip, mask;
    PictInks inks{};
    PictCompressed compressed{};  ///< instead of rows: its pixels are to be decoded first

    bool IsCompressed() const { return compressed.format != nullptr; }
    PictAxis Columns() const;
    PictAxis Rows() const;
    bool IsComplete() const { return storedRows >= bitmap.bounds.Height(); }
    /// What drawing it takes, in pixels: those that are drawn, those of the rows that are unpacked for them, and the
    /// steps of the regions.
    std::uint64_t Work() const;
};

/// What the opcode says of the bitmap behind it.
struct PictBitmapOpcode {
    bool isDirect, hasMask, isPacked;
};

/// What an opcode says of the bitmap behind it; nothing where there is none.
std::optional<PictBitmapOpcode> PictBitmapOpcodeOf(std::uint16_t opcode);

/// Reads a bitmap after its opcode. Fails where it ends before its rows, or is of a depth that there is not; rows that
/// are damaged are no failure, since each has its length.
[[nodiscard]] Common::Result<PictCommonRecord> ReadPictCommonRecord(Common::ByteSource& source, PictBitmapOpcode opcode,
                                                                    const PictState& state);

/// Settles what a record covers once its place is known.
void PlacePictRecord(PictCommonRecord& record, const PictState& state);

}  // namespace Kavra::Devices
