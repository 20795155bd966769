#include "formats/FormatConversion.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/ImageHandlerHelper.h>
#include <kavra/devices/Sys.h>

#include "common/HostExtras.h"
#include "common/ParallelRange.h"
#include "common/PixelBlock.h"
#include "common/PixelRun.h"
#include "formats/BlueFirst.h"
#include "formats/Luminance.h"

#include <half.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

namespace Kavra::Devices {

using Common::PixelBlock;
using Utilities::AFormatConvertor;
using Utilities::ImageHandlerHelper;

namespace {

/// A new block and the bytes that its owner is told of; nothing stands for a pair that is not handled.
struct Pixels {
    PixelBlock block;
    std::size_t bytes = 0;

    /// Takes over what a routine of the helper has returned.
    Pixels(void* made, std::size_t size) : block(static_cast<unsigned char*>(made)), bytes(size) {}
};
using Conversion = std::optional<Pixels>;

/// Packed source pixels.
struct Source {
    unsigned char* data;
    std::size_t bytes;

    unsigned short* Words() const { return reinterpret_cast<unsigned short*>(data); }
    half* Halves() const { return reinterpret_cast<half*>(data); }
    float* Floats() const { return reinterpret_cast<float*>(data); }
};

constexpr float kPerByte = 1.0f / 255.0f;
constexpr float kPerWord = 1.0f / 65535.0f;
constexpr float kByteOfWord = 1.0f / 257.0f;

/// Pixels of `inUnit` bytes to pixels of `outUnit`, in a new block of `bytes` bytes, a part of it on each core. Bytes
/// behind the last whole pixel are zero. `kernel` takes a `PixelRun`.
template <class Kernel>
Pixels InOnePass(const Source& source, std::size_t inUnit, std::size_t outUnit, std::size_t bytes,
                 const Kernel& kernel) {
    const std::size_t count = source.bytes / inUnit;
    Pixels result(Common::NewBlock(bytes).release(), bytes);
    std::memset(result.block.get() + count * outUnit, 0, bytes - count * outUnit);
    const std::span out(reinterpret_cast<std::byte*>(result.block.get()), count * outUnit);
    const std::span in(reinterpret_cast<const std::byte*>(source.data), count * inUnit);
    Common::ForEachRange(count, Common::kSerialBytes / (inUnit + outUnit), [&](std::size_t begin, std::size_t end) {
        kernel(Common::PixelRun{.out = out.subspan(begin * outUnit, (end - begin) * outUnit),
                                .in = in.subspan(begin * inUnit, (end - begin) * inUnit),
                                .bypassCache = Common::OutgrowsCaches(out.size())});
    });
    return result;
}

Pixels GreyFromColours(const Source& source, Formats::ColourOrder order) {
    return InOnePass(source, 4, 1, source.bytes / 4,
                     [order](const Common::PixelRun& run) { Formats::GreyFromColours(run, order); });
}

/// A target of 12 bytes a pixel gets as many bytes as the source has. What no pixel fills is zero, so that the same
/// pixels always give the same block.
Conversion FromFloatColour(const Source& source, EFormat to) {
    const auto pixelBytes = static_cast<std::size_t>(AFormatConvertor::BytesPerPixel(to));
    if (pixelBytes == 0 || pixelBytes > 16) return std::nullopt;
    const std::size_t bytes = source.bytes / (16 / pixelBytes);
    Pixels packed(Common::NewBlock(bytes).release(), bytes);
    const std::size_t filled = std::min(bytes, source.bytes / 16 * pixelBytes);
    std::memset(packed.block.get() + filled, 0, bytes - filled);
    Common::ForEachRange(source.bytes / 16, Common::kSerialBytes / 16, [&](std::size_t begin, std::size_t end) {
        Common::PackFloats(source.Floats() + 4 * begin, end - begin, to,
                           reinterpret_cast<char*>(packed.block.get() + begin * pixelBytes),
                           bytes - begin * pixelBytes);
    });
    return packed;
}

Conversion FromGrey8(ImageHandlerHelper& helper, const Source& source, EFormat to) {
    const std::size_t n = source.bytes;
    switch (to) {
        case kR16:
            return Pixels(helper.GrayToR16(source.data, n), n * 2);
        case kR16G16:
            return Pixels(helper.GrayToR16G16(source.data, n), n * 4);
        case kR8G8B8A8:
        case kB8G8R8A8:
        case kB8G8R8X8:
        case kR8G8B8X8:
            return Pixels(helper.GrayToRGB(source.data, n), n * 4);
        default:
            return std::nullopt;
    }
}

/// Opaque black: the routine is given no source, which is kept because callers have come to see what it yields.
Conversion HalfColourFromGrey16(ImageHandlerHelper& helper, std::size_t n) {
    unsigned short* const nothing = nullptr;
    const Pixels halves(helper.TypeInToTypeOut<unsigned short, half>(nothing, n, kPerWord), n);
    auto* const grey = reinterpret_cast<half*>(halves.block.get());
    return Pixels(helper.ExpandGrayToRGBA<half>(grey, n, half(1.0f), true), n * 4);
}

Conversion FromGrey16(ImageHandlerHelper& helper, const Source& source, EFormat to) {
    const std::size_t n = source.bytes;
    switch (to) {
        case kR16G16:
            return Pixels(helper.R16ToR16G16(source.Words(), n), n * 2);
        case kR8G8B8A8:
        case kB8G8R8A8:
        case kB8G8R8X8:
        case kR8G8B8X8:
            return Pixels(helper.Gray16ToRGB(source.Words(), n), n * 2);
        case kR16G16B16A16F:
            return HalfColourFromGrey16(helper, n);
        case kR16G16B16A16:
            return Pixels(helper.ExpandGrayToRGBA<unsigned short>(source.Words(), n, 65535, true), n * 4);
        default:
            return std::nullopt;
    }
}

Conversion FromGreyFloat(ImageHandlerHelper& helper, const Source& source, EFormat to) {
    const std::size_t n = source.bytes;
    switch (to) {
        case kR32G32B32F:
            return Pixels(helper.ExpandGrayToRGBA<float>(source.Floats(), n, 1.0f, false), n * 3);
        case kR32G32B32A32F:
            return Pixels(helper.ExpandGrayToRGBA<float>(source.Floats(), n, 1.0f, true), n * 4);
        default:
            return std::nullopt;
    }
}

/// 8-bit colour to more bits; the channels keep their order.
Conversion Widened(ImageHandlerHelper& helper, const Source& source, EFormat to) {
    const std::size_t n = source.bytes;
    switch (to) {
        case kR16G16B16A16F:
            return Pixels(helper.TypeInToTypeOut<unsigned char, half>(source.data, n, kPerByte), n * 2);
        case kR16G16B16A16:
            return Pixels(helper.GrayToR16(source.data, n), n * 2);
        case kR32G32B32A32F:
            return Pixels(helper.TypeInToTypeOut<unsigned char, float>(source.data, n, kPerByte), n * 4);
        default:
            return std::nullopt;
    }
}

Conversion FromRedFirst(ImageHandlerHelper& helper, const Source& source, EFormat to) {
    switch (to) {
        case kR8:
        case kL8:
            return GreyFromColours(source, Formats::ColourOrder::kRedFirst);
        case kB8G8R8A8:
        case kB8G8R8X8:
            return Pixels(helper.BGRAToRGBA(source.data, source.bytes), source.bytes);
        default:
            return Widened(helper, source, to);
    }
}

Conversion FromBlueFirst(ImageHandlerHelper& helper, const Source& source, EFormat to) {
    switch (to) {
        case kR8:
        case kL8:
            return GreyFromColours(source, Formats::ColourOrder::kBlueFirst);
        case kR8G8B8A8:
        case kR8G8B8X8:
            return Pixels(helper.BGRAToRGBA(source.data, source.bytes), source.bytes);
        // Swapping into an intermediate and widening that would move nearly twice the bytes.
        case kR16G16B16A16F:
            return InOnePass(source, 4, 8, source.bytes * 2, Formats::HalvesFromBlueFirst);
        case kR16G16B16A16:
            return InOnePass(source, 4, 8, source.bytes * 2, Formats::WordsFromBlueFirst);
        case kR32G32B32A32F:
            return InOnePass(source, 4, 16, source.bytes * 4, Formats::FloatsFromBlueFirst);
        default:
            return std::nullopt;
    }
}

Conversion FromHalfColour(ImageHandlerHelper& helper, const Source& source, EFormat to) {
    if (to != kR32G32B32A32F) return std::nullopt;
    return Pixels(helper.TypeInToTypeOut<half, float>(source.Halves(), source.bytes, 1.0f), source.bytes * 2);
}

Conversion FromWordColour(ImageHandlerHelper& helper, const Source& source, EFormat to) {
    const std::size_t n = source.bytes;
    switch (to) {
        case kR8G8B8A8:
        case kR8G8B8X8:
            return Pixels(helper.TypeInToTypeOut<unsigned short, unsigned char>(source.Words(), n, kByteOfWord), n / 2);
        case kB8G8R8A8:
        case kB8G8R8X8:
            return InOnePass(source, 8, 4, n / 2, Formats::BlueFirstFromWords);
        case kR16G16B16A16F:
            return Pixels(helper.TypeInToTypeOut<unsigned short, half>(source.Words(), n, kPerWord), n);
        case kR32G32B32A32F:
            return Pixels(helper.TypeInToTypeOut<unsigned short, float>(source.Words(), n, kPerWord), n * 2);
        default:
            return std::nullopt;
    }
}

Conversion FromHalfGrey(ImageHandlerHelper& helper, const Source& source, EFormat to) {
    if (to != kR16G16B16A16F) return std::nullopt;
    return Pixels(helper.ExpandGrayToRGBA<half>(source.Halves(), source.bytes, half(1.0f), true), source.bytes * 4);
}

Conversion Convert(EFormat from, const Source& source, EFormat to) {
    ImageHandlerHelper helper;
    switch (from) {
        case kR8:
        case kL8:
            return FromGrey8(helper, source, to);
        case kR16F:
            return FromHalfGrey(helper, source, to);
        case kR16:
        case kL16:
            return FromGrey16(helper, source, to);
        case kR32F:
            return FromGreyFloat(helper, source, to);
        case kR8G8B8A8:
            return FromRedFirst(helper, source, to);
        case kB8G8R8A8:
            return FromBlueFirst(helper, source, to);
        case kR16G16B16A16F:
            return FromHalfColour(helper, source, to);
        case kR16G16B16A16:
            return FromWordColour(helper, source, to);
        case kR32G32B32A32F:
            return FromFloatColour(source, to);
        default:
            return std::nullopt;
    }
}

}  // namespace

bool FormatConversion(EFormat from, std::size_t srcBytes, void* src, EFormat to, void*& dst, std::size_t& dstBytes) {
    const bool isReadable = src != nullptr || srcBytes == 0;
    Conversion conversion;
    if (isReadable) conversion = Convert(from, {static_cast<unsigned char*>(src), srcBytes}, to);
    if (!conversion) {
        Sys::Error(L"Currently not supported", nullptr);
        dst = nullptr;
        return true;
    }
    dstBytes = conversion->bytes;
    dst = conversion->block.release();
    return true;
}

}  // namespace Kavra::Devices
