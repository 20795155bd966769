#include "FileColours.h"
#include "FormatNames.h"
#include "TextureMaking.h"
#include "WrittenPixels.h"

#include <algorithm>
#include <array>
#include <format>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

bool IsData(EFormat format) {
    constexpr std::array kData = {kBC4, kBC4Snorm, kBC5, kBC5Snorm};
    return std::ranges::contains(kData, format);
}

/// What a texture is made of where nobody said.
EFormat Chosen(EFormat own, const TextureOptions& options) {
    if (options.format != kUnknown) return options.format;
    if (options.isNormalMap) return kBC5;
    return IsFloating(own) ? kBC6H : kBC7;
}

/// Fine enough for the source, and with a place for all that the encoder looks at.
EFormat WorkingFormat(EFormat own, EFormat made) {
    if (Facts(made).bytesPerPixel > 0) return made;
    const ElementType element = Facts(own).element;
    const bool isSigned = made == kBC4Snorm || made == kBC5Snorm;
    if (made == kBC6H || made == kBC6HSigned || (isSigned && IsFloating(own))) {
        const bool isFine = element == ElementType::kFloat || element == ElementType::kUInt16;
        return isFine ? kR32G32B32A32F : kR16G16B16A16F;
    }
    return element == ElementType::kUInt8 ? kR8G8B8A8 : kR16G16B16A16;
}

struct AlphaSeen {
    bool isOpaque = true;
    bool isCut = true;  ///< each pixel is opaque or transparent
};

/// By the largest levels.
AlphaSeen LookAtAlpha(const PixelTexture& texture) {
    AlphaSeen seen;
    for (std::size_t i = 0; i < texture.images.size(); i += static_cast<std::size_t>(texture.shape.levels)) {
        const LoadedImage& image = texture.images[i];
        if (!Facts(image.desc.format).hasAlpha || IsOpaque(image)) continue;
        seen.isOpaque = false;
        seen.isCut = seen.isCut && IsCutOut(image);
    }
    return seen;
}

/// Why the format cannot hold the alpha, and what can; empty where it can.
std::string AlphaObstacle(EFormat format, const AlphaSeen& seen, const TextureOptions& options) {
    if (seen.isOpaque || options.alpha == TextureAlpha::kNone) return {};
    const std::string name = NameOf(format);
    if (!Facts(format).hasAlpha) {
        const std::string_view others = HoldsLight(format) ? "rgba16f does" : "bc7, bc3 and rgba8 do";
        return std::format("it has alpha, which {} does not hold; {}{}", name, others,
                           options.isPlain ? "" : ", and --alpha none leaves it out");
    }
    const bool isCutOnly = format == kBC1 || format == kBC1Srgb;
    if (!isCutOnly || seen.isCut || options.IsCutOut()) return {};
    return std::format(
        "{} holds pixels that are opaque or transparent, and some are between; bc7 and bc3 hold them, {}", name,
        options.isPlain ? "and kavra texture --alpha coverage cuts them out"
                        : "--alpha coverage cuts them out, --alpha none leaves alpha out");
}

/// Which colours a format of one or two channels leaves out though they say something; empty where it does not.
std::string ColoursLeftOut(const PixelTexture& texture, EFormat format, const TextureOptions& options) {
    if (!IsData(format) || options.isNormalMap) return {};
    constexpr std::array<const char*, 3> kNames = {"red", "green", "blue"};
    const int kept = Facts(format).channels;
    std::string lost;
    for (int colour = kept; colour < 3; ++colour) {
        const auto says = [&](const LoadedImage& image) { return SaysItsOwn(image, colour); };
        if (std::ranges::any_of(texture.images, says))
            lost += std::format("{}{}", lost.empty() ? "" : " and ", kNames[static_cast<std::size_t>(colour)]);
    }
    if (lost.empty()) return {};
    return std::format("{} holds {}: {} left out", NameOf(format), kept == 1 ? "red alone" : "red and green",
                       lost + (lost.contains(' ') ? " are" : " is"));
}

ETextureAlpha AlphaIn(const PixelTexture& texture, const Source& source, const AlphaSeen& seen, EFormat format,
                      const TextureOptions& options) {
    if (seen.isOpaque || options.alpha == TextureAlpha::kNone || !Facts(format).hasAlpha) return kTextureAlphaOpaque;
    if (options.alpha == TextureAlpha::kPremultiplied) return kTextureAlphaPremultiplied;
    if (options.alpha != TextureAlpha::kAsItIs) return kTextureAlphaStraight;
    if (texture.shape.alpha == kTextureAlphaCustom) return kTextureAlphaCustom;
    if (texture.shape.alpha == kTextureAlphaPremultiplied) return kTextureAlphaPremultiplied;
    return source.alpha == kAlphaNone ? kTextureAlphaCustom : kTextureAlphaStraight;
}

/// What becomes of the values.
struct Curve {
    bool copiesNumbers, isSrgb;
};

Curve CurveOf(const PixelTexture& texture, const Source& source, EFormat format, const TextureOptions& options) {
    const EFormat own = texture.shape.format;
    if (options.isNormalMap || IsData(format) || options.isSrgb == false) return {true, false};
    // What a file says of its integers it goes on saying of others.
    if (texture.saysCurve && !IsFloating(own) && !HoldsLight(format))
        return {true, options.isSrgb.value_or(texture.shape.isSrgb)};
    const bool isSrgb = options.isSrgb.value_or(!TransferOf(source, own).IsLinear());
    if (HoldsLight(format)) return {!isSrgb && IsFloating(own), false};
    if (!isSrgb && !IsFloating(own)) return {true, false};
    return {isSrgb && TransferOf(source, own).kind == kTransferSrgb, true};
}

}  // namespace

std::string NameOf(EFormat format) {
    const std::string name = Facts(SrgbVariant(format, false)).shortName;
    return name.empty() ? Enumerator(format) : name;
}

bool HoldsLight(EFormat format) {
    return format == kBC6H || format == kBC6HSigned || IsFloating(format);
}

TexturePlan PlanOf(Report& report, const PixelTexture& texture, const Source& source, const TextureOptions& options) {
    const EFormat own = texture.shape.format;
    TextureOptions known = options;
    const EFormat format = Chosen(own, options);
    const bool saysSrgb = SrgbVariant(options.format, false) != options.format;
    if (saysSrgb && !options.isSrgb) known.isSrgb = true;
    if (options.isSrgb == true && IsData(format)) {
        report.Fail(std::format("cannot be made: {} has no form that is sRGB; bc7 has", NameOf(format)));
        return {};
    }
    const AlphaSeen seen = LookAtAlpha(texture);
    const std::string obstacle = AlphaObstacle(format, seen, known);
    if (!obstacle.empty()) {
        report.Fail("cannot be made: " + obstacle);
        return {};
    }
    const std::string leftOut = ColoursLeftOut(texture, format, options);
    if (!leftOut.empty()) report.Say("note", leftOut);
    TexturePlan plan{.shape = texture.shape, .working = WorkingFormat(own, format)};
    const Curve curve = CurveOf(texture, source, format, known);
    plan.copiesNumbers = curve.copiesNumbers;
    plan.shape.isSrgb = curve.isSrgb;
    plan.shape.format = SrgbVariant(format, plan.shape.isSrgb);
    plan.shape.alpha = AlphaIn(texture, source, seen, format, known);
    return plan;
}

}  // namespace Kavra::App
