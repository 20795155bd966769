#include "common/ktx/KtxSwizzle.h"

#include "common/PixelFormats.h"

#include <algorithm>
#include <cctype>

namespace Kavra::Devices::Ktx {

namespace {

constexpr std::string_view kUsual = "rgba", kOpaque = "rgb1", kGrey = "rrr1", kAlpha = "000r", kGreyAlpha = "rrrg";

bool IsTwoBytes(const Dds::StoredLayout& layout) {
    return layout.unit == Dds::PixelUnit(2) && layout.signedChannels == 0 && layout.masks == Dds::Masks{0xFF, 0xFF00};
}

/// Whether every channel is taken from itself, or where there is none from 0, alpha from 1.
bool IsUsual(std::string_view swizzle, std::size_t channels) {
    constexpr std::string_view kMissing = "0001";
    if (swizzle.empty() || swizzle == kUsual) return true;
    if (swizzle.size() != kUsual.size()) return false;
    for (std::size_t c = 0; c < swizzle.size(); ++c) {
        if (swizzle[c] != (c < channels ? kUsual : kMissing)[c]) return false;
    }
    return true;
}

std::size_t StoredChannels(const Dds::StoredLayout& layout) {
    const Common::PixelFormat& facts = Common::FactsOf(layout.format);
    if (layout.widen == nullptr)
        return static_cast<std::size_t>(facts.channels) + static_cast<std::size_t>(facts.blockChannels);
    const auto used =
        static_cast<std::size_t>(std::ranges::count_if(layout.masks, [](std::uint64_t mask) { return mask != 0; }));
    return used == 0 ? 3 : used;
}

}  // namespace

bool ApplySwizzle(std::string_view swizzle, Dds::StoredTexture& texture) {
    Dds::StoredLayout& layout = texture.layout;
    if (IsUsual(swizzle, StoredChannels(layout))) return true;
    if (swizzle == kGrey && layout.format == kR8) {
        layout.format = kL8;
    } else if (swizzle == kGrey && layout.format == kR16) {
        layout.format = kL16;
    } else if (swizzle == kAlpha && layout.format == kR8) {
        layout.format = kA8;
        layout.hasAlpha = true;
    } else if (swizzle == kGreyAlpha && IsTwoBytes(layout)) {
        layout.masks = {0xFF, 0xFF, 0xFF, 0xFF00};
        layout.hasAlpha = true;
    } else if (swizzle == kOpaque && layout.hasAlpha) {
        texture.alpha = Dds::kAlphaModeOpaque;
    } else {
        return false;
    }
    return true;
}

std::string_view SwizzleOf(EFormat format, bool isOpaque) {
    switch (format) {
        case kL8:
        case kL16:
            return kGrey;
        case kA8:
            return kAlpha;
        case kR8G8B8X8:
        case kB8G8R8X8:
            return kOpaque;
        case kBC1:
        case kBC1Srgb:
            return {};  // which have a number for that
        default:
            return isOpaque && Common::FactsOf(format).hasAlpha ? kOpaque : std::string_view();
    }
}

std::string PrintableSwizzle(std::string_view swizzle) {
    constexpr std::size_t kMaxLength = 8;
    std::string text(swizzle.substr(0, kMaxLength));
    std::ranges::replace_if(text, [](unsigned char c) { return std::isalnum(c) == 0; }, '?');
    return text;
}

}  // namespace Kavra::Devices::Ktx
