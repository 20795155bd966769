#include "load/DdsCommonLoad.h"

#include "common/HostExtras.h"
#include "common/Limits.h"
#include "common/PackedLayout.h"
#include "common/PixelFormats.h"
#include "common/Progress.h"
#include "common/Reasons.h"
#include "formats/PixelFormatMapping.h"
#include "load/AlphaAnalysis.h"
#include "load/ChosenSlice.h"
#include "load/DdsLibraryView.h"
#include "load/DdsSlices.h"
#include "load/FormatChannels.h"
#include "load/OpenInput.h"
#include "load/geometry/RowReshape.h"
#include "readers/WriteRows.h"

#include <kavra/devices/Sys.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace Kavra::Devices {

namespace {

using Common::Failure;
using Common::PixelBlock;
using Common::Result;

std::optional<DdsCommonPicture> Open(const KString& path, Common::ByteSource* open) {
    if (open != nullptr) return DdsCommonPicture::Open(open->Again());
    std::optional<Common::ByteSource> own = OpenFile(path);
    return own ? DdsCommonPicture::Open(*std::move(own)) : std::nullopt;
}

/// Whether the library finds the same faces, slices and levels at the same places.
bool IsSeenByLibrary(const DdsCommonPicture& picture) {
    const auto shape = Dds::LibraryShapeOf(picture.Header());
    const auto unit = Dds::LibraryUnitOf(picture.Header());
    return shape == picture.Shape() && unit == picture.Layout().pixels.unit && !picture.HasGaps();
}

/// Whether a load by the contract's reading takes a level's pixels from other places.
bool IsMisplaced(const DdsCommonPicture& picture) {
    const bool isLibrarys = Dds::LibraryUnitOf(picture.Header()).has_value();
    const auto shape = isLibrarys ? Dds::LibraryShapeOf(picture.Header()) : Dds::ShapeOf(picture.Header());
    const Dds::Shape& own = picture.Shape();
    if (!shape) return false;  // the host's own reader has the format's view, where the library has none
    return shape->type != own.type || shape->faces != own.faces ||
           (own.type == kTextureCube && shape->levels != own.levels);
}

/// Which the contract's reading refuses: it halves the depth of a level once more for each level.
bool IsLowerVolume(const DdsCommonPicture& picture, int level) {
    return level > 0 && picture.LevelSize(level).depth > 1;
}

/// Whether a load is wanted smaller or turned of a file that only the host's own reader takes, which does neither.
bool IsLeftAsItIs(const DdsCommonPicture& picture, const LoadRequest& request) {
    const bool isLibrarys = Dds::LibraryUnitOf(picture.Header()) && Dds::LibraryShapeOf(picture.Header());
    if (isLibrarys || WantsSlice(request.preferences)) return false;
    const Dds::Extent size = picture.LevelSize(std::max(request.level, 0));
    const bool isSmaller =
        WantedSide(request.width, size.width) < size.width || WantedSide(request.height, size.height) < size.height;
    return isSmaller || request.orientation != kTopLeft;
}

// --- Loading ---------------------------------------------------------------------------------------------------------

/// What is read of a file: one face or slice of a level, or all of them.
struct Wanted {
    int level;
    int first, count;
    ETextureType type;
    Dds::Extent size;  ///< of the level
};

/// Of a level, face or slice that is not there.
void SayWhatIsThere(const DdsCommonPicture& picture, const LoadRequest& request) {
    const int levels = picture.Shape().levels;
    if (request.level < levels)
        return SayOfSlice(request.preferences, picture.Shape().type, picture.SliceCount(std::max(request.level, 0)));
    Common::Say(kFailureOutOfRange, "there is no mip level {}; the file has {}", request.level, levels);
}

std::optional<Wanted> WantedOf(const DdsCommonPicture& picture, const LoadRequest& request) {
    const int level = std::max(request.level, 0);
    if (level >= picture.Shape().levels) return std::nullopt;
    Wanted wanted{.level = level,
                  .first = 0,
                  .count = picture.SliceCount(level),
                  .type = picture.Shape().type,
                  .size = picture.LevelSize(level)};
    if (!WantsSlice(request.preferences)) return wanted;
    const std::optional<int> slice = SliceNumber(request.preferences, wanted.type, wanted.size.depth);
    if (!slice || !picture.HasSlice(*slice)) return std::nullopt;
    wanted.first = *slice;
    wanted.count = 1;
    wanted.type = kTexture2D;
    wanted.size.depth = 1;
    return wanted;
}

void Describe(ImageDescription& desc, const DdsCommonPicture& picture, const Wanted& wanted) {
    desc = Common::DescribePacked(wanted.size.width, wanted.size.height, picture.Format());
    desc.depth = wanted.size.depth;
    desc.dataSize *= static_cast<unsigned>(wanted.size.depth);
    desc.textureType = wanted.type;
    desc.hasAlpha = picture.HasAlpha();
}

struct Fitting {
    IncomingRows picture;
    Reshaping wanted;

    Fitting(const ImageDescription& desc, const LoadRequest& request)
        : picture{.format = desc.format,
                  .width = desc.width,
                  .height = desc.height,
                  .faces = FaceCount(desc.textureType)},
          wanted(ReshapingFor(request, WantedSide(request.width, desc.width), WantedSide(request.height, desc.height),
                              kTopLeft)) {}

    bool Resizes() const { return wanted.width != picture.width || wanted.height != picture.height; }
    bool IsNeeded() const { return Resizes() || wanted.to != wanted.from; }
};

/// What a file can claim without holding it is bound as it is for the legacy formats.
bool IsWithinLimits(const DdsCommonPicture& picture, const Wanted& wanted, const ImageDescription& desc,
                    const Fitting& fitting) {
    if (!Common::FitsPitch(Common::PackedRowBytes(desc.format, desc.width))) return false;
    const auto count = static_cast<std::uint64_t>(wanted.count);
    const std::uint64_t rows = static_cast<std::uint64_t>(desc.height) * count;
    const std::uint64_t bytes = static_cast<std::uint64_t>(desc.rowPitch) * rows;
    Common::PictureSize size{.pixels = static_cast<std::uint64_t>(desc.width) * rows,
                             .blockBytes = bytes,
                             .workingBytes = picture.WorkingBytes(desc.width)};
    if (!Common::HostBounds().HoldOrSay({.pixels = size.pixels, .blockBytes = bytes})) return false;
    if (fitting.IsNeeded()) {
        const std::uint64_t reshaped = desc.depth > 1 ? bytes : RowReshape::BytesFor(fitting.picture, fitting.wanted);
        size.workingBytes = Common::Sum<std::uint64_t>(size.workingBytes, reshaped);
        if (desc.depth <= 1) size.blockBytes = 0;  // never stands in memory by itself
    }
    const Common::PictureBounds bounds = picture.IsWhole(wanted.level) ? Common::HostBounds() : Common::ReaderBounds();
    const Common::PictureBounds ceiling = {.blockBytes = Common::HostBlockCeiling()};
    return bounds.HoldOrSay(size) && ceiling.HoldOrSay(size);
}

PixelBlock ReadAll(DdsCommonPicture& picture, const Wanted& wanted, std::size_t sliceBytes) {
    const std::size_t bytes = sliceBytes * static_cast<unsigned>(wanted.count);
    const bool isFilled = picture.IsWhole(wanted.level) && picture.Shape().HasAllFaces();
    PixelBlock block = isFilled ? Common::NewBlock(bytes) : Common::NewZeroedBlock(bytes);
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(wanted.count));
    for (int i = 0; i < wanted.count; ++i) {
        const int slice = wanted.first + i;
        meter.Expect(1);
        if (picture.HasSlice(slice))
            picture.ReadSlice(wanted.level, slice, block.get() + static_cast<unsigned>(i) * sliceBytes);
        meter.Advance(1);
    }
    return block;
}

/// Rows that the file ends before are not asked of the sink, so that they stay zero: behind them there are no others.
Raster ReadReshaped(DdsCommonPicture& picture, const Wanted& wanted, const Fitting& fitting) {
    RowReshape rows(fitting.picture, fitting.wanted);
    const auto rowBytes = static_cast<std::size_t>(Common::PackedRowBytes(picture.Format(), wanted.size.width));
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(wanted.count));
    for (int slice = wanted.first; slice < wanted.first + wanted.count; ++slice, meter.Advance(1)) {
        meter.Expect(1);
        if (picture.HasSlice(slice)) {
            picture.ReadSlice(wanted.level, slice, rows);
        } else {
            WriteRows(rows, static_cast<std::size_t>(wanted.size.height), rowBytes, [](std::span<unsigned char>) {});
        }
    }
    return rows.Finish();
}

/// The picture as it is wanted; brings `desc` up to date. Slices are reordered only as they stand.
PixelBlock Read(ImageDescription& desc, DdsCommonPicture& picture, const Wanted& wanted, const Fitting& fitting) {
    const std::size_t sliceBytes = desc.dataSize / static_cast<unsigned>(desc.depth);
    if (!fitting.IsNeeded()) return ReadAll(picture, wanted, sliceBytes);
    Raster raster;
    if (desc.depth > 1) {
        raster =
            PackedRaster(desc.format, desc.width, desc.height, ReadAll(picture, wanted, sliceBytes), desc.dataSize);
        raster.slices = desc.depth;
        raster = Reshape(std::move(raster), fitting.wanted);
    } else {
        raster = ReadReshaped(picture, wanted, fitting);
    }
    if (!raster || !Common::FitsPitch(static_cast<std::int64_t>(raster.pitch))) return nullptr;
    Common::SetPacked(desc, raster.width, raster.height, raster.format);
    desc.dataSize *= static_cast<unsigned>(desc.depth);
    desc.orientation = fitting.wanted.to;
    desc.defaultOrientation = fitting.wanted.to == kTopLeft;
    return std::move(raster.block);
}

/// Of pixels that the host's reader delivers alike nothing more is told than it does, which does not look for transparent
/// ones: that would take longer than reading them.
void SettleAlpha(ImageDescription& desc, const DdsCommonPicture& picture, unsigned char* pixels) {
    const OIIO::ImageSpec spec = FormatToImageSpec(desc.format, OIIO::ImageSpec());
    const std::size_t bytes = desc.dataSize * static_cast<std::size_t>(FaceCount(desc.textureType));
    if (picture.Layout().dropsAlpha) SetToOpaque(pixels, bytes, spec);
    const bool isHosts = picture.Layout().difference == nullptr && !picture.Layout().isLeftToLibrary;
    if (desc.hasAlpha && !isHosts)
        GetAlphaProperty(pixels, bytes, spec, desc.hasTransparentPixels, desc.hasTranslucentPixels);
}

}  // namespace

std::optional<DdsCommonPicture> OpenCommonDds(const KString& path, Common::ByteSource* open, int level) {
    std::optional<DdsCommonPicture> picture = Open(path, open);
    if (!picture) return std::nullopt;
    const int shown = std::min(std::max(level, 0), picture->Shape().levels - 1);
    const bool isShown = picture->Layout().isLeftToLibrary && IsSeenByLibrary(*picture) && picture->IsWhole(shown);
    if (isShown && !IsLowerVolume(*picture, shown)) return std::nullopt;
    return picture;
}

const char* DdsDifference(const KString& path, Common::ByteSource* open, const LoadRequest& request) {
    const std::optional<DdsCommonPicture> picture = Open(path, open);
    const int level = std::max(request.level, 0);
    if (!picture || level >= picture->Shape().levels || !picture->HasRows(level)) return nullptr;
    if (!picture->IsWhole(level)) return "a file that ends early is no picture by the host's rules";
    if (picture->HasGaps()) return "rows with gaps between them are skewed by the host's rules";
    if (picture->Layout().difference != nullptr) return picture->Layout().difference;
    if (IsMisplaced(*picture)) return "faces, slices or levels are not found where they are by the host's rules";
    if (IsLowerVolume(*picture, level) && !WantsSlice(request.preferences))
        return "lower levels of volumes are refused by the host's rules";
    return IsLeftAsItIs(*picture, request) ? "neither made smaller nor turned by the host's rules" : nullptr;
}

Result<PixelBlock> LoadCommonDds(ImageDescription& desc, DdsCommonPicture& picture, const LoadRequest& request) {
    const std::optional<Wanted> wanted = WantedOf(picture, request);
    if (!wanted) {
        SayWhatIsThere(picture, request);
        Sys::Warning(L"Frame index out of range", nullptr);
        return std::unexpected(Failure::kOutOfRange);
    }
    if (!picture.HasRows(wanted->level, wanted->first)) return std::unexpected(Failure::kTruncated);
    if (!Common::FitsPitch(Common::PackedRowBytes(picture.Format(), wanted->size.width)))
        return std::unexpected(Failure::kTooLarge);
    Describe(desc, picture, *wanted);
    const Fitting fitting(desc, request);
    if (desc.depth > 1 && fitting.Resizes()) return std::unexpected(Failure::kUnsupported);
    if (!IsWithinLimits(picture, *wanted, desc, fitting)) return std::unexpected(Failure::kTooLarge);
    PixelBlock block = Read(desc, picture, *wanted, fitting);
    if (!block) return std::unexpected(Failure::kUnsupported);
    SettleAlpha(desc, picture, block.get());
    if (!picture.IsWhole(wanted->level) && !picture.HasGaps()) {
        const Dds::RowCount count = picture.CountRows(wanted->level);
        Common::SayEndsEarly(count.there, count.all, picture.FileBytes());
    }
    return block;
}

void DescribeCommonDds(ImageDesc& desc, const DdsCommonPicture& picture) {
    const Dds::Shape& shape = picture.Shape();
    desc.width = shape.size.width;
    desc.height = shape.size.height;
    desc.depth = shape.size.depth;
    desc.format = picture.Format();
    desc.textureType = shape.type;
    desc.frameCount = shape.levels;
    desc.orientation = kTopLeft;
    desc.gamma = Common::kDefaultGamma;
}

void DescribeCommonDds(PartFacts& facts, const DdsCommonPicture& picture) {
    const Dds::CommonLayout& layout = picture.Layout();
    SetChannels(facts, Common::FactsOf(picture.Format()));
    if (facts.channels.size() == 4) {
        const PartFacts::Channel alpha = facts.channels.back();
        facts.channels.resize(layout.colourChannels == 2 ? 2 : 3);
        if (picture.HasAlpha()) facts.channels.push_back(alpha);
    }
    const EAlphaKind kind = layout.isPremultiplied ? kAlphaPremultiplied : kAlphaStraight;
    facts.part.alpha = picture.HasAlpha() ? kind : kAlphaNone;
}

}  // namespace Kavra::Devices
