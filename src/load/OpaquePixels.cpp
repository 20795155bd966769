#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "load/OpaquePixels.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/ParallelRange.h"
#include "common/PixelRun.h"
#include "load/OpaquePixels.h"

#include <hwy/highway.h>

#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace Kavra::Devices::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// As many pixels as fill whole vectors; the result is how many that were.
template <class Element>
std::size_t AddAlpha(const unsigned char* in, std::size_t count, std::uint32_t opaque, unsigned char* out) {
    const hn::ScalableTag<Element> d;
    const std::size_t lanes = hn::Lanes(d);
    const auto* const from = reinterpret_cast<const Element*>(in);
    auto* const to = reinterpret_cast<Element*>(out);
    const auto alpha = hn::Set(d, static_cast<Element>(opaque));
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        hn::VFromD<hn::ScalableTag<Element>> red, green, blue;
        hn::LoadInterleaved3(d, from + 3 * i, red, green, blue);
        hn::StoreInterleaved4(red, green, blue, alpha, d, to + 4 * i);
    }
    return i;
}

std::size_t ToBytes(const unsigned char* in, std::size_t count, std::uint32_t opaque, unsigned char* out) {
    return AddAlpha<std::uint8_t>(in, count, opaque, out);
}
std::size_t ToWords(const unsigned char* in, std::size_t count, std::uint32_t opaque, unsigned char* out) {
    return AddAlpha<std::uint16_t>(in, count, opaque, out);
}
std::size_t ToFloats(const unsigned char* in, std::size_t count, std::uint32_t opaque, unsigned char* out) {
    return AddAlpha<std::uint32_t>(in, count, opaque, out);
}

}  // namespace Kavra::Devices::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Devices {

HWY_EXPORT(ToBytes);
HWY_EXPORT(ToWords);
HWY_EXPORT(ToFloats);

namespace {

/// By whole vectors.
std::size_t AddAlphaToMost(const unsigned char* in, std::size_t count, std::size_t elementBytes, std::uint32_t opaque,
                           unsigned char* out) {
    if (elementBytes == 1) return HWY_DYNAMIC_DISPATCH(ToBytes)(in, count, opaque, out);
    if (elementBytes == 2) return HWY_DYNAMIC_DISPATCH(ToWords)(in, count, opaque, out);
    return HWY_DYNAMIC_DISPATCH(ToFloats)(in, count, opaque, out);
}

}  // namespace

void AddOpaqueAlphaPlainly(const unsigned char* in, std::size_t count, std::size_t elementBytes, std::uint32_t opaque,
                           unsigned char* out) {
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(out + 4 * i * elementBytes, in + 3 * i * elementBytes, 3 * elementBytes);
        std::memcpy(out + (4 * i + 3) * elementBytes, &opaque, elementBytes);  // little endian: the lowest bytes
    }
}

void AddOpaqueAlpha(const unsigned char* in, std::size_t count, std::size_t elementBytes, std::uint32_t opaque,
                    unsigned char* out) {
    const std::size_t inBytes = 3 * elementBytes, outBytes = 4 * elementBytes;
    Common::ForEachRange(count, Common::kSerialBytes / (inBytes + outBytes), [=](std::size_t begin, std::size_t end) {
        const std::size_t most =
            begin + AddAlphaToMost(in + begin * inBytes, end - begin, elementBytes, opaque, out + begin * outBytes);
        AddOpaqueAlphaPlainly(in + most * inBytes, end - most, elementBytes, opaque, out + most * outBytes);
    });
}

}  // namespace Kavra::Devices
#endif
