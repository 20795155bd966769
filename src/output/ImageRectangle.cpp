// Reading a rectangle of an image object back.

#include "common/Boundary.h"
#include "common/HostExtras.h"
#include "common/PackedLayout.h"
#include "common/PixelBlock.h"
#include "common/PixelFormats.h"
#include "common/WrappedBlock.h"
#include "formats/FormatConversion.h"
#include "formats/PixelFormatMapping.h"
#include "load/AlphaAnalysis.h"
#include "load/geometry/NewImage.h"
#include "load/geometry/Reshape.h"
#include "output/PixelSpec.h"

#include <kavra/devices/Sys.h>
#include <kavra/oiio/OIIOImage.h>

#include <OpenImageIO/imagebuf.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;
using Size = vec2<int>;

bool IsSize(Size size) {
    return size.x > 0 && size.y > 0;
}

/// Whether a description can hold the pitch of the rectangle's rows, once it is rotated.
bool FitsPitch(Size size, EDataOrientation orientation, EFormat format) {
    const int width = SwapsSides(kTopLeft, orientation) ? size.y : size.x;
    return Common::FitsPitch(Common::PackedRowBytes(format, width));
}

PixelBlock Converted(Raster cut, EFormat to) {
    const EFormat from = cut.format;
    const std::size_t bytes = cut.PackedBytes();
    const PixelBlock packed = Pack(std::move(cut));
    void* converted = nullptr;
    std::size_t convertedBytes = 0;
    FormatConversion(from, bytes, packed.get(), to, converted, convertedBytes);
    return PixelBlock(static_cast<unsigned char*>(converted));
}

/// A block of pixels that are black and, of four channels, opaque.
PixelBlock NewBlack(EFormat format, std::size_t pixels) {
    const OIIO::ImageSpec spec = PixelSpec(format, 1, 1);
    PixelBlock block = NewRows(pixels, spec.pixel_bytes());
    SetToOpaque(block.get(), pixels * spec.pixel_bytes(), spec);
    return block;
}

/// The pixels in another element type and with another number of channels. Only the channels that both have are
/// fetched, since the library writes every channel that it is asked for, whatever the stride of a pixel.
PixelBlock Fetched(const Raster& cut, EFormat to) {
    const OIIO::ImageBuf image = WrapImage(cut);
    if (!image.initialized()) return nullptr;
    const Common::PixelFormat& wanted = Common::FactsOf(to);
    const auto pixels = static_cast<std::size_t>(cut.width) * cut.RowCount();
    const auto pixelBytes = static_cast<std::size_t>(wanted.BytesPerPixel());
    OIIO::ROI region = image.roi();
    region.chend = std::min(image.nchannels(), wanted.channels);
    PixelBlock block =
        region.chend < wanted.channels ? NewBlack(to, pixels) : NewRows(pixels, pixelBytes, Contents::kUnspecified);
    const bool done =
        image.get_pixels(region, LibraryType(wanted.element), block.get(), static_cast<OIIO::stride_t>(pixelBytes));
    return done ? std::move(block) : nullptr;
}

PixelBlock Delivered(Raster cut, EFormat to) {
    const Common::PixelFormat& from = Common::FactsOf(cut.format);
    const Common::PixelFormat& wanted = Common::FactsOf(to);
    const bool needsConversion = NeedConvert(cut.format, from.channels, to, wanted.channels);
    if (needsConversion && CanConvertTo(cut.format, to)) return Converted(std::move(cut), to);
    const bool isSame = from.element == wanted.element && from.channels == wanted.channels;
    return isSame ? Pack(std::move(cut)) : Fetched(cut, to);
}

}  // namespace

IMemoryWrapper<void>* OIIOImage::LoadRect(ImageDescription& desc, vec2<int> origin, vec2<int> size, vec2<int> outSize,
                                          EFormat format, EDataOrientation orientation) {
    return Common::AsOperation<IMemoryWrapper<void>*>(nullptr, [&]() -> IMemoryWrapper<void>* {
        if (!Common::Require(mPixels != nullptr, kFailureArguments, "the picture has no pixels")) return nullptr;
        if (!HasPixels(format)) {
            Common::Say(kFailureFormat, "pictures of this format cannot be had");
            Sys::Warning(L"Raster format not supported", nullptr);
            return nullptr;
        }
        constexpr int kMax = std::numeric_limits<int>::max();
        const bool isPossible = IsSize(size) && IsSize(outSize) && FitsPitch(outSize, orientation, format) &&
                                std::int64_t{origin.x} + size.x <= kMax && std::int64_t{origin.y} + size.y <= kMax;
        if (!Common::Require(isPossible, kFailureArguments, "there is no rectangle of this size")) return nullptr;

        Raster whole = PackedRaster(mFormat, mWidth, mHeight, mPixels.get(), 0);
        whole.bytes = whole.PackedBytes();
        const LoadRequest request{.orientation = orientation, .preferences = Common::HostLoadPreferences()};
        Raster cut = Reshape(CutOut(whole, origin, size), ReshapingFor(request, outSize.x, outSize.y, kTopLeft));
        if (!cut) return nullptr;

        Common::SetPacked(desc, cut.width, cut.height, format);
        desc.depth = 1;
        desc.orientation = orientation;
        desc.defaultOrientation = orientation == kTopLeft;
        PixelBlock block = Delivered(std::move(cut), format);
        return block ? Common::WrapBlock(std::move(block)) : nullptr;
    });
}

}  // namespace Kavra::Devices
