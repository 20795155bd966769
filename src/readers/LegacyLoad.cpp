#include "readers/LegacyLoad.h"

#include "common/Limits.h"
#include "common/PackedLayout.h"
#include "common/PixelFormats.h"
#include "load/geometry/Reshape.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::Failure;
using Common::PixelBlock;
using Common::Result;

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
/// picture that is shrunk or reordered stands in memory twice, as it was and as it becomes.
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

/// Shrinks and reorders the block that `desc` describes, and brings `desc` up to date.
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

Result<PixelBlock> LoadThroughReader(ImageReaderInterface& reader, ImageDescription& desc, PictureFiles files,
                                     const LoadRequest& request) {
    if (const Result<> opened = reader.Open(std::move(files)); !opened) return std::unexpected(opened.error());
    Describe(reader, request.orientation, desc);
    const Fitting fitting(desc, request);
    if (!IsWithinLimits(reader, desc, fitting)) return std::unexpected(Failure::kTooLarge);

    PixelBlock block = Common::NewZeroedBlock(desc.dataSize);
    if (const Result<> read = reader.ReadFrame({block.get(), desc.dataSize}, request.level); !read) {
        return std::unexpected(read.error());
    }
    if (fitting.IsNeeded()) block = Fit(std::move(block), desc, request, fitting);
    if (!block) return std::unexpected(Failure::kUnsupported);
    return block;
}

Result<PixelBlock> LoadThroughReader(ImageReaderInterface& reader, ImageDescription& desc, const KString& path,
                                     const LoadRequest& request) {
    return reader.FindFiles(path).and_then(
        [&](PictureFiles&& files) { return LoadThroughReader(reader, desc, std::move(files), request); });
}

Result<PixelBlock> LoadSpecial(ImageDescription& desc, DetectedFile file, const LoadRequest& request) {
    if (file.type == None) return std::unexpected(Failure::kCannotOpen);
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(file.type));
    if (!reader || !file.files) return std::unexpected(Failure::kUnsupported);
    return LoadThroughReader(*reader, desc, *std::move(file.files), request);
}

Result<PixelBlock> LoadSpecial(ImageDescription& desc, const KString& path, const LoadRequest& request, int fileType) {
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(fileType));
    if (!reader) return std::unexpected(Failure::kUnsupported);
    return LoadThroughReader(*reader, desc, path, request);
}

}  // namespace Kavra::Devices
