#include "WriteOptions.h"

#include "FileNames.h"
#include "FormatNames.h"
#include "KeptMetadata.h"
#include "Picture.h"
#include "PixelConversion.h"
#include "SaveImage.h"
#include "Usage.h"
#include "WrittenPixels.h"

#include <algorithm>
#include <format>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

constexpr double kMaxDpi = 65535;

/// What a file is to be told, beside what is kept of the source.
struct Wish {
    std::string_view extension;
    const TypeAbilities& abilities;
};

std::string Known(std::string_view words) {
    std::string list;
    for (const char c : words.substr(1, words.size() - 2))
        list += c == ' ' ? std::string(", ") : std::string(1, c);
    return list;
}

/// Says of an option that files of this type know nothing of it.
void NoteUnknown(Report& report, std::string_view option, std::string_view extension, std::string_view why) {
    report.NoteOnce(std::format("{} is left out: {} files {}", option, extension, why));
}

/// The picture in another format; itself where it has that format already.
LoadedImage Converted(LoadedImage image, EFormat format) {
    if (image.desc.format == format) return image;
    const ETextureType type = image.desc.textureType;
    LoadedImage result = *ToFormat(image, format);
    result.desc.textureType = type;  // of which the first face or slice is meant
    return result;
}

/// Whether the picture can go from format to format: a flat one, or what becomes one.
bool IsConvertible(const LoadedImage& image, std::string_view extension) {
    const bool isFlat = image.desc.textureType == kTexture2D && image.desc.depth <= 1;
    return (isFlat || extension != ".dds") && Facts(image.desc.format).bytesPerPixel > 0;
}

LoadedImage AtWishedDepth(Report& report, LoadedImage image, Depth depth, const Wish& wish) {
    if (depth == Depth::kOwn) return image;
    const std::string option = std::format("--depth {}", DepthName(depth));
    const EFormat format = AtDepth(image.desc.format, depth);
    if (!wish.abilities.HoldsDepth(depth)) {
        NoteUnknown(report, option, wish.extension, "hold " + Known(wish.abilities.depths));
    } else if (format == kUnknown) {
        report.NoteOnce(std::format("{} is left out: there is no such format of {} channels", option,
                                    Facts(image.desc.format).channels));
    } else {
        return Converted(std::move(image), format);
    }
    return image;
}

/// With the channels and depth that are asked for, as far as the type holds them.
LoadedImage AsWished(Report& report, LoadedImage image, const WriteOptions& options, const Wish& wish) {
    const bool holdsGrey = HoldsChannels(wish.extension, 1);
    if (!holdsGrey) {
        if (options.isGrey) NoteUnknown(report, "--grey", wish.extension, "hold colours");
        const EFormat colours = AsColour(image.desc.format);
        image = Converted(std::move(image), colours);
    }
    if (options.depth == Depth::kOwn && !options.isGrey) return image;
    if (!IsConvertible(image, wish.extension)) {
        report.NoteOnce("--depth and --grey are left out: they are for flat pictures that are not block-compressed");
        return image;
    }
    if (options.isGrey && holdsGrey) {
        const EFormat grey = AsGrey(image.desc.format);
        image = Converted(std::move(image), grey);
    }
    return AtWishedDepth(report, std::move(image), options.depth, wish);
}

/// Whether the alpha of all pictures stays out of the file, since it says nothing or has no place there.
bool LeavesAlphaOut(Report& report, const std::vector<LoadedImage>& images, const WriteOptions& options,
                    const Wish& wish) {
    const auto has = [](const LoadedImage& image) { return Facts(image.desc.format).channels == 4; };
    if (!wish.abilities.holdsThree || !std::ranges::all_of(images, has)) return false;
    const bool isOpaque = std::ranges::all_of(images, IsOpaque);
    if (!isOpaque && !wish.abilities.hasAlpha)
        report.NoteOnce(std::format("its alpha is left out: {} files have none", wish.extension));
    return !wish.abilities.hasAlpha || (isOpaque && !options.keepsAlpha);
}

/// Two channels need not be grey and alpha.
EAlphaKind AlphaOf(const LoadedImage& image, const Source& source) {
    const bool isPair = Facts(image.desc.format).channels == 2;
    return isPair && !image.desc.hasAlpha ? kAlphaNone : source.alpha;
}

void AddOptions(Report& report, SavePreferences& preferences, const WriteOptions& options, const Wish& wish) {
    const TypeAbilities& abilities = wish.abilities;
    const bool hasCompression = abilities.HasCompression(options.compression);
    const bool isLossy = abilities.hasQuality ? options.compression != "lossless" || !hasCompression
                                              : hasCompression && options.compression.starts_with("dwa");
    if (isLossy) {
        preferences.quality = options.quality;
    } else if (options.quality > 0) {
        NoteUnknown(report, "--quality", wish.extension, "lose nothing by their compression");
    }
    if (hasCompression) {
        preferences.compression = options.compression.c_str();
    } else if (!options.compression.empty()) {
        NoteUnknown(report, "--compression " + options.compression, wish.extension,
                    abilities.compressions.empty() ? "have one of their own" : "have " + Known(abilities.compressions));
    }
    if (abilities.hasTiles) {
        preferences.tileSize = options.tileSize;
    } else if (options.tileSize > 0) {
        NoteUnknown(report, "--tile", wish.extension, "have no tiles");
    }
    if (options.dpi > 0 && abilities.hasResolution) {
        preferences.resolution = options.dpi;
    } else if (options.dpi > 0) {
        NoteUnknown(report, "--dpi", wish.extension, "hold no resolution");
    }
}

/// Whether they can be in one file; a failure is said in the report.
bool FitTogether(Report& report, const std::vector<LoadedImage>& images, const std::filesystem::path& path,
                 const Wish& wish) {
    if (images.size() == 1) return true;
    if (!wish.abilities.hasFrames) {
        FailToWrite(report, path,
                    std::format("{} files hold one picture; gif, tif and exr hold several", wish.extension));
        return false;
    }
    if (wish.extension.starts_with(".tif")) return true;
    const ImageDescription& first = images.front().desc;
    for (const LoadedImage& image : images) {
        if (image.desc.width == first.width && image.desc.height == first.height) continue;
        FailToWrite(report, path,
                    std::format("pictures of {} x {} and of {} x {} pixels, and {} files hold those of one size",
                                first.width, first.height, image.desc.width, image.desc.height, wish.extension));
        return false;
    }
    return true;
}

/// Three floats a pixel become four, which a writer takes; pictures of several formats that of the first.
void Unify(std::vector<LoadedImage>& images, const Wish& wish) {
    if (wish.extension == ".dds") return;
    if (images.front().desc.format == kR32G32B32F) {
        images.front() = Converted(std::move(images.front()), kR32G32B32A32F);
    }
    const EFormat format = images.front().desc.format;
    for (LoadedImage& image : images) {
        if (Facts(image.desc.format).bytesPerPixel > 0) image = Converted(std::move(image), format);
    }
}

std::vector<SaveFrame> BehindTheFirst(const std::vector<LoadedImage>& images) {
    std::vector<SaveFrame> frames;
    for (std::size_t i = 1; i < images.size(); ++i)
        frames.push_back({&images[i].desc, images[i].block->mData});
    return frames;
}

}  // namespace

void WriteOptions::AddTo(CLI::App& command) {
    AddWholeNumber(command, "--quality", quality, 1, 100,
                   "Of JPEG, WebP, JPEG XL and DWA, 1 to 100; the writer's own unless said");
    const auto names = CompressionNames();
    command
        .add_option_function<std::string>(
            "--compression",
            [this, names](const std::string& text) {
                compression = CLI::detail::to_lower(text);
                if (!std::ranges::contains(names, compression))
                    throw CLI::ValidationError("--compression", NoneOf(text, names));
            },
            "How the file is compressed: zip, lzw, piz, lossless ...; what each type has is in docs/writing.md")
        ->type_name("NAME");
    AddChoice<Depth>(
        command, "--depth", {{"8", Depth::k8}, {"16", Depth::k16}, {"half", Depth::kHalf}, {"float", Depth::kFloat}},
        [this](Depth chosen) { depth = chosen; }, "Bits of a channel; the picture's own unless said");
    AddWholeNumber(command, "--tile", tileSize, 16, 4096, "The side of tiles, in OpenEXR and TIFF; rows unless said");
    command.add_option("--dpi", dpi, "Dots per inch recorded in the file; the source's unless said")
        ->check([](const std::string& text) {
            double value = 0;
            const bool good = CLI::detail::lexical_cast(text, value) && value > 0 && value <= kMaxDpi;
            return good ? std::string() : std::format("{} is no number above 0 and up to {}", text, kMaxDpi);
        });
    command.add_flag("--grey", isGrey, "One channel: the brightness of the colours");
    command.add_flag("--strip", isStripped, "Keep no colour profile, resolution or text of the source");
}

bool WriteOptions::Write(IImageHandler& handler, Report& report, LoadedImage image, const Source& source,
                         const std::filesystem::path& path) const {
    std::vector<LoadedImage> images;
    images.push_back(std::move(image));
    return WriteAll(handler, report, std::move(images), source, path, 0);
}

bool WriteOptions::WriteAll(IImageHandler& handler, Report& report, std::vector<LoadedImage> images,
                            const Source& source, const std::filesystem::path& path, double framesPerSecond) const {
    const std::string extension = LowerExtension(path);
    const Wish wish{extension, AbilitiesOf(extension)};
    for (LoadedImage& image : images)
        image = AsWished(report, std::move(image), *this, wish);
    Unify(images, wish);
    if (!FitTogether(report, images, path, wish)) return false;

    SavePreferences preferences;
    const Source nothing;
    const KeptMetadata kept(isStripped ? nothing : source, wish.extension, ColourChannels(images.front().desc.format));
    kept.AddTo(preferences);
    AddOptions(report, preferences, *this, wish);
    preferences.dropsAlpha = LeavesAlphaOut(report, images, *this, wish);
    preferences.alpha = AlphaOf(images.front(), source);
    preferences.transfer = source.transfer;
    preferences.gamma = source.gamma;
    preferences.framesPerSecond = framesPerSecond;
    const std::vector<SaveFrame> frames = BehindTheFirst(images);
    preferences.moreFrames = frames.data();
    preferences.moreFrameCount = frames.size();
    const bool written = Save(handler, report, images.front(), path, preferences);
    if (written) kept.NoteLosses(report, dpi > 0);
    return written;
}

}  // namespace Kavra::App
