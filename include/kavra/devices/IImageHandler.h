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

/// Reads, describes, writes and analyses images. Hosts call by slot, so the order of the virtual functions is binding:
///
///     0 destructor            5 SaveTexture(path, desc, data)   10 GetAverageColor(path)    15 CreateImage(texture)
///     1 Delete                6 SaveTexture(path)               11 GetIBLIntensity          16 SupportSave
///     2 LoadTexture (quality) 7 SaveTarget                      12 FindIBLLightDirections   17 SupportLoad
///     3 LoadTexture           8 Resize                          13 CreateImage(size)        18
///     writeImageOneLineAtATime 4 GetImageDesc          9 GetAverageColor(desc, data)     14 CreateImage(target)
///
/// The `IClone` view comes second. Every operation answers bad input with its no-answer - null, false, zero - and
/// raises messages through `Sys`; no exception leaves it. Paths, descriptions and pixels that are passed in stay the
/// caller's and are borrowed for the call only; what is returned is the caller's to destroy.
///
/// Threads: operations on different files are independent and may run at the same time on one handler.
class KAVRA_DEVICES_API IImageHandler : public IDelete, public IClone {
public:
    enum ImageHandlerStatus : int {
        kUnsupported = 0,
        kSupported = 1,
    };

    IImageHandler();
    IImageHandler(const IImageHandler&);
    IImageHandler& operator=(const IImageHandler&);

protected:
    ~IImageHandler() override;

public:
    /// Loads one frame of a file into a new block.
    ///
    /// `desc` is filled with what the block holds; `desc.format` may differ from `format` where the file's format
    /// cannot be converted. `width` and `height` are the largest size wanted, in pixels: below 1 means the file's own,
    /// and an image is never enlarged. `depth` is ignored. `format` `kUnknown` lets `formatHandler` choose, or keeps
    /// the file's format when that is null. `highQualityResize` forces the better filter. `level` is the mip level of a
    /// DDS, else the frame, from 0. `orientation` is the wanted row and column order. Null on failure.
    virtual IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, int width, int height,
                                              int depth, EFormat format, bool highQualityResize, int level,
                                              EDataOrientation orientation, IImageFormatHandler* formatHandler) = 0;
    /// The same with `highQualityResize` false.
    virtual IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, int width, int height,
                                              int depth, EFormat format, int level, EDataOrientation orientation,
                                              IImageFormatHandler* formatHandler) = 0;

    /// Describes a file without decoding it; null when that is not possible.
    virtual ImageDesc* GetImageDesc(const KString& path) = 0;

    /// Writes a block to a file; the extension says which format. `desc` gives width, height, depth, format, row pitch
    /// and texture type. True when the file was written.
    virtual bool SaveTexture(const KString& path, const ImageDescription& desc, const void* data) = 0;
    /// Saves nothing and returns false.
    virtual bool SaveTexture(const KString& path) = 0;

    /// Writes a render target to a file, floating-point ones as 8 bits a channel: their range is mapped to 0..255
    /// wholly
    /// (`stretch`) or only as far as it leaves 0..1.
    virtual bool SaveTarget(const KString& path, ATarget* target, bool stretch) = 0;

    /// A block in another size. `dataSize` and the pitches are in bytes; sizes are width, height, depth in pixels.
    virtual IMemoryWrapper<void>* Resize(EResizeMethod method, const void* data, std::size_t dataSize, int srcPitch,
                                         const vec3<int>& srcSize, EFormat format, ETextureType type,
                                         const vec3<int>& dstSize, int& dstPitch, EImageFilterType filter) = 0;

    /// The mean of each channel of a two-dimensional texture; (0, 0, 0, 0) for others.
    virtual vec4<float> GetAverageColor(const ImageDescription& desc, const void* data, bool flag) = 0;
    /// The same for a file, which is loaded in its own format through `LoadTexture`.
    virtual vec4<float> GetAverageColor(const KString& path, bool flag);

    /// Three brightness measures of an equirectangular environment map; (-999, -999, -999) when it is none.
    virtual vec3<float> GetIBLIntensity(const ImageDescription& desc, const void* data, bool upperHemisphere,
                                        vec3<float>* averageColour) = 0;

    /// The dominant lights of an equirectangular environment map: up to `maxCount` directions and colours; how many.
    virtual unsigned FindIBLLightDirections(const ImageDescription& desc, const void* data,
                                            vec3<float>* const directions, vec3<float>* const colours,
                                            unsigned maxCount) = 0;

    /// A new editable picture without references; null on failure.
    virtual IImage* CreateImage(int width, int height, EFormat format) = 0;
    virtual IImage* CreateImage(ATarget* target) = 0;
    virtual IImage* CreateImage(ASimpleTexture* texture) = 0;

    /// Whether the host knows the format that the path's extension names, for saving and for loading.
    virtual ImageHandlerStatus SupportSave(const KString& path, int width, int height, int depth, EFormat format);
    virtual ImageHandlerStatus SupportLoad(const KString& path);

    /// Writes an 8-bit picture whose rows come one at a time from `provider`. `resolution` is in dots per inch.
    virtual bool writeImageOneLineAtATime(const KString& path, double resolution, IWriteImageLineProvider* provider,
                                          int width, int height, int channels) const = 0;
};

}  // namespace Kavra::Devices
