/// Alpha of packed four-channel pixels: asking for it and setting it.
#pragma once

#include <OpenImageIO/imageio.h>

#include <cstddef>

namespace Kavra::Devices {

/// Scans the alpha of `pixelCount` pixels of four `T` each; alpha is element `alphaChannel`, 0 to 3, of each pixel.
/// `data` need not be aligned. Transparent is an alpha equal to zero, translucent one that is not and lies below
/// `opaque` (negative ones included); NaN is neither. On all cores, and only until both have been found.
///
/// `T` is unsigned char, unsigned short, half or float.
template <class T>
void GetAlphaPropertyforRGBA(unsigned char* data, std::size_t pixelCount, int alphaChannel, T opaque,
                             bool& hasTransparentPixels, bool& hasTranslucentPixels);

/// Sets the alpha of the same pixels to `opaque`, on all cores.
template <class T>
void FillAlphaforRGBA(unsigned char* data, std::size_t pixelCount, int alphaChannel, T opaque);

/// Whether some alpha of `size` bytes of pixels of `spec` is zero, and whether some lies between zero and opaque. Both
/// false for anything but four channels of one of those types, one of them alpha.
void GetAlphaProperty(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec, bool& hasTransparentPixels,
                      bool& hasTranslucentPixels);

/// Sets every alpha of the same pixels to opaque.
void SetToOpaque(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec);

}  // namespace Kavra::Devices
