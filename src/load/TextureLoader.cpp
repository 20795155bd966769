// Loading one frame or mip level through OpenImageIO, step by step.

#include "load/TextureLoader.h"

#include "common/HostExtras.h"
#include "common/Limits.h"
#include "common/PackedLayout.h"
#include "common/PixelFormats.h"
#include "common/Progress.h"
#include "common/Reasons.h"
#include "common/dds/DdsShape.h"
#include "formats/FormatConversion.h"
#include "formats/PixelFormatMapping.h"
#include "load/AlphaAnalysis.h"
#include "load/ChosenSlice.h"
#include "load/CutFiles.h"
#include "load/FileDescription.h"
#include "load/HostReaders.h"
#include "load/OpenInput.h"
#include "load/ReadSubimage.h"
#include "load/RowFormats.h"
#include "load/SmallerSource.h"
#include "load/TextureBands.h"
#include "readers/ImageFileType.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/devices/Sys.h>

#include <algorithm>
#include <cstdint>
#include <format>
#include <memory>
#include <optional>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;

constexpr const wchar_t* kNoSuchFrame = L"Frame index out of range";
constexpr int kMaxLevel = 31;

using Common::Say;

bool Fail(const wchar_t* message) {
    Sys::Warning(message, nullptr);
    return false;
}

/// Says something and fails without a message.
template <class... Args>
bool Refuse(EFailureKind kind, std::format_string<Args...> format, Args&&... args) {
    if constexpr (sizeof...(args) == 0) {
        Say(kind, format.get());
    } else {
        Say(kind, format, std::forward<Args>(args)...);
    }
    return false;
}

bool Open(TextureLoad& load, Common::ByteSource& file) {
    load.input = OpenInput(load.path, file);
    if (!load.input) return false;
    if (load.IsDds()) {
        load.slices = DdsSlices::Open(file.Again());
        DDSReader reader;
        if (OpenHostDds(reader, load.path)) load.hostFormat = reader.Format();
    }
    return true;
}

/// Level numbers beyond the full chain are refused before the library looks for them: a header may claim any number,
/// and each one costs time.
bool SeekMipLevel(OIIO::ImageInput& input, int level) {
    const OIIO::ImageSpec top = DdsLevelSpec(input);
    return level < Dds::FullMipChain({top.full_width, top.full_height, top.depth}) && input.seek_subimage(0, level);
}

/// The library lets one seek to levels below those of some kinds of files, which then are no smaller.
bool SeekSubimage(OIIO::ImageInput& input, int subimage, int level) {
    if (level == 0) return input.seek_subimage(subimage, 0);
    if (level > kMaxLevel || !input.seek_subimage(subimage, level - 1)) return false;
    const auto [width, height] = std::pair(input.spec().width, input.spec().height);
    if (!input.seek_subimage(subimage, level)) return false;
    const OIIO::ImageSpec& spec = input.spec();
    return spec.width <= width && spec.height <= height && (spec.width < width || spec.height < height);
}

/// Which frame or level is not there, in the caller's numbers, and how many there are. The file is opened anew: readers
/// that have looked for what is not there may know no more of what is.
void SayWhatIsThere(const TextureLoad& load) {
    const std::unique_ptr<OIIO::ImageInput> fresh = OpenInput(load.path);
    OIIO::ImageInput& input = fresh ? *fresh : *load.input;
    const int count = CountPictures(input, load.fileType);
    if (load.index >= count) {
        const char* const what = load.IsDds() ? "mip level" : "frame";
        return Say(kFailureOutOfRange, "there is no {} {}; the file has {}", what, load.index, count);
    }
    int levels = 1;
    while (!load.IsDds() && levels < kMaxLevel && SeekSubimage(input, load.index, levels))
        ++levels;
    Say(kFailureOutOfRange, "there is no mip level {}; frame {} has {}", load.level, load.index, levels);
}

bool Position(TextureLoad& load) {
    OIIO::ImageInput& input = *load.input;
    const bool found = load.IsDds() ? SeekMipLevel(input, load.index) : SeekSubimage(input, load.index, load.level);
    if (!found) {
        SayWhatIsThere(load);
        return Fail(kNoSuchFrame);
    }
    load.fileSpec = load.IsDds() ? DdsLevelSpec(input) : input.spec();
    return true;
}

/// Of which the library keeps the upper half.
bool IsHostGrey16(const TextureLoad& load) {
    return load.IsDds() && (load.hostFormat == kR16 || load.hostFormat == kL16);
}

/// The part of the frame that the preferences choose. What is not there of a DDS, the host's reader is asked for next.
bool Choose(TextureLoad& load, Common::ByteSource& file) {
    const LoadPreferences& preferences = load.request.preferences;
    if (WantsSlice(preferences) && !TakeSlice(load, file)) return !load.IsDds() && Fail(kNoSuchFrame);
    if (preferences.channels == nullptr) return true;
    if (IsHostGrey16(load)) return false;
    load.chosen = ChooseChannels(load.fileSpec, preferences.channels);
    if (!load.chosen) {
        SayOfChannels(load.fileSpec, preferences.channels);
        return !load.IsDds() && Fail(kNoSuchFrame);
    }
    load.fileDesc.format = load.chosen->format;
    return true;
}

bool Describe(TextureLoad& load, Common::ByteSource& file) {
    const bool isRadiance = OIIO::string_view(load.input->format_name()) == "hdr";
    const bool ddsAlphaVariant = Common::FactsOf(load.hostFormat).kind == Common::FormatKind::kAlphaVariant;
    load.fileDesc = DescribeSpec(load.fileSpec, isRadiance, load.fileType, ddsAlphaVariant);
    if (!Choose(load, file)) return false;
    if (load.fileDesc.format == kUnknown) {
        if (!load.IsDds()) SayNoFormatHolds(load.fileSpec);
        return false;
    }
    load.nativeSpec = FormatToImageSpec(load.fileDesc.format, load.fileSpec);
    if (load.nativeSpec.format != OIIO::TypeUnknown) return true;
    if (!load.IsDds()) Say(kFailureUnsupported, "no format of pixels here holds what the file has");
    return Fail(L"Unsupported texture type");
}

void ChooseSize(TextureLoad& load) {
    load.outWidth = WantedSide(load.request.width, load.fileDesc.width);
    load.outHeight = WantedSide(load.request.height, load.fileDesc.height);
    // Halved for frames too, which matters for volumes only.
    load.outDepth = std::max(load.index >= 31 ? 0 : load.fileDesc.depth >> load.index, 1);
}

bool ChooseFormat(TextureLoad& load) {
    if (load.format == kUnknown && load.request.formatHandler != nullptr) {
        load.format =
            load.request.formatHandler->ChooseFormat(load.fileDesc.format, UsageOf(load.fileDesc.textureType));
    }
    if (load.format == kUnknown) load.format = load.fileDesc.format;
    load.targetSpec = FormatToImageSpec(load.format, load.fileSpec);
    if (load.targetSpec.format != OIIO::TypeUnknown) return true;
    const bool wantsBlocks = Common::FactsOf(load.format).bytesPerBlock > 0;
    if (!load.IsDds())
        Say(kFailureFormat, wantsBlocks ? "it has pixels and blocks are wanted, which go into .dds and .ktx2 files"
                                        : "what is read of the file cannot be had in the wanted format");
    return Fail(L"format is not supported");
}

void FillDescription(TextureLoad& load) {
    ImageDescription& desc = load.desc;
    desc = Common::DescribePacked(load.outWidth, load.outHeight, load.format);
    desc.depth = load.outDepth;
    desc.dataSize = load.targetSpec.image_bytes(false);
    desc.textureType = load.fileDesc.textureType;
    desc.hasAlpha = load.chosen ? load.chosen->HasAlpha() : load.fileSpec.alpha_channel >= 0;
    desc.orientation = load.request.orientation;
    desc.defaultOrientation = load.request.orientation == kTopLeft;
    desc.gamma = load.fileDesc.gamma;
}

/// Whether the host allows a picture of this layout, and its rows can be described.
bool IsAllowed(const OIIO::ImageSpec& spec) {
    const std::int64_t rowBytes = static_cast<std::int64_t>(spec.pixel_bytes(false)) * spec.width;
    if (!Common::FitsPitch(rowBytes))
        return Refuse(kFailureTooLarge, "a row takes {} bytes, more than can be described", rowBytes);
    return Common::HostBounds().HoldOrSay({.pixels = spec.image_pixels(), .blockBytes = spec.image_bytes(false)});
}

/// Whether the allocator gives what is held at a time: all pixels, or a few rows of them where the size changes and the
/// library holds no more either.
bool CanBeHeld(const TextureLoad& load, Common::ByteSource& file) {
    const std::uint64_t whole = std::max(load.targetSpec.image_bytes(false), load.nativeSpec.image_bytes(false));
    if (whole <= Common::HostBlockCeiling()) return true;
    if (load.NeedsResize() && GivesRows(*load.input, load.fileSpec, file) &&
        BytesInBands(load) <= Common::HostBlockCeiling()) {
        return true;
    }
    return Refuse(kFailureTooLarge, "the picture takes {} bytes, and a block of memory holds {}", whole,
                  Common::HostBlockCeiling());
}

/// Whether the pixels can be there and delivered, as far as that shows before memory is taken for them.
bool CanBeRead(const TextureLoad& load, Common::ByteSource& file) {
    if (load.fileSpec.deep) return Refuse(kFailureUnsupported, "pictures of deep pixels are not read");
    if (!IsReadable(load.fileSpec)) {
        return Refuse(kFailureTooLarge, "its size of {} x {} x {}, or of its tiles, is beyond what can be read",
                      load.fileSpec.width, load.fileSpec.height, load.fileSpec.depth);
    }
    if (!IsAllowed(load.targetSpec) || !IsAllowed(load.nativeSpec)) return false;
    if (load.fileDesc.depth > 1 && load.NeedsResize())  // the library resizes no slices
        return load.IsDds() ? false : Refuse(kFailureUnsupported, "pictures of several slices are not resized");
    if (!CanBeHeld(load, file)) return false;
    return !load.IsDds() || (load.slices && load.slices->HasLevel(load.index));
}

/// The picture of a load that keeps its size, in rows and columns as the file has them. Empty when that cannot be.
Raster ReadWhole(TextureLoad& load, const OIIO::ImageSpec& as) {
    Pixels pixels;
    {
        TexturePixels source(load, as);
        pixels = source.FillsAll() ? NewPixels(as.image_bytes(false)) : NewZeroedPixels(as.image_bytes(false));
        Common::ProgressMeter meter(kProgressReading, 1);
        meter.Expect(1);
        if (!source.Read(0, source.RowCount(), pixels.block.get())) return {};
        meter.Advance(1);
    }
    pixels = ToChosenFormat(load, std::move(pixels));
    if (!pixels) return {};
    const ImageDesc& file = load.fileDesc;
    Raster raster = PackedRaster(load.format, file.width, file.height, std::move(pixels.block), pixels.bytes);
    raster.faces = FaceCount(file.textureType);
    raster.slices = std::max(file.depth, 1);
    return load.NeedsReorientation() ? Reshape(std::move(raster), load.Wanted()) : std::move(raster);
}

/// The picture in the wanted format, size, and row and column order; `desc` is brought up to date where those change it.
Raster ReadWanted(TextureLoad& load) {
    const OIIO::ImageSpec& as = load.Converts() ? load.nativeSpec : load.targetSpec;
    Raster raster = load.NeedsResize() ? ReadInBands(load, as) : ReadWhole(load, as);
    if (!raster || (!load.NeedsResize() && !load.NeedsReorientation())) return raster;
    if (!Common::FitsPitch(static_cast<std::int64_t>(raster.pitch))) return {};
    Common::SetPacked(load.desc, raster.width, raster.height, raster.format);
    load.desc.dataSize = raster.bytes;
    return raster;
}

/// The same, made from a smaller picture of the file. Empty, and nothing has changed, where it has none that can be read.
Raster ReadFast(TextureLoad& load, Common::ByteSource& file) {
    std::optional<TextureSource> whole = TakeSmallerSource(load, file);
    if (!whole) return {};
    Raster raster = ReadWanted(load);
    if (raster) return raster;
    Restore(load, *std::move(whole));
    load.isCut = false;
    return raster;
}

}  // namespace

int UsageOf(ETextureType type) {
    switch (type) {
        case kTextureCube:
            return kUsageTextureCube;
        case kTextureVolume:
            return kUsageTextureVolume;
        default:
            return kUsageTexture2D;
    }
}

bool TextureLoad::IsDds() const {
    return fileType == DDS;
}

bool TextureLoad::NeedsResize() const {
    return outWidth != fileDesc.width || outHeight != fileDesc.height || outDepth != fileDesc.depth;
}

Reshaping TextureLoad::Wanted() const {
    return ReshapingFor(request, outWidth, outHeight, fileDesc.orientation);
}

bool TextureLoad::Converts() const {
    return NeedConvert(fileDesc.format, nativeSpec.nchannels, format, targetSpec.nchannels) &&
           CanConvertTo(fileDesc.format, format);
}

PixelBlock LoadTextureByOIIO(ImageDescription& desc, const KString& path, const LoadRequest& request, int fileType,
                             Common::ByteSource* open) {
    if (fileType != DDS && fileType != OpenEXR && fileType != Other) return nullptr;
    std::optional<Common::ByteSource> own = open == nullptr ? OpenFile(path) : std::nullopt;
    if (own) open = &*own;
    if (open == nullptr) return nullptr;
    TextureLoad load(desc, path, request, fileType);
    if (!Open(load, *open) || !Position(load) || !Describe(load, *open)) return nullptr;
    ChooseSize(load);
    if (!ChooseFormat(load)) return nullptr;
    FillDescription(load);
    if (!CanBeRead(load, *open)) return nullptr;

    Raster raster = request.preferences.fast ? ReadFast(load, *open) : Raster{};
    if (!raster) raster = ReadWanted(load);
    if (!raster && !load.IsDds()) SayOfUnreadPixels(load, *open);
    if (!raster || desc.dataSize > raster.bytes) return nullptr;
    if (load.isCut) SayOfPartialPicture(load, *open);
    if (desc.hasAlpha) {
        GetAlphaProperty(raster.block.get(), desc.dataSize, load.targetSpec, desc.hasTransparentPixels,
                         desc.hasTranslucentPixels);
    }
    desc.dataSize /= static_cast<std::uint64_t>(FaceCount(desc.textureType));
    return std::move(raster.block);
}

}  // namespace Kavra::Devices
