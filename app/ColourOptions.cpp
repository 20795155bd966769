#include "ColourOptions.h"

#include "FileColours.h"
#include "FormatNames.h"
#include "Usage.h"
#include "WrittenPixels.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <format>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr double kMaxStops = 60;

/// One colour of "12,200,0", or of one digit or two of a "#" colour; nothing for anything else.
std::optional<int> ParseByte(std::string_view text, int base) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    const bool isByte = error == std::errc() && end == text.data() + text.size() && value >= 0 && value <= 255;
    return isByte && !text.empty() && text.front() != '-' ? std::optional(value) : std::nullopt;
}

std::optional<Light> LightOf(std::array<std::optional<int>, 3> bytes) {
    Light light{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (!bytes[i]) return std::nullopt;
        light[i] = DecodeSrgb(static_cast<float>(*bytes[i]) / 255);
    }
    return light;
}

std::optional<Light> ParseHexColour(std::string_view digits) {
    if (digits.size() != 3 && digits.size() != 6) return std::nullopt;
    const std::size_t length = digits.size() / 3;
    std::array<std::optional<int>, 3> bytes;
    for (std::size_t i = 0; i < 3; ++i) {
        bytes[i] = ParseByte(digits.substr(i * length, length), 16);
        if (length == 1 && bytes[i]) *bytes[i] *= 17;
    }
    return LightOf(bytes);
}

double ParseStops(const std::string& text) {
    double stops = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), stops);
    if (error != std::errc() || end != text.data() + text.size() || !(std::abs(stops) <= kMaxStops))
        throw CLI::ValidationError("--exposure", std::format("{} is no number from -60 to 60", text));
    return stops;
}

/// A share of pixels as people read it.
std::string Percent(std::size_t part, std::size_t whole) {
    const double percent = 100 * static_cast<double>(part) / static_cast<double>(whole);
    return percent < 0.1 ? "less than 0.1 %" : std::format("{:.1f} %", percent);
}

/// Whether a colour profile calls itself one of sRGB, in letters of one byte or two.
bool IsSrgbProfile(std::span<const unsigned char> profile) {
    constexpr std::string_view kName = "sRGB";
    constexpr std::string_view kWideName("s\0R\0G\0B", 7);
    const std::string_view text(reinterpret_cast<const char*>(profile.data()), profile.size());
    return text.contains(kName) || text.contains(kWideName);
}

void NoteFindings(Report& report, const ColourFindings& findings, const ColourChange& change,
                  std::string_view extension) {
    const bool isCut = change.PassesLight() && !change.to.IsLinear() && change.tone == ToneMap::kNone;
    if (isCut && findings.bright > 0) {
        report.Say("note", std::format("{} of the pixels are brighter than white and were clipped; --tonemap or "
                                       "--exposure show what is in them",
                                       Percent(findings.bright, findings.pixels)));
    }
    if (findings.glowing > 0) {
        report.Say("note", std::format("{} of the pixels are light without alpha, which {} files do not show; "
                                       "--background does",
                                       Percent(findings.glowing, findings.pixels), extension));
    }
}

}  // namespace

std::optional<Light> ParseColour(std::string_view text) {
    if (text == "black") return LightOf({0, 0, 0});
    if (text == "white") return LightOf({255, 255, 255});
    if (text == "grey" || text == "gray") return LightOf({128, 128, 128});
    if (text.starts_with('#')) return ParseHexColour(text.substr(1));
    const std::size_t first = text.find(',');
    const std::size_t second = first == std::string_view::npos ? first : text.find(',', first + 1);
    if (second == std::string_view::npos) return std::nullopt;
    return LightOf({ParseByte(text.substr(0, first), 10), ParseByte(text.substr(first + 1, second - first - 1), 10),
                    ParseByte(text.substr(second + 1), 10)});
}

void ColourOptions::AddExposure(CLI::App& command) {
    command
        .add_option_function<std::string>(
            "--exposure", [this](const std::string& text) { stops = ParseStops(text); },
            "Brighten by so many stops, each twice the light; negative ones darken")
        ->type_name("STOPS");
    AddChoice<ToneMap>(
        command, "--tonemap",
        {{"none", ToneMap::kNone}, {"reinhard", ToneMap::kReinhard}, {"filmic", ToneMap::kFilmic}},
        [this](ToneMap map) { tone = map; },
        "Bring light beyond white into what a screen shows, as Reinhard et al. 2002 or Hable 2010 do; none unless "
        "said: "
        "it is clipped");
}

void ColourOptions::AddTo(CLI::App& command) {
    AddChoice<AlphaWish>(
        command, "--alpha",
        {{"straight", AlphaWish::kStraight},
         {"premultiplied", AlphaWish::kPremultiplied},
         {"keep", AlphaWish::kKeep},
         {"drop", AlphaWish::kDrop}},
        [this](AlphaWish wish) { alpha = wish; },
        "What colours are to alpha in the output: unless said premultiplied in OpenEXR and straight in all others, and "
        "what has no alpha is put on black. keep: as in the input; drop: as stored, and opaque");
    command
        .add_option_function<std::string>(
            "--background",
            [this](const std::string& text) {
                background = ParseColour(text);
                if (!background) throw CLI::ValidationError("--background", text + " is no colour, such as #ff8000");
            },
            "Put the picture on a colour, as light mixes: black, white, grey, #rgb, #rrggbb or r,g,b from 0 to 255")
        ->type_name("COLOUR")
        ->excludes("--alpha");
    command.add_flag_callback(
        "--linear", [this] { input = kTransferLinear; },
        "Take the values of the input for light. Unless said the file tells, or else halves and floats are light and 8 "
        "and 16 bits sRGB");
    command
        .add_flag_callback(
            "--srgb", [this] { input = kTransferSrgb; }, "Take the values of the input for sRGB ones")
        ->excludes("--linear");
    AddExposure(command);
    CLI::Option* const copies = command.add_flag("--raw", raw, "Copy numbers: no curve, nothing done by alpha");
    for (const char* const other : {"--alpha", "--background", "--linear", "--srgb", "--exposure", "--tonemap"})
        copies->excludes(other);
}

Source ColourOptions::Declared(Source source) const {
    if (input != kTransferUnknown) source.transfer = input;
    return source;
}

LoadOptions ColourOptions::ForLoading(IImageHandler& handler, const LoadOptions& load, const std::string& file,
                                      const Source& source) const {
    LoadOptions own = load;
    own.resampling.isPremultiplied = source.alpha == kAlphaPremultiplied;
    if (!raw && load.format == kUnknown && load.selection.channels.empty())
        own.selection.channels = source.greyWithAlpha;
    if (raw || load.format == kUnknown || Facts(load.format).bytesPerPixel == 0) return own;
    Report silent(file);
    const Owned<ImageDesc> desc = Describe(handler, silent);
    if (desc == nullptr || Facts(desc->format).bytesPerPixel == 0) return own;
    const bool isLight = TransferOf(Declared(source), desc->format).IsLinear();
    if (isLight != IsFloating(load.format) || IsFloating(desc->format) != IsFloating(load.format))
        own.format = kUnknown;
    return own;
}

ColourChange ColourOptions::ChangeTo(const LoadedImage& image, const Source& source, const FileColours& file,
                                     EFormat format) const {
    ColourChange change;
    change.from = TransferOf(source, image.desc.format);
    change.to = {.kind = IsFloating(format) ? kTransferLinear : kTransferSrgb};
    change.brightness = static_cast<float>(std::exp2(stops));
    change.tone = tone;
    const EAlphaKind kind = AlphaOf(source, image.desc.format);
    if (kind == kAlphaNone || IsOpaque(image)) return change;
    if (alpha == AlphaWish::kKeep) return change;
    if (!background && (alpha == AlphaWish::kDrop || !Facts(format).hasAlpha)) {
        change.dropsAlpha = true;
        return change;
    }
    change.alphaFrom = kind;
    if (alpha == AlphaWish::kStraight) change.alphaTo = kAlphaStraight;
    if (alpha == AlphaWish::kPremultiplied) change.alphaTo = kAlphaPremultiplied;
    if (alpha == AlphaWish::kAsFilesAre && file.holdsAlpha) change.alphaTo = file.alpha;
    if (alpha == AlphaWish::kAsFilesAre && !file.holdsAlpha) change.background = Light{};
    if (background) change.background = background;
    if (change.background) change.alphaTo = kAlphaNone;
    return change;
}

LoadedImage ColourOptions::Apply(Report& report, LoadedImage image, Source& source, std::string_view extension,
                                 EFormat wanted) const {
    const EFormat own = image.desc.format;
    if (wanted == kUnknown) wanted = own;
    if (Facts(own).bytesPerPixel == 0 || Facts(wanted).bytesPerPixel == 0 || own == kA8) return image;
    ColourFindings findings;
    if (raw) return wanted == own ? std::move(image) : Changed(image, {}, wanted, findings);

    const FileColours file = ColoursOf(extension);
    const EFormat format = FormatIn(file, extension, wanted);
    const bool holdsAlpha = file.holdsAlpha && Facts(format).hasAlpha;
    const Source declared = Declared(source);
    const ColourChange change = ChangeTo(image, declared, file, format);
    const EAlphaKind kind = AlphaOf(declared, own);
    source = declared;
    source.alpha = kind;
    if (kind != kAlphaNone && alpha != AlphaWish::kKeep) {
        source.alpha = alpha == AlphaWish::kPremultiplied ? kAlphaPremultiplied
                       : alpha == AlphaWish::kStraight    ? kAlphaStraight
                                                          : file.alpha;
    }
    if (!holdsAlpha || change.background || alpha == AlphaWish::kDrop) source.alpha = kAlphaNone;
    if (change.IsNothing() && format == own) return image;

    LoadedImage result = Changed(image, change, format, findings);
    NoteFindings(report, findings, change, extension);
    if (change.background && !background) {
        report.Say("note", std::format("its transparent pixels were put on black, as {} files hold no alpha; "
                                       "--background chooses another colour",
                                       extension));
    }
    if (change.background || change.dropsAlpha) {
        result.desc.hasAlpha = result.desc.hasTransparentPixels = result.desc.hasTranslucentPixels = false;
    }
    if (!change.ChangesValues()) return result;
    source.transfer = change.to.kind;
    source.colourSpace.clear();
    if (!source.iccProfile.empty() && !IsSrgbProfile(source.iccProfile)) {
        report.Say("note", "its colour profile was not applied: the colours were taken for those of sRGB");
    }
    source.iccProfile.clear();
    return result;
}

}  // namespace Kavra::App
