/// The image handler that reads and writes through OpenImageIO.
#pragma once

#include <kavra/devices/IImageHandler.h>
#include <kavra/objects/NetObjectCountImpl.h>
#include <kavra/oiio/Export.h>

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imageio.h>

#include <cstddef>

namespace Kavra::Devices {

/// The one object that the module registers, under the class-factory key "ImageHandlerOIIO". It is stateless: every
/// call works on its arguments alone, so one object serves any number of threads. The definitions are spread over the
/// module's rooms by subject.
/// An operation that builds on another one of the interface calls it through the table, so a class derived from this
/// one may replace either.
class KAVRA_OIIO_API OIIOImageHandler : public IImageHandler, public Objects::NetObjectCountImpl<OIIOImageHandler> {
public:
    /// Switches off OpenEXR's core library inside OpenImageIO and the library's own printing of errors, process-wide.
    OIIOImageHandler();
    OIIOImageHandler(const OIIOImageHandler&);
    OIIOImageHandler& operator=(const OIIOImageHandler&);
    ~OIIOImageHandler() override;

    using IImageHandler::GetAverageColor;

    IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, int width, int height, int depth,
                                      EFormat format, bool highQualityResize, int level, EDataOrientation orientation,
                                      IImageFormatHandler* formatHandler) override;
    IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, int width, int height, int depth,
                                      EFormat format, int level, EDataOrientation orientation,
                                      IImageFormatHandler* formatHandler) override;
    ImageDesc* GetImageDesc(const KString& path) override;
    bool SaveTexture(const KString& path, const ImageDescription& desc, const void* data) override;
    bool SaveTexture(const KString& path) override;
    bool SaveTarget(const KString& path, ATarget* target, bool stretch) override;
    IMemoryWrapper<void>* Resize(EResizeMethod method, const void* data, std::size_t dataSize, int srcPitch,
                                 const vec3<int>& srcSize, EFormat format, ETextureType type, const vec3<int>& dstSize,
                                 int& dstPitch, EImageFilterType filter) override;
    vec4<float> GetAverageColor(const ImageDescription& desc, const void* data, bool flag) override;
    vec3<float> GetIBLIntensity(const ImageDescription& desc, const void* data, bool upperHemisphere,
                                vec3<float>* averageColour) override;
    unsigned FindIBLLightDirections(const ImageDescription& desc, const void* data, vec3<float>* const directions,
                                    vec3<float>* const colours, unsigned maxCount) override;
    IImage* CreateImage(int width, int height, EFormat format) override;
    IImage* CreateImage(ATarget* target) override;
    IImage* CreateImage(ASimpleTexture* texture) override;
    bool writeImageOneLineAtATime(const KString& path, double resolution, IWriteImageLineProvider* provider, int width,
                                  int height, int channels) const override;

    /// This object itself: a handler without state needs no copies.
    IClone* Clone() override;

    /// How many handlers are alive.
    virtual int CurObjectCount() const;

    // --- Pixel formats (src/formats) ---------------------------------------------------------------------------------

    /// `base` with the element type, channel count and alpha index of `format`; channel names stay as they are, and a
    /// one- or two-channel format keeps the alpha index of `base`. `kUnknown` gives `base` itself; a format that
    /// OpenImageIO has no type for gives element type UNKNOWN.
    static OIIO::ImageSpec FormatToImageSpec(const EFormat& format, const OIIO::ImageSpec& base);

    /// The format that holds the pixels of `spec`, leaving a depth channel out of the count, or `kUnknown`.
    static EFormat ImageSpecToFormat(const OIIO::ImageSpec& spec);

    /// Whether `FormatConversion` handles the pair.
    static bool CanConvertTo(EFormat from, EFormat to);

    /// Whether an image in `from` must be converted to be delivered as `to`. The kinds are companion values of
    /// the formats; only their equality matters: where they are equal, only the red/blue order counts.
    static bool NeedConvert(EFormat from, int fromKind, EFormat to, int toKind);

    /// Converts packed pixels into a new block, which the caller frees with `KavraDelete`. `srcBytes` and `dstBytes`
    /// are bytes. Always true; a pair that is not handled raises "Currently not supported", sets `dst` to null and
    /// leaves `dstBytes` alone. Throws what the allocator throws.
    static bool FormatConversion(EFormat from, std::size_t srcBytes, void* src, EFormat to, void*& dst,
                                 std::size_t& dstBytes);

    // --- Geometry (src/load) -----------------------------------------------------------------------------------------

    /// The Exif orientation number of an orientation; 1 for any value outside 0 to 7.
    static int ToOIIOOrientation(const EDataOrientation& orientation);

    /// The image turned from one Exif orientation into another, as a new image; empty when `from` is none.
    static OIIO::ImageBuf ReorientImage(const OIIO::ImageBuf& image, int from, int to);

    /// Shrinks `src` to the size of `dst`, whose spec says size, channels and type: by sampling for small changes, else
    /// filtered where that is worth it, or always with `highQuality`. False when OpenImageIO fails; `dst` then holds
    /// what it held.
    static bool AdaptiveResize(OIIO::ImageBuf& dst, const OIIO::ImageBuf& src, bool highQuality);

    static int mNetObjectCount;

private:
    friend struct OIIOImageHandlerAccess;  // the tests' way to the members below

    /// Loads one frame or mip level through OpenImageIO; the block is the caller's (`KavraDelete`). Null on failure.
    unsigned char* LoadTextureByOIIO(ImageDescription& desc, const KString& path, int width, int height, int depth,
                                     EFormat format, bool highQualityResize, int level, EDataOrientation orientation,
                                     IImageFormatHandler* formatHandler, int fileType);

    /// Loads a file of one of the legacy raster formats; the block is the caller's (`KavraDelete`). Null on failure.
    unsigned char* LoadSpecial(ImageDescription& desc, const KString& path, int width, int height,
                               bool highQualityResize, int level, EDataOrientation orientation, int fileType);

    /// Describes the current subimage; the result is the caller's. Null only when there is no memory.
    ImageDesc* GetImageDescByOIIO(OIIO::ImageInput* input, int fileType, bool ddsAlphaVariant);

    /// Frames of the file, or mip levels of a DDS: 1 or more. Leaves `input` at subimage 0, level 0.
    int GetNumberOfFrames(OIIO::ImageInput* input, int fileType);

    /// Whether some alpha of `size` bytes of four-channel pixels is zero, and whether some lies between zero and
    /// opaque.
    void GetAlphaProperty(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec,
                          bool& hasTransparentPixels, bool& hasTranslucentPixels);

    /// Sets every alpha of `size` bytes of four-channel pixels to opaque.
    void SetToOpaque(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec);
};

}  // namespace Kavra::Devices
