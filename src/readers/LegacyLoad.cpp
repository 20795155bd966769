#include "readers/LegacyLoad.h"

#include "common/Limits.h"
#include "common/PackedLayout.h"
#include "common/PixelFormats.h"
#include "load/geometry/Reshape.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageReaderInterface.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;

void Describe(ImageReaderInterface& reader, EDataOrientation wanted, ImageDescription& desc) {
    // In this order, one call each.
    const int width = reader.GetWidth(), height = reader.GetHeight();
    const EFormat format = reader.GetFormat();
    desc = Common::DescribePacked(width, height, format);
    desc.rowPitch = reader.GetRowPitch();
    desc.dataSize = static_cast<std::uint64_t>(std::int64_t{height} * desc.rowPitch);
    desc.defaultOrientation = wanted == kTopLeft;  // of what is asked for, not of what the file has
    desc.orientation = reader.GetOrientation();
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

/// Shrinks and turns the block that `desc` describes, and brings `desc` up to date.
PixelBlock Fit(PixelBlock block, ImageDescription& desc, const LoadRequest& request, const Fitting& fitting) {
    // A format without pixels, or rows with gaps between them: no reader has those, and no image could lie over them.
    const bool isPacked = desc.rowPitch == Common::PackedRowBytes(desc.format, desc.width);
    if (!Common::FactsOf(desc.format).inLibrary || !isPacked) return nullptr;

    Raster fitted = Reshape(PackedRaster(desc.format, desc.width, desc.height, std::move(block), desc.dataSize),
                            {.width = fitting.width,
                             .height = fitting.height,
                             .scaling = request.highQuality ? Scaling::kMitchell : Scaling::kAdaptive,
                             .from = desc.orientation,
                             .to = request.orientation});
    if (!fitted) return nullptr;
    Common::SetPacked(desc, fitted.width, fitted.height, fitted.format);
    desc.orientation = request.orientation;
    return std::move(fitted.block);
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
