#include "FileColours.h"
#include "FormatNames.h"
#include "Picture.h"
#include "ResizedPicture.h"
#include "TextureMaking.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <format>
#include <utility>

namespace Kavra::App {

using namespace Devices;

namespace {

EAlphaKind KindOf(ETextureAlpha alpha) {
    if (alpha == kTextureAlphaStraight) return kAlphaStraight;
    return alpha == kTextureAlphaPremultiplied ? kAlphaPremultiplied : kAlphaNone;
}

/// What the colours of the input are to its alpha: a texture file says it of itself.
EAlphaKind KindOf(const PixelTexture& texture, const Source& source) {
    const EAlphaKind kind = KindOf(texture.shape.alpha);
    return kind == kAlphaNone ? source.alpha : kind;
}

ColourChange ChangeFor(const PixelTexture& texture, const Source& source, const TexturePlan& plan,
                       const TextureOptions& options) {
    ColourChange change;
    if (!plan.copiesNumbers) {
        change.from =
            options.isSrgb == true ? Transfer{.kind = kTransferSrgb} : TransferOf(source, texture.shape.format);
        change.to = {.kind = plan.shape.isSrgb ? kTransferSrgb : kTransferLinear};
        change.tone = options.tone;
    } else {
        change.from = change.to = {.kind = kTransferLinear};
    }
    const EAlphaKind to = KindOf(plan.shape.alpha);
    if (plan.shape.alpha == kTextureAlphaOpaque) {
        change.dropsAlpha = true;
    } else if (to != kAlphaNone) {
        change.alphaFrom = KindOf(texture, source);
        change.alphaTo = to;
    }
    return change;
}

/// Light beyond white in what ends there.
bool HasTooMuchLight(Report& report, const ColourFindings& findings, const TexturePlan& plan) {
    if (findings.bright == 0 || HoldsLight(plan.shape.format)) return false;
    report.Fail(
        std::format("cannot be made: {:.1f} % of its pixels are brighter than white, which {} does not hold; bc6h "
                    "and rgba16f do, and --tonemap brings them into it",
                    100.0 * static_cast<double>(findings.bright) / static_cast<double>(findings.pixels),
                    NameOf(plan.shape.format)));
    return true;
}

// --- Rows and vectors ------------------------------------------------------------------------------------------------

void TurnUpsideDown(LoadedImage& image) {
    auto* layer = static_cast<unsigned char*>(image.block->mData);
    const auto pitch = static_cast<std::size_t>(image.desc.rowPitch),
               rows = static_cast<std::size_t>(image.desc.height);
    for (std::size_t i = 0; i < LayerCount(image.desc); ++i, layer += LayerBytes(image.desc)) {
        for (std::size_t y = 0; y < rows / 2; ++y)
            std::swap_ranges(layer + y * pitch, layer + (y + 1) * pitch, layer + (rows - 1 - y) * pitch);
    }
}

template <class T, class Turn>
void TurnSecond(LoadedImage& image, std::size_t channels, const Turn& turn) {
    auto* values = static_cast<unsigned char*>(image.block->mData);
    const std::size_t count = image.BlockSize() / sizeof(T);
    for (std::size_t i = 1; i < count; i += channels) {
        T value;
        std::memcpy(&value, values + i * sizeof(T), sizeof(T));
        value = turn(value);
        std::memcpy(values + i * sizeof(T), &value, sizeof(T));
    }
}

/// The second part of each vector with the other sign: around the middle of integers.
void InvertGreen(LoadedImage& image) {
    const FormatFacts facts = Facts(image.desc.format);
    const auto channels = static_cast<std::size_t>(facts.channels);
    if (channels < 2) return;
    constexpr std::uint16_t kSign = 0x8000;
    if (facts.element == ElementType::kUInt8)
        TurnSecond<std::uint8_t>(image, channels, [](unsigned v) { return static_cast<std::uint8_t>(255 - v); });
    if (facts.element == ElementType::kUInt16)
        TurnSecond<std::uint16_t>(image, channels, [](unsigned v) { return static_cast<std::uint16_t>(65535 - v); });
    if (facts.element == ElementType::kHalf)
        TurnSecond<std::uint16_t>(image, channels, [](unsigned v) { return static_cast<std::uint16_t>(v ^ kSign); });
    if (facts.element == ElementType::kFloat) TurnSecond<float>(image, channels, [](float v) { return -v; });
}

// --- Sizes -----------------------------------------------------------------------------------------------------------

int PowerNear(int side, PowerOfTwo power) {
    constexpr unsigned kMaxSide = 1U << 20;
    const auto value = static_cast<unsigned>(side);
    const unsigned down = std::bit_floor(value), up = std::min(std::bit_ceil(value), kMaxSide);
    if (power == PowerOfTwo::kDown) return static_cast<int>(down);
    if (power == PowerOfTwo::kUp) return static_cast<int>(up);
    return static_cast<int>(value - down < up - value ? down : up);
}

TargetSize TargetOf(const ImageDescription& desc, const TextureOptions& options) {
    vec2<int> own{desc.width, desc.height};
    TargetSize target = options.wish.Of(options.size.x > 0 ? options.size : own);
    if (options.power == PowerOfTwo::kAnySize) return target;
    const auto power = [&](long long side) { return PowerNear(static_cast<int>(side), options.power); };
    target.kept = {power(target.kept.x), power(target.kept.y)};
    target.scaled = target.kept;
    return target;
}

Resampling ResamplingFor(const TexturePlan& plan, const TextureOptions& options) {
    Resampling resampling;
    const MipOptions mips = options.MipsOf(plan.shape);
    resampling.linearLight = mips.linearLight;
    resampling.alphaWeighted = mips.alphaWeighted;
    resampling.isPremultiplied = plan.shape.alpha == kTextureAlphaPremultiplied;
    resampling.bounded = true;
    return resampling;
}

bool Resize(IImageHandler& handler, Report& report, PixelTexture& texture, const TexturePlan& plan,
            const TextureOptions& options) {
    texture.KeepLargest();
    for (LoadedImage& image : texture.images) {
        const TargetSize target = TargetOf(image.desc, options);
        image = BroughtTo(handler, report, std::move(image), target, ResamplingFor(plan, options));
        if (image.block == nullptr) return false;
    }
    if (!AreAlike(report, texture.images)) return false;
    texture.TakeSizeOfImages();
    if (texture.shape.type != kTextureCube || texture.shape.width == texture.shape.height) return true;
    report.Fail(std::format("cannot be made: the faces of a cube map are square, and these would be {} x {}",
                            texture.shape.width, texture.shape.height));
    return false;
}

}  // namespace

PixelTexture Prepared(IImageHandler& handler, Report& report, PixelTexture texture, const Source& source,
                      const TexturePlan& plan, const TextureOptions& options) {
    const ColourChange change = ChangeFor(texture, source, plan, options);
    ColourFindings findings;
    for (LoadedImage& image : texture.images) {
        if (!change.IsNothing() || image.desc.format != plan.working)
            image = Changed(image, change, plan.working, findings);
        if (options.flips) TurnUpsideDown(image);
        if (options.invertsGreen) InvertGreen(image);
    }
    texture.shape.format = plan.working;
    if (HasTooMuchLight(report, findings, plan)) return {};
    if (options.ChangesSize() && !Resize(handler, report, texture, plan, options)) return {};
    return texture;
}

}  // namespace Kavra::App
