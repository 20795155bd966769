/// The rows of PCX pictures as the format's description has them: the planes of a row stand one after another, in lines
/// of the header's length, and runs know nothing of either (ZSoft, Technical Reference Manual for PCX, revision 5).
#pragma once

#include "common/ByteSource.h"
#include "readers/pcx/PcxCommonColours.h"
#include "readers/pcx/PcxHeader.h"
#include "readers/pcx/PcxRuns.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Kavra::Devices {

/// The bytes of one row after another.
class PcxRowBytes {
public:
    /// Rows from the end of the header up to `end` of the source.
    PcxRowBytes(Common::ByteSource& source, const PcxHeader& header, std::uint64_t end);
    PcxRowBytes(const PcxRowBytes&) = delete;
    PcxRowBytes& operator=(const PcxRowBytes&) = delete;

    /// All lines of the next row; bytes that are not there are 0. Valid until the next call.
    std::span<const unsigned char> Next();

    /// Whether the data ended in a row so far.
    bool IsOutOfData() const { return mIsOutOfData; }

    /// Where in the source that stands which follows the rows so far.
    std::uint64_t Position() const;

private:
    std::span<const unsigned char> Missing(std::size_t count);

    Common::ByteSource mData;
    std::optional<PcxRuns> mRuns;     // nothing for raw rows
    std::vector<unsigned char> mRow;  // of raw rows, and of those that end early
    bool mIsOutOfData = false;
};

/// The pixels of one row after another: red, green, blue and alpha.
///
/// An index has the sample of the first plane in its lowest bits; a pixel of three or four planes of colours is red,
/// green, blue and alpha, which is 255 where no pixel of the picture has any. Samples that their line does not hold are
/// 0.
class PcxCommonRows {
public:
    PcxCommonRows(Common::ByteSource& source, const PcxHeader& header, const PcxCommonColours& colours);

    void Next(std::span<unsigned char> pixels);

    bool IsOutOfData() const { return mBytes.IsOutOfData(); }

private:
    void Index(std::span<unsigned char> pixels);
    void Colour(std::span<unsigned char> pixels);
    void Unpack(std::span<const unsigned char> line, unsigned shift, std::span<unsigned char> samples) const;
    std::span<const unsigned char> Line(std::size_t plane) const;
    std::span<const unsigned char> Component(std::size_t plane);

    PcxRowBytes mBytes;
    PcxHeader mHeader;
    Table256<std::uint32_t> mPixels;
    std::size_t mWidth;
    std::size_t mLineBytes;               // that a row needs of a line, or all that a line has
    std::span<const unsigned char> mRow;  // as the file has it
    std::vector<unsigned char> mSamples;  // unpacked, up to whole bytes: indices, or a plane behind the other
    std::size_t mSamplesOfPlane;
    bool mHasAlpha = false;
};

}  // namespace Kavra::Devices
