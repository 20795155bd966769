/// \file
/// What a host asks of an image handler.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/EResize.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/IClone.h>
#include <kavra/objects/IDelete.h>
#include <kavra/objects/Vec.h>

#include <cstddef>

namespace Kavra::Devices {

class ASimpleTexture;
class ATarget;
class IImage;
class IImageFormatHandler;
class IWriteImageLineProvider;

/// Reads, describes, writes and analyses images. A module registers one in the class factory; a host gets it there:
///
///     IClone* clone = ObjModel::Factory().CloneObject(Intern(L"ImageHandlerOIIO"));
///     auto* handler = dynamic_cast<IImageHandler*>(clone);   // the module's own: nothing to free
///
///     ImageDescription desc;
///     IMemoryWrapper<void>* block =
///         handler->LoadTexture(desc, L"sky.exr", 1024, 512, 1, kR16G16B16A16F, 0, kTopLeft, nullptr);
///     if (block != nullptr) {
///         Upload(block->mData, desc.width, desc.height, desc.rowPitch);
///         block->Delete();   // frees the pixels
///     }
///
/// Hosts call by vtable slot, so the order of the virtual functions is binding:
///
///     slot  operation                           slot  operation
///       0   destructor                           10   GetAverageColor(path, flag)
///       1   Delete                               11   GetIBLIntensity
///       2   LoadTexture with highQualityResize   12   FindIBLLightDirections
///       3   LoadTexture without                  13   CreateImage(width, height, format)
///       4   GetImageDesc                         14   CreateImage(target)
///       5   SaveTexture(path, desc, data)        15   CreateImage(texture)
///       6   SaveTexture(path)                    16   SupportSave
///       7   SaveTarget                           17   SupportLoad
///       8   Resize                               18   writeImageOneLineAtATime
///       9   GetAverageColor(desc, data, flag)
///
/// The `IClone` view comes second: 0 destructor, 1 `Clone`.
///
/// Errors: every operation answers bad input with its no-answer - null, false, zero - and raises messages through
/// `Sys`; no exception leaves it. Messages are those named below, word by word; where none is named, none is raised.
///
/// Ownership: paths, descriptions, pixels and host objects that are passed in stay the caller's and are borrowed for
/// the call only. What is returned is the caller's: blocks and descriptions are destroyed with `Delete`, images by
/// releasing the last reference.
///
/// Threads: every operation runs on the caller's thread and returns when its work is done; large blocks are worked on
/// by all cores meanwhile. Operations on different files are independent and may run at the same time on one handler.
/// Two that write the same file, or write and read it, are not.
class KAVRA_DEVICES_API IImageHandler : public IDelete, public IClone {
public:
    /// The answer of `SupportLoad` and `SupportSave`.
    enum ImageHandlerStatus : int {
        kUnsupported = 0,  ///< the extension is not known; `LoadTexture` and `SaveTexture` may succeed all the same
        kSupported = 1,    ///< the extension is known
    };

    IImageHandler();                                 ///< Makes the base of a handler.
    IImageHandler(const IImageHandler&);             ///< Copies nothing: the base has no state.
    IImageHandler& operator=(const IImageHandler&);  ///< Assigns nothing.

protected:
    ~IImageHandler() override;

public:
    /// Loads one frame or mip level of a file into a new block of packed pixels, at a size, in a format and in a row
    /// order.
    ///
    /// **The block.** Rows are packed (`desc.rowPitch` = bytes per pixel x width), top row first for `kTopLeft`. A cube
    /// map comes as six faces, a volume as slices, one after another; `ImageDescription` says how to find a pixel.
    /// `Delete` of the result frees wrapper and pixels. Where a format leaves pixels undefined they are zero: the same
    /// file gives the same block each time.
    ///
    /// **What is not done to the pixels.** No colour conversion: no colour profile, gamma or sRGB curve is applied,
    /// `desc.gamma` only tells. No alpha conversion: alpha and colours come as the file's reader delivers them,
    /// straight from PNG, TIFF, TGA and WebP (colours are not multiplied), premultiplied ("associated") from OpenEXR as
    /// that format has it, as stored from all others. Channels are not tone-mapped; floats may be of any value.
    ///
    /// - `desc`: filled with what the block holds. After a failure it means nothing: it may be as it was, or filled in
    ///   part.
    /// - `path`: the file. Its content decides what it is, unless its extension is one of the common ones (".png",
    ///   ".jpg", ".tif", ".hdr", ".tga" ...), which are left to the image library unseen. Only regular files are
    ///   opened.
    /// - `width`, `height`: the largest size wanted, in pixels, each by itself: below 1 means the file's own, larger
    ///   ones are cut to it, so a picture is never enlarged; proportions are the caller's affair. They count before the
    ///   picture is rotated: with an orientation of `kLeftTop` or more in the file or wanted, width and height of the
    ///   block may be exchanged. Volumes, and DDS files that only the host's reader can decode, are not resized: they
    ///   fail.
    /// - `depth`: ignored.
    /// - `format`: the wanted format. `kUnknown` lets `formatHandler` choose, or keeps the file's where that is null.
    ///   See below for what cannot be converted.
    /// - `highQualityResize`: true filters every change of size (Mitchell); false samples changes below a tenth, and
    ///   where a filter would cost more than it shows.
    /// - `level`: of a DDS the mip level, else the frame, page or band, from 0. Negative ones are taken as 0. Beyond
    ///   the last: the warning "Frame index out of range" and a failure; of FLI/FLC and band rasters the last one, PCX,
    ///   PICT, CALS and RLC have one frame whatever is asked. Lower levels of a volume load only when one slice is
    ///   left.
    /// - `orientation`: the wanted row and column order; the pixels are mirrored or rotated into it. Of a cube map a
    ///   rotation by a quarter rotates each face in its place; mirroring and half a rotation take the six faces as one
    ///   stack, so that their order may be reversed.
    /// - `formatHandler`: may be null; asked at most once, see `IImageFormatHandler`.
    ///
    /// **Formats.** Ordinary files are delivered in any format that the image library holds. Pairs that
    /// `OIIOImageHandler::CanConvertTo` has are converted: grey to colour, colour to grey (0.299 R + 0.587 G + 0.114 B,
    /// of 8-bit values), integers to floats. For all others the file's channels are read as the first ones of `format`,
    /// integers and floats converted by their range: channels that the file lacks are 0, alpha opaque. (So grey
    /// pictures of 8 bits come out red in formats of four channels with more bits; those of 16 bits red as four floats
    /// and black as four halves. Ask for `kR8G8B8A8` or, of 16 bits, `kR16G16B16A16`, and convert from there.) The
    /// legacy formats, and what only the host's own DDS and OpenEXR readers decode, come in the file's own format when
    /// the pair is not convertible: look at `desc.format`, which may differ from `format`. A block-compressed DDS is
    /// decoded, unless a block-compressed format is asked for: that gives the file's own blocks, after a warning
    /// "format is not supported", since the image library is tried first.
    ///
    /// Null on failure, with these warnings, in this order where several apply: "Frame index out of range" (see
    /// `level`), "Unsupported texture type" (the library has no type for the file's pixels), "format is not supported"
    /// (the library has none for `format`; and once more as the last word when no reader could serve the file). A load
    /// that succeeds after all, by another reader, may have raised the first ones. It may also raise "Override
    /// orientation of compressed DDS is not supported" (the rows come as stored), the error "Currently not supported"
    /// (a conversion that is left out), and the warnings of the legacy readers about damaged rows.
    virtual IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, int width, int height,
                                              int depth, EFormat format, bool highQualityResize, int level,
                                              EDataOrientation orientation, IImageFormatHandler* formatHandler) = 0;
    /// The same with `highQualityResize` false.
    virtual IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, int width, int height,
                                              int depth, EFormat format, int level, EDataOrientation orientation,
                                              IImageFormatHandler* formatHandler) = 0;

    /// Describes a file without decoding it: size, format, texture type, frames, orientation, gamma. The caller
    /// destroys the answer with `Delete`. Null, without a message, when nothing can describe the file.
    ///
    /// Headers are read and frames counted, which for some formats reads the file once. An OpenEXR file that the image
    /// library refuses is decoded for it. The header is believed: a load of the same file may still fail.
    virtual ImageDesc* GetImageDesc(const KString& path) = 0;

    /// Writes a block to a file; the path's extension says which kind. True when the whole file was written.
    ///
    /// Of `desc` these are read: `width`, `height`, `format`, `rowPitch` (bytes) and, for DDS, `depth` and
    /// `textureType`. A pitch shorter than a row: in a DDS the ends of the rows are zero; in other files rows overlap,
    /// a row running on into those below it, and what would lie beyond height x pitch is zero. One below 1 fails. All
    /// else is ignored: the file gets no orientation, no gamma and no alpha flags. Rows are written as they lie, the
    /// first one as the top, so hand over blocks of orientation `kTopLeft`. Alpha is written straight, as it is handed
    /// over; OpenEXR stores what it gets, so hand over premultiplied colours for it.
    ///
    /// **".dds"** (the last four characters, in any case): all formats but `kUnknown` and the reserved ones; flat
    /// textures, cube maps (six square faces) and volumes, one level; at most 4,294,967,295 bytes unless
    /// block-compressed. Of block-compressed ones the pitch is ignored.
    ///
    /// **All other extensions** are the image library's. One flat picture is written: of a cube map the first face, of
    /// a volume the first slice. The file's channels and type follow `desc.format`, as far as the kind of file has
    /// them: one, two or four channels of 8 or 16 bits, halves or floats; blue-first formats are written red first.
    /// `kR32G32B32F`, `kR8G8B8A8Alt` and block-compressed formats cannot be written.
    ///
    /// | extension | takes |
    /// |---|---|
    /// | tif | all, as they are; halves become floats |
    /// | exr | all; 8 and 16 bits become halves, so 16 bits lose their last ones |
    /// | png | 1, 2, 4 channels of 8 or 16 bits; floats become 8 bits |
    /// | tga, ico | 1, 2, 4 channels, as 8 bits |
    /// | sgi | 1, 2, 4 channels of 8 or 16 bits; floats become 8 bits |
    /// | jpg | 1, 2, 4 channels, lossy; alpha is dropped |
    /// | bmp | 1, 4 channels, as 8 bits |
    /// | dpx, jxl | 1, 4 channels, any type |
    /// | jp2 | 1, 4 channels of 8 or 16 bits, from 32 x 32 pixels on |
    /// | pgm, pnm | 1 channel |
    /// | webp, gif, iff | 4 channels; gif has 256 colours, and alpha on or off |
    ///
    /// Some files are written that the library then cannot read, or not as they were: FITS with 16 bits a channel, with
    /// more than 4 channels or with several channels in a single row; zfile; RLA of width 1, with a side beyond 32,767
    /// or a channel's row beyond some 65,000 bytes; GIF with a side beyond 32,768; IFF of 16 bits; JPEG XL of less than
    /// 128 bytes; SGI of more than 4 channels; and Radiance HDR (which takes three channels, so only
    /// `writeImageOneLineAtATime` writes it) with a side beyond 65,535 pixels.
    ///
    /// A missing folder is made first, with those above it, and stays after a failure. What is there under `path` must
    /// be a regular file or nothing. **After a failure** a file that was there before is as it was. Where there was
    /// none, a part of the new one may be left, except of a DDS, and is not cleaned up. Links, files of another user,
    /// and files in a folder that takes no new one are written over in place and may be torn.
    ///
    /// False with a warning: "format is not supported" (BC1 to BC5 and the reserved formats 16 and 17 to another file
    /// than ".dds": before anything is touched), "wrong file path" (an empty path, or a folder name of more than 259
    /// characters), "fail to create specified folder", "fail to construct DDSWriter" (what a DDS file cannot hold).
    /// False without a message: null `data`, a size below 1, an extension or format that no writer takes, a full disk.
    virtual bool SaveTexture(const KString& path, const ImageDescription& desc, const void* data) = 0;
    /// Saves nothing, raises nothing and returns false.
    virtual bool SaveTexture(const KString& path) = 0;

    /// Writes the first layer of a render target to a file, with 8 bits a channel. The file is written by
    /// `SaveTexture(path, desc, data)` through the vtable, with its messages and what it leaves after a failure.
    ///
    /// Takes `kR8G8B8A8`, `kB8G8R8A8`, `kB8G8R8X8` and `kR8G8B8X8` as they are, and `kR32F` (saved as `kR8`),
    /// `kR32G32F` (red, green, blue 0, opaque) and `kR32G32B32A32F` mapped to 0..255, each channel by itself, alpha
    /// too. With `stretch` the smallest value of the channel becomes 0 and the largest 255 (a constant c from 0 to 1
    /// becomes c x 255, any other constant 0). Without it 0 to 1 becomes 0 to 255, and values outside widen that range.
    /// Fractions are cut off; NaN becomes 0. 8-bit colours are handed on as they are mapped, with the mapped pitch
    /// whatever it is; one shorter than a row is for `SaveTexture` to deal with.
    ///
    /// All other formats raise "Raster format not supported" and "Picture save failed."; the target's memory is then
    /// left mapped and not released. A save that fails raises "Picture save failed." after the messages of
    /// `SaveTexture`. False without a message for a null target and one whose memory cannot be mapped.
    virtual bool SaveTarget(const KString& path, ATarget* target, bool stretch) = 0;

    /// Returns a block in another size. The caller destroys it with `Delete`. What each method does is said at
    /// `EResizeMethod` and `EImageFilterType`.
    ///
    /// - `data`, `dataSize`: the source and its bytes.
    /// - `srcPitch`: bytes from one source row to the next. `kResizeFilter` ignores it and takes the rows as packed.
    /// - `srcSize`, `dstSize`: width, height and depth in pixels; the depths are ignored. `kResizeCropOrPad` takes the
    ///   number of source rows from `dataSize` / `srcPitch`, and `srcSize` is ignored.
    /// - `format`: of both blocks. `type`: looked at by `kResizeFilter` only, which takes `kTexture1D` and
    ///   `kTexture2D`.
    /// - `dstPitch`: written: bytes from one row of the result to the next. `srcPitch` for `kResizeCopy`, else bytes
    ///   per pixel x `dstSize.x`. After a failure it means nothing.
    /// - `filter`: for `kResizeFilter`.
    ///
    /// Null with the error "wrong resize method!" (none of the three) or "No data passed in to resize." (null `data` to
    /// filter), or the warning "Texture type not supported", "Raster format not supported" or "invalid input parameter"
    /// (an unknown filter). Null without a message for null `data` with bytes, sizes below 1 to filter (below 0 to crop
    /// or pad), `dataSize` smaller than the source picture, a pitch beyond an int, and lack of memory. A pitch of 0 or
    /// less to crop or pad gives zeros. Block-compressed formats are copied only; to crop or pad they give an empty
    /// block.
    virtual IMemoryWrapper<void>* Resize(EResizeMethod method, const void* data, std::size_t dataSize, int srcPitch,
                                         const vec3<int>& srcSize, EFormat format, ETextureType type,
                                         const vec3<int>& dstSize, int& dstPitch, EImageFilterType filter) = 0;

    /// Returns the mean of each channel - red, green, blue, alpha - of a flat texture, all pixels counting alike.
    /// Values are 0 to 1 for integer formats, whatever they are for floats. What a format lacks is 0, alpha 1.
    ///
    /// Of `desc` are read: `width`, `height`, `format`, `rowPitch` (0 means packed) and `textureType`, which must be
    /// `kTexture2D`. `flag` is for hosts that tell two kinds of means apart; it changes nothing here. Returns (0, 0, 0,
    /// 0) for other types, null `data`, an empty picture, a pitch shorter than a row, and formats without bytes per
    /// pixel. No messages.
    virtual vec4<float> GetAverageColor(const ImageDescription& desc, const void* data, bool flag) = 0;
    /// The same for a file, whose first frame is loaded in its own size and format through `LoadTexture` of this
    /// handler, with its messages. (0, 0, 0, 0) when it cannot be loaded, and for cube maps and volumes.
    virtual vec4<float> GetAverageColor(const KString& path, bool flag);

    /// Returns three brightness measures of an equirectangular environment map: the first row is the zenith, the last
    /// one the nadir, the columns go once round (docs/finding-the-light.md).
    ///
    /// With the means R, G, B of the channels over the sphere:
    ///
    ///     x   the largest of R, G and B
    ///     y   the mean of each pixel's largest channel
    ///     z   the luminance 0.212671 R + 0.71516 G + 0.072169 B   (linear RGB with the primaries of ITU-R BT.709)
    ///
    /// Each row counts by the solid angle that it covers: row y of H has the latitude phi = (1/2 - (y + 1/2) / H) pi
    /// and the weight cos(phi). With `upperHemisphere` only the first H / 2 rows count (rounded down), each also by the
    /// cosine of its angle from the zenith, so with cos(phi) sin(phi): what a horizontal floor receives, the rest of
    /// the map aside.
    ///
    /// `averageColour` gets (R, G, B) and may be null. Units are those of the pixels: 8 bits give 0 to 1, halves and
    /// floats what they are; no curve is undone, so of an sRGB picture the numbers are not light.
    ///
    /// Takes `kR8G8B8A8`, `kR8G8B8A8Alt`, `kR8G8B8X8`, `kB8G8R8A8`, `kB8G8R8X8`, `kR16G16B16A16F` and `kR32G32B32A32F`;
    /// the fourth channel is not read. `desc.rowPitch` is bytes from row to row, any number (0 is one row again and
    /// again). Returns (-999, -999, -999), and leaves `averageColour` alone, for other formats, types other than
    /// `kTexture2D` and null `data`. A map of height or width 0 gives NaN. No messages.
    virtual vec3<float> GetIBLIntensity(const ImageDescription& desc, const void* data, bool upperHemisphere,
                                        vec3<float>* averageColour) = 0;

    /// Finds the dominant lights of an equirectangular environment map (docs/finding-the-light.md) and returns how
    /// many: 0 to `maxCount`.
    ///
    /// `directions` and `colours` are arrays of at least `maxCount` entries, of which the returned number is written,
    /// in falling order of the lights' brightest samples. A direction points from the eye to the light and has the
    /// length 1 (0 where what was gathered cancels out). Axes are right-handed: +x is right (three quarters across the
    /// map), +y up (the first row), -z ahead (the middle column), +z behind (the edges). A colour is the mean red,
    /// green and blue of the light's samples, in the units of the pixels: 0 to 1 for 8 bits, what they are for halves
    /// and floats.
    ///
    /// The map is sampled at up to 200 x 100 directions, each for the same solid angle, the nearest pixel each. Samples
    /// that reach the mean luminance plus one standard deviation are light; the brightest starts a light and draws in
    /// those near it (within 18 degrees at first, wider as it grows).
    ///
    /// Formats, pitch and luminance are as for `GetIBLIntensity`. Returns 0, and writes nothing, for other formats,
    /// types other than `kTexture2D`, null arguments, `maxCount` 0, and maps without rows or narrower than 2 pixels. No
    /// messages.
    ///
    ///     vec3<float> directions[8], colours[8];
    ///     const unsigned lights = handler->FindIBLLightDirections(desc, block->mData, directions, colours, 8);
    virtual unsigned FindIBLLightDirections(const ImageDescription& desc, const void* data,
                                            vec3<float>* const directions, vec3<float>* const colours,
                                            unsigned maxCount) = 0;

    /// Makes a new editable picture of `width` x `height` pixels, every byte zero. It has no references yet: call
    /// `AddRef` first, `ReleaseRef` when done. Blue-first and X formats are kept as `kR8G8B8A8`.
    ///
    /// A format that pictures cannot hold (block-compressed, `kR32G32B32F`, `kR8G8B8A8Alt`, `kUnknown`) or a size below
    /// 1 raises the warning "Unsupported target type" and gives a picture without pixels, which refuses everything.
    /// Null only when there is no memory.
    virtual IImage* CreateImage(int width, int height, EFormat format) = 0;
    /// The same with a copy of the pixels of layer 0 of `target`, red first. Warnings: "Unsupported target type", or
    /// "target can't be mapped" when there is no memory wrapper or its pitch is too short; the picture then has no
    /// pixels. A null target gives an empty picture without a message. The target is not kept.
    virtual IImage* CreateImage(ATarget* target) = 0;
    /// The same of a texture, of which a reference is kept: as long as nothing is pasted, `Save` lets the texture save
    /// itself. Warnings: "Unsupported texture type", "texture can't be mapped".
    virtual IImage* CreateImage(ASimpleTexture* texture) = 0;

    /// Whether the host can write the path's extension by itself: `kSupported` for ".dds" in any case, `kUnsupported`
    /// for all others, although `SaveTexture` writes many of them through the image library. Only the extension is
    /// looked at; the other arguments are ignored and the file need not exist.
    virtual ImageHandlerStatus SupportSave(const KString& path, int width, int height, int depth, EFormat format);
    /// Whether the path's extension is one that is known to load, in any case: dds, exr, png, jpg, jpeg, jp2, jfif,
    /// tif, tiff, bmp, rle, hdr, tga, tpic, gif, webp, pbm, pgm, ppm, ico, psd, cal, cals, flc, fli, pcx, pct, pic,
    /// pict, rlc, bil. `kUnsupported` for all others, many of which the image library loads too. Only the extension is
    /// looked at.
    virtual ImageHandlerStatus SupportLoad(const KString& path);

    /// Writes an 8-bit picture whose rows come one at a time from `provider`, so that it never exists as a whole. True
    /// when the file was written to its end.
    ///
    /// - `path`: its extension says which kind of file: whatever the image library writes, not ".dds". The memory is
    ///   that of a few rows for tif, png, jpg, bmp, tga, sgi and exr; the writers of other kinds keep the whole
    ///   picture.
    /// - `resolution`: dots per inch, both ways. tif, jpg, png and exr store it.
    /// - `width`, `height`: pixels. Height 0 or less opens no file, asks for no row and returns true.
    /// - `channels`: of the file, 1 to 65,535 as far as the kind has them: 1, 3 and 4 nearly everywhere, 2 in tif, png,
    ///   tga, sgi and exr (in jpg they become red and green), 1, 3 and 4 in dpx, 3 only in hdr, none in iff, whose
    ///   writer takes no rows. Whatever it is, the provider fills four bytes a pixel, of which the first ones are
    ///   taken; channels beyond the fourth hold nothing of meaning.
    ///
    /// The folder is made as for `SaveTexture`, with its warnings "wrong file path" and "fail to create specified
    /// folder". False without a message: no writer for the extension, a null provider, numbers that the writer refuses,
    /// a row that could not be written, a full disk. After such a failure the provider is asked for all remaining rows
    /// all the same, and what is left under the name is as after a failed `SaveTexture`. Without memory for a row
    /// nothing is touched, and the provider is not asked.
    virtual bool writeImageOneLineAtATime(const KString& path, double resolution, IWriteImageLineProvider* provider,
                                          int width, int height, int channels) const = 0;
};

}  // namespace Kavra::Devices
