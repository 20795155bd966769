/// \file
/// Pictures and rows of pixels at another size.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/FormatFacts.h>

#include <cstddef>

namespace Kavra::Devices {

/// How a pixel of another size is made of those that lie near it. All but the first two are widened by as much as the
/// picture shrinks, so that no pixel is skipped.
enum EResampleFilter : int {
    kResampleNearest = 0,   ///< takes the nearest pixel; introduces no new values
    kResampleBilinear = 1,  ///< blends the four nearest pixels, also when shrinking, where it skips the others
    kResampleBox = 2,       ///< the mean of the pixels that a pixel of the result covers
    kResampleTriangle = 3,  ///< a tent, two pixels wide
    /// The cubic of D. Mitchell and A. Netravali, "Reconstruction Filters in Computer Graphics", 1988 (B = C = 1/3), four
    /// pixels wide: a little soft, a little overshoot.
    kResampleMitchell = 4,
    kResampleCatmullRom = 5,  ///< the same family at B = 0, C = 1/2: crisper, more overshoot
    kResampleLanczos3 = 6,    ///< a sinc under a window of six pixels: crispest, with rings around hard edges
};

/// What resampling may do beyond filtering each channel by itself, as it is stored. All of it is off by default.
struct ResampleOptions {
    EResampleFilter filter = kResampleMitchell;  ///< how a pixel is made of its neighbours
    /// Weights each pixel's colours by its alpha, so that what is transparent lends its neighbours no colour. Colours are
    /// straight, not premultiplied, before and after. Where nothing under the filter is opaque the colours are those of
    /// the plain filter.
    bool alphaWeighted = false;
    /// Keeps halves and floats between the least and the largest value under the filter, so that no light becomes
    /// negative and no rings stand around suns. Integers keep the filter's overshoot, which makes edges crisp.
    bool bounded = false;
    /// Undoes the curve of sRGB (IEC 61966-2-1) before filtering 8- and 16-bit colours and applies it again afterwards.
    /// Alpha has no curve. Halves and floats are linear anyway.
    bool linearLight = false;
};

/// What the pixels are made of. Rows are packed, or `pitch` bytes apart where one is named.
struct ResamplePixels {
    ElementType element = ElementType::kUInt8;  ///< of every channel; not `kNone`
    int channels = 4;                           ///< 1 to 4, of equal type and next to each other
    int alphaChannel = -1;                      ///< from 0; negative: there is none
};

/// Resamples a picture in memory.
///
/// `from` and `to` hold `fromHeight` and `toHeight` rows of as many pixels as their widths say, `fromPitch` and
/// `toPitch` bytes apart, and do not overlap. Sizes are at least 1. Edges are clamped: beyond them lies the last row or
/// column again. False, and nothing written, where an argument is none of these, or a row has, with what the filter
/// reaches over beyond both ends, 2^26 values or more. Rows are split over all cores. Throws
/// `std::bad_alloc`. Threads: any.
///
///     ResamplePicture({ElementType::kUInt8, 4, 3}, photo, 4 * 4096, 4096, 4096, icon, 4 * 256, 256, 256);
KAVRA_DEVICES_API bool ResamplePicture(const ResamplePixels& pixels, const void* from, std::size_t fromPitch,
                                       int fromWidth, int fromHeight, void* to, std::size_t toPitch, int toWidth,
                                       int toHeight, const ResampleOptions& options = {});

/// Where the rows of a picture come from.
class IRowSource {
public:
    virtual ~IRowSource() = default;
    /// Writes the next `count` rows, packed, to `rows`. They are asked for once each, top row first, by one thread. False
    /// where they cannot be had, which ends the work.
    virtual bool ReadRows(void* rows, int count) = 0;
};

/// Where the rows of a picture go.
class IRowSink {
public:
    virtual ~IRowSink() = default;
    /// Takes the next `count` rows, packed, which stay the caller's. They come once each, top row first, by one thread.
    /// False ends the work.
    virtual bool WriteRows(const void* rows, int count) = 0;
};

/// Resamples a picture that need never be whole: holds as many rows of the source as the filter reaches over, and a few
/// more. The pixels are those of `ResamplePicture`. False where an argument is none, and where the source or the sink
/// says so. Throws `std::bad_alloc`, and what source and sink throw. Threads: any, of source and sink one.
KAVRA_DEVICES_API bool ResampleRows(const ResamplePixels& pixels, IRowSource& source, int fromWidth, int fromHeight,
                                    IRowSink& sink, int toWidth, int toHeight, const ResampleOptions& options = {});

}  // namespace Kavra::Devices
