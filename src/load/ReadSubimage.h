/// The pixels of a file that the library has opened.
///
/// `ImageInput::read_image` rounds the rows that it reads at a time up to the number that the attribute
/// "tiff:RowsPerStrip" names, in 32 bits: a TIFF with 2^31 - 1 of them keeps it busy for ever, and so does any other
/// file that carries an attribute of this name. Its sums overflow too, and what was not read then counts as read. So
/// the rows are asked for here, as they are stored, and converted here.
#pragma once

#include "common/Progress.h"

#include <OpenImageIO/imageio.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Kavra::Devices {

/// Whether the sizes and positions of a subimage are such that the library's sums over them hold, and its tiles such
/// that one of them is no giant beside the picture. Files that answer no are not to be read.
bool IsReadable(const OIIO::ImageSpec& spec);

/// The rows of one subimage and level, as values of one type: as many at a time as are wanted, from the top down.
class SubimageRows {
public:
    /// Reads `channels` channels from `first` on (those that the file has) as values of `type`, pixels `pixelStride`
    /// bytes apart. `spec` is the subimage's own or that of some of its rows or one of its slices, and `IsReadable`; it
    /// and the input live longer.
    SubimageRows(OIIO::ImageInput& input, const OIIO::ImageSpec& spec, int subimage, int level, int channels,
                 OIIO::TypeDesc type, std::size_t pixelStride, int first = 0);

    /// Makes `Read` and `ReadAll` set the fourth element of each pixel to these bits as well, where pixels are read as
    /// three elements of the file's own type, each followed by one to spare. False, and nothing has changed, for others.
    bool AddOpaque(std::uint32_t opaque);

    /// How many of the file's rows are decoded together.
    int DecodedTogether() const { return mTogether; }

    /// What the library said of the rows that it could not read last.
    const std::string& Errors() const { return mErrors; }

    /// Whether the file's rows are decoded one by one. Else a read begins where a band does and ends where one ends.
    bool AreDecodedAlone() const { return mTogether == 1; }

    /// The rows from `top` on that are best read at a time where the picture is not to be held whole: at least 1, and
    /// all rows that the library decodes together (of a tile, a strip, a block) of each that it has.
    int BandFrom(int top) const;

    /// Reads rows `top` to `top` + `count` - 1 of a flat picture into `out`, packed. Bytes between the channels of one
    /// pixel and the next stay as they are. False when the library cannot read them all. Throws `std::bad_alloc`.
    bool Read(int top, int count, unsigned char* out);

    /// Reads all rows, slice after slice.
    bool ReadAll(unsigned char* out);

private:
    std::size_t StoredPixelBytes() const { return mSpec.pixel_bytes(mFirst, mFirst + mChannels, true); }
    std::size_t StoredRowBytes() const { return StoredPixelBytes() * static_cast<std::size_t>(mSpec.width); }
    std::size_t RowStride() const { return mPixelStride * static_cast<std::size_t>(mSpec.width); }
    bool IsAsStored() const;
    bool Convert(const unsigned char* rows, int count, unsigned char* out) const;
    bool ReadTiles(int top, int count, unsigned char* out, Common::ProgressMeter& meter);
    bool ReadScanlines(int slice, int top, int count, unsigned char* out, Common::ProgressMeter& meter);
    int WatchedRows(int rest, Common::PartSize& parts) const;
    void ReserveStored(int rows);

    OIIO::ImageInput& mInput;
    const OIIO::ImageSpec& mSpec;
    int mSubimage, mLevel, mFirst, mChannels;
    OIIO::TypeDesc mType;
    std::size_t mPixelStride;
    int mTogether;                             // rows that are decoded together
    std::unique_ptr<unsigned char[]> mStored;  // rows as the file has them
    int mStoredRows = 0;                       // how many of them it holds
    std::optional<std::uint32_t> mOpaque;      // what every fourth element becomes
    std::string mErrors;
};

/// Reads every pixel of a subimage and level: `SubimageRows::ReadAll`.
bool ReadSubimage(OIIO::ImageInput& input, const OIIO::ImageSpec& spec, int subimage, int level, int channels,
                  OIIO::TypeDesc type, unsigned char* out, std::size_t pixelStride);

}  // namespace Kavra::Devices
