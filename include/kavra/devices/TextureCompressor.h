/// \file
/// Pictures as blocks of BC1 to BC7, and back.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>

#include <cstddef>
#include <cstdint>

namespace Kavra::Devices {

/// How much work goes into a block.
enum ECompressionEffort : std::int32_t {
    kCompressionFast = 0,
    kCompressionGood = 1,
    kCompressionBest = 2,
};

/// What compression aims at. As it stands: each channel counts alike, alpha as well.
struct CompressionOptions {
    std::uint32_t size = sizeof(CompressionOptions);  ///< of the structure as its user knows it, in bytes
    ECompressionEffort effort = kCompressionGood;     ///< one that is none counts as `kCompressionGood`
    /// What an error in red, green, blue and alpha counts. Those that are not above 0 count as 1; only their ratio matters.
    float weights[4] = {1, 1, 1, 1};
    /// Whether the alpha of the source is looked at. Where not, and where the source has none, the picture is opaque.
    bool withAlpha = true;
    /// Of BC1: pixels with less alpha, 0 to 1, are transparent black, all others opaque.
    float cutoff = 0.5F;
};

/// Bytes that the blocks of one level of a picture take: 8 or 16 for each 4 x 4 pixels that were begun. 0 for formats that
/// are not block-compressed, reserved ones among them, and sizes below 1. Threads: any.
KAVRA_DEVICES_API std::uint64_t BlockBytes(EFormat format, int width, int height);

/// Compresses a picture in memory: `from` holds `height` rows of `width` pixels of a format that is not block-compressed,
/// `pitch` bytes from row to row; `blocks` takes `BlockBytes(to, width, height)`, row by row of blocks from the top left.
/// Pixels beyond an edge that is no multiple of four are the last row or column again.
///
/// - Colours of integers, and floats limited to 0 to 1, fill BC1 to BC3 and BC7 with 0 to 255. BC1 has transparent pixels
///   where alpha counts. Values are taken as they are: a curve, as that of sRGB, stays.
/// - BC4 takes the first channel (alpha of `kA8`), BC5 the first two; of signed ones integers of 0 to 1 fill -1 to 1, while
///   floats are limited to that.
/// - BC6H takes light: floats, of the unsigned format limited to 0 and more, infinities and NaN to 65,504 and 0; integers
///   as 0 to 1.
/// - Sources of one channel are grey, of two channels grey and alpha where the format's second one is that (see
///   `GetFormatFacts`).
///
/// The same input gives the same bytes, whatever the number of threads or the width of vectors. All cores are used. False,
/// and nothing written, where a format is not as said, a size is below 1 or a pitch is less than a row. Throws
/// `std::bad_alloc`. Threads: any.
///
///     std::vector<unsigned char> blocks(BlockBytes(kBC7Srgb, 1024, 1024));
///     CompressPicture(kR8G8B8A8, photo, 4 * 1024, 1024, 1024, kBC7Srgb, blocks.data());
KAVRA_DEVICES_API bool CompressPicture(EFormat from, const void* pixels, std::size_t pitch, int width, int height,
                                       EFormat to, void* blocks, const CompressionOptions& options = {});

/// The pixel format that holds what blocks of `format` decode to: `kR8G8B8A8` (of BC5 blue is 0), of BC4 `kL8`, of signed
/// BC4 and BC5 `kR16F` and `kR16G16F`, which hold -1 to 1, of BC6H `kR16G16B16A16F`. `kUnknown` for formats that are not
/// block-compressed. Threads: any.
KAVRA_DEVICES_API EFormat DecodedFormat(EFormat format);

/// Decodes the blocks of a picture into rows of `DecodedFormat(from)`, `pitch` bytes from row to row, block by block as
/// Microsoft, "Direct3D 11.3 Functional Specification", section 19.5 has them; reserved blocks of BC6H and BC7 are black.
/// All cores are used. False, and nothing written, where an argument is none of these. Threads: any.
KAVRA_DEVICES_API bool DecompressPicture(EFormat from, const void* blocks, int width, int height, void* pixels,
                                         std::size_t pitch);

}  // namespace Kavra::Devices
