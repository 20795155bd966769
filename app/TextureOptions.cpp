#include "TextureOptions.h"

#include "LoadOptions.h"
#include "Sizes.h"
#include "Usage.h"

#include <charconv>
#include <format>

namespace Kavra::App {

using namespace Devices;

namespace {

constexpr int kMaxZstd = 22;

LevelWish ParseLevels(const std::string& text) {
    const std::string word = CLI::detail::to_lower(text);
    if (word == "all") return {LevelWish::kAll};
    if (word == "none") return {1};
    int count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc() || end != text.data() + text.size() || count < 1)
        throw CLI::ValidationError("--mips", text + " is neither all, none nor a number of levels, 1 or more");
    return {count};
}

float ParseCoverage(const std::string& text) {
    float value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isAlpha = value > 0 && value <= 1;
    if (error != std::errc() || end != text.data() + text.size() || !isAlpha)
        throw CLI::ValidationError("--keep-coverage", text + " is no alpha above 0 and up to 1, such as 0.5");
    return value;
}

void AddLevels(CLI::App& command, TextureOptions& options) {
    command
        .add_option_function<std::string>(
            "--mips", [&options](const std::string& text) { options.levels = ParseLevels(text); },
            "Levels: all down to 1 x 1, none but the picture, or a number. Unless said, all of a picture, and of a "
            "texture file those that it has")
        ->type_name("N|all|none");
    AddChoice<EResampleFilter>(
        command, "--mip-filter",
        {{"box", kResampleBox},
         {"triangle", kResampleTriangle},
         {"mitchell", kResampleMitchell},
         {"catmull-rom", kResampleCatmullRom},
         {"lanczos3", kResampleLanczos3}},
        [&options](EResampleFilter filter) { options.mipFilter = filter; },
        "How levels are made; box unless said. Colours are filtered as light, vectors keep their length, what is "
        "transparent lends no colour");
    command.add_flag("--wrap", options.wraps, "The texture is a tile: filters reach over to the opposite edge");
    command
        .add_option_function<std::string>(
            "--keep-coverage",
            [&options](const std::string& text) {
                options.coverage = ParseCoverage(text);
                options.alpha = TextureAlpha::kCoverage;
            },
            "The alpha from which on pixels are there; as many of them stay in each level. --alpha coverage with 0.5")
        ->type_name("ALPHA");
}

void AddColours(CLI::App& command, TextureOptions& options) {
    command.add_flag_callback(
        "--srgb", [&options] { options.isSrgb = true; },
        "The colours are sRGB, whatever the file says of them, and the texture's format says so");
    command
        .add_flag_callback(
            "--linear", [&options] { options.isSrgb = false; },
            "The values are light or data: no curve is looked for in them")
        ->excludes("--srgb");
    command
        .add_flag("--normal-map", options.isNormalMap,
                  "The colours are vectors; bc5 unless a format is said. Levels keep their length")
        ->excludes("--srgb");
    command.add_flag("--invert-green", options.invertsGreen, "Turn the second part of vectors round")
        ->needs("--normal-map");
    AddChoice<TextureAlpha>(
        command, "--alpha",
        {{"straight", TextureAlpha::kStraight},
         {"premultiplied", TextureAlpha::kPremultiplied},
         {"coverage", TextureAlpha::kCoverage},
         {"none", TextureAlpha::kNone}},
        [&options](TextureAlpha alpha) { options.alpha = alpha; },
        "What alpha is: apart from the colours (unless said), multiplied into them, a cut-out (pixels are there or "
        "not), or left out");
    AddChoice<ToneMap>(
        command, "--tonemap",
        {{"none", ToneMap::kNone}, {"reinhard", ToneMap::kReinhard}, {"filmic", ToneMap::kFilmic}},
        [&options](ToneMap map) { options.tone = map; },
        "Bring light beyond white into 0 to 1, for formats that end there");
}

void AddSizes(CLI::App& command, TextureOptions& options) {
    command
        .add_option_function<std::string>(
            "--size",
            [&options](const std::string& text) { std::tie(options.size.x, options.size.y) = ParseSize(text, 1); },
            "The size of the largest level, of a cube map that of a face; it need not keep the proportions")
        ->type_name("WxH");
    options.wish.AddTo(command, "the largest level");
    AddChoice<PowerOfTwo>(
        command, "--power-of-two",
        {{"nearest", PowerOfTwo::kNearest}, {"up", PowerOfTwo::kUp}, {"down", PowerOfTwo::kDown}},
        [&options](PowerOfTwo power) { options.power = power; }, "Bring each side to a power of two");
    command.add_flag("--flip", options.flips, "Turn rows upside down");
}

}  // namespace

void TextureOptions::AddTo(CLI::App& command) {
    AddFormatOption(
        command, format,
        "bc1 to bc7, bc6h, rgba8, rgba16f or any other of kavra formats. Unless said bc7, bc6h of floats, and "
        "of texture files their own");
    AddChoice<ECompressionEffort>(
        command, "--quality", {{"fast", kCompressionFast}, {"good", kCompressionGood}, {"best", kCompressionBest}},
        [this](ECompressionEffort chosen) { effort = chosen; }, "How long blocks are worked on; good unless said");
    command.add_flag("--perceptual", isPerceptual,
                     "Errors count as much as the eye sees of them: green most, blue least");
    AddLevels(command, *this);
    AddColours(command, *this);
    AddSizes(command, *this);
    AddWholeNumber(command, "--zstd", zstdLevel, 0, kMaxZstd, "Pack the levels of .ktx2 files: 1 (fast) to 22 (small)");
}

bool TextureOptions::KeepsPixels() const {
    return format == kUnknown && !isNormalMap && alpha == TextureAlpha::kAsItIs && !ChangesSize() && !flips &&
           tone == ToneMap::kNone && !isSrgb;
}

MipOptions TextureOptions::MipsOf(const TextureShape& shape) const {
    MipOptions mips = MipOptionsFor(shape);
    mips.filter = mipFilter;
    mips.edges = wraps ? kMipWrap : kMipClamp;
    if (isNormalMap) mips.content = kMipNormals;
    if (IsCutOut()) mips.keepCoverage = coverage;
    return mips;
}

CompressionOptions TextureOptions::CompressionOf(const TextureShape& shape) const {
    CompressionOptions compression;
    compression.effort = effort;
    compression.cutoff = coverage;
    compression.withAlpha = shape.alpha != kTextureAlphaOpaque;
    if (isPerceptual) {  // ITU-R BT.601
        compression.weights[0] = 0.299F;
        compression.weights[1] = 0.587F;
        compression.weights[2] = 0.114F;
        compression.weights[3] = 0.5F;
    }
    return compression;
}

}  // namespace Kavra::App
