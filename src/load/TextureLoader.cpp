// Loading one frame or mip level through OpenImageIO, step by step.

#include "load/TextureLoader.h"

#include "common/HostExtras.h"
#include "common/Limits.h"
#include "common/PackedLayout.h"
#include "common/PixelFormats.h"
#include "common/dds/DdsShape.h"
#include "formats/FormatConversion.h"
#include "formats/PixelFormatMapping.h"
#include "load/AlphaAnalysis.h"
#include "load/FileDescription.h"
#include "load/OpenInput.h"
#include "load/ReadSubimage.h"
#include "load/geometry/Reshape.h"
#include "readers/ImageFileType.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/devices/ImageHandlerHelper.h>
#include <kavra/devices/Sys.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;

bool Fail(const wchar_t* message) {
    Sys::Warning(message, nullptr);
    return false;
}

bool Open(TextureLoad& load, Common::ByteSource& file) {
    load.input = OpenInput(load.path, file);
    if (!load.input) return false;
    if (load.IsDds()) {
        load.slices = DdsSlices::Open(file.Again());
        DDSReader reader;
        if (reader.Load(load.path)) load.hostFormat = reader.Format();
    }
    return true;
}

/// Level numbers beyond the full chain are refused before the library looks for them: a header may claim any number,
/// and each one costs time.
bool SeekMipLevel(OIIO::ImageInput& input, int level) {
    const OIIO::ImageSpec top = DdsLevelSpec(input);
    return level < Dds::FullMipChain({top.full_width, top.full_height, top.depth}) && input.seek_subimage(0, level);
}

bool Position(TextureLoad& load) {
    OIIO::ImageInput& input = *load.input;
    const bool found = load.IsDds() ? SeekMipLevel(input, load.index) : input.seek_subimage(load.index, 0);
    if (!found) return Fail(L"Frame index out of range");
    load.fileSpec = load.IsDds() ? DdsLevelSpec(input) : input.spec();
    return true;
}

bool Describe(TextureLoad& load) {
    const bool isRadiance = OIIO::string_view(load.input->format_name()) == "hdr";
    const bool ddsAlphaVariant = Common::FactsOf(load.hostFormat).kind == Common::FormatKind::kAlphaVariant;
    load.fileDesc = DescribeSpec(load.fileSpec, isRadiance, load.fileType, ddsAlphaVariant);
    if (load.fileDesc.format == kUnknown) return false;
    load.nativeSpec = FormatToImageSpec(load.fileDesc.format, load.fileSpec);
    return load.nativeSpec.format != OIIO::TypeUnknown || Fail(L"Unsupported texture type");
}

int WantedSize(int wanted, int available) {
    return wanted < 1 ? available : std::min(wanted, available);
}

void ChooseSize(TextureLoad& load) {
    load.outWidth = WantedSize(load.request.width, load.fileDesc.width);
    load.outHeight = WantedSize(load.request.height, load.fileDesc.height);
    // Halved for frames too, which matters for volumes only.
    load.outDepth = std::max(load.index >= 31 ? 0 : load.fileDesc.depth >> load.index, 1);
}

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

bool ChooseFormat(TextureLoad& load) {
    if (load.format == kUnknown && load.request.formatHandler != nullptr) {
        load.format =
            load.request.formatHandler->ChooseFormat(load.fileDesc.format, UsageOf(load.fileDesc.textureType));
    }
    if (load.format == kUnknown) load.format = load.fileDesc.format;
    load.targetSpec = FormatToImageSpec(load.format, load.fileSpec);
    return load.targetSpec.format != OIIO::TypeUnknown || Fail(L"format is not supported");
}

void FillDescription(TextureLoad& load) {
    ImageDescription& desc = load.desc;
    desc = Common::DescribePacked(load.outWidth, load.outHeight, load.format);
    desc.depth = load.outDepth;
    desc.dataSize = load.targetSpec.image_bytes(false);
    desc.textureType = load.fileDesc.textureType;
    desc.hasAlpha = load.fileSpec.alpha_channel >= 0;
    desc.orientation = load.request.orientation;
    desc.defaultOrientation = load.request.orientation == kTopLeft;
    desc.gamma = load.fileDesc.gamma;
}

/// Whether a block of this layout can be had and described.
bool IsPossible(const OIIO::ImageSpec& spec) {
    const std::int64_t rowBytes = static_cast<std::int64_t>(spec.pixel_bytes(false)) * spec.width;
    return Common::FitsPitch(rowBytes) && spec.image_bytes(false) <= Common::HostBlockCeiling() &&
           Common::HostBounds().Hold({.pixels = spec.image_pixels(), .blockBytes = spec.image_bytes(false)});
}

/// Whether the pixels can be there and delivered, as far as that shows before memory is taken for them.
bool CanBeRead(const TextureLoad& load) {
    if (load.fileSpec.deep || !IsReadable(load.fileSpec)) return false;
    if (!IsPossible(load.targetSpec) || !IsPossible(load.nativeSpec)) return false;
    if (load.fileDesc.depth > 1 && load.NeedsResize()) return false;  // the library resizes no slices
    return !load.IsDds() || (load.slices && load.slices->HasLevel(load.index));
}

Pixels SwapRedAndBlue(const Pixels& pixels) {
    Utilities::ImageHandlerHelper helper;
    auto* const swapped = helper.BGRAToRGBA(pixels.block.get(), pixels.bytes);
    return {PixelBlock(reinterpret_cast<unsigned char*>(swapped)), pixels.bytes};
}

Pixels Convert(const TextureLoad& load, const Pixels& pixels) {
    void* converted = nullptr;
    std::size_t bytes = 0;
    FormatConversion(load.fileDesc.format, pixels.bytes, pixels.block.get(), load.format, converted, bytes);
    return {PixelBlock(static_cast<unsigned char*>(converted)), bytes};
}

/// From what was read to the chosen format. The library delivers red first.
Pixels ToChosenFormat(const TextureLoad& load, Pixels pixels) {
    if (load.Converts()) return Convert(load, pixels);
    const auto isBlueFirst = [](EFormat format) { return Common::FactsOf(format).blueFirst; };
    if (isBlueFirst(load.format) && !isBlueFirst(load.fileDesc.format)) return SwapRedAndBlue(pixels);
    return pixels;
}

/// Brings pixels in the chosen format to the wanted size, row and column order, and updates `desc`. None when that
/// cannot be done.
Pixels ToWantedShape(TextureLoad& load, Pixels pixels) {
    if (!pixels || (!load.NeedsResize() && !load.NeedsReorientation())) return pixels;
    const ImageDesc& file = load.fileDesc;
    Raster raster = PackedRaster(load.format, file.width, file.height, std::move(pixels.block), pixels.bytes);
    raster.faces = FaceCount(file.textureType);
    raster.slices = std::max(file.depth, 1);
    raster = Reshape(std::move(raster), {.width = load.outWidth,
                                         .height = load.outHeight,
                                         .scaling = load.request.highQuality ? Scaling::kMitchell : Scaling::kAdaptive,
                                         .from = file.orientation,
                                         .to = load.request.orientation});
    if (!raster || !Common::FitsPitch(static_cast<std::int64_t>(raster.pitch))) return {};
    Common::SetPacked(load.desc, raster.width, raster.height, raster.format);
    load.desc.dataSize = raster.bytes;
    return {std::move(raster.block), raster.bytes};
}

}  // namespace

bool TextureLoad::IsDds() const {
    return fileType == DDS;
}

bool TextureLoad::NeedsResize() const {
    return outWidth != fileDesc.width || outHeight != fileDesc.height || outDepth != fileDesc.depth;
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
    if (!Open(load, *open) || !Position(load) || !Describe(load)) return nullptr;
    ChooseSize(load);
    if (!ChooseFormat(load)) return nullptr;
    FillDescription(load);
    if (!CanBeRead(load)) return nullptr;

    const OIIO::ImageSpec& as = load.Converts() ? load.nativeSpec : load.targetSpec;
    ReadPixels read = ReadTexturePixels(load, as);
    if (!read.pixels) return nullptr;
    // After the read, not before: the read leaves the alpha channel alone, and a file that lies about its size fails
    // before all of the block is touched.
    if (read.lacksAlpha) SetToOpaque(read.pixels.block.get(), read.pixels.bytes, as);

    Pixels pixels = ToWantedShape(load, ToChosenFormat(load, std::move(read.pixels)));
    if (!pixels || desc.dataSize > pixels.bytes) return nullptr;
    if (desc.hasAlpha) {
        GetAlphaProperty(pixels.block.get(), desc.dataSize, load.targetSpec, desc.hasTransparentPixels,
                         desc.hasTranslucentPixels);
    }
    desc.dataSize /= static_cast<std::uint64_t>(FaceCount(desc.textureType));
    return std::move(pixels.block);
}

}  // namespace Kavra::Devices
