/// \file
/// The smaller levels of textures.
///
/// A level has half of the sides of the one before it, rounded down, and 1 at least. Those of a box are the means of the ones
/// before. Wider filters look at the means two levels above, so that a level is what the filter makes of level 0 at once:
/// one filter after another would be softer from level to level. Everything is kept in floats on the way; neither rounding
/// nor clipping adds up.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/Resampler.h>
#include <kavra/devices/TextureFile.h>

#include <cstddef>
#include <cstdint>

namespace Kavra::Devices {

/// What lies beyond the edges of a flat picture or a volume.
enum EMipEdges : std::int32_t {
    kMipClamp = 0,  ///< the last pixel again
    kMipWrap = 1,   ///< the pixels of the opposite side: the texture is a tile
};

/// What the channels of a texture are.
enum EMipContent : std::int32_t {
    kMipColours = 0,  ///< colours or data, each channel by itself
    /// Red, green and blue are the parts of vectors: integers of 0 to 1 stand for -1 to 1, halves and floats for themselves.
    /// In each level they are of length 1, and (0, 0, 1) where they cancel out. What follows them is data. Formats of two
    /// channels are taken as `kMipNormalsXY`.
    kMipNormals = 1,
    /// The same of which only red and green are looked at; the third part is what makes the length 1. Where the format has
    /// a blue channel, that of the lower levels is the third part.
    kMipNormalsXY = 2,
};

/// How levels are made. As it stands: the mean of the pixels that a pixel covers, each channel as it is stored.
struct MipOptions {
    std::uint32_t size = sizeof(MipOptions);  ///< of the structure as its user knows it, in bytes
    /// `kResampleBox`, `kResampleTriangle`, `kResampleMitchell`, `kResampleCatmullRom` or `kResampleLanczos3`. A box takes
    /// of a pixel that it covers in part just that part, as in odd sizes.
    EResampleFilter filter = kResampleBox;
    EMipEdges edges = kMipClamp;        ///< of flat pictures and volumes, along all sides; a cube map has none
    EMipContent content = kMipColours;  ///< what the channels are
    /// Undoes the curve of sRGB (IEC 61966-2-1) before filtering 8- and 16-bit colours and applies it again afterwards.
    /// Alpha has no curve. Halves and floats are linear anyway, and vectors are.
    bool linearLight = false;
    /// Weights each pixel's colours by its alpha, so that what is transparent lends its neighbours no colour. For straight
    /// alpha; not for premultiplied colours, nor where the last channel is data. Formats without alpha, and vectors, have
    /// no such weights.
    bool alphaWeighted = false;
    /// Keeps halves and floats between the least and the largest value under the filter, so that no light becomes negative
    /// and no rings stand around suns; weighted colours are so kept while they are weighted. Integers keep the overshoot of
    /// `kResampleMitchell` and of those below it, which makes edges crisp. Vectors are not bound.
    bool bounded = false;
    /// For cut-outs: the alpha, up to 1, from which on a pixel is seen. In each level alpha is multiplied by the number
    /// nearest to 1 that makes the share of such pixels that of level 0, or as near as it can be: I. Castaño, "Computing
    /// Alpha Mipmaps", 2010. The pixels of all faces or slices are counted together; colours stay, as straight ones do.
    /// 0: alpha is what the filter makes it, as it is in formats without alpha.
    float keepCoverage = 0;
};

/// The options that suit what a texture says of itself: light where it is sRGB, weights where its alpha is straight.
inline MipOptions MipOptionsFor(const TextureShape& shape) {
    MipOptions options;
    options.linearLight = shape.isSrgb;
    options.alphaWeighted = shape.alpha == kTextureAlphaStraight;
    return options;
}

/// Level 0 where it is not packed, or not in one piece. Somebody else's.
struct MipSource {
    std::uint32_t size = sizeof(MipSource);  ///< of the structure as its user knows it, in bytes
    /// The first row of each picture: of a flat texture or a volume one for each element, of a cube map six for each, in
    /// the order +x -x +y -y +z -z.
    const void* const* pictures = nullptr;
    std::size_t pitch = 0;       ///< bytes from row to row; 0: rows are packed
    std::size_t slicePitch = 0;  ///< bytes from slice to slice of a volume; 0: `height` pitches
};

/// One level of one picture.
struct MipLevel {
    std::uint32_t size = sizeof(MipLevel);  ///< of the structure as its user knows it, in bytes
    int element = 0;                        ///< of an array
    int level = 0;                          ///< 1 and up
    int face = 0;                           ///< 0 unless of a cube map
    int width = 0;                          ///< pixels of this level
    int height = 0;                         ///< rows
    int depth = 1;                          ///< slices
    const void* pixels = nullptr;           ///< packed, slice by slice; of the chain's maker, until the call returns
    std::uint64_t bytes = 0;                ///< of all of them
};

/// Where levels go.
class IMipSink {
public:
    virtual ~IMipSink() = default;
    /// Takes a level of a picture. They come once each: element by element, of an element level by level from 1 on, of a
    /// level face by face, on the thread that asked for the chain. False ends the work.
    virtual bool TakeLevel(const MipLevel& level) = 0;
};

/// Makes levels 1 to `shape.levels - 1` of a texture and hands each to a sink as soon as it is there.
///
/// `shape` has a format that is not block-compressed; sides of 1 to 2^20, of a volume 65,536 slices at most, of a cube map
/// square; 1 to `FullTextureLevels` levels; and at least one element. `isSrgb` and `alpha` of it are not looked at: options say what
/// is done (`MipOptionsFor`). Filters that reach beyond the edge of a face take the pixels of the neighbouring faces, and
/// beyond a corner the mean of the three that meet there, so that no seams show. Volumes are filtered in all three
/// directions.
///
/// The same input gives the same bytes, whatever the number of threads or the width of vectors. All cores are used. Takes,
/// beside level 0, the floats of two levels below it, of all faces and slices (16 bytes a pixel of four channels), and level 1 of
/// one face as it is stored: 400 MB for 8192 x 8192 pixels. A float that is no number makes none of those that the filter
/// reaches from it, and no others; where it is one it is the quiet one without a sign.
///
/// False, and nothing handed over, where an argument is none of these, an option is none, or vectors are asked for of a
/// format of one channel; false also where the sink says so. Throws `std::bad_alloc`, and what the sink throws. Threads:
/// any, of a sink one.
KAVRA_DEVICES_API bool BuildMipChain(const TextureShape& shape, const MipSource& level0, IMipSink& sink,
                                     const MipOptions& options = {});

/// The same from packed pixels, element by element and of an element face by face, into a whole texture of
/// `TextureBytes(shape)`, level 0 among it. The two do not overlap.
///
///     TextureShape shape;
///     shape.format = kR8G8B8A8;
///     shape.isSrgb = true;
///     shape.width = shape.height = 1024;
///     shape.levels = FullTextureLevels(1024, 1024);
///     std::vector<unsigned char> texture(TextureBytes(shape));
///     BuildMipChain(shape, photo, texture.data(), MipOptionsFor(shape));
KAVRA_DEVICES_API bool BuildMipChain(const TextureShape& shape, const void* level0, void* texture,
                                     const MipOptions& options = {});

}  // namespace Kavra::Devices
