#include "readers/LegacyLoad.h"

#include "common/Limits.h"
#include "formats/PixelFormatMapping.h"
#include "load/geometry/AdaptiveResize.h"
#include "load/geometry/Reorientation.h"
#include "common/ByteSource.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageReaderInterface.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;

constexpr double kGamma = 2.2;

/// An image over a block of the allocator. It is never the library's own memory, since the library ends the process
/// where it gets none.
struct Working {
    PixelBlock block;
    OIIO::ImageBuf image;
};

void Describe(ImageReaderInterface& reader, EDataOrientation wanted, ImageDescription& desc) {
    desc.width = reader.GetWidth();
    desc.height = reader.GetHeight();
    desc.depth = 1;
    desc.format = reader.GetFormat();
    desc.rowPitch = reader.GetRowPitch();
    desc.dataSize = static_cast<std::uint64_t>(std::int64_t{desc.height} * desc.rowPitch);
    desc.textureType = kTexture2D;
    desc.hasTransparentPixels = false;
    desc.hasTranslucentPixels = false;
    desc.hasAlpha = false;
    desc.defaultOrientation = wanted == kTopLeft;  // of what is asked for, not of what the file has
    desc.orientation = reader.GetOrientation();
    desc.gamma = kGamma;
}

int Limited(int side, int limit) {
    return limit < 1 ? side : std::min(side, limit);
}

/// What is to be made of a picture once it is decoded.
struct Fitting {
    int width, height;
    bool shrinks, turns;

    Fitting(const ImageDescription& desc, const LoadRequest& request)
        : width(Limited(desc.width, request.width)),
          height(Limited(desc.height, request.height)),
          shrinks(width != desc.width || height != desc.height),
          turns(request.orientation != desc.orientation) {}

    bool IsNeeded() const { return shrinks || turns; }
};

/// Asked before the block is, since memory that was given out and is not there when it is touched ends the process. A
/// picture that is shrunk or turned stands in memory twice, as it was and as it becomes.
bool IsWithinLimits(ImageReaderInterface& reader, const ImageDescription& desc, const Fitting& fitting) {
    const auto isSide = [](int side) { return side >= 1 && side <= Common::kMaxSide; };
    if (!isSide(desc.width) || !isSide(desc.height) || desc.rowPitch < 1) return false;
    const std::int64_t fittedBytes =
        fitting.IsNeeded() ? Common::Product(std::int64_t{fitting.width} * fitting.height, desc.rowPitch / desc.width)
                           : 0;
    return Common::ReaderBounds().Hold({.pixels = static_cast<std::uint64_t>(std::int64_t{desc.width} * desc.height),
                                        .blockBytes = desc.dataSize,
                                        .workingBytes = Common::Sum<std::uint64_t>(
                                            reader.GetWorkingBytes(), static_cast<std::uint64_t>(fittedBytes))});
}

OIIO::ImageSpec SpecOf(const ImageDescription& desc) {
    return FormatToImageSpec(desc.format, OIIO::ImageSpec(desc.width, desc.height, 4, OIIO::TypeDesc::UINT8));
}

Working Wrap(PixelBlock block, const OIIO::ImageSpec& spec) {
    OIIO::ImageBuf image(spec, block.get());
    return {std::move(block), std::move(image)};
}

/// What cannot be shrunk stays zero.
Working Shrink(const OIIO::ImageBuf& image, int width, int height, bool highQuality) {
    OIIO::ImageSpec spec = image.spec();
    spec.width = spec.full_width = width;
    spec.height = spec.full_height = height;
    Working shrunk = Wrap(Common::NewZeroedBlock(spec.image_bytes()), spec);
    (void)AdaptiveResize(shrunk.image, image, highQuality);
    return shrunk;
}

OIIO::ImageBuf Turn(const OIIO::ImageBuf& image, EDataOrientation from, EDataOrientation to) {
    return ReorientImage(image, ToOIIOOrientation(from), ToOIIOOrientation(to));
}

/// Null when the image holds nothing.
PixelBlock CopyPixels(const OIIO::ImageBuf& image) {
    if (!image.initialized()) return nullptr;
    PixelBlock block = Common::NewBlock(image.spec().image_bytes());
    const bool copied = image.get_pixels(OIIO::ROI::All(), image.spec().format, block.get());
    return copied ? std::move(block) : nullptr;
}

void DescribeFitted(const OIIO::ImageSpec& spec, EDataOrientation orientation, ImageDescription& desc) {
    desc.width = spec.width;
    desc.height = spec.height;
    desc.rowPitch = static_cast<std::int32_t>(spec.pixel_bytes()) * spec.width;
    desc.dataSize = spec.image_bytes();
    desc.orientation = orientation;
}

/// Shrinks and turns the block that `desc` describes, and brings `desc` up to date.
PixelBlock Fit(PixelBlock block, ImageDescription& desc, const LoadRequest& request, const Fitting& fitting) {
    const OIIO::ImageSpec spec = SpecOf(desc);
    // A format without pixels, or rows with gaps between them: no reader has those, and no image could lie over them.
    if (spec.image_bytes() != desc.dataSize) return nullptr;

    Working working = Wrap(std::move(block), spec);
    if (fitting.shrinks) working = Shrink(working.image, fitting.width, fitting.height, request.highQuality);
    if (!fitting.turns) {
        DescribeFitted(working.image.spec(), request.orientation, desc);
        return std::move(working.block);
    }
    const OIIO::ImageBuf turned = Turn(working.image, desc.orientation, request.orientation);
    working = {};  // there are never more than two of them
    PixelBlock result = CopyPixels(turned);
    if (result) DescribeFitted(turned.spec(), request.orientation, desc);
    return result;
}

}  // namespace

PixelBlock LoadThroughReader(ImageReaderInterface& reader, ImageDescription& desc, const KString& path,
                             const LoadRequest& request) {
    if (!reader.Open(path)) return nullptr;
    Describe(reader, request.orientation, desc);
    const Fitting fitting(desc, request);
    if (!IsWithinLimits(reader, desc, fitting)) return nullptr;

    PixelBlock block = Common::NewZeroedBlock(desc.dataSize);
    if (!reader.ReadImage(block.get(), request.level)) return nullptr;

    return fitting.IsNeeded() ? Fit(std::move(block), desc, request, fitting) : std::move(block);
}

PixelBlock LoadSpecial(ImageDescription& desc, const KString& path, const LoadRequest& request, int fileType) {
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(fileType));
    return reader ? LoadThroughReader(*reader, desc, path, request) : nullptr;
}

}  // namespace Kavra::Devices
