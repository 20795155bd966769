/// How the pixels of each format lie in memory.
#pragma once

#include <kavra/devices/EFormat.h>

#include <cstdint>

namespace Kavra::Devices {

enum class PixelElement : std::uint8_t { kByte, kWord, kHalf, kFloat };

/// One pixel of a format. `channels` 0: the format has no pixels that could be addressed one by one.
struct PixelLayout {
    int channels = 0;
    PixelElement element = PixelElement::kByte;
    bool blueFirst = false;  ///< the first channel is blue and the third red
    bool hasAlpha = false;   ///< the fourth channel is an alpha

    constexpr int ElementBytes() const {
        switch (element) {
            case PixelElement::kByte:
                return 1;
            case PixelElement::kWord:
            case PixelElement::kHalf:
                return 2;
            case PixelElement::kFloat:
                return 4;
        }
        return 0;
    }
    constexpr int Bytes() const { return channels * ElementBytes(); }
};

constexpr PixelLayout LayoutOf(EFormat format) {
    switch (format) {
        case kA8:
        case kR8:
        case kL8:
            return {.channels = 1, .element = PixelElement::kByte};
        case kR16F:
            return {.channels = 1, .element = PixelElement::kHalf};
        case kR16:
        case kL16:
            return {.channels = 1, .element = PixelElement::kWord};
        case kR32F:
            return {.channels = 1, .element = PixelElement::kFloat};
        case kR16G16F:
            return {.channels = 2, .element = PixelElement::kHalf};
        case kR16G16:
            return {.channels = 2, .element = PixelElement::kWord};
        case kR32G32F:
            return {.channels = 2, .element = PixelElement::kFloat};
        case kR8G8B8A8:
        case kR8G8B8A8Alt:
            return {.channels = 4, .element = PixelElement::kByte, .hasAlpha = true};
        case kB8G8R8A8:
            return {.channels = 4, .element = PixelElement::kByte, .blueFirst = true, .hasAlpha = true};
        case kB8G8R8X8:
            return {.channels = 4, .element = PixelElement::kByte, .blueFirst = true};
        case kR8G8B8X8:
            return {.channels = 4, .element = PixelElement::kByte};
        case kR16G16B16A16F:
            return {.channels = 4, .element = PixelElement::kHalf, .hasAlpha = true};
        case kR16G16B16A16:
            return {.channels = 4, .element = PixelElement::kWord, .hasAlpha = true};
        case kR32G32B32F:
            return {.channels = 3, .element = PixelElement::kFloat};
        case kR32G32B32A32F:
            return {.channels = 4, .element = PixelElement::kFloat, .hasAlpha = true};
        default:
            return {};
    }
}

}  // namespace Kavra::Devices
