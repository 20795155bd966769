/// \file
/// Whole-buffer pixel converters.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/Vec.h>

#include <cstddef>

namespace Kavra::Utilities {

using Devices::ImageDescription;

/// Converts packed pixels into a new packed block, and takes the mean of a picture.
///
///     ImageHandlerHelper helper;
///     unsigned int* swapped = helper.BGRAToRGBA(pixels, 4 * width * height);   // the size is in BYTES
///     ...
///     Objects::KavraDelete(swapped);
///
/// Each converter takes source pixels and their size in BYTES, whatever the type of the pointer, and returns a new
/// block from `ObjModel::mDefaultAllocator`, which the caller frees with `KavraDelete`. The source stays the caller's
/// and is not changed. Trailing bytes that are no whole element are ignored. A null source gives a zeroed block of the
/// proper size. Throws `std::bad_alloc`.
///
/// Threads: the object has no state, so any thread may use it. Large blocks are worked on by all cores; the call
/// returns when the block is whole.
class KAVRA_DEVICES_API ImageHandlerHelper {
public:
    /// Makes a helper; there is nothing to it.
    ImageHandlerHelper();

    /// Swaps bytes 0 and 2 of every 4-byte pixel. The result has as many bytes as the source.
    unsigned int* BGRAToRGBA(unsigned char* source, std::size_t bytes);

    /// 8-bit v to 4 bytes (v, v, v, 255). The result has 4 x `bytes`.
    unsigned int* GrayToRGB(unsigned char* source, std::size_t bytes);
    /// 8-bit v to the 16-bit v x 257, so that 255 becomes 65535. The result has 2 x `bytes`.
    unsigned short* GrayToR16(unsigned char* source, std::size_t bytes);
    /// 8-bit v to the 16-bit pair (v x 257, v x 257). The result has 4 x `bytes`.
    unsigned short* GrayToR16G16(unsigned char* source, std::size_t bytes);

    /// 16-bit v, rounded to 8 bits (v / 257, half up), to 4 bytes (v8, v8, v8, 255). The result has 2 x `bytes`.
    unsigned int* Gray16ToRGB(unsigned short* source, std::size_t bytes);
    /// 16-bit v to the pair (v, v). The result has 2 x `bytes`.
    unsigned int* R16ToR16G16(unsigned short* source, std::size_t bytes);

    /// v to (v, v, v, `alpha`) when `withAlpha`, else to (v, v, v): the result has 4 or 3 x `bytes`. `T` is
    /// `unsigned short`, `half` (of Imath) or `float`.
    template <class T>
    T* ExpandGrayToRGBA(T* source, std::size_t bytes, T alpha, bool withAlpha);

    /// Every element times `factor` in single precision. To half: rounded to nearest even. To 8 bits:
    /// floor(v x factor + 0.5), clamped to 0..255. The result has sizeof(Out) / sizeof(In) x `bytes`.
    ///
    /// Pairs (In, Out): (unsigned char, float), (unsigned short, float), (unsigned short, half), (unsigned char, half),
    /// (unsigned short, unsigned char), (half, float).
    template <class In, class Out>
    Out* TypeInToTypeOut(In* source, std::size_t bytes, float factor);

    /// Returns the mean of each channel over the picture that `desc` describes, all pixels counting alike: red, green,
    /// blue and alpha whatever their order in memory. Integers are divided by their maximum, so they give 0 to 1;
    /// floats give any value, NaN included. Colours that the format lacks are 0, a missing alpha (X formats too) is 1;
    /// a channel of any meaning, as in `kA8`, counts as red. `flag` is ignored.
    ///
    /// Rows lie `desc.rowPitch` bytes apart, 0 meaning packed ones. Returns (0, 0, 0, 0) for null data, an empty
    /// picture, a pitch shorter than a row, and formats without bytes per pixel. The texture type is not looked at: of
    /// a cube map or volume that is the first face or slice. The result does not depend on the number of cores.
    vec4<float> GetAverageColor2D(const ImageDescription& desc, const void* data, bool flag);
};

}  // namespace Kavra::Utilities
