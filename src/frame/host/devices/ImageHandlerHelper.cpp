#include "common/PixelBlock.h"
#include "common/Progress.h"
#include "common/Reasons.h"
#include "common/WatchedRange.h"
#include "frame/host/devices/PixelKernels.h"

#include <kavra/devices/ImageHandlerHelper.h>

#include <Imath/half.h>

#include <bit>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <type_traits>

namespace Kavra::Utilities {

using Common::PixelRun;
using Devices::PixelKernels;

namespace {

/// What `bytes` source bytes become when `inUnit` bytes turn into `outUnit`: whole units, and behind them what the
/// odd bytes of a broken last unit would need, so that no caller's arithmetic on byte counts points past the block.
struct OutputSize {
    std::size_t units;
    std::size_t unitBytes;
    std::size_t blockBytes;

    OutputSize(std::size_t bytes, std::size_t inUnit, std::size_t outUnit) {
        units = bytes / inUnit;
        if (units >= std::numeric_limits<std::size_t>::max() / outUnit) throw std::bad_alloc();
        unitBytes = units * outUnit;
        blockBytes = unitBytes + bytes % inUnit * outUnit / inUnit;
    }
};

/// Turns every `inUnit` bytes of `source` into `outUnit` bytes of a new block, a part of the block on each core. Null if
/// that is stopped.
void* Converted(const void* source, std::size_t bytes, std::size_t inUnit, std::size_t outUnit,
                const std::function<void(const PixelRun&)>& kernel) try {
    const OutputSize size(bytes, inUnit, outUnit);
    if (source == nullptr) return Common::NewZeroedBlock(size.blockBytes).release();

    Common::PixelBlock block = Common::NewBlock(size.blockBytes);
    std::memset(block.get() + size.unitBytes, 0, size.blockBytes - size.unitBytes);
    auto* const out = reinterpret_cast<unsigned char*>(block.get());
    const auto* const in = static_cast<const unsigned char*>(source);
    const bool bypassCache = Common::OutgrowsCaches(size.unitBytes);
    const std::size_t serial = Common::kSerialBytes / (inUnit + outUnit);
    Common::ForEachRangeOf(Devices::kProgressConverting, size.units, serial, [&](std::size_t begin, std::size_t end) {
        kernel({.out = {out + begin * outUnit, (end - begin) * outUnit},
                .in = {in + begin * inUnit, (end - begin) * inUnit},
                .bypassCache = bypassCache});
    });
    return block.release();
} catch (const Common::Cancelled&) {
    Common::SayCaught();
    return nullptr;
}

}  // namespace

ImageHandlerHelper::ImageHandlerHelper() = default;

unsigned int* ImageHandlerHelper::BGRAToRGBA(unsigned char* source, std::size_t bytes) {
    return static_cast<unsigned int*>(Converted(source, bytes, 4, 4, Devices::Kernels().swapRedBlueOf4U8));
}

unsigned int* ImageHandlerHelper::GrayToRGB(unsigned char* source, std::size_t bytes) {
    return static_cast<unsigned int*>(Converted(source, bytes, 1, 4, Devices::Kernels().opaque4U8FromU8));
}

unsigned short* ImageHandlerHelper::GrayToR16(unsigned char* source, std::size_t bytes) {
    return static_cast<unsigned short*>(Converted(source, bytes, 1, 2, Devices::Kernels().u16FromU8));
}

unsigned short* ImageHandlerHelper::GrayToR16G16(unsigned char* source, std::size_t bytes) {
    return static_cast<unsigned short*>(Converted(source, bytes, 1, 4, Devices::Kernels().twoU16FromU8));
}

unsigned int* ImageHandlerHelper::Gray16ToRGB(unsigned short* source, std::size_t bytes) {
    return static_cast<unsigned int*>(Converted(source, bytes, 2, 4, Devices::Kernels().opaque4U8FromU16));
}

unsigned int* ImageHandlerHelper::R16ToR16G16(unsigned short* source, std::size_t bytes) {
    return static_cast<unsigned int*>(Converted(source, bytes, 2, 4, Devices::Kernels().twoU16FromU16));
}

template <class T>
T* ImageHandlerHelper::ExpandGrayToRGBA(T* source, std::size_t bytes, T alpha, bool withAlpha) {
    const auto& kernels = Devices::Kernels();
    const std::size_t pixelBytes = sizeof(T) * (withAlpha ? 4 : 3);
    const auto expanded = [&](const auto& kernel) {
        return static_cast<T*>(Converted(source, bytes, sizeof(T), pixelBytes, kernel));
    };
    if constexpr (sizeof(T) == sizeof(float)) {
        if (!withAlpha) return expanded(kernels.threeFrom32);
        return expanded([&](const PixelRun& run) { kernels.fourFrom32(run, alpha); });
    } else {
        if (!withAlpha) return expanded(kernels.threeFrom16);
        const auto alphaBits = std::bit_cast<unsigned short>(alpha);
        return expanded([&](const PixelRun& run) { kernels.fourFrom16(run, alphaBits); });
    }
}

namespace {

/// The kernel for one pair of element types.
template <class In, class Out>
PixelKernels::ScalingKernel ScalingKernelFor() {
    const PixelKernels& kernels = Devices::Kernels();
    if constexpr (std::is_same_v<Out, unsigned char>)
        return kernels.u8FromU16;
    else if constexpr (std::is_same_v<In, half>)
        return kernels.floatFromHalf;
    else if constexpr (std::is_same_v<Out, half>)
        return sizeof(In) == 1 ? kernels.halfFromU8 : kernels.halfFromU16;
    else
        return sizeof(In) == 1 ? kernels.floatFromU8 : kernels.floatFromU16;
}

}  // namespace

template <class In, class Out>
Out* ImageHandlerHelper::TypeInToTypeOut(In* source, std::size_t bytes, float factor) {
    const auto kernel = ScalingKernelFor<In, Out>();
    return static_cast<Out*>(
        Converted(source, bytes, sizeof(In), sizeof(Out), [&](const PixelRun& run) { kernel(run, factor); }));
}

template KAVRA_DEVICES_API unsigned short* ImageHandlerHelper::ExpandGrayToRGBA(unsigned short*, std::size_t,
                                                                                unsigned short, bool);
template KAVRA_DEVICES_API half* ImageHandlerHelper::ExpandGrayToRGBA(half*, std::size_t, half, bool);
template KAVRA_DEVICES_API float* ImageHandlerHelper::ExpandGrayToRGBA(float*, std::size_t, float, bool);

template KAVRA_DEVICES_API float* ImageHandlerHelper::TypeInToTypeOut(unsigned char*, std::size_t, float);
template KAVRA_DEVICES_API float* ImageHandlerHelper::TypeInToTypeOut(unsigned short*, std::size_t, float);
template KAVRA_DEVICES_API half* ImageHandlerHelper::TypeInToTypeOut(unsigned short*, std::size_t, float);
template KAVRA_DEVICES_API half* ImageHandlerHelper::TypeInToTypeOut(unsigned char*, std::size_t, float);
template KAVRA_DEVICES_API unsigned char* ImageHandlerHelper::TypeInToTypeOut(unsigned short*, std::size_t, float);
template KAVRA_DEVICES_API float* ImageHandlerHelper::TypeInToTypeOut(half*, std::size_t, float);

}  // namespace Kavra::Utilities
