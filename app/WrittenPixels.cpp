#include "WrittenPixels.h"

#include "FormatNames.h"

#include <Imath/half.h>

#include <array>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

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
    for (int y = 0; y < image.desc.height; ++y, row += image.desc.rowPitch) {
        const unsigned char* alpha = row + 3 * sizeof(T);
        for (int x = 0; x < image.desc.width; ++x, alpha += kPixel) {
            T value;
            std::memcpy(&value, alpha, sizeof(value));
            if (!IsFull(value)) return false;
        }
    }
    return true;
}

/// What `k8`, `k16`, `kHalf` and `kFloat` are of so many channels.
constexpr std::array<std::array<EFormat, 4>, 5> kFormats = {{
    {kUnknown, kUnknown, kUnknown, kUnknown},
    {kR8, kR16, kR16F, kR32F},
    {kUnknown, kR16G16, kR16G16F, kR32G32F},
    {kR8G8B8A8, kR16G16B16A16, kR16G16B16A16F, kR32G32B32A32F},
    {kR8G8B8A8, kR16G16B16A16, kR16G16B16A16F, kR32G32B32A32F},
}};

constexpr std::array<std::pair<ElementType, Depth>, 4> kDepths = {{{ElementType::kUInt8, Depth::k8},
                                                                   {ElementType::kUInt16, Depth::k16},
                                                                   {ElementType::kHalf, Depth::kHalf},
                                                                   {ElementType::kFloat, Depth::kFloat}}};

Depth DepthOf(ElementType element) {
    for (const auto& [type, depth] : kDepths) {
        if (type == element) return depth;
    }
    return Depth::kOwn;
}

EFormat FormatOf(int channels, Depth depth) {
    if (depth == Depth::kOwn) return kUnknown;
    return kFormats[static_cast<std::size_t>(channels)][static_cast<std::size_t>(depth) - 1];
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
    if (depth == Depth::kOwn || depth == DepthOf(facts.element)) return format;
    return FormatOf(facts.channels, depth);
}

EFormat AsGrey(EFormat format) {
    const FormatFacts facts = Facts(format);
    return facts.channels <= 1 ? format : FormatOf(1, DepthOf(facts.element));
}

EFormat AsColour(EFormat format) {
    const FormatFacts facts = Facts(format);
    return facts.channels == 1 ? FormatOf(4, DepthOf(facts.element)) : format;
}

int ColourChannels(EFormat format) {
    const int channels = Facts(format).channels;
    return channels == 4 ? 3 : channels == 2 ? 1 : channels;
}

}  // namespace Kavra::App
