// The exported handler: a thin shell, whose operations each end exceptions and hand on to their folder.

#include "analysis/AverageColor.h"
#include "analysis/LightDirections.h"
#include "analysis/LightIntensity.h"
#include "common/Boundary.h"
#include "common/HostExtras.h"
#include "formats/FormatConversion.h"
#include "formats/PixelFormatMapping.h"
#include "frame/module/Dispatch.h"
#include "frame/module/IsolatedRouting.h"
#include "load/AlphaAnalysis.h"
#include "load/FileDescription.h"
#include "load/FileInspection.h"
#include "load/FileKinds.h"
#include "load/TextureLoader.h"
#include "load/geometry/AdaptiveResize.h"
#include "load/geometry/Reorientation.h"
#include "output/LineWriter.h"
#include "output/ResizeService.h"
#include "output/TargetSaving.h"
#include "output/TextureSaving.h"
#include "readers/LegacyLoad.h"

#include <kavra/oiio/OIIOImage.h>
#include <kavra/oiio/OIIOImageHandler.h>

namespace Kavra::Devices {

namespace {

using Common::AsOperation;

/// A picture that came out without pixels has not answered, though it is there: what it says of that stays.
struct MadeImage {
    IImage* image = nullptr;
};

template <class Make>
IImage* MakeImage(const Make& make) {
    return AsOperation(MadeImage(), [&] { return MadeImage{make()}; }).image;
}

void SetLibraryAttribute(const char* name, int value) {
    (void)OIIO::attribute(name, OIIO::TypeInt, &value);
}

}  // namespace

static_assert(sizeof(OIIOImageHandler) == 4 * sizeof(void*), "a handler is its four interface views and nothing else");

int OIIOImageHandler::mNetObjectCount = 0;

OIIOImageHandler::OIIOImageHandler() {
    SetLibraryAttribute("openexr:core", 0);
    SetLibraryAttribute("oiio:print_uncaught_errors", 0);
    SetLibraryAttribute("imagebuf:print_uncaught_errors", 0);
}

OIIOImageHandler::OIIOImageHandler(const OIIOImageHandler&) = default;
OIIOImageHandler& OIIOImageHandler::operator=(const OIIOImageHandler&) = default;
OIIOImageHandler::~OIIOImageHandler() = default;

IClone* OIIOImageHandler::Clone() {
    return this;
}

int OIIOImageHandler::CurObjectCount() const {
    return NetObjectCount();
}

// --- Loading and describing ------------------------------------------------------------------------------------------

IMemoryWrapper<void>* OIIOImageHandler::LoadTexture(ImageDescription& desc, const KString& path, int width, int height,
                                                    int /*depth*/, EFormat format, bool highQualityResize, int level,
                                                    EDataOrientation orientation, IImageFormatHandler* formatHandler) {
    return AsOperation<IMemoryWrapper<void>*>(nullptr, [&] {
        const LoadRequest request{width, height,      format,        highQualityResize,
                                  level, orientation, formatHandler, Common::HostLoadPreferences()};
        return WantsIsolation(request.preferences) ? LoadTextureIsolated(desc, path, request)
                                                   : Devices::LoadTexture(desc, path, request);
    });
}

IMemoryWrapper<void>* OIIOImageHandler::LoadTexture(ImageDescription& desc, const KString& path, int width, int height,
                                                    int depth, EFormat format, int level, EDataOrientation orientation,
                                                    IImageFormatHandler* formatHandler) {
    IImageHandler& self = *this;
    return self.LoadTexture(desc, path, width, height, depth, format, false, level, orientation, formatHandler);
}

ImageDesc* OIIOImageHandler::GetImageDesc(const KString& path) {
    return AsOperation<ImageDesc*>(nullptr, [&] {
        return WantsIsolation(Common::HostLoadPreferences()) ? DescribeImageIsolated(path) : DescribeImage(path);
    });
}

IFileInspection* OIIOImageHandler::Inspect(const KString& path) {
    return AsOperation<IFileInspection*>(nullptr, [&] {
        return WantsIsolation(Common::HostLoadPreferences()) ? InspectFileIsolated(path) : InspectFile(path);
    });
}

const char* OIIOImageHandler::ReadableExtensions() {
    return AsOperation("", [] { return Devices::ReadableExtensions(); });
}

const char* OIIOImageHandler::WritableExtensions() {
    return AsOperation("", [] { return Devices::WritableExtensions(); });
}

unsigned char* OIIOImageHandler::LoadTextureByOIIO(ImageDescription& desc, const KString& path, int width, int height,
                                                   int /*depth*/, EFormat format, bool highQualityResize, int level,
                                                   EDataOrientation orientation, IImageFormatHandler* formatHandler,
                                                   int fileType) {
    const LoadRequest request{width, height,      format,        highQualityResize,
                              level, orientation, formatHandler, Common::HostLoadPreferences()};
    return Devices::LoadTextureByOIIO(desc, path, request, fileType).release();
}

unsigned char* OIIOImageHandler::LoadSpecial(ImageDescription& desc, const KString& path, int width, int height,
                                             bool highQualityResize, int level, EDataOrientation orientation,
                                             int fileType) {
    const LoadRequest request{width, height,      kUnknown, highQualityResize,
                              level, orientation, nullptr,  Common::HostLoadPreferences()};
    return Devices::LoadSpecial(desc, path, request, fileType).value_or(nullptr).release();
}

ImageDesc* OIIOImageHandler::GetImageDescByOIIO(OIIO::ImageInput* input, int fileType, bool ddsAlphaVariant) {
    return Devices::GetImageDescByOIIO(input, fileType, ddsAlphaVariant);
}

int OIIOImageHandler::GetNumberOfFrames(OIIO::ImageInput* input, int fileType) {
    return Devices::GetNumberOfFrames(input, fileType);
}

void OIIOImageHandler::GetAlphaProperty(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec,
                                        bool& hasTransparentPixels, bool& hasTranslucentPixels) {
    Devices::GetAlphaProperty(data, size, spec, hasTransparentPixels, hasTranslucentPixels);
}

void OIIOImageHandler::SetToOpaque(unsigned char* data, std::size_t size, const OIIO::ImageSpec& spec) {
    Devices::SetToOpaque(data, size, spec);
}

// --- Pixel formats and geometry --------------------------------------------------------------------------------------

OIIO::ImageSpec OIIOImageHandler::FormatToImageSpec(const EFormat& format, const OIIO::ImageSpec& base) {
    return Devices::FormatToImageSpec(format, base);
}

EFormat OIIOImageHandler::ImageSpecToFormat(const OIIO::ImageSpec& spec) {
    return Devices::ImageSpecToFormat(spec);
}

bool OIIOImageHandler::CanConvertTo(EFormat from, EFormat to) {
    return Devices::CanConvertTo(from, to);
}

bool OIIOImageHandler::NeedConvert(EFormat from, int fromKind, EFormat to, int toKind) {
    return Devices::NeedConvert(from, fromKind, to, toKind);
}

bool OIIOImageHandler::FormatConversion(EFormat from, std::size_t srcBytes, void* src, EFormat to, void*& dst,
                                        std::size_t& dstBytes) {
    return Devices::FormatConversion(from, srcBytes, src, to, dst, dstBytes);
}

int OIIOImageHandler::ToOIIOOrientation(const EDataOrientation& orientation) {
    return Devices::ToOIIOOrientation(orientation);
}

OIIO::ImageBuf OIIOImageHandler::ReorientImage(const OIIO::ImageBuf& image, int from, int to) {
    return Devices::ReorientImage(image, from, to);
}

bool OIIOImageHandler::AdaptiveResize(OIIO::ImageBuf& dst, const OIIO::ImageBuf& src, bool highQuality) {
    return Devices::AdaptiveResize(dst, src, highQuality);
}

// --- Writing ---------------------------------------------------------------------------------------------------------

bool OIIOImageHandler::SaveTexture(const KString& path, const ImageDescription& desc, const void* data) {
    return AsOperation(false, [&] { return Devices::SaveTexture(path, desc, data); });
}

bool OIIOImageHandler::SaveTexture(const KString&) {
    return AsOperation(false, [] {
        Common::Say(kFailureArguments, "no picture was given");
        return false;
    });
}

bool OIIOImageHandler::SaveTarget(const KString& path, ATarget* target, bool stretch) {
    return AsOperation(false, [&] { return Devices::SaveTarget(*this, path, target, stretch); });
}

bool OIIOImageHandler::writeImageOneLineAtATime(const KString& path, double resolution,
                                                IWriteImageLineProvider* provider, int width, int height,
                                                int channels) const {
    return AsOperation(false, [&] { return WriteImageLines(path, resolution, provider, width, height, channels); });
}

// --- Pixels and image objects ----------------------------------------------------------------------------------------

IMemoryWrapper<void>* OIIOImageHandler::Resize(EResizeMethod method, const void* data, std::size_t dataSize,
                                               int srcPitch, const vec3<int>& srcSize, EFormat format,
                                               ETextureType type, const vec3<int>& dstSize, int& dstPitch,
                                               EImageFilterType filter) {
    return AsOperation<IMemoryWrapper<void>*>(nullptr, [&] {
        return Devices::Resize(method, data, dataSize, srcPitch, srcSize, format, type, dstSize, dstPitch, filter);
    });
}

IImage* OIIOImageHandler::CreateImage(int width, int height, EFormat format) {
    return MakeImage([&] { return new OIIOImage(width, height, format); });
}

IImage* OIIOImageHandler::CreateImage(ATarget* target) {
    return MakeImage([&] { return new OIIOImage(target); });
}

IImage* OIIOImageHandler::CreateImage(ASimpleTexture* texture) {
    return MakeImage([&] { return new OIIOImage(texture); });
}

// --- Light -----------------------------------------------------------------------------------------------------------

vec4<float> OIIOImageHandler::GetAverageColor(const ImageDescription& desc, const void* data, bool flag) {
    return AsOperation(vec4<float>{}, [&] { return AverageColor(desc, data, flag); });
}

vec3<float> OIIOImageHandler::GetIBLIntensity(const ImageDescription& desc, const void* data, bool upperHemisphere,
                                              vec3<float>* averageColour) {
    return AsOperation(kNoLightIntensity, [&] { return LightIntensity(desc, data, upperHemisphere, averageColour); });
}

unsigned OIIOImageHandler::FindIBLLightDirections(const ImageDescription& desc, const void* data,
                                                  vec3<float>* const directions, vec3<float>* const colours,
                                                  unsigned maxCount) {
    return AsOperation(0U, [&] { return FindLightDirections(desc, data, directions, colours, maxCount); });
}

}  // namespace Kavra::Devices
