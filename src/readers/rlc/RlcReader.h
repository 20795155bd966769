/// RLC run-length rasters: recognising and reading them.
///
/// A bilevel raster stored as runs of set pixels, row by row. Numbers are big-endian, 16 bits.
///
///     offset  bytes  field
///          0      2  rows, signed
///          2      2  columns, signed
///          4      2  runs of the first row, then 4 bytes a run: start and end, counted from the right end of the row
///          ...       the other rows likewise
///       -344    344  trailer, in some files
///
/// The trailer, whose own numbers are little-endian:
///
///     offset    bytes  field
///          0       16  signature
///         22        2  entries of the directory, signed; there is room for 20
///         26        2  2: the directory is valid
///     24 + 16i      2  kind of entry i: 2 an image in this file, 4 a reference to another file
///     32 + 16i      4  of a reference: offset in the file of a record of 200 bytes, with the name from its byte 56
#pragma once

#include "common/ByteSource.h"
#include "common/Result.h"
#include "readers/ImageReaderInterface.h"
#include "readers/Reading.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// The bytes of a trailer.
using RlcTrailer = std::array<unsigned char, 344>;

/// The last 344 bytes of a longer file, when they begin with the trailer's signature. The position of the source does
/// not matter and is not kept.
std::optional<RlcTrailer> ReadRlcTrailer(Common::ByteSource& source);

/// Whether the trailer's directory is valid.
bool HasDirectory(const RlcTrailer& trailer);

/// How many images the directory of a trailer lists: those of this file, and those of other RLC files that it refers to
/// and that exist. Such a file is looked for by the name as it is stored, from the process's own folder; what it refers
/// to in turn is not followed.
int CountImages(Common::ByteSource& source, const RlcTrailer& trailer);

struct RlcHeader {
    std::int16_t rows = 0;
    std::int16_t columns = 0;
    std::optional<RlcTrailer> directory;  ///< a trailer whose directory is valid
};

/// The sizes at the start and the directory at the end. Sizes that the file does not hold are 0. The position of the
/// source does not matter; it is left behind the sizes.
RlcHeader ReadRlcHeader(Common::ByteSource& source);

/// Whether the file reads as rows of runs: there is no magic number, so the rows themselves are checked - all of them,
/// or of a file with a directory the first quarter, at least 100. No file of 2 GiB or more is one. The position
/// of the source does not matter and is not kept.
bool IsRlc(Common::ByteSource& source);

/// The bits of one row. Runs of pixels are given by two positions counted from the right end of the row, as unsigned
/// 16-bit numbers whose arithmetic wraps: (2, 5) of eight pixels is `...###..`.
class RlcMask {
public:
    /// A row of so many pixels, 1 to 32767.
    explicit RlcMask(std::int16_t columns);

    void Clear();

    /// Sets the bits of a run, and leaves them alone and fails when it is refused: when it begins behind the
    /// last byte, or does not end in its first byte and leaves too few bytes behind it. That takes length / 8 + 1
    /// bytes more to lie inside the row, which refuses many a run that would fit; only the run over all columns is
    /// always taken.
    [[nodiscard]] Common::Result<> SetRun(std::uint16_t start, std::uint16_t end);

    /// Sets the bits of a run that lies in the row, and of no other.
    void SetWholeRun(std::uint16_t start, std::uint16_t end);

    /// The leftmost pixel in the highest bit. Bits behind the last column may be set.
    std::span<const unsigned char> Bytes() const { return mBytes; }

private:
    std::uint16_t mColumns;
    std::vector<unsigned char> mBytes;
};

/// Shows set pixels in opaque white on opaque black. A row with a run that is refused (`RlcMask`) raises one warning
/// and shows only the runs that the file has behind that one. Where the file ends the rest is black. Nothing makes
/// `ReadFrame` fail but that no file is open.
///
/// No description of the format is known, nor another program that reads it: the common reading differs in that alone,
/// that it shows every run that lies in its row.
class RlcReader final : public ImageReaderInterface {
public:
    explicit RlcReader(ELegacyReading reading = kLegacyContract) : mReading(reading) {}

    void Close() override;
    /// Neither the sizes nor the rows are checked.
    Common::Result<> OpenFiles(PictureFiles files) override;
    /// Reads the first image, whatever `frame`. Writes nothing where a size is not above 0.
    Common::Result<> ReadFrame(Common::RowSink& rows, int frame) override;

    int GetWidth() override { return mHeader.columns; }
    int GetHeight() override { return mHeader.rows; }
    int GetRowPitch() override { return 4 * mHeader.columns; }
    /// 1, or what the directory in the trailer lists, which may be none. Opening another file with a directory adds to
    /// the count of the one before.
    int GetFrameCount() override { return mFrameCount; }

    void LookForDifferences() override { mIsCompared = true; }
    const char* GetDifference() override { return mReading.Difference(); }

private:
    Reading mReading;
    bool mIsCompared = false;                   // with the common reading, row by row
    std::optional<Common::ByteSource> mSource;  // nothing unless a file is open
    RlcHeader mHeader;
    int mFrameCount = 0;  // which closing leaves alone
};

}  // namespace Kavra::Devices
