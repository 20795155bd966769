// Reading a rectangle of an image object back.

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/Sys.h>
#include <kavra/oiio/OIIOImage.h>

#include <OpenImageIO/imagebuf.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "common/Boundary.h"
#include "common/PixelBlock.h"
#include "common/WrappedBlock.h"
#include "formats/FormatConversion.h"
#include "formats/PixelFormatMapping.h"
#include "load/geometry/AdaptiveResize.h"
#include "load/geometry/Reorientation.h"
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

/// A zeroed block of `rows` rows.
PixelBlock NewRows(std::size_t rows, std::size_t rowBytes) {
    if (rows > std::numeric_limits<std::size_t>::max() / rowBytes) throw std::bad_alloc();
    return Common::NewZeroedBlock(rows * rowBytes);
}

/// The picture that a rectangle is taken from.
struct Whole {
    unsigned char* pixels;
    int width, height;
    EFormat format;

    std::size_t PixelBytes() const { return PixelBytesOf(format); }
    std::size_t RowBytes() const { return static_cast<std::size_t>(width) * PixelBytes(); }
    unsigned char* Pixel(std::int64_t x, std::int64_t y) const {
        return pixels + static_cast<std::size_t>(y) * RowBytes() + static_cast<std::size_t>(x) * PixelBytes();
    }
    bool Contains(Size origin, Size size) const {
        return origin.x >= 0 && origin.y >= 0 && std::int64_t{origin.x} + size.x <= width &&
               std::int64_t{origin.y} + size.y <= height;
    }
};

/// A rectangle on its way out. As long as nothing was done to them its pixels are the picture's own.
struct Cut {
    PixelBlock block;  // outlives the image over it
    ImageBuf image;
};

/// Copies what of the rectangle lies inside the picture into `block`, which holds all of it.
void CopyInside(const Whole& whole, Size origin, Size size, unsigned char* block) {
    const std::int64_t left = std::max(origin.x, 0), top = std::max(origin.y, 0);
    const std::int64_t right = std::min<std::int64_t>(std::int64_t{origin.x} + size.x, whole.width);
    const std::int64_t bottom = std::min<std::int64_t>(std::int64_t{origin.y} + size.y, whole.height);
    if (left >= right) return;
    const std::size_t blockRow = static_cast<std::size_t>(size.x) * whole.PixelBytes();
    const std::size_t indent = static_cast<std::size_t>(left - origin.x) * whole.PixelBytes();
    for (std::int64_t y = top; y < bottom; ++y) {
        std::memcpy(block + static_cast<std::size_t>(y - origin.y) * blockRow + indent, whole.Pixel(left, y),
                    static_cast<std::size_t>(right - left) * whole.PixelBytes());
    }
}

Cut CutOut(const Whole& whole, Size origin, Size size) {
    const ImageSpec spec = PixelSpec(whole.format, size.x, size.y);
    if (whole.Contains(origin, size)) {
        return {nullptr,
                ImageBuf(spec, whole.Pixel(origin.x, origin.y), static_cast<OIIO::stride_t>(whole.PixelBytes()),
                         static_cast<OIIO::stride_t>(whole.RowBytes()))};
    }
    PixelBlock block = NewRows(static_cast<std::size_t>(size.y), static_cast<std::size_t>(size.x) * whole.PixelBytes());
    CopyInside(whole, origin, size, block.get());
    ImageBuf image(spec, block.get());
    return {std::move(block), std::move(image)};
}

/// Where the library fails the result stays zero.
Cut Scaled(const Cut& cut, EFormat format, Size size) {
    PixelBlock block =
        NewRows(static_cast<std::size_t>(size.y), static_cast<std::size_t>(size.x) * PixelBytesOf(format));
    ImageBuf image(PixelSpec(format, size.x, size.y), block.get());
    (void)AdaptiveResize(image, cut.image, false);
    return {std::move(block), std::move(image)};
}

/// Whether a description can hold the pitch of the rectangle's rows, once it is turned.
bool FitsPitch(Size size, int exifOrientation, EFormat format) {
    constexpr int kFirstQuarterTurn = 5;  // from this number on rows become columns
    const int width = exifOrientation >= kFirstQuarterTurn ? size.y : size.x;
    return std::uint64_t{PixelBytesOf(format)} * static_cast<std::uint64_t>(width) <=
           std::uint64_t{std::numeric_limits<std::int32_t>::max()};
}

void DescribeRows(ImageDescription& desc, const ImageSpec& spec, EFormat format, EDataOrientation orientation) {
    desc.width = spec.width;
    desc.height = spec.height;
    desc.depth = 1;
    desc.format = format;
    desc.rowPitch = static_cast<std::int32_t>(PixelBytesOf(format)) * spec.width;
    desc.dataSize = static_cast<std::uint64_t>(desc.rowPitch) * static_cast<std::uint64_t>(spec.height);
    desc.orientation = orientation;
    desc.defaultOrientation = orientation == kTopLeft;
}

/// The pixels as they are, in packed rows.
PixelBlock Packed(const ImageBuf& image) {
    const ImageSpec& spec = image.spec();
    const std::size_t rowBytes = spec.scanline_bytes(), rows = static_cast<std::size_t>(spec.height);
    PixelBlock block = Common::NewBlock(rows * rowBytes);
    const auto* const first = static_cast<const unsigned char*>(image.localpixels());
    for (std::size_t y = 0; y < rows; ++y)
        std::memcpy(block.get() + y * rowBytes, first + static_cast<std::ptrdiff_t>(y) * image.scanline_stride(),
                    rowBytes);
    return block;
}

PixelBlock Converted(const ImageBuf& image, EFormat from, EFormat to) {
    const PixelBlock packed = Packed(image);
    void* converted = nullptr;
    std::size_t bytes = 0;
    FormatConversion(from, image.spec().image_bytes(), packed.get(), to, converted, bytes);
    return PixelBlock(static_cast<unsigned char*>(converted));
}

template <class T>
void FillAlpha(unsigned char* block, std::size_t pixels, T opaque) {
    for (std::size_t i = 0; i < pixels; ++i)
        std::memcpy(block + (4 * i + 3) * sizeof(T), &opaque, sizeof(T));
}

/// A block of pixels that are black and, of four channels, opaque.
PixelBlock NewBlack(const ImageSpec& spec) {
    PixelBlock block = Common::NewZeroedBlock(spec.image_bytes());
    if (spec.nchannels != 4) return block;
    constexpr std::uint16_t kHalfOne = 0x3C00;  // 1.0 of IEEE 754 binary16
    switch (spec.format.basetype) {
        case OIIO::TypeDesc::UINT8:
            FillAlpha<std::uint8_t>(block.get(), spec.image_pixels(), 255);
            break;
        case OIIO::TypeDesc::UINT16:
            FillAlpha<std::uint16_t>(block.get(), spec.image_pixels(), 65535);
            break;
        case OIIO::TypeDesc::HALF:
            FillAlpha<std::uint16_t>(block.get(), spec.image_pixels(), kHalfOne);
            break;
        default:
            FillAlpha<float>(block.get(), spec.image_pixels(), 1.0F);
    }
    return block;
}

/// The pixels in another element type and with another number of channels. Only the channels that both have are
/// fetched, since the library writes every channel that it is asked for, whatever a pixel has room for.
PixelBlock Fetched(const ImageBuf& image, const ImageSpec& wanted) {
    OIIO::ROI region = image.roi();
    region.chend = std::min(image.nchannels(), wanted.nchannels);
    PixelBlock block = region.chend < wanted.nchannels ? NewBlack(wanted) : Common::NewBlock(wanted.image_bytes());
    const auto stride = static_cast<OIIO::stride_t>(wanted.pixel_bytes());
    return image.get_pixels(region, wanted.format, block.get(), stride) ? std::move(block) : nullptr;
}

PixelBlock Delivered(const ImageBuf& image, EFormat from, EFormat to) {
    const ImageSpec& spec = image.spec();
    const ImageSpec wanted = PixelSpec(to, spec.width, spec.height);
    const bool needsConversion = NeedConvert(from, spec.nchannels, to, wanted.nchannels);
    if (needsConversion && CanConvertTo(from, to)) return Converted(image, from, to);
    const bool isSame = spec.format == wanted.format && spec.nchannels == wanted.nchannels;
    return isSame ? Packed(image) : Fetched(image, wanted);
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
        const int turned = ToOIIOOrientation(orientation);
        if (!IsSize(size) || !IsSize(outSize) || !FitsPitch(outSize, turned, format)) return nullptr;
        constexpr int kMost = std::numeric_limits<int>::max();
        if (std::int64_t{origin.x} + size.x > kMost || std::int64_t{origin.y} + size.y > kMost) return nullptr;

        Cut cut = CutOut({mPixels.get(), mWidth, mHeight, mFormat}, origin, size);
        if (outSize.x != size.x || outSize.y != size.y) {
            Cut scaled = Scaled(cut, mFormat, outSize);
            std::swap(cut, scaled);
        }
        if (turned != 1) cut.image = ReorientImage(cut.image, 1, turned);
        if (!cut.image.initialized()) return nullptr;

        DescribeRows(desc, cut.image.spec(), format, orientation);
        PixelBlock block = Delivered(cut.image, mFormat, format);
        return block ? Common::WrapBlock(std::move(block)) : nullptr;
    });
}

}  // namespace Kavra::Devices
