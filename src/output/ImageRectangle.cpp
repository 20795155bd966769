// Reading a rectangle of an image object back.

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/Sys.h>
#include <kavra/oiio/OIIOImage.h>

#include <OpenImageIO/imagebuf.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "common/Boundary.h"
#include "common/PixelBlock.h"
#include "common/PixelFormats.h"
#include "common/WrappedBlock.h"
#include "formats/FormatConversion.h"
#include "formats/PixelFormatMapping.h"
#include "load/geometry/AdaptiveResize.h"
#include "load/geometry/Reorientation.h"
#include "output/PackedRows.h"
#include "output/PixelSpec.h"

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;
using OIIO::ImageBuf;
using OIIO::ImageSpec;
using Size = vec2<int>;

std::size_t PixelBytesOf(EFormat format) {
    return static_cast<std::size_t>(Utilities::AFormatConvertor::BytesPerPixel(format));
}

bool IsSize(Size size) {
    return size.x > 0 && size.y > 0;
}

/// The picture that a rectangle is taken from.
struct Whole {
    const unsigned char* pixels;
    int width, height;
    EFormat format;

    std::size_t PixelBytes() const { return PixelBytesOf(format); }
    std::size_t RowBytes() const { return static_cast<std::size_t>(width) * PixelBytes(); }
    const unsigned char* Pixel(std::int64_t x, std::int64_t y) const {
        return pixels + static_cast<std::size_t>(y) * RowBytes() + static_cast<std::size_t>(x) * PixelBytes();
    }
    bool Contains(Size origin, Size size) const {
        return origin.x >= 0 && origin.y >= 0 && std::int64_t{origin.x} + size.x <= width &&
               std::int64_t{origin.y} + size.y <= height;
    }
};

/// A rectangle on its way out. As long as nothing was done to them its pixels are the picture's own.
struct Cut {
    int width, height;
    EFormat format;
    const unsigned char* first;
    std::size_t pitch;
    PixelBlock block = nullptr;                   // the pixels that are not the picture's
    std::unique_ptr<ImageBuf> rotated = nullptr;  // or whose they are

    std::size_t RowBytes() const { return static_cast<std::size_t>(width) * PixelBytesOf(format); }
};

Cut InBlock(Size size, EFormat format, PixelBlock block) {
    const unsigned char* const first = block.get();
    return {size.x, size.y, format, first, static_cast<std::size_t>(size.x) * PixelBytesOf(format), std::move(block)};
}

/// The cut's pixels as the library sees them. It ends the process when there is no memory for even that.
ImageBuf LibraryImage(const Cut& cut) {
    return ImageBuf(PixelSpec(cut.format, cut.width, cut.height), const_cast<unsigned char*>(cut.first),
                    static_cast<OIIO::stride_t>(PixelBytesOf(cut.format)), static_cast<OIIO::stride_t>(cut.pitch));
}

/// Copies what of the rectangle lies inside the picture into `block`, which holds all of it.
void CopyInside(const Whole& whole, Size origin, Size size, unsigned char* block) {
    const std::int64_t left = std::max(origin.x, 0), top = std::max(origin.y, 0);
    const std::int64_t right = std::min<std::int64_t>(std::int64_t{origin.x} + size.x, whole.width);
    const std::int64_t bottom = std::min<std::int64_t>(std::int64_t{origin.y} + size.y, whole.height);
    if (left >= right || top >= bottom) return;
    const std::size_t blockPitch = static_cast<std::size_t>(size.x) * whole.PixelBytes();
    const std::size_t indent = static_cast<std::size_t>(left - origin.x) * whole.PixelBytes();
    MoveRows(block + static_cast<std::size_t>(top - origin.y) * blockPitch + indent, blockPitch,
             {.first = whole.Pixel(left, top),
              .pitch = whole.RowBytes(),
              .bytes = static_cast<std::size_t>(right - left) * whole.PixelBytes(),
              .count = static_cast<std::size_t>(bottom - top)});
}

Cut CutOut(const Whole& whole, Size origin, Size size) {
    if (whole.Contains(origin, size))
        return {size.x, size.y, whole.format, whole.Pixel(origin.x, origin.y), whole.RowBytes()};
    PixelBlock block = NewRows(static_cast<std::size_t>(size.y), static_cast<std::size_t>(size.x) * whole.PixelBytes());
    CopyInside(whole, origin, size, block.get());
    return InBlock(size, whole.format, std::move(block));
}

/// Where the library fails the result stays zero.
Cut Scaled(const Cut& cut, Size size) {
    PixelBlock block =
        NewRows(static_cast<std::size_t>(size.y), static_cast<std::size_t>(size.x) * PixelBytesOf(cut.format));
    ImageBuf image(PixelSpec(cut.format, size.x, size.y), block.get());
    (void)AdaptiveResize(image, LibraryImage(cut), false);
    return InBlock(size, cut.format, std::move(block));
}

/// Returns nothing if the library fails.
std::optional<Cut> Rotated(const Cut& cut, int exifOrientation) {
    auto image = std::make_unique<ImageBuf>(ReorientImage(LibraryImage(cut), 1, exifOrientation));
    if (!image->initialized() || image->localpixels() == nullptr || image->scanline_stride() < 0) return std::nullopt;
    const ImageSpec& spec = image->spec();
    return Cut{spec.width,
               spec.height,
               cut.format,
               static_cast<const unsigned char*>(image->localpixels()),
               static_cast<std::size_t>(image->scanline_stride()),
               nullptr,
               std::move(image)};
}

/// Whether a description can hold the pitch of the rectangle's rows, once it is rotated.
bool FitsPitch(Size size, int exifOrientation, EFormat format) {
    constexpr int kFirstTransposed = 5;  // from this number on rows become columns
    const int width = exifOrientation >= kFirstTransposed ? size.y : size.x;
    return std::uint64_t{PixelBytesOf(format)} * static_cast<std::uint64_t>(width) <=
           std::uint64_t{std::numeric_limits<std::int32_t>::max()};
}

void DescribeRows(ImageDescription& desc, const Cut& cut, EFormat format, EDataOrientation orientation) {
    desc.width = cut.width;
    desc.height = cut.height;
    desc.depth = 1;
    desc.format = format;
    desc.rowPitch = static_cast<std::int32_t>(PixelBytesOf(format)) * cut.width;
    desc.dataSize = static_cast<std::uint64_t>(desc.rowPitch) * static_cast<std::uint64_t>(cut.height);
    desc.orientation = orientation;
    desc.defaultOrientation = orientation == kTopLeft;
}

/// The pixels as they are, in packed rows.
PixelBlock Packed(const Cut& cut) {
    return PackRows({cut.first, cut.pitch, cut.RowBytes(), static_cast<std::size_t>(cut.height)});
}

PixelBlock Converted(const Cut& cut, EFormat to) {
    const PixelBlock packed = Packed(cut);
    void* converted = nullptr;
    std::size_t bytes = 0;
    FormatConversion(cut.format, cut.RowBytes() * static_cast<std::size_t>(cut.height), packed.get(), to, converted,
                     bytes);
    return PixelBlock(static_cast<unsigned char*>(converted));
}

template <class T>
void FillAlpha(unsigned char* block, std::size_t pixels, T opaque) {
    for (std::size_t i = 0; i < pixels; ++i)
        std::memcpy(block + (4 * i + 3) * sizeof(T), &opaque, sizeof(T));
}

/// A block of pixels that are black and, of four channels, opaque.
PixelBlock NewBlack(const Common::PixelFormat& format, std::size_t pixels) {
    PixelBlock block = NewRows(pixels, static_cast<std::size_t>(format.BytesPerPixel()));
    if (format.channels != 4) return block;
    constexpr std::uint16_t kHalfOne = 0x3C00;  // 1.0 of IEEE 754 binary16
    switch (format.element) {
        case Common::ElementType::kUInt8:
            FillAlpha<std::uint8_t>(block.get(), pixels, 255);
            break;
        case Common::ElementType::kUInt16:
            FillAlpha<std::uint16_t>(block.get(), pixels, 65535);
            break;
        case Common::ElementType::kHalf:
            FillAlpha<std::uint16_t>(block.get(), pixels, kHalfOne);
            break;
        default:
            FillAlpha<float>(block.get(), pixels, 1.0F);
    }
    return block;
}

/// The pixels in another element type and with another number of channels. Only the channels that both have are
/// fetched, since the library writes every channel that it is asked for, whatever the stride of a pixel.
PixelBlock Fetched(const Cut& cut, EFormat to) {
    const ImageBuf image = LibraryImage(cut);
    const ImageSpec wanted = PixelSpec(to, cut.width, cut.height);
    OIIO::ROI region = image.roi();
    region.chend = std::min(image.nchannels(), wanted.nchannels);
    PixelBlock block = region.chend < wanted.nchannels ? NewBlack(Common::FactsOf(to), wanted.image_pixels())
                                                       : Common::NewBlock(wanted.image_bytes());
    const auto stride = static_cast<OIIO::stride_t>(wanted.pixel_bytes());
    return image.get_pixels(region, wanted.format, block.get(), stride) ? std::move(block) : nullptr;
}

PixelBlock Delivered(const Cut& cut, EFormat to) {
    const Common::PixelFormat& from = Common::FactsOf(cut.format);
    const Common::PixelFormat& wanted = Common::FactsOf(to);
    const bool needsConversion = NeedConvert(cut.format, from.channels, to, wanted.channels);
    if (needsConversion && CanConvertTo(cut.format, to)) return Converted(cut, to);
    const bool isSame = from.element == wanted.element && from.channels == wanted.channels;
    return isSame ? Packed(cut) : Fetched(cut, to);
}

}  // namespace

IMemoryWrapper<void>* OIIOImage::LoadRect(ImageDescription& desc, vec2<int> origin, vec2<int> size, vec2<int> outSize,
                                          EFormat format, EDataOrientation orientation) {
    return Common::AtBoundary<IMemoryWrapper<void>*>(nullptr, [&]() -> IMemoryWrapper<void>* {
        if (!mPixels) return nullptr;
        if (!HasPixels(format)) {
            Sys::Warning(L"Raster format not supported", nullptr);
            return nullptr;
        }
        const int exifOrientation = ToOIIOOrientation(orientation);
        if (!IsSize(size) || !IsSize(outSize) || !FitsPitch(outSize, exifOrientation, format)) return nullptr;
        constexpr int kMax = std::numeric_limits<int>::max();
        if (std::int64_t{origin.x} + size.x > kMax || std::int64_t{origin.y} + size.y > kMax) return nullptr;

        std::optional<Cut> cut = CutOut({mPixels.get(), mWidth, mHeight, mFormat}, origin, size);
        if (outSize.x != size.x || outSize.y != size.y) cut = Scaled(*cut, outSize);
        if (exifOrientation != 1) cut = Rotated(*cut, exifOrientation);
        if (!cut) return nullptr;

        DescribeRows(desc, *cut, format, orientation);
        PixelBlock block = Delivered(*cut, format);
        return block ? Common::WrapBlock(std::move(block)) : nullptr;
    });
}

}  // namespace Kavra::Devices
