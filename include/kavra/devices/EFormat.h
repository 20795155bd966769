/// \file
/// Pixel formats.
#pragma once

namespace Kavra::Devices {

/// Pixel formats of the host. The numbers are part of the contract.
///
/// Names give the channels in memory order, first byte first, each with its bits; multi-byte elements are
/// little-endian. A channel without F is an unsigned integer that stands for 0 to 1 (8 bits: value / 255, 16 bits:
/// value / 65535). With F it is IEEE floating point (16 bits: half), any value, unclamped.
/// `AFormatConvertor::BytesPerPixel` tells the bytes of a pixel.
///
/// - **L** is grey, **R** a first channel of any meaning; loads and conversions treat `kR8` as `kL8` and `kR16` as
///   `kL16`.
/// - **A** is alpha, straight or premultiplied as the file has it; nothing here multiplies or divides by it.
/// - **X** is a byte that means nothing. Conversions never start from an X format; from grey they write 255, from a
///   format with alpha they keep the alpha's byte. Average colours take it as opaque. DDS files are written without
///   alpha for it; all other files get the byte as their alpha, so set it to 255 before saving.
/// - **BC** are 4 x 4 block-compressed formats
///   (https://learn.microsoft.com/windows/win32/direct3d11/texture-block-compression-in-direct3d-11). A picture of
///   width x height pixels has (width + 3) / 4 x (height + 3) / 4 blocks of `AFormatConvertor::BytesPerBlock` bytes,
///   row by row, whole blocks at the edges too. They have no bytes per pixel and no row pitch. Only DDS files hold
///   them.
/// - **Srgb** says that the colours in the blocks are encoded with the sRGB curve. It changes no byte: nothing here
///   converts between curves, and uncompressed sRGB formats of DDS files are delivered as the plain ones.
/// - **Reserved** numbers are the host's and have no meaning here. No file is reported to have them and nothing can be
///   loaded, converted or saved as them.
///
/// Any other int is a value too: functions that take a format treat what they do not know as unknown. "Not saved by the
/// image library" below means that `SaveTexture` writes it to DDS files only.
enum EFormat : int {
    kUnknown = 0,  ///< no format. As a request: the file's own. As an answer: it could not be described

    kBC1 = 6,          ///< 8 bytes a block: RGB, 1-bit alpha (DXT1)
    kBC1Srgb = 7,      ///< the same, sRGB
    kBC2 = 8,          ///< 16 bytes a block: RGB, 4-bit alpha (DXT3)
    kBC2Srgb = 9,      ///< the same, sRGB
    kBC3 = 10,         ///< 16 bytes a block: RGB, interpolated alpha (DXT5)
    kBC3Srgb = 11,     ///< the same, sRGB
    kBC4 = 12,         ///< 8 bytes a block: one channel, 0 to 1
    kBC4Snorm = 13,    ///< 8 bytes a block: one channel, -1 to 1
    kBC5 = 14,         ///< 16 bytes a block: two channels, 0 to 1
    kBC5Snorm = 15,    ///< 16 bytes a block: two channels, -1 to 1
    kReserved16 = 16,  ///< saving it outside DDS raises the warning of the block-compressed formats above
    kReserved17 = 17,  ///< the same

    /// 1 byte: alpha. Never treated as grey: nothing is converted from it, and only floats to it. A load as `kA8` takes
    /// the file's first channel, whatever that is.
    kA8 = 20,
    kR8 = 21,        ///< 1 byte: one channel. Converted exactly like `kL8`
    kL8 = 25,        ///< 1 byte: grey. What 8-bit files with one channel load as
    kR16F = 26,      ///< 2 bytes: one half
    kR16 = 27,       ///< 2 bytes: one channel. What 16-bit grey DDS files load as
    kL16 = 31,       ///< 2 bytes: grey. What 16-bit files with one or two channels load as
    kR32F = 38,      ///< 4 bytes: one float
    kR16G16F = 41,   ///< 4 bytes: two halves
    kR16G16 = 42,    ///< 4 bytes: two 16-bit channels
    kR8G8B8A8 = 46,  ///< 4 bytes: the canonical 8-bit colour format; what 8-bit colour files load as
    /// 4 bytes, the same as those of `kR8G8B8A8`. Image analysis takes it; not saved by the image library.
    kR8G8B8A8Alt = 48,
    kReserved50 = 50,     ///< a host's own DDS reader may report it: the colours are then described as `kB8G8R8A8`
    kReserved51 = 51,     ///< the same
    kB8G8R8A8 = 52,       ///< 4 bytes, blue first
    kB8G8R8X8 = 53,       ///< 4 bytes, blue first, the fourth meaningless
    kR8G8B8X8 = 54,       ///< 4 bytes, red first, the fourth meaningless
    kR32G32F = 55,        ///< 8 bytes: two floats
    kR16G16B16A16F = 58,  ///< 8 bytes: four halves
    kR16G16B16A16 = 59,   ///< 8 bytes: four 16-bit channels
    kR32G32B32F = 63,     ///< 12 bytes: three floats. Not saved by the image library
    kR32G32B32A32F = 66,  ///< 16 bytes: four floats. Converts to every format that has bytes per pixel

    kBC6H = 73,        ///< 16 bytes a block: RGB halves of 0 and more
    kBC6HSigned = 74,  ///< 16 bytes a block: RGB halves
    kBC7 = 75,         ///< 16 bytes a block: RGB with or without alpha
    kBC7Srgb = 76,     ///< the same, sRGB
    kReserved77 = 77,  ///< reserved
    kReserved78 = 78,  ///< reserved
};

}  // namespace Kavra::Devices
