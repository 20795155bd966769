/// A DDS file in the common reading: its shape, and its faces and slices row by row.
#pragma once

#include "common/ByteSource.h"
#include "common/RowSink.h"
#include "readers/dds/DdsCommonLayout.h"

#include <kavra/devices/Export.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Kavra::Devices {

/// An open file with a header that is known. Pixels that the file ends before are left alone. One thread at a time.
class DdsCommonPicture {
public:
    /// Nothing when the file is no DDS, or one of a kind that nobody knows.
    static std::optional<DdsCommonPicture> Open(Common::ByteSource file);

    const Dds::Header& Header() const { return mHeader; }
    const Dds::CommonLayout& Layout() const { return mLayout; }
    const Dds::Shape& Shape() const { return mShape; }
    EFormat Format() const { return mLayout.pixels.format; }
    bool HasAlpha() const { return mLayout.pixels.hasAlpha; }
    Dds::Extent LevelSize(int level) const { return Dds::LevelSize(mShape.size, level); }
    /// Faces of a cube, those that are not there included, or slices of a level.
    int SliceCount(int level) const { return mShape.FaceCount() * LevelSize(level).depth; }
    bool HasSlice(int slice) const { return mShape.type != kTextureCube || mShape.HasFace(slice); }

    /// Whether rows lie further apart than they are long: in a file of one level whose length the header's pitch
    /// accounts for, and nothing else does.
    bool HasGaps() const { return mGapBytes > 0; }

    /// Whether the file holds all of a level, or at least the first row of a face or slice of it.
    bool IsWhole(int level) const;
    bool HasRows(int level, int slice = 0) const;

    /// The rows that the file holds of a level, all faces and slices of it one after the other, as if there were no gaps.
    Dds::RowCount CountRows(int level) const;
    std::uint64_t FileBytes() const { return mFile.Size(); }

    /// Bytes that reading takes beside the picture, for rows of this width.
    std::uint64_t WorkingBytes(int width) const;

    /// Reads a face or slice into `out`: all rows of it, packed. Throws `std::bad_alloc`.
    void ReadSlice(int level, int slice, unsigned char* out);
    /// The same into a sink.
    void ReadSlice(int level, int slice, Common::RowSink& sink);

private:
    struct Band;

    DdsCommonPicture(Common::ByteSource file, const Dds::Header& header, const Dds::CommonLayout& layout,
                     const Dds::Shape& shape, std::uint64_t pixelsBegin);
    bool ReadPalette();
    void FindGaps();
    std::uint64_t SliceOffset(int level, int slice) const;
    bool IsStoredAsDelivered() const;
    void CopySlice(int level, int slice, unsigned char* out);
    std::size_t RowsOfBand(int width) const;
    std::size_t PixelRowBytes(int width) const;
    void DecodeRow(std::span<const unsigned char> stored, int width, int rows, unsigned char* out) const;
    void Decode(const Band& band, unsigned char* out) const;
    template <class Take>
    void ReadBands(int level, int slice, const Take& take);

    Common::ByteSource mFile;
    Dds::Header mHeader;
    Dds::CommonLayout mLayout;
    Dds::Shape mShape;
    std::uint64_t mPixelsBegin;
    std::size_t mGapBytes = 0;  // behind each row of pixels
    std::array<unsigned char, Dds::kPaletteBytes> mPalette{};
};

}  // namespace Kavra::Devices
