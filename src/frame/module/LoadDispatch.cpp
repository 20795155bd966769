// Loading a texture: OpenImageIO first, then the host's OpenEXR reader, the readers of legacy formats, and the host's
// DDS reader.

#include "common/HostExtras.h"
#include "common/HostObject.h"
#include "common/Limits.h"
#include "common/PackedLayout.h"
#include "common/PixelBlock.h"
#include "common/PixelFormats.h"
#include "common/Reasons.h"
#include "common/Result.h"
#include "common/WatchedRange.h"
#include "common/WrappedBlock.h"
#include "formats/FormatConversion.h"
#include "formats/PixelFormatMapping.h"
#include "frame/module/Dispatch.h"
#include "load/ChosenSlice.h"
#include "load/DdsCommonLoad.h"
#include "load/FormatChannels.h"
#include "load/HostReaders.h"
#include "load/TextureLoader.h"
#include "load/geometry/Reshape.h"
#include "readers/FileTypeDetection.h"
#include "readers/LegacyLoad.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/devices/EXRHandler.h>
#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/devices/Sys.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::Failure;
using Common::PixelBlock;
using Common::Result;

using HostBlock = Common::HostObject<IMemoryWrapper<void>>;

/// The pixels that a fallback came up with: a block of the module's own, or one that the host's DDS reader still owns.
struct LoadedPixels {
    PixelBlock own;
    HostBlock host;
    bool isLegacy = false;  ///< of a format of which a few bytes can claim any size

    void* Data() const { return host ? host->mData : own.get(); }
};

/// Takes the data over from the host's wrapper. That is given up and not deleted: a wrapper of a host's own kind may
/// free its data whatever its pointer shows by then. Only the plain one is emptied and goes.
PixelBlock TakeData(HostBlock host) {
    PixelBlock data(static_cast<unsigned char*>(host->mData));
    if (Common::IsPlainWrapper(*host)) {
        host->mData = nullptr;
    } else {
        (void)host.release();
    }
    return data;
}

IMemoryWrapper<void>* Wrap(LoadedPixels pixels) {
    return Common::WrapBlock(pixels.host ? TakeData(std::move(pixels.host)) : std::move(pixels.own));
}

constexpr int kMaxLevels = 31;
constexpr std::size_t kSerialBytes = std::size_t{1} << 20;

int LevelSize(int size, int level) {
    return std::max(size >> level, 1);
}

/// Leaves `desc.orientation` as it is: the rows come as they are stored.
bool DescribeExr(const EXRHandler& exr, ImageDescription& desc) {
    const EFormat format = exr.supportsAlpha() ? kR32G32B32A32F : kR32G32B32F;
    const std::int64_t rowPitch = Common::PackedRowBytes(format, exr.width());
    if (rowPitch < 1 || !Common::FitsPitch(rowPitch) || exr.height() < 1) return false;
    const EDataOrientation orientation = desc.orientation;
    desc = Common::DescribePacked(exr.width(), exr.height(), format);
    desc.hasAlpha = exr.supportsAlpha();
    desc.orientation = orientation;
    return true;
}

PixelBlock LoadExr(ImageDescription& desc, const KString& path, const DetectedFile& file) {
    if (!PrefersExrHandler(path, file)) return nullptr;
    EXRHandler exr(true);
    if (!ReadHostExr(exr, path) || exr.internalBuffer() == nullptr || !DescribeExr(exr, desc)) return nullptr;
    PixelBlock block = Common::NewBlock(desc.dataSize);
    const auto* const pixels = reinterpret_cast<const unsigned char*>(exr.internalBuffer());
    Common::ForEachRangeOf(kProgressReading, desc.dataSize, kSerialBytes, [&](std::size_t begin, std::size_t end) {
        std::memcpy(block.get() + begin, pixels + begin, end - begin);
    });
    return block;
}

/// The level at which a reader is to go on, of 0 and up; the reader stands at the first.
bool SkipTo(DDSReader& reader, int level) {
    for (int passed = 0; passed < level; ++passed) {
        if (!reader.SkipMipLevel(passed)) return false;
    }
    return true;
}

bool HasLevel(const DDSReader& reader, int level) {
    if (level < std::min(reader.Mipmaps(), kMaxLevels)) return true;
    Common::Say(kFailureOutOfRange, "there is no mip level {}; the file has {}", level, reader.Mipmaps());
    return false;
}

/// One level of a DDS at its full size: the host's reader neither resizes nor reorients.
HostBlock LoadDds(ImageDescription& desc, const KString& path, const LoadRequest& request) {
    const int level = std::max(request.level, 0);
    DDSReader reader;
    if (!OpenHostDds(reader, path) || !HasLevel(reader, level)) return nullptr;

    const int levelWidth = LevelSize(reader.Width(), level);
    const int levelHeight = LevelSize(reader.Height(), level);
    const int levelDepth = LevelSize(reader.Depth(), level);
    // Halved `level` times more, so a lower level of a volume is refused while it has more than one slice.
    const int wantedDepth = LevelSize(levelDepth, level);
    if (WantedSide(request.width, levelWidth) != levelWidth || WantedSide(request.height, levelHeight) != levelHeight ||
        wantedDepth != levelDepth) {
        Common::Say(kFailureUnsupported,
                    "textures of this kind are neither resized nor are lower levels of volumes loaded");
        return nullptr;
    }
    if (request.orientation != kTopLeft) {
        Sys::Warning(L"Override orientation of compressed DDS is not supported", nullptr);
    }
    if (!SkipTo(reader, level)) return nullptr;
    HostBlock block(reader.Load(desc, levelWidth, levelHeight, levelDepth));
    return block && block->mData != nullptr ? std::move(block) : nullptr;
}

/// One face or slice of a level of a DDS, cut out of what the host's reader delivers: a flat picture.
PixelBlock LoadDdsSlice(ImageDescription& desc, const KString& path, const LoadRequest& request) {
    const int level = std::max(request.level, 0);
    DDSReader reader;
    if (!OpenHostDds(reader, path) || !HasLevel(reader, level)) return nullptr;
    const int depth = LevelSize(reader.Depth(), level);
    const std::optional<int> number = SliceNumber(request.preferences, reader.TextureType(), depth);
    const bool isThere = number && (reader.TextureType() != kTextureCube || IsFaceInDds(path, *number));
    if (!isThere) {
        SayOfSlice(request.preferences, reader.TextureType(), depth);
        Sys::Warning(L"Frame index out of range", nullptr);
        return nullptr;
    }
    if (!SkipTo(reader, level)) return nullptr;
    const HostBlock whole(
        reader.Load(desc, LevelSize(reader.Width(), level), LevelSize(reader.Height(), level), depth));
    if (!whole || whole->mData == nullptr) return nullptr;
    const std::uint64_t slices = desc.textureType == kTextureVolume ? static_cast<unsigned>(depth) : 1;
    desc.dataSize /= slices;  // of a cube it is one face's already
    desc.textureType = kTexture2D;
    desc.depth = 1;
    PixelBlock block = Common::NewBlock(desc.dataSize);
    const auto* const bytes = static_cast<const unsigned char*>(whole->mData);
    std::memcpy(block.get(), bytes + static_cast<unsigned>(*number) * desc.dataSize, desc.dataSize);
    return block;
}

std::size_t Faces(const ImageDescription& desc) {
    return static_cast<std::size_t>(FaceCount(desc.textureType));
}

std::uint64_t PixelsOf(const ImageDescription& desc) {
    const std::int64_t slices = static_cast<std::int64_t>(Faces(desc)) * desc.depth;
    return static_cast<std::uint64_t>(Common::Product(std::int64_t{desc.width} * desc.height, slices));
}

/// Brings `pixels` to `format` where that is wanted and possible; else they, and `desc`, stay as they are. False when
/// that would take more than the bounds.
bool Convert(ImageDescription& desc, LoadedPixels& pixels, EFormat format, const Common::PictureBounds& bounds) {
    const bool wanted = format != kUnknown && format != desc.format;
    if (!wanted || !CanConvertTo(desc.format, format)) return true;
    const std::int64_t rowPitch = Common::PackedRowBytes(format, desc.width);
    if (!Common::FitsPitch(rowPitch)) return true;

    const std::size_t faces = Faces(desc);
    const auto rows = static_cast<std::int64_t>(faces) * desc.height * desc.depth;
    const auto convertedBytes = static_cast<std::uint64_t>(Common::Product(rowPitch, rows));
    const Common::PictureSize size = {
        .pixels = PixelsOf(desc), .blockBytes = convertedBytes, .workingBytes = desc.dataSize * faces};
    if (!bounds.HoldOrSay(size)) return false;

    void* converted = nullptr;
    std::size_t bytes = 0;
    FormatConversion(desc.format, desc.dataSize * faces, pixels.Data(), format, converted, bytes);
    if (converted == nullptr) return true;

    pixels = {.own = PixelBlock(static_cast<unsigned char*>(converted)), .host = nullptr};
    desc.format = format;
    desc.rowPitch = static_cast<std::int32_t>(rowPitch);
    desc.dataSize = bytes / faces;
    return true;
}

/// Brings a flat picture to the size and orientation that are wanted, as far as its format can be; `desc` with it.
bool Fit(ImageDescription& desc, LoadedPixels& pixels, const LoadRequest& request) {
    const int width = WantedSide(request.width, desc.width), height = WantedSide(request.height, desc.height);
    const bool keepsSize = width == desc.width && height == desc.height;
    if (keepsSize && request.orientation == kTopLeft) return true;
    if (!Common::FactsOf(desc.format).inLibrary) return keepsSize;
    Raster raster = PackedRaster(desc.format, desc.width, desc.height, std::move(pixels.own), desc.dataSize);
    raster = Reshape(std::move(raster), ReshapingFor(request, width, height, kTopLeft));
    if (!raster || !Common::FitsPitch(static_cast<std::int64_t>(raster.pitch))) return false;
    Common::SetPacked(desc, raster.width, raster.height, raster.format);
    desc.dataSize = raster.bytes;
    desc.orientation = request.orientation;
    desc.defaultOrientation = false;
    pixels.own = std::move(raster.block);
    return true;
}

/// Leaves the channels of these names in a picture of the host's reader. False, with a warning, where it has none such.
bool TakeChannels(ImageDescription& desc, LoadedPixels& pixels, const char* names) {
    const Common::PixelFormat& format = Common::FactsOf(desc.format);
    OIIO::ImageSpec spec;
    spec.nchannels = format.channels;
    spec.format = LibraryType(format.element);
    for (const char letter : ChannelLetters(format))
        spec.channelnames.emplace_back(1, letter);
    const auto chosen = format.HasPixels() ? ChooseChannels(spec, names) : std::nullopt;
    if (!chosen) {
        SayOfChannels(spec, names);
        Sys::Warning(L"Frame index out of range", nullptr);
        return false;
    }
    const std::int64_t pitch = Common::PackedRowBytes(chosen->format, desc.width);
    const std::uint64_t count = PixelsOf(desc);
    const auto pixelBytes = static_cast<unsigned>(Common::FactsOf(chosen->format).BytesPerPixel());
    const std::uint64_t bytes = Common::Product<std::uint64_t>(count, pixelBytes);
    if (!Common::FitsPitch(pitch) || !Common::HostBounds().HoldOrSay({.pixels = count, .blockBytes = bytes}))
        return false;
    PixelBlock block = Common::NewBlock(bytes);
    GatherChannels(*chosen, 0, format.channels, static_cast<const unsigned char*>(pixels.Data()), count, block.get());
    pixels = {.own = std::move(block), .host = nullptr};
    desc.format = chosen->format;
    desc.rowPitch = static_cast<std::int32_t>(pitch);
    desc.dataSize = bytes / Faces(desc);
    desc.hasAlpha = chosen->HasAlpha();
    return true;
}

/// What the host's reader has of a DDS, or what of it is wanted.
Result<LoadedPixels> LoadByDdsReader(ImageDescription& desc, const KString& path, const LoadRequest& request) {
    const LoadPreferences& preferences = request.preferences;
    LoadedPixels pixels;
    if (WantsSlice(preferences)) {
        pixels.own = LoadDdsSlice(desc, path, request);
    } else {
        pixels.host = LoadDds(desc, path, request);
    }
    if (pixels.Data() == nullptr) return std::unexpected(Failure::kUnsupported);
    if (preferences.channels != nullptr && !TakeChannels(desc, pixels, preferences.channels)) {
        return std::unexpected(Failure::kUnsupported);
    }
    return pixels;
}

/// What the image library does not load: the host's OpenEXR reader is asked first, then the one for the type.
Result<LoadedPixels> LoadWithoutLibrary(ImageDescription& desc, const KString& path, const LoadRequest& request,
                                        DetectedFile file) {
    if (WantsPart(request.preferences) && file.type != DDS) {
        if (HasImageReader(file.type))
            Common::Say(kFailureOutOfRange, "files of this kind have no faces, slices, levels or channels to choose");
        return std::unexpected(Failure::kUnsupported);
    }
    if (PixelBlock block = LoadExr(desc, path, file)) return LoadedPixels{.own = std::move(block), .host = nullptr};
    if (file.type == DDS) return LoadByDdsReader(desc, path, request);
    return LoadSpecial(desc, std::move(file), request).transform([](PixelBlock&& block) {
        return LoadedPixels{.own = std::move(block), .host = nullptr, .isLegacy = true};
    });
}

/// Whoever asks hears of a DDS that the other reading shows otherwise.
void TellOfCommonDds(const KString& path, const LoadRequest& request, Common::ByteSource* open) {
    ILegacyObserver* const listener = ListenerOf(request.preferences);
    const char* const difference = listener != nullptr ? DdsDifference(path, open, request) : nullptr;
    if (difference != nullptr) listener->ReadingsDiffer(difference);
}

/// Hosts are told of every failure in the same words; the reason is for those who ask.
IMemoryWrapper<void>* Refuse(const Failure& reason) {
    Common::Say(reason);
    Sys::Warning(L"format is not supported", nullptr);
    return nullptr;
}

/// The wanted format: the request's, or the one that the caller chooses once it knows the file's.
EFormat FormatFor(const ImageDescription& desc, const LoadRequest& request) {
    if (request.format != kUnknown || request.formatHandler == nullptr) return request.format;
    return request.formatHandler->ChooseFormat(desc.format, UsageOf(desc.textureType));
}

/// A DDS in the common reading.
IMemoryWrapper<void>* LoadByCommonReading(ImageDescription& desc, DdsCommonPicture& picture,
                                          const LoadRequest& request) {
    Result<PixelBlock> block = LoadCommonDds(desc, picture, request);
    if (!block) return Refuse(block.error());
    LoadedPixels pixels{.own = *std::move(block), .host = nullptr, .isLegacy = true};
    const char* const channels = request.preferences.channels;
    if (channels != nullptr && !TakeChannels(desc, pixels, channels)) return Refuse(Failure::kUnsupported);
    if (!Convert(desc, pixels, FormatFor(desc, request), Common::ReaderBounds())) return Refuse(Failure::kTooLarge);
    return Wrap(std::move(pixels));
}

}  // namespace

IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, const LoadRequest& request) {
    DetectedFile file = DetectFile(path, request.preferences.legacy);
    Common::ByteSource* const open = file.files ? &file.files->source : nullptr;
    if (file.type == DDS && request.preferences.legacy == kLegacyCommon) {
        if (auto picture = OpenCommonDds(path, open, request.level))
            return LoadByCommonReading(desc, *picture, request);
    }
    if (file.type == DDS) TellOfCommonDds(path, request, open);
    if (PixelBlock block = LoadTextureByOIIO(desc, path, request, file.type, open)) {
        return Common::WrapBlock(std::move(block));
    }
    // Those files have nothing of which a part could be chosen.
    if (HasImageReader(file.type) && WantsPart(request.preferences)) Sys::Warning(L"Frame index out of range", nullptr);
    const ImageFileType type = file.type;
    Result<LoadedPixels> pixels = LoadWithoutLibrary(desc, path, request, std::move(file));
    if (!pixels) {
        TellOfCommonReading(path, request.preferences, type);
        return Refuse(pixels.error());
    }
    const Common::PictureBounds bounds = pixels->isLegacy ? Common::ReaderBounds() : Common::HostBounds();
    if (!bounds.HoldOrSay({.pixels = PixelsOf(desc), .blockBytes = desc.dataSize * Faces(desc)})) {
        return Refuse(Failure::kTooLarge);
    }
    if (pixels->host && desc.format == request.format) return pixels->host.release();
    if (!Convert(desc, *pixels, request.format, bounds)) return Refuse(Failure::kTooLarge);
    if (WantsSlice(request.preferences) && !Fit(desc, *pixels, request)) return Refuse(Failure::kUnsupported);
    return Wrap(*std::move(pixels));
}

}  // namespace Kavra::Devices
