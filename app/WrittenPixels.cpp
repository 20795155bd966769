#include "WrittenPixels.h"

#include "FormatNames.h"
#include "Picture.h"

#include <Imath/half.h>

#include <array>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <type_traits>

namespace Kavra::App {

using namespace Devices;

namespace {

template <class T>
bool IsFull(T alpha) {
    if constexpr (std::unsigned_integral<T>) {
        return alpha == std::numeric_limits<T>::max();
    } else {
        return alpha >= T(1);
    }
}

/// Whether `isSo` holds of every pixel of a format of four channels.
template <class T, class IsSo>
bool IsEveryPixel(const LoadedImage& image, const IsSo& isSo) {
    using Channels = std::array<T, 4>;
    const auto* row = static_cast<const unsigned char*>(image.block->mData);
    const std::size_t rows = LayerCount(image.desc) * static_cast<std::size_t>(image.desc.height);
    for (std::size_t y = 0; y < rows; ++y, row += image.desc.rowPitch) {
        const unsigned char* pixel = row;
        for (int x = 0; x < image.desc.width; ++x, pixel += sizeof(Channels)) {
            Channels channels;
            std::memcpy(channels.data(), pixel, sizeof(Channels));
            if (!isSo(channels)) return false;
        }
    }
    return true;
}

template <class IsSo>
bool IsEveryPixel(const LoadedImage& image, const IsSo& isSo) {
    switch (Facts(image.desc.format).element) {
        case ElementType::kUInt8:
            return IsEveryPixel<std::uint8_t>(image, isSo);
        case ElementType::kUInt16:
            return IsEveryPixel<std::uint16_t>(image, isSo);
        case ElementType::kHalf:
            return IsEveryPixel<Imath::half>(image, isSo);
        case ElementType::kFloat:
            return IsEveryPixel<float>(image, isSo);
        case ElementType::kNone:
            return false;
    }
    return false;
}

ElementType ElementOf(Depth depth) {
    switch (depth) {
        case Depth::k8:
            return ElementType::kUInt8;
        case Depth::k16:
            return ElementType::kUInt16;
        case Depth::kHalf:
            return ElementType::kHalf;
        case Depth::kFloat:
            return ElementType::kFloat;
        case Depth::kOwn:
            return ElementType::kNone;
    }
    return ElementType::kNone;
}

}  // namespace

bool IsOpaque(const LoadedImage& image) {
    const FormatFacts facts = Facts(image.desc.format);
    if (facts.channels != 4) return false;
    return !facts.hasAlpha || IsEveryPixel(image, [](const auto& pixel) { return IsFull(pixel[3]); });
}

bool IsCutOut(const LoadedImage& image) {
    const FormatFacts facts = Facts(image.desc.format);
    if (facts.channels != 4) return false;
    return !facts.hasAlpha || IsEveryPixel(image, [](const auto& pixel) {
        return IsFull(pixel[3]) || pixel[3] <= std::remove_cvref_t<decltype(pixel[3])>(0);
    });
}

bool SaysItsOwn(const LoadedImage& image, int colour) {
    const FormatFacts facts = Facts(image.desc.format);
    if (facts.channels != 4) return false;
    const auto channel = static_cast<std::size_t>(facts.blueFirst ? 2 - colour : colour);
    const std::size_t red = facts.blueFirst ? 2 : 0;
    if (IsEveryPixel(image, [&](const auto& pixel) { return pixel[channel] == pixel[red]; })) return false;
    std::optional<float> first;
    return !IsEveryPixel(image, [&](const auto& pixel) {
        const auto value = static_cast<float>(pixel[channel]);
        if (!first) first = value;
        return value == *first;
    });
}

EFormat AtDepth(EFormat format, Depth depth) {
    const FormatFacts facts = Facts(format);
    const ElementType element = ElementOf(depth);
    return depth == Depth::kOwn || element == facts.element ? format : FormatOf(element, facts.channels);
}

EFormat AsGrey(EFormat format) {
    const FormatFacts facts = Facts(format);
    return facts.channels <= 1 ? format : FormatOf(facts.element, 1);
}

EFormat AsColour(EFormat format) {
    const FormatFacts facts = Facts(format);
    return facts.channels == 1 ? FormatOf(facts.element, 4) : format;
}

int ColourChannels(EFormat format) {
    const int channels = Facts(format).channels;
    return channels == 4 ? 3 : channels == 2 ? 1 : channels;
}

}  // namespace Kavra::App
