#include "LoadOptions.h"

#include "CutFiles.h"
#include "FileNames.h"
#include "FormatNames.h"
#include "LegacyOption.h"
#include "ResizedPicture.h"
#include "Sizes.h"
#include "TextureView.h"
#include "Usage.h"

#include <kavra/devices/ImageLimits.h>
#include <kavra/objects/OS.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace Kavra::App {

using namespace Devices;

void AddFormatOption(CLI::App& command, EFormat& format, const std::string& help) {
    command
        .add_option_function<std::string>(
            "--format",
            [&format](const std::string& text) {
                const auto parsed = ParseFormat(text);
                if (!parsed) throw CLI::ValidationError("--format", text + " is no pixel format; see kavra formats");
                format = *parsed;
            },
            help)
        ->type_name("NAME");
}

namespace {

/// A limit is set as soon as it is read: it binds every load of the process.
void AddLimitOption(CLI::App& command, const std::string& name, std::uint64_t ImageLimits::* field, std::uint64_t kilo,
                    const std::string& help) {
    command
        .add_option_function<std::string>(
            name,
            [name, field, kilo](const std::string& text) {
                ImageLimits limits = GetImageLimits();
                limits.*field = ParseAmount(text, kilo, name);
                SetImageLimits(limits);
            },
            help)
        ->type_name("N");
}

bool Loads(const CLI::App* command) {
    return command->get_name() != "info" && command->get_name() != "formats";
}

}  // namespace

void AddLimitOptions(CLI::App& program) {
    for (CLI::App* const command : program.get_subcommands([](CLI::App* candidate) { return Loads(candidate); }))
        AddLimits(*command);
}

void AddLimits(CLI::App& command) {
    AddLimitOption(command, "--max-bytes", &ImageLimits::maxBytes, 1024,
                   "The memory that a picture may take, as 500M or 4G; K is 1024, M 1024 K, G 1024 M");
    AddLimitOption(command, "--max-pixels", &ImageLimits::maxPixels, 1000,
                   "The pixels that a picture may have, as 100M; K is 1000, M 1000 K, G 1000 M");
}

bool LoadOptions::TakesAll() const {
    return width == 0 && height == 0 && frame == 0 && orientation == 0 && !wish.IsGiven() && !selection.IsGiven();
}

void LoadOptions::AddTo(CLI::App& command, bool withFrame) {
    command
        .add_option_function<std::string>(
            "--size", [this](const std::string& text) { std::tie(width, height) = ParseSize(text, 0); },
            "The largest size wanted, in pixels, WxH; 0 means the file's own. Images are never enlarged.")
        ->type_name("WxH");
    wish.AddTo(command, "the picture as it comes out");
    AddFormatOption(command, format,
                    "The pixel format wanted: a short name (rgba8), an enumerator (kR8G8B8A8) or its number");
    AddWholeNumber(command, "--orientation", orientation, 0, 7, "Row and column order wanted, 0 (as displayed) to 7");
    command.add_flag("--high-quality", highQuality, "Always shrink with the better filter");
    if (withFrame) AddFrame(command, frame);
}

std::uint64_t LoadedImage::BlockSize() const {
    return desc.dataSize * static_cast<std::uint64_t>(FaceCount(desc.textureType));
}

Owned<ImageDesc> Describe(IImageHandler& handler, Report& report) {
    const MessageScope scope(report);
    LoadPreferences preferences;
    const LegacyNote note(preferences, report.File());
    const LoadPreferencesScope preferred(preferences);
    Owned<ImageDesc> desc(handler.GetImageDesc(OS::FromUtf8(PathForHandler(report.File()).c_str()).c_str()));
    report.Remember(desc != nullptr);
    note.Tell(report);
    return desc;
}

namespace {

bool IsTurned(int orientation) {
    return orientation >= kLeftTop;
}

/// What is known of a frame before it is loaded.
struct OwnSize {
    vec2<int> size;  ///< as it comes out
    bool isTurned;   ///< against the file's own rows and columns
    bool canShrink;  ///< by a load
};

/// Nothing for what is not described: descriptions are of the first frame and, of a DDS, of level 0. In silence: what is
/// wrong with the file is said when it is loaded.
std::optional<OwnSize> FindOwnSize(IImageHandler& handler, const std::string& file, const LoadOptions& options) {
    constexpr int kMaxLevel = 30;
    const bool isDds = IsTextureName(file);
    if (options.frame > (isDds ? kMaxLevel : 0) || options.selection.mipLevel > 0) return std::nullopt;
    Report silent(file);
    const Owned<ImageDesc> desc = Describe(handler, silent);
    if (desc == nullptr || desc->width < 1 || desc->height < 1) return std::nullopt;
    const int width = std::max(desc->width >> options.frame, 1), height = std::max(desc->height >> options.frame, 1);
    const bool isTurned = IsTurned(desc->orientation) != IsTurned(options.orientation);
    return OwnSize{.size = isTurned ? vec2<int>{height, width} : vec2<int>{width, height},
                   .isTurned = isTurned,
                   .canShrink = desc->textureType != kTextureVolume || options.selection.slice >= 0};
}

/// One call of the handler; `size` is of the file's own rows and columns.
LoadedImage CallLoad(IImageHandler& handler, Report& report, const LoadOptions& options, vec2<int> size, bool smooth) {
    const MessageScope scope(report);
    LoadPreferences preferences = options.resampling.For(report.File());
    options.selection.AddTo(preferences);
    const LegacyNote note(preferences, report.File());
    const LoadPreferencesScope preferred(preferences);
    const KString path(OS::FromUtf8(PathForHandler(report.File()).c_str()).c_str());
    LoadedImage image;
    image.block.reset(handler.LoadTexture(image.desc, path, size.x, size.y, 0, options.format, smooth, options.frame,
                                          static_cast<EDataOrientation>(options.orientation), nullptr));
    report.Remember(image.block != nullptr);
    if (image.block != nullptr && !TakesCutFile(report)) image.block.reset();
    note.Tell(report);
    return image;
}

/// Shrinks as far as the load does it, and does the rest. A picture that comes in neither its own size nor the wanted
/// one, as from a reader that leaves sizes or orientations alone, is taken as it comes.
LoadedImage LoadAsWished(IImageHandler& handler, Report& report, const LoadOptions& options) {
    const std::optional<OwnSize> own = FindOwnSize(handler, report.File(), options);
    TargetSize target = options.wish.Of(own ? own->size : vec2<int>{1, 1});
    vec2<int> asked;
    if (own && own->canShrink && target.scaled.x <= own->size.x && target.scaled.y <= own->size.y) {
        asked = {static_cast<int>(target.scaled.x), static_cast<int>(target.scaled.y)};
        if (own->isTurned) std::swap(asked.x, asked.y);
    }
    LoadedImage image = CallLoad(handler, report, options, asked, true);
    if (image.block == nullptr) return image;
    const auto isOfSize = [&](auto size) { return image.desc.width == size.x && image.desc.height == size.y; };
    const bool isExpected = own && (isOfSize(target.scaled) || isOfSize(own->size));
    if (!isExpected) target = options.wish.Of({image.desc.width, image.desc.height});
    return BroughtTo(handler, report, std::move(image), target, options.resampling);
}

}  // namespace

LoadedImage Load(IImageHandler& handler, Report& report, const LoadOptions& options) {
    if (!options.selection.isResolved) {
        LoadOptions resolved = options;
        if (!resolved.selection.Resolve(handler, report, resolved.frame)) return {};
        return Load(handler, report, resolved);
    }
    if (options.wish.IsGiven()) return LoadAsWished(handler, report, options);
    return CallLoad(handler, report, options, {options.width, options.height}, options.highQuality);
}

void FailToRead(Report& report, std::size_t mark) {
    report.FailToRead(mark);
}

}  // namespace Kavra::App
