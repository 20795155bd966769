/// Whole-buffer pixel converters.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/Vec.h>

#include <cstddef>

namespace Kavra::Utilities {

using Devices::ImageDescription;

/// Each converter takes packed source pixels and their size in BYTES and returns a new packed block from
/// `ObjModel::mDefaultAllocator`, which the caller frees with `KavraDelete`. Trailing bytes that are no whole element
/// are ignored. A null source gives a zeroed block of the proper size. Large blocks are worked on by all cores; the
/// call returns when the block is whole. Throws `std::bad_alloc`. The object has no state: any thread may use it.
class KAVRA_DEVICES_API ImageHandlerHelper {
public:
    ImageHandlerHelper();

    /// Swaps bytes 0 and 2 of every 4-byte pixel.
    unsigned int* BGRAToRGBA(unsigned char* source, std::size_t bytes);

    /// v to 4 bytes (v, v, v, 255).
    unsigned int* GrayToRGB(unsigned char* source, std::size_t bytes);
    /// v to the 16-bit v x 257.
    unsigned short* GrayToR16(unsigned char* source, std::size_t bytes);
    /// v to the pair (v x 257, v x 257).
    unsigned short* GrayToR16G16(unsigned char* source, std::size_t bytes);

    /// v, rounded to 8 bits (v / 257, half up), to 4 bytes (v8, v8, v8, 255).
    unsigned int* Gray16ToRGB(unsigned short* source, std::size_t bytes);
    /// v to the pair (v, v).
    unsigned int* R16ToR16G16(unsigned short* source, std::size_t bytes);

    /// v to (v, v, v, `alpha`) when `withAlpha`, else to (v, v, v). T: unsigned short, half, float.
    template <class T>
    T* ExpandGrayToRGBA(T* source, std::size_t bytes, T alpha, bool withAlpha);

    /// Every element times `factor` in single precision. To half: round to nearest even. To 8 bits:
    /// floor(v x factor + 0.5), clamped to 0..255. Pairs (In, Out): (unsigned char, float), (unsigned short, float),
    /// (unsigned short, half), (unsigned char, half), (unsigned short, unsigned char), (half, float).
    template <class In, class Out>
    Out* TypeInToTypeOut(In* source, std::size_t bytes, float factor);

    /// The mean of each channel over the picture that `desc` describes (rows by its pitch); integers are divided by
    /// their maximum. Missing colours are 0, a missing alpha 1; an empty picture or an unknown format gives (0, 0, 0,
    /// 0). `flag` is ignored.
    vec4<float> GetAverageColor2D(const ImageDescription& desc, const void* data, bool flag);
};

}  // namespace Kavra::Utilities
