#include "common/PixelFormats.h"
#include "frame/host/devices/PixelKernels.h"

#include <kavra/devices/AFormatConvertor.h>

#include <Imath/half.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace Kavra::Utilities {

using Common::ElementType;
using Common::PixelFormat;
using Devices::PixelKernels;

namespace {

template <class T>
void Store(T value, char* out) {
    std::memcpy(out, &value, sizeof(T));
}

/// `maximum` times a channel that is limited to 0..1, NaN giving 0; rounded half up in single precision.
float Quantised(float channel, float maximum) {
    const float limited = channel > 0.0F ? std::min(channel, 1.0F) : 0.0F;
    return limited * maximum + 0.5F;
}

void StoreElement(float channel, ElementType element, char* out) {
    switch (element) {
        case ElementType::kNone:
            return;
        case ElementType::kUInt8:
            return Store(static_cast<std::uint8_t>(Quantised(channel, 255.0F)), out);
        case ElementType::kUInt16:
            return Store(static_cast<std::uint16_t>(Quantised(channel, 65535.0F)), out);
        case ElementType::kHalf:
            return Store(half(channel).bits(), out);
        case ElementType::kFloat:
            return Store(channel, out);
    }
}

/// The kernel that packs pixels of four floats into a format, which has pixels.
PixelKernels::Kernel PackingKernel(const PixelFormat& format) {
    const PixelKernels& kernels = Devices::Kernels();
    switch (format.element) {
        case ElementType::kNone:
            break;
        case ElementType::kUInt8:
            if (format.channels == 1) return kernels.oneU8From4Float;
            return format.blueFirst ? kernels.fourU8BlueFirstFrom4Float : kernels.fourU8From4Float;
        case ElementType::kUInt16:
            if (format.channels == 1) return kernels.oneU16From4Float;
            return format.channels == 2 ? kernels.twoU16From4Float : kernels.fourU16From4Float;
        case ElementType::kHalf:
            if (format.channels == 1) return kernels.oneHalfFrom4Float;
            return format.channels == 2 ? kernels.twoHalfFrom4Float : kernels.fourHalfFrom4Float;
        case ElementType::kFloat:
            if (format.channels == 1) return kernels.oneFloatFrom4Float;
            if (format.channels == 2) return kernels.twoFloatFrom4Float;
            return format.channels == 3 ? kernels.threeFloatFrom4Float : kernels.fourFloatFrom4Float;
    }
    std::unreachable();
}

}  // namespace

AFormatConvertor::~AFormatConvertor() = default;

int AFormatConvertor::BytesPerPixel(EFormat format) {
    return Common::FactsOf(format).BytesPerPixel();
}

int AFormatConvertor::BytesPerBlock(EFormat format) {
    return Common::FactsOf(format).bytesPerBlock;
}

bool AFormatConvertor::FloatToFormat(vec4<float>& colour, EFormat format, char* out, unsigned size) {
    const PixelFormat& facts = Common::FactsOf(format);
    if (!facts.HasPixels() || size < static_cast<unsigned>(facts.BytesPerPixel())) return false;
    float channels[4] = {colour.x, colour.y, colour.z, colour.w};
    if (facts.blueFirst) std::swap(channels[0], channels[2]);
    for (int i = 0; i < facts.channels; ++i) {
        StoreElement(channels[i], facts.element, out + i * Common::BytesOf(facts.element));
    }
    return true;
}

std::size_t AFormatConvertor::FloatsToFormat(const float* colours, std::size_t count, EFormat format, char* out,
                                             std::size_t size) {
    const PixelFormat& facts = Common::FactsOf(format);
    if (!facts.HasPixels()) return 0;
    const auto pixelBytes = static_cast<std::size_t>(facts.BytesPerPixel());
    const std::size_t fitting = std::min(count, size / pixelBytes);
    if (fitting == 0) return 0;
    // Callers that work piece by piece pass the capacity of the whole block, which is what the caches see in the end.
    PackingKernel(facts)({.out = {reinterpret_cast<unsigned char*>(out), fitting * pixelBytes},
                          .in = {reinterpret_cast<const unsigned char*>(colours), fitting * 4 * sizeof(float)},
                          .bypassCache = Common::OutgrowsCaches(size)});
    return fitting;
}

}  // namespace Kavra::Utilities
