/// \file
/// The image handler that reads and writes through OpenImageIO.
#pragma once

#include <kavra/devices/IImageHandler.h>
#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/IMemoryLoader.h>
#include <kavra/objects/NetObjectCountImpl.h>
#include <kavra/oiio/Export.h>

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imageio.h>

#include <cstddef>

namespace Kavra::Devices {

/// The one object that the module registers, under the class-factory key "ImageHandlerOIIO".
///
/// Hosts use it through `IImageHandler`, which says what each operation does, and need not include this header, which
/// drags OpenImageIO in. It is for code that works with OpenImageIO itself: the static members below lead between its
/// specs and the host's formats.
///
/// A file passes through up to four readers, until one serves it: OpenImageIO (everything but the legacy formats), the
/// host's `EXRHandler`, the module's readers of legacy formats (docs/legacy-formats.md), and the host's `DDSReader`.
///
/// It is stateless: every call works on its arguments alone, so one object serves any number of threads. The
/// definitions are spread over the module's folders by subject. An operation that builds on another one of the
/// interface calls it through the vtable, so a class derived from this one may replace either.
class KAVRA_OIIO_API OIIOImageHandler : public IImageHandler,
                                        public IImageInspector,
                                        public IMemoryLoader,
                                        public Objects::NetObjectCountImpl<OIIOImageHandler> {
public:
    /// Switches off OpenEXR's core library inside OpenImageIO and the library's own printing of errors, process-wide
    /// and for good (the global attributes "openexr:core", "oiio:print_uncaught_errors",
    /// "imagebuf:print_uncaught_errors").
    OIIOImageHandler();
    /// Makes one more handler, which counts as one.
    OIIOImageHandler(const OIIOImageHandler&);
    /// Assigns nothing: there is no state.
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
    /// Makes an `OIIOImage`, as the two below.
    IImage* CreateImage(int width, int height, EFormat format) override;
    IImage* CreateImage(ATarget* target) override;
    IImage* CreateImage(ASimpleTexture* texture) override;
    bool writeImageOneLineAtATime(const KString& path, double resolution, IWriteImageLineProvider* provider, int width,
                                  int height, int channels) const override;

    IFileInspection* Inspect(const KString& path) override;
    const char* ReadableExtensions() override;
    /// The same of the files that are written.
    const char* WritableExtensions() override;

    IMemoryWrapper<void>* LoadMemory(ImageDescription& desc, const MemoryFile& file, int width, int height, int depth,
                                     EFormat format, bool highQualityResize, int level, EDataOrientation orientation,
                                     IImageFormatHandler* formatHandler) override;
    ImageDesc* GetMemoryDesc(const MemoryFile& file) override;
    IFileInspection* InspectMemory(const MemoryFile& file) override;

    /// Returns this object itself: a handler without state needs no copies. The caller must not destroy it; the class
    /// factory does when the module stops.
    IClone* Clone() override;

    /// How many handlers are alive in the process.
    virtual int CurObjectCount() const;

    // --- Pixel formats (src/formats) ---------------------------------------------------------------------------------

    /// Returns `base` with the element type, channel count and alpha index of `format`, all else as it was; channel
    /// names stay as they are, and a one- or two-channel format keeps the alpha index of `base`. `kUnknown` gives
    /// `base` itself; a format that OpenImageIO has no type for gives element type UNKNOWN.
    static OIIO::ImageSpec FormatToImageSpec(const EFormat& format, const OIIO::ImageSpec& base);

    /// Returns the format that holds the pixels of `spec`, leaving a depth channel out of the count, or `kUnknown` when
    /// there is none. By element type and channels; grey TIFFs count as one channel, whatever they have:
    ///
    ///     element     1      2         3, 4            more
    ///     UINT8       kL8    kR8G8B8A8 kR8G8B8A8       kR8G8B8A8
    ///     UINT16      kL16   kL16      kR16G16B16A16   kUnknown
    ///     HALF        kR16F  kR16G16F  kR16G16B16A16F  kUnknown
    ///     FLOAT       kR32F  kR32G32F  kR32G32B32A32F  kUnknown
    static EFormat ImageSpecToFormat(const OIIO::ImageSpec& spec);

    /// Whether `FormatConversion` handles the pair:
    ///
    ///     from             to
    ///     kR8, kL8         kR16, kR16G16, the four 8-bit colour formats
    ///     kR16F            kR16G16B16A16F
    ///     kR16, kL16       kR16G16, the four 8-bit colour formats, kR16G16B16A16F, kR16G16B16A16
    ///     kR32F            kR32G32B32F, kR32G32B32A32F
    ///     kR8G8B8A8        kR8, kL8, kB8G8R8A8, kB8G8R8X8, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F
    ///     kB8G8R8A8        kR8, kL8, kR8G8B8A8, kR8G8B8X8, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F
    ///     kR16G16B16A16F   kR32G32B32A32F
    ///     kR16G16B16A16    the four 8-bit colour formats, kR16G16B16A16F, kR32G32B32A32F
    ///     kR32G32B32A32F   everything, also what `FormatConversion` then refuses
    ///
    /// The four are `kR8G8B8A8`, `kB8G8R8A8`, `kB8G8R8X8` and `kR8G8B8X8`.
    static bool CanConvertTo(EFormat from, EFormat to);

    /// Whether an image in `from` must be converted to be delivered as `to`. The kinds are companion values of the
    /// formats, such as their channel counts; only their equality matters: where they are equal, only the red/blue
    /// order counts.
    static bool NeedConvert(EFormat from, int fromKind, EFormat to, int toKind);

    /// Converts packed pixels into a new block, which the caller frees with `KavraDelete`; the source stays the
    /// caller's. `srcBytes` and `dstBytes` are bytes.
    ///
    ///     void* out = nullptr;
    ///     std::size_t bytes = 0;
    ///     OIIOImageHandler::FormatConversion(kL8, 64 * 64, grey, kR8G8B8A8, out, bytes);
    ///     if (out != nullptr) Objects::KavraDelete(out);
    ///
    /// Always true: look at `dst`. A pair that is not handled raises the error "Currently not supported", sets `dst` to
    /// null and leaves `dstBytes` alone. Colour to grey is 0.299 R + 0.587 G + 0.114 B of the 8-bit values, rounded.
    /// 16-bit grey to half colours gives black with an opaque alpha, which hosts have come to expect. From floats to a
    /// format of b bytes `dstBytes` is `srcBytes` / (16 / b) in whole divisions, so a quarter too much for
    /// `kR32G32B32F`. Throws what the allocator throws. Threads: any; large blocks are converted on all cores.
    static bool FormatConversion(EFormat from, std::size_t srcBytes, void* src, EFormat to, void*& dst,
                                 std::size_t& dstBytes);

    // --- Geometry (src/load) -----------------------------------------------------------------------------------------

    /// Returns the Exif orientation number of an orientation; 1 for any value outside 0 to 7.
    static int ToOIIOOrientation(const EDataOrientation& orientation);

    /// Returns the image brought from one Exif orientation (1 to 8) into another, as a new image; empty when `from` is
    /// none, upright when `to` is none. Between 1 to 4 and 5 to 8 width and height are exchanged.
    static OIIO::ImageBuf ReorientImage(const OIIO::ImageBuf& image, int from, int to);

    /// Brings `src` to the size of `dst`, whose spec says size, channels and type: by sampling where both sides change
    /// by less than a tenth, else by a Mitchell filter where the picture is large enough for its footprint, or always
    /// with `highQuality`. The proportions are those of the display windows, the pixels those of the data windows. False
    /// when the two have different channel counts, are volumes or empty, or their windows lie more than a picture and a
    /// million pixels apart; `dst` then holds what it held. Throws `std::bad_alloc`.
    static bool AdaptiveResize(OIIO::ImageBuf& dst, const OIIO::ImageBuf& src, bool highQuality);

    static int mNetObjectCount;  ///< how many are alive; read it with `NetObjectCount()`

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

    /// Returns the frames of the file, or the mip levels of a DDS: 1 or more. Leaves `input` at subimage 0, level 0.
    int GetNumberOfFrames(OIIO::ImageInput* input, int fileType);

    /// Tells whether some alpha of `size` bytes of four-channel pixels is zero, and whether some lies between zero and
    /// opaque.
    void GetAlphaProperty(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec,
                          bool& hasTransparentPixels, bool& hasTranslucentPixels);

    /// Sets every alpha of `size` bytes of four-channel pixels to opaque.
    void SetToOpaque(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec);
};

}  // namespace Kavra::Devices
