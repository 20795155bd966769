/// \file
/// The description of a pixel block.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>

#include <cstdint>

namespace Kavra::Devices {

/// What a block of pixels holds. Filled by the loaders, read by the savers and analysers. The order of the fields is
/// part of the contract.
///
/// Rows lie `rowPitch` bytes apart, slices or faces one after another. Pixel (x, y) of slice or face z begins at byte
///
///     (z * height + y) * rowPitch + x * AFormatConvertor::BytesPerPixel(format)
///
/// of the block; take the products in 64 bits. A block-compressed block has no rows: its `rowPitch` is 0, its
/// `dataSize` the true bytes, and block (i, j) begins at byte (j * ((width + 3) / 4) + i) *
/// `AFormatConvertor::BytesPerBlock(format)`.
///
/// Blocks that come out of a load are packed: `rowPitch` is bytes per pixel x width. Blocks that go in may have a
/// longer pitch; what lies between the end of a row and the next one is never read.
struct KAVRA_DEVICES_API ImageDescription {
    /// All fields zero: no format, no type, orientation `kTopLeft`, gamma 0.
    ImageDescription();

    std::int32_t width;     ///< pixels per row
    std::int32_t height;    ///< rows, of one face for a cube map, of one slice for a volume
    std::int32_t depth;     ///< slices, 1 for flat images and cube maps; savers take values below 1 as 1
    EFormat format;         ///< layout of a pixel, or of a block of 4 x 4
    std::int32_t rowPitch;  ///< bytes from one row to the next
    /// Bytes of the block; of one face for a cube map, whose block holds six; of all slices for a volume. At least
    /// `rowPitch` x rows: a conversion from `kR32G32B32A32F` to `kR32G32B32F` leaves the last quarter of it unused.
    std::uint64_t dataSize;
    ETextureType textureType;  ///< flat, cube map or volume
    /// Some pixel has alpha 0. Looked for where `hasAlpha` is true, the block has four channels and the image library
    /// decoded the file; blocks that a reader of the host or a legacy reader decoded are not searched and say false.
    bool hasTransparentPixels;
    bool hasTranslucentPixels;  ///< some pixel has an alpha between 0 and opaque; looked for likewise
    /// The file has a meaningful alpha channel. It stays true when the block's format has no place for it.
    bool hasAlpha;
    bool defaultOrientation;       ///< `kTopLeft` was asked for, or nothing else could be delivered
    EDataOrientation orientation;  ///< row and column order of the block
    /// Decoding exponent: 1 / the gamma that the image library reports for the file; 2.2 where it reports none. Tells,
    /// and changes no pixel: loads do not apply it, savers do not write it.
    double gamma;
};

}  // namespace Kavra::Devices
