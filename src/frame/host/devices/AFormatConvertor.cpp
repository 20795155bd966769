#include <kavra/devices/AFormatConvertor.h>

#include "frame/host/devices/PixelKernels.h"
#include "frame/host/devices/PixelLayout.h"

#include <half.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace Kavra::Utilities {

using Devices::PixelElement;
using Devices::PixelKernels;
using Devices::PixelLayout;

namespace {

template <class T>
void Store(T value, char* out) {
    std::memcpy(out, &value, sizeof(T));
}

/// `maximum` times a channel that is limited to 0..1, NaN giving 0; rounded half up in single precision.
float Quantised(float channel, float maximum) {
    const float limited = channel > 0.0f ? std::min(channel, 1.0f) : 0.0f;
    return limited * maximum + 0.5f;
}

void StoreElement(float channel, PixelElement element, char* out) {
    switch (element) {
        case PixelElement::kByte:
            return Store(static_cast<std::uint8_t>(Quantised(channel, 255.0f)), out);
        case PixelElement::kWord:
            return Store(static_cast<std::uint16_t>(Quantised(channel, 65535.0f)), out);
        case PixelElement::kHalf:
            return Store(half(channel).bits(), out);
        case PixelElement::kFloat:
            return Store(channel, out);
    }
}

/// The kernel that packs pixels of four floats into `layout`, which has channels.
PixelKernels::Kernel PackingKernel(const PixelLayout& layout) {
    const PixelKernels& kernels = Devices::Kernels();
    switch (layout.element) {
        case PixelElement::kByte:
            if (layout.channels == 1) return kernels.oneU8From4Float;
            return layout.blueFirst ? kernels.fourU8BlueFirstFrom4Float : kernels.fourU8From4Float;
        case PixelElement::kWord:
            if (layout.channels == 1) return kernels.oneU16From4Float;
            return layout.channels == 2 ? kernels.twoU16From4Float : kernels.fourU16From4Float;
        case PixelElement::kHalf:
            if (layout.channels == 1) return kernels.oneHalfFrom4Float;
            return layout.channels == 2 ? kernels.twoHalfFrom4Float : kernels.fourHalfFrom4Float;
        case PixelElement::kFloat:
            if (layout.channels == 1) return kernels.oneFloatFrom4Float;
            if (layout.channels == 2) return kernels.twoFloatFrom4Float;
            return layout.channels == 3 ? kernels.threeFloatFrom4Float : kernels.fourFloatFrom4Float;
    }
    std::unreachable();
}

}  // namespace

AFormatConvertor::~AFormatConvertor() = default;

int AFormatConvertor::BytesPerPixel(EFormat format) {
    return Devices::LayoutOf(format).Bytes();
}

int AFormatConvertor::BytesPerBlock(EFormat format) {
    switch (format) {
        case Devices::kBC1:
        case Devices::kBC1Srgb:
        case Devices::kBC4:
        case Devices::kBC4Snorm:
            return 8;
        case Devices::kBC2:
        case Devices::kBC2Srgb:
        case Devices::kBC3:
        case Devices::kBC3Srgb:
        case Devices::kBC5:
        case Devices::kBC5Snorm:
        case Devices::kBC6H:
        case Devices::kBC6HSigned:
        case Devices::kBC7:
        case Devices::kBC7Srgb:
            return 16;
        default:
            return 0;
    }
}

bool AFormatConvertor::FloatToFormat(vec4<float>& colour, EFormat format, char* out, unsigned size) {
    const PixelLayout layout = Devices::LayoutOf(format);
    if (layout.channels == 0 || size < static_cast<unsigned>(layout.Bytes())) return false;
    float channels[4] = {colour.x, colour.y, colour.z, colour.w};
    if (layout.blueFirst) std::swap(channels[0], channels[2]);
    for (int i = 0; i < layout.channels; ++i) {
        StoreElement(channels[i], layout.element, out + i * layout.ElementBytes());
    }
    return true;
}

std::size_t AFormatConvertor::FloatsToFormat(const float* colours, std::size_t count, EFormat format, char* out,
                                             std::size_t size) {
    const PixelLayout layout = Devices::LayoutOf(format);
    if (layout.channels == 0) return 0;
    const auto pixelBytes = static_cast<std::size_t>(layout.Bytes());
    const std::size_t fitting = std::min(count, size / pixelBytes);
    if (fitting == 0) return 0;
    // Callers that work piece by piece pass the room of the whole block, which is what the caches see in the end.
    PackingKernel(layout)({.out = {reinterpret_cast<std::byte*>(out), fitting * pixelBytes},
                           .in = {reinterpret_cast<const std::byte*>(colours), fitting * 4 * sizeof(float)},
                           .bypassCache = Common::OutgrowsCaches(size)});
    return fitting;
}

}  // namespace Kavra::Utilities
