/// What is known of each pixel format: the one place that says it.
#pragma once

#include <kavra/devices/FormatFacts.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace Kavra::Common {

using Devices::ElementType;

constexpr int BytesOf(ElementType element) {
    switch (element) {
        case ElementType::kNone:
            return 0;
        case ElementType::kUInt8:
            return 1;
        case ElementType::kUInt16:
        case ElementType::kHalf:
            return 2;
        case ElementType::kFloat:
            return 4;
    }
    return 0;
}

/// What kind of number a format has.
enum class FormatKind : std::uint8_t {
    kNone,          ///< no format, or one that means nothing here
    kPixels,        ///< pixels that can be addressed one by one
    kBlocks,        ///< block-compressed: BC1 to BC5, and the two reserved numbers behind them
    kLaterBlocks,   ///< block-compressed: BC6H and BC7, and the two reserved numbers behind them
    kAlphaVariant,  ///< a host's own reader of DDS files says it of colours that are then described as `kB8G8R8A8`
};

/// One format. Only those of pixels have an element type, channels and bytes a pixel.
struct PixelFormat {
    Devices::EFormat value = Devices::kUnknown;
    std::string_view name;       ///< of the enumerator
    std::string_view shortName;  ///< for people; empty where there is none
    FormatKind kind = FormatKind::kNone;
    ElementType element = ElementType::kNone;
    int channels = 0;
    int bytesPerBlock = 0;   ///< of 4 x 4 pixels, 0 for formats that are not block-compressed
    int blockChannels = 0;   ///< of the pixels in such a block
    bool blueFirst = false;  ///< the first channel is blue and the third red
    bool hasAlpha = false;   ///< the last channel is an alpha, of a block's pixels too
    /// Whether the image library is shown such pixels. Two formats it is not: `kR8G8B8A8Alt`, which only the analysis
    /// of light takes, and `kR32G32B32F`, which only conversion makes.
    bool inLibrary = false;

    constexpr int BytesPerPixel() const { return channels * BytesOf(element); }
    constexpr bool HasPixels() const { return channels > 0; }
    /// Colours of 8 bits a channel; red comes first unless `blueFirst`.
    constexpr bool IsByteColour() const { return channels == 4 && element == ElementType::kUInt8; }
    /// Whether red and blue are exchanged on the way to or from one that is blue first. `kR8G8B8A8Alt` is not among
    /// them: nothing is converted from or to it.
    constexpr bool IsRedFirst() const { return IsByteColour() && !blueFirst && inLibrary; }
    constexpr bool IsAlphaOnly() const { return channels == 1 && hasAlpha; }
};

namespace FormatTable {

using enum Devices::EFormat;

constexpr PixelFormat Plain(Devices::EFormat value, std::string_view name, std::string_view shortName,
                            ElementType element, int channels) {
    return {.value = value,
            .name = name,
            .shortName = shortName,
            .kind = FormatKind::kPixels,
            .element = element,
            .channels = channels,
            .inLibrary = true};
}
constexpr PixelFormat WithAlpha(PixelFormat format) {
    format.hasAlpha = true;
    return format;
}
constexpr PixelFormat BlueFirst(PixelFormat format) {
    format.blueFirst = true;
    return format;
}
constexpr PixelFormat NotInLibrary(PixelFormat format) {
    format.inLibrary = false;
    return format;
}
constexpr PixelFormat Blocks(Devices::EFormat value, std::string_view name, std::string_view shortName, int bytes,
                             int channels, FormatKind kind = FormatKind::kBlocks) {
    return {.value = value,
            .name = name,
            .shortName = shortName,
            .kind = kind,
            .bytesPerBlock = bytes,
            .blockChannels = channels,
            .hasAlpha = channels == 4};
}
constexpr PixelFormat Reserved(Devices::EFormat value, std::string_view name, FormatKind kind) {
    return {.value = value, .name = name, .shortName = {}, .kind = kind};
}

/// Every enumerator of `EFormat`, in the order of their values.
inline constexpr std::array kFormats = {
    Reserved(kUnknown, "kUnknown", FormatKind::kNone),
    Blocks(kBC1, "kBC1", "bc1", 8, 4),
    Blocks(kBC1Srgb, "kBC1Srgb", "", 8, 4),
    Blocks(kBC2, "kBC2", "bc2", 16, 4),
    Blocks(kBC2Srgb, "kBC2Srgb", "", 16, 4),
    Blocks(kBC3, "kBC3", "bc3", 16, 4),
    Blocks(kBC3Srgb, "kBC3Srgb", "", 16, 4),
    Blocks(kBC4, "kBC4", "bc4", 8, 1),
    Blocks(kBC4Snorm, "kBC4Snorm", "", 8, 1),
    Blocks(kBC5, "kBC5", "bc5", 16, 2),
    Blocks(kBC5Snorm, "kBC5Snorm", "", 16, 2),
    Reserved(kReserved16, "kReserved16", FormatKind::kBlocks),
    Reserved(kReserved17, "kReserved17", FormatKind::kBlocks),
    WithAlpha(Plain(kA8, "kA8", "a8", ElementType::kUInt8, 1)),
    Plain(kR8, "kR8", "r8", ElementType::kUInt8, 1),
    Plain(kL8, "kL8", "l8", ElementType::kUInt8, 1),
    Plain(kR16F, "kR16F", "r16f", ElementType::kHalf, 1),
    Plain(kR16, "kR16", "r16", ElementType::kUInt16, 1),
    Plain(kL16, "kL16", "l16", ElementType::kUInt16, 1),
    Plain(kR32F, "kR32F", "r32f", ElementType::kFloat, 1),
    Plain(kR16G16F, "kR16G16F", "rg16f", ElementType::kHalf, 2),
    Plain(kR16G16, "kR16G16", "rg16", ElementType::kUInt16, 2),
    WithAlpha(Plain(kR8G8B8A8, "kR8G8B8A8", "rgba8", ElementType::kUInt8, 4)),
    NotInLibrary(WithAlpha(Plain(kR8G8B8A8Alt, "kR8G8B8A8Alt", "", ElementType::kUInt8, 4))),
    Reserved(kReserved50, "kReserved50", FormatKind::kAlphaVariant),
    Reserved(kReserved51, "kReserved51", FormatKind::kAlphaVariant),
    BlueFirst(WithAlpha(Plain(kB8G8R8A8, "kB8G8R8A8", "bgra8", ElementType::kUInt8, 4))),
    BlueFirst(Plain(kB8G8R8X8, "kB8G8R8X8", "bgrx8", ElementType::kUInt8, 4)),
    Plain(kR8G8B8X8, "kR8G8B8X8", "rgbx8", ElementType::kUInt8, 4),
    Plain(kR32G32F, "kR32G32F", "rg32f", ElementType::kFloat, 2),
    WithAlpha(Plain(kR16G16B16A16F, "kR16G16B16A16F", "rgba16f", ElementType::kHalf, 4)),
    WithAlpha(Plain(kR16G16B16A16, "kR16G16B16A16", "rgba16", ElementType::kUInt16, 4)),
    NotInLibrary(Plain(kR32G32B32F, "kR32G32B32F", "rgb32f", ElementType::kFloat, 3)),
    WithAlpha(Plain(kR32G32B32A32F, "kR32G32B32A32F", "rgba32f", ElementType::kFloat, 4)),
    Blocks(kBC6H, "kBC6H", "bc6h", 16, 3, FormatKind::kLaterBlocks),
    Blocks(kBC6HSigned, "kBC6HSigned", "", 16, 3, FormatKind::kLaterBlocks),
    Blocks(kBC7, "kBC7", "bc7", 16, 4, FormatKind::kLaterBlocks),
    Blocks(kBC7Srgb, "kBC7Srgb", "", 16, 4, FormatKind::kLaterBlocks),
    Reserved(kReserved77, "kReserved77", FormatKind::kLaterBlocks),
    Reserved(kReserved78, "kReserved78", FormatKind::kLaterBlocks),
};

inline constexpr int kMaxValue = kReserved78;

/// The place in `kFormats` of each value up to the largest; that of `kUnknown` for values that are no format.
inline constexpr auto kPlaces = [] {
    std::array<unsigned char, kMaxValue + 1> places{};
    for (std::size_t i = 0; i < kFormats.size(); ++i)
        places[static_cast<std::size_t>(kFormats[i].value)] = static_cast<std::uint8_t>(i);
    return places;
}();

static_assert(kFormats.front().value == kUnknown && kFormats.back().value == kMaxValue);
static_assert(std::ranges::adjacent_find(kFormats, std::ranges::greater_equal{}, &PixelFormat::value) ==
              kFormats.end());
static_assert(std::ranges::all_of(kFormats, [](const PixelFormat& format) {
    const bool hasPixels = format.kind == FormatKind::kPixels, hasBlocks = format.bytesPerBlock > 0;
    const int channels = format.channels + format.blockChannels;
    return hasPixels == format.HasPixels() && hasPixels == (format.element != ElementType::kNone) &&
           hasBlocks == (format.blockChannels > 0) && !(hasPixels && hasBlocks) && (hasPixels || !format.inLibrary) &&
           (!format.blueFirst || format.IsByteColour()) && (!format.hasAlpha || channels == 4 || channels == 1);
}));

}  // namespace FormatTable

/// What is known of a format; of a value that is none, what is known of `kUnknown`: nothing.
constexpr const PixelFormat& FactsOf(Devices::EFormat format) {
    const int value = format;
    const bool isKnown = value >= 0 && value <= FormatTable::kMaxValue;
    return FormatTable::kFormats[isKnown ? FormatTable::kPlaces[static_cast<std::size_t>(value)] : 0];
}

}  // namespace Kavra::Common
