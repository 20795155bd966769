/// What is known of each pixel format: the one place that says it.
#pragma once

#include <kavra/devices/EFormat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace Kavra::Common {

/// The type of a channel. Both 16-bit types are little-endian; a half is an IEEE 754 binary16.
enum class ElementType : std::uint8_t { kNone, kUInt8, kUInt16, kHalf, kFloat };

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

/// One format. Those that are block-compressed or reserved have no pixels that could be addressed one by one: no
/// element type, no channels and no bytes a pixel.
struct PixelFormat {
    Devices::EFormat value = Devices::kUnknown;
    std::string_view name;  ///< of the enumerator
    ElementType element = ElementType::kNone;
    int channels = 0;
    int bytesPerBlock = 0;   ///< of 4 x 4 pixels, 0 for formats that are not block-compressed
    bool blueFirst = false;  ///< the first channel is blue and the third red
    bool hasAlpha = false;   ///< the fourth channel is an alpha
    /// Whether the image library is shown such pixels. Two formats it is not: `kR8G8B8A8Alt`, which only the analysis
    /// of light takes, and `kR32G32B32F`, which only conversion makes.
    bool inLibrary = false;

    constexpr int BytesPerPixel() const { return channels * BytesOf(element); }
    constexpr bool HasPixels() const { return channels > 0; }
    /// Colours of 8 bits a channel; red comes first unless `blueFirst`.
    constexpr bool IsByteColour() const { return channels == 4 && element == ElementType::kUInt8; }
};

namespace FormatTable {

using enum Devices::EFormat;

constexpr PixelFormat Plain(Devices::EFormat value, std::string_view name, ElementType element, int channels) {
    return {.value = value, .name = name, .element = element, .channels = channels, .inLibrary = true};
}
constexpr PixelFormat WithAlpha(Devices::EFormat value, std::string_view name, ElementType element) {
    return {.value = value, .name = name, .element = element, .channels = 4, .hasAlpha = true, .inLibrary = true};
}
constexpr PixelFormat Blocks(Devices::EFormat value, std::string_view name, int bytes) {
    return {.value = value, .name = name, .bytesPerBlock = bytes};
}
constexpr PixelFormat Reserved(Devices::EFormat value, std::string_view name) {
    return {.value = value, .name = name};
}

/// Every enumerator of `EFormat`, in the order of their values.
inline constexpr std::array kFormats = {
    Reserved(kUnknown, "kUnknown"),
    Blocks(kBC1, "kBC1", 8),
    Blocks(kBC1Srgb, "kBC1Srgb", 8),
    Blocks(kBC2, "kBC2", 16),
    Blocks(kBC2Srgb, "kBC2Srgb", 16),
    Blocks(kBC3, "kBC3", 16),
    Blocks(kBC3Srgb, "kBC3Srgb", 16),
    Blocks(kBC4, "kBC4", 8),
    Blocks(kBC4Snorm, "kBC4Snorm", 8),
    Blocks(kBC5, "kBC5", 16),
    Blocks(kBC5Snorm, "kBC5Snorm", 16),
    Reserved(kReserved16, "kReserved16"),
    Reserved(kReserved17, "kReserved17"),
    Plain(kA8, "kA8", ElementType::kUInt8, 1),
    Plain(kR8, "kR8", ElementType::kUInt8, 1),
    Plain(kL8, "kL8", ElementType::kUInt8, 1),
    Plain(kR16F, "kR16F", ElementType::kHalf, 1),
    Plain(kR16, "kR16", ElementType::kUInt16, 1),
    Plain(kL16, "kL16", ElementType::kUInt16, 1),
    Plain(kR32F, "kR32F", ElementType::kFloat, 1),
    Plain(kR16G16F, "kR16G16F", ElementType::kHalf, 2),
    Plain(kR16G16, "kR16G16", ElementType::kUInt16, 2),
    WithAlpha(kR8G8B8A8, "kR8G8B8A8", ElementType::kUInt8),
    PixelFormat{
        .value = kR8G8B8A8Alt, .name = "kR8G8B8A8Alt", .element = ElementType::kUInt8, .channels = 4, .hasAlpha = true},
    Reserved(kReserved50, "kReserved50"),
    Reserved(kReserved51, "kReserved51"),
    PixelFormat{.value = kB8G8R8A8,
                .name = "kB8G8R8A8",
                .element = ElementType::kUInt8,
                .channels = 4,
                .blueFirst = true,
                .hasAlpha = true,
                .inLibrary = true},
    PixelFormat{.value = kB8G8R8X8,
                .name = "kB8G8R8X8",
                .element = ElementType::kUInt8,
                .channels = 4,
                .blueFirst = true,
                .inLibrary = true},
    Plain(kR8G8B8X8, "kR8G8B8X8", ElementType::kUInt8, 4),
    Plain(kR32G32F, "kR32G32F", ElementType::kFloat, 2),
    WithAlpha(kR16G16B16A16F, "kR16G16B16A16F", ElementType::kHalf),
    WithAlpha(kR16G16B16A16, "kR16G16B16A16", ElementType::kUInt16),
    PixelFormat{.value = kR32G32B32F, .name = "kR32G32B32F", .element = ElementType::kFloat, .channels = 3},
    WithAlpha(kR32G32B32A32F, "kR32G32B32A32F", ElementType::kFloat),
    Blocks(kBC6H, "kBC6H", 16),
    Blocks(kBC6HSigned, "kBC6HSigned", 16),
    Blocks(kBC7, "kBC7", 16),
    Blocks(kBC7Srgb, "kBC7Srgb", 16),
    Reserved(kReserved77, "kReserved77"),
    Reserved(kReserved78, "kReserved78"),
};

inline constexpr int kMaxValue = kReserved78;

/// The place in `kFormats` of each value up to the largest; that of `kUnknown` for values that are no format.
inline constexpr auto kPlaces = [] {
    std::array<std::uint8_t, kMaxValue + 1> places{};
    for (std::size_t i = 0; i < kFormats.size(); ++i)
        places[static_cast<std::size_t>(kFormats[i].value)] = static_cast<std::uint8_t>(i);
    return places;
}();

static_assert(kFormats.front().value == kUnknown && kFormats.back().value == kMaxValue);
static_assert(std::ranges::adjacent_find(kFormats, std::ranges::greater_equal{}, &PixelFormat::value) ==
              kFormats.end());
static_assert(std::ranges::all_of(kFormats, [](const PixelFormat& format) {
    const bool hasElement = format.element != ElementType::kNone;
    return hasElement == format.HasPixels() && (!hasElement || format.bytesPerBlock == 0) &&
           (hasElement || !format.inLibrary) && (format.channels == 4 || !(format.blueFirst || format.hasAlpha));
}));

}  // namespace FormatTable

/// What is known of a format; of a value that is none, what is known of `kUnknown`: nothing.
constexpr const PixelFormat& FactsOf(Devices::EFormat format) {
    const int value = format;
    const bool isKnown = value >= 0 && value <= FormatTable::kMaxValue;
    return FormatTable::kFormats[isKnown ? FormatTable::kPlaces[static_cast<std::size_t>(value)] : 0];
}

}  // namespace Kavra::Common
