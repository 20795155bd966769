#include "WrittenPixels.h"

#include "FormatNames.h"
#include "Picture.h"

#include <Imath/half.h>

#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>

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

template <class T>
bool IsOpaqueOf(const LoadedImage& image) {
    constexpr std::size_t kPixel = 4 * sizeof(T);
    const auto* row = static_cast<const unsigned char*>(image.block->mData);
    const std::size_t rows = LayerCount(image.desc) * static_cast<std::size_t>(image.desc.height);
    for (std::size_t y = 0; y < rows; ++y, row += image.desc.rowPitch) {
        const unsigned char* alpha = row + 3 * sizeof(T);
        for (int x = 0; x < image.desc.width; ++x, alpha += kPixel) {
            T value;
            std::memcpy(&value, alpha, sizeof(value));
            if (!IsFull(value)) return false;
        }
    }
    return true;
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
    if (!facts.hasAlpha) return true;
    switch (facts.element) {
        case ElementType::kUInt8:
            return IsOpaqueOf<std::uint8_t>(image);
        case ElementType::kUInt16:
            return IsOpaqueOf<std::uint16_t>(image);
        case ElementType::kHalf:
            return IsOpaqueOf<Imath::half>(image);
        case ElementType::kFloat:
            return IsOpaqueOf<float>(image);
        case ElementType::kNone:
            return false;
    }
    return false;
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
